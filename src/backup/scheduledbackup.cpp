#include "backup/scheduledbackup.h"

#include "backup/archive.h"
#include "common/sqldate.h"

#include <QDir>
#include <QFileInfo>

namespace tarvik {

ScheduledBackup backupNow(const AppContext& context, const QString& targetFolder)
{
    ScheduledBackup result;
    const QDate today = context.clock.today();
    const QString path = localArchiveFolder(context.dataFolder) + archiveName(today);
    if (!targetFolder.isEmpty() && !QFileInfo(targetFolder).isDir()) {
        context.prompter.inform(QStringLiteral("Der Zielordner %1 existiert nicht.").arg(QDir::toNativeSeparators(targetFolder)),
                                Prompter::Icon::Warning);
        return result;
    }
    if (QFileInfo::exists(path) &&
        !context.prompter.askYesNo(QStringLiteral("Für den heutigen Tag existiert bereits eine Datensicherung. Soll diese überschrieben werden?"))) {
        context.prompter.inform(QStringLiteral("Es wurde keine neue Datensicherung erstellt, weil bereits eine existiert hatte."));
        return result;
    }
    // The date goes into the settings before the archive is made: restored, it knows its own backup.
    const QString settingsPath = QDir(context.dataFolder).filePath(QLatin1String(SettingsFileName));
    const QString lastBackup = context.settings.text[12];
    context.settings.text[12] = formatGermanDate(today);
    QString error;
    if (!EinstellungenSpeichern(context.settings, settingsPath, &error))
        context.prompter.inform(error, Prompter::Icon::Warning);
    const ArchiveResult written = writeArchive(context.dataFolder, path);
    if (!written.ok) {
        context.settings.text[12] = lastBackup;
        EinstellungenSpeichern(context.settings, settingsPath, &error);
        context.prompter.inform(written.error, Prompter::Icon::Critical);
        return result;
    }
    result.archive = path;
    if (!targetFolder.isEmpty()) {
        const CopyResult copied = copyVerified(path, targetFolder);
        if (!copied.ok) {
            context.prompter.inform(copied.error, Prompter::Icon::Critical);
            return result;
        }
        result.copy = copied.path;
    }
    result.ok = true;
    return result;
}

} // namespace tarvik
