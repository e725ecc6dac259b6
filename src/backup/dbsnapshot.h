#pragma once
// The database seen through the engine's own C interface, on connections of their own, so a
// worker thread can copy or check it while the program keeps its handles open.
#include <QString>
#include <functional>

namespace tarvik {

struct SnapshotResult {
    bool ok = false;
    bool cancelled = false;
    QString error; // German
};

// A consistent copy of the database at `source` (write-ahead log included) into the new file
// `target`, through the online backup interface; the copy is a single self-contained file.
// `progress` receives the fraction done and returns false to cancel.
SnapshotResult snapshotDatabase(const QString& source, const QString& target, const std::function<bool(double)>& progress = {});

// Empty when the file is a sound database of this program; else the reason, in German.
QString databaseProblem(const QString& path);

} // namespace tarvik
