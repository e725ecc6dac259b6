#include "entry/ui/simpleentrydialog.h"

#include "common/numbers.h"
#include "common/text.h"
#include "common/ui/guarded.h"
#include "entry/harvestentry.h"
#include "entry/lotentry.h"
#include "entry/ui/entrywindow.h"
#include "store/gridquery.h"

#include <QApplication>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSqlQueryModel>
#include <QTableView>
#include <QVBoxLayout>

namespace tarvik {

SimpleEntryDialog::SimpleEntryDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> editedId, Setup setup,
                                     QWidget* parent)
    : QDialog(parent), m_context(context), m_harvestId(harvestId), m_masterData(context.db), m_setup(std::move(setup)),
      m_editedId(editedId)
{
    setObjectName(m_setup.objectName);
    setWindowTitle(m_setup.title + (editedId ? QStringLiteral(" - Ändern") : QStringLiteral(" - Neu")));
    setModal(true);
}

QLineEdit* SimpleEntryDialog::addField(QFormLayout* form, int index, const QString& caption, int maxLength, bool readOnly)
{
    auto* edit = new QLineEdit;
    edit->setObjectName(QStringLiteral("tz(%1)").arg(index));
    edit->setMaxLength(maxLength);
    edit->setReadOnly(readOnly);
    if (readOnly)
        edit->setFocusPolicy(Qt::NoFocus);
    m_fields.insert(index, edit);
    form->addRow(caption, edit);
    return edit;
}

void SimpleEntryDialog::selectClass(const QString& cls)
{
    m_class->setCurrentIndex(std::max(0, m_class->findText(cls)));
}

void SimpleEntryDialog::finish(std::optional<qint32> lotNr)
{
    auto combo = [](const QString& name, int maxLength, bool editable) {
        auto* box = new QComboBox;
        box->setObjectName(name);
        box->setEditable(editable);
        if (editable) {
            box->setInsertPolicy(QComboBox::NoInsert);
            box->lineEdit()->setMaxLength(maxLength);
        }
        return box;
    };
    m_lot = combo(QStringLiteral("kom(0)"), 9, true);
    m_lot->lineEdit()->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,9}")), this));
    m_species = combo(QStringLiteral("kom(1)"), 22, true);
    m_class = combo(QStringLiteral("kom(2)"), 6, false);
    m_class->setFocusPolicy(Qt::NoFocus); // chosen from the measured values
    m_remark = combo(QStringLiteral("kom(3)"), 30, true);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Los-Nr"), m_lot);
    form->addRow(QStringLiteral("Baumart"), m_species);
    addFields(form);
    form->addRow(QStringLiteral("Stärkeklasse"), m_class);
    form->addRow(QStringLiteral("Bemerkung"), m_remark);

    m_rows = new QSqlQueryModel(this);
    m_grid = new QTableView;
    m_grid->setObjectName(QStringLiteral("gridli"));
    m_grid->setModel(m_rows);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setFocusPolicy(Qt::NoFocus);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 4);

    auto* ok = new QPushButton(QStringLiteral("&OK"));
    ok->setObjectName(QStringLiteral("ok"));
    auto* next = new QPushButton(QStringLiteral("OK+&Nächster"));
    next->setObjectName(QStringLiteral("okn_chster"));
    auto* cancel = new QPushButton(QStringLiteral("&Abbrechen"));
    cancel->setObjectName(QStringLiteral("cmdabbrechen"));
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("comhilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    for (QPushButton* b : {ok, next, cancel, help})
        b->setAutoDefault(false);
    actAtOnceOnAccessKey(ok);
    actAtOnceOnAccessKey(next);
    (m_context.settings.okNextIsDefault() ? next : ok)->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(help);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(next);
    buttons->addWidget(cancel);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_grid, 1);
    layout->addLayout(buttons);
    resize(760, 640);

    m_lot->addItems(lotNumbers(m_context.db, m_harvestId, m_setup.sorting));
    m_species->addItems(listValues(m_context.db, QStringLiteral("Baumarten"), QStringLiteral("Baumart")));
    m_class->addItems(QStringList{QString()} + listValues(m_context.db, m_setup.classTable, QStringLiteral("Klasse")));
    m_remark->addItems(listValues(m_context.db, QStringLiteral("Liste_Bemerkungen"), QStringLiteral("Inhalt")));
    for (QComboBox* box : {m_lot, m_species, m_remark})
        box->setEditText(QString());

    connect(ok, &QPushButton::clicked, this, [this] {
        if (store())
            accept();
    });
    connect(next, &QPushButton::clicked, this, [this] {
        if (!store())
            return;
        m_editedId.reset();
        setWindowTitle(m_setup.title + QStringLiteral(" - Neu"));
        m_filling = true;
        afterNext();
        m_filling = false;
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_lot, &QComboBox::currentTextChanged, this, &SimpleEntryDialog::chooseLot);

    m_filling = true;
    if (m_editedId)
        loadEntry(*m_editedId);
    else if (lotNr)
        m_lot->setEditText(QString::number(*lotNr));
    m_filling = false;
    if (!m_editedId)
        chooseLot();
    refreshGrid();
}

void SimpleEntryDialog::chooseLot()
{
    if (m_filling)
        return;
    const double lot = readNumber(m_lot->currentText());
    if (lot > 0) {
        // The species of the lot's last row is the likely one for the next.
        const auto species = runGuarded(m_context.prompter, [&] {
            return lastValueOfLot(m_context.db, m_setup.table, QStringLiteral("Baumart"), m_harvestId, toLong(lot));
        });
        if (species && !species->isEmpty())
            m_species->setEditText(*species);
    }
    refreshGrid();
}

void SimpleEntryDialog::refreshGrid()
{
    const bool shown = runGuarded(m_context.prompter, [this] {
        m_rows->setQuery(lotRowsQuery(m_context.db, m_setup.table, m_setup.gridColumns, m_harvestId, toLong(readNumber(m_lot->currentText()))));
    });
    if (!shown)
        m_rows->clear();
}

bool SimpleEntryDialog::store()
{
    if (!runGuarded(m_context.prompter, [this] { return storeEntry(m_editedId); }))
        return false;
    if (m_context.settings.confirmationBeep())
        QApplication::beep();
    const QString lot = m_lot->currentText().trimmed();
    if (m_lot->findText(lot) < 0)
        m_lot->addItem(lot);
    const QString remark = m_remark->currentText().trimmed();
    if (!remark.isEmpty() && m_remark->findText(remark) < 0)
        m_remark->addItem(remark);
    refreshGrid();
    return true;
}

} // namespace tarvik
