#pragma once
// The start of the desktop program on files of a given size: open, upgrade checks, the main
// list and its statistics, with the file's pages in the cache (warm) and after they were dropped
// from it (cold), beside a raw connection reading the list.
#include "measure.h"

#include <QString>
#include <vector>

namespace tarvik::bench {

// What the desktop program does at its start: open (with the full page check first if asked),
// the upgrade checks, the main list read to its end and its statistics.
void programStart(const QString& path, bool checkPagesFirst = false);

// Builds one file per size (in MB) in scratchFolder and measures the start on each.
std::vector<Result> startSizeScenarios(const QString& scratchFolder, const QList<int>& sizesMb, int runs);

} // namespace tarvik::bench
