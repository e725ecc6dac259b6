#include "reports/lists/listquery.h"

#include "harvests/filter.h"
#include "store/sql.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik::lists {

ListQuery buildListQuery(const ListRequest& request, const Einstellungen& settings)
{
    const MemberDef& def = member(request.member);
    ListQuery q;
    QString where = def.from;
    if (def.joinsHarvests) {
        const HarvestFilter scope = harvestFilter(request.scope, request.currentHarvest, settings);
        where += scope.andClause();
        q.values << scope.values;
    }
    for (const Filter& f : def.filters) {
        const auto value = request.filters.constFind(f.column);
        if (value == request.filters.constEnd())
            continue;
        where += QStringLiteral(" and ") + (f.expression == f.column ? def.qualified(f.column) : f.expression) + QStringLiteral(" = ?");
        q.values << *value;
    }
    for (auto it = request.filters.constBegin(); it != request.filters.constEnd(); ++it) {
        const bool known = std::any_of(def.filters.begin(), def.filters.end(), [&](const Filter& f) { return f.column == it.key(); });
        if (!known)
            throw StoreError(QStringLiteral("Die Liste %1 kennt keinen Filter %2.").arg(def.windowName, it.key()));
    }

    if (request.grouping >= 0) {
        if (request.grouping >= def.groupings.size())
            throw StoreError(QStringLiteral("Die Liste %1 kennt keine Gruppierung %2.").arg(def.windowName).arg(request.grouping + 1));
        const Grouping& g = def.groupings[request.grouping];
        QStringList keys;
        for (int i = 0; i < g.columns.size(); ++i)
            keys << (g.expressions[i] == g.columns[i] ? def.qualified(g.columns[i]) : g.expressions[i] + QStringLiteral(" as ") + g.columns[i]);
        q.sql = QStringLiteral("select ") + keys.join(QStringLiteral(", ")) + QStringLiteral(", ") + def.aggregates + where +
                QStringLiteral(" group by ") + g.expressions.join(QStringLiteral(", ")) + QStringLiteral(" order by ") +
                g.expressions.join(QStringLiteral(", "));
        q.countSql = QStringLiteral("select count(*) from (select 1") + where + QStringLiteral(" group by ") +
                     g.expressions.join(QStringLiteral(", ")) + u')';
        q.groupColumns = int(g.columns.size());
        q.columns = g.columns;
        for (const QString& part : def.aggregates.split(QStringLiteral(", ")))
            q.columns << part.section(QStringLiteral(" as "), 1).trimmed();
        return q;
    }

    const QStringList chosen = request.columns.isEmpty() ? def.columns : request.columns;
    QStringList select;
    for (const QString& c : chosen) {
        if (!def.columns.contains(c))
            throw StoreError(QStringLiteral("Die Liste %1 kennt kein Datenfeld %2.").arg(def.windowName, c));
        select << def.qualified(c);
    }
    const QString sort = request.sortColumn.isEmpty() ? def.defaultSort : request.sortColumn;
    if (!def.columns.contains(sort))
        throw StoreError(QStringLiteral("Die Liste %1 kennt kein Datenfeld %2.").arg(def.windowName, sort));
    q.sql = QStringLiteral("select ") + select.join(QStringLiteral(", ")) + where + QStringLiteral(" order by ") + def.qualified(sort) +
            (request.descending ? QStringLiteral(" DESC") : QString());
    q.columns = chosen;
    q.countSql = QStringLiteral("select count(*)") + where;
    return q;
}

std::optional<ListQuery> prepareList(const ListRequest& request, const Einstellungen& settings, Prompter& prompter)
{
    const MemberDef& def = member(request.member);
    if (def.joinsHarvests) {
        const auto scope = static_cast<HarvestScope>(request.scope);
        const bool none = !request.currentHarvest && !(scope == HarvestScope::Selektiert && request.harvestsMarked);
        if ((scope == HarvestScope::Aktuell || scope == HarvestScope::Selektiert) && none) {
            prompter.inform(QString::fromUtf8(NoHarvestMarked));
            return std::nullopt;
        }
        if (!checkRange(settings, prompter))
            return std::nullopt;
    }
    return buildListQuery(request, settings);
}

qint64 countRows(const QSqlDatabase& db, const ListQuery& query)
{
    return scalar(db, query.countSql, query.values).toLongLong();
}

QVariantList distinctValues(const QSqlDatabase& db, const MemberDef& def, const Filter& filter)
{
    const QString column = filter.expression == filter.column ? filter.column : filter.expression;
    QSqlQuery q = execSql(db, QStringLiteral("select distinct %1 from %2 where %1 is not null order by %1")
                                  .arg(column, quoted(def.table)));
    QVariantList values;
    while (q.next())
        values << q.value(0);
    return values;
}

QStringList baseColumns(const QSqlDatabase& db, const MemberDef& def)
{
    QSqlQuery q = execSql(db, def.emptyQuery());
    const QSqlRecord r = q.record();
    QStringList names;
    for (int i = 0; i < r.count(); ++i)
        names << r.fieldName(i);
    return names;
}

} // namespace tarvik::lists
