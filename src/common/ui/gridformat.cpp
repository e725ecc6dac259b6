#include "common/ui/gridformat.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/ui/columnwidths.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QBrush>
#include <QHeaderView>
#include <QLineEdit>
#include <QPalette>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QStyle>
#include <QTableView>
#include <QTableWidget>
#include <QTextEdit>

#include <cmath>

namespace tarvik {
namespace {

constexpr int SampledRows = 200;    // enough to judge a column, cheap on a 10,000-row list
constexpr int MaxColumnWidth = 320; // pixels
const char* const ReadOnlyProperty = "tarvikReadOnly";

bool isBlank(const QVariant& v)
{
    return !v.isValid() || v.isNull() || (v.typeId() == QMetaType::QString && v.toString().trimmed().isEmpty());
}

bool isNumberType(const QVariant& v)
{
    switch (v.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        return true;
    default:
        return false;
    }
}

bool isRealType(const QVariant& v) { return v.typeId() == QMetaType::Double || v.typeId() == QMetaType::Float; }

bool isNumberText(const QString& text)
{
    static const QRegularExpression number(QStringLiteral("^-?\\d+([.,]\\d+)?$"));
    return number.match(text.trimmed()).hasMatch();
}

bool isDateText(const QString& text)
{
    static const QRegularExpression date(QStringLiteral("^(\\d{4}-\\d{2}-\\d{2}([T ][0-9:.]*)?|\\d{1,2}\\.\\d{1,2}\\.\\d{4})$"));
    return date.match(text.trimmed()).hasMatch();
}

Qt::Alignment alignmentOf(CellKind kind)
{
    return (kind == CellKind::Number || kind == CellKind::Money ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

QColor readOnlyBackground() { return QApplication::palette().color(QPalette::Active, QPalette::Window); }

} // namespace

bool isMoneyColumn(const QString& column)
{
    const QString name = column.toLower();
    if (name == u"preis_art")
        return false; // the price kind 0..3
    return name.contains(u"preis") || name.contains(u"betrag") || name.startsWith(u"kosten_") || name.startsWith(u"geldwert");
}

int columnDecimals(const QString& column)
{
    const QString name = column.toLower();
    if (name.contains(u"fläche"))
        return 4;
    if (name.contains(u"efm") || name.contains(u"m3"))
        return 3;
    if (name.contains(u"länge") || name.endsWith(u"tiefe_m") || name.endsWith(u"höhe_m") || name.endsWith(u"_proz"))
        return 2;
    return -1;
}

CellKind columnKind(const QString& column, const QVector<QVariant>& values)
{
    bool any = false, numbers = true, dates = true;
    for (const QVariant& v : values) {
        if (isBlank(v))
            continue;
        any = true;
        const bool isText = v.typeId() == QMetaType::QString;
        numbers = numbers && (isNumberType(v) || (isText && isNumberText(v.toString())));
        dates = dates && (v.typeId() == QMetaType::QDate || v.typeId() == QMetaType::QDateTime || (isText && isDateText(v.toString())));
        if (!numbers && !dates)
            break;
    }
    if (!any)
        return isMoneyColumn(column) ? CellKind::Money : CellKind::Text;
    if (numbers)
        return isMoneyColumn(column) ? CellKind::Money : CellKind::Number;
    return dates ? CellKind::Date : CellKind::Text;
}

GridCell gridCell(CellKind kind, const QString& column, const QVariant& value, const QVariant& shown)
{
    const Qt::Alignment alignment = alignmentOf(kind);
    const bool shownIsText = shown.typeId() == QMetaType::QString && !shown.toString().isEmpty();
    if (isBlank(value))
        return {shownIsText ? shown.toString() : QString(), alignment}; // e.g. a sum over nothing shown as 0
    switch (kind) {
    case CellKind::Money:
        return {formatDecimal(readNumber(value), 2), alignment};
    case CellKind::Number:
        if (shownIsText)
            return {shown.toString(), alignment};
        if (isRealType(value)) {
            const int decimals = columnDecimals(column);
            if (decimals >= 0)
                return {formatDecimal(value.toDouble(), decimals), alignment};
            // Single-precision values carry noise beyond the sixth decimal.
            return {numberText(std::round(value.toDouble() * 1e6) / 1e6), alignment};
        }
        if (isNumberType(value))
            return {QString::number(value.toLongLong()), alignment};
        return {value.toString().trimmed(), alignment};
    case CellKind::Date:
        if (shownIsText && parseGermanDate(shown.toString()).isValid())
            return {shown.toString(), alignment};
        if (const QString date = germanDateFromSql(value); !date.isEmpty())
            return {date, alignment};
        return {value.toString(), alignment};
    case CellKind::Text:
        break;
    }
    return {shown.isValid() ? shown.toString() : value.toString(), alignment};
}

// ---- the proxy

GridFormatProxy::GridFormatProxy(QObject* parent) : QIdentityProxyModel(parent)
{
    // Any change of rows or values may change what a column holds.
    connect(this, &QAbstractItemModel::modelReset, this, &GridFormatProxy::forgetKinds);
    connect(this, &QAbstractItemModel::layoutChanged, this, &GridFormatProxy::forgetKinds);
    connect(this, &QAbstractItemModel::rowsInserted, this, &GridFormatProxy::forgetKinds);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &GridFormatProxy::forgetKinds);
    connect(this, &QAbstractItemModel::columnsInserted, this, &GridFormatProxy::forgetKinds);
    connect(this, &QAbstractItemModel::columnsRemoved, this, &GridFormatProxy::forgetKinds);
    connect(this, &QAbstractItemModel::dataChanged, this, &GridFormatProxy::forgetKinds);
    connect(this, &QAbstractItemModel::headerDataChanged, this, &GridFormatProxy::forgetKinds);
}

void GridFormatProxy::setSourceModel(QAbstractItemModel* source)
{
    forgetKinds();
    QIdentityProxyModel::setSourceModel(source);
}

CellKind GridFormatProxy::kindOf(int column) const
{
    const QAbstractItemModel* source = sourceModel();
    if (!source || column < 0 || column >= source->columnCount())
        return CellKind::Text;
    if (m_kinds.size() != source->columnCount())
        m_kinds = QVector<int>(source->columnCount(), -1);
    if (m_kinds[column] < 0) {
        QVector<QVariant> values;
        const int rows = std::min(source->rowCount(), SampledRows);
        values.reserve(rows);
        for (int row = 0; row < rows; ++row)
            values << source->index(row, column).data(Qt::EditRole);
        m_kinds[column] = int(columnKind(source->headerData(column, Qt::Horizontal).toString(), values));
    }
    return CellKind(m_kinds[column]);
}

bool GridFormatProxy::anyEditable() const
{
    if (m_anyEditable < 0) {
        m_anyEditable = 0;
        for (int c = 0; c < columnCount() && rowCount() > 0; ++c)
            if (flags(index(0, c)) & Qt::ItemIsEditable)
                m_anyEditable = 1;
    }
    return m_anyEditable == 1;
}

QVariant GridFormatProxy::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !sourceModel())
        return QIdentityProxyModel::data(index, role);
    switch (role) {
    case Qt::DisplayRole: {
        const QModelIndex source = mapToSource(index);
        const CellKind kind = kindOf(index.column());
        return gridCell(kind, sourceModel()->headerData(index.column(), Qt::Horizontal).toString(), source.data(Qt::EditRole),
                        source.data(Qt::DisplayRole))
            .text;
    }
    case Qt::TextAlignmentRole:
        return int(alignmentOf(kindOf(index.column())));
    case Qt::BackgroundRole:
        if (m_view && m_view->editTriggers() != QAbstractItemView::NoEditTriggers && !(flags(index) & Qt::ItemIsEditable)
            && anyEditable())
            return QBrush(readOnlyBackground());
        break;
    default:
        break;
    }
    return QIdentityProxyModel::data(index, role);
}

