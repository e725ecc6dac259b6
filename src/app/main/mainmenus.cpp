// The main window's menus and its column of buttons; what each item does is in mainactions.cpp.
#include "app/main/mainwindow.h"

#include "app/main/maintenanceactions.h"
#include "help/ui/helpwindow.h"
#include "masterdata/ui/lookuplistdialog.h"
#include "masterdata/ui/masterdatahub.h"

#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {
namespace {

struct Item {
    const char* name;
    const char* caption;
};


} // namespace

void MainWindow::buildMenus()
{
    // Items whose windows come later are present but disabled until they exist.
    auto menu = [this](const char* name, const char* caption, std::initializer_list<Item> items) {
        QMenu* m = menuBar()->addMenu(QString::fromUtf8(caption));
        m->setObjectName(QString::fromUtf8(name));
        for (const Item& item : items) {
            QAction* a = m->addAction(QString::fromUtf8(item.caption));
            a->setObjectName(QString::fromUtf8(item.name));
            a->setEnabled(false);
        }
        return m;
    };
    auto wire = [this](const char* name, auto slot) {
        QAction* a = findChild<QAction*>(QString::fromUtf8(name));
        a->setEnabled(true);
        connect(a, &QAction::triggered, this, slot);
    };

    menu("H_hiebe", "&Hiebe",
         {{"H_Neuerhieb", "Neuer &Hieb"}, {"H_Hiebändern", "Aktuellen Hieb &ändern"}, {"H_Hieblöschen", "Aktuellen Hieb &löschen"},
          {"H_Markiertehiebeselektieren", "Alle markierten Hiebe selektieren"},
          {"H_Selektiertenhiebemarkieren", "Alle selektierten Hiebe markieren"}, {"H_Hiebeselektieren", "Hiebe selek&tieren"},
          {"S_ZEPbeenden", " Beenden"}});
    menu("E_Eingabe", "&Eingabe",
         {{"E_EingabeLose", "&Lose"}, {"E_EingabeStämme", "&Stämme"}, {"E_EingabePfähle", "&Pfähle"},
          {"E_EingabeSchichtholz", "Schicht&holz"}, {"E_Eingaberechnungen", "&Rechnungen"}});
    menu("A_Auswertungen", "&Auswertungen",
         {{"A_Statistikholzliste", "&Holzliste"}, {"A_Losstandorte", "&Los-Standorte (Luftbild)"}, {"A_StatistikHiebe", "&Hiebe"},
          {"A_Statistiklose", "&Lose"}, {"A_Statistikstämme", "&Stämme"}, {"A_Statistikpfähle", "&Pfähle"},
          {"A_Statistikschichtholz", "Schichth&olz"}, {"A_Statistikrechnungen", "Rechnungen"}});
    menu("S_Stammdaten", "&Stammdaten",
         {{"S_Stammdatenbaumarten", "&Baumarten"}, {"S_Stammdatenstärkestämme", "Stärkeklassen &Stämme"},
          {"S_Stammdatenstärkeheilbronner", "Stärkeklassen &Heilbronner Sortierung"},
          {"S_Stammdatenstärkepfähle", "Stärkeklassen &Pfähle"}, {"S_Stammdatenstärkeschichtholz", "Stärkeklassen Schicht&holz"},
          {"S_Stammdatengüteklassen", "&Güteklassen"}, {"S_Stammdatenrindenabzug", "&Rindenabzug Standard"},
          {"S_Stammdaten_Rindenabzug2", "Rindenabzug &frei definiert"}, {"S_Stammdatenmessbeträge", "&Messbeträge"},
          {"S_Stammdatenmesszahlen", "Mess&zahlen"}, {"S_Stammdatentagespreise", "&Tagespreise"}});
    menu("O_Optionen", "&Optionen",
         {{"allgemeines", "&Einstellungen"}, {"xeinstellstichworte", "&Stichworte"}, {"xupdatemanager", "Update-Manager"},
          {"xedatenbankkomprimieren", "Datenbank komprimieren"}, {"xedatenaustarvik1", "Datenübernahme aus TARVIK 2.0"},
          {"otpiimportfmr1", "Datenimport vom FMR1 / Holzlisten-App / Online-TARVIK"},
          {"optiexportpocketpc", "Datenexport an PDA (Pocket-PC)"}, {"optiimportpocketpc", "Datenimport von PDA (Pocket-PC)"},
          {"optiexporttarvik3", "Datenexport an andere TARVIK-Installation"},
          {"optiimporttarvik3", "Datenimport von anderer TARVIK-Installation"}, {"S_xdatensicherung", "&Datensicherung"}});
    menu("H_Hilfe", "&Hilfe",
         {{"hilfestartmenue", "Das Start&menue"}, {"hilfewiemacheich", "Wie mache ich..."},
          {"hilfewieanfangen", "Wie &Fangen Sie an"}, {"H_Hilfehiebe", "Hiebe"}, {"H_Hilfeeingabe", "Eingabe"},
          {"H_Hilfeauswertungen", "Auswertungen"}, {"H_Hilfestammdaten", "Stammdaten"}, {"H_Hilfeoptionen", "Optionen"}});

    wire("H_Neuerhieb", &MainWindow::newHarvest);
    wire("H_Hiebändern", &MainWindow::changeHarvest);
    wire("H_Hieblöschen", &MainWindow::deleteHarvest);
    wire("allgemeines", &MainWindow::openSettings);
    wire("E_EingabeLose", &MainWindow::openLots);
    wire("E_EingabeStämme", &MainWindow::openLogs);
    wire("E_EingabePfähle", &MainWindow::openPoles);
    wire("E_EingabeSchichtholz", &MainWindow::openStacks);
    wire("E_Eingaberechnungen", &MainWindow::openInvoices);
    wire("A_Statistikholzliste", &MainWindow::showTimberList);
    wire("H_Markiertehiebeselektieren", &MainWindow::selectMarkedHarvests);
    wire("H_Selektiertenhiebemarkieren", &MainWindow::markSelectedHarvests);
    wire("H_Hiebeselektieren", &MainWindow::openSelection);
    const std::pair<const char*, lists::Member> evaluations[] = {
        {"A_StatistikHiebe", lists::Member::Hiebe},           {"A_Statistiklose", lists::Member::Lose},
        {"A_Statistikstämme", lists::Member::Staemme},        {"A_Statistikpfähle", lists::Member::Pfaehle},
        {"A_Statistikschichtholz", lists::Member::Schichtholz}, {"A_Statistikrechnungen", lists::Member::Rechnungen}};
    for (const auto& [name, member] : evaluations) {
        QAction* a = findChild<QAction*>(QString::fromUtf8(name));
        a->setEnabled(true);
        connect(a, &QAction::triggered, this, [this, member = member] { openList(member); });
    }
    wire("S_xdatensicherung", &MainWindow::openBackup);
    // Each master data item opens the hub on its own list.
    const char* const masterDataItems[MasterListCount] = {
        "S_Stammdatenbaumarten",         "S_Stammdatenstärkestämme",  "S_Stammdatenstärkeheilbronner",
        "S_Stammdatenstärkepfähle",      "S_Stammdatenstärkeschichtholz", "S_Stammdatengüteklassen",
        "S_Stammdatenrindenabzug",       "S_Stammdatenmessbeträge",   "S_Stammdatenmesszahlen",
        "S_Stammdaten_Rindenabzug2",     "S_Stammdatentagespreise"};
    for (int i = 0; i < MasterListCount; ++i) {
        QAction* a = findChild<QAction*>(QString::fromUtf8(masterDataItems[i]));
        a->setEnabled(true);
        connect(a, &QAction::triggered, this, [this, i] {
            MasterDataHub hub(context(), MasterList(i), this);
            hub.exec();
        });
    }
    QAction* keywords = findChild<QAction*>(QStringLiteral("xeinstellstichworte"));
    keywords->setEnabled(true);
    connect(keywords, &QAction::triggered, this, [this] {
        LookupListDialog dialog(context(), this);
        dialog.exec();
    });
    wire("A_Losstandorte", &MainWindow::openLotMap);
    wire("xedatenbankkomprimieren", &MainWindow::compactDatabaseFile);
    wire("xedatenaustarvik1", &MainWindow::takeOverVersion2);
    for (QAction* item : findChild<QMenu*>(QStringLiteral("H_Hilfe"))->actions()) {
        item->setEnabled(true);
        connect(item, &QAction::triggered, this, [this, item] { showHelp(this, m_prompter, helpTopicOfMenuItem(item->objectName())); });
    }
    wire("optiexporttarvik3", &MainWindow::exportToInstallation);
    wire("optiexportpocketpc", &MainWindow::exportToHandheld);
    wire("optiimporttarvik3", [this] { openImport(false); });
    wire("optiimportpocketpc", [this] { openImport(true); });
    wire("otpiimportfmr1", [this] {
        m_prompter.inform(QStringLiteral(
            "Der Import von Stämmen über das FMR1-Gerät, der App Holzliste oder aus Online-TARVIK wird über das Modul für die "
            "Stammeingabe realisiert. Wählen Sie also den entsprechenden Hieb aus und gehen Sie dann auf Eingabe -> Stämme. Dort "
            "klicken Sie links unten auf den entsprechenden Schalter für den gewünschten Import."));
    });
    QAction* quit = findChild<QAction*>(QStringLiteral("S_ZEPbeenden"));
    quit->setEnabled(true);
    connect(quit, &QAction::triggered, this, &QWidget::close);
}

