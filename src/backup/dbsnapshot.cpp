#include "backup/dbsnapshot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <sqlite3.h>

namespace tarvik {
namespace {

struct Connection {
    sqlite3* db = nullptr;
    int rc = SQLITE_OK;
    Connection(const QString& path, int flags) { rc = sqlite3_open_v2(path.toUtf8().constData(), &db, flags, nullptr); }
    ~Connection() { sqlite3_close(db); }
    QString error() const { return db ? QString::fromUtf8(sqlite3_errmsg(db)) : QString::fromUtf8(sqlite3_errstr(rc)); }
};

} // namespace

SnapshotResult snapshotDatabase(const QString& source, const QString& target, const std::function<bool(double)>& progress)
{
    SnapshotResult result;
    if (!QFileInfo(source).isFile()) {
        result.error = QStringLiteral("Die Datenbank \"%1\" ist nicht vorhanden.").arg(QDir::toNativeSeparators(source));
        return result;
    }
    Connection from(source, SQLITE_OPEN_READONLY);
    if (from.rc != SQLITE_OK) {
        result.error = QStringLiteral("Die Datenbank \"%1\" kann nicht gelesen werden: %2").arg(QDir::toNativeSeparators(source), from.error());
        return result;
    }
    sqlite3_busy_timeout(from.db, 10000);
    QFile::remove(target);
    {
        Connection to(target, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        if (to.rc != SQLITE_OK) {
            result.error = QStringLiteral("\"%1\" kann nicht angelegt werden: %2").arg(QDir::toNativeSeparators(target), to.error());
            return result;
        }
        sqlite3_backup* backup = sqlite3_backup_init(to.db, "main", from.db, "main");
        if (!backup) {
            result.error = QStringLiteral("Die Datenbank kann nicht gesichert werden: %1").arg(to.error());
            return result;
        }
        int rc = SQLITE_OK;
        int waited = 0;
        while (rc == SQLITE_OK || rc == SQLITE_BUSY || rc == SQLITE_LOCKED) {
            rc = sqlite3_backup_step(backup, 1024);
            if (rc == SQLITE_BUSY || rc == SQLITE_LOCKED) {
                if (++waited > 200)
                    break;
                QThread::msleep(50);
                continue;
            }
            const int total = sqlite3_backup_pagecount(backup);
            if (progress && total > 0 && !progress(double(total - sqlite3_backup_remaining(backup)) / total)) {
                result.cancelled = true;
                break;
            }
        }
        sqlite3_backup_finish(backup);
        if (result.cancelled) {
            result.error = QStringLiteral("Die Datensicherung wurde abgebrochen.");
        } else if (rc != SQLITE_DONE) {
            result.error = QStringLiteral("Die Datenbank kann nicht gesichert werden: %1").arg(QString::fromUtf8(sqlite3_errstr(rc)));
        } else if (sqlite3_exec(to.db, "PRAGMA journal_mode = DELETE", nullptr, nullptr, nullptr) != SQLITE_OK) {
            // A copy in rollback mode is one file that needs nothing beside it.
            result.error = QStringLiteral("Die Datenbank kann nicht gesichert werden: %1").arg(to.error());
        } else {
            result.ok = true;
        }
    }
    if (!result.ok)
        QFile::remove(target);
    return result;
}

QString databaseProblem(const QString& path)
{
    Connection c(path, SQLITE_OPEN_READONLY);
    if (c.rc != SQLITE_OK)
        return c.error();
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(c.db, "PRAGMA integrity_check", -1, &statement, nullptr) != SQLITE_OK)
        return c.error();
    QString verdict;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        const QString line = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
        if (line != QLatin1String("ok"))
            verdict += (verdict.isEmpty() ? QString() : QStringLiteral("; ")) + line;
        else if (verdict.isEmpty())
            verdict = line;
    }
    const int rc = sqlite3_finalize(statement);
    if (rc != SQLITE_OK)
        return QString::fromUtf8(sqlite3_errstr(rc));
    if (verdict != QLatin1String("ok"))
        return verdict.left(300);
    if (sqlite3_prepare_v2(c.db, "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name IN "
                                 "('Hiebe', 'Lose', 'Stämme', 'Baumarten')", -1, &statement, nullptr) != SQLITE_OK)
        return c.error();
    const int tables = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int(statement, 0) : 0;
    sqlite3_finalize(statement);
    if (tables != 4)
        return QStringLiteral("die Tabellen der Holzliste fehlen");
    return {};
}

} // namespace tarvik
