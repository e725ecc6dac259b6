#include "entry/ui/harvestdialog.h"

#include "common/ui/accesskeys.h"
#include "common/ui/dateedit.h"
#include "common/ui/gridformat.h"
#include "common/ui/guarded.h"
#include "store/sql.h"

#include <QApplication>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace tarvik {
namespace {

QLineEdit* field(const QString& name, int maxLength)
{
    auto* edit = new QLineEdit;
    edit->setObjectName(name);
    edit->setMaxLength(maxLength);
    return edit;
}

QComboBox* combo(const QString& name, int maxLength)
{
    auto* box = new QComboBox;
    box->setObjectName(name);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->lineEdit()->setMaxLength(maxLength);
    return box;
}

void fill(QComboBox* box, const QStringList& values)
{
    const QString text = box->currentText();
    box->clear();
    box->addItems(values);
    box->setEditText(text);
}

// Room for `chars` characters of the field's font plus its frame (and a combo box's arrow).
int roomFor(const QWidget* w, int chars, QChar sample)
{
    const int frame = qobject_cast<const QComboBox*>(w) ? 36 : 14;
    return w->fontMetrics().horizontalAdvance(QString(chars, sample)) + frame;
}
// A number field is as wide as its digits and never stretched with the window.
void fixChars(QWidget* w, int digits) { w->setFixedWidth(roomFor(w, digits, u'0')); }
// A text field shows at least that many characters and may grow.
void minChars(QWidget* w, int chars) { w->setMinimumWidth(roomFor(w, chars, u'n')); }

const char* const TotalCaptions[] = {"Anzahl Lose", "Stämme Anzahl", "Stämme Efm", "Efm je Stück", "Pfähle Anzahl",
                                     "Schichtholz Efm", "Schichtholz m3", "Teilverkauft", "Verkauft"};

} // namespace

HarvestDialog::HarvestDialog(const AppContext& context, std::optional<qint32> harvestId, QWidget* parent)
    : QDialog(parent), m_context(context), m_editedId(harvestId)
{
    setObjectName(QStringLiteral("FH_Hiebeingabe"));
    setModal(true);
    build();
    fillLists();
    if (m_editedId)
        showHarvest(*m_editedId);
    else
        startNew();
}

HarvestDialog::HarvestDialog(const AppContext& context, qint32 harvestId, QList<qint32> openerIds, QWidget* parent)
    : HarvestDialog(context, harvestId, parent)
{
    m_openerRows = OpenerRows(std::move(openerIds), harvestId);
    showChangeTitle();
}

void HarvestDialog::fillLists()
{
    fill(m_woodland, listValues(m_context.db, QStringLiteral("Liste_Waldnamen"), QStringLiteral("Waldname")));
    fill(m_reason, listValues(m_context.db, QStringLiteral("Liste_Hiebgrund"), QStringLiteral("Inhalt")));
    fill(m_kind, listValues(m_context.db, QStringLiteral("Liste_Hiebart"), QStringLiteral("Inhalt")));
    fill(m_owner, listValues(m_context.db, QStringLiteral("Waldbesitzer"), QStringLiteral("Besitzer")));
}

void HarvestDialog::showChangeTitle()
{
    QString title = QStringLiteral("Hiebeingabe - Ändern");
    if (m_openerRows.place() > 0)
        title += QStringLiteral(" (%1 von %2)").arg(m_openerRows.place()).arg(m_openerRows.size());
    setWindowTitle(title);
}

void HarvestDialog::showHarvest(qint32 id)
{
    m_editedId = id;
    showChangeTitle();
    if (const auto form = runGuarded(m_context.prompter, [&] { return loadHarvest(m_context.db, id); }))
        showForm(*form);
    m_number->setFocus();
    m_number->selectAll();
}

