#include "settings/ui/settingsdialog.h"

#include "common/numbers.h"
#include "common/prompter.h"
#include "settings/corrections.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSerialPortInfo>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

// Check boxes and the settings slot each one stands for.
struct CheckSlot {
    const char* name;
    int slot;
};
constexpr CheckSlot CheckSlots[] = {
    {"konbeep", 24},           {"kondefaultok", 28},      {"koneingabe0", 29},
    {"konruecklnr", 42},       {"konstaerke", 49},        {"konlnrlos", 57},
    {"konzweistellig(0)", 45}, {"konzweistellig(1)", 51}, {"kon(0)", 1},
    {"kon(1)", 9},             {"kon(2)", 8},             {"kon(3)", 50},
};

// Text fields holding whole numbers: t(1), t(2), t(7), t(8).
struct NumberSlot {
    int field;
    int slot;
};
constexpr NumberSlot NumberSlots[] = {{1, 21}, {2, 17}, {7, 54}, {8, 59}};

// The factor fields t(4) ... t(6) hold Einst_Dezimal(0) ... (2).
constexpr int FirstFactorField = 4;
constexpr int SeparatorSlot = 10;
constexpr int HeaderTextSlot = 1;
constexpr int ComPortSlot = 46;
constexpr int ReportTargetSlot = 4;

const QString DefaultOkNote = QStringLiteral(
    "Durch die Aktivierung dieses Kontrollfeldes wird jedesmal, wenn Sie in den Eingabemodulen für Hiebe, Lose, "
    "Stämme, Pfähle oder Schichtholz die Eingabetaste (RETURN) betätigen, automatisch der Schalter [OK+Nächster] "
    "ausgelöst. D.h. zwischen den Feldern müssen Sie mit der TAB-Taste bewegen.");

} // namespace

