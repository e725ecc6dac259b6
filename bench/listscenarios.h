#pragma once
// The evaluation lists over the whole file: a grouped log list and the full log list, each beside
// the same statement run with the raw sqlite3 C API.
#include "measure.h"

#include <QString>
#include <vector>

namespace tarvik::bench {

std::vector<Result> listScenarios(const QString& path, int groupedRuns, int fullRuns);

} // namespace tarvik::bench
