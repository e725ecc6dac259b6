#include "store/rows.h"

#include "store/sql.h"

#include <QHash>
#include <QSqlRecord>

namespace tarvik {

QString insertSql(const QString& table, const QStringList& columns)
{
    QStringList names, marks;
    for (const QString& c : columns) {
        names << quoted(c);
        marks << QStringLiteral("?");
    }
    return QStringLiteral("INSERT INTO %1(%2) VALUES (%3)")
        .arg(quoted(table), names.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
}

QString updateSql(const QString& table, const QStringList& columns)
{
    QStringList assignments;
    for (const QString& c : columns)
        assignments << quoted(c) + QStringLiteral(" = ?");
    return QStringLiteral("UPDATE %1 SET %2 WHERE \"ID\" = ?").arg(quoted(table), assignments.join(QStringLiteral(", ")));
}

RowInserter::RowInserter(const QSqlDatabase& db, const QString& table, const QStringList& columns)
    : m_query(prepareSql(db, insertSql(table, columns)))
{
}

qint32 RowInserter::insert(const QVariantList& values)
{
    execPrepared(m_query, values);
    return m_query.lastInsertId().toInt();
}

qint32 writeRow(const QSqlDatabase& db, const QString& table, const QStringList& columns, const QVariantList& values,
                std::optional<qint32> editedId)
{
    if (editedId) {
        execSql(db, updateSql(table, columns), values + QVariantList{*editedId});
        return *editedId;
    }
    return execSql(db, insertSql(table, columns), values).lastInsertId().toInt();
}

qint32 writeRow(const QSqlDatabase& db, const QString& table, const RowValues& row, std::optional<qint32> editedId)
{
    QStringList columns;
    QVariantList values;
    for (const auto& [name, value] : row) {
        columns << name;
        values << value;
    }
    return writeRow(db, table, columns, values, editedId);
}

std::optional<qint32> copyRow(const QSqlDatabase& db, const QString& table, qint32 id, const QHash<QString, QVariant>& replaced)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM %1 WHERE \"ID\" = ?").arg(quoted(table)), {id});
    if (!q.next())
        return std::nullopt;
    const QSqlRecord r = q.record();
    q.finish();
    QStringList columns;
    QVariantList values;
    for (int i = 0; i < r.count(); ++i) {
        const QString name = r.fieldName(i);
        if (name == u"ID")
            continue;
        columns << name;
        values << (replaced.contains(name) ? replaced.value(name) : r.value(i));
    }
    return writeRow(db, table, columns, values);
}

std::optional<qint32> lotOfRow(const QSqlDatabase& db, const QString& table, qint32 id)
{
    const QVariant lot = scalar(db, QStringLiteral("SELECT \"Los_Nr\" FROM %1 WHERE \"ID\" = ?").arg(quoted(table)), {id});
    if (!lot.isValid())
        return std::nullopt;
    return lot.toInt();
}

} // namespace tarvik
