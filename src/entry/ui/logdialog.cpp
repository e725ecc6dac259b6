#include "entry/ui/logdialog.h"

#include "common/numbers.h"
#include "common/ui/guarded.h"
#include "entry/ui/entrywindow.h"
#include "entry/ui/logimports.h"
#include "entry/harvestentry.h"
#include "entry/lotentry.h"
#include "rules/lotrecompute.h"
#include "store/records.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

namespace tarvik {
namespace {

// Entry fields: index, caption, width, read-only.
struct MeasureField {
    int index;
    const char* caption;
    int maxLength;
    bool readOnly;
};
// In the order a measuring crew reads out a log; the tab order is the same.
constexpr MeasureField TypedFields[] = {
    {0, "Laufende Nr", 6, false}, {2, "Länge (m)", 8, false}, {1, "Stärke m.R. (cm)", 4, false}, {3, "Zopf (cm)", 4, false},
};
constexpr MeasureField DerivedFields[] = {
    {4, "Rindenabzug (cm)", 4, false}, {5, "Stärke o.R. (cm)", 4, true}, {6, "Efm o.R.", 10, true},
};
// Two columns, row by row.
constexpr MeasureField PriceFields[] = {
    {13, "Pauschalpreis je Efm", 10, false}, {16, "Pauschalpreis für das Los", 12, false},
    {10, "- Lohn je Festmeter Holz (Einschlag)", 10, false}, {11, "- Lohn je Festmeter Holz (Rücken)", 10, false},
    {12, "- Erschwerniszuschlag in %", 4, false}, {15, "Käferholz-Abschlag in %", 4, false},
    {14, "Holzpreis (brutto)", 12, true}, {7, "Preis berechnet (netto)", 12, true},
};

} // namespace

LogDialog::LogDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> logId,
                     std::optional<qint32> lotNr, QWidget* parent)
    : EntryWindow(context, harvestId, logId,
                  {QStringLiteral("EF_Eingabe_Staemme"), QStringLiteral("Eingabe Stämme"), QStringLiteral("Stämme"),
                   QStringLiteral("Stämme"), QStringLiteral("Stärkeklassen_Stämme"), 3, 5},
                  parent)
{
    build();
    start(lotNr);
    if (!logId)
        recompute();
}

void LogDialog::loadEntry(qint32 id)
{
    LogForm form = loadLog(m_context.db, id);
    m_heilbronnComputed = false; // a stored class stays unless a top diameter gives another
    if (const auto prices = loadLotPriceSettings(m_context.db, m_harvestId, toLong(readNumber(form.losNr))))
        form.prices = *prices;
    showForm(form);
    m_storedPrices = std::pair{form.gross, form.net};
}

void LogDialog::reloadShownLog()
{
    // Only a log shown as stored: one being typed into is recomputed when it is stored.
    if (!editedId() || !m_storedPrices)
        return;
    m_filling = true;
    loadEntry(*editedId());
    m_filling = false;
}

void LogDialog::startNew()
{
    if (const auto number = runGuarded(m_context.prompter, [this] {
            return proposedRunningNumber(m_context.db, m_context.settings, m_harvestId, lotNumber().value_or(0));
        })) {
        m_filling = true;
        field(0)->setText(QString::number(*number));
        m_filling = false;
    }
}

