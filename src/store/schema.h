#pragma once
// The tables, columns, types, widths and indexes of the database file, as data, so that
// creation, upgrade and the tests that check a file all read the same definition.
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace tarvik::schema {

enum class ColumnType { Text, Memo, Short, Long, Single, Currency, DateTime, Counter };

struct Column {
    QString name;
    ColumnType type;
    int width = 0; // TEXT only
};

struct Index {
    QString name;   // the given name; the file carries "<table>_<name>"
    QString column;
};

struct Table {
    QString name;
    QList<Column> columns;
    QList<Index> indexes;
    const Column* column(const QString& name) const;
};

// The 27 tables in the order a new file creates them.
const QList<Table>& tables();
const Table& table(const QString& name); // throws std::out_of_range for an unknown name

// The log diameter classes and quality classes of a new file: the SK_/GK_ column suffixes.
const QStringList& defaultLogClasses();
const QStringList& defaultQualityClasses();

// "SHORT", "TEXT", ... : the word a column is declared with, first word of its SQL type.
QString typeWord(ColumnType type);
// The SQL column definition, e.g. "Klasse" TEXT (6) COLLATE NOCASE CONSTRAINT ... CHECK (...).
QString columnDefinition(const Column& column);
QString createTableSql(const Table& table);
QString indexName(const QString& table, const QString& index);
QString createIndexSql(const QString& table, const Index& index);

// Indexes the program adds for its own queries (a harvest's lot, a running number). They carry
// names of their own, apart from the format's given ones.
struct OwnIndex {
    QString name;
    QString table;
    QStringList columns;
    QString replaces; // an older index of ours that this one makes redundant; dropped once it is there
};
const QList<OwnIndex>& ownIndexes();
QString createOwnIndexSql(const OwnIndex& index);

// What the file holds now (names compared without regard to ASCII case, as the engine does).
bool hasTable(const QSqlDatabase& db, const QString& table);
QStringList columnNames(const QSqlDatabase& db, const QString& table);
bool hasColumn(const QSqlDatabase& db, const QString& table, const QString& column);
// The columns of an index in their order; empty when there is no such index.
QStringList indexColumns(const QSqlDatabase& db, const QString& index);

// Statements that change the file; callers run them inside their own transaction.
void createTableWithIndexes(const QSqlDatabase& db, const Table& table);
void addColumn(const QSqlDatabase& db, const QString& table, const Column& column);

} // namespace tarvik::schema
