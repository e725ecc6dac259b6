#include "maintenance/compaction.h"

#include "common/replacefile.h"
#include "store/privateconnection.h"
#include "store/sql.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <algorithm>
#include <sqlite3.h>
#include <utility>

namespace tarvik {

QString compactionQuestion()
{
    return QStringLiteral("Soll die Datenbasis wirklich komprimiert werden?\nDurch das komprimieren werden alle als gelöscht "
                          "markierten Datensätze endgültig aus der Datenbank entfernt. Eine Komprimierung ist nur erforderlich, "
                          "wenn Sie einige (oder eher viele) Daten gelöscht haben!\n\nTARVIK 3.0 wird nach der Komprimierung "
                          "beendet; bitte starten Sie das Programm danach neu.");
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

// While the copy is written, its size against the pages in use tells how far it is.
class CopyProgress {
public:
    CopyProgress(const QSqlDatabase& source, QString target, const CompactionProgress& progress)
        : m_handle(sqliteHandle(source)), m_target(std::move(target)), m_progress(progress)
    {
        const qint64 pages = scalar(source, QStringLiteral("PRAGMA page_count")).toLongLong() -
                             scalar(source, QStringLiteral("PRAGMA freelist_count")).toLongLong();
        m_expected = std::max<qint64>(1, pages * scalar(source, QStringLiteral("PRAGMA page_size")).toLongLong());
        if (m_handle && m_progress) {
            m_clock.start();
            sqlite3_progress_handler(m_handle, 20000, &CopyProgress::tick, this);
        }
    }
    ~CopyProgress()
    {
        if (m_handle && m_progress)
            sqlite3_progress_handler(m_handle, 0, nullptr, nullptr);
    }
    CopyProgress(const CopyProgress&) = delete;
    CopyProgress& operator=(const CopyProgress&) = delete;

private:
    static int tick(void* self)
    {
        auto* p = static_cast<CopyProgress*>(self);
        if (p->m_clock.elapsed() < 200)
            return 0;
        p->m_clock.restart();
        const qint64 written = QFileInfo(p->m_target).size();
        p->m_progress(int(5 + std::min<qint64>(70, written * 70 / p->m_expected)), QStringLiteral("Die Daten werden kompakt kopiert ..."));
        return 0; // never interrupts the copy
    }

    sqlite3* m_handle;
    QString m_target;
    const CompactionProgress& m_progress;
    qint64 m_expected = 1;
    QElapsedTimer m_clock;
};

} // namespace

CompactionResult compactDatabaseFile(const QString& databasePath, const CompactionProgress& progress)
{
    auto report = [&progress](int percent, const char* stage) {
        if (progress)
            progress(percent, QString::fromUtf8(stage));
    };
    CompactionResult result;
    result.sizeBefore = QFileInfo(databasePath).size();
    result.message = compactionFailedMessage();
    const QString target = compactionTarget(databasePath);
    QFile::remove(target);
    QMap<QString, qint64> before;
    try {
        report(0, "Die Datenbank wird für andere Programme gesperrt ...");
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
            report(5, "Die Daten werden kompakt kopiert ...");
            const CopyProgress copying(db, target, progress);
            execSql(db, QStringLiteral("VACUUM INTO ?"), {target});
        }
        source.close();

        report(75, "Die Kopie wird geprüft ...");
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
    report(95, "Die Kopie tritt an die Stelle der Datenbank ...");
    QFile::remove(wal);
    QFile::remove(databasePath + QStringLiteral("-shm"));
    if (!replaceFile(target, databasePath)) {
        QFile::remove(target);
        return result;
    }
    report(100, "Die Komprimierung ist abgeschlossen.");
    result.ok = true;
    result.sizeAfter = QFileInfo(databasePath).size();
    result.message = compactionDoneMessage();
    return result;
}

} // namespace tarvik