void LogDialog::build()
{
    m_quality = new QComboBox;
    m_quality->setObjectName(QStringLiteral("kom(2)"));
    m_quality->setEditable(true);
    m_quality->setInsertPolicy(QComboBox::NoInsert);
    m_quality->lineEdit()->setMaxLength(5);
    m_quality->addItems(QStringList{QString()} + listValues(m_context.db, QStringLiteral("Güteklassen"), QStringLiteral("Güteklasse")));
    m_quality->setEditText(QString());
    m_heilbronn = new QComboBox;
    m_heilbronn->setObjectName(QStringLiteral("kom(4)"));
    m_heilbronn->setFocusPolicy(Qt::NoFocus); // from the top diameter, or picked with the mouse
    m_heilbronn->addItems(QStringList{QString()} + listValues(m_context.db, QStringLiteral("Stärkeklassen_Stämme_Heilbronn"), QStringLiteral("Klasse")));
    m_beetle = new QCheckBox(QStringLiteral("Käferholz"));
    m_beetle->setObjectName(QStringLiteral("konkäfer"));

    // Every control is added in reading order (down each box, boxes left to right); the tab
    // order follows the same list, so what the eye and the Tab key meet agree.
    QList<QWidget*> reading;
    auto formBox = [&reading](const QString& title) {
        auto* box = new QGroupBox(title);
        auto* form = new QFormLayout(box);
        auto add = [form, &reading](const QString& caption, QWidget* w) {
            form->addRow(caption, w);
            reading << w;
        };
        return std::pair{box, add};
    };
    auto [typed, addTyped] = formBox(QStringLiteral("Stammdaten"));
    addTyped(QStringLiteral("Los-Nr"), lotList());
    for (const MeasureField& f : TypedFields) {
        if (f.index == 3)
            addTyped(QStringLiteral("Baumart"), speciesList());
        addTyped(QString::fromUtf8(f.caption), makeField(f.index, f.maxLength, f.readOnly));
    }
    addTyped(QStringLiteral("Güteklasse"), m_quality);
    addTyped(QStringLiteral("Bemerkung"), remarkList());
    field(0)->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,6}")), this));

    auto [derived, addDerived] = formBox(QStringLiteral("Rinde und Klassen"));
    for (const MeasureField& f : DerivedFields)
        addDerived(QString::fromUtf8(f.caption), makeField(f.index, f.maxLength, f.readOnly));
    addDerived(QStringLiteral("Stärkeklasse"), classList());
    addDerived(QStringLiteral("Heilbronner Klasse"), m_heilbronn);
    addDerived(QStringLiteral("Mantelmessung: Anzahl"), makeField(8, 4));
    for (int centimetres : {1, 3, 4}) // Stärke m.R., Zopf, Rindenabzug
        takeWholeCentimetres(field(centimetres));
    addDerived(QString(), m_beetle);

    auto* price = new QGroupBox(QStringLiteral("Preisberechnung"));
    auto* priceGrid = new QGridLayout(price);
    m_priceKinds = new QButtonGroup(this);
    int index = 0;
    for (const char* caption : {"Nach der Messzahl / 100 x Messbetrag", "Nach dem Tagespreis in den Stammdaten",
                                "Pauschalpreis von ... je Efm Holz", "Pauschalpreis von ... für das Los"}) {
        auto* b = new QRadioButton(QString::fromUtf8(caption));
        b->setObjectName(QStringLiteral("optipreis(%1)").arg(index));
        m_priceKinds->addButton(b, index);
        priceGrid->addWidget(b, index / 2, (index % 2) * 2, 1, 2);
        reading << b;
        ++index;
    }
    index = 0;
    for (const MeasureField& f : PriceFields) {
        QLineEdit* edit = makeField(f.index, f.maxLength, f.readOnly);
        edit->setMaximumWidth(std::max(110, edit->minimumWidth()));
        priceGrid->addWidget(new QLabel(QString::fromUtf8(f.caption)), 2 + index / 2, (index % 2) * 2);
        priceGrid->addWidget(edit, 2 + index / 2, (index % 2) * 2 + 1);
        reading << edit;
        ++index;
    }
    auto* priceLot = new QPushButton(QStringLiteral("Preise Los neu berechnen"));
    priceLot->setObjectName(QStringLiteral("preisberechnung"));
    priceLot->setToolTip(QStringLiteral("Das Los dieser Preisberechnung neu berechnen"));
    priceGrid->addWidget(priceLot, 6, 0, 1, 4, Qt::AlignLeft);
    reading << priceLot;

    auto* bark = new QGroupBox(QStringLiteral("Rindenabzug"));
    auto* barkLayout = new QHBoxLayout(bark);
    m_barkModes = new QButtonGroup(this);
    index = 0;
    for (const char* caption : {"Ohne Rinde (O)", "Fester Abzug (F)", "Abzug lt. Tabelle (T)"}) {
        auto* b = new QRadioButton(QString::fromUtf8(caption));
        b->setObjectName(QStringLiteral("optirinde(%1)").arg(index));
        m_barkModes->addButton(b, index++);
        barkLayout->addWidget(b);
        reading << b;
    }
    auto* barkLot = new QPushButton(QStringLiteral("Rindenabzug Los neu"));
    barkLot->setObjectName(QStringLiteral("rindenabzuglos"));
    barkLot->setToolTip(QStringLiteral("Den Rindenabzug für das LOS (links) lt. aktueller Einstellung neu berechnen"));
    barkLayout->addStretch();
    barkLayout->addWidget(barkLot);
    reading << barkLot;

    m_summary = new QLabel;
    m_summary->setObjectName(QStringLiteral("bezsumme"));
    QList<QPushButton*> imports;
    for (const LogImportAction& action : offeredLogImports()) {
        auto* b = new QPushButton(action.caption);
        b->setObjectName(action.objectName);
        b->setToolTip(action.toolTip);
        connect(b, &QPushButton::clicked, this, [this, run = action.run] { onImport(run); });
        imports << b;
        reading << b;
    }
    reading << okButton() << okNextButton();
    for (qsizetype i = 1; i < reading.size(); ++i)
        setTabOrder(reading[i - 1], reading[i]);

    auto* right = new QVBoxLayout;
    right->addWidget(price);
    right->addWidget(bark);
    right->addStretch();
    auto* top = new QHBoxLayout;
    top->addWidget(typed, 0, Qt::AlignTop);
    top->addWidget(derived, 0, Qt::AlignTop);
    top->addLayout(right, 1);
    // At least twelve logs stay in view below the fields.
    grid()->setMinimumHeight(grid()->horizontalHeader()->sizeHint().height() + 12 * grid()->verticalHeader()->defaultSectionSize()
                             + 2 * grid()->frameWidth());
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_summary);
    layout->addWidget(grid(), 1);
    layout->addLayout(buttonRow(imports));
    resize(1240, 700);

    for (QLineEdit* edit : findChildren<QLineEdit*>(QRegularExpression(QStringLiteral("^tz\\("))))
        connect(edit, &QLineEdit::textEdited, this, &LogDialog::recompute);
    for (QComboBox* box : {speciesList(), m_quality})
        connect(box, &QComboBox::currentTextChanged, this, &LogDialog::recompute);
    // A class picked by hand is the user's and stays when the top diameter goes.
    connect(m_heilbronn, &QComboBox::activated, this, [this] { m_heilbronnComputed = false; });
    connect(m_barkModes, &QButtonGroup::idToggled, this, [this](int, bool on) { if (on) recompute(); });
    connect(m_priceKinds, &QButtonGroup::idToggled, this, [this](int, bool on) { if (on) recompute(); });
    connect(m_beetle, &QCheckBox::toggled, this, &LogDialog::recompute);
    connect(barkLot, &QPushButton::clicked, this, &LogDialog::onBarkRecompute);
    connect(priceLot, &QPushButton::clicked, this, &LogDialog::onPriceRecompute);
    field(1)->installEventFilter(this);
    field(2)->installEventFilter(this);
    m_barkModes->button(int(BarkMode::Tabelle))->setChecked(true);
}

