#pragma once
// The handheld transfer: the exchange files are copied between the data folder and a folder of
// the handheld (a mounted device or a synchronised folder) chosen in the settings.
#include "exchange/exportfiles.h"
#include "settings/settings.h"

#include <QSqlDatabase>
#include <QString>

namespace tarvik {
class Prompter;
}

namespace tarvik::exchange {

QString handheldFolder(const Einstellungen& settings);
// Whether the folder is set, exists and can be read and written.
bool handheldReachable(const QString& folder);

struct CopyResult {
    int copied = 0;
    QStringList failed;  // file names
    QStringList already; // file names that already are the target file (the same folder reached twice)
};
// Copies every "*Tarvik_Export.f10" of one folder into the other, replacing older copies. Each
// copy is written under a temporary name and only then replaces the old file, so a broken copy
// leaves the old file whole; a file that is its own target is left alone.
CopyResult copyExchangeFiles(const QString& from, const QString& to);

// Export, the question whether to copy to the handheld, and the copy.
ExportOutcome exportToHandheld(const QSqlDatabase& db, const QString& dataFolder, const Einstellungen& settings,
                               Prompter& prompter, const QList<qint32>& harvestIds);

// The copy from the handheld into the data folder before the import list is built again.
// Without a reachable handheld folder the import goes on with the files already there.
CopyResult copyFromHandheld(const QString& dataFolder, const Einstellungen& settings, Prompter& prompter);

} // namespace tarvik::exchange
