#include "store/database.h"

#include "common/prompter.h"
#include "store/defaults.h"
#include "store/schema.h"
#include "store/sql.h"
#include "store/upgrade.h"

#include <QAtomicInt>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QtEndian>

namespace tarvik {
namespace {

QAtomicInt connectionCounter;

QString newConnectionName(const char* role)
{
    return QStringLiteral("tarvik-%1-%2").arg(QLatin1String(role)).arg(connectionCounter.fetchAndAddRelaxed(1));
}

QString notOurs(const QString& path, const QString& reason)
{
    return QStringLiteral("Die Datei \"%1\" ist keine Datenbank von TARVIK 3.0 oder sie ist beschädigt (%2).\n"
                          "Die Datei bleibt unverändert. Bitte spielen Sie eine Datensicherung zurück "
                          "oder benennen Sie die Datei um; TARVIK wird jetzt beendet.")
        .arg(QDir::toNativeSeparators(path), reason);
}

QSqlDatabase addConnection(const QString& name, const QString& path, const QString& options = {})
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    db.setDatabaseName(path);
    db.setConnectOptions(options.isEmpty() ? QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000")
                                           : options + QStringLiteral(";QSQLITE_BUSY_TIMEOUT=10000"));
    return db;
}

// Reads the header without the engine, so a foreign or truncated file is never written to.
void checkHeader(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht geöffnet werden: %2")
                             .arg(QDir::toNativeSeparators(path), file.errorString()));
    const QByteArray header = file.read(100);
    if (header.size() < 100 || !header.startsWith(QByteArrayLiteral("SQLite format 3\0")))
        throw StoreError(notOurs(path, QStringLiteral("unbekanntes Dateiformat")));
    const auto* bytes = reinterpret_cast<const uchar*>(header.constData());
    quint32 pageSize = qFromBigEndian<quint16>(bytes + 16);
    if (pageSize == 1)
        pageSize = 65536;
    const quint32 changeCounter = qFromBigEndian<quint32>(bytes + 24);
    const quint32 pages = qFromBigEndian<quint32>(bytes + 28);
    const quint32 validFor = qFromBigEndian<quint32>(bytes + 92);
    const bool sizeInHeaderValid = pages > 0 && changeCounter == validFor;
    const bool hasWal = QFileInfo::exists(path + QStringLiteral("-wal"));
    if (sizeInHeaderValid && !hasWal && quint64(file.size()) < quint64(pages) * pageSize)
        throw StoreError(notOurs(path, QStringLiteral("die Datei ist unvollständig")));
}

// A read-only look at the tables before anything is written.
void checkTables(const QString& path)
{
    const QString name = newConnectionName("check");
    QString problem;
    {
        QSqlDatabase db = addConnection(name, path, QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (!db.open()) {
            problem = db.lastError().text();
        } else {
            QSqlQuery q(db);
            if (!q.exec(QStringLiteral("SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name IN "
                                       "('Hiebe', 'Lose', 'Stämme', 'Baumarten')")))
                problem = q.lastError().text();
            else if (!q.next() || q.value(0).toInt() != 4)
                problem = QStringLiteral("die Tabellen der Holzliste fehlen");
        }
    }
    QSqlDatabase::removeDatabase(name);
    if (!problem.isEmpty())
        throw StoreError(notOurs(path, problem));
}

void openHandle(QSqlDatabase& db, const QString& path)
{
    if (!db.open())
        throw StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht geöffnet werden: %2")
                             .arg(QDir::toNativeSeparators(path), db.lastError().text()));
    // Typed data must survive a power cut: write-ahead log, synced on every commit.
    execSql(db, QStringLiteral("PRAGMA journal_mode = WAL"));
    execSql(db, QStringLiteral("PRAGMA synchronous = FULL"));
}

} // namespace

QString masterDataNote()
{
    return joinLines({
        QStringLiteral("Hinweis:"),
        QStringLiteral("In der Datenbasis wurden verschiedene Stammdaten (Baumarten, Güte- und Stärkeklassen, Rindenabzüge, Messbeträge und Messzahlen etc.) hinterlegt."),
        QStringLiteral("Beachten Sie, dass die Rindenabzüge Länderabhängig unterschiedlich sein können. Prüfen Sie deshalb in den Stammdaten, ob die Rindenabzüge passend sind. Sie Rindenabzüge sind sowohl in einer Stärkeklassenabhängigen sowie frei definierbaren Abzugstabelle hinterlegt. Die frei definierbare wird dabei immer vorrangig behandelt. Über die Messbeträge und Messzahlen wird der theoretische Holzpreis ermittelt. Sie können optional zur Preisberechnung auch die Tagespreise in den Stammdaten eintragen."),
    });
}

void createDatabaseFile(const QString& path)
{
    const QString temporary = path + QStringLiteral(".neu");
    QFile::remove(temporary);
    const QString name = newConnectionName("create");
    try {
        {
            QSqlDatabase db = addConnection(name, temporary);
            if (!db.open())
                throw StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht angelegt werden: %2")
                                     .arg(QDir::toNativeSeparators(path), db.lastError().text()));
            {
                TransactionGuard guard(db);
                for (const schema::Table& t : schema::tables())
                    schema::createTableWithIndexes(db, t);
                for (const schema::OwnIndex& index : schema::ownIndexes())
                    execSql(db, schema::createOwnIndexSql(index));
                insertDefaultMasterData(db);
                guard.commit();
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(name);
    } catch (...) {
        QSqlDatabase::removeDatabase(name);
        QFile::remove(temporary);
        throw;
    }
    if (!QFile::rename(temporary, path)) {
        QFile::remove(temporary);
        throw StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht angelegt werden.").arg(QDir::toNativeSeparators(path)));
    }
}

std::unique_ptr<Database> Database::openOrCreate(const QString& path)
{
    bool created = false;
    if (!QFileInfo::exists(path)) {
        createDatabaseFile(path);
        created = true;
    } else {
        checkHeader(path);
        checkTables(path);
    }
    std::unique_ptr<Database> db(new Database(path, created));
    QSqlDatabase shared = db->shared();
    openHandle(shared, path);
    QSqlDatabase list = db->listHandle();
    openHandle(list, path);
    ensureHarvesterColumn(shared);
    return db;
}

Database::Database(const QString& path, bool created)
    : m_path(path), m_sharedName(newConnectionName("shared")), m_listName(newConnectionName("list")), m_created(created)
{
    addConnection(m_sharedName, path);
    addConnection(m_listName, path);
}

Database::~Database()
{
    for (const QString& name : {m_sharedName, m_listName}) {
        {
            QSqlDatabase db = QSqlDatabase::database(name, false);
            if (db.isOpen())
                db.close();
        }
        QSqlDatabase::removeDatabase(name);
    }
}

QSqlDatabase Database::shared() const { return QSqlDatabase::database(m_sharedName, false); }
QSqlDatabase Database::listHandle() const { return QSqlDatabase::database(m_listName, false); }

} // namespace tarvik
