#pragma once
// Small helpers around Qt Sql: prepare once, bind values, and turn a failure into one
// German message that says what went wrong in words a user can act on.
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <stdexcept>

class QSqlError;

namespace tarvik {

// What kind of trouble the engine reported: the message and the advice differ for each, and a
// file that is only locked must never be taken for a damaged one.
enum class StoreProblem {
    Other,
    Locked,     // another program holds the file; waiting helps
    ReadOnly,   // the file or its folder cannot be written
    DiskFull,
    Damaged,    // the file's content is broken
    CannotOpen, // missing, no access, or a folder that is gone
    Rejected,   // a value the file's rules refuse (too long, wrong type)
};

class StoreError : public std::runtime_error {
public:
    explicit StoreError(const QString& message, StoreProblem problem = StoreProblem::Other, const QString& detail = {})
        : std::runtime_error(message.toStdString()), m_message(message), m_problem(problem), m_detail(detail) {}
    // German, for the user.
    const QString& message() const { return m_message; }
    StoreProblem problem() const { return m_problem; }
    // The engine's own text and the statement, for a developer; never shown to a user.
    const QString& detail() const { return m_detail; }

private:
    QString m_message;
    StoreProblem m_problem;
    QString m_detail;
};

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
