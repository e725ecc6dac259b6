#include "masterdata/ui/masterdatahub.h"

#include "common/textfile.h"
#include "common/ui/columnwidths.h"
#include "common/ui/gridformat.h"
#include "common/ui/guarded.h"
#include "masterdata/ui/editors.h"
#include "parties/ui/owndatadialog.h"
#include "reports/reportfile.h"
#include "reports/ui/textoutputwindow.h"
#include "store/sql.h"
#include "common/systemerror.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlQueryModel>
#include <QSqlRecord>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>
#include <functional>

namespace tarvik {

// The grid's rows; the class columns of the per-class tables can be typed into.
class MasterListModel : public QSqlQueryModel {
public:
    using QSqlQueryModel::QSqlQueryModel;
    std::function<bool(int, int, const QString&)> onEdit;
    std::function<bool(int)> editable;
    MasterList list = MasterList::Baumarten;

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role != Qt::DisplayRole && role != Qt::EditRole)
            return QSqlQueryModel::data(index, role);
        const QVariant raw = QSqlQueryModel::data(index, Qt::DisplayRole);
        return shownValue(list, record().fieldName(index.column()), raw);
    }

    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        Qt::ItemFlags f = QSqlQueryModel::flags(index);
        if (index.isValid() && editable && editable(index.column()))
            f |= Qt::ItemIsEditable;
        return f;
    }
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        if (role != Qt::EditRole || !index.isValid() || !onEdit)
            return false;
        if (value.toString() == data(index, Qt::DisplayRole).toString())
            return false; // left unchanged: nothing to store, nothing to ask
        return onEdit(index.row(), index.column(), value.toString());
    }
};

namespace {

int rememberedList = 0; // kept while the program runs

QString widthsKey(int list) { return QStringLiteral("stammdaten/liste%1").arg(list); }

} // namespace

MasterDataHub::MasterDataHub(const AppContext& context, std::optional<MasterList> list, QWidget* parent)
    : QDialog(parent), m_context(context)
{
    setObjectName(QStringLiteral("SF_Stammdaten"));
    setWindowTitle(QStringLiteral("Stammdaten"));
    setModal(true);
    build();
    if (list)
        rememberedList = int(*list);
    m_lists->button(rememberedList)->setChecked(true);
    refresh();
}

