#include "entry/ui/logdialog.h"

#include "common/numbers.h"
#include "common/ui/guarded.h"
#include "devices/ui/importrun.h"
#include "entry/ui/entrywindow.h"
#include "entry/harvestentry.h"
#include "entry/lotentry.h"
#include "rules/lotrecompute.h"
#include "store/records.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
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
#include <QSqlQueryModel>
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
constexpr MeasureField MeasureFields[] = {
    {0, "Laufende Nr", 6, false}, {2, "Länge (m)", 8, false},      {1, "Stärke m.R. (cm)", 4, false},
    {3, "Zopf (cm)", 4, false},   {4, "Rindenabzug (cm)", 4, false}, {5, "Stärke o.R. (cm)", 4, true},
    {6, "Efm o.R.", 10, true},    {8, "Mantelmessung: Anzahl", 4, false},
};
constexpr MeasureField PriceFields[] = {
    {13, "Pauschalpreis je Efm", 10, false}, {16, "Pauschalpreis für das Los", 12, false},
    {10, "- Lohn je Festmeter Holz (Einschlag)", 10, false}, {11, "- Lohn je Festmeter Holz (Rücken)", 10, false},
    {12, "- Erschwerniszuschlag in %", 4, false}, {15, "Käferholz-Abschlag in %", 4, false},
    {14, "Holzpreis (brutto)", 12, true}, {7, "Preis berechnet (netto)", 12, true},
};

} // namespace

LogDialog::LogDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> logId,
                     std::optional<qint32> lotNr, QWidget* parent)
    : QDialog(parent), m_context(context), m_harvestId(harvestId), m_editedId(logId), m_masterData(context.db)
{
    setObjectName(QStringLiteral("EF_Eingabe_Staemme"));
    setWindowTitle(logId ? QStringLiteral("Eingabe Stämme - Ändern") : QStringLiteral("Eingabe Stämme - Neu"));
    setModal(true);
    build();
    fillLists();
    m_filling = true;
    if (m_editedId) {
        LogForm form = loadLog(m_context.db, *m_editedId);
        if (const auto prices = loadLotPriceSettings(m_context.db, m_harvestId, toLong(readNumber(form.losNr))))
            form.prices = *prices;
        showForm(form);
        refreshLot();
    } else {
        m_barkModes->button(int(BarkMode::Tabelle))->setChecked(true);
        if (lotNr)
            m_lists[0]->setEditText(QString::number(*lotNr));
        m_filling = false;
        chooseLot();
        m_filling = true;
        if (const auto number = runGuarded(m_context.prompter, [this] {
                return proposedRunningNumber(m_context.db, m_context.settings, m_harvestId, lotNumber().value_or(0));
            }))
            m_fields[0]->setText(QString::number(*number));
    }
    m_filling = false;
    recompute();
}

