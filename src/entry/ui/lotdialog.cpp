#include "entry/ui/lotdialog.h"

#include "common/numbers.h"
#include "entry/harvestentry.h"
#include "rules/lotrecompute.h"
#include "rules/masterdatalookup.h"
#include "store/sql.h"
#include "store/totals.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

// The price fields of the frame, in the order the remembered file keeps them.
const char* const PriceFieldNames[] = {"tp(0)", "tp(1)", "tp(2)", "tp(3)", "tp(4)", "tp(5)"};
const char* const TotalCaptions[] = {"Anzahl Stämme", "Efm o.R.", "Efm je Stamm", "Anzahl Pfähle",
                                     "Efm Schichtholz", "m3 Schichtholz", "Holzpreis", "Preis berechnet"};

} // namespace

LotDialog::LotDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> lotId, QWidget* parent)
    : QDialog(parent), m_context(context), m_harvestId(harvestId), m_editedId(lotId)
{
    setObjectName(QStringLiteral("EF_Eingabe_Lose"));
    setWindowTitle(lotId ? QStringLiteral("Eingabe Lose - Ändern") : QStringLiteral("Eingabe Lose - Neu"));
    setModal(true);
    auto* tabs = new QTabWidget;
    tabs->addTab(buildLotPage(), QStringLiteral("Losdaten"));
    tabs->addTab(buildChangesPage(), QStringLiteral("Änderung für Stämme"));

    auto* ok = new QPushButton(QStringLiteral("&OK"));
    ok->setObjectName(QStringLiteral("ok"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(QStringLiteral("&Abbrechen"));
    cancel->setObjectName(QStringLiteral("cmdabbrechen"));
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("comhilfe"));
    help->setEnabled(false);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(help);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addLayout(buttons);
    connect(ok, &QPushButton::clicked, this, &LotDialog::onOk);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    fillLists();
    showForm(lotId ? loadLot(m_context.db, *lotId) : proposeNewLot(m_context.db, m_harvestId, m_context.dataFolder));
    updateChangesHeading();
}

QLineEdit* LotDialog::edit(const QString& name, int maxLength)
{
    auto* e = new QLineEdit;
    e->setObjectName(name);
    e->setMaxLength(maxLength);
    m_edits.insert(name, e);
    return e;
}

QComboBox* LotDialog::combo(const QString& name, int maxLength, bool editable)
{
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->setEditable(editable);
    if (editable) {
        c->setInsertPolicy(QComboBox::NoInsert);
        c->lineEdit()->setMaxLength(maxLength);
    }
    m_combos.insert(name, c);
    return c;
}

QWidget* LotDialog::buildLotPage()
{
    auto* page = new QWidget;
    auto* lot = new QGroupBox(QStringLiteral("Los"));
    auto* form = new QFormLayout(lot);
    form->addRow(QStringLiteral("Los-Nr"), combo(QStringLiteral("kom(0)"), 9));
    m_combos[QStringLiteral("kom(0)")]->lineEdit()->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,9}")), this));
    form->addRow(QStringLiteral("Sortierung"), combo(QStringLiteral("kom(1)"), 11, false));
    form->addRow(QStringLiteral("Los-Bezeichnung"), edit(QStringLiteral("t(0)"), 15));
    form->addRow(QStringLiteral("Lagerort"), combo(QStringLiteral("kom(2)"), 50));
    form->addRow(QStringLiteral("Anfahrt"), edit(QStringLiteral("t(1)"), 255));
    form->addRow(QStringLiteral("GPS Breite"), edit(QStringLiteral("t(2)"), 10));
    form->addRow(QStringLiteral("GPS Länge"), edit(QStringLiteral("t(3)"), 10));
    auto* map = new QPushButton(QStringLiteral("Google-Maps"));
    map->setObjectName(QStringLiteral("googlelink"));
    map->setEnabled(false); // the map view comes with its own work
    form->addRow(QString(), map);
    form->addRow(QStringLiteral("Abnehmer"), combo(QStringLiteral("kom(3)"), 50));
    form->addRow(QStringLiteral("Bemerkung"), combo(QStringLiteral("kom(4)"), 30));
    form->addRow(QStringLiteral("Vermessungsart"), combo(QStringLiteral("kom(5)"), 20));
    form->addRow(QStringLiteral("Qualität"), combo(QStringLiteral("kom(6)"), 30));
    form->addRow(QStringLiteral("Fixlänge (m)"), edit(QStringLiteral("t(4)"), 10));
    form->addRow(QStringLiteral("Überlänge (m)"), edit(QStringLiteral("t(5)"), 10));
    form->addRow(QStringLiteral("Preis erhalten"), edit(QStringLiteral("t(6)"), 14));
    m_settled = new QCheckBox(QStringLiteral("Abgerechnet"));
    m_settled->setObjectName(QStringLiteral("konabgerechnet"));
    form->addRow(QString(), m_settled);

    auto* price = new QGroupBox(QStringLiteral("Preisberechnung für Stammholz"));
    auto* grid = new QGridLayout(price);
    m_priceKinds = new QButtonGroup(this);
    int row = 0;
    for (const char* caption : {"Nach der Messzahl / 100 x Messbetrag", "Nach dem Tagespreis in den Stammdaten",
                                "Pauschalpreis von ... je Efm Holz", "Pauschalpreis von ... für das Los"}) {
        auto* b = new QRadioButton(QString::fromUtf8(caption));
        b->setObjectName(QStringLiteral("optipreis(%1)").arg(row));
        m_priceKinds->addButton(b, row);
        grid->addWidget(b, row++, 0, 1, 2);
    }
    const char* const captions[] = {"Pauschalpreis je Efm", "Pauschalpreis für das Los", "- Lohn je Festmeter Holz (Einschlag)",
                                    "- Lohn je Festmeter Holz (Rücken)", "- Erschwerniszuschlag in %", "Käferholz-Abschlag in %"};
    for (int i = 0; i < 6; ++i) {
        grid->addWidget(new QLabel(QString::fromUtf8(captions[i])), row, 0);
        grid->addWidget(edit(QString::fromLatin1(PriceFieldNames[i]), 12), row++, 1);
    }
    auto* recompute = new QPushButton(QStringLiteral("Holzpreis neu berechnen"));
    recompute->setObjectName(QStringLiteral("holzpreisneuberechnen"));
    grid->addWidget(recompute, row++, 0, 1, 2);
    m_priceMemory = new QButtonGroup(this);
    auto* remember = new QRadioButton(QStringLiteral("Preiseinstellung merken"));
    remember->setObjectName(QStringLiteral("optimerken(0)"));
    auto* forget = new QRadioButton(QStringLiteral("Gemerkte Preiseinstellung löschen"));
    forget->setObjectName(QStringLiteral("optimerken(1)"));
    m_priceMemory->addButton(remember, 0);
    m_priceMemory->addButton(forget, 1);
    remember->setChecked(true);
    grid->addWidget(remember, row++, 0, 1, 2);
    grid->addWidget(forget, row++, 0, 1, 2);
    auto* standard = new QPushButton(QStringLiteral("Ausführen"));
    standard->setObjectName(QStringLiteral("preisstandard"));
    grid->addWidget(standard, row++, 0, 1, 2);

    auto* totals = new QGroupBox(QStringLiteral("Summen (werden berechnet)"));
    auto* totalsGrid = new QGridLayout(totals);
    for (int i = 0; i < 8; ++i) {
        QLineEdit* t = edit(QStringLiteral("tsumme(%1)").arg(i), 20);
        t->setReadOnly(true);
        t->setFocusPolicy(Qt::NoFocus);
        totalsGrid->addWidget(new QLabel(QString::fromUtf8(TotalCaptions[i])), i % 4, (i / 4) * 2);
        totalsGrid->addWidget(t, i % 4, (i / 4) * 2 + 1);
    }

    auto* right = new QVBoxLayout;
    right->addWidget(price);
    right->addWidget(totals);
    right->addStretch();
    auto* layout = new QHBoxLayout(page);
    layout->addWidget(lot);
    layout->addLayout(right);

    connect(m_combos[QStringLiteral("kom(2)")], &QComboBox::textActivated, this, &LotDialog::onPlaceChosen);
    connect(recompute, &QPushButton::clicked, this, &LotDialog::onRecomputePrices);
    connect(standard, &QPushButton::clicked, this, &LotDialog::onPriceDefaults);
    return page;
}

