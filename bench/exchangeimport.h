#pragma once
// Import of one exchange file with many logs beside raw prepared inserts of the same rows.
#include "measure.h"

#include <QString>

namespace tarvik::bench {

Result exchangeImportScenario(const QString& databasePath, int logs, int runs);

} // namespace tarvik::bench
