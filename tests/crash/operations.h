#pragma once
// The multi-row writes the crash harness interrupts. Each one seeds a data folder with the rows
// it works on, then runs as the user's action would, answering every question with yes.
#include <QSqlDatabase>
#include <QString>
#include <functional>
#include <vector>

namespace tarvik::crash {

struct Operation {
    QString name;
    QString description;
    // Fills a freshly created and upgraded database with what the operation works on.
    std::function<void(const QSqlDatabase& db, const QString& dataFolder)> seed;
    // Prepares in the worker; the returned action is the write that gets killed.
    std::function<std::function<void()>(const QString& dataFolder)> prepare;
    // What the next start does before it opens the database (a staged restore is swapped in).
    std::function<void(const QString& dataFolder)> atStart = {};
    // Files beside the database that must be whole or absent; an empty answer is fine.
    std::function<QString(const QString& dataFolder)> checkFiles = {};
};

const std::vector<Operation>& operations();

} // namespace tarvik::crash