QWidget* LotDialog::buildChangesPage()
{
    auto* page = new QWidget;
    m_changesHeading = new QLabel;
    m_changesHeading->setObjectName(QStringLiteral("bezaenderung"));
    auto* range = new QGroupBox(QStringLiteral("Stämme von ... bis ..."));
    auto* form = new QFormLayout(range);
    form->addRow(QStringLiteral("Los-Nr"), edit(QStringLiteral("tr(0)"), 9));
    form->addRow(QStringLiteral("Stamm-Nr von"), edit(QStringLiteral("tr(1)"), 7));
    form->addRow(QStringLiteral("Stamm-Nr bis"), edit(QStringLiteral("tr(2)"), 7));
    m_changeKind = new QButtonGroup(this);
    int index = 0;
    for (const char* caption : {"Neue Güteklasse", "Neue Baumart", "Neue Los-Nr"}) {
        auto* b = new QRadioButton(QString::fromUtf8(caption));
        b->setObjectName(QStringLiteral("optiaenderung(%1)").arg(index));
        m_changeKind->addButton(b, index++);
    }
    m_changeKind->button(0)->setChecked(true);
    form->addRow(m_changeKind->button(0), combo(QStringLiteral("kom(7)"), 5, false));
    form->addRow(m_changeKind->button(1), combo(QStringLiteral("kom(8)"), 22, false));
    form->addRow(m_changeKind->button(2), edit(QStringLiteral("tr(3)"), 9));
    auto* apply = new QPushButton(QStringLiteral("Ändern"));
    apply->setObjectName(QStringLiteral("btn_ndern"));
    form->addRow(QString(), apply);

    auto* species = new QGroupBox(QStringLiteral("Baumart aller Stämme des Loses ändern"));
    auto* speciesForm = new QFormLayout(species);
    speciesForm->addRow(QStringLiteral("von Baumart"), combo(QStringLiteral("kom(9)"), 22, false));
    speciesForm->addRow(QStringLiteral("auf Baumart"), combo(QStringLiteral("kom(10)"), 22, false));
    auto* change = new QPushButton(QStringLiteral("Baumart ändern"));
    change->setObjectName(QStringLiteral("staemmeaendern"));
    speciesForm->addRow(QString(), change);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(m_changesHeading);
    layout->addWidget(range);
    layout->addWidget(species);
    layout->addStretch();
    connect(apply, &QPushButton::clicked, this, &LotDialog::onRangeChange);
    connect(change, &QPushButton::clicked, this, &LotDialog::onSpeciesChange);
    connect(m_edits[QStringLiteral("tr(0)")], &QLineEdit::textChanged, this, &LotDialog::updateChangesHeading);
    return page;
}

