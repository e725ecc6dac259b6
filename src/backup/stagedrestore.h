#pragma once
// A restored backup waits in a folder of its own inside the data folder until the next start
// swaps it in, before anything opens the database.
#include "common/prompter.h"

#include <QDateTime>
#include <QString>

namespace tarvik {

// Complete staged restore: the folder appears under this name only when every file in it has
// been checked. A folder with the ".neu" suffix is one still being written and is discarded.
inline constexpr char StagingFolderName[] = "Wiederherstellung";
inline constexpr char StagingPartialSuffix[] = ".neu";
// Inside the staging folder while a swap runs: the name of the safety-copy folder, so a swap
// cut short by a power cut finishes into the same folder at the next start.
inline constexpr char SwapMarkerName[] = ".sicherheitskopie";
inline constexpr char SafetyCopyPrefix[] = "Sicherheitskopie_";

QString stagingFolder(const QString& dataFolder); // ends in "/"
bool hasStagedRestore(const QString& dataFolder);

struct SwapResult {
    bool swapped = false;
    QString safetyCopy; // folder holding the files that were replaced
    QString error;      // German; the current files are then as they were
};

// Moves the staged files into the data folder; every file they replace, and the database's
// write-ahead files, go into a dated safety-copy folder. Nothing to do without a staged
// restore. A failed swap is undone.
SwapResult swapInStagedRestore(const QString& dataFolder, const QDateTime& now);

// Safety copies pile up with every restore: the newest `keep` stay, older ones are removed after
// a swap succeeded. Returns how many were removed.
int removeOlderSafetyCopies(const QString& dataFolder, int keep = 3);

// What a start says after it swapped a restore in.
QString restoredAtStartMessage(const QString& safetyCopy);

} // namespace tarvik
