#pragma once
// Import of a generated harvester production file beside raw prepared inserts of the same rows.
#include "measure.h"

#include <QString>

namespace tarvik::bench {

Result harvesterImportScenario(const QString& databasePath, int logs, int runs);

} // namespace tarvik::bench
