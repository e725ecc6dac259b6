#pragma once
// The steps of the backup and restore wizard, one core function per user action. Questions
// and messages go through the prompter; long work goes through a runner, which in the
// desktop program keeps the window alive while a worker thread does it.
#include "backup/archive.h"
#include "backup/drives.h"
#include "backup/rotation.h"
#include "store/context.h"

#include <functional>
#include <optional>

namespace tarvik {

class WorkRunner {
public:
    virtual ~WorkRunner() = default;
    // Runs the work to its end; it reports progress through the function it is given.
    virtual void run(const std::function<void(const ProgressFn&)>& work) = 0;
};

// Runs the work on the calling thread (command line, tests).
class DirectRunner final : public WorkRunner {
public:
    void run(const std::function<void(const ProgressFn&)>& work) override { work({}); }
};

class BackupSteps {
public:
    BackupSteps(const AppContext& context, const DriveSource& drives, WorkRunner& runner);

    BackupChoices& choices() { return m_choices; }
    const BackupChoices& choices() const { return m_choices; }
    std::optional<Stick> requestedStick() const { return m_stick; }

    // Start page: the stick or the hint, OK/Cancel; false when the user cancelled.
    bool begin(bool rotation);
    // The drives offered, and the one to select at first (-1: none).
    QList<Drive> drives() const;
    int proposedDrive(const QList<Drive>& drives) const;
    // A drive that cannot be read is refused with its message.
    bool checkReachable(const Drive& drive);
    // [Weiter] on the drive page: same-drive and volume-name questions; false keeps the page.
    bool chooseDrive(const std::optional<Drive>& drive);
    // The cloud folder (empty: none), remembered before the archive is made.
    void chooseCloudFolder(const QString& folder);
    // The archive on the hard disk, then its copies on the chosen drive and in the cloud folder.
    // The archive holds the date of its own backup, the stick it goes to and the cloud folder.
    // Today's archive kept at the overwrite question is copied all the same.
    void createArchive();
    void copyToDrive();
    void copyToCloud();
    // When the wizard closes: offers to delete all but the three newest archives.
    void closing();

    QStringList summary() const;
    bool archiveCreated() const { return m_created; }
    QString archivePath() const;
    QString copiedTo() const { return m_copiedTo; }

private:
    void remember();
    bool archiveAtHand() const { return m_created || m_existedToday; }
    // The stick's date in the choices when the archive goes to the due stick; undone when it does not get there.
    void markStickDone();
    void undoStickDone();

    AppContext m_context;
    const DriveSource& m_drives;
    WorkRunner& m_runner;
    BackupChoices m_choices;
    QDate m_today;
    std::optional<Stick> m_stick;
    std::optional<Drive> m_target; // the external drive, when one was chosen
    bool m_begun = false;
    bool m_stickMatched = false;
    bool m_created = false;
    bool m_existedToday = false;
    bool m_triedCreate = false;
    bool m_cloud = false;
    QString m_copiedTo;
    std::optional<std::pair<QDate, QDate>> m_stickDatesBefore; // monthly, yearly before markStickDone
};

class RestoreSteps {
public:
    RestoreSteps(const AppContext& context, const DriveSource& drives, WorkRunner& runner);

    // The note to insert the stick of the last backup.
    void begin();
    QList<Drive> drives() const;
    // The archives on a drive, newest first; on the data's own drive those of the hard disk.
    QList<ArchiveInfo> archivesOn(const Drive& drive) const;
    // [Weiter]: the question, then check and staging. True when the data were staged and the
    // program must end so the next start takes them over.
    bool restore(const std::optional<ArchiveInfo>& chosen);

private:
    AppContext m_context;
    const DriveSource& m_drives;
    WorkRunner& m_runner;
};

QString backupCleanupQuestion();
QString restoreQuestion();
QString restoredMessage();

} // namespace tarvik
