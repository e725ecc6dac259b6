#include "reports/print.h"

#include "common/textfile.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>

namespace tarvik {

QString resolveFixedFont(const QString& family)
{
    if (QFontDatabase::hasFamily(family))
        return family;
    return QStringLiteral("Liberation Mono");
}

QStringList installedPrinters() { return QPrinterInfo::availablePrinterNames(); }

QString defaultPrinter() { return QPrinterInfo::defaultPrinterName(); }

PrintResult printLines(const QStringList& lines, const PrintJob& job)
{
    QPrinter printer(QPrinter::HighResolution);
    if (!job.pdfPath.isEmpty()) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(job.pdfPath);
    } else {
        printer.setPrinterName(job.printerName);
    }
    printer.setPageOrientation(job.settings.landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    printer.setPageMargins(QMarginsF(15, 10 + job.topMarginMm, 10, 10), QPageLayout::Millimeter);
    printer.setDocName(QStringLiteral("TARVIK"));

    QFont font(resolveFixedFont(job.fontFamily));
    font.setStyleHint(QFont::TypeWriter);
    font.setPointSize(job.settings.fontSize);
    font.setBold(job.settings.bold);
    font.setItalic(job.settings.italic);

    const QString prefix(job.settings.marginChars, u' ');
    const QFontMetricsF metrics(font, &printer);
    const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());
    qreal widest = 0;
    for (const QString& line : lines)
        if (line.trimmed() != u"#")
            widest = std::max(widest, metrics.horizontalAdvance(prefix + line));
    if (widest > page.width())
        return {false, 0, QStringLiteral("Die längste Zeile der Liste ist breiter als die Seite. Bitte wählen Sie das "
                                         "Querformat, eine kleinere Schrift oder einen kleineren linken Rand.")};

    QPainter painter;
    if (!painter.begin(&printer))
        return {false, 0, QStringLiteral("Der Drucker kann nicht angesprochen werden.")};
    painter.setFont(font);
    const qreal lineHeight = metrics.lineSpacing();
    const int linesPerPage = std::max(1, int(page.height() / lineHeight));
    int pages = 0;
    for (const QStringList& marked : splitPages(lines)) {
        // A marked page longer than the paper continues on further sheets.
        for (qsizetype start = 0; start < std::max<qsizetype>(marked.size(), 1); start += linesPerPage) {
            if (pages > 0)
                printer.newPage();
            ++pages;
            qreal y = metrics.ascent();
            for (qsizetype i = start; i < std::min<qsizetype>(marked.size(), start + linesPerPage); ++i) {
                painter.drawText(QPointF(0, y), prefix + marked[i]);
                y += lineHeight;
            }
        }
    }
    painter.end();
    return {true, pages, {}};
}

PrintResult printFile(const QString& reportPath, const PrintJob& job)
{
    const TextFileResult file = readTextFile(reportPath);
    if (!file.ok)
        return {false, 0, file.error};
    return printLines(file.lines, job);
}

} // namespace tarvik
