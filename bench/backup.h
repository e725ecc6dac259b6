#pragma once
// Backup scenarios: the program's archive of a data folder and its restore check, beside the
// `zip` and `unzip -t` tools doing the same on the same files.
#include "measure.h"

#include <QString>
#include <vector>

namespace tarvik::bench {

// dataFolder is only read; archives go to scratchFolder. Prints the archive sizes.
std::vector<Result> backupScenarios(const QString& dataFolder, const QString& scratchFolder, int runs);

} // namespace tarvik::bench
