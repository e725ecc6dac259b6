#pragma once
// Every grid of the program shows its cells the way a paper list does: money with two decimals,
// a decimal comma, figures right-aligned, names left-aligned, dates as "dd.mm.yyyy". The rules
// live here once; a grid gets them with one call to formatGrid (a QTableView) or
// formatTableItems (a QTableWidget filled by hand).
#include <QAbstractItemView>
#include <QIdentityProxyModel>
#include <QPointer>
#include <QString>
#include <QVariant>
#include <QVector>

class QTableView;
class QTableWidget;
class QWidget;

namespace tarvik {

enum class CellKind { Text, Number, Money, Date };

// Money columns by name: prices, amounts, costs and sums ("Preis_berechnet", "Holzpreis",
// "Betrag", "Kosten_Rücken", "Summe_Preis", "Geldwert"); "Preis_Art" is a kind, not money.
bool isMoneyColumn(const QString& column);
// Fixed decimals of a real-valued column that is not money: volumes 3, the area 4, lengths
// and percentages 2; -1 when the value decides (as few as it needs).
int columnDecimals(const QString& column);

// What a column holds, judged from its name and the values in it (nulls and blanks ignored):
// a column is a figure only when every value is one, so a column never mixes alignments.
CellKind columnKind(const QString& column, const QVector<QVariant>& values);

struct GridCell {
    QString text;
    Qt::Alignment alignment;
};
// One cell: value is the stored value, shown what the model already shows for it (a model that
// formats a figure itself, e.g. "1,5000" for an area, keeps its text; money is always two decimals).
GridCell gridCell(CellKind kind, const QString& column, const QVariant& value, const QVariant& shown = {});

// The proxy formatGrid puts between a grid and its model. Rows and columns are the model's own,
// so a row number read from the grid is a row of the model.
class GridFormatProxy : public QIdentityProxyModel {
    Q_OBJECT
public:
    explicit GridFormatProxy(QObject* parent = nullptr);
    void setSourceModel(QAbstractItemModel* source) override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // While the view lets cells be typed into and some column can be, the cells that cannot be get
    // the read-only background.
    void setView(const QAbstractItemView* view) { m_view = view; }
    CellKind kindOf(int column) const;

private:
    void forgetKinds()
    {
        m_kinds.clear();
        m_anyEditable = -1;
    }
    bool anyEditable() const;
    mutable QVector<int> m_kinds; // CellKind per column, -1 until judged
    mutable int m_anyEditable = -1;
    QPointer<const QAbstractItemView> m_view;
};

// Puts the grid's current model behind a GridFormatProxy (once). Call it right after setModel,
// before connecting to the grid's selection model; indexes for the grid come from grid->model().
GridFormatProxy* formatGrid(QTableView* grid);
// The same rules for a QTableWidget: each item's text and alignment, by its column's header.
void formatTableItems(QTableWidget* table);

// Column widths on opening: the remembered ones under key (see columnwidths.h); at first start
// (or without a key) each column fits its header and content, capped so one long remark does
// not push every other column out of sight.
void fitColumnsToContent(QTableView* grid, const QString& key = {});

// The one look of a field that shows but cannot be changed: read-only and on the window's
// background colour, so nobody tries to type into it.
void showReadOnly(QWidget* field);
bool looksReadOnly(const QWidget* field);

} // namespace tarvik
