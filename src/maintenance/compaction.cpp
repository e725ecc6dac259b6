#include "maintenance/compaction.h"

#include "common/replacefile.h"
#include "store/privateconnection.h"
#include "store/sql.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSqlDatabase>
#include <QSqlQuery>

namespace tarvik {

QString compactionQuestion()
{
    return QStringLiteral("Soll die Datenbasis wirklich komprimiert werden?\nDurch das komprimieren werden alle als gelöscht "
                          "markierten Datensätze endgültig aus der Datenbank entfernt. Eine Komprimierung ist nur erforderlich, "
                          "wenn Sie einige (oder eher viele) Daten gelöscht haben!");
}

QString compactionFailedMessage()
{
    return QStringLiteral("Bei der Komprimierung ist ein Fehler aufgetreten! Bitte beachten Sie, daß Sie nur Access-Dateien "
                          "packen können und diese Dateien von keinem Nutzer geöffnet sein darf (auch nicht von Ihnen selbst)!");
}

QString compactionDoneMessage()
{
    return QStringLiteral("Die Komprimierung wurde erfolgreich abgeschlossen.\nTARVIK 3.0 wird nun beendet. Bitte starten Sie "
                          "TARVIK neu, damit die Datenbasis geladen wird!");
}

QString compactionTarget(const QString& databasePath)
{
    const QFileInfo info(databasePath);
    return info.dir().filePath(info.completeBaseName() + QStringLiteral(".$$$"));
}

namespace {

QMap<QString, qint64> rowCounts(const QSqlDatabase& db)
{
    QMap<QString, qint64> counts;
    QSqlQuery tables = execSql(db, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%'"));
    QStringList names;
    while (tables.next())
        names << tables.value(0).toString();
    for (const QString& name : names)
        counts[name] = scalar(db, QStringLiteral("SELECT count(*) FROM %1").arg(quoted(name))).toLongLong();
    return counts;
}

} // namespace

CompactionResult compactDatabaseFile(const QString& databasePath)
{
    CompactionResult result;
    result.sizeBefore = QFileInfo(databasePath).size();
    result.message = compactionFailedMessage();
    const QString target = compactionTarget(databasePath);
    QFile::remove(target);
    QMap<QString, qint64> before;
    try {
        PrivateConnection source(databasePath, QStringLiteral("komprimieren"));
        if (!source.ok())
            return result;
        {
            const QSqlDatabase db = source.db();
            // The exclusive lock is kept after the write transaction ends: no other program may
            // read or write while the copy is made, and one that has the file open makes this fail.
            execSql(db, QStringLiteral("PRAGMA locking_mode = EXCLUSIVE"));
            execSql(db, QStringLiteral("BEGIN EXCLUSIVE"));
            execSql(db, QStringLiteral("COMMIT"));
            QSqlQuery checkpoint = execSql(db, QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
            const bool checkpointBusy = checkpoint.next() && checkpoint.value(0).toInt() != 0;
            checkpoint.finish(); // an open statement would stop the VACUUM
            if (checkpointBusy)
                return result;
            before = rowCounts(db);
            execSql(db, QStringLiteral("VACUUM INTO ?"), {target});
        }
        source.close();

        PrivateConnection copy(target, QStringLiteral("komprimieren"));
        const bool sound = copy.ok() && scalar(copy.db(), QStringLiteral("PRAGMA integrity_check")).toString() == u"ok"
                           && rowCounts(copy.db()) == before;
        if (!sound) {
            copy.close();
            QFile::remove(target);
            return result;
        }
        copy.close();
    } catch (const StoreError&) {
        QFile::remove(target);
        return result;
    }
    // The last handle's close folded the write-ahead log into the file; a log still holding
    // pages would belong to the old file, so the swap stops there.
    const QString wal = databasePath + QStringLiteral("-wal");
    if (QFileInfo(wal).exists() && QFileInfo(wal).size() > 0) {
        QFile::remove(target);
        return result;
    }
    QFile::remove(wal);
    QFile::remove(databasePath + QStringLiteral("-shm"));
    if (!replaceFile(target, databasePath)) {
        QFile::remove(target);
        return result;
    }
    result.ok = true;
    result.sizeAfter = QFileInfo(databasePath).size();
    result.message = compactionDoneMessage();
    return result;
}

} // namespace tarvik
