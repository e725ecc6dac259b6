#include "app/main/mainwindow.h"

#include "app/main/exitchores.h"
#include "harvests/filter.h"
#include "harvests/harvestlist.h"
#include "harvests/ui/rangenote.h"
#include "harvests/ui/selectiondialog.h"
#include "app/main/harvestlistmodel.h"
#include "backup/ui/backupwizard.h"
#include "common/folders.h"
#include "app/main/maintenanceactions.h"
#include "help/ui/helpwindow.h"
#include "reports/ui/lotmapdialog.h"
#include "common/prompter.h"
#include "common/ui/columnwidths.h"
#include "common/ui/elidedlabel.h"
#include "common/ui/gridformat.h"
#include "common/ui/guarded.h"
#include "entry/ui/harvestdialog.h"
#include "exchange/exportfiles.h"
#include "exchange/handheld.h"
#include "exchange/ui/importdialog.h"
#include "entry/ui/hubdialog.h"
#include "entry/ui/logdialog.h"
#include "entry/ui/poledialog.h"
#include "entry/ui/stackdialog.h"
#include "masterdata/ui/lookuplistdialog.h"
#include "masterdata/ui/masterdatahub.h"
#include "common/textfile.h"
#include "reports/reportfile.h"
#include "reports/timberlist.h"
#include "reports/ui/lists/listdialog.h"
#include "reports/ui/lists/timberlistdialog.h"
#include "reports/ui/textoutputwindow.h"
#include "invoices/ui/invoicedialog.h"
#include "settings/ui/settingsdialog.h"
#include "store/records.h"
#include "store/sql.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

namespace tarvik {
namespace {

constexpr int NarrowInfo = 260;
constexpr int WideInfo = 560;

const QString MarkFirst = QStringLiteral("Bitte markieren Sie zuerst den Hieb, den Sie ändern oder löschen möchten!");

// "Courier New" where it is installed; a fixed-pitch font with its metrics elsewhere.
QFont fixedPitchFont()
{
    for (const char* family : {"Courier New", "Liberation Mono"}) {
        if (QFontDatabase::hasFamily(QString::fromLatin1(family))) {
            QFont font(QString::fromLatin1(family), 10);
            font.setStyleHint(QFont::TypeWriter);
            return font;
        }
    }
    return QFontDatabase::systemFont(QFontDatabase::FixedFont);
}

struct Item {
    const char* name;
    const char* caption;
};

} // namespace

QString MainWindow::caption() { return QStringLiteral("TARVIK 3.0.28 - Die Holzliste"); }

MainWindow::MainWindow(Session& session, Prompter& prompter, const Clock& clock, QWidget* parent)
    : QMainWindow(parent), m_session(session), m_prompter(prompter), m_clock(clock),
      m_model(new HarvestListModel(this)), m_list(new QTableView), m_info(new QPlainTextEdit), m_statistics(new ElidedLabel)
{
    setObjectName(QStringLiteral("AF_Tarvik"));
    setWindowTitle(QStringLiteral("TARVIK"));
    resize(1360, 760); // wide enough for the whole statistics line of a large list

    m_list->setObjectName(QStringLiteral("datali"));
    m_list->setModel(m_model);
    formatGrid(m_list); // rows of m_list->model() are rows of m_model
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection); // Ctrl and the mouse mark several rows
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setAlternatingRowColors(true);
    m_list->verticalHeader()->setDefaultSectionSize(m_list->fontMetrics().height() + 6);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_list, &QTableView::doubleClicked, this, &MainWindow::changeHarvest);
    // The info field shows the harvest of the current row, however the row was reached.
    connect(m_list->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { showHarvestInfo(current.row()); });

    auto* popup = new QMenu(QStringLiteral("Hieb"), this);
    popup->setObjectName(QStringLiteral("popupliste"));
    const std::pair<const char*, void (MainWindow::*)()> popupItems[] = {
        {"&Neu", &MainWindow::newHarvest}, {"&Ändern", &MainWindow::changeHarvest}, {"&Löschen", &MainWindow::deleteHarvest}};
    int index = 0;
    for (const auto& [caption, slot] : popupItems) {
        QAction* a = popup->addAction(QString::fromUtf8(caption), this, slot);
        a->setObjectName(QStringLiteral("popzeile(%1)").arg(index++));
    }
    connect(m_list, &QTableView::customContextMenuRequested, this,
            [this, popup](const QPoint& at) { popup->exec(m_list->viewport()->mapToGlobal(at)); });

    m_info->setObjectName(QStringLiteral("text1"));
    showReadOnly(m_info);
    m_info->setFont(fixedPitchFont());
    m_info->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_info->setFixedWidth(NarrowInfo);
    m_statistics->setObjectName(QStringLiteral("bezstati"));

    buildMenus();
    auto* listAndInfo = new QHBoxLayout;
    listAndInfo->addWidget(m_list, 1);
    listAndInfo->addWidget(m_info);
    auto* left = new QVBoxLayout;
    left->addLayout(listAndInfo, 1);
    auto* statisticsLine = new QHBoxLayout;
    statisticsLine->addWidget(m_statistics, 1);
    auto* rangeNote = new RangeNote(m_session.settings);
    connect(rangeNote, &RangeNote::cleared, this, &MainWindow::refill);
    statisticsLine->addWidget(rangeNote);
    left->addLayout(statisticsLine);
    auto* central = new QWidget;
    auto* layout = new QHBoxLayout(central);
    layout->addWidget(buildButtons());
    layout->addLayout(left, 1);
    setCentralWidget(central);
}