void LogDialog::build()
{
    auto* measure = new QGroupBox(QStringLiteral("Stammdaten"));
    auto* grid = new QGridLayout(measure);
    int row = 0;
    auto list = [this](int index, int maxLength) {
        auto* box = new QComboBox;
        box->setObjectName(QStringLiteral("kom(%1)").arg(index));
        box->setEditable(true);
        box->setInsertPolicy(QComboBox::NoInsert);
        box->lineEdit()->setMaxLength(maxLength);
        m_lists.insert(index, box);
        return box;
    };
    auto addRow = [&grid, &row](const QString& caption, QWidget* w) {
        grid->addWidget(new QLabel(caption), row, 0);
        grid->addWidget(w, row++, 1);
    };
    addRow(QStringLiteral("Los-Nr"), list(0, 9));
    m_lists[0]->lineEdit()->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,9}")), this));
    for (const MeasureField& f : MeasureFields) {
        auto* edit = new QLineEdit;
        edit->setObjectName(QStringLiteral("tz(%1)").arg(f.index));
        edit->setMaxLength(f.maxLength);
        edit->setReadOnly(f.readOnly);
        if (f.readOnly)
            edit->setFocusPolicy(Qt::NoFocus);
        m_fields.insert(f.index, edit);
        addRow(QString::fromUtf8(f.caption), edit);
        if (f.index == 1)
            addRow(QStringLiteral("Baumart"), list(1, 22));
    }
    m_fields[0]->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,6}")), this));
    addRow(QStringLiteral("Güteklasse"), list(2, 5));
    addRow(QStringLiteral("Stärkeklasse"), list(3, 6));
    addRow(QStringLiteral("Heilbronner Klasse"), list(4, 5));
    addRow(QStringLiteral("Bemerkung"), list(5, 30));
    m_beetle = new QCheckBox(QStringLiteral("Käferholz"));
    m_beetle->setObjectName(QStringLiteral("konkäfer"));
    addRow(QString(), m_beetle);
    for (int i : {3, 4}) {
        m_lists[i]->setEditable(false);
        m_lists[i]->setFocusPolicy(Qt::NoFocus);
    }

    auto* bark = new QGroupBox(QStringLiteral("Rindenabzug"));
    auto* barkLayout = new QVBoxLayout(bark);
    m_barkModes = new QButtonGroup(this);
    int index = 0;
    for (const char* caption : {"Ohne Rinde (O)", "Fester Abzug (F)", "Abzug lt. Tabelle (T)"}) {
        auto* b = new QRadioButton(QString::fromUtf8(caption));
        b->setObjectName(QStringLiteral("optirinde(%1)").arg(index));
        m_barkModes->addButton(b, index++);
        barkLayout->addWidget(b);
    }
    auto* barkLot = new QPushButton(QStringLiteral("Rindenabzug Los neu"));
    barkLot->setObjectName(QStringLiteral("rindenabzuglos"));
    barkLot->setToolTip(QStringLiteral("Den Rindenabzug für das LOS (links) lt. aktueller Einstellung neu berechnen"));
    barkLayout->addWidget(barkLot);

    auto* price = new QGroupBox(QStringLiteral("Preisberechnung"));
    auto* priceGrid = new QGridLayout(price);
    m_priceKinds = new QButtonGroup(this);
    index = 0;
    for (const char* caption : {"Nach der Messzahl / 100 x Messbetrag", "Nach dem Tagespreis in den Stammdaten",
                                "Pauschalpreis von ... je Efm Holz", "Pauschalpreis von ... für das Los"}) {
        auto* b = new QRadioButton(QString::fromUtf8(caption));
        b->setObjectName(QStringLiteral("optipreis(%1)").arg(index));
        m_priceKinds->addButton(b, index);
        priceGrid->addWidget(b, index++, 0, 1, 2);
    }
    for (const MeasureField& f : PriceFields) {
        auto* edit = new QLineEdit;
        edit->setObjectName(QStringLiteral("tz(%1)").arg(f.index));
        edit->setMaxLength(f.maxLength);
        edit->setReadOnly(f.readOnly);
        if (f.readOnly)
            edit->setFocusPolicy(Qt::NoFocus);
        m_fields.insert(f.index, edit);
        priceGrid->addWidget(new QLabel(QString::fromUtf8(f.caption)), index, 0);
        priceGrid->addWidget(edit, index++, 1);
    }
    auto* priceLot = new QPushButton(QStringLiteral("Preise Los neu berechnen"));
    priceLot->setObjectName(QStringLiteral("preisberechnung"));
    priceLot->setToolTip(QStringLiteral("Das Los dieser Preisberechnung neu berechnen"));
    priceGrid->addWidget(priceLot, index, 0, 1, 2);

    m_summary = new QLabel;
    m_summary->setObjectName(QStringLiteral("bezsumme"));
    m_lotLogs = new QSqlQueryModel(this);
    m_grid = new QTableView;
    m_grid->setObjectName(QStringLiteral("gridli"));
    m_grid->setModel(m_lotLogs);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setFocusPolicy(Qt::NoFocus);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 4);

    m_ok = new QPushButton(QStringLiteral("&OK"));
    m_ok->setObjectName(QStringLiteral("ok"));
    m_okNext = new QPushButton(QStringLiteral("OK+&Nächster"));
    m_okNext->setObjectName(QStringLiteral("okn_chster"));
    auto* cancel = new QPushButton(QStringLiteral("&Abbrechen"));
    cancel->setObjectName(QStringLiteral("cmdabbrechen"));
    auto* buttons = new QHBoxLayout;
    for (const auto& [name, caption, source] : {std::tuple{"comimport", "Import FMR1", ImportSource::Fmr1},
                                                 std::tuple{"import_app_holzliste", "Import App", ImportSource::App},
                                                 std::tuple{"importonlinetarvik", "Import Online", ImportSource::Online}}) {
        auto* b = new QPushButton(QString::fromUtf8(caption));
        b->setObjectName(QString::fromUtf8(name));
        connect(b, &QPushButton::clicked, this, [this, source] { onImport(source); });
        buttons->addWidget(b);
    }
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("comhilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    buttons->addWidget(help);
    buttons->addStretch();
    for (QPushButton* b : {m_ok, m_okNext, cancel}) {
        b->setAutoDefault(false);
        buttons->addWidget(b);
    }
    actAtOnceOnAccessKey(m_ok);
    actAtOnceOnAccessKey(m_okNext);
    (m_context.settings.okNextIsDefault() ? m_okNext : m_ok)->setDefault(true);

    auto* right = new QVBoxLayout;
    right->addWidget(bark);
    right->addWidget(price);
    right->addStretch();
    auto* top = new QHBoxLayout;
    top->addWidget(measure);
    top->addLayout(right);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_summary);
    layout->addWidget(m_grid, 1);
    layout->addLayout(buttons);
    resize(980, 760);

    // Tab order as a measuring crew dictates: number, length, diameter, top, species, quality.
    setTabOrder(m_lists[0], m_fields[0]);
    setTabOrder(m_fields[0], m_fields[2]);
    setTabOrder(m_fields[2], m_fields[1]);
    setTabOrder(m_fields[1], m_fields[3]);
    setTabOrder(m_fields[3], m_lists[1]);
    setTabOrder(m_lists[1], m_lists[2]);
    setTabOrder(m_lists[2], m_lists[5]);

    for (QLineEdit* edit : m_fields)
        connect(edit, &QLineEdit::textEdited, this, &LogDialog::recompute);
    for (int i : {1, 2})
        connect(m_lists[i], &QComboBox::currentTextChanged, this, &LogDialog::recompute);
    connect(m_lists[0], &QComboBox::currentTextChanged, this, &LogDialog::chooseLot);
    // A class picked by hand is the user's and stays when the top diameter goes.
    connect(m_lists[4], &QComboBox::activated, this, [this] { m_heilbronnComputed = false; });
    connect(m_barkModes, &QButtonGroup::idToggled, this, [this](int, bool on) { if (on) recompute(); });
    connect(m_priceKinds, &QButtonGroup::idToggled, this, [this](int, bool on) { if (on) recompute(); });
    connect(m_beetle, &QCheckBox::toggled, this, &LogDialog::recompute);
    connect(m_ok, &QPushButton::clicked, this, &LogDialog::onOk);
    connect(m_okNext, &QPushButton::clicked, this, &LogDialog::onOkNext);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(barkLot, &QPushButton::clicked, this, &LogDialog::onBarkRecompute);
    connect(priceLot, &QPushButton::clicked, this, &LogDialog::onPriceRecompute);
    m_fields[1]->installEventFilter(this);
    m_fields[2]->installEventFilter(this);
}

