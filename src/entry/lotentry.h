#pragma once
// Entering a lot: number proposal, checks, store, the remembered price settings, and the bulk
// changes of a range of its logs.
#include "rules/pricing.h"
#include "store/context.h"
#include "store/records.h"

#include <QStringList>
#include <optional>

namespace tarvik {

inline constexpr char LotPriceDefaultsFile[] = "EF_Eingabe_Lose_Preisberechnung.TK3";

// The lot window's fields as text.
struct LotForm {
    QString losNr, sortierung, losBezeichnung, lagerort, anfahrt, gpsL, gpsB, abnehmer, bemerkung;
    QString vermessungsart, qualitaet, fixlaenge, ueberlaenge, preisErhalten, reNr;
    bool abgerechnet = false;
    PriceSettings prices;
    // Kept by the totals; shown and written back as they are.
    QString anzahlStaemme, efmOR, efmJeStamm, anzahlPfaehle, efmSchichtholz, m3Schichtholz, holzpreis, preisBerechnet;
};

LotForm proposeNewLot(const QSqlDatabase& db, qint32 harvestId, const QString& dataFolder);
LotForm loadLot(const QSqlDatabase& db, qint32 id);
// Every failed check gathered into one message, or nullopt. editedId: the lot being changed.
std::optional<QString> checkLot(const QSqlDatabase& db, qint32 harvestId, const LotForm& form, std::optional<qint32> editedId);
// The lot window's OK: checks (a refusal is shown), then stores; the lot's ID, or nullopt.
std::optional<qint32> storeLot(const AppContext& context, qint32 harvestId, const LotForm& form, std::optional<qint32> editedId);
// Writes the lot without checks (callers that checked, bulk copies): a renumbered lot takes its
// rows along; the place, buyer and remark lists grow; the totals follow. One transaction.
qint32 saveLot(const QSqlDatabase& db, qint32 harvestId, const LotForm& form, std::optional<qint32> editedId);

// Directions and position of an earlier lot at the same storage place.
struct PlaceDetails {
    QString anfahrt, gpsL, gpsB;
};
std::optional<PlaceDetails> placeDetails(const QSqlDatabase& db, const QString& place);

// The remembered price settings of new lots.
std::optional<PriceSettings> rememberedPrices(const QString& dataFolder);
void rememberPrices(const AppContext& context, const PriceSettings& prices);
void forgetPrices(const AppContext& context);

// Bulk changes of the logs from ... to of a lot. Each asks and reports; false when refused.
struct LogRange {
    QString lot, from, to;
};
bool changeQualityOfRange(const AppContext& context, qint32 harvestId, const LogRange& range, const QString& quality);
bool changeSpeciesOfRange(const AppContext& context, qint32 harvestId, const LogRange& range, const QString& species);
bool moveRangeToLot(const AppContext& context, qint32 harvestId, const LogRange& range, const QString& targetLot);
bool changeSpeciesOfLot(const AppContext& context, qint32 harvestId, const QString& lot, const QString& from, const QString& to);

} // namespace tarvik
