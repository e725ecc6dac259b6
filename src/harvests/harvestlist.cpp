#include "harvests/harvestlist.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/text.h"
#include "store/sql.h"

#include <QHash>
#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik {
namespace {

// Decimals of the numeric columns as the list shows them.
const QHash<QString, int>& numericColumns()
{
    static const QHash<QString, int> decimals{
        {QStringLiteral("Hiebfläche"), 4},      {QStringLiteral("Anzahl_Lose"), 0},
        {QStringLiteral("Stämme_Efm"), 3},      {QStringLiteral("Stämme_Anzahl"), 0},
        {QStringLiteral("Stämme_Efm_je_Stück"), 3}, {QStringLiteral("Pfähle_Anzahl"), 0},
        {QStringLiteral("Schichtholz_m3"), 3},  {QStringLiteral("Schichtholz_Efm"), 3},
    };
    return decimals;
}

} // namespace

const QStringList& harvestListColumns()
{
    static const QStringList columns = QString::fromUtf8(
        "Hieb_Nr Jahr Selektiert Waldname Waldort Hiebfläche Hiebgrund Hiebart Hiebdatum_von Hiebdatum_bis Anzahl_Lose "
        "Stämme_Efm Stämme_Anzahl Stämme_Efm_je_Stück Pfähle_Anzahl Schichtholz_m3 Schichtholz_Efm Teilverkauft Verkauft "
        "Waldbesitzer_Name Waldbesitzer_Straße Waldbesitzer_Wohnort Waldbesitzer_Tel Waldbesitzer_Sonst Bemerkung Harvester ID")
                                           .split(u' ');
    return columns;
}

QString harvestListSql()
{
    QStringList quotedColumns;
    for (const QString& c : harvestListColumns())
        quotedColumns << quoted(c);
    return QStringLiteral("SELECT %1 FROM \"Hiebe\"").arg(quotedColumns.join(QStringLiteral(", ")));
}

QString HarvestStatistics::text() const
{
    return QStringLiteral("Statistik:   Lose=%1   Fläche=%2   Stämme_Anz=%3   Stämme_Efm=%4   Efm_je_Stamm=%5   "
                          "Pfähle_Anz=%6   Schichtholz_m3=%7   Schichtholz_Efm=%8")
        .arg(formatDecimal(lots, 0), formatDecimal(area, 4), formatDecimal(logs, 0), formatDecimal(logEfm, 3),
             formatDecimal(meanEfmPerLog(), 3), formatDecimal(poles, 0), formatDecimal(stackedM3, 3),
             formatDecimal(stackedEfm, 3));
}

HarvestStatistics harvestStatistics(const QSqlQueryModel& list)
{
    HarvestStatistics s;
    const QSqlRecord columns = list.record();
    auto sum = [&](double& total, const char* column) {
        const int c = columns.indexOf(QString::fromUtf8(column));
        for (int row = 0; row < list.rowCount(); ++row)
            total += readNumber(list.data(list.index(row, c), Qt::EditRole));
    };
    sum(s.lots, "Anzahl_Lose");
    sum(s.area, "Hiebfläche");
    sum(s.logs, "Stämme_Anzahl");
    sum(s.logEfm, "Stämme_Efm");
    sum(s.poles, "Pfähle_Anzahl");
    sum(s.stackedM3, "Schichtholz_m3");
    sum(s.stackedEfm, "Schichtholz_Efm");
    return s;
}

QString harvestListCell(const QString& column, const QVariant& value)
{
    if (value.isNull())
        return {};
    if (column.startsWith(QLatin1String("Hiebdatum")))
        return germanDateFromSql(value);
    const auto decimals = numericColumns().find(column);
    if (decimals != numericColumns().end())
        return formatDecimal(readNumber(value), *decimals);
    return value.toString();
}

QStringList harvestListLines(const QSqlDatabase& db)
{
    QStringList lines{harvestListColumns().join(u'\t')};
    QSqlQuery q = execSql(db, harvestListSql() + QStringLiteral(" ORDER BY \"Hieb_Nr\", \"ID\""));
    while (q.next()) {
        QStringList cells;
        for (int i = 0; i < harvestListColumns().size(); ++i) {
            cells << singleLine(harvestListCell(harvestListColumns()[i], q.value(i)));
        }
        lines << cells.join(u'\t');
    }
    return lines;
}

} // namespace tarvik
