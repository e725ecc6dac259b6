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
    // The harvest of a row as the info field `text1` shows it: one value a line, empty ones left out.
    QString infoText(int row) const;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
};

} // namespace tarvik
