#pragma once
// Taking over a staged restore when a program starts: both programs hand this to the start
// (StartupOptions::beforeOpening), which runs it before anything opens the database.
#include "common/prompter.h"

#include <QLockFile>
#include <QString>

namespace tarvik {

enum class StagedRestore { None, Swapped, Waiting, Failed };

// A restore staged in the data folder is swapped in only by a program that holds the folder's
// instance lock (`held`, or taken for the swap) while no other program has the database open;
// otherwise it waits for the next start. Every handle of this process on the database must be
// closed. What happened is said through the prompter.
StagedRestore takeOverStagedRestore(const QString& dataFolder, QLockFile* held, Prompter& prompter);
QString restoreWaitsMessage();

} // namespace tarvik
