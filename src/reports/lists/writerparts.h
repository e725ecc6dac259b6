#pragma once
// What the list writers share: the refusal that names the file, and the progress report every
// few thousand rows.
#include "reports/lists/writers.h"

namespace tarvik::lists {

inline constexpr qint64 ProgressStep = 4096;

QString cannotWrite(const QString& path, const QString& reason);
// False when the progress report cancels the writing.
bool keepGoing(const Progress& progress, qint64 done);

} // namespace tarvik::lists
