#include "store/database.h"

#include "common/prompter.h"
#include "store/collation.h"
#include "store/defaults.h"
#include "store/schema.h"
#include "store/sql.h"
#include "store/upgrade.h"
#include "store/walcheckpoint.h"

#include <QAtomicInt>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QTemporaryFile>
#include <optional>
#include <QtEndian>

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

// Reads the header without the engine, so a foreign or truncated file is never written to.
void checkHeader(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw StoreError(QStringLiteral("Die Datenbank \"%1\" kann nicht gelesen werden. %2")
                             .arg(native(path), germanReason(StoreProblem::CannotOpen)),
                         StoreProblem::CannotOpen, file.errorString());
    const QByteArray header = file.read(100);
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
    if (sizeInHeaderValid && !hasWal && quint64(file.size()) < quint64(pages) * pageSize)
        throw StoreError(damaged(path, QStringLiteral("die Datei ist unvollständig.")), StoreProblem::Damaged);
}

// A file that opens but cannot be written would fail at the first store with nothing saved:
// tell it now. Both the file and its folder must take writes (the write-ahead log lives
// beside the file).
void checkWritable(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite)) // opens without changing a byte
        throw StoreError(readOnly(path, QStringLiteral("Die Datenbank")), StoreProblem::ReadOnly, file.errorString());
    file.close();
    const QString folder = QFileInfo(path).absolutePath();
    QTemporaryFile probe(QDir(folder).filePath(QStringLiteral(".tarvik-schreibprobe-XXXXXX")));
    if (!probe.open())
        throw StoreError(readOnly(path, QStringLiteral("Der Ordner \"%1\" der Datenbank").arg(native(folder))),
                         StoreProblem::ReadOnly, probe.errorString());
}

// A read-only look before anything is written: our tables, and a quick check of every page.
// The statements that check the pages: all of them, or for a large file every table but the
// bulky row tables (their checks would cost most of a second at a million logs).
QStringList pageChecks(QSqlQuery& q, const QString& path, qint64 fullCheckBytes)
{
    if (QFileInfo(path).size() <= fullCheckBytes)
        return {QStringLiteral("PRAGMA quick_check")};
    QStringList checks;
    if (!q.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%' "
                               "AND name NOT IN ('Stämme', 'Pfähle', 'Schichtholz')")))
        return {QStringLiteral("PRAGMA quick_check")};
    while (q.next())
        checks << QStringLiteral("PRAGMA quick_check(%1)").arg(quoted(q.value(0).toString()));
    return checks;
}

void checkContent(const QString& path, int busyTimeoutMs, qint64 fullCheckBytes)
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
        } else {
            QStringList findings;
            for (const QString& check : pageChecks(q, path, fullCheckBytes)) {
                if (!q.exec(check)) {
                    problem = openingError(path, q.lastError());
                    break;
                }
                while (q.next())
                    if (const QString finding = q.value(0).toString(); finding != u"ok")
                        findings << finding;
            }
            if (!problem && !findings.isEmpty())
                problem = StoreError(damaged(path, QStringLiteral("die Prüfung beim Öffnen hat %1 Fehler im Inhalt gefunden.")
                                                       .arg(findings.size())),
                                     StoreProblem::Damaged, findings.join(u'\n'));
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
        checkHeader(path);
        checkWritable(path);
        checkContent(path, options.busyTimeoutMs, options.fullPageCheckBytes);
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
