#include "store/sql.h"

#include <QAtomicInt>
#include <QRegularExpression>
#include <QSqlDriver>
#include <QSqlError>
#include <sqlite3.h>

namespace tarvik {
namespace {

// A CHECK the schema names "<Spalte>_höchstens_<n>_Zeichen" says which field is too long.
QString rejectedValue(const QSqlError& error)
{
    static const QRegularExpression width(QStringLiteral("(\\w+)_höchstens_(\\d+)_Zeichen"),
                                          QRegularExpression::UseUnicodePropertiesOption);
    const QRegularExpressionMatch m = width.match(error.databaseText());
    if (m.hasMatch())
        return QStringLiteral("Der Wert im Feld \"%1\" ist zu lang: es nimmt höchstens %2 Zeichen auf.")
            .arg(m.captured(1), m.captured(2));
    return germanReason(StoreProblem::Rejected);
}

[[noreturn]] void fail(const QString& sql, const QSqlError& error)
{
    const StoreProblem problem = problemOf(error);
    const QString reason = problem == StoreProblem::Rejected ? rejectedValue(error) : germanReason(error);
    throw StoreError(reason, problem,
                     QStringLiteral("%1 (%2)\n%3").arg(error.text(), error.nativeErrorCode(), sql.simplified()));
}

} // namespace

StoreProblem problemOf(const QSqlError& error)
{
    bool ok = false;
    const int code = error.nativeErrorCode().toInt(&ok) & 0xFF; // extended codes carry the primary in the low byte
    if (!ok)
        return StoreProblem::Other;
    switch (code) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return StoreProblem::Locked;
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return StoreProblem::ReadOnly;
    case SQLITE_FULL:
        return StoreProblem::DiskFull;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return StoreProblem::Damaged;
    case SQLITE_CANTOPEN:
        return StoreProblem::CannotOpen;
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
    case SQLITE_TOOBIG:
        return StoreProblem::Rejected;
    default:
        return StoreProblem::Other;
    }
}

QString germanReason(StoreProblem problem)
{
    switch (problem) {
    case StoreProblem::Locked:
        return QStringLiteral("Die Datenbank ist gerade durch ein anderes Programm gesperrt (zum Beispiel ein zweites "
                              "TARVIK oder eine Datensicherung). Die Daten sind nicht beschädigt. Bitte warten Sie einen "
                              "Moment und versuchen Sie es dann noch einmal.");
    case StoreProblem::ReadOnly:
        return QStringLiteral("Die Datenbank ist schreibgeschützt: es kann nichts gespeichert werden. Bitte heben Sie den "
                              "Schreibschutz der Datei und ihres Ordners auf.");
    case StoreProblem::DiskFull:
        return QStringLiteral("Der Datenträger ist voll: es kann nichts gespeichert werden. Bitte schaffen Sie Platz auf "
                              "dem Datenträger und versuchen Sie es dann noch einmal.");
    case StoreProblem::Damaged:
        return QStringLiteral("Die Datenbankdatei ist beschädigt.");
    case StoreProblem::CannotOpen:
        return QStringLiteral("Die Datenbankdatei kann nicht geöffnet werden: sie fehlt, oder der Zugriff auf sie oder "
                              "ihren Ordner ist nicht erlaubt.");
    case StoreProblem::Rejected:
        return QStringLiteral("Ein Wert passt nicht in sein Feld der Datenbank (zu lang oder unzulässig).");
    case StoreProblem::Other:
        break;
    }
    return QStringLiteral("Die Datenbank hat den Befehl nicht ausgeführt.");
}

QString germanReason(const QSqlError& error)
{
    const StoreProblem problem = problemOf(error);
    if (problem != StoreProblem::Other)
        return germanReason(problem);
    bool ok = false;
    const int code = error.nativeErrorCode().toInt(&ok) & 0xFF;
    if (ok && code == SQLITE_IOERR)
        return QStringLiteral("Beim Lesen oder Schreiben der Datenbankdatei hat der Datenträger einen Fehler gemeldet.");
    if (ok && code == SQLITE_NOMEM)
        return QStringLiteral("Der Arbeitsspeicher reicht nicht aus.");
    if (ok && code != 0)
        return QStringLiteral("Die Datenbank hat den Befehl nicht ausgeführt (Fehlernummer %1).").arg(code);
    return germanReason(StoreProblem::Other);
}

QSqlQuery prepareSql(const QSqlDatabase& db, const QString& sql)
{
    QSqlQuery query(db);
    if (!query.prepare(sql))
        fail(sql, query.lastError());
    return query;
}

void execPrepared(QSqlQuery& query, const QVariantList& values)
{
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values[i]);
    if (!query.exec())
        fail(query.lastQuery(), query.lastError());
}

QSqlQuery execSql(const QSqlDatabase& db, const QString& sql, const QVariantList& values)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (values.isEmpty()) {
        if (!query.exec(sql))
            fail(sql, query.lastError());
        return query;
    }
    if (!query.prepare(sql))
        fail(sql, query.lastError());
    execPrepared(query, values);
    return query;
}

QVariant scalar(const QSqlDatabase& db, const QString& sql, const QVariantList& values)
{
    QSqlQuery query = execSql(db, sql, values);
    return query.next() ? query.value(0) : QVariant();
}

QString quoted(const QString& identifier)
{
    QString escaped = identifier;
    escaped.replace(u'"', QLatin1String("\"\""));
    return u'"' + escaped + u'"';
}

bool isSafeIdentifier(const QString& name)
{
    if (name.isEmpty())
        return false;
    for (const QChar c : name)
        if (!(c.isLetterOrNumber() || c == u'_'))
            return false;
    return true;
}

sqlite3* sqliteHandle(const QSqlDatabase& db)
{
    const QVariant v = db.driver() ? db.driver()->handle() : QVariant();
    if (!v.isValid() || qstrcmp(v.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3* const*>(v.constData());
}

bool inTransaction(const QSqlDatabase& db)
{
    sqlite3* handle = sqliteHandle(db);
    return handle && sqlite3_get_autocommit(handle) == 0;
}

TransactionGuard::TransactionGuard(QSqlDatabase db) : m_db(std::move(db))
{
    if (!inTransaction(m_db)) {
        // Taking the write lock first lets the busy wait apply; a deferred start that read
        // before it wrote would fail at once while another writer holds the file.
        execSql(m_db, QStringLiteral("BEGIN IMMEDIATE"));
        return;
    }
    static QAtomicInt counter;
    m_name = QStringLiteral("tg%1").arg(counter.fetchAndAddRelaxed(1));
    execSql(m_db, QStringLiteral("SAVEPOINT ") + m_name);
}

TransactionGuard::~TransactionGuard()
{
    if (m_done)
        return;
    QSqlQuery q(m_db);
    if (m_name.isEmpty()) {
        q.exec(QStringLiteral("ROLLBACK"));
        return;
    }
    q.exec(QStringLiteral("ROLLBACK TO ") + m_name);
    q.exec(QStringLiteral("RELEASE ") + m_name);
}

void TransactionGuard::commit()
{
    execSql(m_db, m_name.isEmpty() ? QStringLiteral("COMMIT") : QStringLiteral("RELEASE ") + m_name);
    m_done = true;
}

} // namespace tarvik
