#include "backup/stagedrestore.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>

namespace tarvik {
namespace {

const QStringList DatabaseCompanions = {QStringLiteral("-wal"), QStringLiteral("-shm"), QStringLiteral("-journal")};

struct Move {
    QString from;
    QString to;
};

// Undoes the moves done so far, newest first.
void undo(const QList<Move>& done)
{
    for (auto it = done.crbegin(); it != done.crend(); ++it)
        QFile::rename(it->to, it->from);
}

} // namespace

QString stagingFolder(const QString& dataFolder)
{
    return QDir(dataFolder).filePath(QLatin1String(StagingFolderName)) + u'/';
}

bool hasStagedRestore(const QString& dataFolder) { return QFileInfo(stagingFolder(dataFolder)).isDir(); }

SwapResult swapInStagedRestore(const QString& dataFolder, const QDateTime& now)
{
    SwapResult result;
    const QDir data(dataFolder);
    QDir(data.filePath(QLatin1String(StagingFolderName) + QLatin1String(StagingPartialSuffix))).removeRecursively();
    if (!hasStagedRestore(dataFolder))
        return result;
    const QDir staged(stagingFolder(dataFolder));

    QString safetyName;
    QFile marker(staged.filePath(QLatin1String(SwapMarkerName)));
    if (marker.open(QIODevice::ReadOnly))
        safetyName = QString::fromUtf8(marker.readAll()).trimmed();
    marker.close();
    if (safetyName.isEmpty() || safetyName.contains(u'/') || safetyName.contains(u'\\')) {
        safetyName = QLatin1String(SafetyCopyPrefix) + now.toString(QStringLiteral("yyyy-MM-dd_HHmmss"));
        QSaveFile write(staged.filePath(QLatin1String(SwapMarkerName)));
        if (!write.open(QIODevice::WriteOnly) || write.write(safetyName.toUtf8()) < 0 || !write.commit()) {
            result.error = QStringLiteral("Die Datensicherung kann nicht übernommen werden: im Ordner \"%1\" kann nicht geschrieben werden.")
                               .arg(QDir::toNativeSeparators(staged.path()));
            return result;
        }
    }
    const QString safety = data.filePath(safetyName);
    if (!QDir().mkpath(safety)) {
        result.error = QStringLiteral("Die Datensicherung kann nicht übernommen werden: der Ordner \"%1\" kann nicht angelegt werden.")
                           .arg(QDir::toNativeSeparators(safety));
        return result;
    }

    const QStringList incoming = staged.entryList(QDir::Files | QDir::NoSymLinks, QDir::Name).filter(QRegularExpression(QStringLiteral("^[^.]")));
    // What goes out: every file that an incoming one replaces, and the old database's
    // write-ahead files, which must never meet the restored database.
    QStringList outgoing;
    for (const QString& name : incoming) {
        outgoing << name;
        for (const QString& suffix : DatabaseCompanions)
            outgoing << name + suffix;
    }
    QList<Move> done;
    auto move = [&](const QString& from, const QString& to) {
        if (QFile::rename(from, to)) {
            done.append({from, to});
            return true;
        }
        result.error = QStringLiteral("Die Datensicherung kann nicht übernommen werden: \"%1\" lässt sich nicht nach \"%2\" verschieben. "
                                      "Die bisherigen Daten bleiben unverändert.")
                           .arg(QDir::toNativeSeparators(from), QDir::toNativeSeparators(to));
        undo(done);
        return false;
    };
    for (const QString& name : outgoing) {
        const QString current = data.filePath(name);
        if (!QFileInfo::exists(current))
            continue;
        QString kept = QDir(safety).filePath(name);
        while (QFileInfo::exists(kept)) // never overwrite what an interrupted swap kept already
            kept += QStringLiteral(".alt");
        if (!move(current, kept))
            return result;
    }
    for (const QString& name : incoming)
        if (!move(staged.filePath(name), data.filePath(name)))
            return result;

    QFile::remove(staged.filePath(QLatin1String(SwapMarkerName)));
    QDir(staged.path()).removeRecursively();
    removeOlderSafetyCopies(dataFolder);
    result.swapped = true;
    result.safetyCopy = QDir(safety).path() + u'/';
    return result;
}

int removeOlderSafetyCopies(const QString& dataFolder, int keep)
{
    // The names carry the date and time, so the name order is the age order.
    const QStringList copies = QDir(dataFolder).entryList({QLatin1String(SafetyCopyPrefix) + u'*'}, QDir::Dirs | QDir::NoDotAndDotDot,
                                                          QDir::Name | QDir::Reversed);
    int removed = 0;
    for (qsizetype i = keep; i < copies.size(); ++i)
        if (QDir(QDir(dataFolder).filePath(copies.at(i))).removeRecursively())
            ++removed;
    return removed;
}

QString restoredAtStartMessage(const QString& safetyCopy)
{
    return QStringLiteral("Die eingelesene Datensicherung wurde übernommen. Die bisherigen Daten wurden im Ordner \"%1\" aufbewahrt.")
        .arg(QDir::toNativeSeparators(QDir::cleanPath(safetyCopy)));
}

} // namespace tarvik
