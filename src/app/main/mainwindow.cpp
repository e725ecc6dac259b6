#include "app/main/mainwindow.h"

#include "app/main/exitchores.h"
#include "app/main/harvestlistmodel.h"
#include "common/ui/columnwidths.h"
#include "common/ui/elidedlabel.h"
#include "common/ui/gridformat.h"
#include "common/ui/guarded.h"
#include "harvests/filter.h"
#include "harvests/harvestlist.h"
#include "harvests/ui/rangenote.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

namespace tarvik {
namespace {

constexpr int NarrowInfo = 260;
constexpr int WideInfo = 560;

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
    m_rangeNote = new RangeNote(m_session.settings);
    connect(m_rangeNote, &RangeNote::cleared, this, &MainWindow::refill);
    statisticsLine->addWidget(m_rangeNote);
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
        m_rangeNote->refresh();
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

QList<qint32> MainWindow::markedHarvestIds() const
{
    QList<qint32> ids;
    for (const QModelIndex& index : m_list->selectionModel()->selectedRows())
        if (const auto id = m_model->harvestId(index.row()))
            ids << *id;
    return ids;
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
