#include "reports/printer.h"

#include <QPrinter>
#include <QPrinterInfo>

namespace tarvik {

QStringList installedPrinters() { return QPrinterInfo::availablePrinterNames(); }

QString defaultPrinter() { return QPrinterInfo::defaultPrinterName(); }

PrintResult printLines(const QStringList& lines, const PrintJob& job)
{
    if (!job.pdfPath.isEmpty())
        return printLinesToPdf(lines, job);
    QPrinter printer(QPrinter::HighResolution);
    printer.setPrinterName(job.printerName);
    printer.setDocName(QStringLiteral("TARVIK"));
    return paintLines(printer, printer.resolution(), lines, job);
}

} // namespace tarvik
