#pragma once
// Writing the exchange files of chosen harvests and the master data file into a folder.
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace tarvik {
class Prompter;
}

namespace tarvik::exchange {

// The harvests marked "X" in `Selektiert`, in the order of the harvest list.
QList<qint32> selectedHarvestIds(const QSqlDatabase& db);

struct ExportOutcome {
    bool written = false;
    QStringList files; // names of the files written, the master data file last
};

// The selection check, the question, the removal of old exchange files, one file per harvest
// and the master data file. Stops with its message when nothing is selected, the user
// declines or a file cannot be written.
ExportOutcome writeExportFiles(const QSqlDatabase& db, const QString& folder, Prompter& prompter, const QList<qint32>& harvestIds);

// The export for another installation, closed by the message that says where the files are.
ExportOutcome exportToInstallation(const QSqlDatabase& db, const QString& folder, Prompter& prompter,
                                   const QList<qint32>& harvestIds);

} // namespace tarvik::exchange
