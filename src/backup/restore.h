#pragma once
// Reading a backup back in: the archive is checked entry by entry and unpacked into the
// staging folder; the next start swaps it in. The current data are never touched here.
#include "backup/archive.h"

#include <QString>
#include <optional>

namespace tarvik {

struct StageResult {
    bool ok = false;
    bool cancelled = false;
    QString error; // German
};

// Checks the archive (CRC of every entry, plain names only, the database passes the engine's
// integrity check) while unpacking it into a fresh staging folder, which takes its final
// name only when all is well; a staged restore from before is then replaced. freeBytes is the
// space left on the data folder's drive, when known.
StageResult stageRestore(const QString& archivePath, const QString& dataFolder, std::optional<qint64> freeBytes,
                         const ProgressFn& progress = {});

} // namespace tarvik
