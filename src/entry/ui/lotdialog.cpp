#include "entry/ui/lotdialog.h"

#include "common/numbers.h"
#include "common/ui/accesskeys.h"
#include "common/ui/gridformat.h"
#include "common/ui/guarded.h"
#include "entry/harvestentry.h"
#include "reports/maplink.h"
#include "rules/lotrecompute.h"
#include "rules/masterdatalookup.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
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
const char* const TotalCaptions[] = {"Anzahl Stämme", "Efm o.R.", "Efm je Stamm", "Anzahl Pfähle",
                                     "Efm Schichtholz", "m3 Schichtholz", "Holzpreis", "Preis berechnet"};

QLineEdit* edit(const QString& name, int maxLength)
{
    auto* e = new QLineEdit;
    e->setObjectName(name);
    e->setMaxLength(maxLength);
    return e;
}

QComboBox* combo(const QString& name, int maxLength, bool editable = true)
{
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->setEditable(editable);
    if (editable) {
        c->setInsertPolicy(QComboBox::NoInsert);
        c->lineEdit()->setMaxLength(maxLength);
    }
    return c;
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

const QStringList Sortings{QStringLiteral("Stämme"), QStringLiteral("Pfähle"), QStringLiteral("Schichtholz")};

} // namespace

LotDialog::LotDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> lotId, QWidget* parent)
    : LotDialog(context, harvestId, lotId, {}, parent)
{
}

