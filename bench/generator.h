#pragma once
// Builds a data folder with a realistic database through the program's own core code:
// harvests, lots, priced logs, poles and stacked-wood sections, then their totals.
#include "store/context.h"

#include <QRandomGenerator>
#include <QString>
#include <cstdio>

namespace tarvik {
class MasterDataLookup;
}

namespace tarvik::bench {

struct GeneratorSizes {
    int harvests = 2000;
    int lots = 20000;
    int logs = 1000000;
    int poles = 50000;
    int stacks = 50000;
    quint32 seed = 20261121;
};

// Fills the database of the data folder (creating it first). Progress goes to `progress`.
void generate(const QString& dataFolder, const GeneratorSizes& sizes, std::FILE* progress);

// One harvest with `logs` logs in lots of 1,000 (the benchmark's large harvest); its ID.
qint32 addLogHarvest(const AppContext& context, MasterDataLookup& masterData, qint32 hiebNr, int logs, QRandomGenerator& random);

} // namespace tarvik::bench
