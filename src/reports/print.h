#pragma once
// Printing a report's lines onto pages: fixed-pitch font, left margin in characters, a new page
// at every "#" mark and when a page is full. The font shrinks for a printout, down to 6 pt, until
// the report's tables fit the paper (reports/reportfile.h: printWidth); a list still wider is
// printed in column bands, and any line longer than the page wraps. Lists and timber lists get
// a head on every page (layoutForPrint). Needs Qt Gui only: PDF files are written with
// QPdfWriter, printers are reached through reports/printer.h.
#include "reports/reportfile.h"

#include <QString>
#include <QStringList>

class QPagedPaintDevice;

namespace tarvik {

struct PrintJob {
    QString printerName; // an installed printer; empty with a pdfPath
    QString pdfPath;     // print into this PDF file instead
    QString fontFamily = QStringLiteral("Courier New");
    PrintSettings settings;
    int topMarginMm = 0; // Einst_Zahl(59)
};

struct PrintResult {
    bool ok = false;
    int pages = 0;
    QString message;        // German, when not ok
    double fontSize = 0;    // the size the lines were printed in
    bool fontReduced = false; // the tables needed a smaller font than the chosen one
    int bands = 1;            // column bands of a list wider than the page
    // "Schrift für diesen Ausdruck auf 9,5 pt verkleinert, …", the bands, or empty.
    QString statusText() const;
};

inline constexpr double SmallestPrintFontSize = 6.0;

// "Courier New" where it is installed; Liberation Mono, which has its metrics, elsewhere.
QString resolveFixedFont(const QString& family);

// Lays the job's page settings onto the device and paints the lines; needs a QGuiApplication.
PrintResult paintLines(QPagedPaintDevice& device, int resolution, const QStringList& lines, const PrintJob& job);

// Into job.pdfPath.
PrintResult printLinesToPdf(const QStringList& lines, const PrintJob& job);
PrintResult printFileToPdf(const QString& reportPath, const PrintJob& job);

} // namespace tarvik
