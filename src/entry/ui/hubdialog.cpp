#include "entry/ui/hubdialog.h"

#include "common/ui/columnwidths.h"
#include "common/ui/gridformat.h"
#include "common/ui/guarded.h"
#include "eldat/offer.h"
#include "entry/ui/logdialog.h"
#include "entry/ui/lotdialog.h"
#include "entry/ui/poledialog.h"
#include "entry/ui/stackdialog.h"
#include "invoices/ui/invoicedialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSqlQueryModel>
#include <QSqlRecord>
#include <QTableView>
#include <QVBoxLayout>

namespace tarvik {
namespace {

// Each list has its own columns, so each keeps its own widths in the section "eingabe".
QString widthsKey(int list)
{
    return list == int(HubList::Lose) ? QStringLiteral("eingabe") : QStringLiteral("eingabe/liste%1").arg(list);
}

// The IDs of the listed rows in shown order; every list ends in the row's ID.
QList<qint32> listedIds(const QSqlQueryModel* model)
{
    QList<qint32> ids;
    for (int row = 0; row < model->rowCount(); ++row)
        ids << model->record(row).value(model->columnCount() - 1).toInt();
    return ids;
}

} // namespace

HubDialog::HubDialog(const AppContext& context, qint32 harvestId, HubList list, QWidget* parent)
    : QDialog(parent), m_context(context), m_harvestId(harvestId)
{
    setObjectName(QStringLiteral("EF_Eingabe"));
    setWindowTitle(QStringLiteral("Eingabemodul für Lose, Stämme, Pfähle und Schichtholz"));
    setModal(true);
    build();
    fillHarvests();
    m_lists->button(int(list))->setChecked(true);
    refresh();
}

void HubDialog::build()
{
    m_header = new QLabel;
    m_header->setObjectName(QStringLiteral("bezhieb"));
    QFont bold = m_header->font();
    bold.setBold(true);
    m_header->setFont(bold);

    auto* choices = new QHBoxLayout;
    m_lists = new QButtonGroup(this);
    int index = 0;
    for (const char* caption : {"Lose", "Stämme", "Pfähle", "Schichtholz", "Rechnungen"}) {
        auto* b = new QRadioButton(QString::fromUtf8(caption));
        b->setObjectName(QStringLiteral("opti(%1)").arg(index));
        m_lists->addButton(b, index++);
        choices->addWidget(b);
    }
    m_openOnly = new QCheckBox(QStringLiteral("Nur offene Rechnungen anzeigen"));
    m_openOnly->setObjectName(QStringLiteral("konoffen"));
    choices->addWidget(m_openOnly);
    choices->addStretch();

    m_model = new QSqlQueryModel(this);
    m_grid = new QTableView;
    m_grid->setObjectName(QStringLiteral("gridli"));
    m_grid->setModel(m_model);
    formatGrid(m_grid);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 4);

    auto button = [this](const char* name, const char* caption, void (HubDialog::*slot)()) {
        auto* b = new QPushButton(QString::fromUtf8(caption));
        b->setObjectName(QString::fromUtf8(name));
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };
    m_new = button("neu", "&Neu", &HubDialog::onNew);
    m_change = button("ändern", "Ä&ndern", &HubDialog::onChange);
    m_copy = button("kopieren", "&Kopieren", &HubDialog::onCopy);
    QPushButton* remove = button("löschen", "&Löschen", &HubDialog::onDelete);
    m_paid = button("bezahlt", "&Bezahlt", &HubDialog::onPaid);
    m_eldat = button("comeldat", "Lose als .&eldat-Angebot", &HubDialog::onEldat);
    QPushButton* next = button("comnächster", "Nächster &Schlag", &HubDialog::onNextHarvest);
    auto* close = new QPushButton(QStringLiteral("Schl&ießen"));
    close->setObjectName(QStringLiteral("cmdabbrechen"));
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    m_harvests = new QComboBox;
    m_harvests->setObjectName(QStringLiteral("komhieb"));

    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("hilfe"));
    help->setAutoDefault(false);
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {m_new, m_change, m_copy, remove, m_paid, m_eldat})
        buttons->addWidget(b);
    buttons->addStretch();
    buttons->addWidget(m_harvests);
    buttons->addWidget(next);
    buttons->addWidget(help);
    buttons->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_header);
    layout->addLayout(choices);
    layout->addWidget(m_grid, 1);
    layout->addLayout(buttons);
    resize(1100, 650);

    connect(m_lists, &QButtonGroup::idToggled, this, [this](int, bool on) { if (on) refresh(); });
    connect(m_openOnly, &QCheckBox::toggled, this, &HubDialog::refresh);
    connect(m_grid, &QTableView::doubleClicked, this, &HubDialog::onChange);
    connect(m_harvests, &QComboBox::activated, this, [this](int i) {
        m_harvestId = m_harvests->itemData(i).toInt();
        refresh();
    });
}

