#include "app/main/harvestlistmodel.h"

#include "harvests/harvestlist.h"
#include "common/text.h"

#include "store/sql.h"
#include "common/systemerror.h"

#include <QBrush>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <optional>

namespace tarvik {

void HarvestListModel::refill(const QSqlDatabase& db, const HarvestFilter& filter)
{
    QSqlQuery q(db);
    bool ok = q.prepare(harvestListSql() + filter.whereClause() + QStringLiteral(" ORDER BY \"Hieb_Nr\", \"ID\""));
    for (int i = 0; ok && i < filter.values.size(); ++i)
        q.bindValue(i, filter.values[i]);
    if (!ok || !q.exec())
        throw StoreError(QStringLiteral("Die Hiebliste kann nicht gelesen werden: ") + germanErrorText(q.lastError().text()));
    setQuery(std::move(q));
    while (canFetchMore())
        fetchMore(); // the statistics and the row colours need every row
}

std::optional<qint32> HarvestListModel::harvestId(int row) const
{
    if (row < 0 || row >= rowCount())
        return std::nullopt;
    return record(row).value(QStringLiteral("ID")).toInt();
}

int HarvestListModel::rowOfHarvest(qint32 id) const
{
    for (int row = 0; row < rowCount(); ++row)
        if (harvestId(row) == id)
            return row;
    return -1;
}

QVariant HarvestListModel::data(const QModelIndex& index, int role) const
{
    if (role == Qt::DisplayRole) {
        const QString column = harvestListColumns().value(index.column());
        return harvestListCell(column, QSqlQueryModel::data(index, Qt::DisplayRole));
    }
    if (role == Qt::ForegroundRole) {
        const QSqlRecord r = record(index.row());
        const QString partly = readText(r.value(QStringLiteral("Teilverkauft")));
        const QString sold = readText(r.value(QStringLiteral("Verkauft")));
        if (partly == u"J" && sold == u"J")
            return QBrush(QColor(0, 0, 255)); // sold in full
        if (partly == u"N" && sold == u"J")
            return QBrush(QColor(255, 0, 0));
        return {};
    }
    return QSqlQueryModel::data(index, role); // alignment: the grid's shared look
}

QString HarvestListModel::infoText(int row) const
{
    if (row < 0 || row >= rowCount())
        return {};
    const QSqlRecord r = record(row);
    auto cell = [&](const char* column) {
        const QString name = QString::fromUtf8(column);
        return singleLine(harvestListCell(name, r.value(name))).trimmed();
    };
    QStringList lines;
    auto line = [&lines](const char* caption, const QString& value) {
        if (!value.isEmpty())
            lines << QString::fromUtf8(caption).leftJustified(15) + value;
    };
    line("Hieb-Nr.:", cell("Hieb_Nr"));
    line("Jahr:", cell("Jahr"));
    line("Waldname:", cell("Waldname"));
    line("Waldort:", cell("Waldort"));
    line("Fläche (ha):", cell("Hiebfläche"));
    line("Hiebgrund:", cell("Hiebgrund"));
    line("Hiebart:", cell("Hiebart"));
    const QString from = cell("Hiebdatum_von"), to = cell("Hiebdatum_bis");
    line("Hiebzeitraum:", from.isEmpty() && to.isEmpty() ? QString() : from + QStringLiteral(" - ") + to);
    line("Lose:", cell("Anzahl_Lose"));
    line("Stämme:", cell("Stämme_Anzahl"));
    line("Stämme Efm:", cell("Stämme_Efm"));
    line("Efm je Stamm:", cell("Stämme_Efm_je_Stück"));
    line("Pfähle:", cell("Pfähle_Anzahl"));
    line("Schichth. m³:", cell("Schichtholz_m3"));
    line("Schichth. Efm:", cell("Schichtholz_Efm"));
    const QString sold = cell("Verkauft") == u"J" ? QStringLiteral("ja")
                         : cell("Teilverkauft") == u"J" ? QStringLiteral("teilweise") : QStringLiteral("nein");
    line("Verkauft:", sold);
    QStringList owner;
    for (const char* column : {"Waldbesitzer_Name", "Waldbesitzer_Straße", "Waldbesitzer_Wohnort", "Waldbesitzer_Tel", "Waldbesitzer_Sonst"})
        if (const QString v = cell(column); !v.isEmpty())
            owner << v;
    if (!owner.isEmpty())
        lines << QString() << QStringLiteral("Waldbesitzer:") << owner;
    if (const QString remark = cell("Bemerkung"); !remark.isEmpty())
        lines << QString() << QStringLiteral("Bemerkung:") << remark;
    if (const QString harvester = cell("Harvester"); !harvester.isEmpty())
        lines << QString() << QStringLiteral("Harvester:") << harvester;
    return lines.join(u'\n');
}

} // namespace tarvik
