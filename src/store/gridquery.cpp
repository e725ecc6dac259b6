#include "store/gridquery.h"

#include "common/text.h"
#include "store/sql.h"

#include <QSqlError>

namespace tarvik {

QSqlQuery gridQuery(const QSqlDatabase& db, const QString& sql, const QVariantList& values)
{
    QSqlQuery query = prepareSql(db, sql);
    execPrepared(query, values);
    return query;
}

QSqlQuery lotRowsQuery(const QSqlDatabase& db, const QString& table, const QString& columns, qint32 harvestId, qint32 lotNr,
                       const QString& order)
{
    return gridQuery(db, QStringLiteral("SELECT %1 FROM %2 WHERE \"Kennung\" = ? AND \"Los_Nr\" = ? ORDER BY %3")
                             .arg(columns, quoted(table), order),
                     {harvestId, lotNr});
}

QString lastValueOfLot(const QSqlDatabase& db, const QString& table, const QString& column, qint32 harvestId, qint32 lotNr)
{
    return readText(scalar(db, QStringLiteral("SELECT %1 FROM %2 WHERE \"Kennung\" = ? AND \"Los_Nr\" = ? ORDER BY \"ID\" DESC LIMIT 1")
                                   .arg(quoted(column), quoted(table)),
                           {harvestId, lotNr}));
}

} // namespace tarvik