void LogDialog::fillLists()
{
    m_lists[0]->addItems(lotNumbers(m_context.db, m_harvestId, QStringLiteral("Stämme")));
    m_lists[1]->addItems(listValues(m_context.db, QStringLiteral("Baumarten"), QStringLiteral("Baumart")));
    m_lists[2]->addItems(QStringList{QString()} + listValues(m_context.db, QStringLiteral("Güteklassen"), QStringLiteral("Güteklasse")));
    m_lists[3]->addItems(QStringList{QString()} + listValues(m_context.db, QStringLiteral("Stärkeklassen_Stämme"), QStringLiteral("Klasse")));
    m_lists[4]->addItems(QStringList{QString()} + listValues(m_context.db, QStringLiteral("Stärkeklassen_Stämme_Heilbronn"), QStringLiteral("Klasse")));
    m_lists[5]->addItems(listValues(m_context.db, QStringLiteral("Liste_Bemerkungen"), QStringLiteral("Inhalt")));
    for (QComboBox* box : m_lists)
        box->setEditText(QString());
}

std::optional<qint32> LogDialog::lotNumber() const
{
    const double n = readNumber(m_lists[0]->currentText());
    if (n <= 0)
        return std::nullopt;
    return toLong(n);
}

LogForm LogDialog::read() const
{
    LogForm f;
    f.losNr = m_lists[0]->currentText();
    f.laufendeNr = m_fields[0]->text();
    f.species = m_lists[1]->currentText().trimmed();
    f.quality = m_lists[2]->currentText().trimmed();
    f.measuredDiameter = m_fields[1]->text();
    f.length = m_fields[2]->text();
    f.topDiameter = m_fields[3]->text();
    f.deduction = m_fields[4]->text();
    f.underBark = m_fields[5]->text();
    f.volume = m_fields[6]->text();
    f.diameterClass = m_lists[3]->currentText();
    f.heilbronnClass = m_lists[4]->currentText();
    f.heilbronnComputed = m_heilbronnComputed;
    f.remark = m_lists[5]->currentText();
    f.girthCount = m_fields[8]->text();
    f.mode = static_cast<BarkMode>(std::max(0, m_barkModes->checkedId()));
    f.kaeferholz = m_beetle->isChecked();
    f.prices.preisArt = static_cast<qint16>(std::max(0, m_priceKinds->checkedId()));
    f.prices.pauschalpreisEfm = float(readNumber(m_fields[13]->text()));
    f.prices.pauschalpreisG = float(readNumber(m_fields[16]->text()));
    f.prices.kostenEinschlag = float(readNumber(m_fields[10]->text()));
    f.prices.kostenRuecken = float(readNumber(m_fields[11]->text()));
    f.prices.erschwerniszuschlag = toShort(readNumber(m_fields[12]->text()));
    f.prices.kaeferholzabschlag = toShort(readNumber(m_fields[15]->text()));
    return f;
}