void MasterDataHub::build()
{
    auto* choices = new QGridLayout;
    m_lists = new QButtonGroup(this);
    for (int i = 0; i < MasterListCount; ++i) {
        auto* b = new QRadioButton(masterListCaption(MasterList(i)).replace(QStringLiteral("- "), QString()));
        b->setObjectName(QStringLiteral("opti(%1)").arg(i));
        m_lists->addButton(b, i);
        choices->addWidget(b, i / 6, i % 6);
    }

    m_model = new MasterListModel(this);
    m_model->editable = [this](int column) {
        return isCellEditable(list(), m_model->record().fieldName(column));
    };
    m_model->onEdit = [this](int row, int column, const QString& typed) { return editCell(row, column, typed); };
    m_grid = new QTableView;
    m_grid->setObjectName(QStringLiteral("li"));
    m_grid->setModel(m_model);
    formatGrid(m_grid); // alignment, decimals and the look of the cells that cannot be typed into
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
                            | QAbstractItemView::AnyKeyPressed);
    m_grid->setAlternatingRowColors(true);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 6);
    m_grid->setContextMenuPolicy(Qt::CustomContextMenu);

    auto button = [this](const char* name, const char* caption, void (MasterDataHub::*slot)()) {
        auto* b = new QPushButton(QString::fromUtf8(caption));
        b->setObjectName(QString::fromUtf8(name));
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };
    m_new = button("neu", "&Neu", &MasterDataHub::onNew);
    m_change = button("control7", "Ä&ndern", &MasterDataHub::onChange);
    m_copy = button("kopie", "&Kopie einfügen", &MasterDataHub::onCopy);
    QPushButton* remove = button("löschen", "&Löschen", &MasterDataHub::onDelete);
    QPushButton* print = button("comlisten", "L&isten", &MasterDataHub::onPrint);
    QPushButton* own = button("comeigene", "&Eigene Angaben", &MasterDataHub::onOwnData);
    own->setToolTip(QStringLiteral("Name, Anschrift, Steuer- und Bankdaten für Rechnungen und E-Rechnungen"));
    auto* close = new QPushButton(QStringLiteral("Schl&ießen"));
    close->setObjectName(QStringLiteral("abbrechen"));
    close->setAutoDefault(false);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);

    m_popup = new QMenu(this);
    m_popup->setObjectName(QStringLiteral("popzeile"));
    const std::pair<const char*, void (MasterDataHub::*)()> items[] = {
        {"&Neu", &MasterDataHub::onNew}, {"&Ändern", &MasterDataHub::onChange}, {nullptr, nullptr}, {"&Löschen", &MasterDataHub::onDelete}};
    int index = 0;
    for (const auto& [caption, slot] : items) {
        QAction* a = caption ? m_popup->addAction(QString::fromUtf8(caption), this, slot) : m_popup->addSeparator();
        a->setObjectName(QStringLiteral("popzeile(%1)").arg(index++));
    }
    connect(m_grid, &QTableView::customContextMenuRequested, this,
            [this](const QPoint& at) { m_popup->exec(m_grid->viewport()->mapToGlobal(at)); });

    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("hilfe"));
    help->setAutoDefault(false);
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {m_new, m_change, m_copy, remove, print})
        buttons->addWidget(b);
    buttons->addStretch();
    buttons->addWidget(own);
    buttons->addWidget(help);
    buttons->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(choices);
    layout->addWidget(m_grid, 1);
    layout->addLayout(buttons);
    resize(1150, 640);

    connect(m_lists, &QButtonGroup::idToggled, this, [this](int id, bool on) {
        if (!on)
            return;
        rememberedList = id;
        refresh();
    });
    connect(m_grid, &QTableView::doubleClicked, this, [this](const QModelIndex& index) {
        if (!(m_grid->model()->flags(index) & Qt::ItemIsEditable))
            onChange();
    });
}

MasterList MasterDataHub::list() const { return MasterList(std::max(0, m_lists->checkedId())); }

void MasterDataHub::refresh()
{
    const std::optional<qint32> marked = m_shownList == int(list()) ? markedId() : std::nullopt;
    if (m_shownList >= 0 && m_model->columnCount() > 0)
        saveWidths();
    m_model->list = list();
    if (!runGuarded(m_context.prompter, [&] {
            QSqlQuery query(m_context.db);
            const QString sql = masterListSql(m_context.db, list());
            if (!query.exec(sql))
                throw StoreError(QStringLiteral("Die Liste kann nicht erstellt werden, weil die Datenbank meldet: %1").arg(germanErrorText(query.lastError().text())));
            m_model->setQuery(std::move(query));
        })) {
        m_model->clear();
    }
    while (m_model->canFetchMore())
        m_model->fetchMore();
    m_shownList = int(list());
    restoreWidths();
    updateButtons();
    selectId(marked);
}

void MasterDataHub::updateButtons()
{
    const MasterList l = list();
    // The per-class tables are typed into the grid; their rows come with the species.
    const bool perClass = l == MasterList::Rindenabzug || l == MasterList::Messbetraege || l == MasterList::Messzahlen
                       || l == MasterList::Tagespreise;
    m_new->setEnabled(!perClass);
    m_change->setEnabled(!perClass);
    m_popup->actions().at(0)->setEnabled(!perClass);
    m_popup->actions().at(1)->setEnabled(!perClass);
    m_copy->setEnabled(l == MasterList::Tagespreise);
}

std::optional<qint32> MasterDataHub::markedId() const
{
    const QModelIndex index = m_grid->currentIndex();
    if (!index.isValid() || !m_grid->selectionModel()->isRowSelected(index.row(), QModelIndex()))
        return std::nullopt;
    const QSqlRecord r = m_model->record(index.row());
    return r.value(QStringLiteral("ID")).toInt();
}

QList<qint32> MasterDataHub::rowIds() const
{
    QList<qint32> ids;
    for (int row = 0; row < m_model->rowCount(); ++row)
        ids << m_model->record(row).value(QStringLiteral("ID")).toInt();
    return ids;
}

