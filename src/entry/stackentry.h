#pragma once
// Entering sections of stacked wood: volumes from the dimensions, class and price per Ster
// from the diameter, the checks, and the store with its section number.
#include "rules/stackedwood.h"
#include "store/context.h"
#include "store/gridquery.h"

#include <optional>

namespace tarvik {

class MasterDataLookup;

struct StackForm {
    QString losNr, sectionNr, species, diameter, length, depth, height, m3, efm, stackClass, pricePerSter, price, remark;
};

// A changed dimension gives m3 and Efm (and the price); a changed diameter selects the class,
// which proposes its price per Ster.
void stackDimensionsChanged(StackForm& form, const StackedFactors& factors);
void stackDiameterChanged(StackForm& form, MasterDataLookup& masterData);
void stackPriceChanged(StackForm& form);

std::optional<QString> checkStack(const QSqlDatabase& db, qint32 harvestId, const StackForm& form);
// Checks, asks about a taken section number and a missing lot, stores and brings the totals
// up to date; false when stopped. A section number is never stored twice.
bool storeStack(const AppContext& context, qint32 harvestId, StackForm& form, std::optional<qint32> editedId);
StackForm loadStack(const QSqlDatabase& db, qint32 id);

// The sections of the harvest for the window's grid, newest first.
HarvestRows stackGridRows(qint32 harvestId);

} // namespace tarvik
