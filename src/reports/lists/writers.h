#pragma once
// The four forms an evaluation list is handed on in: the report file "Daten.txt" for the own
// text window and the system's editor, a spreadsheet "Daten.xlsx", a page "report-<n>.htm".
// Every writer streams the rows of a forward-only query, so a list of a million logs is never
// held in memory, and reports its progress so that a long list can be cancelled.
#include "reports/lists/formats.h"
#include "settings/settings.h"

#include <QDate>
#include <QSqlQuery>
#include <functional>

namespace tarvik::lists {

// Called every few thousand rows with the rows written so far; false cancels the writing.
using Progress = std::function<bool(qint64 rowsDone)>;

struct WriteResult {
    bool ok = false;
    bool cancelled = false;
    QString path;
    QString error; // German, names the file
};

// What the settings put into a list's text form.
struct TextOptions {
    QString title;
    QString headerText;     // "Folgender Text im Listenkopf schreiben:"
    QString separator = QStringLiteral(" | ");
    QDate today;            // set: the date stands in the header
    bool pageNumbers = false;
    bool countLine = false;
    bool pageBreaks = true;
    int linesPerPage = 30;

    static TextOptions from(const Einstellungen& settings, const QString& title, const QDate& today);
};

// Where a list goes, from the settings' "Berichte übergeben an".
enum class Target { OwnWindow, Browser, Spreadsheet, SystemEditor };
Target targetFromSettings(const Einstellungen& settings);

// The lines of the text form, for a list small enough to keep (tests, the command line).
QStringList textLines(QSqlQuery& rows, const QList<ColumnFormat>& columns, const TextOptions& options, qint64 totalRows);

WriteResult writeText(const QString& path, QSqlQuery& rows, const QList<ColumnFormat>& columns, const TextOptions& options,
                      qint64 totalRows, const Progress& progress = {});
WriteResult writeSpreadsheet(const QString& path, QSqlQuery& rows, const QList<ColumnFormat>& columns, const QString& title,
                             qint64 totalRows, const Progress& progress = {});
WriteResult writeHtml(const QString& path, QSqlQuery& rows, const QList<ColumnFormat>& columns, const TextOptions& options,
                      const Progress& progress = {});

QString spreadsheetPath(const QString& dataFolder);
// "report-<n>.htm" with the first n whose file does not exist yet.
QString nextReportPagePath(const QString& dataFolder);

// A spreadsheet holds at most this many data rows below its header row.
inline constexpr qint64 SpreadsheetRowLimit = 1048575;

} // namespace tarvik::lists
