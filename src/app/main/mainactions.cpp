// What the main window's menu items and buttons do: the harvest itself, the windows they open,
// the exchange and the maintenance.
#include "app/main/mainwindow.h"

#include "app/main/harvestlistmodel.h"
#include "app/main/maintenanceactions.h"
#include "backup/ui/backupwizard.h"
#include "common/folders.h"
#include "common/prompter.h"
#include "common/textfile.h"
#include "common/ui/guarded.h"
#include "entry/ui/harvestdialog.h"
#include "entry/ui/hubdialog.h"
#include "entry/ui/logdialog.h"
#include "entry/ui/poledialog.h"
#include "entry/ui/stackdialog.h"
#include "exchange/exportfiles.h"
#include "exchange/handheld.h"
#include "exchange/ui/importdialog.h"
#include "harvests/filter.h"
#include "harvests/ui/selectiondialog.h"
#include "invoices/ui/invoicedialog.h"
#include "reports/reportfile.h"
#include "reports/timberlist.h"
#include "reports/ui/lists/listdialog.h"
#include "reports/ui/lists/timberlistdialog.h"
#include "reports/ui/lotmapdialog.h"
#include "reports/ui/textoutputwindow.h"
#include "settings/ui/settingsdialog.h"
#include "store/records.h"

#include <QPlainTextEdit>
#include <QTableView>

namespace tarvik {
namespace {

const QString MarkFirst = QStringLiteral("Bitte markieren Sie zuerst den Hieb, den Sie ändern oder löschen möchten!");

} // namespace

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

// The log, pole and stacked-wood windows open on the current harvest in mode "Neu".
template <class EntryDialog>
void MainWindow::openEntryWindow()
{
    const auto id = harvestForEntry();
    if (!id)
        return;
    EntryDialog dialog(context(), *id, std::nullopt, std::nullopt, this);
    dialog.exec();
    refill();
}

void MainWindow::openLogs() { openEntryWindow<LogDialog>(); }

void MainWindow::openPoles() { openEntryWindow<PoleDialog>(); }

void MainWindow::openStacks() { openEntryWindow<StackDialog>(); }

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

void MainWindow::selectMarkedHarvests()
{
    const QList<qint32> marked = markedHarvestIds();
    if (!runGuarded(m_prompter, [&] { selectOnly(m_session.database->shared(), marked); }))
        return;
    refill();
    markHarvests(marked);
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

} // namespace tarvik