void MasterDataHub::selectId(std::optional<qint32> id)
{
    if (!id)
        return;
    const int row = int(rowIds().indexOf(*id));
    if (row >= 0)
        m_grid->selectRow(row);
}

void MasterDataHub::openEditor(bool change, std::optional<qint32> id)
{
    const EditMode mode = change ? EditMode::Aendern : EditMode::Neu;
    const QList<qint32> ids = rowIds();
    std::unique_ptr<QDialog> editor;
    const MasterList l = list();
    if (l == MasterList::Baumarten)
        editor = std::make_unique<SpeciesEditor>(m_context, mode, ids, id, this);
    else if (l == MasterList::Gueteklassen)
        editor = std::make_unique<QualityEditor>(m_context, mode, ids, id, this);
    else if (l == MasterList::Rindenabzug2)
        editor = std::make_unique<BarkRangeEditor>(m_context, mode, ids, id, this);
    else if (const auto table = classTableOf(l))
        editor = std::make_unique<ClassEditor>(m_context, *table, mode, ids, id, this);
    if (!editor)
        return;
    editor->exec();
    refresh();
}

void MasterDataHub::onNew()
{
    if (m_new->isEnabled())
        openEditor(false, std::nullopt);
}

void MasterDataHub::onChange()
{
    const auto id = markedId();
    if (!id) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie ändern möchten."));
        return;
    }
    if (m_change->isEnabled())
        openEditor(true, id);
}

void MasterDataHub::onCopy()
{
    const auto id = markedId();
    if (!id) {
        m_context.prompter.inform(
            QStringLiteral("Bitte markieren Sie zuerst den Datensatz, von dem Sie eine Kopie einfügen möchten."));
        return;
    }
    const std::optional<qint32> copy = runGuarded(m_context.prompter, [&] { return copyDayPriceRow(m_context, *id); });
    refresh();
    selectId(copy);
    // A copy is made to price another quality: its `Güte` is what to type next.
    const int row = copy ? int(rowIds().indexOf(*copy)) : -1;
    const int quality = m_model->record().indexOf(QStringLiteral("Güte"));
    if (row >= 0 && quality >= 0) {
        const QModelIndex cell = m_grid->model()->index(row, quality);
        m_grid->setCurrentIndex(cell);
        m_grid->edit(cell);
    }
}

void MasterDataHub::onDelete()
{
    const auto id = markedId();
    if (!id) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie löschen möchten."));
        return;
    }
    runGuarded(m_context.prompter, [&] {
        deleteMasterRow(m_context, list(), *id);
    });
    refresh();
}

bool MasterDataHub::editCell(int row, int column, const QString& typed)
{
    const QSqlRecord r = m_model->record(row);
    const bool stored = runGuarded(m_context.prompter, [&] { return editMasterCell(m_context, list(), r.value(QStringLiteral("ID")).toInt(), r.fieldName(column), typed); });
    // The grid is read again once the cell's editor has closed.
    QTimer::singleShot(0, this, &MasterDataHub::refresh);
    return stored;
}

void MasterDataHub::onPrint()
{
    QStringList lines;
    if (!runGuarded(m_context.prompter, [&] {
            lines = masterListReport(m_context.db, m_context.settings, list(), m_context.clock.today());
        })) {
        return;
    }
    const TextFileResult written = writeTextFile(reportFilePath(m_context.dataFolder), lines);
    if (!written.ok) {
        m_context.prompter.inform(written.error, Prompter::Icon::Warning);
        return;
    }
    TextOutputWindow window(m_context, this);
    window.exec();
}

void MasterDataHub::saveWidths() const { saveColumnWidths(m_grid, widthsKey(m_shownList)); }

void MasterDataHub::restoreWidths() { fitColumnsToContent(m_grid, widthsKey(m_shownList)); }

void MasterDataHub::done(int result)
{
    if (m_shownList >= 0)
        saveWidths();
    QDialog::done(result);
}

void MasterDataHub::onOwnData()
{
    OwnDataDialog dialog(m_context, this);
    dialog.exec();
}

} // namespace tarvik
