#pragma once
// Printing on an installed printer (Qt PrintSupport, which brings widgets along: the command
// line does not link it).
#include "reports/print.h"

namespace tarvik {

// On job.printerName, or into job.pdfPath when that is set.
PrintResult printLines(const QStringList& lines, const PrintJob& job);

QStringList installedPrinters();
QString defaultPrinter();

} // namespace tarvik
