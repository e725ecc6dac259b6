#pragma once
// BF_Lose_Luftbild: where the lots of a harvest lie; a lot opens in the web map, and the lots of
// the harvest can be saved as GeoJSON and KML for phone map apps.
#include "store/context.h"

#include <QDialog>

class QStandardItemModel;
class QTableView;

namespace tarvik {

class LotMapDialog : public QDialog {
    Q_OBJECT
public:
    LotMapDialog(AppContext context, std::optional<qint32> currentHarvestId, QWidget* parent = nullptr);

    QTableView* harvestGrid() const { return m_harvests; }
    QTableView* lotGrid() const { return m_lots; }
    // Opens the marked lot in the browser; false (with the message) when its coordinates do not fit.
    bool openMarkedLot();
    void exportLots();

private:
    void showLotsOfCurrentHarvest();
    std::optional<qint32> currentHarvestId() const;

    AppContext m_context;
    QTableView* m_harvests;
    QTableView* m_lots;
    QStandardItemModel* m_harvestModel;
    QStandardItemModel* m_lotModel;
};

// The map host the settings name, or the default.
QString mapHost(const Einstellungen& settings);

} // namespace tarvik
