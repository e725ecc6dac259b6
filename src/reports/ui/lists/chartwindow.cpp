#include "reports/ui/lists/chartwindow.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QHorizontalBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QPdfWriter>
#include <QPushButton>
#include <QScrollArea>
#include <QValueAxis>
#include <QVBoxLayout>
#include <cmath>

namespace tarvik {

namespace {
const QString EmptyGroupLabel = QStringLiteral("(leer)");
} // namespace

double countTickStep(double top)
{
    const double rough = std::max(1.0, top / 6);
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (double m : {1.0, 2.0, 5.0})
        if (m * power >= rough)
            return m * power;
    return 10 * power;
}

ChartData groupChartData(const QAbstractItemModel& rows, int keyColumns, const QString& title, const QList<int>& decimals)
{
    ChartData data;
    data.title = title;
    for (int c = keyColumns; c < rows.columnCount(); ++c) {
        data.figures << rows.headerData(c, Qt::Horizontal).toString();
        data.values << QList<double>();
        data.decimals << decimals.value(c - keyColumns, 3);
    }
    for (int row = 0; row < rows.rowCount(); ++row) {
        QStringList keys;
        for (int c = 0; c < keyColumns; ++c) {
            const QString key = rows.data(rows.index(row, c)).toString().trimmed();
            keys << (key.isEmpty() ? EmptyGroupLabel : key);
        }
        QString label = keys.join(QStringLiteral(" / "));
        // The category axis keeps one bar per distinct label; groups the grid shows alike (an empty
        // and a missing key, lengths that round the same) each keep theirs by an invisible mark.
        while (data.groups.contains(label))
            label += QChar(0x200B);
        data.groups << label;
        for (int c = keyColumns; c < rows.columnCount(); ++c)
            data.values[c - keyColumns] << rows.data(rows.index(row, c), Qt::EditRole).toDouble();
    }
    return data;
}

int preferredFigure(const QStringList& figures)
{
    for (const char* hint : {"Efm", "m3", "Anzahl", "Geldwert"})
        for (int i = 0; i < figures.size(); ++i)
            if (figures[i].contains(QString::fromUtf8(hint)))
                return i;
    return 0;
}

ChartWindow::ChartWindow(ChartData data, Prompter& prompter, QWidget* parent)
    : QDialog(parent), m_data(std::move(data)), m_prompter(prompter)
{
    setObjectName(QStringLiteral("BF_Diagramm"));
    setWindowTitle(QStringLiteral("Diagramm: ") + m_data.title);
    resize(1000, 680);
    m_figure = new QComboBox;
    m_figure->setObjectName(QStringLiteral("komwert"));
    m_figure->addItems(m_data.figures);
    m_view = new QChartView;
    m_view->setObjectName(QStringLiteral("diagramm"));
    m_view->setRenderHint(QPainter::Antialiasing);

    auto* png = new QPushButton(QStringLiteral("Als &PNG speichern"));
    png->setObjectName(QStringLiteral("compng"));
    auto* pdf = new QPushButton(QStringLiteral("Als P&DF speichern"));
    pdf->setObjectName(QStringLiteral("compdf"));
    auto* close = new QPushButton(QStringLiteral("&Schließen"));
    close->setObjectName(QStringLiteral("beenden"));
    connect(png, &QPushButton::clicked, this, &ChartWindow::onSavePng);
    connect(pdf, &QPushButton::clicked, this, &ChartWindow::onSavePdf);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);

