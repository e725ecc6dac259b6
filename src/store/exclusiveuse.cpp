#include "store/exclusiveuse.h"

#include "store/privateconnection.h"
#include "store/sql.h"

#include <QFileInfo>

namespace tarvik {

bool databaseIsFree(const QString& databasePath)
{
    if (!QFileInfo::exists(databasePath))
        return true;
    {
        PrivateConnection probe(databasePath, QStringLiteral("frei"));
        if (!probe.ok())
            return true; // no engine can have it open either
        try {
            const QSqlDatabase db = probe.db();
            // Kept after the transaction: the last close then folds the log in while no one else can open the file.
            execSql(db, QStringLiteral("PRAGMA locking_mode = EXCLUSIVE"));
            execSql(db, QStringLiteral("BEGIN EXCLUSIVE"));
            execSql(db, QStringLiteral("COMMIT"));
            QSqlQuery checkpoint = execSql(db, QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
            const bool busy = checkpoint.next() && checkpoint.value(0).toInt() != 0;
            checkpoint.finish();
            if (busy)
                return false;
        } catch (const StoreError& e) {
            // Only a lock says that another program has it; a damaged file, which a restore is
            // often meant to replace, is no one's.
            return e.problem() != StoreProblem::Locked;
        }
    }
    const QFileInfo wal(databasePath + QStringLiteral("-wal"));
    return !wal.exists() || wal.size() == 0;
}

} // namespace tarvik
