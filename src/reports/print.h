#pragma once
// Printing a report's lines on a printer or into a PDF file: fixed-pitch font, left margin in
// characters, a new page at every "#" mark and when a page is full. A line never wraps.
#include "reports/reportfile.h"

#include <QString>
#include <QStringList>

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
    QString message; // German, when not ok
};

// "Courier New" where it is installed; Liberation Mono, which has its metrics, elsewhere.
QString resolveFixedFont(const QString& family);

// Needs a QGuiApplication. Refuses (without printing) when the longest line does not fit.
PrintResult printLines(const QStringList& lines, const PrintJob& job);
PrintResult printFile(const QString& reportPath, const PrintJob& job);

QStringList installedPrinters();
QString defaultPrinter();

} // namespace tarvik
