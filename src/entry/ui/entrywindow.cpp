#include "entry/ui/entrywindow.h"

#include "common/numbers.h"
#include "common/ui/accesskeys.h"
#include "common/ui/gridformat.h"
#include "common/ui/guarded.h"
#include "store/gridquery.h"
#include "store/records.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QFormLayout>
#include <algorithm>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QTableView>
#include <QVBoxLayout>

namespace tarvik {
namespace {

QComboBox* makeList(int index, int maxLength, bool editable)
{
    auto* box = new QComboBox;
    box->setObjectName(QStringLiteral("kom(%1)").arg(index));
    box->setEditable(editable);
    if (editable) {
        box->setInsertPolicy(QComboBox::NoInsert);
        box->lineEdit()->setMaxLength(maxLength);
    } else {
        box->setFocusPolicy(Qt::NoFocus); // chosen from the measured values
    }
    return box;
}

} // namespace

EntryWindow::EntryWindow(const AppContext& context, qint32 harvestId, std::optional<qint32> editedId, Setup setup, QWidget* parent)
    : QDialog(parent), m_context(context), m_harvestId(harvestId), m_masterData(context.db), m_setup(std::move(setup)),
      m_editedId(editedId)
{
    setObjectName(m_setup.objectName);
    updateTitle();
    setModal(true);

    m_lot = makeList(0, 9, true);
    m_lot->lineEdit()->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,9}")), this));
    m_species = makeList(1, 22, true);
    m_class = makeList(m_setup.classList, 6, false);
    m_remark = makeList(m_setup.remarkList, 30, true);

    m_rows = new HarvestRowsModel(this);
    m_grid = new QTableView;
    m_grid->setObjectName(QStringLiteral("gridli"));
    m_grid->setModel(m_rows);
    formatGrid(m_grid);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setFocusPolicy(Qt::NoFocus);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 4);

    m_ok = new QPushButton(QStringLiteral("&OK"));
    m_ok->setObjectName(QStringLiteral("ok"));
    m_okNext = new QPushButton(QStringLiteral("OK+&Nächster"));
    m_okNext->setObjectName(QStringLiteral("okn_chster"));
    m_cancel = new QPushButton(QStringLiteral("&Abbrechen"));
    m_cancel->setObjectName(QStringLiteral("cmdabbrechen"));
    m_help = new QPushButton(QStringLiteral("&Hilfe"));
    m_help->setObjectName(QStringLiteral("comhilfe"));
    m_help->setEnabled(false); // the help filter enables and wires it when the window shows
    for (QPushButton* b : {m_ok, m_okNext, m_cancel, m_help})
        b->setAutoDefault(false);
    (m_context.settings.okNextIsDefault() ? m_okNext : m_ok)->setDefault(true);
    actAtOnceOnAccessKey(m_ok);
    actAtOnceOnAccessKey(m_okNext);

    connect(m_ok, &QPushButton::clicked, this, &EntryWindow::onOk);
    connect(m_okNext, &QPushButton::clicked, this, &EntryWindow::onOkNext);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_lot, &QComboBox::currentTextChanged, this, &EntryWindow::chooseLot);
}

void EntryWindow::updateTitle()
{
    QString title = m_setup.title + (m_editedId ? QStringLiteral(" - Ändern") : QStringLiteral(" - Neu"));
    if (m_editedId && m_opener.place() > 0)
        title += QStringLiteral(" (%1 von %2)").arg(m_opener.place()).arg(m_opener.size());
    setWindowTitle(title);
}

void EntryWindow::stepThrough(OpenerRows rows)
{
    m_opener = std::move(rows);
    updateTitle();
}

QLineEdit* EntryWindow::makeField(int index, int maxLength, bool readOnly)
{
    auto* edit = new QLineEdit;
    edit->setObjectName(QStringLiteral("tz(%1)").arg(index));
    edit->setMaxLength(maxLength);
    edit->setReadOnly(readOnly);
    // However small the window, the field keeps room for as many digits as it takes: a figure
    // is never shown cut. The style's frame and margins are what its size hint adds to 17 x;
    // two pixels more keep the cursor behind the last digit from scrolling the first away.
    const QFontMetrics metrics = edit->fontMetrics();
    edit->setMinimumWidth(edit->sizeHint().width() - 17 * metrics.horizontalAdvance(u'x')
                          + metrics.horizontalAdvance(QString(maxLength, u'0')) + 2);
    if (readOnly) {
        edit->setFocusPolicy(Qt::NoFocus);
        showReadOnly(edit);
    }
    m_fields.insert(index, edit);
    return edit;
}

void EntryWindow::takeWholeCentimetres(QLineEdit* field)
{
    field->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,%1}").arg(field->maxLength())), field));
}

QLineEdit* EntryWindow::addFormField(QFormLayout* form, int index, const QString& caption, int maxLength, bool readOnly)
{
    QLineEdit* edit = makeField(index, maxLength, readOnly);
    // Figures need room for their digits, not the window's width.
    edit->setFixedWidth(edit->fontMetrics().horizontalAdvance(QString(std::max(maxLength, 4), u'0')) + 16);
    form->addRow(caption, edit);
    return edit;
}