void HubDialog::fillHarvests()
{
    const auto choices = runGuarded(m_context.prompter, [this] { return harvestChoices(m_context.db); });
    for (const HarvestChoice& c : choices.value_or(QList<HarvestChoice>()))
        m_harvests->addItem(c.caption, c.id);
    m_harvests->setCurrentIndex(m_harvests->findData(m_harvestId));
}

HubList HubDialog::list() const { return static_cast<HubList>(std::max(0, m_lists->checkedId())); }

void HubDialog::refresh()
{
    if (m_shownList >= 0)
        saveColumnWidths(m_grid, widthsKey(m_shownList));
    const bool shown = runGuarded(m_context.prompter, [this] {
        m_header->setText(hubHeader(m_context.db, m_harvestId));
        m_model->setQuery(hubListQuery(m_context.db, list(), m_openOnly->isChecked(), m_harvestId));
    });
    if (!shown)
        m_model->clear();
    while (m_model->canFetchMore())
        m_model->fetchMore();
    m_shownList = int(list());
    fitColumnsToContent(m_grid, widthsKey(m_shownList));
    updateButtons();
}

void HubDialog::updateButtons()
{
    const HubList l = list();
    m_new->setEnabled(true);
    m_change->setEnabled(true);
    m_copy->setEnabled(l == HubList::Staemme || l == HubList::Pfaehle || l == HubList::Schichtholz);
    m_paid->setEnabled(l == HubList::Rechnungen);
    m_openOnly->setEnabled(l == HubList::Rechnungen);
    m_eldat->setEnabled(l == HubList::Lose);
    // Several lots go into one offer; every other list works on one marked row.
    m_grid->setSelectionMode(l == HubList::Lose ? QAbstractItemView::ExtendedSelection : QAbstractItemView::SingleSelection);
}

std::optional<qint32> HubDialog::markedId() const
{
    const QModelIndex index = m_grid->currentIndex();
    if (!index.isValid() || !m_grid->selectionModel()->isRowSelected(index.row(), QModelIndex()))
        return std::nullopt;
    const QSqlRecord r = m_model->record(index.row());
    return r.value(r.count() - 1).toInt(); // every list ends in the row's ID
}

void HubDialog::openWindow(std::optional<qint32> id)
{
    // "Ändern" steps through the listed rows; afterwards the list stands on the row shown last.
    std::optional<qint32> shown;
    if (list() == HubList::Lose) {
        LotDialog dialog(m_context, m_harvestId, id, listedIds(m_model), this);
        dialog.exec();
        shown = dialog.lastId();
    } else if (list() == HubList::Staemme) {
        LogDialog dialog(m_context, m_harvestId, id, std::nullopt, this);
        shown = stepped(dialog, id);
    } else if (list() == HubList::Pfaehle) {
        PoleDialog dialog(m_context, m_harvestId, id, std::nullopt, this);
        shown = stepped(dialog, id);
    } else if (list() == HubList::Schichtholz) {
        StackDialog dialog(m_context, m_harvestId, id, std::nullopt, this);
        shown = stepped(dialog, id);
    } else if (list() == HubList::Rechnungen) {
        InvoiceDialog dialog(m_context, id ? InvoiceDialog::Mode::Aendern : InvoiceDialog::Mode::Neu, listedIds(m_model),
                             m_grid->currentIndex().row(), this);
        dialog.exec();
        refresh();
        if (id && dialog.hubRow() >= 0)
            m_grid->selectRow(dialog.hubRow());
        return;
    }
    refresh();
    if (shown)
        selectId(*shown);
}