GridFormatProxy* formatGrid(QTableView* grid)
{
    if (auto* already = qobject_cast<GridFormatProxy*>(grid->model()))
        return already;
    auto* proxy = new GridFormatProxy(grid);
    proxy->setSourceModel(grid->model());
    proxy->setView(grid);
    grid->setModel(proxy);
    return proxy;
}

void formatTableItems(QTableWidget* table)
{
    for (int c = 0; c < table->columnCount(); ++c) {
        const QString column = table->horizontalHeaderItem(c) ? table->horizontalHeaderItem(c)->text() : QString();
        QVector<QVariant> values;
        for (int r = 0; r < std::min(table->rowCount(), SampledRows); ++r)
            values << (table->item(r, c) ? table->item(r, c)->data(Qt::EditRole) : QVariant());
        const CellKind kind = columnKind(column, values);
        for (int r = 0; r < table->rowCount(); ++r) {
            QTableWidgetItem* item = table->item(r, c);
            if (!item)
                continue;
            const GridCell cell = gridCell(kind, column, item->data(Qt::EditRole));
            item->setText(cell.text);
            item->setTextAlignment(cell.alignment);
        }
    }
}

void fitColumnsToContent(QTableView* grid, const QString& key)
{
    if (!key.isEmpty() && restoreColumnWidths(grid, key))
        return;
    // The rows a view would measure are only those it shows; a grid not yet shown measures
    // almost none. So the first rows of the model are measured here, shown or not, as the grid
    // draws them (its font, its formatting) with the cell's margins.
    const QAbstractItemModel* model = grid->model();
    if (!model)
        return;
    const QFontMetrics metrics(grid->font());
    const int margins = 2 * (grid->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, grid) + 1) + 8;
    const int rows = std::min(model->rowCount(), SampledRows);
    for (int c = 0; c < model->columnCount(); ++c) {
        int width = grid->horizontalHeader()->isHidden() ? 0 : grid->horizontalHeader()->sectionSizeHint(c);
        for (int r = 0; r < rows; ++r) {
            const QModelIndex index = model->index(r, c);
            QFont font = grid->font();
            if (const QVariant f = index.data(Qt::FontRole); f.canConvert<QFont>())
                font = f.value<QFont>();
            const QFontMetrics cell = font == grid->font() ? metrics : QFontMetrics(font);
            width = std::max(width, cell.horizontalAdvance(index.data(Qt::DisplayRole).toString()) + margins);
        }
        grid->setColumnWidth(c, std::min(width, MaxColumnWidth));
    }
}

void showReadOnly(QWidget* field)
{
    if (auto* e = qobject_cast<QLineEdit*>(field))
        e->setReadOnly(true);
    else if (auto* e = qobject_cast<QPlainTextEdit*>(field))
        e->setReadOnly(true);
    else if (auto* e = qobject_cast<QTextEdit*>(field))
        e->setReadOnly(true);
    else if (auto* e = qobject_cast<QAbstractSpinBox*>(field))
        e->setReadOnly(true);
    QPalette palette = field->palette();
    palette.setColor(QPalette::Base, readOnlyBackground());
    field->setPalette(palette);
    field->setProperty(ReadOnlyProperty, true);
}

bool looksReadOnly(const QWidget* field)
{
    return field->property(ReadOnlyProperty).toBool() && field->palette().color(QPalette::Base) == readOnlyBackground();
}

} // namespace tarvik