LogForm LogDialog::read() const
{
    LogForm f;
    f.losNr = lotList()->currentText();
    f.laufendeNr = field(0)->text();
    f.species = speciesList()->currentText().trimmed();
    f.quality = m_quality->currentText().trimmed();
    f.measuredDiameter = field(1)->text();
    f.length = field(2)->text();
    f.topDiameter = field(3)->text();
    f.deduction = field(4)->text();
    f.underBark = field(5)->text();
    f.volume = field(6)->text();
    f.diameterClass = classList()->currentText();
    f.heilbronnClass = m_heilbronn->currentText();
    f.heilbronnComputed = m_heilbronnComputed;
    f.remark = remarkList()->currentText();
    f.girthCount = field(8)->text();
    f.mode = static_cast<BarkMode>(std::max(0, m_barkModes->checkedId()));
    f.kaeferholz = m_beetle->isChecked();
    f.prices.preisArt = static_cast<qint16>(std::max(0, m_priceKinds->checkedId()));
    f.prices.pauschalpreisEfm = float(readNumber(field(13)->text()));
    f.prices.pauschalpreisG = float(readNumber(field(16)->text()));
    f.prices.kostenEinschlag = float(readNumber(field(10)->text()));
    f.prices.kostenRuecken = float(readNumber(field(11)->text()));
    f.prices.erschwerniszuschlag = toShort(readNumber(field(12)->text()));
    f.prices.kaeferholzabschlag = toShort(readNumber(field(15)->text()));
    if (m_storedPrices) {
        f.asStored = true;
        f.gross = m_storedPrices->first;
        f.net = m_storedPrices->second;
    }
    return f;
}