std::optional<qint32> HubDialog::stepped(EntryWindow& window, std::optional<qint32> id)
{
    if (id)
        window.stepThrough(OpenerRows(listedIds(m_model), *id));
    window.exec();
    return id ? window.editedId() : std::nullopt;
}

void HubDialog::selectId(qint32 id)
{
    for (int row = 0; row < m_model->rowCount(); ++row)
        if (m_model->record(row).value(m_model->columnCount() - 1).toInt() == id) {
            m_grid->selectRow(row);
            return;
        }
}

void HubDialog::onNew() { openWindow(std::nullopt); }

void HubDialog::onChange()
{
    const auto id = markedId();
    if (!id) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie ändern möchten."));
        return;
    }
    if (m_change->isEnabled())
        openWindow(id);
}

void HubDialog::onCopy()
{
    const auto id = markedId();
    if (!id) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst einen Datensatz, der kopiert werden soll!"));
        return;
    }
    runGuarded(m_context.prompter, [&] { return copyRecord(m_context, list(), m_harvestId, *id); });
    refresh();
}

void HubDialog::onDelete()
{
    const auto id = markedId();
    if (!id) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie löschen möchten."));
        return;
    }
    runGuarded(m_context.prompter, [&] { return deleteRecord(m_context, list(), m_harvestId, *id); });
    refresh();
}

void HubDialog::onPaid()
{
    const auto id = markedId();
    if (!id) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst die Rechnung, die als bezahlt markiert werden soll!"));
        return;
    }
    runGuarded(m_context.prompter, [&] { return markInvoicePaid(m_context, m_harvestId, *id); });
    refresh();
}

void HubDialog::onEldat()
{
    // The piles follow the list's order, whatever order the rows were marked in.
    QList<int> rows;
    for (const QModelIndex& index : m_grid->selectionModel()->selectedRows())
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    QList<qint32> ids;
    for (int row : rows)
        ids << m_model->record(row).value(m_model->columnCount() - 1).toInt();
    if (ids.isEmpty()) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst die Lose, die angeboten werden sollen."));
        return;
    }
    const auto lots = runGuarded(m_context.prompter, [&] { return eldat::lotNumbersOf(m_context.db, ids); });
    if (!lots)
        return;
    const auto proposal = runGuarded(m_context.prompter, [&] { return eldat::proposedFileName(m_context.db, m_harvestId, *lots); });
    if (!proposal)
        return;
    // The name is asked for only once the lots are known to make an offer.
    eldat::OfferRequest request;
    request.harvestId = m_harvestId;
    request.lotNumbers = *lots;
    request.chooseFilePath = [this, &proposal] {
        QString path = m_context.prompter.chooseSaveFile(QStringLiteral("Lose als .eldat-Angebot speichern"),
                                                         QDir(m_context.dataFolder).filePath(*proposal),
                                                         QStringLiteral("ELDATsmart-Dateien (*.eldat)"));
        if (!path.isEmpty() && !path.endsWith(QLatin1String(eldat::FileSuffix), Qt::CaseInsensitive))
            path += QLatin1String(eldat::FileSuffix);
        return path;
    };
    runGuarded(m_context.prompter, [&] { return eldat::writeOffer(m_context, request); });
}

void HubDialog::onNextHarvest()
{
    const int next = m_harvests->currentIndex() + 1;
    if (next >= m_harvests->count())
        return;
    m_harvests->setCurrentIndex(next);
    m_harvestId = m_harvests->itemData(next).toInt();
    refresh();
}

void HubDialog::done(int result)
{
    if (m_shownList >= 0)
        saveColumnWidths(m_grid, widthsKey(m_shownList));
    QDialog::done(result);
}

} // namespace tarvik
