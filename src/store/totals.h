#pragma once
// The stored totals of a harvest's lots and of the harvest, and its sale state.
#include <QSqlDatabase>
#include <optional>

namespace tarvik {

// Lot totals from their logs, poles or sections, then the harvest totals from the lots'
// stored totals. One transaction. With a lot number only that lot is summed again: a store
// touches one lot, and the others' stored totals are still right.
void recomputeTotals(const QSqlDatabase& db, qint32 harvestId, std::optional<qint32> onlyLot = std::nullopt);

// `Teilverkauft` / `Verkauft` of the harvest from its lots' `Abgerechnet` flags.
void recomputeSaleState(const QSqlDatabase& db, qint32 harvestId);

} // namespace tarvik
