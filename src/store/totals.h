#pragma once
// The stored totals of a harvest's lots and of the harvest, and its sale state.
#include <QSqlDatabase>

namespace tarvik {

// Lot totals from their logs, poles or sections, then the harvest totals from the lots'
// stored totals. One transaction.
void recomputeTotals(const QSqlDatabase& db, qint32 harvestId);

// `Teilverkauft` / `Verkauft` of the harvest from its lots' `Abgerechnet` flags.
void recomputeSaleState(const QSqlDatabase& db, qint32 harvestId);

} // namespace tarvik