    auto* top = new QHBoxLayout;
    top->addWidget(new QLabel(QStringLiteral("Dargestellter Wert:")));
    top->addWidget(m_figure, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(png);
    buttons->addWidget(pdf);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    // Many groups get the height their labels need; the window scrolls.
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setWidget(m_view);
    m_view->setMinimumHeight(m_data.groups.size() > 10 ? int(m_data.groups.size()) * 20 + 120 : 400);
    layout->addWidget(scroll, 1);
    layout->addLayout(buttons);

    connect(m_figure, &QComboBox::currentIndexChanged, this, &ChartWindow::showFigure);
    const int first = preferredFigure(m_data.figures);
    m_figure->setCurrentIndex(first);
    showFigure(first);
}

void ChartWindow::showFigure(int figure)
{
    if (figure < 0 || figure >= m_data.values.size())
        return;
    // Many groups lie better as horizontal bars, the first group on top: their labels keep
    // their full width.
    const bool horizontal = m_data.groups.size() > 10;
    QStringList labels = m_data.groups;
    QList<double> values = m_data.values[figure];
    if (horizontal) {
        std::reverse(labels.begin(), labels.end());
        std::reverse(values.begin(), values.end());
    }
    const int decimals = m_data.decimals.value(figure, 3);
    const double scale = std::pow(10.0, decimals);
    auto* set = new QBarSet(m_data.figures[figure]);
    double top = 0;
    for (double v : values) {
        *set << std::round(v * scale) / scale; // the label shows what the list shows
        top = std::max(top, v);
    }
    QAbstractBarSeries* series = horizontal ? static_cast<QAbstractBarSeries*>(new QHorizontalBarSeries)
                                            : static_cast<QAbstractBarSeries*>(new QBarSeries);
    series->append(set);
    series->setLabelsVisible(m_data.groups.size() <= 30);
    series->setLabelsFormat(QStringLiteral("@value"));
    series->setLabelsPrecision(15); // rounded above; all digits of a sum of money are shown
    auto* chart = new QChart;
    // Labels and axes in German digits: "1.234,56".
    chart->setLocalizeNumbers(true);
    chart->setLocale(QLocale(QLocale::German, QLocale::Germany));
    chart->setTitle(m_data.title);
    chart->addSeries(series);
    chart->legend()->setVisible(false);
    auto* groups = new QBarCategoryAxis;
    groups->append(labels);
    groups->setTruncateLabels(false);
    chart->addAxis(groups, horizontal ? Qt::AlignLeft : Qt::AlignBottom);
    series->attachAxis(groups);
    auto* amount = new QValueAxis;
    amount->setTitleText(m_data.figures[figure]);
    if (decimals == 0) {
        // A count has whole ticks only.
        const double step = countTickStep(top);
        amount->setTickType(QValueAxis::TicksDynamic);
        amount->setTickAnchor(0);
        amount->setTickInterval(step);
        amount->setRange(0, std::max(step, std::ceil(top * 1.1 / step) * step));
        amount->setLabelFormat(QStringLiteral("%d"));
    } else {
        amount->setRange(0, top > 0 ? top * 1.1 : 1);
        amount->setLabelFormat(QStringLiteral("%.") + QString::number(std::min(decimals, 2)) + u'f');
    }
    chart->addAxis(amount, horizontal ? Qt::AlignBottom : Qt::AlignLeft);
    series->attachAxis(amount);
    QChart* old = m_view->chart();
    m_view->setChart(chart);
    delete old;
}

bool ChartWindow::savePng(const QString& path)
{
    return m_view->grab().save(path, "PNG");
}

bool ChartWindow::savePdf(const QString& path)
{
    QPdfWriter writer(path);
    writer.setPageOrientation(QPageLayout::Landscape);
    writer.setTitle(m_data.title);
    QPainter painter;
    if (!painter.begin(&writer))
        return false;
    m_view->render(&painter);
    return painter.end();
}

void ChartWindow::onSavePng()
{
    const QString path = m_prompter.chooseSaveFile(QStringLiteral("Diagramm als Bild speichern"), QStringLiteral("Diagramm.png"),
                                                   QStringLiteral("PNG-Bild (*.png)"));
    if (!path.isEmpty() && !savePng(path))
        m_prompter.inform(QStringLiteral("Das Bild %1 konnte nicht gespeichert werden.").arg(path), Prompter::Icon::Warning);
}

void ChartWindow::onSavePdf()
{
    const QString path = m_prompter.chooseSaveFile(QStringLiteral("Diagramm als PDF speichern"), QStringLiteral("Diagramm.pdf"),
                                                   QStringLiteral("PDF-Datei (*.pdf)"));
    if (!path.isEmpty() && !savePdf(path))
        m_prompter.inform(QStringLiteral("Die PDF-Datei %1 konnte nicht gespeichert werden.").arg(path), Prompter::Icon::Warning);
}

} // namespace tarvik
