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
    if (!ok)
        return {};
    const QString size = QLocale().toString(fontSize, 'g', 3);
    if (bands > 1)
        return QStringLiteral("Die Liste ist breiter als die Seite: sie wurde in %1 pt in %2 Spaltenblöcken gedruckt, "
                              "erst alle Seiten der ersten Spalten, dann die der folgenden.")
            .arg(size)
            .arg(bands);
    if (!fontReduced)
        return {};
    return QStringLiteral("Schrift für diesen Ausdruck auf %1 pt verkleinert, damit die Tabellen auf die Seite passen.").arg(size);
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

// The advance of one character of the fixed-pitch font.
qreal characterWidth(const QFont& font, QPaintDevice* device)
{
    return QFontMetricsF(font, device).horizontalAdvance(QString(100, u'M')) / 100;
}

} // namespace

PrintResult paintLines(QPagedPaintDevice& device, int resolution, const QStringList& lines, const PrintJob& job)
{
    device.setPageOrientation(job.settings.landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    device.setPageMargins(QMarginsF(15, 10 + job.topMarginMm, 10, 10), QPageLayout::Millimeter);

    const QString prefix(job.settings.marginChars, u' ');
    const QRectF page = device.pageLayout().paintRectPixels(resolution);
    // A user who presses print gets paper: the font shrinks for this printout until the tables
    // fit, but not below a size that can still be read; what is wider then goes into bands.
    const int needed = printWidth(lines) + int(prefix.size());
    double size = job.settings.fontSize;
    QFont font = printFont(job, size);
    while (size - 0.5 >= SmallestPrintFontSize && needed * characterWidth(font, &device) > page.width()) {
        size -= 0.5;
        font = printFont(job, size);
    }
    const QFontMetricsF metrics(font, &device);
    const qreal lineHeight = metrics.lineSpacing();
    PageGrid grid;
    grid.columns = std::max(1, int(page.width() / characterWidth(font, &device)) - int(prefix.size()));
    grid.rows = std::max(1, int(page.height() / lineHeight));
    const PrintLayout layout = layoutForPrint(lines, grid);

    QPainter painter;
    if (!painter.begin(&device))
        return {false, 0, QStringLiteral("Der Drucker kann nicht angesprochen werden."), 0, false, 1};
    painter.setFont(font);
    for (qsizetype p = 0; p < layout.pages.size(); ++p) {
        if (p > 0)
            device.newPage();
        qreal y = metrics.ascent();
        for (const QString& line : layout.pages[p]) {
            painter.drawText(QPointF(0, y), prefix + line);
            y += lineHeight;
        }
    }
    painter.end();
    return {true, int(layout.pages.size()), {}, size, size < job.settings.fontSize, layout.bands};
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
        return {false, 0, file.error, 0, false, 1};
    return printLinesToPdf(file.lines, job);
}

} // namespace tarvik
