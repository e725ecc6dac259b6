#pragma once
// Taking exchange files over into the database: the files on offer, the import of the chosen
// ones (each file one transaction) and the report that closes it.
#include "settings/settings.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {
class Prompter;
}

namespace tarvik::exchange {

// Harvest files of the folder whose harvest record is marked new ("N") or changed ("A"),
// by name; the master data file is never offered.
QStringList candidateFiles(const QString& folder);

// None ticked: the question whether all should be taken; nullopt when the user declines.
std::optional<QStringList> filesToImport(Prompter& prompter, const QStringList& ticked, const QStringList& offered);

struct ImportCounts {
    int harvests = 0;
    int lots = 0;
    int logs = 0;
    int poles = 0;
    int sections = 0;
    ImportCounts& operator+=(const ImportCounts& o);
};

struct ImportReport {
    ImportCounts counts;
    QStringList messages;      // renumberings, skipped records, refused files, in order
    QStringList importedFiles; // file names
    QStringList refusedFiles;  // file names
    QList<qint32> harvestIds;  // of the harvests created
};

// Imports the files in the given order. A file that cannot be read or stored leaves nothing
// of itself; the others are still imported.
ImportReport importFiles(const QSqlDatabase& db, const Einstellungen& settings, const QStringList& paths);

// The closing count message, with the lines about the prices when logs were imported.
QString closingMessage(const ImportCounts& counts);
// The messages of the import, each on its own when few, gathered into one report when many,
// then the closing message.
void showImportReport(Prompter& prompter, const ImportReport& report);

} // namespace tarvik::exchange
