#include "reports/lists/formats.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "store/schema.h"
#include "store/sql.h"

#include <QSqlDriver>
#include <QSqlQuery>

namespace tarvik::lists {
namespace {

using Kind = ColumnFormat::Kind;

// Lengths and percentages read better with two decimals, the area with four, volumes with three.
int singleDecimals(const QString& name)
{
    if (name == u"Hiebfläche")
        return 4;
    if (name.contains(u"länge", Qt::CaseInsensitive) || name.endsWith(u"tiefe_m") || name.endsWith(u"höhe_m") ||
        name.endsWith(u"_Proz") || name.startsWith(u"Stärke"))
        return 2;
    return 3;
}

ColumnFormat fromSchema(const QString& name, const schema::Column& c)
{
    ColumnFormat f{name};
    switch (c.type) {
    case schema::ColumnType::Text:
        f.width = std::min(c.width, 40);
        break;
    case schema::ColumnType::Memo:
        f.width = 40;
        break;
    case schema::ColumnType::Short:
    case schema::ColumnType::Long:
    case schema::ColumnType::Counter:
        f.kind = Kind::Integer;
        f.width = 8;
        break;
    case schema::ColumnType::Single:
        f.kind = Kind::Decimal;
        f.decimals = singleDecimals(name);
        f.width = 11;
        break;
    case schema::ColumnType::Currency:
        f.kind = Kind::Decimal;
        f.decimals = 2;
        f.width = 11;
        break;
    case schema::ColumnType::DateTime:
        f.kind = Kind::Date;
        f.width = 10;
        break;
    }
    return f;
}

// A figure of a grouped list: counts are whole, money has two decimals, volumes three.
ColumnFormat figure(const QString& name)
{
    ColumnFormat f{name, Kind::Decimal, 3, 11, true};
    static const QStringList counts{QStringLiteral("Anzahl_"), QStringLiteral("Stämme"), QStringLiteral("Pfähle"),
                                    QStringLiteral("Lose"), QStringLiteral("Sektionen"), QStringLiteral("Datensätze")};
    if (std::any_of(counts.begin(), counts.end(), [&](const QString& c) { return name == c || (c.endsWith(u'_') && name.startsWith(c)); })) {
        f.kind = Kind::Integer;
        f.decimals = 0;
        f.width = 8;
    } else if (name.startsWith(u"Geldwert")) {
        f.decimals = 2;
    } else if (name == u"Fläche") {
        f.decimals = 4;
    } else if (name.startsWith(u"Länge") || name.startsWith(u"Stärke")) {
        f.decimals = 2;
    }
    return f;
}

// The rows' order does not change their widths: without it the engine need not sort them first.
QString unordered(const QString& sql)
{
    const qsizetype at = sql.lastIndexOf(QLatin1String(" order by "), -1, Qt::CaseInsensitive);
    return at > 0 && !QStringView(sql).mid(at).contains(u')') ? sql.left(at) : sql;
}

} // namespace

QList<ColumnFormat> columnFormats(const MemberDef& def, const ListQuery& query)
{
    QList<ColumnFormat> formats;
    const schema::Table& own = schema::table(def.table);
    const schema::Table& harvests = schema::table(QStringLiteral("Hiebe"));
    for (int i = 0; i < query.columns.size(); ++i) {
        const QString& name = query.columns[i];
        ColumnFormat f;
        const schema::Column* c = own.column(name);
        if (!c && def.joinsHarvests)
            c = harvests.column(name);
        const bool isFigure = query.groupColumns > 0 && i >= query.groupColumns;
        if (isFigure || !c)
            f = isFigure ? figure(name) : ColumnFormat{name, Kind::Text, 0, 10};
        else
            f = fromSchema(name, *c);
        f.width = std::max<int>(f.width, int(name.size()));
        formats << f;
    }
    return formats;
}

QList<ColumnFormat> columnFormats(const QSqlDatabase& db, const MemberDef& def, const ListQuery& query)
{
    QList<ColumnFormat> formats = columnFormats(def, query);
    QStringList extremes;
    QList<int> figures;
    QList<int> texts;
    for (int i = 0; i < formats.size(); ++i) {
        const QString column = db.driver()->escapeIdentifier(query.columns[i], QSqlDriver::FieldName);
        if (formats[i].kind == Kind::Text) {
            texts << i;
            continue;
        }
        if (formats[i].kind != Kind::Integer && formats[i].kind != Kind::Decimal)
            continue;
        extremes << QStringLiteral("max(%1), min(%1)").arg(column);
        figures << i;
    }
    // A text column is as wide as its longest value (or its name), so that nothing is cut and
    // no column is padded to a width no value needs.
    for (int i : texts)
        extremes << QStringLiteral("max(length(trim(%1)))").arg(db.driver()->escapeIdentifier(query.columns[i], QSqlDriver::FieldName));
    if (extremes.isEmpty())
        return formats;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT ") + extremes.join(QStringLiteral(", ")) + QStringLiteral(" FROM (") + unordered(query.sql) +
                                  u')',
                          query.values);
    if (!q.next())
        return formats;
    // The widest text of a figure is that of its largest or of its most negative value.
    for (int k = 0; k < figures.size(); ++k) {
        ColumnFormat& f = formats[figures[k]];
        for (int v : {2 * k, 2 * k + 1})
            f.width = std::max<int>(f.width, int(cellText(f, q.value(v)).size()));
    }
    for (int k = 0; k < texts.size(); ++k) {
        ColumnFormat& f = formats[texts[k]];
        f.width = std::max<int>(int(f.name.size()), q.value(int(2 * figures.size()) + k).toInt());
    }
    return formats;
}

QDate cellDate(const QVariant& value)
{
    return parseGermanDate(germanDateFromSql(value));
}

QString cellText(const ColumnFormat& format, const QVariant& value)
{
    if (value.isNull() && !format.nullAsZero)
        return {};
    switch (format.kind) {
    case Kind::Text:
        return value.toString();
    case Kind::Integer:
        // Whole numbers come from the engine as integers; only other values need the rounding.
        if (value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Int)
            return QString::number(value.toLongLong());
        return formatDecimal(readNumber(value), 0);
    case Kind::Decimal:
        return formatDecimal(readNumber(value), format.decimals);
    case Kind::Date:
        return germanDateFromSql(value);
    }
    return {};
}

} // namespace tarvik::lists
