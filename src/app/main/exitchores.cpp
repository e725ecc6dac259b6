#include "app/main/exitchores.h"

#include "common/sqldate.h"

#include <QDir>
#include <QFile>

namespace tarvik {

std::optional<QString> backupReminder(const Einstellungen& settings, const QDate& today)
{
    const QString question = QStringLiteral("Soll jetzt eine Datensicherung gemacht werden?");
    const QString last = settings.lastBackupDate();
    if (last.isEmpty())
        return QStringLiteral("Sie haben noch nie ein Backup (Datensicherung) gemacht.\n") + question;
    const QDate date = parseGermanDate(last);
    if (!date.isValid())
        return QStringLiteral("Sie haben noch nie ein Backup (Datensicherung) gemacht.\n") + question;
    if (date.daysTo(today) > settings.backupIntervalDays())
        return QStringLiteral("Sie haben seit dem %1 keine Datensicherung mehr gemacht.\n").arg(formatGermanDate(date)) + question;
    return std::nullopt;
}

void removeReportPages(const QString& dataFolder)
{
    const QDir dir(dataFolder);
    for (const QString& name : dir.entryList({QStringLiteral("report-*.htm")}, QDir::Files))
        QFile::remove(dir.filePath(name));
}

} // namespace tarvik
