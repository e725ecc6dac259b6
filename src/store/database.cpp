#include "store/database.h"

#include "common/prompter.h"
#include "store/collation.h"
#include "store/defaults.h"
#include "store/schema.h"
#include "store/sql.h"
#include "store/upgrade.h"
#include "store/walcheckpoint.h"

#include <QAtomicInt>
#include <algorithm>
#include <sqlite3.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QTemporaryFile>
#include <optional>
#include <QtEndian>
#include <sqlite3.h>

namespace tarvik {
namespace {

QAtomicInt connectionCounter;

QString newConnectionName(const char* role)
{
    return QStringLiteral("tarvik-%1-%2").arg(QLatin1String(role)).arg(connectionCounter.fetchAndAddRelaxed(1));
}

QString native(const QString& path) { return QDir::toNativeSeparators(path); }

QString notOurs(const QString& path, const QString& reason)
{
    return QStringLiteral("Die Datei \"%1\" ist keine Datenbank von TARVIK 3.0 oder sie ist beschädigt (%2).\n"
                          "Die Datei bleibt unverändert. Bitte benennen Sie die Datei um, damit sie erhalten bleibt, "
                          "und spielen Sie dann eine Datensicherung zurück; TARVIK wird jetzt beendet.")
        .arg(native(path), reason);
}

QString damaged(const QString& path, const QString& reason)
{
    return QStringLiteral("Die Datenbank \"%1\" ist beschädigt: %2\n"
                          "Die Datei bleibt unverändert. Bitte benennen Sie die Datei um, damit sie erhalten bleibt, "
                          "und spielen Sie dann die letzte Datensicherung zurück; TARVIK wird jetzt beendet.")
        .arg(native(path), reason);
}

QString locked(const QString& path)
{
    return QStringLiteral("Die Datenbank \"%1\" ist gerade durch ein anderes Programm gesperrt (zum Beispiel ein "
                          "zweites TARVIK, ein Datenbankwerkzeug oder eine laufende Datensicherung).\n"
                          "Die Datei ist nicht beschädigt, nur gerade in Gebrauch: spielen Sie keine Datensicherung zurück. Bitte beenden "
                          "Sie das andere Programm und starten Sie TARVIK dann noch einmal.")
        .arg(native(path));
}

QString readOnly(const QString& path, const QString& what)
{
    return QStringLiteral("%1 ist schreibgeschützt: TARVIK könnte darin nichts speichern.\n"
                          "Bitte heben Sie den Schreibschutz auf (Eigenschaften der Datei bzw. des Ordners) oder kopieren "
                          "Sie den Datenordner auf einen beschreibbaren Datenträger; TARVIK wird jetzt beendet.\n"
                          "Datenbank: %2")
        .arg(what, native(path));
}

// The message for an engine error met while opening or checking the file.
StoreError openingError(const QString& path, const QSqlError& error)
{
    const StoreProblem problem = problemOf(error);
    const QString detail = QStringLiteral("%1 (%2)").arg(error.text(), error.nativeErrorCode());
    switch (problem) {
    case StoreProblem::Locked:
        return StoreError(locked(path), problem, detail);
    case StoreProblem::Damaged:
        return StoreError(damaged(path, QStringLiteral("die Datenbank meldet eine fehlerhafte Seite.")), problem, detail);
    case StoreProblem::ReadOnly:
        return StoreError(readOnly(path, QStringLiteral("Die Datenbank")), problem, detail);
    default:
        return StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht geöffnet werden. %2")
                              .arg(native(path), germanReason(error)),
                          problem, detail);
    }
}

QSqlDatabase addConnection(const QString& name, const QString& path, int busyTimeoutMs, const QString& options = {})
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    db.setDatabaseName(path);
    const QString timeout = QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(busyTimeoutMs);
    db.setConnectOptions(options.isEmpty() ? timeout : options + u';' + timeout);
    return db;
}

// The file through a handle of the engine's own. Any other handle on the file would, when
// closed, release every lock the engine holds on it for this process (POSIX locks belong to
// the process); the engine keeps its handles open until those locks are gone.
class EngineFile {
public:
    explicit EngineFile(const QString& path)
    {
        m_rc = sqlite3_open_v2(path.toUtf8().constData(), &m_db, SQLITE_OPEN_READWRITE, nullptr);
    }
    ~EngineFile() { sqlite3_close(m_db); }
    EngineFile(const EngineFile&) = delete;
    EngineFile& operator=(const EngineFile&) = delete;

