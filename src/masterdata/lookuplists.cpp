#include "masterdata/lookuplists.h"

#include "common/numbers.h"
#include "common/text.h"
#include "store/collation.h"
#include "store/schema.h"
#include "store/sql.h"

namespace tarvik {
namespace {

bool isNumberColumn(const schema::Column& c) { return c.type == schema::ColumnType::Single; }

QVariant storedValue(const schema::Column& c, const QString& typed)
{
    if (isNumberColumn(c))
        return readNumber(typed);
    return typed.trimmed();
}

std::optional<QString> refusal(const QSqlDatabase& db, const QString& table, const QStringList& values,
                               std::optional<qint64> exceptRow)
{
    const schema::Table& t = schema::table(table);
    QStringList reasons;
    if (values.value(0).trimmed().isEmpty())
        reasons << QStringLiteral("...der Eintrag '%1' angegeben werden muß.").arg(t.columns[0].name);
    for (int i = 0; i < t.columns.size(); ++i) {
        const schema::Column& c = t.columns[i];
        if (c.type == schema::ColumnType::Text && values.value(i).trimmed().size() > c.width)
            reasons << QStringLiteral("...der Eintrag '%1' höchstens %2 Zeichen lang sein darf.").arg(c.name).arg(c.width);
    }
    if (reasons.isEmpty()) {
        QStringList conditions;
        QVariantList bound;
        for (int i = 0; i < t.columns.size(); ++i) {
            if (isNumberColumn(t.columns[i]))
                continue;
            conditions << quoted(t.columns[i].name) + QStringLiteral(" = ?");
            bound << values.value(i).trimmed();
        }
        QString sql = QStringLiteral("SELECT 1 FROM %1 WHERE %2").arg(quoted(table), conditions.join(QStringLiteral(" AND ")));
        if (exceptRow) {
            sql += QStringLiteral(" AND rowid <> ?");
            bound << *exceptRow;
        }
        if (scalar(db, sql + QStringLiteral(" LIMIT 1"), bound).isValid())
            reasons << QStringLiteral("...der Eintrag bereits existiert.");
    }
    if (reasons.isEmpty())
        return std::nullopt;
    return gatheredRefusal(reasons);
}

} // namespace

const QStringList& lookupLists()
{
    static const QStringList tables{QStringLiteral("Liste_Abnehmer"),  QStringLiteral("Liste_Bemerkungen"),
                                    QStringLiteral("Liste_Hiebart"),   QStringLiteral("Liste_Hiebgrund"),
                                    QStringLiteral("Liste_Lagerort"),  QStringLiteral("Liste_Waldnamen"),
                                    QStringLiteral("Waldbesitzer")};
    return tables;
}

QString lookupListCaption(const QString& table)
{
    static const QHash<QString, QString> captions{
        {QStringLiteral("Liste_Abnehmer"), QStringLiteral("Abnehmer")},
        {QStringLiteral("Liste_Bemerkungen"), QStringLiteral("Bemerkungen")},
        {QStringLiteral("Liste_Hiebart"), QStringLiteral("Hiebarten")},
        {QStringLiteral("Liste_Hiebgrund"), QStringLiteral("Hiebgründe")},
        {QStringLiteral("Liste_Lagerort"), QStringLiteral("Lagerorte")},
        {QStringLiteral("Liste_Waldnamen"), QStringLiteral("Waldnamen")},
        {QStringLiteral("Waldbesitzer"), QStringLiteral("Waldbesitzer")}};
    return captions.value(table, table);
}

QStringList lookupColumns(const QString& table)
{
    QStringList names;
    for (const schema::Column& c : schema::table(table).columns)
        names << c.name;
    return names;
}

QList<LookupEntry> lookupEntries(const QSqlDatabase& db, const QString& table)
{
    const schema::Table& t = schema::table(table);
    QStringList columns;
    for (const schema::Column& c : t.columns)
        columns << quoted(c.name);
    QSqlQuery q = execSql(db, QStringLiteral("SELECT rowid, %1 FROM %2 ORDER BY %3, rowid")
                                  .arg(columns.join(QStringLiteral(", ")), quoted(table), inGermanOrder(columns.first())));
    QList<LookupEntry> out;
    while (q.next()) {
        LookupEntry e{q.value(0).toLongLong(), {}};
        for (int i = 0; i < t.columns.size(); ++i)
            e.values << (isNumberColumn(t.columns[i]) ? numberText(readNumber(q.value(i + 1))) : readText(q.value(i + 1)));
        out << e;
    }
    return out;
}

bool addLookupEntry(const AppContext& context, const QString& table, const QStringList& values)
{
    if (const auto r = refusal(context.db, table, values, std::nullopt)) {
        context.prompter.inform(*r);
        return false;
    }
    const schema::Table& t = schema::table(table);
    QStringList columns, marks;
    QVariantList bound;
    for (int i = 0; i < t.columns.size(); ++i) {
        columns << quoted(t.columns[i].name);
        marks << QStringLiteral("?");
        bound << storedValue(t.columns[i], values.value(i));
    }
    execSql(context.db,
            QStringLiteral("INSERT INTO %1(%2) VALUES (%3)")
                .arg(quoted(table), columns.join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))),
            bound);
    return true;
}

bool changeLookupEntry(const AppContext& context, const QString& table, qint64 rowId, const QStringList& values)
{
    if (const auto r = refusal(context.db, table, values, rowId)) {
        context.prompter.inform(*r);
        return false;
    }
    const schema::Table& t = schema::table(table);
    QStringList assignments;
    QVariantList bound;
    for (int i = 0; i < t.columns.size(); ++i) {
        assignments << quoted(t.columns[i].name) + QStringLiteral(" = ?");
        bound << storedValue(t.columns[i], values.value(i));
    }
    execSql(context.db,
            QStringLiteral("UPDATE %1 SET %2 WHERE rowid = ?").arg(quoted(table), assignments.join(QStringLiteral(", "))),
            bound + QVariantList{rowId});
    return true;
}

bool deleteLookupEntry(const AppContext& context, const QString& table, qint64 rowId)
{
    if (!context.prompter.askYesNo(QStringLiteral("Soll der markierte Datensatz wirklich gelöscht werden?")))
        return false;
    execSql(context.db, QStringLiteral("DELETE FROM %1 WHERE rowid = ?").arg(quoted(table)), {rowId});
    return true;
}

} // namespace tarvik
