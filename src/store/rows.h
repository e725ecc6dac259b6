#pragma once
// Writing whole rows from a list of columns: the one insert/update every store, copy and
// import goes through, so a column list is spelt once per caller and always bound.
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>
#include <QVariantList>
#include <optional>
#include <utility>

namespace tarvik {

// Column names with the value for each, in the order they are written.
using RowValues = QList<std::pair<QString, QVariant>>;

// "INSERT INTO "table"("a", "b") VALUES (?, ?)" for the columns, quoted.
QString insertSql(const QString& table, const QStringList& columns);
// "UPDATE "table" SET "a" = ?, "b" = ? WHERE "ID" = ?": the row's ID is bound last.
QString updateSql(const QString& table, const QStringList& columns);

// An insert prepared once and run for many rows (bulk writers, imports).
class RowInserter {
public:
    RowInserter(const QSqlDatabase& db, const QString& table, const QStringList& columns);
    // Runs the insert with the values in column order; returns the new row's ID.
    qint32 insert(const QVariantList& values);

private:
    QSqlQuery m_query;
};

// Inserts the row, or updates the row with that ID; returns the row's ID.
qint32 writeRow(const QSqlDatabase& db, const QString& table, const QStringList& columns, const QVariantList& values,
                std::optional<qint32> editedId = std::nullopt);
qint32 writeRow(const QSqlDatabase& db, const QString& table, const RowValues& row,
                std::optional<qint32> editedId = std::nullopt);

// Inserts a copy of the row with some columns replaced; returns the copy's ID, or nullopt when
// the row does not exist.
std::optional<qint32> copyRow(const QSqlDatabase& db, const QString& table, qint32 id,
                              const QHash<QString, QVariant>& replaced = {});

// `Los_Nr` of a lot, log, pole or stacked-wood row; nullopt when there is no such row.
std::optional<qint32> lotOfRow(const QSqlDatabase& db, const QString& table, qint32 id);

} // namespace tarvik
