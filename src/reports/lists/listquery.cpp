#include "reports/lists/listquery.h"

#include "harvests/filter.h"
#include "store/collation.h"
#include "store/schema.h"
#include "store/sql.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik::lists {
namespace {

// Names are ordered and compared in German order; figures, dates and derived values as they are.
bool isTextColumn(const MemberDef& def, const QString& column)
{
    const schema::Column* c = schema::table(def.table).column(column);
    if (!c && def.joinsHarvests)
        c = schema::table(QStringLiteral("Hiebe")).column(column);
    return c && (c->type == schema::ColumnType::Text || c->type == schema::ColumnType::Memo);
}

QString ordered(const MemberDef& def, const QString& column)
{
    return isTextColumn(def, column) ? inGermanOrder(def.qualified(column)) : def.qualified(column);
}

// One figure of a group, split so that groups the engine forms byte by byte can be joined:
// the inner statement's parts and how the outer one adds them up again.
struct SplitFigure {
    QString inner;
    QString outer;
};

SplitFigure splitFigure(const QString& aggregate, int index)
{
    const QString name = aggregate.section(QStringLiteral(" as "), 1).trimmed();
    const QString call = aggregate.section(QStringLiteral(" as "), 0, 0).trimmed();
    const QString argument = call.mid(call.indexOf(u'(') + 1).chopped(1);
    const QString part = QStringLiteral("f%1").arg(index);
    if (call.startsWith(QLatin1String("AVG("), Qt::CaseInsensitive))
        return {QStringLiteral("SUM(%1) as %2s, COUNT(%1) as %2n").arg(argument, part),
                QStringLiteral("CAST(SUM(%1s) AS REAL) / SUM(%1n) as %2").arg(part, name)};
    // COUNT and SUM of the parts add up.
    return {call + QStringLiteral(" as ") + part, QStringLiteral("SUM(%1) as %2").arg(part, name)};
}

} // namespace

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
        // "äbi holz" is found under "Äbi Holz": the filter lists offer one entry for both.
        const bool name = f.expression == f.column && isTextColumn(def, f.column);
        where += QStringLiteral(" and ") + (f.expression == f.column ? def.qualified(f.column) : f.expression) +
                 (name ? QStringLiteral(" = ? COLLATE ") + QLatin1String(GermanCollation) : QStringLiteral(" = ?"));
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
        // The engine groups byte by byte through its indexes first; the few groups that makes are
        // then joined and ordered in German order, so "Äbi Holz" and "äbi holz" are one group.
        QStringList innerKeys, outerKeys, groupKeys, order, innerFigures, outerFigures;
        for (int i = 0; i < g.columns.size(); ++i) {
            const QString key = QStringLiteral("g%1").arg(i);
            const QString expression = g.expressions[i] == g.columns[i] ? def.qualified(g.columns[i]) : g.expressions[i];
            // The key twice: once to group by, once as the spelling shown (the first byte by byte;
            // the columns themselves ignore case).
            innerKeys << expression + QStringLiteral(" as ") + key << QStringLiteral("min(%1 COLLATE BINARY) as s%2").arg(expression, key);
            outerKeys << QStringLiteral("min(s%1 COLLATE BINARY) as %2").arg(key, g.columns[i]);
            groupKeys << inGermanOrder(key);
            order << inGermanOrder(g.columns[i]);
        }
        const QStringList aggregates = def.aggregates.split(QStringLiteral(", "));
        for (int i = 0; i < aggregates.size(); ++i) {
            const SplitFigure f = splitFigure(aggregates[i], i);
            innerFigures << f.inner;
            outerFigures << f.outer;
        }
        const QString inner = QStringLiteral("(select ") + innerKeys.join(QStringLiteral(", ")) + QStringLiteral(", ") +
                              innerFigures.join(QStringLiteral(", ")) + where + QStringLiteral(" group by ") +
                              g.expressions.join(QStringLiteral(", ")) + u')';
        q.sql = QStringLiteral("select ") + outerKeys.join(QStringLiteral(", ")) + QStringLiteral(", ") + outerFigures.join(QStringLiteral(", ")) +
                QStringLiteral(" from ") + inner + QStringLiteral(" group by ") + groupKeys.join(QStringLiteral(", ")) +
                QStringLiteral(" order by ") + order.join(QStringLiteral(", "));
        q.countSql = QStringLiteral("select count(*) from (select 1 from ") + inner + QStringLiteral(" group by ") +
                     groupKeys.join(QStringLiteral(", ")) + u')';
        q.groupColumns = int(g.columns.size());
        q.columns = g.columns;
        for (const QString& part : aggregates)
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
    q.sql = QStringLiteral("select ") + select.join(QStringLiteral(", ")) + where + QStringLiteral(" order by ") + ordered(def, sort) +
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
    // One entry for the names that are equal in German order, spelt as the first of them byte by byte.
    QSqlQuery q = execSql(db, QStringLiteral("select min(s COLLATE BINARY) from (select %1 as v, min(%1 COLLATE BINARY) as s from %2 "
                                             "where %1 is not null group by %1) group by %3 order by %4")
                                  .arg(column, quoted(def.table), inGermanOrder(QStringLiteral("v")), inGermanOrder(QStringLiteral("1"))));
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
