#pragma once
// Species and quality classes: storing them keeps the per-species rows and the per-quality
// columns of the bark and price tables in step.
#include "masterdata/editmode.h"

namespace tarvik {

struct SpeciesForm {
    QString baumart;
    bool laubwald = false;
};

// One transaction: the row, and a new species' four master rows or a renamed species' cascade
// through every table that names it. False when refused (its message shown), nothing stored.
bool storeSpecies(const AppContext& context, EditMode mode, std::optional<qint32> id, const SpeciesForm& form);
SpeciesForm loadSpecies(const QSqlDatabase& db, qint32 id);

// One transaction: the row and, for a new class, its column "GK_" + class at 100 for every
// species. A class names a column, so a changed name is refused.
bool storeQuality(const AppContext& context, EditMode mode, std::optional<qint32> id, const QString& gueteklasse);
QString loadQuality(const QSqlDatabase& db, qint32 id);

// The tables that name a species, in the order a rename reaches them.
const QStringList& speciesTables();

} // namespace tarvik
