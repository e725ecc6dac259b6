#include "backup/restore.h"

#include "backup/stagedrestore.h"

#include <QDir>
#include <QFileInfo>
#include <filesystem>
#include <zip.h>

namespace tarvik {

StageResult stageRestore(const QString& archivePath, const QString& dataFolder, std::optional<qint64> freeBytes,
                         const ProgressFn& progress)
{
    StageResult result;
    const QDir data(dataFolder);
    const QString partial = data.filePath(QLatin1String(StagingFolderName) + QLatin1String(StagingPartialSuffix));
    QDir(partial).removeRecursively();

    // A cheap first look, so a foreign or oversized archive is refused before anything is written.
    int code = 0;
    if (zip_t* archive = zip_open(zipPath(archivePath).constData(), ZIP_RDONLY, &code)) {
        qint64 size = 0;
        const zip_int64_t count = zip_get_num_entries(archive, 0);
        for (zip_int64_t i = 0; i < count; ++i) {
            zip_stat_t stat;
            zip_stat_init(&stat);
            if (zip_stat_index(archive, zip_uint64_t(i), 0, &stat) == 0 && (stat.valid & ZIP_STAT_SIZE))
                size += qint64(stat.size);
        }
        zip_discard(archive);
        if (freeBytes && size + (16 << 20) > *freeBytes) {
            result.error = QStringLiteral("Auf dem Laufwerk der Daten ist nicht genug Platz frei, um die Datensicherung einzulesen "
                                          "(benötigt werden %1 MB). Die bisherigen Daten bleiben unverändert.")
                               .arg((size >> 20) + 16);
            return result;
        }
    }

    if (!QDir().mkpath(partial)) {
        result.error = QStringLiteral("Der Ordner \"%1\" kann nicht angelegt werden.").arg(QDir::toNativeSeparators(partial));
        return result;
    }
    const ArchiveCheck check = checkArchive(archivePath, progress, partial);
    if (!check.ok) {
        QDir(partial).removeRecursively();
        result.cancelled = check.cancelled;
        result.error = check.error + QStringLiteral("\nDie bisherigen Daten bleiben unverändert.");
        return result;
    }
    const QString staged = data.filePath(QLatin1String(StagingFolderName));
    QDir(staged).removeRecursively();
    std::error_code ec;
    std::filesystem::rename(std::filesystem::path(partial.toStdU16String()), std::filesystem::path(staged.toStdU16String()), ec);
    if (ec) {
        QDir(partial).removeRecursively();
        result.error = QStringLiteral("Die Datensicherung kann nicht bereitgelegt werden: %1").arg(QString::fromStdString(ec.message()));
        return result;
    }
    result.ok = true;
    return result;
}

} // namespace tarvik