void EntryWindow::layOutAsForm()
{
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    form->addRow(QStringLiteral("Los-Nr"), m_lot);
    form->addRow(QStringLiteral("Baumart"), m_species);
    addFields(form);
    form->addRow(QStringLiteral("Stärkeklasse"), m_class);
    form->addRow(QStringLiteral("Bemerkung"), m_remark);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_grid, 1);
    layout->addLayout(buttonRow());
    resize(760, 640);
}

QHBoxLayout* EntryWindow::buttonRow(const QList<QPushButton*>& leading)
{
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : leading) {
        b->setAutoDefault(false);
        buttons->addWidget(b);
    }
    buttons->addWidget(m_help);
    buttons->addStretch();
    for (QPushButton* b : {m_ok, m_okNext, m_cancel})
        buttons->addWidget(b);
    return buttons;
}

void EntryWindow::start(std::optional<qint32> lotNr)
{
    m_filling = true; // filling the lot list is not choosing a lot
    const QStringList lots = lotNumbers(m_context.db, m_harvestId, m_setup.sorting);
    m_lot->addItems(lots);
    m_species->addItems(listValues(m_context.db, QStringLiteral("Baumarten"), QStringLiteral("Baumart")));
    m_class->addItems(QStringList{QString()} + listValues(m_context.db, m_setup.classTable, QStringLiteral("Klasse")));
    m_remark->addItems(listValues(m_context.db, QStringLiteral("Liste_Bemerkungen"), QStringLiteral("Inhalt")));
    for (QComboBox* box : {m_lot, m_species, m_remark})
        box->setEditText(QString());

    if (m_editedId) {
        loadEntry(*m_editedId);
        m_filling = false;
        afterLoad();
        refreshRows();
        fitColumnsToContent(m_grid);
        showRow(m_editedId);
        return;
    }
    if (lotNr)
        m_lot->setEditText(QString::number(*lotNr));
    else if (lots.size() == 1)
        m_lot->setEditText(lots.first()); // the only lot of its kind is the one meant
    m_filling = false;
    chooseLot();
    fitColumnsToContent(m_grid);
    startNew();
}

std::optional<qint32> EntryWindow::lotNumber() const
{
    const double n = readNumber(m_lot->currentText());
    if (n <= 0)
        return std::nullopt;
    return toLong(n);
}

void EntryWindow::selectClass(const QString& cls)
{
    m_class->setCurrentIndex(std::max(0, m_class->findText(cls)));
}

void EntryWindow::chooseLot()
{
    if (m_filling)
        return;
    const auto lot = lotNumber();
    if (lot) {
        // The species of the lot's last row is the likely one for the next.
        const auto species = runGuarded(m_context.prompter, [&] {
            return lastValueOfLot(m_context.db, m_setup.table, QStringLiteral("Baumart"), m_harvestId, *lot);
        });
        m_filling = true;
        if (species && !species->isEmpty())
            m_species->setEditText(*species);
        m_filling = false;
    }
    lotChosen(lot);
    refreshRows();
}

void EntryWindow::refreshRows()
{
    const bool shown = runGuarded(m_context.prompter, [this] { m_rows->setSource(m_context.db, gridRows()); });
    if (!shown)
        m_rows->clear();
    if (m_rows->columnCount() > 0)
        m_grid->setColumnHidden(m_rows->columnCount() - 1, true); // the ID
}

void EntryWindow::showRow(std::optional<qint32> id)
{
    const int row = id ? m_rows->rowOfId(*id) : 0;
    if (row < 0 || row >= m_rows->rowCount())
        return;
    m_grid->selectRow(row);
    m_grid->scrollTo(m_grid->model()->index(row, 0));
}

bool EntryWindow::store()
{
    const std::optional<qint32> stored = m_editedId; // a new row comes first in the grid
    if (!runGuarded(m_context.prompter, [this] { return storeEntry(); }))
        return false;
    if (m_context.settings.confirmationBeep())
        QApplication::beep();
    m_filling = true;
    const QString lot = m_lot->currentText().trimmed();
    if (m_lot->findText(lot) < 0)
        m_lot->addItem(lot);
    const QString remark = m_remark->currentText().trimmed();
    if (!remark.isEmpty() && m_remark->findText(remark) < 0)
        m_remark->addItem(remark);
    m_filling = false;
    refreshRows();
    showRow(stored);
    return true;
}

void EntryWindow::onOk()
{
    if (!store())
        return;
    const std::optional<qint32> next = m_editedId && !m_opener.isEmpty() ? m_opener.advance() : std::nullopt;
    if (!next) {
        accept();
        return;
    }
    m_editedId = next;
    updateTitle();
    m_filling = true;
    loadEntry(*next);
    m_filling = false;
    afterLoad();
    showRow(next);
}

void EntryWindow::onOkNext()
{
    if (!store())
        return;
    m_editedId.reset();
    updateTitle();
    m_filling = true;
    afterNext();
    m_filling = false;
}

} // namespace tarvik