void LotDialog::fillLists()
{
    const QSqlDatabase& db = m_context.db;
    m_combos[QStringLiteral("kom(0)")]->addItems(lotNumbers(db, m_harvestId));
    m_combos[QStringLiteral("kom(1)")]->addItems({QStringLiteral("Stämme"), QStringLiteral("Pfähle"), QStringLiteral("Schichtholz")});
    m_combos[QStringLiteral("kom(2)")]->addItems(listValues(db, QStringLiteral("Liste_Lagerort"), QStringLiteral("Inhalt")));
    m_combos[QStringLiteral("kom(3)")]->addItems(listValues(db, QStringLiteral("Liste_Abnehmer"), QStringLiteral("Inhalt")));
    m_combos[QStringLiteral("kom(4)")]->addItems(listValues(db, QStringLiteral("Liste_Bemerkungen"), QStringLiteral("Inhalt")));
    m_combos[QStringLiteral("kom(5)")]->addItems(distinctLotValues(db, QStringLiteral("Vermessungsart")));
    m_combos[QStringLiteral("kom(6)")]->addItems(distinctLotValues(db, QStringLiteral("Qualität")));
    m_combos[QStringLiteral("kom(7)")]->addItems(QStringList{QString()} + listValues(db, QStringLiteral("Güteklassen"), QStringLiteral("Güteklasse")));
    const QStringList species = listValues(db, QStringLiteral("Baumarten"), QStringLiteral("Baumart"));
    for (const char* name : {"kom(8)", "kom(9)", "kom(10)"})
        m_combos[QString::fromLatin1(name)]->addItems(QStringList{QString()} + species);
}