AppContext MainWindow::context()
{
    return {m_session.database->shared(), m_session.settings, m_session.dataFolder, m_prompter, m_clock};
}

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

bool MainWindow::event(QEvent* e)
{
    // The first showing counts as the first activation: some desktops never activate a window
    // that was not clicked. Messages wait until the window is on screen.
    if ((e->type() == QEvent::Show || e->type() == QEvent::WindowActivate) && !m_activatedOnce) {
        m_activatedOnce = true;
        QTimer::singleShot(0, this, &MainWindow::onFirstActivation);
    } else if (e->type() == QEvent::WindowActivate && m_refill) {
        QTimer::singleShot(0, this, &MainWindow::refill);
    }
    return QMainWindow::event(e);
}

void MainWindow::onFirstActivation()
{
    setWindowTitle(caption());
    runGuarded(m_prompter, [this] { firstActivation(m_session, m_prompter); });
    refill();
}

void MainWindow::refill()
{
    if (!m_session.database)
        return; // the file was handed over to compaction or takeover; the program is ending
    const std::optional<qint32> current = currentHarvestId();
    if (m_model->rowCount() > 0)
        saveColumnWidths();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool filled = runGuarded(m_prompter, [this] {
        // The list follows the year or date range of the lists while that range is usable.
        const bool rangeUsable = !rangeRefusal(m_session.settings);
        m_model->refill(m_session.database->listHandle(),
                        rangeUsable ? harvestFilter(0, std::nullopt, m_session.settings) : HarvestFilter{});
        m_statistics->setFullText(harvestStatistics(*m_model).text());
        findChild<RangeNote*>()->refresh();
    });
    if (!filled) {
        QApplication::restoreOverrideCursor();
        return;
    }
    restoreColumnWidths();
    selectHarvest(current);
    if (m_model->rowCount() == 0)
        showHarvestInfo(-1);
    m_refill = false;
    QApplication::restoreOverrideCursor();
}

std::optional<qint32> MainWindow::currentHarvestId() const
{
    const QModelIndex index = m_list->currentIndex();
    if (!index.isValid())
        return std::nullopt;
    return m_model->harvestId(index.row());
}

void MainWindow::selectHarvest(std::optional<qint32> id)
{
    int row = id ? m_model->rowOfHarvest(*id) : -1;
    if (row < 0 && m_model->rowCount() > 0)
        row = 0;
    if (row >= 0)
        m_list->setCurrentIndex(listIndex(row, 0));
}

QModelIndex MainWindow::listIndex(int row, int column) const { return m_list->model()->index(row, column); }

void MainWindow::showHarvestInfo(int row)
{
    // The harvest's data wraps in the narrow field; a report keeps its fixed-width lines.
    m_info->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    m_info->setPlainText(m_model->infoText(row));
}

bool MainWindow::requireMarkedHarvest()
{
    if (currentHarvestId())
        return true;
    m_prompter.inform(MarkFirst);
    return false;
}

void MainWindow::newHarvest()
{
    HarvestDialog dialog(context(), std::nullopt, this);
    dialog.exec();
    if (dialog.storedId()) {
        refill();
        selectHarvest(dialog.storedId());
    }
}

void MainWindow::changeHarvest()
{
    if (!requireMarkedHarvest())
        return;
    // "Ändern" steps through the list as shown; afterwards the list stands on the harvest shown last.
    QList<qint32> ids;
    for (int row = 0; row < m_model->rowCount(); ++row)
        ids << m_model->harvestId(row).value_or(0);
    HarvestDialog dialog(context(), *currentHarvestId(), ids, this);
    dialog.exec();
    if (dialog.storedId())
        refill();
    selectHarvest(dialog.shownId());
}