SettingsDialog::SettingsDialog(Einstellungen& settings, QString settingsPath, Prompter& prompter, QWidget* parent)
    : QDialog(parent), m_settings(settings), m_settingsPath(std::move(settingsPath)), m_prompter(prompter)
{
    setObjectName(QStringLiteral("OF_Einstellungen"));
    setWindowTitle(QStringLiteral("Globale Einstellungen"));
    setModal(true);

    for (int i = 0; i <= 8; ++i)
        m_fields << nullptr;

    auto* tabs = new QTabWidget(this);
    auto* general = new QWidget;
    auto* reports = new QWidget;
    buildGeneralPage(general);
    buildReportsPage(reports);
    tabs->addTab(general, QStringLiteral("Allgemeine Einstellungen"));
    tabs->addTab(reports, QStringLiteral("Berichte/Listen"));

    auto* version = new QLabel(QStringLiteral("Version: 3.0.28"));
    version->setObjectName(QStringLiteral("bezversion"));
    auto* close = new QPushButton(QStringLiteral("&Beenden"));
    close->setObjectName(QStringLiteral("beenden"));
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("hilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    close->setAutoDefault(false);
    help->setAutoDefault(false);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(version);
    buttons->addStretch();
    buttons->addWidget(help);
    buttons->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addLayout(buttons);

    connect(close, &QPushButton::clicked, this, &SettingsDialog::store);
    connectCouplings();
    connectCorrections();
    load();
}

QCheckBox* SettingsDialog::checkBox(const QString& name, const QString& caption)
{
    auto* box = new QCheckBox(caption);
    box->setObjectName(name);
    return box;
}

QLineEdit* SettingsDialog::textField(int index, int maxLength)
{
    auto* edit = new QLineEdit;
    edit->setObjectName(QStringLiteral("t(%1)").arg(index));
    if (maxLength > 0)
        edit->setMaxLength(maxLength);
    m_fields[index] = edit;
    return edit;
}

QButtonGroup* SettingsDialog::optionGroup(const QString& name, const QStringList& captions, QGroupBox* frame)
{
    auto* group = new QButtonGroup(this);
    auto* layout = new QVBoxLayout(frame);
    for (int i = 0; i < captions.size(); ++i) {
        auto* button = new QRadioButton(captions[i]);
        button->setObjectName(QStringLiteral("%1(%2)").arg(name).arg(i));
        group->addButton(button, i);
        layout->addWidget(button);
    }
    return group;
}

void SettingsDialog::buildGeneralPage(QWidget* page)
{
    auto* layout = new QVBoxLayout(page);
    for (const auto& [name, caption] : std::initializer_list<std::pair<const char*, const char*>>{
             {"konbeep", "Quittungs-Piepston (Eingabebestätigung) bei der Dateneingabe ausschalten"},
             {"kondefaultok", "In den Eingabemodulen für Hiebe, Lose, Stämme, Pfähle und Schichtholz den Schalter [OK+Nächster] als RETURN-Standard einstellen."},
             {"koneingabe0", "In den Eingabemodulen für Stämme, Pfähle und Schichtholz nach [OK+Nächster] die Mengenangaben (Längen/Durchmesser) auf 0 zurücksetzen."},
             {"konruecklnr", "In der Stammeingabe nach [OK+Nächster] auf die Laufende Nummer springen (statt Länge)."},
             {"konstaerke", "In der Stammeingabe nach [OK+Nächster] auf die Stärke springen (erleichtert Dateneingabe bei Fix-Längen)."},
             {"konlnrlos", "Suche nach der nächsten Stammnummer nicht innerhalb des Hiebs, sondern innerhalb des Loses."},
             {"konzweistellig(0)", "In der Stammeingabe bei zweistelliger Länge und Stärke automatisch in das nächste Eingabefeld springen."},
             {"konzweistellig(1)", "In der Stammeingabe bei dreistelliger Länge (letzte Zahl wird in 10tel Meter gewandelt) und zweistelliger Stärke automatisch in das nächste Eingabefeld springen."},
         }) {
        QCheckBox* box = checkBox(QString::fromUtf8(name), QString::fromUtf8(caption));
        layout->addWidget(box);
    }

    auto* row = new QHBoxLayout;
    auto* serial = new QGroupBox(QStringLiteral("Datenimport Serielle Schnittstelle vom FMR1"));
    QStringList ports{QStringLiteral("Import über die Serielle Schnittstelle COM1")};
    for (int i = 2; i <= 9; ++i)
        ports << QStringLiteral("COM%1").arg(i);
    m_comPorts = optionGroup(QStringLiteral("opticom"), ports, serial);
    // COM1 to COM9 exist only on some systems: the ports this system reports, USB adapters
    // included, can be chosen (or a name typed); the chosen name wins over the COM number.
    m_serialDevice = new QComboBox;
    m_serialDevice->setObjectName(QStringLiteral("komschnittstelle"));
    m_serialDevice->setEditable(true);
    m_serialDevice->addItem(QString());
    for (const QSerialPortInfo& port : QSerialPortInfo::availablePorts())
        m_serialDevice->addItem(port.systemLocation());
    serial->layout()->addWidget(new QLabel(QStringLiteral("Oder Schnittstelle des Systems (hat Vorrang):")));
    serial->layout()->addWidget(m_serialDevice);
    row->addWidget(serial);

    auto* right = new QVBoxLayout;
    auto* factors = new QGroupBox(QStringLiteral("Umrechnung Schichtholz (Ster in Efm)"));
    auto* factorForm = new QFormLayout(factors);
    factorForm->addRow(QStringLiteral("Bis ein Meter Holzlänge"), textField(4, 10));
    factorForm->addRow(QStringLiteral("Größer ein bis zwei Meter Holzlänge"), textField(5, 10));
    factorForm->addRow(QStringLiteral("Ab mehr als zwei Meter Holzlänge"), textField(6, 10));
    factorForm->addRow(QStringLiteral("Zusätzlicher Pauschaler Abschlag in %"), textField(7, 6));
    right->addWidget(factors);

    auto* backup = new QGroupBox(QStringLiteral("Tagesabstand zwischen den Datensicherungen"));
    auto* backupForm = new QFormLayout(backup);
    backupForm->addRow(QStringLiteral("Anzahl Tage zwischen den Datensicherungen"), textField(2, 6));
    right->addWidget(backup);

    auto* online = new QGroupBox(QStringLiteral("Datenimport von Online-TARVIK"));
    auto* onlineForm = new QFormLayout(online);
    m_onlineHost = new QLineEdit;
    m_onlineHost->setObjectName(QStringLiteral("tonlineserver"));
    m_onlineHost->setPlaceholderText(QStringLiteral("z.B. www.beispiel.de (https)"));
    onlineForm->addRow(QStringLiteral("Server"), m_onlineHost);
    right->addWidget(online);
    auto* handheld = new QGroupBox(QStringLiteral("Datenaustausch mit dem Pocket-PC"));
    auto* handheldRow = new QHBoxLayout(handheld);
    handheldRow->addWidget(new QLabel(QStringLiteral("Ordner des Pocket-PC")));
    auto* folder = new QLineEdit;
    folder->setObjectName(QStringLiteral("tpocket"));
    folder->setPlaceholderText(QStringLiteral("kein Ordner gewählt"));
    handheldRow->addWidget(folder, 1);
    auto* choose = new QPushButton(QStringLiteral("..."));
    choose->setObjectName(QStringLiteral("bt_pocketordner"));
    choose->setAutoDefault(false);
    choose->setToolTip(QStringLiteral("Ordner des Pocket-PC wählen (angeschlossenes Gerät oder synchronisierter Ordner)"));
    connect(choose, &QPushButton::clicked, this, [this, folder] {
        const QString chosen = m_prompter.chooseFolder(QStringLiteral("Ordner des Pocket-PC"), folder->text());
        if (!chosen.isEmpty())
            folder->setText(chosen);
    });
    handheldRow->addWidget(choose);
    right->addWidget(handheld);
    right->addStretch();
    row->addLayout(right);
    layout->addLayout(row);
    layout->addStretch();
}

void SettingsDialog::buildReportsPage(QWidget* page)
{
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(checkBox(QStringLiteral("kon(3)"), QStringLiteral("Alle Listen erstellen ohne erzwungenen Seitenumbruch")));

    auto* target = new QGroupBox(QStringLiteral("Berichte übergeben an"));
    m_reportTargets = optionGroup(QStringLiteral("optiberi"),
                                  {QStringLiteral("Explorer (Eigener Fast-Explorer)"), QStringLiteral("Standard-Internet-Explorer"),
                                   QStringLiteral("Excel (Excel muß installiert sein)"),
                                   QStringLiteral("Editor (Standard-Editor von Windows)"),
                                   QStringLiteral("Tarvik-Editor (Komfortabler Editor)")},
                                  target);
    layout->addWidget(target);

    auto* separatorFrame = new QGroupBox(QStringLiteral("Tabellentrennzeichen für Textausgabe festlegen"));
    auto* separatorRow = new QHBoxLayout(separatorFrame);
    separatorRow->addWidget(textField(3, 10));
    m_separators = new QComboBox;
    m_separators->setObjectName(QStringLiteral("kom"));
    m_separators->addItems(settingsrules::separatorChoices());
    separatorRow->addWidget(m_separators);
    layout->addWidget(separatorFrame);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Folgender Text im Listenkopf schreiben:"), textField(0, 255));
    form->addRow(QStringLiteral("Max. Anzahl Datenzeilen je Seite"), textField(1, 6));
    form->addRow(QStringLiteral("Beim Textdruck oberer Seitenrand in mm"), textField(8, 6));
    layout->addLayout(form);

    auto* contents = new QGroupBox(QStringLiteral("Listen-Inhalte (abhängig von obigem Editor)"));
    auto* contentsLayout = new QVBoxLayout(contents);
    contentsLayout->addWidget(checkBox(QStringLiteral("kon(0)"), QStringLiteral("Aktuelles Datum im Listenkopf vermerken")));
    contentsLayout->addWidget(checkBox(QStringLiteral("kon(1)"), QStringLiteral("Seite x von x in die Berichte schreiben")));
    contentsLayout->addWidget(checkBox(QStringLiteral("kon(2)"), QStringLiteral("Anzahl Datenzeilen in den Berichten vermerken")));
    layout->addWidget(contents);
    layout->addStretch();
}

void SettingsDialog::connectCouplings()
{
    auto box = [this](const char* name) { return findChild<QCheckBox*>(QString::fromLatin1(name)); };
    // clicked() fires for the user's clicks only, never for load()'s setChecked().
    connect(box("kondefaultok"), &QCheckBox::clicked, this, [this](bool checked) {
        if (checked)
            m_prompter.inform(DefaultOkNote);
    });
    connect(box("konruecklnr"), &QCheckBox::clicked, this, [box](bool checked) {
        if (checked)
            box("konstaerke")->setChecked(false);
    });
    connect(box("konstaerke"), &QCheckBox::clicked, this, [box](bool checked) {
        if (checked) {
            box("konruecklnr")->setChecked(false);
            box("koneingabe0")->setChecked(false);
        }
    });
    connect(box("konzweistellig(0)"), &QCheckBox::clicked, this, [box](bool checked) {
        if (checked)
            box("konzweistellig(1)")->setChecked(false);
    });
    connect(box("konzweistellig(1)"), &QCheckBox::clicked, this, [box](bool checked) {
        if (checked)
            box("konzweistellig(0)")->setChecked(false);
    });
    connect(m_separators, &QComboBox::activated, this, [this](int index) {
        if (const auto separator = settingsrules::separatorOfChoice(index))
            m_fields[3]->setText(*separator);
    });
}

namespace {

using Correction = QString (*)(const QString&);
constexpr std::pair<int, Correction> Corrections[] = {
    {3, settingsrules::separator},  {2, settingsrules::backupDays}, {1, settingsrules::linesPerPage},
    {8, settingsrules::topMargin},  {4, settingsrules::firstFactor},
};

// Only a field the user typed in is corrected; one nobody edited keeps what was stored.
void correct(QLineEdit* edit, Correction rule)
{
    if (!edit->isModified())
        return;
    const QString corrected = rule(edit->text());
    if (corrected != edit->text())
        edit->setText(corrected);
}

} // namespace

void SettingsDialog::connectCorrections()
{
    for (const auto& [index, rule] : Corrections) {
        QLineEdit* edit = m_fields[index];
        connect(edit, &QLineEdit::editingFinished, this, [edit, rule = rule] { correct(edit, rule); });
    }
}

void SettingsDialog::load()
{
    for (const CheckSlot& c : CheckSlots)
        findChild<QCheckBox*>(QString::fromLatin1(c.name))->setChecked(m_settings.zahl[static_cast<size_t>(c.slot)] != 0);
    for (const NumberSlot& n : NumberSlots)
        m_fields[n.field]->setText(QString::number(m_settings.zahl[static_cast<size_t>(n.slot)]));
    for (int i = 0; i < 3; ++i)
        m_fields[FirstFactorField + i]->setText(formatDecimal(m_settings.dezimal[static_cast<size_t>(i)], 3));
    m_fields[0]->setText(m_settings.text[HeaderTextSlot]);
    m_fields[3]->setText(m_settings.text[SeparatorSlot]);
    findChild<QLineEdit*>(QStringLiteral("tpocket"))->setText(m_settings.text[HandheldFolderSlot]);
    if (QAbstractButton* b = m_comPorts->button(m_settings.zahl[ComPortSlot]))
        b->setChecked(true);
    m_serialDevice->setEditText(m_settings.text[SerialDeviceSlot]);
    m_onlineHost->setText(m_settings.text[OnlineHostSlot]);
    if (QAbstractButton* b = m_reportTargets->button(m_settings.zahl[ReportTargetSlot]))
        b->setChecked(true);
}

void SettingsDialog::store()
{
    // An access key leaves the field as a click does: its correction applies first.
    for (const auto& [index, rule] : Corrections)
        correct(m_fields[index], rule);

    QLineEdit* handheld = findChild<QLineEdit*>(QStringLiteral("tpocket"));
    if (const auto refusal = settingsrules::handheldFolderRefusal(handheld->text(), QFileInfo(m_settingsPath).absolutePath())) {
        m_prompter.inform(*refusal, Prompter::Icon::Warning); // the dialog stays open with every value
        handheld->setFocus();
        return;
    }

    Einstellungen changed = m_settings;
    if (m_comPorts->checkedId() >= 0)
        changed.zahl[ComPortSlot] = static_cast<qint16>(m_comPorts->checkedId());
    if (m_reportTargets->checkedId() >= 0)
        changed.zahl[ReportTargetSlot] = static_cast<qint16>(m_reportTargets->checkedId());
    for (const CheckSlot& c : CheckSlots)
        changed.zahl[static_cast<size_t>(c.slot)] = findChild<QCheckBox*>(QString::fromLatin1(c.name))->isChecked() ? 1 : 0;
    changed.text[HeaderTextSlot] = m_fields[0]->text();
    changed.text[SeparatorSlot] = m_fields[3]->text();
    changed.text[SerialDeviceSlot] = m_serialDevice->currentText().trimmed();
    changed.text[OnlineHostSlot] = m_onlineHost->text().trimmed();
    changed.text[HandheldFolderSlot] = findChild<QLineEdit*>(QStringLiteral("tpocket"))->text().trimmed();
    for (const NumberSlot& n : NumberSlots)
        changed.zahl[static_cast<size_t>(n.slot)] = toShort(readNumber(m_fields[n.field]->text()));
    for (int i = 0; i < 3; ++i)
        changed.dezimal[static_cast<size_t>(i)] = static_cast<float>(readNumber(m_fields[FirstFactorField + i]->text()));

    QString error;
    if (!EinstellungenSpeichern(changed, m_settingsPath, &error)) {
        m_prompter.inform(error, Prompter::Icon::Warning); // the dialog stays open with every value
        return;
    }
    m_settings = changed;
    accept();
}

} // namespace tarvik
