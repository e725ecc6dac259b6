#pragma once
// AF_Tarvik: the harvest list, the menu that opens every other window, and the work of the
// program's first activation and of its end.
#include "reports/lists/members.h"
#include "store/context.h"
#include "store/startup.h"

#include <QMainWindow>
#include <optional>

class QPlainTextEdit;
class QTableView;

namespace tarvik {

class ElidedLabel;
class HarvestListModel;
class RangeNote;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(Session& session, Prompter& prompter, const Clock& clock, QWidget* parent = nullptr);

    static QString caption();

    // The harvest of the list's current row.
    std::optional<qint32> currentHarvestId() const;
    // Windows that change harvests ask for the list to be filled again on the next activation.
    void requestRefill() { m_refill = true; }
    void refill();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    QWidget* buildButtons();
    void onFirstActivation();
    void newHarvest();
    void changeHarvest();
    void deleteHarvest();
    void openLots();
    void openLogs();
    void openPoles();
    void openStacks();
    void openInvoices();
    void printHarvest();
    void showTimberList();
    void buildTimberList(qint32 harvestId);
    std::optional<qint32> harvestForEntry();
    template <class EntryDialog>
    void openEntryWindow();
    void moveCurrent(int step);
    QList<qint32> markedHarvestIds() const;
    void markHarvests(const QList<qint32>& ids);
    void selectMarkedHarvests();
    void markSelectedHarvests();
    void openSelection();
    void openList(lists::Member member);
    void openTimberListDialog();
    void toggleInfoWidth();
    void openSettings();
    void openBackup();
    bool runBackupWizard();
    void openLotMap();
    void compactDatabaseFile();
    void takeOverVersion2();
    void releaseDatabase();
    void endAfterMaintenance(bool keepSettingsFile);
    void exportToInstallation();
    void exportToHandheld();
    void openImport(bool fromHandheld);
    bool requireMarkedHarvest();
    void saveColumnWidths() const;
    void restoreColumnWidths();
    void selectHarvest(std::optional<qint32> id);
    QModelIndex listIndex(int row, int column) const;
    void showHarvestInfo(int row);
    AppContext context();

    Session& m_session;
    Prompter& m_prompter;
    const Clock& m_clock;
    HarvestListModel* m_model;
    QTableView* m_list;
    QPlainTextEdit* m_info;
    ElidedLabel* m_statistics;
    RangeNote* m_rangeNote = nullptr; // "Nur Hiebe …" beside the statistics
    bool m_activatedOnce = false;
    bool m_refill = true;
    bool m_infoWide = false;
    bool m_restoreStaged = false;
    bool m_endingAfterMaintenance = false;
    bool m_keepSettingsFile = false;
};

} // namespace tarvik