void HarvestDialog::build()
{
    m_number = field(QStringLiteral("tz(0)"), 6);
    m_year = field(QStringLiteral("tz(1)"), 4);
    m_area = field(QStringLiteral("tz(2)"), 12);
    // Number fields take what a number can hold; the checks on OK still say what is wrong.
    m_number->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,6}")), m_number));
    m_year->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,4}")), m_year));
    m_area->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9.,]*")), m_area));
    m_woodland = combo(QStringLiteral("komwaldname"), 30);
    m_reason = combo(QStringLiteral("komhiebgrund"), 20);
    m_kind = combo(QStringLiteral("komhiebart"), 20);
    m_owner = combo(QStringLiteral("komwaldbesitzer"), 30);
    const int widths[] = {50, 255, 30, 30, 15, 30};
    for (int i = 0; i < 6; ++i)
        m_texts[size_t(i)] = field(QStringLiteral("t(%1)").arg(i), widths[i]);
    m_harvester = new QPlainTextEdit;
    m_harvester->setObjectName(QStringLiteral("t(6)"));
    m_harvester->setTabChangesFocus(true);
    m_harvester->setMaximumHeight(60);
    m_dates[0] = new DateEdit(QStringLiteral("tdat(0)"));
    m_dates[1] = new DateEdit(QStringLiteral("tdat(1)"));
    fixChars(m_number, 7);
    fixChars(m_year, 5);
    fixChars(m_area, 11);
    for (DateEdit* date : m_dates) {
        fixChars(date->lineEdit(), 10);
        date->setFixedWidth(date->sizeHint().width());
    }
    QWidget* const longTexts[] = {m_woodland, m_owner, m_texts[0], m_texts[1], m_texts[2], m_texts[3], m_texts[5]};
    for (QWidget* w : longTexts)
        minChars(w, 28);
    minChars(m_reason, 20);
    minChars(m_kind, 20);
    minChars(m_texts[4], 15);

    auto* harvest = new QGroupBox(QStringLiteral("Hieb"));
    auto* grid = new QGridLayout(harvest);
    int row = 0;
    auto add = [&grid, &row](const QString& caption, QWidget* w, int span = 3) {
        grid->addWidget(new QLabel(caption), row, 0);
        grid->addWidget(w, row++, 1, 1, span, span == 1 ? Qt::AlignLeft : Qt::Alignment());
    };
    add(QStringLiteral("Hieb-Nr"), m_number, 1);
    add(QStringLiteral("Jahr"), m_year, 1);
    add(QStringLiteral("Waldname"), m_woodland);
    add(QStringLiteral("Waldort"), m_texts[0]);
    add(QStringLiteral("Hiebfläche (ha)"), m_area, 1);
    add(QStringLiteral("Hiebgrund"), m_reason);
    add(QStringLiteral("Hiebart"), m_kind);
    add(QStringLiteral("Hiebdatum von"), m_dates[0], 1);
    add(QStringLiteral("Hiebdatum bis"), m_dates[1], 1);
    add(QStringLiteral("Bemerkung"), m_texts[1]);
    grid->setRowStretch(row, 1);

    auto* ownerBox = new QGroupBox(QStringLiteral("Waldbesitzer"));
    auto* ownerGrid = new QGridLayout(ownerBox);
    const std::pair<const char*, QWidget*> ownerRows[] = {{"Name", m_owner}, {"Straße", m_texts[2]}, {"Wohnort", m_texts[3]},
                                                          {"Telefon", m_texts[4]}, {"Sonstiges", m_texts[5]}, {"Harvester", m_harvester}};
    int ownerRow = 0;
    for (const auto& [caption, w] : ownerRows) {
        ownerGrid->addWidget(new QLabel(QString::fromUtf8(caption)), ownerRow, 0);
        ownerGrid->addWidget(w, ownerRow++, 1);
    }

    auto* totalsBox = new QGroupBox(QStringLiteral("Summen (werden berechnet)"));
    auto* totalsGrid = new QGridLayout(totalsBox);
    for (int i = 0; i < 9; ++i) {
        QLineEdit* t = field(QStringLiteral("tsumme(%1)").arg(i), 20);
        showReadOnly(t);
        t->setFocusPolicy(Qt::NoFocus);
        fixChars(t, 11);
        if (i < 7)
            t->setAlignment(Qt::AlignRight);
        m_totals[size_t(i)] = t;
        totalsGrid->addWidget(new QLabel(QString::fromUtf8(TotalCaptions[i])), i % 5, (i / 5) * 2);
        totalsGrid->addWidget(t, i % 5, (i / 5) * 2 + 1);
    }
    totalsGrid->setColumnStretch(4, 1);

    m_ok = new QPushButton(QStringLiteral("&OK"));
    m_ok->setObjectName(QStringLiteral("ok"));
    m_okNext = new QPushButton(QStringLiteral("OK+&Nächster"));
    m_okNext->setObjectName(QStringLiteral("okn_chster"));
    auto* cancel = new QPushButton(QStringLiteral("&Abbrechen"));
    cancel->setObjectName(QStringLiteral("cmdabbrechen"));
    auto* standard = new QPushButton(QStringLiteral("Als &Standard"));
    standard->setObjectName(QStringLiteral("standard"));
    standard->setToolTip(QStringLiteral("Waldname, Hiebgrund, Hiebart und Waldbesitzer als Vorgabe für neue Hiebe sichern"));
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("comhilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    // RETURN triggers [OK+Nächster] when the settings say so.
    for (QPushButton* b : {m_ok, m_okNext, cancel, standard, help}) {
        b->setAutoDefault(false);
        actAtOnceOnAccessKey(b);
    }
    (m_context.settings.okNextIsDefault() ? m_okNext : m_ok)->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(help);
    buttons->addWidget(standard);
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_okNext);
    buttons->addWidget(cancel);

    auto* columns = new QHBoxLayout;
    auto* right = new QVBoxLayout;
    right->addWidget(ownerBox);
    right->addWidget(totalsBox);
    columns->addWidget(harvest);
    columns->addLayout(right);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addLayout(buttons);

    connect(m_ok, &QPushButton::clicked, this, &HarvestDialog::onOk);
    connect(m_okNext, &QPushButton::clicked, this, &HarvestDialog::onOkNext);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(standard, &QPushButton::clicked, this, &HarvestDialog::onStandard);
    connect(m_woodland, &QComboBox::textActivated, this, &HarvestDialog::fillWoodland);
    // A name completed while typing and left with Tab counts as chosen.
    connect(m_woodland->lineEdit(), &QLineEdit::editingFinished, this, &HarvestDialog::woodlandLeft);
    connect(m_owner, &QComboBox::textActivated, this, &HarvestDialog::fillOwner);
}

