#include "app/main/harvestlistmodel.h"

#include "harvests/harvestlist.h"
#include "common/text.h"

#include "store/sql.h"

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
        throw StoreError(QStringLiteral("Die Hiebliste kann nicht gelesen werden: ") + q.lastError().text());
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
    if (role == Qt::TextAlignmentRole) {
        const QVariant v = QSqlQueryModel::data(index, Qt::DisplayRole);
        if (v.typeId() == QMetaType::Double || v.typeId() == QMetaType::LongLong || v.typeId() == QMetaType::Int)
            return int(Qt::AlignRight | Qt::AlignVCenter);
    }
    return QSqlQueryModel::data(index, role);
}

} // namespace tarvik
