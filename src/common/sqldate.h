#pragma once
// Dates as users type them ("dd.mm.yyyy") and as the database keeps them (ISO text).
#include <QDate>
#include <QString>
#include <QVariant>

namespace tarvik {

inline constexpr char GermanDateFormat[] = "dd.MM.yyyy";

// "21.11.2026" (also "1.2.2026") to a date; an invalid date for anything else.
QDate parseGermanDate(const QString& text);
QString formatGermanDate(const QDate& date);
// The value to bind for a DATETIME column: ISO text, or NULL for an empty or invalid date.
QVariant sqlDateValue(const QString& germanDate);
// A literal for the rare statement that cannot bind: "'2026-11-21'" or "NULL".
QString sqlDateLiteral(const QString& germanDate);
// A stored DATETIME column back to "dd.mm.yyyy"; "" when empty.
QString germanDateFromSql(const QVariant& stored);

} // namespace tarvik