void LogDialog::showForm(const LogForm& f)
{
    const bool wasFilling = m_filling;
    m_filling = true;
    m_lists[0]->setEditText(f.losNr);
    m_fields[0]->setText(f.laufendeNr);
    m_lists[1]->setEditText(f.species);
    m_lists[2]->setEditText(f.quality);
    m_fields[1]->setText(f.measuredDiameter);
    m_fields[2]->setText(f.length);
    m_fields[3]->setText(f.topDiameter);
    m_fields[4]->setText(f.deduction);
    m_fields[5]->setText(f.underBark);
    m_fields[6]->setText(f.volume);
    m_fields[7]->setText(f.price);
    m_fields[14]->setText(f.logPrice);
    m_lists[5]->setEditText(f.remark);
    // A class that is not in its list leaves the selection unchanged.
    if (const int i = m_lists[3]->findText(f.diameterClass); i >= 0)
        m_lists[3]->setCurrentIndex(i);
    if (const int i = m_lists[4]->findText(f.heilbronnClass); i >= 0)
        m_lists[4]->setCurrentIndex(i);
    m_barkModes->button(int(f.mode))->setChecked(true);
    m_beetle->setChecked(f.kaeferholz);
    if (QAbstractButton* b = m_priceKinds->button(f.prices.preisArt))
        b->setChecked(true);
    m_fields[13]->setText(formatDecimal(f.prices.pauschalpreisEfm, 2));
    m_fields[16]->setText(formatDecimal(f.prices.pauschalpreisG, 2));
    m_fields[10]->setText(formatDecimal(f.prices.kostenEinschlag, 2));
    m_fields[11]->setText(formatDecimal(f.prices.kostenRuecken, 2));
    m_fields[12]->setText(QString::number(f.prices.erschwerniszuschlag));
    m_fields[15]->setText(QString::number(f.prices.kaeferholzabschlag));
    m_filling = wasFilling;
}

void LogDialog::recompute()
{
    if (m_filling)
        return;
    LogForm form = read();
    if (!runGuarded(m_context.prompter, [&] { recomputeLog(form, m_masterData); }))
        return;
    m_filling = true;
    m_fields[4]->setText(form.deduction);
    m_fields[5]->setText(form.underBark);
    m_fields[6]->setText(form.volume);
    m_fields[7]->setText(form.price);
    m_fields[14]->setText(form.logPrice);
    if (const int i = m_lists[3]->findText(form.diameterClass); i >= 0)
        m_lists[3]->setCurrentIndex(i);
    if (const int i = m_lists[4]->findText(form.heilbronnClass); i >= 0)
        m_lists[4]->setCurrentIndex(i);
    m_heilbronnComputed = form.heilbronnComputed;
    m_filling = false;
}

