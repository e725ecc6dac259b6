#pragma once
// Small helpers around Qt Sql: prepare once, bind values, and turn a failure into one
// German message that says what went wrong in words a user can act on.
#include "common/storeerror.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <QVariantList>

class QSqlError;
struct sqlite3;

namespace tarvik {

// The kind of an engine error, from its result code.
StoreProblem problemOf(const QSqlError& error);
// One German sentence for an engine error; the engine's English never reaches a user.
QString germanReason(const QSqlError& error);
// The same for a problem kind alone.
QString germanReason(StoreProblem problem);

// Runs a statement with its bound values; throws StoreError on failure.
QSqlQuery execSql(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});
// Prepares a statement for repeated use; throws StoreError on failure.
QSqlQuery prepareSql(const QSqlDatabase& db, const QString& sql);
// Binds the values positionally and runs a prepared statement; throws StoreError on failure.
void execPrepared(QSqlQuery& query, const QVariantList& values);
// The first column of the first row, or an invalid QVariant when there is no row.
QVariant scalar(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});

// An identifier in double quotes, for table and column names.
QString quoted(const QString& identifier);
// Class names become column names ("SK_L2a"): only letters, digits and '_' may reach SQL.
bool isSafeIdentifier(const QString& name);

// The engine's handle under a Qt connection, or null for a closed one.
sqlite3* sqliteHandle(const QSqlDatabase& db);
// True while the connection is inside a transaction.
bool inTransaction(const QSqlDatabase& db);

// A scoped write transaction: rolls back unless commit() was called. The outermost guard
// takes the write lock at once (BEGIN IMMEDIATE), so a second writer waits for it instead of
// failing half-way; guards inside it are savepoints, so an operation that is one transaction
// on its own can also be part of a larger one.
class TransactionGuard {
public:
    explicit TransactionGuard(QSqlDatabase db);
    ~TransactionGuard();
    TransactionGuard(const TransactionGuard&) = delete;
    TransactionGuard& operator=(const TransactionGuard&) = delete;
    void commit();

private:
    QSqlDatabase m_db;
    QString m_name; // the savepoint; empty for the outermost guard
    bool m_done = false;
};

} // namespace tarvik
