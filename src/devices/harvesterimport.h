#pragma once
// Storing the logs of a harvester's production file in one lot of a harvest: species mapped,
// products excluded or classed, numbers from the stem and the position along it, the log
// window's measurement and price rules, duplicates and what the window would refuse skipped
// and counted, the lot's position from the stems, the totals; all in one transaction.
#include "devices/harvesterfile.h"
#include "devices/importedlog.h"
#include "devices/logimport.h"
#include "devices/speciesmapping.h"
#include "store/context.h"

#include <optional>

namespace tarvik {

struct HarvesterOutcome {
    int found = 0;      // logs of single-tree processed stems
    int stored = 0;
    int unmapped = 0;   // species group without a species
    int excluded = 0;   // product excluded
    int duplicates = 0; // running number already in the harvest
    int unnumbered = 0; // more than nine logs on a stem, or a stem number past 99999
    int refused = 0;    // what the log window would refuse (no class, no length, …)
    double volume = 0;        // Efm oR of the stored logs by the program's rules
    double machineVolume = 0; // m³ under bark of the same logs as the machine measured them
    bool positionSet = false;
};

// The lot must be given and hold logs (or not exist yet); says why not through the prompter.
bool harvesterLotAccepted(const AppContext& context, qint32 harvestId, std::optional<qint32> lot);

// The found logs as the import grid shows them (species and product as the file names them).
QList<ImportedLog> harvesterGridRows(const HarvesterFile& file, qint32 lot, const HarvesterMapping& mapping);

// Asks the transfer question (and whether a missing lot is to be created), stores, remembers
// the mapping and shows the summary with the machine's volume beside the program's. nullopt
// when stopped or refused (nothing stored, the message shown).
// Why each grid row would not be stored, in the rows' order; "" for a row that will be.
QStringList harvesterRefusalReasons(const QSqlDatabase& db, qint32 harvestId, const HarvesterFile& file, const HarvesterMapping& mapping);

// askTransfer shows the grid with the question (the window); without it the prompter asks.
std::optional<HarvesterOutcome> importHarvesterLogs(const AppContext& context, qint32 harvestId, std::optional<qint32> lot,
                                                    const HarvesterFile& file, const HarvesterMapping& mapping,
                                                    const TransferQuestion& askTransfer = {});

} // namespace tarvik
