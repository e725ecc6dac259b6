#pragma once
// FH_Datensicherung_neu: the backup and restore wizard. Its pages sit on the tab control
// `tabsicherung`; long work runs on a worker thread while the window shows its progress.
#include "backup/wizardsteps.h"

#include <QDialog>
#include <atomic>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QTabWidget;

namespace tarvik {

class BackupWizard final : public QDialog, private WorkRunner {
    Q_OBJECT
public:
    // imagesFolder holds the pictures of the three sticks.
    BackupWizard(const AppContext& context, const DriveSource& drives, const QString& imagesFolder, QWidget* parent = nullptr);
    ~BackupWizard() override;

    // A restore was staged: the program must end so the next start takes it over.
    bool restoreStaged() const { return m_restoreStaged; }
    bool busy() const { return m_busy; }

    void done(int result) override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    enum Page { Start, Laufwerk, Erstellen, Cloud, Ende, Rettung };

    void run(const std::function<void(const ProgressFn&)>& work) override;
    WorkRunner& runner() { return *this; }

    QWidget* buildStartPage();
    QWidget* buildDrivePage();
    QWidget* buildCreatePage();
    QWidget* buildCloudPage();
    QWidget* buildEndPage();
    QWidget* buildRestorePage();
    std::pair<QPushButton*, QPushButton*> navigation(QWidget* page, QLayout* layout, Page page_);
    void showPage(Page page);
    QString driveText(const Drive& drive) const;
    void showProgress(int percent, const QString& stage);

    void startBackup();
    void fillDrives();
    void driveSelected();
    void driveChosen();
    void createBackup();
    void cloudChosen();
    void startRestore();
    void fillArchives();
    void restoreChosen();

    AppContext m_context;
    const DriveSource& m_drives;
    QString m_imagesFolder;
    std::unique_ptr<BackupSteps> m_backup;
    std::unique_ptr<RestoreSteps> m_restore;
    QList<Drive> m_driveList;
    QList<Drive> m_restoreDrives;
    QList<ArchiveInfo> m_archives;
    bool m_restoreStaged = false;
    bool m_busy = false;
    std::atomic<bool> m_cancel{false};

    QTabWidget* m_tabs;
    QCheckBox* m_rotation;
    QLabel* m_lastMonthly;
    QLabel* m_lastYearly;
    QLabel* m_stickPicture;
    QLabel* m_stickText;
    QListWidget* m_driveWidget;
    QLabel* m_createText;
    QLineEdit* m_cloudFolder;
    QPlainTextEdit* m_summary;
    QComboBox* m_restoreDrive;
    QListWidget* m_archiveWidget;
    QProgressBar* m_progress;
    QLabel* m_progressText;
    QPushButton* m_cancelButton;
    QList<QPushButton*> m_navigation;
};

} // namespace tarvik