void LogDialog::showForm(const LogForm& f)
{
    const bool wasFilling = m_filling;
    m_filling = true;
    lotList()->setEditText(f.losNr);
    field(0)->setText(f.laufendeNr);
    speciesList()->setEditText(f.species);
    m_quality->setEditText(f.quality);
    field(1)->setText(f.measuredDiameter);
    field(2)->setText(f.length);
    field(3)->setText(f.topDiameter);
    field(4)->setText(f.deduction);
    field(5)->setText(f.underBark);
    field(6)->setText(f.volume);
    field(7)->setText(f.price);
    field(14)->setText(f.logPrice);
    remarkList()->setEditText(f.remark);
    // A class that is not in its list leaves the selection unchanged.
    if (const int i = classList()->findText(f.diameterClass); i >= 0)
        classList()->setCurrentIndex(i);
    if (const int i = m_heilbronn->findText(f.heilbronnClass); i >= 0)
        m_heilbronn->setCurrentIndex(i);
    m_barkModes->button(int(f.mode))->setChecked(true);
    m_beetle->setChecked(f.kaeferholz);
    if (QAbstractButton* b = m_priceKinds->button(f.prices.preisArt))
        b->setChecked(true);
    field(13)->setText(formatDecimal(f.prices.pauschalpreisEfm, 2));
    field(16)->setText(formatDecimal(f.prices.pauschalpreisG, 2));
    field(10)->setText(formatDecimal(f.prices.kostenEinschlag, 2));
    field(11)->setText(formatDecimal(f.prices.kostenRuecken, 2));
    field(12)->setText(QString::number(f.prices.erschwerniszuschlag));
    field(15)->setText(QString::number(f.prices.kaeferholzabschlag));
    m_filling = wasFilling;
}

void LogDialog::recompute()
{
    if (m_filling)
        return;
    m_storedPrices.reset();
    LogForm form = read();
    if (!runGuarded(m_context.prompter, [&] { recomputeLog(form, m_masterData); }))
        return;
    m_filling = true;
    field(4)->setText(form.deduction);
    field(5)->setText(form.underBark);
    field(6)->setText(form.volume);
    field(7)->setText(form.price);
    field(14)->setText(form.logPrice);
    if (const int i = classList()->findText(form.diameterClass); i >= 0)
        classList()->setCurrentIndex(i);
    if (const int i = m_heilbronn->findText(form.heilbronnClass); i >= 0)
        m_heilbronn->setCurrentIndex(i);
    m_heilbronnComputed = form.heilbronnComputed;
    m_filling = false;
}

void LogDialog::lotChosen(std::optional<qint32> lot)
{
    if (lot) {
        // Like the species, the quality of the lot's last log is the likely one for the next.
        const auto quality = runGuarded(m_context.prompter, [&] { return lastQualityOfLot(m_context.db, m_harvestId, *lot); });
        m_filling = true;
        if (quality && !quality->isEmpty())
            m_quality->setEditText(*quality);
        LogForm prices = read();
        if (const auto settings = loadLotPriceSettings(m_context.db, m_harvestId, *lot))
            prices.prices = *settings;
        else
            prices.prices = PriceSettings{};
        const QString keepPrice = field(7)->text();
        showForm(prices);
        field(7)->setText(keepPrice);
        if (!editedId() && m_context.settings.runningNumbersPerLot()) {
            if (const auto number = runGuarded(m_context.prompter, [&] {
                    return proposedRunningNumber(m_context.db, m_context.settings, m_harvestId, *lot);
                }))
                field(0)->setText(QString::number(*number));
        }
        m_filling = false;
    }
    recompute();
}