void LogDialog::chooseLot()
{
    if (m_filling)
        return;
    const auto lot = lotNumber();
    if (lot) {
        m_filling = true;
        const QString species = lastSpeciesOfLot(m_context.db, m_harvestId, *lot);
        if (!species.isEmpty())
            m_lists[1]->setEditText(species);
        LogForm prices = read();
        if (const auto settings = loadLotPriceSettings(m_context.db, m_harvestId, *lot))
            prices.prices = *settings;
        else
            prices.prices = PriceSettings{};
        const QString keepPrice = m_fields[7]->text();
        showForm(prices);
        m_fields[7]->setText(keepPrice);
        if (!m_editedId && m_context.settings.runningNumbersPerLot()) {
            if (const auto number = runGuarded(m_context.prompter, [&] {
                    return proposedRunningNumber(m_context.db, m_context.settings, m_harvestId, *lot);
                }))
                m_fields[0]->setText(QString::number(*number));
        }
        m_filling = false;
    }
    refreshLot();
    recompute();
}

void LogDialog::refreshLot()
{
    const auto lot = lotNumber();
    // Only the chosen lot's rows are read again: a store stays quick in a large harvest.
    const bool shown = runGuarded(m_context.prompter, [&] {
        m_lotLogs->setQuery(lotLogsQuery(m_context.db, m_harvestId, lot.value_or(-1)));
        m_summary->setText(lot ? lotSummary(m_context.db, m_harvestId, *lot) : QString());
    });
    if (!shown)
        m_lotLogs->clear();
}

bool LogDialog::store()
{
    LogForm form = read();
    const auto stored = runGuarded(m_context.prompter, [&] { return storeLog(m_context, m_masterData, m_harvestId, form, m_editedId); });
    if (!stored)
        return false;
    m_storedRows += stored->rows;
    if (m_context.settings.confirmationBeep())
        QApplication::beep();
    m_filling = true;
    if (m_lists[0]->findText(form.losNr.trimmed()) < 0)
        m_lists[0]->addItem(form.losNr.trimmed());
    if (!form.remark.trimmed().isEmpty() && m_lists[5]->findText(form.remark.trimmed()) < 0)
        m_lists[5]->addItem(form.remark.trimmed());
    m_fields[0]->setText(QString::number(nextRunningNumber(m_context.db, m_context.settings, m_harvestId,
                                                           lotNumber().value_or(0), QString::number(stored->lastNumber + 1))));
    m_filling = false;
    refreshLot();
    return true;
}

void LogDialog::onImport(ImportSource source)
{
    const LogForm f = read(); // the bark mode of the window applies to the imported logs
    if (runLogImport(this, m_context, m_harvestId, lotNumber(), source, {f.mode, f.deduction}))
        refreshLot();
}

void LogDialog::onOk()
{
    if (store())
        accept();
}

void LogDialog::onOkNext()
{
    if (!store())
        return;
    m_editedId.reset();
    setWindowTitle(QStringLiteral("Eingabe Stämme - Neu"));
    m_filling = true;
    m_fields[8]->clear();
    if (m_context.settings.zeroMeasuresAfterNext()) {
        for (int i : {1, 2, 3})
            m_fields[i]->setText(QStringLiteral("0"));
    }
    m_filling = false;
    recompute();
    QLineEdit* next = m_context.settings.focusRunningNumberAfterNext() ? m_fields[0] : m_context.settings.focusDiameterAfterNext() ? m_fields[1] : m_fields[2];
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
    refreshLot();
}

void LogDialog::onPriceRecompute()
{
    LotRecomputeRequest request;
    request.prices = true;
    request.priceSettings = read().prices;
    runGuarded(m_context.prompter, [&] { return recomputeLot(m_context.db, m_masterData, m_harvestId, lotNumber(), request, m_context.prompter); });
    refreshLot();
}

void LogDialog::quickEntry(int fieldIndex)
{
    QLineEdit* edit = m_fields[fieldIndex];
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
            const int index = watched == m_fields[1] ? 1 : 2;
            QTimer::singleShot(0, this, [this, index] { quickEntry(index); });
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace tarvik