void MainWindow::deleteHarvest()
{
    if (!requireMarkedHarvest())
        return;
    const QString question = joinLines({
        QStringLiteral("Das Löschen eines Hiebes entfernt den markierten Hieb unwiederbringlich mit allen für diesen Hieb eingegebenen Holzmengen."),
        QStringLiteral("Soll der markierte Hieb wirklich gelöscht werden?")});
    if (!m_prompter.askYesNo(question))
        return;
    const int row = m_list->currentIndex().row();
    if (!runGuarded(m_prompter, [this] { tarvik::deleteHarvest(m_session.database->shared(), *currentHarvestId()); }))
        return;
    refill();
    if (m_model->rowCount() > 0)
        m_list->setCurrentIndex(listIndex(std::min(row, m_model->rowCount() - 1), 0));
}

std::optional<qint32> MainWindow::harvestForEntry()
{
    const auto id = currentHarvestId();
    if (!id)
        m_prompter.inform(QStringLiteral("Bitte markieren Sie zuerst den Hieb, für den Sie Daten eingeben möchten."));
    return id;
}

void MainWindow::openLots()
{
    const auto id = harvestForEntry();
    if (!id)
        return;
    HubDialog hub(context(), *id, HubList::Lose, this);
    hub.exec();
    refill();
    selectHarvest(hub.harvestId());
}

void MainWindow::openLogs()
{
    const auto id = harvestForEntry();
    if (!id)
        return;
    LogDialog dialog(context(), *id, std::nullopt, std::nullopt, this);
    dialog.exec();
    refill();
}

void MainWindow::openPoles()
{
    const auto id = harvestForEntry();
    if (!id)
        return;
    PoleDialog dialog(context(), *id, std::nullopt, std::nullopt, this);
    dialog.exec();
    refill();
}

void MainWindow::openStacks()
{
    const auto id = harvestForEntry();
    if (!id)
        return;
    StackDialog dialog(context(), *id, std::nullopt, std::nullopt, this);
    dialog.exec();
    refill();
}

void MainWindow::openInvoices()
{
    // Invoices take lots of every harvest: no current harvest is needed.
    InvoiceDialog dialog(context(), InvoiceDialog::Mode::Neu, {}, -1, this);
    dialog.exec();
    if (dialog.stored())
        refill();
}

void MainWindow::buildTimberList(qint32 harvestId)
{
    const auto built = runGuarded(m_prompter, [&] { return timberList(m_session.database->shared(), harvestId); });
    if (!built)
        return;
    const QStringList& lines = *built;
    m_info->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_info->setPlainText(lines.join(u'\n'));
    const TextFileResult written = writeTextFile(reportFilePath(m_session.dataFolder), lines);
    if (!written.ok) {
        m_prompter.inform(written.error, Prompter::Icon::Warning);
        return;
    }
    TextOutputWindow window(context(), this);
    window.exec();
}

void MainWindow::printHarvest()
{
    const auto id = currentHarvestId();
    if (!id) {
        m_prompter.inform(QStringLiteral("Sie müssen zuerst einen Hieb auswählen, bevor Sie die Daten listen/drucken können."));
        return;
    }
    buildTimberList(*id);
}

void MainWindow::showTimberList()
{
    const auto id = currentHarvestId();
    if (!id) {
        m_prompter.inform(QStringLiteral("Bitte markieren Sie erst den Hieb, von dem Sie die verschiedenen Daten anzeigen möchten "
                                         "oder machen Sie auf den entsprechenden Hieb einen Doppelklick"));
        return;
    }
    buildTimberList(*id);
}

QList<qint32> MainWindow::markedHarvestIds() const
{
    QList<qint32> ids;
    for (const QModelIndex& index : m_list->selectionModel()->selectedRows())
        if (const auto id = m_model->harvestId(index.row()))
            ids << *id;
    return ids;
}

void MainWindow::selectMarkedHarvests()
{
    const QList<qint32> marked = markedHarvestIds();
    if (!runGuarded(m_prompter, [&] { selectOnly(m_session.database->shared(), marked); }))
        return;
    refill();
    markHarvests(marked);
}

