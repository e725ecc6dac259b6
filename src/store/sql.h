#pragma once
// Small helpers around Qt Sql: prepare once, bind values, and turn a failure into one
// German message that says what failed.
#include "common/storeerror.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <QVariantList>

namespace tarvik {

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

// A scoped transaction: rolls back unless commit() was called. Guards nest (savepoints), so
// an operation that is one transaction on its own can also be part of a larger one.
class TransactionGuard {
public:
    explicit TransactionGuard(QSqlDatabase db);
    ~TransactionGuard();
    TransactionGuard(const TransactionGuard&) = delete;
    TransactionGuard& operator=(const TransactionGuard&) = delete;
    void commit();

private:
    QSqlDatabase m_db;
    QString m_name;
    bool m_done = false;
};

} // namespace tarvik
