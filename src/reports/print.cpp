#include "reports/print.h"

#include "common/textfile.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QLocale>
#include <QPagedPaintDevice>
#include <QPdfWriter>

namespace tarvik {

QString resolveFixedFont(const QString& family)
{
    if (QFontDatabase::hasFamily(family))
        return family;
    return QStringLiteral("Liberation Mono");
}

QString PrintResult::statusText() const
{
    if (!ok || !fontReduced)
        return {};
    return QStringLiteral("Schrift für diesen Ausdruck auf %1 pt verkleinert, damit die breiteste Zeile auf die Seite passt.")
        .arg(QLocale().toString(fontSize, 'g', 3));
}

namespace {

QFont printFont(const PrintJob& job, double pointSize)
{
    QFont font(resolveFixedFont(job.fontFamily));
    font.setStyleHint(QFont::TypeWriter);
    font.setPointSizeF(pointSize);
    font.setBold(job.settings.bold);
    font.setItalic(job.settings.italic);
    return font;
}

qreal widestLine(const QStringList& lines, const QString& prefix, const QFontMetricsF& metrics)
{
    qreal widest = 0;
    for (const QString& line : lines)
        if (line.trimmed() != u"#")
            widest = std::max(widest, metrics.horizontalAdvance(prefix + line));
    return widest;
}

} // namespace

PrintResult paintLines(QPagedPaintDevice& device, int resolution, const QStringList& lines, const PrintJob& job)
{
    device.setPageOrientation(job.settings.landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    device.setPageMargins(QMarginsF(15, 10 + job.topMarginMm, 10, 10), QPageLayout::Millimeter);

    const QString prefix(job.settings.marginChars, u' ');
    const QRectF page = device.pageLayout().paintRectPixels(resolution);
    // A user who presses print gets paper: the font shrinks for this printout until the widest
    // line fits, but not below a size that can still be read.
    double size = job.settings.fontSize;
    QFont font = printFont(job, size);
    while (widestLine(lines, prefix, QFontMetricsF(font, &device)) > page.width()) {
        size -= 0.5;
        if (size < SmallestPrintFontSize)
            return {false, 0,
                    QStringLiteral("Die längste Zeile der Liste ist selbst in der kleinsten Schrift (6 pt) breiter als "
                                   "die Seite. Bitte wählen Sie das Querformat oder einen kleineren linken Rand."),
                    0, false};
        font = printFont(job, size);
    }
    const QFontMetricsF metrics(font, &device);

    QPainter painter;
    if (!painter.begin(&device))
        return {false, 0, QStringLiteral("Der Drucker kann nicht angesprochen werden."), 0, false};
    painter.setFont(font);
    const qreal lineHeight = metrics.lineSpacing();
    const int linesPerPage = std::max(1, int(page.height() / lineHeight));
    int pages = 0;
    for (const QStringList& marked : splitPages(lines)) {
        // A marked page longer than the paper continues on further sheets.
        for (qsizetype start = 0; start < std::max<qsizetype>(marked.size(), 1); start += linesPerPage) {
            if (pages > 0)
                device.newPage();
            ++pages;
            qreal y = metrics.ascent();
            for (qsizetype i = start; i < std::min<qsizetype>(marked.size(), start + linesPerPage); ++i) {
                painter.drawText(QPointF(0, y), prefix + marked[i]);
                y += lineHeight;
            }
        }
    }
    painter.end();
    return {true, pages, {}, size, size < job.settings.fontSize};
}

PrintResult printLinesToPdf(const QStringList& lines, const PrintJob& job)
{
    QPdfWriter writer(job.pdfPath);
    writer.setResolution(1200);
    writer.setTitle(QStringLiteral("TARVIK"));
    writer.setCreator(QStringLiteral("TARVIK 3.0"));
    writer.setPageSize(QPageSize(QPageSize::A4));
    return paintLines(writer, writer.resolution(), lines, job);
}

PrintResult printFileToPdf(const QString& reportPath, const PrintJob& job)
{
    const TextFileResult file = readTextFile(reportPath);
    if (!file.ok)
        return {false, 0, file.error, 0, false};
    return printLinesToPdf(file.lines, job);
}

} // namespace tarvik