void MainWindow::markHarvests(const QList<qint32>& ids)
{
    QItemSelection selection;
    for (qint32 id : ids) {
        const int row = m_model->rowOfHarvest(id);
        if (row >= 0)
            selection.select(listIndex(row, 0), listIndex(row, m_model->columnCount() - 1));
    }
    m_list->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void MainWindow::markSelectedHarvests()
{
    if (!runGuarded(m_prompter, [&] { markHarvests(selectedHarvests(m_session.database->shared())); }))
        return;
    m_prompter.inform(QStringLiteral("Sie können die Hiebe auch mit gedrückter STRG-Taste und der Maus markieren."));
}

void MainWindow::openSelection()
{
    SelectionDialog dialog(m_session.database->shared(), m_prompter, this);
    dialog.exec();
    refill();
    const auto selected = runGuarded(m_prompter, [&] { return selectedHarvests(m_session.database->shared()); });
    if (selected && m_prompter.askYesNo(markSelectedQuestion(int(selected->size()))))
        markHarvests(*selected);
}

void MainWindow::openTimberListDialog()
{
    const auto id = currentHarvestId();
    if (!id) {
        m_prompter.inform(QStringLiteral("Sie müssen zuerst einen Hieb auswählen, bevor Sie die Daten listen/drucken können."));
        return;
    }
    TimberListDialog dialog(context(), *id, this);
    dialog.exec();
}

void MainWindow::openList(lists::Member member)
{
    ListDialog dialog(context(), member, currentHarvestId(), !markedHarvestIds().isEmpty(), this);
    dialog.exec();
    refill(); // the dialog may have changed the range the list follows
}

void MainWindow::moveCurrent(int step)
{
    const int row = m_list->currentIndex().row() + step;
    if (row >= 0 && row < m_model->rowCount())
        m_list->setCurrentIndex(listIndex(row, std::max(0, m_list->currentIndex().column())));
}

void MainWindow::toggleInfoWidth()
{
    m_infoWide = !m_infoWide;
    m_info->setFixedWidth(m_infoWide ? WideInfo : NarrowInfo);
}

void MainWindow::openSettings()
{
    SettingsDialog dialog(m_session.settings, m_session.settingsPath(), m_prompter, this);
    dialog.exec();
}

bool MainWindow::runBackupWizard()
{
    static const SystemDrives drives;
    BackupWizard wizard(context(), drives, shareFolder() + QStringLiteral("backup"), this);
    wizard.exec();
    m_restoreStaged = wizard.restoreStaged();
    return m_restoreStaged;
}

void MainWindow::openBackup()
{
    // A staged restore is taken over at the next start: this run must end now.
    if (runBackupWizard())
        close();
}

void MainWindow::exportToInstallation()
{
    exchange::exportToInstallation(m_session.database->shared(), m_session.dataFolder, m_prompter,
                                   exchange::selectedHarvestIds(m_session.database->shared()));
}

void MainWindow::exportToHandheld()
{
    exchange::exportToHandheld(m_session.database->shared(), m_session.dataFolder, m_session.settings, m_prompter,
                               exchange::selectedHarvestIds(m_session.database->shared()));
}

void MainWindow::openImport(bool fromHandheld)
{
    ImportDialog dialog(context(), fromHandheld, this);
    dialog.exec();
    if (dialog.imported()) {
        requestRefill();
        refill();
    }
}

void MainWindow::saveColumnWidths() const { tarvik::saveColumnWidths(m_list, QStringLiteral("datali")); }

void MainWindow::restoreColumnWidths() { fitColumnsToContent(m_list, QStringLiteral("datali")); }

void MainWindow::endAfterMaintenance(bool keepSettingsFile)
{
    m_endingAfterMaintenance = true;
    m_keepSettingsFile = keepSettingsFile;
    close();
}

void MainWindow::releaseDatabase()
{
    m_model->clear();
    m_session.database.reset();
}

void MainWindow::openLotMap()
{
    LotMapDialog dialog(context(), currentHarvestId(), this);
    dialog.exec();
}

void MainWindow::compactDatabaseFile()
{
    if (compactDatabase(this, m_session, m_prompter, [this] { releaseDatabase(); }))
        endAfterMaintenance(false);
}

void MainWindow::takeOverVersion2()
{
    // The taken-over settings file must not be overwritten by this run's settings at exit.
    if (takeOverVersion2Data(this, m_session, m_prompter, [this] { releaseDatabase(); }))
        endAfterMaintenance(true);
}

void MainWindow::closeEvent(QCloseEvent* e)
{
    saveColumnWidths();
    removeReportPages(m_session.dataFolder);
    if (!m_keepSettingsFile)
        m_session.saveSettings(m_prompter);
    if (m_endingAfterMaintenance || m_restoreStaged) {
        e->accept();
        return;
    }
    if (const auto reminder = backupReminder(m_session.settings, m_clock.today()); reminder && m_prompter.askYesNo(*reminder))
        runBackupWizard();
    e->accept();
}

} // namespace tarvik
