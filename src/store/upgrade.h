#pragma once
// Brings a file of an older layout up to the current one. Every step tests before it
// changes, so a current file passes through untouched; each step is one transaction, and a
// copy of the file is kept beside it before the first change of its layout.
#include "common/prompter.h"

#include <QDate>
#include <QSqlDatabase>
#include <QStringList>

namespace tarvik {

struct UpgradeReport {
    QStringList changes;  // one German line per change made; empty for a current file
    QStringList failures; // one German line per step that could not be done
    QString backupPath;   // the copy of the file as it was before; empty when nothing needed one
    QString logPath;      // the log file the changes and failures were appended to; empty when none
    bool importedFromVersion2 = false;
    int barkRangesAdded = 0;
    bool layoutChanged() const { return !backupPath.isEmpty(); }
};

// Start-up adds the harvester column right after opening, after keeping a copy of the file;
// true when it was missing.
bool ensureHarvesterColumn(const QSqlDatabase& db, const QDate& today = QDate::currentDate());

// True when every table, column and index of the current layout is in the file (the class
// columns SK_/GK_ follow the class tables and are not part of this check).
bool layoutIsCurrent(const QSqlDatabase& db);

// The name of the copy kept before an upgrade: "<Datei>.vor-Aktualisierung-<Datum>.db" beside
// the file, with "-2", "-3" ... when that day already has one.
QString backupPathBeforeUpgrade(const QString& databasePath, const QDate& today);

// The log beside the database that keeps what an upgrade changed and what failed, with table,
// column and index names: "Aktualisierung.log".
inline constexpr char UpgradeLogName[] = "Aktualisierung.log";
QString upgradeLogPath(const QSqlDatabase& db);

// The upgrade run after the main window's first activation (and by "tarvik-cli init").
// Shows the import message once when the file came from the previous major version, and one
// warning when a step failed; the steps themselves go to the upgrade log, not into a message.
UpgradeReport upgradeDatabase(const QSqlDatabase& db, Prompter& prompter, const QDate& today = QDate::currentDate());

} // namespace tarvik
