#pragma once
// A grouped list as bars: one bar per group for the chosen figure (volume, count or money),
// saved as PNG or PDF.
#include "common/prompter.h"

#include <QDialog>
#include <QList>
#include <QStringList>

class QAbstractItemModel;
class QComboBox;
class QChartView;
class QBarSet;

namespace tarvik {

struct ChartData {
    QString title;
    QStringList groups;                   // one label per group
    QStringList figures;                  // the figures' names
    QList<QList<double>> values;          // values[figure][group]
    QList<int> decimals;                  // per figure as the list shows it; 0: a count
};

class ChartWindow : public QDialog {
    Q_OBJECT
public:
    ChartWindow(ChartData data, Prompter& prompter, QWidget* parent = nullptr);

    bool savePng(const QString& path);
    bool savePdf(const QString& path);
    void showFigure(int figure);

private:
    void onSavePng();
    void onSavePdf();

    ChartData m_data;
    Prompter& m_prompter;
    QComboBox* m_figure = nullptr;
    QChartView* m_view = nullptr;
};

// The bars of a grouped list: one group per row, labelled by its key columns as the grid shows
// them ("(leer)" for an empty key), a figure per further column.
// decimals: per figure column as the list shows it (missing ones get three).
ChartData groupChartData(const QAbstractItemModel& rows, int keyColumns, const QString& title, const QList<int>& decimals = {});

// The step between the ticks of an axis of counts up to top: a whole number, 1, 2 or 5 times a power of ten.
double countTickStep(double top);

// The figure a forester most often wants first: the volume where there is one.
int preferredFigure(const QStringList& figures);

} // namespace tarvik
