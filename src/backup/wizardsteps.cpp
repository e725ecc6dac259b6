#include "backup/wizardsteps.h"

#include "backup/restore.h"
#include "common/sqldate.h"

#include <QDir>
#include <QFileInfo>
#include <tuple>

namespace tarvik {
namespace {

QString native(const QString& path) { return QDir::toNativeSeparators(path); }

QString notWhen(bool happened) { return happened ? QString() : QStringLiteral("NICHT "); }

QString dataFolderPath(const AppContext& context) { return QFileInfo(context.dataFolder).absoluteFilePath(); }

} // namespace

QString backupCleanupQuestion()
{
    return joinLines({QStringLiteral("Es sind zur Zeit mehr als 3 Datensicherungen auf Ihrem Rechner vorhanden."),
                      QStringLiteral("Sollen die ältesden Datensicherungen (bis auf die jünsten 3) gelöscht werden?")});
}

QString restoreQuestion()
{
    return QStringLiteral("Soll die Datensicherung wirklich eingelesen werden. Alle Daten, die seit der ausgewählten Datensicherung "
                          "eingegeben wurden, gehen dabei verloren!");
}

QString restoredMessage()
{
    return QStringLiteral("Die Daten wurden eingelesen. Das Programm wird nun beendet. Bei einem erneuten Programmstart werden die Daten "
                          "endgültig übernommen!");
}

BackupSteps::BackupSteps(const AppContext& context, const DriveSource& drives, WorkRunner& runner)
    : m_context(context), m_drives(drives), m_runner(runner), m_choices(loadBackupChoices(context.dataFolder)),
      m_today(context.clock.today())
{
}

void BackupSteps::remember()
{
    QString error;
    if (!saveBackupChoices(m_context.dataFolder, m_choices, &error))
        m_context.prompter.inform(error, Prompter::Icon::Warning);
}

bool BackupSteps::begin(bool rotation)
{
    m_choices.rotation = rotation;
    remember();
    m_stick.reset();
    if (rotation)
        m_stick = dueStick(m_choices.lastMonthly, m_choices.lastYearly, m_today);
    if (!m_context.prompter.askOkCancel(rotation ? insertStickMessage(*m_stick) : externalDriveHint()))
        return false;
    m_begun = true;
    return true;
}

QList<Drive> BackupSteps::drives() const { return m_drives.drives(); }

int BackupSteps::proposedDrive(const QList<Drive>& drives) const
{
    if (m_stick)
        for (int i = 0; i < drives.size(); ++i)
            if (volumeMatches(drives[i], *m_stick))
                return i;
    const std::optional<Drive> data = m_drives.driveOf(dataFolderPath(m_context));
    for (int i = 0; i < drives.size(); ++i)
        if (drives[i].rootPath == m_choices.lastDrive && drives[i].removable)
            return i;
    for (int i = 0; i < drives.size(); ++i)
        if (drives[i].removable && !(data && sameDevice(drives[i], *data)))
            return i;
    return -1;
}

bool BackupSteps::checkReachable(const Drive& drive)
{
    if (isReachable(drive))
        return true;
    m_context.prompter.inform(QStringLiteral("Das Laufwerk ist nicht ansprechbar! Bitte wählen Sie ein korrektes Laufwerk aus!"),
                              Prompter::Icon::Warning);
    return false;
}

bool BackupSteps::chooseDrive(const std::optional<Drive>& drive)
{
    m_target.reset();
    m_stickMatched = false;
    if (!drive)
        return true;
    if (!checkReachable(*drive))
        return false;
    const std::optional<Drive> data = m_drives.driveOf(dataFolderPath(m_context));
    if (data && sameDevice(*drive, *data)) {
        const QString warning = joinLines({
            QStringLiteral("Sie haben das selbe Laufwerk ausgewählt, in dem sich auch die Original-Daten befinden. Dieses Backup hat deshalb "
                           "keine hohe Datensicherheit. Bei einem Festplattendefekt wäre auch diese Datensicherung nicht brauchbar."),
            QStringLiteral("Möchten Sie trotzdem fortfahren?")});
        // Going on keeps the archive on the hard disk only.
        return m_context.prompter.askYesNo(warning);
    }
    if (m_stick) {
        m_stickMatched = volumeMatches(*drive, *m_stick);
        if (!m_stickMatched &&
            !m_context.prompter.askYesNo(QStringLiteral("Sie haben ausgewählt, dass Sie das Backup-Konzept von Kelmo nutzen. Der aktuell "
                                                        "ausgewählte Datenstick hat nicht den zum Backup-Konzept passenden Volume-Name. Soll "
                                                        "das Backup trotzdem auf diesen Datenträger kopiert werden?")))
            return false;
    }
    m_target = drive;
    m_choices.lastDrive = drive->rootPath;
    remember();
    return true;
}

QString BackupSteps::archivePath() const { return localArchiveFolder(m_context.dataFolder) + archiveName(m_today); }

void BackupSteps::markStickDone()
{
    if (!m_stick || !m_target || *m_stick == Stick::Gruen)
        return;
    if (!m_stickDatesBefore)
        m_stickDatesBefore = std::pair{m_choices.lastMonthly, m_choices.lastYearly};
    if (*m_stick == Stick::Blau)
        m_choices.lastMonthly = m_today;
    else
        m_choices.lastYearly = m_today;
    remember();
}

void BackupSteps::undoStickDone()
{
    if (!m_stickDatesBefore)
        return;
    std::tie(m_choices.lastMonthly, m_choices.lastYearly) = *m_stickDatesBefore;
    m_stickDatesBefore.reset();
    remember();
}

void BackupSteps::chooseCloudFolder(const QString& folder)
{
    m_choices.cloudFolder = folder.trimmed();
    remember();
}

void BackupSteps::createArchive()
{
    m_triedCreate = true;
    m_created = false;
    m_existedToday = false;
    const QString path = archivePath();
    if (QFileInfo::exists(path) &&
        !m_context.prompter.askYesNo(QStringLiteral("Für den heutigen Tag existiert bereits eine Datensicherung. Soll diese überschrieben werden?"))) {
        m_existedToday = true;
        m_context.prompter.inform(QStringLiteral("Es wurde keine neue Datensicherung erstellt, weil bereits eine existiert hatte."));
        return;
    }
    // Written before the archive is made, so that a restore of it knows its own backup: the
    // date in the settings, the stick and the cloud folder in the remembered choices.
    const QString settingsPath = QDir(m_context.dataFolder).filePath(QLatin1String(SettingsFileName));
    const QString lastBackup = m_context.settings.text[12];
    m_context.settings.text[12] = formatGermanDate(m_today);
    QString error;
    if (!EinstellungenSpeichern(m_context.settings, settingsPath, &error))
        m_context.prompter.inform(error, Prompter::Icon::Warning);
    markStickDone();
    ArchiveResult result;
    const QString dataFolder = m_context.dataFolder;
    m_runner.run([&](const ProgressFn& progress) { result = writeArchive(dataFolder, path, progress); });
    if (!result.ok) {
        m_context.settings.text[12] = lastBackup;
        EinstellungenSpeichern(m_context.settings, settingsPath, &error);
        undoStickDone();
        m_context.prompter.inform(result.error, Prompter::Icon::Warning);
        return;
    }
    m_created = true;
    m_context.prompter.inform(QStringLiteral("Die Datensicherung wurde erstellt und ist in der ZIP-Datei ") + native(path) +
                              QStringLiteral(" gespeichert."));
}

void BackupSteps::copyToDrive()
{
    m_copiedTo.clear();
    if (!archiveAtHand())
        return;
    const QString path = archivePath();
    if (!m_target) {
        m_context.prompter.inform(QStringLiteral("Die Datensicherung wurde nicht auf einen externen Datenträger kopiert, weil kein externer "
                                                 "Datenträger ausgewählt wurde. Die Datensicherung befindet sich auf Ihrer Festplatte unter ") +
                                  native(path));
        return;
    }
    if (!checkReachable(*m_target)) {
        undoStickDone();
        return;
    }
    const QString name = archiveName(m_today);
    if (QFileInfo::exists(QDir(m_target->rootPath).filePath(name)) &&
        !m_context.prompter.askYesNo(QStringLiteral("Auf dem externen Datenträger befindet sich bereits eine Datensicherung mit dem Namen ") +
                                     name + QStringLiteral(". Soll die Datensicherung dennoch kopiert werden?"))) {
        undoStickDone();
        m_context.prompter.inform(QStringLiteral("Die Datensicherung wurde nicht kopiert."));
        return;
    }
    CopyResult copied;
    const QString root = m_target->rootPath;
    m_runner.run([&](const ProgressFn& progress) { copied = copyVerified(path, root, progress); });
    if (!copied.ok) {
        undoStickDone();
        m_context.prompter.inform(copied.error, Prompter::Icon::Warning);
        return;
    }
    m_copiedTo = copied.path;
    markStickDone(); // today's archive kept at the question reached the stick as well
    m_stickDatesBefore.reset();
    m_context.prompter.inform(QStringLiteral("Die Datensicherung wurde kopiert und ist abgelegt unter ") + native(m_copiedTo));
}

void BackupSteps::copyToCloud()
{
    m_cloud = false;
    if (m_choices.cloudFolder.isEmpty() || !archiveAtHand())
        return;
    if (!QFileInfo(m_choices.cloudFolder).isDir()) {
        m_context.prompter.inform(QStringLiteral("Die Datei konnte nicht in die Cloud gespeichert werden, weil der Ordner ") +
                                      native(m_choices.cloudFolder) + QStringLiteral(" nicht existiert."),
                                  Prompter::Icon::Warning);
        return;
    }
    CopyResult copied;
    const QString path = archivePath();
    const QString target = m_choices.cloudFolder;
    m_runner.run([&](const ProgressFn& progress) { copied = copyVerified(path, target, progress); });
    if (!copied.ok) {
        m_context.prompter.inform(copied.error, Prompter::Icon::Warning);
        return;
    }
    m_cloud = true;
}

void BackupSteps::closing()
{
    const QString folder = localArchiveFolder(m_context.dataFolder);
    if (listArchives(folder).size() > ArchivesKept && m_context.prompter.askYesNo(backupCleanupQuestion()))
        removeOlderArchives(folder, ArchivesKept);
}

QStringList BackupSteps::summary() const
{
    QStringList lines;
    lines << QStringLiteral("Das Backup wurde ") + notWhen(m_begun && m_choices.rotation) +
                 QStringLiteral("mit dem Backup-Konzept für hohe Datensicherheit gestartet.");
    lines << QStringLiteral("Für das Backup wurde ") + notWhen(m_target.has_value()) +
                 QStringLiteral("ein externer Datenträger / USB-Stick ausgewählt.");
    lines << QStringLiteral("Es wurde ") + notWhen(m_stickMatched && !m_copiedTo.isEmpty()) +
                 QStringLiteral("der USB-Stick vom KELMO-Backup-Konzept verwendet.");
    if (m_existedToday)
        lines << QStringLiteral("Das Backup wurde NICHT erstellt, weil bereits ein Backup vom heutigen Tag existiert hatte.");
    else if (m_created)
        lines << QStringLiteral("Das Backup ") + archiveName(m_today) + QStringLiteral(" wurde erstellt.");
    else
        lines << QStringLiteral("Das Backup ") + archiveName(m_today) + QStringLiteral(" wurde NICHT erstellt.");
    if (m_copiedTo.isEmpty())
        lines << QStringLiteral("Die Backupdatei wurde NICHT auf einen externen Datenträger kopiert.");
    else
        lines << QStringLiteral("Die Backupdatei wurde kopiert nach ") + native(m_copiedTo);
    lines << QStringLiteral("Die Backupdatei wurde ") + notWhen(m_cloud) + QStringLiteral("in den Cloudordner übertragen.");
    return lines;
}

RestoreSteps::RestoreSteps(const AppContext& context, const DriveSource& drives, WorkRunner& runner)
    : m_context(context), m_drives(drives), m_runner(runner)
{
}

void RestoreSteps::begin()
{
    m_context.prompter.inform(joinLines({
        QStringLiteral("Bitte stecken Sie den USB-Stick ein, auf den Sie die letzte Datensicherung gemacht haben. Nachdem der Stick erkannt "
                       "wurde, bestätigen Sie diesen Hinweis mit [OK]."),
        QStringLiteral("Hinweis!!! Falls Sie nicht mehr wissen, auf welchem USB-Stick die letzte Datensicherung war, können Sie die "
                       "USB-Sticks im nächsten Schritt noch nach und nach einsehen. Wenn Sie keine Datensicherung auf einen Stick gemacht "
                       "haben, bestätigen Sie diesen Hinweis ebenfalls mit [OK]."),
    }));
}

QList<Drive> RestoreSteps::drives() const { return m_drives.drives(); }

QList<ArchiveInfo> RestoreSteps::archivesOn(const Drive& drive) const
{
    QList<ArchiveInfo> list = listArchives(drive.rootPath);
    const std::optional<Drive> data = m_drives.driveOf(dataFolderPath(m_context));
    if (data && sameDevice(drive, *data)) {
        list += listArchives(localArchiveFolder(m_context.dataFolder));
        std::stable_sort(list.begin(), list.end(), [](const ArchiveInfo& a, const ArchiveInfo& b) { return a.date > b.date; });
    }
    return list;
}

bool RestoreSteps::restore(const std::optional<ArchiveInfo>& chosen)
{
    if (!chosen) {
        m_context.prompter.inform(QStringLiteral("Sie haben kein Backup ausgewählt. Bitte markieren Sie zuerst das Backup, welches eingelesen "
                                                 "werden soll."));
        return false;
    }
    if (!m_context.prompter.askYesNo(restoreQuestion()))
        return false;
    const std::optional<Drive> data = m_drives.driveOf(dataFolderPath(m_context));
    const std::optional<qint64> free = data ? data->bytesAvailable : std::nullopt;
    StageResult staged;
    const QString archive = chosen->path;
    const QString dataFolder = m_context.dataFolder;
    m_runner.run([&](const ProgressFn& progress) { staged = stageRestore(archive, dataFolder, free, progress); });
    if (!staged.ok) {
        m_context.prompter.inform(staged.error, Prompter::Icon::Warning);
        return false;
    }
    m_context.prompter.inform(restoredMessage());
    return true;
}

} // namespace tarvik
