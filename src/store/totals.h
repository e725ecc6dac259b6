#pragma once
// The stored totals of a harvest's lots and of the harvest, and its sale state.
#include <QSqlDatabase>
#include <optional>

namespace tarvik {

// Totals of every lot of the harvest from their logs, poles or sections, then the harvest
// totals from the lots' stored totals. One transaction. Every lot is summed: a lot whose
// stored totals went stale elsewhere (an import, an older program) is put right by the next
// change. One grouped query per assortment keeps this quick in a large harvest.
void recomputeTotals(const QSqlDatabase& db, qint32 harvestId);

// The per-lot sums of a harvest's logs (`Los_Nr`, count, Efm, wood price, price),
// answered from the index `tarvik_stämme_los_summen` alone.
QString logLotSumsSql();

// `Teilverkauft` / `Verkauft` of the harvest from its lots' `Abgerechnet` flags.
void recomputeSaleState(const QSqlDatabase& db, qint32 harvestId);

// What follows every change of a harvest's lots or rows: totals, then sale state, in one
// transaction (inside the caller's, when there is one).
void refreshHarvest(const QSqlDatabase& db, qint32 harvestId);

} // namespace tarvik
