#pragma once
// Creating and changing a harvest: the proposal for a new one, the checks, the store, and the
// remembered defaults ("FH_Hiebeingabe.TK3").
#include "common/clock.h"
#include "store/context.h"
#include "store/records.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <array>
#include <optional>

namespace tarvik {

inline constexpr char HarvestDefaultsFile[] = "FH_Hiebeingabe.TK3";

// The harvest window's fields as text, as the user sees them.
struct HarvestForm {
    QString hiebNr, jahr, waldname, waldort, hiebflaeche, hiebgrund, hiebart, datumVon, datumBis, bemerkung;
    QString besitzerName, besitzerStrasse, besitzerWohnort, besitzerTelefon, besitzerSonstiges, harvester;
    // Anzahl_Lose, Stämme_Anzahl, Stämme_Efm, Stämme_Efm_je_Stück, Pfähle_Anzahl, Schichtholz_Efm,
    // Schichtholz_m3: kept by the totals, shown and written back as they are.
    std::array<QString, 7> totals;
    QString teilverkauft, verkauft;
};

// A new harvest: the next number (wrapping to 1 after 999999), this year, area "0,0000", and
// the remembered defaults when there are any.
HarvestForm proposeNewHarvest(const QSqlDatabase& db, const Clock& clock, const QString& dataFolder);
HarvestForm loadHarvest(const QSqlDatabase& db, qint32 id);

// Every failed check gathered into one message, or nullopt. editedId: the harvest being changed.
std::optional<QString> checkHarvest(const QSqlDatabase& db, const HarvestForm& form, std::optional<qint32> editedId);

// The harvest window's OK: checks (a refusal is shown), then stores; the harvest's ID, or nullopt.
std::optional<qint32> storeHarvest(const AppContext& context, const HarvestForm& form, std::optional<qint32> editedId);
// Writes the harvest without checks (callers that checked, generators, imports) and grows the
// woodland, owner, reason and kind lists; returns its ID. One transaction.
qint32 saveHarvest(const QSqlDatabase& db, const HarvestForm& form, std::optional<qint32> editedId);

// The nine remembered lines; the message to show on success, or the write error.
struct DefaultsResult {
    bool ok;
    QString message;
};
DefaultsResult saveHarvestDefaults(const QString& dataFolder, const HarvestForm& form);

struct WoodlandEntry {
    QString waldort;
    QString flaeche;
};
std::optional<WoodlandEntry> woodland(const QSqlDatabase& db, const QString& name);
struct OwnerEntry {
    QString strasse, wohnort, telefon, sonstiges;
};
std::optional<OwnerEntry> owner(const QSqlDatabase& db, const QString& name);

} // namespace tarvik