PriceSettings LotDialog::prices() const
{
    auto value = [this](int i) { return readNumber(m_edits[QString::fromLatin1(PriceFieldNames[i])]->text()); };
    return {static_cast<qint16>(std::max(0, m_priceKinds->checkedId())), float(value(0)), float(value(1)), toShort(value(5)),
            float(value(2)), float(value(3)), toShort(value(4))};
}

LotForm LotDialog::read() const
{
    LotForm f;
    auto e = [this](const char* n) { return m_edits[QString::fromLatin1(n)]->text(); };
    auto c = [this](const char* n) { return m_combos[QString::fromLatin1(n)]->currentText(); };
    f.losNr = c("kom(0)");
    f.sortierung = c("kom(1)");
    f.losBezeichnung = e("t(0)");
    f.lagerort = c("kom(2)");
    f.anfahrt = e("t(1)");
    f.gpsB = e("t(2)");
    f.gpsL = e("t(3)");
    f.abnehmer = c("kom(3)");
    f.bemerkung = c("kom(4)");
    f.vermessungsart = c("kom(5)");
    f.qualitaet = c("kom(6)");
    f.fixlaenge = e("t(4)");
    f.ueberlaenge = e("t(5)");
    f.preisErhalten = e("t(6)");
    f.abgerechnet = m_settled->isChecked();
    f.prices = prices();
    QString* totals[] = {&f.anzahlStaemme, &f.efmOR, &f.efmJeStamm, &f.anzahlPfaehle,
                         &f.efmSchichtholz, &f.m3Schichtholz, &f.holzpreis, &f.preisBerechnet};
    for (int i = 0; i < 8; ++i)
        *totals[i] = m_edits[QStringLiteral("tsumme(%1)").arg(i)]->text();
    f.reNr = m_reNr;
    return f;
}

void LotDialog::showForm(const LotForm& f)
{
    auto setEdit = [this](const char* n, const QString& v) { m_edits[QString::fromLatin1(n)]->setText(v); };
    auto setCombo = [this](const char* n, const QString& v) {
        QComboBox* box = m_combos[QString::fromLatin1(n)];
        if (box->isEditable())
            box->setEditText(v);
        else
            box->setCurrentIndex(std::max(0, box->findText(v)));
    };
    setCombo("kom(0)", f.losNr);
    setCombo("kom(1)", f.sortierung);
    setEdit("t(0)", f.losBezeichnung);
    setCombo("kom(2)", f.lagerort);
    setEdit("t(1)", f.anfahrt);
    setEdit("t(2)", f.gpsB);
    setEdit("t(3)", f.gpsL);
    setCombo("kom(3)", f.abnehmer);
    setCombo("kom(4)", f.bemerkung);
    setCombo("kom(5)", f.vermessungsart);
    setCombo("kom(6)", f.qualitaet);
    setEdit("t(4)", f.fixlaenge);
    setEdit("t(5)", f.ueberlaenge);
    setEdit("t(6)", f.preisErhalten);
    m_settled->setChecked(f.abgerechnet);
    if (QAbstractButton* b = m_priceKinds->button(f.prices.preisArt))
        b->setChecked(true);
    const QString values[] = {formatDecimal(f.prices.pauschalpreisEfm, 2), formatDecimal(f.prices.pauschalpreisG, 2),
                              formatDecimal(f.prices.kostenEinschlag, 2), formatDecimal(f.prices.kostenRuecken, 2),
                              QString::number(f.prices.erschwerniszuschlag), QString::number(f.prices.kaeferholzabschlag)};
    for (int i = 0; i < 6; ++i)
        m_edits[QString::fromLatin1(PriceFieldNames[i])]->setText(values[i]);
    const QString totals[] = {f.anzahlStaemme, f.efmOR, f.efmJeStamm, f.anzahlPfaehle,
                              f.efmSchichtholz, f.m3Schichtholz, f.holzpreis, f.preisBerechnet};
    for (int i = 0; i < 8; ++i)
        m_edits[QStringLiteral("tsumme(%1)").arg(i)]->setText(totals[i]);
    m_reNr = f.reNr;
    m_edits[QStringLiteral("tr(0)")]->setText(f.losNr);
}