QWidget* MainWindow::buildButtons()
{
    auto* panel = new QWidget;
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);
    auto button = [column](const QString& name, const QString& caption) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        b->setEnabled(false);
        column->addWidget(b);
        return b;
    };
    auto working = [this, &button](const char* name, const char* caption, auto slot) {
        QPushButton* b = button(QString::fromUtf8(name), QString::fromUtf8(caption));
        b->setEnabled(true);
        connect(b, &QPushButton::clicked, this, slot);
    };
    working("bt_neuerhieb", "Neuer Hieb anlegen", &MainWindow::newHarvest);
    working("bt_aendernhieb", "Aktuellen Hieb ändern", &MainWindow::changeHarvest);
    working("bt_lose", "Eingabe Lose", &MainWindow::openLots);
    working("bt_staemme", "Eingabe Stämme", &MainWindow::openLogs);
    working("bt_pfaehle", "Eingabe Pfähle", &MainWindow::openPoles);
    working("bt_schichtholz", "Eingabe Schichtholz", &MainWindow::openStacks);
    working("bt_rechnung", "Eingabe Rechnungen", &MainWindow::openInvoices);
    working("bt_holzlistelisten", "Holzliste erstellen", &MainWindow::openTimberListDialog);
    const std::tuple<const char*, const char*, lists::Member> evaluations[] = {
        {"bt_hiebelisten", "Hiebe auswerten", lists::Member::Hiebe},
        {"bt_loselisten", "Lose auswerten", lists::Member::Lose},
        {"bt_staemmelisten", "Stämme auswerten", lists::Member::Staemme},
        {"bt_pfaehlelisten", "Pfähle auswerten", lists::Member::Pfaehle},
        {"bt_schichtholzlisten", "Schichtholz auswerten", lists::Member::Schichtholz},
        {"bt_rechnunglisten", "Rechnungen auswerten", lists::Member::Rechnungen}};
    for (const auto& [name, caption, member] : evaluations) {
        QPushButton* b = button(QString::fromUtf8(name), QString::fromUtf8(caption));
        b->setEnabled(true);
        connect(b, &QPushButton::clicked, this, [this, member = member] { openList(member); });
    }
    QPushButton* masterData = button(QStringLiteral("bt_stammdaten"), QStringLiteral("Stammdaten"));
    masterData->setEnabled(true);
    connect(masterData, &QPushButton::clicked, this, [this] {
        MasterDataHub hub(context(), std::nullopt, this); // the list chosen last
        hub.exec();
    });
    working("bt_einstellungen", "Einstellungen", &MainWindow::openSettings);
    working("bt_datensicherung", "Datensicherung", &MainWindow::openBackup);
    working("googlemaps", "Google-Maps Polterlage", &MainWindow::openLotMap);
    column->addStretch();
    working("linksrechts", "Infofeld schmäler/breiter", &MainWindow::toggleInfoWidth);
    QPushButton* previous = button(QStringLiteral("abwaerts(0)"), QStringLiteral("Vorheriger Hieb"));
    QPushButton* next = button(QStringLiteral("abwaerts(1)"), QStringLiteral("Nächster Hieb"));
    for (QPushButton* b : {previous, next})
        b->setEnabled(true);
    connect(previous, &QPushButton::clicked, this, [this] { moveCurrent(-1); });
    connect(next, &QPushButton::clicked, this, [this] { moveCurrent(1); });
    QPushButton* print = button(QStringLiteral("comdrucken"), QStringLiteral("Hiebdaten drucken"));
    print->setEnabled(true);
    connect(print, &QPushButton::clicked, this, &MainWindow::printHarvest);
    return panel;
}

} // namespace tarvik
