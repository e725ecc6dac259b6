#include "backup/restoreatstart.h"

#include "backup/stagedrestore.h"
#include "common/folders.h"
#include "store/exclusiveuse.h"
#include "store/startup.h"

#include <QDir>
#include <memory>

namespace tarvik {

QString restoreWaitsMessage()
{
    return QStringLiteral("Eine eingelesene Datensicherung wartet darauf, übernommen zu werden: die Daten sind gerade durch ein anderes "
                          "Programm geöffnet. Sie wird beim nächsten Start von TARVIK übernommen; bis dahin wird mit den bisherigen "
                          "Daten gearbeitet.");
}

StagedRestore takeOverStagedRestore(const QString& dataFolder, QLockFile* held, Prompter& prompter)
{
    if (!hasStagedRestore(dataFolder)) {
        if (held) // the desktop's start: a staging cut short by a crash is discarded
            swapInStagedRestore(dataFolder, QDateTime::currentDateTime());
        return StagedRestore::None;
    }
    std::unique_ptr<QLockFile> taken;
    if (!held) {
        taken = instanceLockFor(dataFolder); // keeps a desktop start out while the files are swapped
        held = taken.get();
    }
    if (!held || !databaseIsFree(QDir(dataFolder).filePath(QLatin1String(DatabaseFileName)))) {
        prompter.inform(restoreWaitsMessage(), Prompter::Icon::Warning);
        return StagedRestore::Waiting;
    }
    const SwapResult swap = swapInStagedRestore(dataFolder, QDateTime::currentDateTime());
    if (swap.swapped) {
        prompter.inform(restoredAtStartMessage(swap.safetyCopy));
        return StagedRestore::Swapped;
    }
    if (!swap.error.isEmpty())
        prompter.inform(swap.error, Prompter::Icon::Warning);
    return swap.error.isEmpty() ? StagedRestore::None : StagedRestore::Failed;
}

} // namespace tarvik
