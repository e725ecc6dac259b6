#include "store/sql.h"

#include <QAtomicInt>
#include <QSqlError>

namespace tarvik {
namespace {

[[noreturn]] void fail(const QString& sql, const QSqlError& error)
{
    throw StoreError(QStringLiteral("Die Datenbank meldet einen Fehler:\n%1\n\nBefehl: %2")
                         .arg(error.text(), sql.simplified()));
}

} // namespace

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

TransactionGuard::TransactionGuard(QSqlDatabase db) : m_db(std::move(db))
{
    static QAtomicInt counter;
    m_name = QStringLiteral("tg%1").arg(counter.fetchAndAddRelaxed(1));
    execSql(m_db, QStringLiteral("SAVEPOINT ") + m_name);
}

TransactionGuard::~TransactionGuard()
{
    if (m_done)
        return;
    QSqlQuery q(m_db);
    q.exec(QStringLiteral("ROLLBACK TO ") + m_name);
    q.exec(QStringLiteral("RELEASE ") + m_name);
}

void TransactionGuard::commit()
{
    execSql(m_db, QStringLiteral("RELEASE ") + m_name);
    m_done = true;
}

} // namespace tarvik