    bool opened() const { return m_rc == SQLITE_OK; }
    QString error() const { return m_db ? QString::fromUtf8(sqlite3_errmsg(m_db)) : QString::fromUtf8(sqlite3_errstr(m_rc)); }
    // The engine falls back to reading when the file takes no writes.
    bool readOnly() const { return sqlite3_db_readonly(m_db, "main") == 1; }
    // The first bytes as they lie on the disk, read without a lock and without the engine
    // looking at them; fewer when the file is shorter.
    QByteArray read(int length, qint64 fileSize) const
    {
        sqlite3_file* file = nullptr;
        if (sqlite3_file_control(m_db, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK || !file || !file->pMethods)
            return {};
        QByteArray bytes(length, '\0');
        const int rc = file->pMethods->xRead(file, bytes.data(), length, 0);
        if (rc == SQLITE_IOERR_SHORT_READ)
            bytes.truncate(qsizetype(std::min<qint64>(length, fileSize)));
        else if (rc != SQLITE_OK)
            return {};
        return bytes;
    }

private:
    sqlite3* m_db = nullptr;
    int m_rc = SQLITE_OK;
};

// Checks the header before the engine reads the file as a database, so a foreign or
// truncated file is never written to; then that the file takes writes. A file that opens but
// cannot be written would fail at the first store with nothing saved: tell it now.
void checkHeaderAndWritable(const QString& path)
{
    const qint64 size = QFileInfo(path).size();
    const EngineFile file(path);
    if (!file.opened())
        throw StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht gelesen werden. %2")
                             .arg(native(path), germanReason(StoreProblem::CannotOpen)),
                         StoreProblem::CannotOpen, file.error());
    const QByteArray header = file.read(100, size);
    if (header.size() < 100 || !header.startsWith(QByteArrayLiteral("SQLite format 3\0")))
        throw StoreError(notOurs(path, QStringLiteral("unbekanntes Dateiformat")), StoreProblem::Damaged);
    const auto* bytes = reinterpret_cast<const uchar*>(header.constData());
    quint32 pageSize = qFromBigEndian<quint16>(bytes + 16);
    if (pageSize == 1)
        pageSize = 65536;
    const quint32 changeCounter = qFromBigEndian<quint32>(bytes + 24);
    const quint32 pages = qFromBigEndian<quint32>(bytes + 28);
    const quint32 validFor = qFromBigEndian<quint32>(bytes + 92);
    const bool sizeInHeaderValid = pages > 0 && changeCounter == validFor;
    const bool hasWal = QFileInfo::exists(path + QStringLiteral("-wal"));
    if (sizeInHeaderValid && !hasWal && quint64(size) < quint64(pages) * pageSize)
        throw StoreError(damaged(path, QStringLiteral("die Datei ist unvollständig.")), StoreProblem::Damaged);
    if (file.readOnly())
        throw StoreError(readOnly(path, QStringLiteral("Die Datenbank")), StoreProblem::ReadOnly, file.error());
}

// Both the file and its folder must take writes (the write-ahead log lives beside the file).
void checkFolderWritable(const QString& path)
{
    const QString folder = QFileInfo(path).absolutePath();
    QTemporaryFile probe(QDir(folder).filePath(QStringLiteral(".tarvik-schreibprobe-XXXXXX")));
    if (!probe.open())
        throw StoreError(readOnly(path, QStringLiteral("Der Ordner \"%1\" der Datenbank").arg(native(folder))),
                         StoreProblem::ReadOnly, probe.errorString());
}

// Reads the findings of SQLite's quick check of every page; the damage they tell of.
std::optional<StoreError> pageCheckFindings(const QString& path, sqlite3* handle, const std::atomic_bool* stop, bool* stopped)
{
    // Asked every few thousand steps of the engine: a check that is no longer wanted ends at once.
    if (stop)
        sqlite3_progress_handler(
            handle, 10000, [](void* flag) { return static_cast<const std::atomic_bool*>(flag)->load() ? 1 : 0; },
            const_cast<std::atomic_bool*>(stop));
    sqlite3_stmt* statement = nullptr;
    int rc = sqlite3_prepare_v2(handle, "PRAGMA quick_check", -1, &statement, nullptr);
    QStringList findings;
    if (rc == SQLITE_OK)
        while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
            if (text && qstrcmp(text, "ok") != 0)
                findings << QString::fromUtf8(text);
        }
    sqlite3_finalize(statement);
    if (rc == SQLITE_INTERRUPT) {
        *stopped = true;
        return std::nullopt;
    }
    if (!findings.isEmpty())
        return StoreError(damaged(path, QStringLiteral("die Prüfung der Seiten hat %1 Fehler im Inhalt gefunden.").arg(findings.size())),
                          StoreProblem::Damaged, findings.join(u'\n'));
    switch (rc & 0xFF) {
    case SQLITE_DONE:
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_CANTOPEN:
        return std::nullopt; // in use is not damaged; the next start checks again
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return StoreError(damaged(path, QStringLiteral("die Datenbank meldet eine fehlerhafte Seite.")), StoreProblem::Damaged,
                          QString::fromUtf8(sqlite3_errmsg(handle)));
    default:
        return StoreError(damaged(path, QStringLiteral("die Datei lässt sich nicht vollständig lesen.")), StoreProblem::Damaged,
                          QString::fromUtf8(sqlite3_errmsg(handle)));
    }
}