void LotDialog::onOk()
{
    const LotForm form = read();
    try {
        if (const auto refusal = checkLot(m_context.db, m_harvestId, form, !m_editedId)) {
            m_context.prompter.inform(*refusal);
            return;
        }
        saveLot(m_context.db, m_harvestId, form, m_editedId);
    } catch (const StoreError& error) {
        m_context.prompter.inform(error.message(), Prompter::Icon::Critical);
        return;
    }
    accept();
}

void LotDialog::onPlaceChosen(const QString& place)
{
    if (const auto details = placeDetails(m_context.db, place)) {
        m_edits[QStringLiteral("t(1)")]->setText(details->anfahrt);
        m_edits[QStringLiteral("t(3)")]->setText(details->gpsL);
        m_edits[QStringLiteral("t(2)")]->setText(details->gpsB);
    }
}

void LotDialog::onRecomputePrices()
{
    const double lot = readNumber(m_combos[QStringLiteral("kom(0)")]->currentText());
    try {
        MasterDataLookup masterData(m_context.db);
        const std::optional<qint32> lotNr = lot > 0 ? std::optional<qint32>(toLong(lot)) : std::nullopt;
        if (recomputeLotPrices(m_context.db, masterData, m_harvestId, lotNr, prices(), m_context.prompter)) {
            recomputeTotals(m_context.db, m_harvestId, lotNr);
            if (m_editedId) {
                const LotForm stored = loadLot(m_context.db, *m_editedId);
                m_edits[QStringLiteral("tsumme(6)")]->setText(stored.holzpreis);
                m_edits[QStringLiteral("tsumme(7)")]->setText(stored.preisBerechnet);
            }
        }
    } catch (const StoreError& error) {
        m_context.prompter.inform(error.message(), Prompter::Icon::Critical);
    }
}

void LotDialog::onPriceDefaults()
{
    if (m_priceMemory->checkedId() == 0)
        rememberPrices(m_context, prices());
    else
        forgetPrices(m_context);
}

void LotDialog::updateChangesHeading()
{
    m_changesHeading->setText(QStringLiteral("Die folgenden Änderungen beziehen sich auf das Los ") + m_edits[QStringLiteral("tr(0)")]->text());
}

void LotDialog::onRangeChange()
{
    const LogRange range{m_edits[QStringLiteral("tr(0)")]->text(), m_edits[QStringLiteral("tr(1)")]->text(),
                         m_edits[QStringLiteral("tr(2)")]->text()};
    try {
        switch (m_changeKind->checkedId()) {
        case 0: changeQualityOfRange(m_context, m_harvestId, range, m_combos[QStringLiteral("kom(7)")]->currentText()); break;
        case 1: changeSpeciesOfRange(m_context, m_harvestId, range, m_combos[QStringLiteral("kom(8)")]->currentText()); break;
        default: moveRangeToLot(m_context, m_harvestId, range, m_edits[QStringLiteral("tr(3)")]->text()); break;
        }
    } catch (const StoreError& error) {
        m_context.prompter.inform(error.message(), Prompter::Icon::Critical);
    }
}

void LotDialog::onSpeciesChange()
{
    try {
        changeSpeciesOfLot(m_context, m_harvestId, m_edits[QStringLiteral("tr(0)")]->text(),
                           m_combos[QStringLiteral("kom(9)")]->currentText(), m_combos[QStringLiteral("kom(10)")]->currentText());
    } catch (const StoreError& error) {
        m_context.prompter.inform(error.message(), Prompter::Icon::Critical);
    }
}

} // namespace tarvik
