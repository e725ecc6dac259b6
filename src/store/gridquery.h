#pragma once
// Queries that fill a grid: bound, checked, and scrollable so a QSqlQueryModel can page
// through them. A window gets the query from its core and never writes SQL itself.
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>

namespace tarvik {

// Runs the statement with its bound values; throws StoreError on failure.
QSqlQuery gridQuery(const QSqlDatabase& db, const QString& sql, const QVariantList& values = {});

// The rows of one lot of a harvest from a detail table, newest first.
QSqlQuery lotRowsQuery(const QSqlDatabase& db, const QString& table, const QString& columns, qint32 harvestId, qint32 lotNr,
                       const QString& order = QStringLiteral("\"ID\" DESC"));

// The value of a column in the lot's newest row ("" when the lot has none): the likely value of
// the next row.
QString lastValueOfLot(const QSqlDatabase& db, const QString& table, const QString& column, qint32 harvestId, qint32 lotNr);

} // namespace tarvik