sqlite3* openForCheck(const QString& path)
{
    sqlite3* handle = nullptr;
    // Read-write, as the program's own handles: a read-only one cannot open a file in WAL mode
    // that no other connection holds open. It is told to write nothing.
    if (sqlite3_open_v2(QFile::encodeName(path).constData(), &handle, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK ||
        sqlite3_exec(handle, "PRAGMA query_only = 1", nullptr, nullptr, nullptr) != SQLITE_OK) {
        sqlite3_close(handle);
        return nullptr;
    }
    sqlite3_busy_timeout(handle, DefaultBusyTimeoutMs);
    return handle;
}

void checkContent(const QString& path, int busyTimeoutMs, bool checkAllPages)
{
    const QString name = newConnectionName("check");
    std::optional<StoreError> problem;
    {
        QSqlDatabase db = addConnection(name, path, busyTimeoutMs, QStringLiteral("QSQLITE_OPEN_READONLY"));
        QSqlQuery q(db);
        if (!db.open()) {
            problem = openingError(path, db.lastError());
        } else if (!q.exec(QStringLiteral("SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name IN "
                                            "('Hiebe', 'Lose', 'Stämme', 'Baumarten')"))) {
            problem = problemOf(q.lastError()) == StoreProblem::Other
                          ? StoreError(notOurs(path, QStringLiteral("das Inhaltsverzeichnis ist nicht lesbar")),
                                       StoreProblem::Damaged, q.lastError().text())
                          : openingError(path, q.lastError());
        } else if (!q.next() || q.value(0).toInt() != 4) {
            problem = StoreError(notOurs(path, QStringLiteral("die Tabellen der Holzliste fehlen")), StoreProblem::Damaged);
        } else if (checkAllPages) {
            problem = checkPages(path);
        }
        q = QSqlQuery();
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    if (problem)
        throw *problem;
}

void openHandle(QSqlDatabase& db, const QString& path)
{
    if (!db.open())
        throw openingError(path, db.lastError());
    if (!registerGermanCollation(db))
        throw StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht geöffnet werden: die deutsche Sortierung der Namen "
                                        "steht nicht zur Verfügung.").arg(native(path)));
    try {
        // Typed data must survive a power cut: write-ahead log, synced on every commit.
        execSql(db, QStringLiteral("PRAGMA journal_mode = WAL"));
        execSql(db, QStringLiteral("PRAGMA synchronous = FULL"));
    } catch (const StoreError& e) {
        if (e.problem() == StoreProblem::Locked)
            throw StoreError(locked(path), e.problem(), e.detail());
        throw;
    }
}

} // namespace

std::optional<StoreError> checkPages(const QString& path)
{
    sqlite3* handle = openForCheck(path);
    if (!handle)
        return std::nullopt; // opening itself tells why a file cannot be read
    bool stopped = false;
    std::optional<StoreError> found = pageCheckFindings(path, handle, nullptr, &stopped);
    sqlite3_close(handle);
    return found;
}

PageCheck::PageCheck(const QString& path, Report onDamage) : m_path(path), m_onDamage(std::move(onDamage))
{
    m_thread = std::thread([this] { run(); });
}

PageCheck::~PageCheck()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
}

std::optional<StoreError> PageCheck::wait()
{
    if (m_thread.joinable())
        m_thread.join();
    return m_found;
}

void PageCheck::run()
{
    sqlite3* handle = openForCheck(m_path);
    if (!handle)
        return;
    bool stopped = false;
    std::optional<StoreError> found = pageCheckFindings(m_path, handle, &m_stop, &stopped);
    sqlite3_close(handle);
    if (stopped || m_stop)
        return;
    m_found = found;
    if (found && m_onDamage)
        m_onDamage(*found);
}

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
            QSqlDatabase db = addConnection(name, temporary, DefaultBusyTimeoutMs);
            if (!db.open())
                throw StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht angelegt werden. %2")
                                     .arg(native(path), germanReason(db.lastError())),
                                 problemOf(db.lastError()), db.lastError().text());
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
        throw StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht angelegt werden: der Ordner nimmt keine neue "
                                        "Datei auf.").arg(native(path)), StoreProblem::ReadOnly);
    }
}

std::unique_ptr<Database> Database::openOrCreate(const QString& path, const OpenOptions& options)
{
    bool created = false;
    if (!QFileInfo::exists(path)) {
        createDatabaseFile(path);
        created = true;
    } else {
        checkHeaderAndWritable(path);
        checkFolderWritable(path);
        checkContent(path, options.busyTimeoutMs, options.checkPages);
    }
    std::unique_ptr<Database> db(new Database(path, created, options.busyTimeoutMs));
    QSqlDatabase shared = db->shared();
    openHandle(shared, path);
    QSqlDatabase list = db->listHandle();
    openHandle(list, path);
    db->m_checkpoint = std::make_unique<BackgroundCheckpoint>(path);
    db->m_checkpoint->watch(shared);
    db->m_checkpoint->watch(list);
    ensureHarvesterColumn(shared);
    return db;
}

Database::Database(const QString& path, bool created, int busyTimeoutMs)
    : m_path(path), m_sharedName(newConnectionName("shared")), m_listName(newConnectionName("list")), m_created(created)
{
    addConnection(m_sharedName, path, busyTimeoutMs);
    addConnection(m_listName, path, busyTimeoutMs);
}

Database::~Database()
{
    if (m_checkpoint) {
        BackgroundCheckpoint::release(shared());
        BackgroundCheckpoint::release(listHandle());
        m_checkpoint.reset();
    }
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
