#pragma once
// The mobile app's file "holzliste_*.zip": unpacked into the data folder's "tmp" folder after
// every entry has been checked, its log table read, the folder cleared before and after.
#include "devices/logtable.h"

#include <QString>

namespace tarvik {

inline constexpr char AppLogTableName[] = "holzliste.csv";
inline constexpr qint64 AppEntryLimit = 32LL * 1024 * 1024;  // bytes one entry may declare
inline constexpr qint64 AppTotalLimit = 64LL * 1024 * 1024;  // bytes all entries may declare
inline constexpr qint64 AppEntryCountLimit = 1000;

// The folder the archive is unpacked into: "tmp" in the data folder.
QString appUnpackFolder(const QString& dataFolder);

// The log table of the archive, or an error in German naming the file or the refused entry.
// Nothing outside the unpack folder is ever written.
LogTable readAppArchive(const QString& zipPath, const QString& dataFolder);

} // namespace tarvik
