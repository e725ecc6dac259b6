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

// A printed page measured in characters of the fixed-pitch font: line length after the left
// margin, and lines.
struct PageGrid {
    int columns = 80;
    int rows = 60;
};

// A report laid onto printed pages. Three kinds are told apart by their lines:
// - an evaluation list (a heading line over a rule of one dash run per column): every page is
//   headed with the list's title, "Seite x von y", the column headings and the rule; a list
//   wider than the page is printed in column bands, all pages of the first columns, then those
//   of the next, each page naming its band ("Spalten 1–9 von 25");
// - a timber list (it starts with "HIEBDATEN" and the harvest number): every page is headed with
//   the harvest number and "Seite x von y", and a table running onto a new page repeats its
//   column headings there;
// - any other report: its lines as they stand.
// "#" marks start a new page in all three; a line longer than the page wraps onto the next line.
struct PrintLayout {
    QList<QStringList> pages;
    int bands = 1;
};
PrintLayout layoutForPrint(const QStringList& lines, const PageGrid& grid);

// Characters across that the report needs so that its tables stand unbroken: a list's table, the
// timber list's tables (free texts longer than them wrap), else the longest line.
int printWidth(const QStringList& lines);

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
