#pragma once
// Texts longer than their column: the engine's CHECK would refuse them with its own words, so
// every core check (entry windows, master data, imports) refuses them first, in German.
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {

// "...der Waldname höchstens 30 Zeichen lang sein darf." when the text is longer; else nullopt.
std::optional<QString> widthReason(const QString& text, int width, const QString& subject);

// A text as it will be stored in a column, with what the user calls the field.
struct TextField {
    QString column;
    QString text;
    QString subject; // "der Waldname"
};

// The reason of every field longer than its text column of the table, in the given order; the
// widths come from the file's layout, so they cannot drift from the CHECK.
QStringList widthReasons(const QString& table, const QList<TextField>& fields);

} // namespace tarvik