LotDialog::LotDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> lotId, QList<qint32> openerIds, QWidget* parent)
    : QDialog(parent), m_context(context), m_harvestId(harvestId)
{
    setObjectName(QStringLiteral("EF_Eingabe_Lose"));
    setModal(true);
    auto* tabs = new QTabWidget;
    tabs->addTab(buildLotPage(), QStringLiteral("Losdaten"));
    tabs->addTab(buildChangesPage(), QStringLiteral("Änderung für Stämme"));

    m_ok = new QPushButton(QStringLiteral("&OK"));
    m_ok->setObjectName(QStringLiteral("ok"));
    m_okNext = new QPushButton(QStringLiteral("OK+&Nächster"));
    m_okNext->setObjectName(QStringLiteral("okn_chster"));
    auto* cancel = new QPushButton(QStringLiteral("&Abbrechen"));
    cancel->setObjectName(QStringLiteral("cmdabbrechen"));
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("comhilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(help);
    buttons->addStretch();
    for (QPushButton* b : {m_ok, m_okNext, cancel}) {
        b->setAutoDefault(false);
        actAtOnceOnAccessKey(b);
        buttons->addWidget(b);
    }
    // RETURN triggers [OK+Nächster] when the settings say so.
    (m_context.settings.okNextIsDefault() ? m_okNext : m_ok)->setDefault(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addLayout(buttons);
    connect(m_ok, &QPushButton::clicked, this, &LotDialog::onOk);
    connect(m_okNext, &QPushButton::clicked, this, &LotDialog::onOkNext);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    if (lotId) {
        m_openerRows = OpenerRows(std::move(openerIds), *lotId);
        showLot(*lotId);
    } else {
        startNew();
    }
}

QWidget* LotDialog::buildLotPage()
{
    auto* page = new QWidget;
    auto* lot = new QGroupBox(QStringLiteral("Los"));
    auto* form = new QFormLayout(lot);
    form->addRow(QStringLiteral("Los-Nr"), m_lotNr = combo(QStringLiteral("kom(0)"), 9));
    m_lotNr->lineEdit()->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,9}")), this));
    form->addRow(QStringLiteral("Sortierung"), m_sorting = combo(QStringLiteral("kom(1)"), 11, false));
    form->addRow(QStringLiteral("Los-Bezeichnung"), m_name = edit(QStringLiteral("t(0)"), 15));
    form->addRow(QStringLiteral("Lagerort"), m_place = combo(QStringLiteral("kom(2)"), 50));
    form->addRow(QStringLiteral("Anfahrt"), m_directions = edit(QStringLiteral("t(1)"), 255));
    form->addRow(QStringLiteral("GPS Breite"), m_gpsB = edit(QStringLiteral("t(2)"), 10));
    form->addRow(QStringLiteral("GPS Länge"), m_gpsL = edit(QStringLiteral("t(3)"), 10));
    auto* map = new QPushButton(QStringLiteral("Google-Maps"));
    map->setObjectName(QStringLiteral("googlelink"));
    connect(map, &QPushButton::clicked, this, [this] {
        const MapLink link = mapLink(m_gpsB->text(), m_gpsL->text(), m_context.settings.text[MapHostSlot]);
        if (!link.ok) {
            m_context.prompter.inform(link.message);
            return;
        }
        QDesktopServices::openUrl(link.url);
    });
    form->addRow(QString(), map);
    form->addRow(QStringLiteral("Abnehmer"), m_buyer = combo(QStringLiteral("kom(3)"), 50));
    form->addRow(QStringLiteral("Bemerkung"), m_remark = combo(QStringLiteral("kom(4)"), 30));
    form->addRow(QStringLiteral("Vermessungsart"), m_measuring = combo(QStringLiteral("kom(5)"), 20));
    form->addRow(QStringLiteral("Qualität"), m_quality = combo(QStringLiteral("kom(6)"), 30));
    form->addRow(QStringLiteral("Fixlänge (m)"), m_fixLength = edit(QStringLiteral("t(4)"), 10));
    form->addRow(QStringLiteral("Überlänge (m)"), m_overLength = edit(QStringLiteral("t(5)"), 10));
    form->addRow(QStringLiteral("Preis erhalten"), m_received = edit(QStringLiteral("t(6)"), 14));
    m_settled = new QCheckBox(QStringLiteral("Abgerechnet"));
    m_settled->setObjectName(QStringLiteral("konabgerechnet"));
    form->addRow(QString(), m_settled);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    fixChars(m_lotNr, 9);
    m_sorting->setFixedWidth(roomFor(m_sorting, 12, u'n'));
    for (QLineEdit* e : {m_gpsB, m_gpsL})
        fixChars(e, 11);
    for (QLineEdit* e : {m_fixLength, m_overLength})
        fixChars(e, 8);
    fixChars(m_received, 12);
    minChars(m_name, 16);
    for (QWidget* w : std::initializer_list<QWidget*>{m_place, m_directions, m_buyer, m_remark})
        minChars(w, 28);
    minChars(m_measuring, 20);
    minChars(m_quality, 20);
    map->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

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
        grid->addWidget(m_priceFields[size_t(i)] = edit(QStringLiteral("tp(%1)").arg(i), 12), row++, 1);
        fixChars(m_priceFields[size_t(i)], 11);
        m_priceFields[size_t(i)]->setAlignment(Qt::AlignRight);
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
    grid->setColumnStretch(2, 1);

    auto* totals = new QGroupBox(QStringLiteral("Summen (werden berechnet)"));
    auto* totalsGrid = new QGridLayout(totals);
    for (int i = 0; i < 8; ++i) {
        QLineEdit* t = m_totals[size_t(i)] = edit(QStringLiteral("tsumme(%1)").arg(i), 20);
        showReadOnly(t);
        t->setFocusPolicy(Qt::NoFocus);
        t->setAlignment(Qt::AlignRight);
        fixChars(t, 11);
        totalsGrid->addWidget(new QLabel(QString::fromUtf8(TotalCaptions[i])), i % 4, (i / 4) * 2);
        totalsGrid->addWidget(t, i % 4, (i / 4) * 2 + 1);
    }
    totalsGrid->setColumnStretch(4, 1);

    auto* right = new QVBoxLayout;
    right->addWidget(price);
    right->addWidget(totals);
    right->addStretch();
    auto* layout = new QHBoxLayout(page);
    layout->addWidget(lot);
    layout->addLayout(right);

    connect(m_place, &QComboBox::textActivated, this, &LotDialog::onPlaceChosen);
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
    form->addRow(QStringLiteral("Los-Nr"), m_rangeLot = edit(QStringLiteral("tr(0)"), 9));
    form->addRow(QStringLiteral("Stamm-Nr von"), m_rangeFrom = edit(QStringLiteral("tr(1)"), 7));
    form->addRow(QStringLiteral("Stamm-Nr bis"), m_rangeTo = edit(QStringLiteral("tr(2)"), 7));
    m_changeKind = new QButtonGroup(this);
    int index = 0;
    for (const char* caption : {"Neue Güteklasse", "Neue Baumart", "Neue Los-Nr"}) {
        auto* b = new QRadioButton(QString::fromUtf8(caption));
        b->setObjectName(QStringLiteral("optiaenderung(%1)").arg(index));
        m_changeKind->addButton(b, index++);
    }
    m_changeKind->button(0)->setChecked(true);
    form->addRow(m_changeKind->button(0), m_newQuality = combo(QStringLiteral("kom(7)"), 5, false));
    form->addRow(m_changeKind->button(1), m_newSpecies = combo(QStringLiteral("kom(8)"), 22, false));
    form->addRow(m_changeKind->button(2), m_targetLot = edit(QStringLiteral("tr(3)"), 9));
    auto* apply = new QPushButton(QStringLiteral("Ändern"));
    apply->setObjectName(QStringLiteral("btn_ndern"));
    form->addRow(QString(), apply);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    fixChars(m_rangeLot, 9);
    fixChars(m_rangeFrom, 7);
    fixChars(m_rangeTo, 7);
    fixChars(m_targetLot, 9);

    auto* species = new QGroupBox(QStringLiteral("Baumart aller Stämme des Loses ändern"));
    auto* speciesForm = new QFormLayout(species);
    speciesForm->addRow(QStringLiteral("von Baumart"), m_fromSpecies = combo(QStringLiteral("kom(9)"), 22, false));
    speciesForm->addRow(QStringLiteral("auf Baumart"), m_toSpecies = combo(QStringLiteral("kom(10)"), 22, false));
    auto* change = new QPushButton(QStringLiteral("Baumart ändern"));
    change->setObjectName(QStringLiteral("staemmeaendern"));
    speciesForm->addRow(QString(), change);
    speciesForm->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    for (QComboBox* box : {m_newSpecies, m_fromSpecies, m_toSpecies})
        minChars(box, 22);
    minChars(m_newQuality, 6);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(m_changesHeading);
    layout->addWidget(range);
    layout->addWidget(species);
    layout->addStretch();
    connect(apply, &QPushButton::clicked, this, &LotDialog::onRangeChange);
    connect(change, &QPushButton::clicked, this, &LotDialog::onSpeciesChange);
    connect(m_rangeLot, &QLineEdit::textChanged, this, &LotDialog::updateChangesHeading);
    return page;
}

void LotDialog::fillLists()
{
    const QSqlDatabase& db = m_context.db;
    auto refill = [](QComboBox* box, const QStringList& values) {
        box->clear();
        box->addItems(values);
    };
    refill(m_lotNr, lotNumbers(db, m_harvestId));
    refill(m_sorting, Sortings);
    refill(m_place, listValues(db, QStringLiteral("Liste_Lagerort"), QStringLiteral("Inhalt")));
    refill(m_buyer, listValues(db, QStringLiteral("Liste_Abnehmer"), QStringLiteral("Inhalt")));
    refill(m_remark, listValues(db, QStringLiteral("Liste_Bemerkungen"), QStringLiteral("Inhalt")));
    refill(m_measuring, distinctLotValues(db, QStringLiteral("Vermessungsart")));
    refill(m_quality, distinctLotValues(db, QStringLiteral("Qualität")));
    refill(m_newQuality, QStringList{QString()} + listValues(db, QStringLiteral("Güteklassen"), QStringLiteral("Güteklasse")));
    const QStringList species = listValues(db, QStringLiteral("Baumarten"), QStringLiteral("Baumart"));
    for (QComboBox* box : {m_newSpecies, m_fromSpecies, m_toSpecies})
        refill(box, QStringList{QString()} + species);
}

PriceSettings LotDialog::prices() const
{
    auto value = [this](int i) { return readNumber(m_priceFields[size_t(i)]->text()); };
    return {static_cast<qint16>(std::max(0, m_priceKinds->checkedId())), float(value(0)), float(value(1)), toShort(value(5)),
            float(value(2)), float(value(3)), toShort(value(4))};
}

LotForm LotDialog::read() const
{
    LotForm f;
    f.losNr = m_lotNr->currentText();
    f.sortierung = m_sorting->currentText();
    f.losBezeichnung = m_name->text();
    f.lagerort = m_place->currentText();
    f.anfahrt = m_directions->text();
    f.gpsB = m_gpsB->text();
    f.gpsL = m_gpsL->text();
    f.abnehmer = m_buyer->currentText();
    f.bemerkung = m_remark->currentText();
    f.vermessungsart = m_measuring->currentText();
    f.qualitaet = m_quality->currentText();
    f.fixlaenge = m_fixLength->text();
    f.ueberlaenge = m_overLength->text();
    f.preisErhalten = m_received->text();
    f.abgerechnet = m_settled->isChecked();
    f.prices = prices();
    QString* totals[] = {&f.anzahlStaemme, &f.efmOR, &f.efmJeStamm, &f.anzahlPfaehle,
                         &f.efmSchichtholz, &f.m3Schichtholz, &f.holzpreis, &f.preisBerechnet};
    for (size_t i = 0; i < m_totals.size(); ++i)
        *totals[i] = m_totals[i]->text();
    f.reNr = m_reNr;
    return f;
}

void LotDialog::selectSorting(const QString& sorting)
{
    // A stored value outside the fixed list is shown as it is, never silently replaced.
    if (m_sorting->findText(sorting) < 0) {
        m_sorting->clear();
        m_sorting->addItems(QStringList{sorting} + Sortings);
    }
    m_sorting->setCurrentIndex(m_sorting->findText(sorting));
}

void LotDialog::showForm(const LotForm& f)
{
    m_lotNr->setEditText(f.losNr);
    selectSorting(f.sortierung);
    m_name->setText(f.losBezeichnung);
    m_place->setEditText(f.lagerort);
    m_directions->setText(f.anfahrt);
    m_gpsB->setText(f.gpsB);
    m_gpsL->setText(f.gpsL);
    m_buyer->setEditText(f.abnehmer);
    m_remark->setEditText(f.bemerkung);
    m_measuring->setEditText(f.vermessungsart);
    m_quality->setEditText(f.qualitaet);
    m_fixLength->setText(f.fixlaenge);
    m_overLength->setText(f.ueberlaenge);
    m_received->setText(f.preisErhalten);
    m_settled->setChecked(f.abgerechnet);
    if (QAbstractButton* b = m_priceKinds->button(f.prices.preisArt))
        b->setChecked(true);
    const QString values[] = {formatDecimal(f.prices.pauschalpreisEfm, 2), formatDecimal(f.prices.pauschalpreisG, 2),
                              formatDecimal(f.prices.kostenEinschlag, 2), formatDecimal(f.prices.kostenRuecken, 2),
                              QString::number(f.prices.erschwerniszuschlag), QString::number(f.prices.kaeferholzabschlag)};
    for (size_t i = 0; i < m_priceFields.size(); ++i)
        m_priceFields[i]->setText(values[i]);
    const QString totals[] = {f.anzahlStaemme, f.efmOR, f.efmJeStamm, f.anzahlPfaehle,
                              f.efmSchichtholz, f.m3Schichtholz, f.holzpreis, f.preisBerechnet};
    for (size_t i = 0; i < m_totals.size(); ++i)
        m_totals[i]->setText(totals[i]);
    m_reNr = f.reNr;
    m_rangeLot->setText(f.losNr);
}

void LotDialog::showLot(qint32 id)
{
    m_editedId = id;
    QString title = QStringLiteral("Eingabe Lose - Ändern");
    if (m_openerRows.place() > 0)
        title += QStringLiteral(" (%1 von %2)").arg(m_openerRows.place()).arg(m_openerRows.size());
    setWindowTitle(title);
    const bool filled = runGuarded(m_context.prompter, [&] {
        fillLists();
        showForm(loadLot(m_context.db, id));
    });
    if (filled)
        updateChangesHeading();
    m_lotNr->setFocus();
    m_lotNr->lineEdit()->selectAll();
}

void LotDialog::startNew()
{
    m_editedId.reset();
    setWindowTitle(QStringLiteral("Eingabe Lose - Neu"));
    const bool filled = runGuarded(m_context.prompter, [&] {
        fillLists();
        showForm(proposeNewLot(m_context.db, m_harvestId, m_context.dataFolder));
    });
    if (filled)
        updateChangesHeading();
    m_lotNr->setFocus();
    m_lotNr->lineEdit()->selectAll();
}

bool LotDialog::store()
{
    const LotForm form = read();
    const auto stored = runGuarded(m_context.prompter, [&] { return storeLot(m_context, m_harvestId, form, m_editedId); });
    if (!stored)
        return false;
    m_storedId = stored;
    return true;
}

bool LotDialog::stepToNext()
{
    const auto next = m_editedId ? m_openerRows.advance() : std::nullopt;
    if (!next)
        return false;
    showLot(*next);
    return true;
}

void LotDialog::onOk()
{
    if (store() && !stepToNext())
        accept();
}

void LotDialog::onOkNext()
{
    if (store() && !stepToNext())
        startNew();
}

void LotDialog::onPlaceChosen(const QString& place)
{
    const auto details = runGuarded(m_context.prompter, [&] { return placeDetails(m_context.db, place); });
    if (details) {
        m_directions->setText(details->anfahrt);
        m_gpsL->setText(details->gpsL);
        m_gpsB->setText(details->gpsB);
    }
}

void LotDialog::onRecomputePrices()
{
    const double lot = readNumber(m_lotNr->currentText());
    const std::optional<qint32> lotNr = lot > 0 ? std::optional<qint32>(toLong(lot)) : std::nullopt;
    const bool done = runGuarded(m_context.prompter, [&] {
        MasterDataLookup masterData(m_context.db);
        LotRecomputeRequest request;
        request.prices = true;
        request.priceSettings = prices();
        return recomputeLot(m_context.db, masterData, m_harvestId, lotNr, request, m_context.prompter).has_value();
    });
    if (done && m_editedId) {
        if (const auto stored = runGuarded(m_context.prompter, [&] { return loadLot(m_context.db, *m_editedId); })) {
            m_totals[6]->setText(stored->holzpreis);
            m_totals[7]->setText(stored->preisBerechnet);
        }
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
    m_changesHeading->setText(QStringLiteral("Die folgenden Änderungen beziehen sich auf das Los ") + m_rangeLot->text());
}

void LotDialog::onRangeChange()
{
    const LogRange range{m_rangeLot->text(), m_rangeFrom->text(), m_rangeTo->text()};
    runGuarded(m_context.prompter, [&] {
        switch (m_changeKind->checkedId()) {
        case 0: return changeQualityOfRange(m_context, m_harvestId, range, m_newQuality->currentText());
        case 1: return changeSpeciesOfRange(m_context, m_harvestId, range, m_newSpecies->currentText());
        default: return moveRangeToLot(m_context, m_harvestId, range, m_targetLot->text());
        }
    });
}

void LotDialog::onSpeciesChange()
{
    runGuarded(m_context.prompter, [&] {
        return changeSpeciesOfLot(m_context, m_harvestId, m_rangeLot->text(), m_fromSpecies->currentText(), m_toSpecies->currentText());
    });
}

} // namespace tarvik
