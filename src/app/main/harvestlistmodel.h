#pragma once
// The rows of `datali`: the harvest list source, shown as the list formats it, sold harvests
// coloured.
#include "harvests/filter.h"

#include <QSqlQueryModel>
#include <optional>

namespace tarvik {

class HarvestListModel : public QSqlQueryModel {
    Q_OBJECT
public:
    using QSqlQueryModel::QSqlQueryModel;

    void refill(const QSqlDatabase& db, const HarvestFilter& filter = {});
    std::optional<qint32> harvestId(int row) const;
    int rowOfHarvest(qint32 id) const;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
};

} // namespace tarvik
