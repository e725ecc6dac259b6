#pragma once
// Recomputes of a whole lot: the bark deductions of its logs, and its prices. Each asks
// first, runs as one transaction and reports what it did.
#include "rules/logmeasure.h"
#include "rules/pricing.h"

#include <QSqlDatabase>
#include <optional>

namespace tarvik {

class MasterDataLookup;
class Prompter;

// The price columns of the lot; nullopt when the harvest has no such lot.
std::optional<PriceSettings> loadLotPriceSettings(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr);

struct LotRecomputeResult {
    int logs = 0;    // logs recomputed
    int changed = 0; // of those, logs whose stored values differ afterwards
};

// Every log of the lot is measured again and stored as the log window's OK stores it. With a
// mode, every log gets that mode; without, each keeps its own (and, for "F", its deduction).
// nullopt when no lot was given or the user said No.
std::optional<LotRecomputeResult> recomputeLotBark(const QSqlDatabase& db, MasterDataLookup& masterData,
                                                   qint32 harvestId, std::optional<qint32> lotNr,
                                                   std::optional<BarkMode> mode, const PriceSettings& prices,
                                                   Prompter& prompter);

// Every log of the lot is priced again with the given settings; the lot row receives the sums
// and the settings. nullopt when no lot was given or the user said No.
std::optional<LotRecomputeResult> recomputeLotPrices(const QSqlDatabase& db, MasterDataLookup& masterData,
                                                     qint32 harvestId, std::optional<qint32> lotNr,
                                                     const PriceSettings& prices, Prompter& prompter);

// What a lot's recompute does: the bark of its logs, their prices, or both (bark first).
struct LotRecomputeRequest {
    bool bark = false;
    std::optional<BarkMode> mode; // with bark: the mode every log gets; none keeps each log's own
    bool prices = false;          // also stores the settings on the lot
    PriceSettings priceSettings;
};

// A lot's recompute as the log window, the lot window and the command line run it: the
// asked steps, then the harvest's totals and sale state, all in one transaction. The result
// of the first step; nullopt when no lot was given or the user said No (nothing changed).
std::optional<LotRecomputeResult> recomputeLot(const QSqlDatabase& db, MasterDataLookup& masterData, qint32 harvestId,
                                               std::optional<qint32> lotNr, const LotRecomputeRequest& request,
                                               Prompter& prompter);

} // namespace tarvik
