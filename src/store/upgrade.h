#pragma once
// Brings a file of an older layout up to the current one. Every step tests before it
// changes, so a current file passes through untouched; each step is one transaction.
#include "common/prompter.h"

#include <QSqlDatabase>
#include <QStringList>

namespace tarvik {

struct UpgradeReport {
    QStringList changes; // one German line per change made; empty for a current file
    bool importedFromVersion2 = false;
    int barkRangesAdded = 0;
};

// Start-up adds the harvester column right after opening; true when it was missing.
bool ensureHarvesterColumn(const QSqlDatabase& db);

// The upgrade run after the main window's first activation (and by "tarvik-cli init").
// Shows the import message once when the file came from the previous major version.
UpgradeReport upgradeDatabase(const QSqlDatabase& db, Prompter& prompter);

} // namespace tarvik
