#pragma once
// Whether another program has the database open, asked the way the engine knows it: its
// exclusive lock is granted only while no connection of any program holds the file.
#include <QString>

namespace tarvik {

// False while another program has the file open (the engine reports its lock), true otherwise,
// also for a missing or damaged file. A sound file then has its write-ahead log folded in and
// removed, so it stands alone and may be moved or replaced. This process must have closed its
// own handles on the file first.
bool databaseIsFree(const QString& databasePath);

} // namespace tarvik