void HarvestDialog::showForm(const HarvestForm& f)
{
    m_number->setText(f.hiebNr);
    m_year->setText(f.jahr);
    // The stored name as the list's own entry: leaving the field then does not pick it anew
    // (and overwrite the harvest's own place and area), wherever it stands in the list.
    if (const int stored = m_woodland->findText(f.waldname); stored >= 0)
        m_woodland->setCurrentIndex(stored);
    m_woodland->setEditText(f.waldname);
    m_filledWoodland = f.waldname;
    m_texts[0]->setText(f.waldort);
    m_area->setText(f.hiebflaeche);
    m_reason->setEditText(f.hiebgrund);
    m_kind->setEditText(f.hiebart);
    m_dates[0]->setText(f.datumVon);
    m_dates[1]->setText(f.datumBis);
    m_texts[1]->setText(f.bemerkung);
    m_owner->setEditText(f.besitzerName);
    m_texts[2]->setText(f.besitzerStrasse);
    m_texts[3]->setText(f.besitzerWohnort);
    m_texts[4]->setText(f.besitzerTelefon);
    m_texts[5]->setText(f.besitzerSonstiges);
    m_harvester->setPlainText(f.harvester);
    for (size_t i = 0; i < f.totals.size(); ++i)
        m_totals[i]->setText(f.totals[i]);
    m_totals[7]->setText(f.teilverkauft);
    m_totals[8]->setText(f.verkauft);
}

HarvestForm HarvestDialog::read() const
{
    HarvestForm f;
    f.hiebNr = m_number->text();
    f.jahr = m_year->text();
    f.waldname = m_woodland->currentText();
    f.waldort = m_texts[0]->text();
    f.hiebflaeche = m_area->text();
    f.hiebgrund = m_reason->currentText();
    f.hiebart = m_kind->currentText();
    f.datumVon = m_dates[0]->text();
    f.datumBis = m_dates[1]->text();
    f.bemerkung = m_texts[1]->text();
    f.besitzerName = m_owner->currentText();
    f.besitzerStrasse = m_texts[2]->text();
    f.besitzerWohnort = m_texts[3]->text();
    f.besitzerTelefon = m_texts[4]->text();
    f.besitzerSonstiges = m_texts[5]->text();
    f.harvester = m_harvester->toPlainText();
    for (size_t i = 0; i < f.totals.size(); ++i)
        f.totals[i] = m_totals[i]->text();
    f.teilverkauft = m_totals[7]->text();
    f.verkauft = m_totals[8]->text();
    return f;
}

bool HarvestDialog::store()
{
    const HarvestForm form = read();
    const auto stored = runGuarded(m_context.prompter, [&] { return storeHarvest(m_context, form, m_editedId); });
    if (!stored)
        return false;
    m_storedId = stored;
    if (m_context.settings.confirmationBeep())
        QApplication::beep();
    return true;
}

void HarvestDialog::startNew()
{
    m_editedId.reset();
    setWindowTitle(QStringLiteral("Hiebeingabe - Neu"));
    if (const auto proposal = runGuarded(m_context.prompter, [this] { return proposeNewHarvest(m_context.db, m_context.clock, m_context.dataFolder); }))
        showForm(*proposal);
    m_number->setFocus();
    m_number->selectAll();
}

bool HarvestDialog::stepToNext()
{
    const auto next = m_editedId ? m_openerRows.advance() : std::nullopt;
    if (!next)
        return false;
    fillLists();
    showHarvest(*next);
    return true;
}

void HarvestDialog::onOk()
{
    if (store() && !stepToNext())
        accept();
}

void HarvestDialog::onOkNext()
{
    if (!store() || stepToNext())
        return;
    fillLists();
    startNew();
}

void HarvestDialog::onStandard()
{
    const DefaultsResult result = saveHarvestDefaults(m_context.dataFolder, read());
    m_context.prompter.inform(result.message, result.ok ? Prompter::Icon::Information : Prompter::Icon::Warning);
}

void HarvestDialog::fillWoodland(const QString& name)
{
    m_filledWoodland = name;
    if (const auto w = runGuarded(m_context.prompter, [&] { return woodland(m_context.db, name); })) {
        m_texts[0]->setText(w->waldort);
        m_area->setText(w->flaeche);
    }
}

void HarvestDialog::woodlandLeft()
{
    // Only a changed name fills: tabbing through a stored harvest keeps its own place and area.
    if (m_woodland->currentText() != m_filledWoodland)
        fillWoodland(m_woodland->currentText());
}

void HarvestDialog::fillOwner(const QString& name)
{
    if (const auto o = owner(m_context.db, name)) {
        m_texts[2]->setText(o->strasse);
        m_texts[3]->setText(o->wohnort);
        m_texts[4]->setText(o->telefon);
        m_texts[5]->setText(o->sonstiges);
    }
}

} // namespace tarvik
