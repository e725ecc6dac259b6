#pragma once
// Entering poles: the class from diameter and length, the proposed price per piece, the price
// of the row, the checks and the store.
#include "store/context.h"
#include "store/gridquery.h"

#include <optional>

namespace tarvik {

class MasterDataLookup;

struct PoleForm {
    QString losNr, species, diameter, length, count, poleClass, pricePerPiece, price, remark;
};

// A changed diameter or length selects the class, and a class proposes its price per piece.
void poleMeasureChanged(PoleForm& form, MasterDataLookup& masterData);
// A changed count or price per piece gives the row's price.
void polePriceChanged(PoleForm& form);

std::optional<QString> checkPole(const QSqlDatabase& db, qint32 harvestId, const PoleForm& form);
// Checks, asks for a missing lot, stores and brings the totals up to date; false when stopped.
bool storePole(const AppContext& context, qint32 harvestId, PoleForm& form, std::optional<qint32> editedId);
PoleForm loadPole(const QSqlDatabase& db, qint32 id);

// The poles of the harvest for the window's grid, newest first.
HarvestRows poleGridRows(qint32 harvestId);

} // namespace tarvik