HarvestRows LogDialog::gridRows() const
{
    return logGridRows(m_harvestId);
}

void LogDialog::refreshRows()
{
    EntryWindow::refreshRows();
    const auto lot = lotNumber();
    const auto summary = runGuarded(m_context.prompter, [&] { return lot ? lotSummary(m_context.db, m_harvestId, *lot) : QString(); });
    m_summary->setText(summary.value_or(QString()));
}

bool LogDialog::storeEntry()
{
    LogForm form = read();
    const auto stored = storeLog(m_context, m_masterData, m_harvestId, form, editedId());
    if (!stored)
        return false;
    m_storedPrices.reset();
    m_storedRows += stored->rows;
    m_filling = true;
    field(0)->setText(QString::number(nextRunningNumber(m_context.db, m_context.settings, m_harvestId, lotNumber().value_or(0),
                                                        QString::number(stored->lastNumber + 1))));
    m_filling = false;
    return true;
}

void LogDialog::onImport(const LogImportAction::Run& run)
{
    const LogForm f = read(); // the bark mode of the window applies to the imported logs
    if (run(this, m_context, {m_harvestId, lotNumber(), f.mode, f.deduction}))
        refreshRows();
}

void LogDialog::afterNext()
{
    field(8)->clear();
    if (m_context.settings.zeroMeasuresAfterNext()) {
        for (int i : {1, 2, 3})
            field(i)->setText(QStringLiteral("0"));
    }
    m_filling = false;
    recompute();
    QLineEdit* next = m_context.settings.focusRunningNumberAfterNext() ? field(0)
                      : m_context.settings.focusDiameterAfterNext()    ? field(1)
                                                                        : field(2);
    next->setFocus();
    next->selectAll();
}

void LogDialog::onBarkRecompute()
{
    LotRecomputeRequest request;
    request.bark = true;
    request.mode = static_cast<BarkMode>(std::max(0, m_barkModes->checkedId()));
    request.priceSettings = read().prices;
    runGuarded(m_context.prompter, [&] { return recomputeLot(m_context.db, m_masterData, m_harvestId, lotNumber(), request, m_context.prompter); });
    reloadShownLog(); // the shown log may be one the lot's recompute rewrote
    refreshRows();
}

void LogDialog::onPriceRecompute()
{
    LotRecomputeRequest request;
    request.prices = true;
    request.priceSettings = read().prices;
    runGuarded(m_context.prompter, [&] { return recomputeLot(m_context.db, m_masterData, m_harvestId, lotNumber(), request, m_context.prompter); });
    reloadShownLog(); // the shown log may be one the lot's recompute rewrote
    refreshRows();
}

void LogDialog::quickEntry(int fieldIndex)
{
    QLineEdit* edit = field(fieldIndex);
    const QString text = edit->text();
    const bool twoDigits = m_context.settings.twoDigitAdvance();
    const bool decimetres = m_context.settings.decimetreLengths();
    if (fieldIndex == 1 && (twoDigits || decimetres) && text.size() == 2) {
        focusNextChild();
    } else if (fieldIndex == 2 && twoDigits && text.size() == 2) {
        focusNextChild();
    } else if (fieldIndex == 2 && decimetres && text.size() == 3 && !text.contains(u'.') && !text.contains(u',')) {
        edit->setText(decimetreLength(text));
        recompute();
        focusNextChild();
    }
}

bool LogDialog::eventFilter(QObject* watched, QEvent* event)
{
    // The auto-advance reacts to typed characters only, after the field has taken them.
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (!key->text().isEmpty() && key->text().at(0).isPrint()) {
            const int index = watched == field(1) ? 1 : 2;
            QTimer::singleShot(0, this, [this, index] { quickEntry(index); });
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace tarvik
