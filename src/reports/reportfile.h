#pragma once
// The report file "Daten.txt" and what the text output window does with it before it shows or
// prints anything: the display limit, the page marks, the clamps of its settings.
#include "settings/settings.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace tarvik {

QString reportFilePath(const QString& dataFolder);

inline constexpr int DisplayLimit = 62000;

struct ReportDisplay {
    bool exists = false;
    bool truncated = false; // more than the window shows; printing the file prints all
    QString text;
};
ReportDisplay loadForDisplay(const QString& path);

QString missingReportMessage(const QString& path);
QString truncatedReportMessage();

// Pages of a report: a line whose trimmed text is "#" starts a new page and is not printed.
QList<QStringList> splitPages(const QStringList& lines);

// The window's print settings in the settings record.
struct PrintSettings {
    bool bold = false;
    bool italic = false;
    int fontSize = 10;   // 8 ... 48, else 10
    int marginChars = 0; // at most 20
    bool landscape = false;

    static PrintSettings from(const Einstellungen& settings);
    void storeIn(Einstellungen& settings) const;
};

// The screen font size after a +/- button: kept within 4 ... 30.
int stepFontSize(int current, int step);

// Fixed-pitch fonts by their name, as the font list offers them.
bool isFixedPitchName(const QString& family);

} // namespace tarvik
