#pragma once
// Which species of the master data a harvester's species group stands for, and what becomes of
// its products: a built-in table of German, Scandinavian and English names proposes the
// species, the user's earlier choices (a file in the data folder) win over it.
#include <QHash>
#include <QSet>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace tarvik {

inline constexpr char HarvesterMappingFile[] = "Harvester_Zuordnung.TK3";

struct HarvesterMapping {
    QHash<QString, QString> species;        // file's group name → `Baumart` ("" or missing: not taken)
    QSet<QString> excludedProducts;         // product names whose logs are not taken
    QHash<QString, QString> productQuality; // product name → `Güteklasse` ("" or missing: none)
    QStringList products;                   // every product this mapping decides on
};

// The species code the built-in table gives a name ("Gran" → "FI", "Pine" → "KI"), "" if none.
QString builtInSpeciesCode(const QString& name);

// The `Baumart` of the master data for a code ("FI") or a full text ("FI (Fichte)"); "" if none.
QString masterSpeciesOf(const QSqlDatabase& db, const QString& codeOrText);

// The choices remembered in the data folder (an unreadable or missing file gives none).
HarvesterMapping rememberedHarvesterMapping(const QString& dataFolder);
// Keeps these choices, over the earlier ones of the same names; "" when written, else why not.
QString rememberHarvesterMapping(const QString& dataFolder, const HarvesterMapping& mapping);

// What the dialog starts with for a file's names: remembered choices, else the built-in table
// (only species the master data has), products taken without a quality class.
HarvesterMapping proposedHarvesterMapping(const QSqlDatabase& db, const QString& dataFolder, const QStringList& speciesNames,
                                          const QStringList& productNames);

} // namespace tarvik
