#pragma once
// "Datenübernahme aus TARVIK 2.0": the old folder's settings, remembered files and database
// come into the data folder; the database is converted from its Jet file into a new file that
// the next start brings up to date.
#include "common/prompter.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace tarvik {

inline constexpr char Version2DatabaseName[] = "tarvik2.mdb";

QString takeoverFolderLabel();
QString version2FoundMessage();
QString version2MissingMessage();
QString driveUnreachableMessage();

// The two folders the old program used, where they exist on this machine.
QStringList usualVersion2Folders();

// The old database in the folder (its name in any letter case), or empty.
QString version2Database(const QString& folder);

struct TakeoverResult {
    bool done = false;
    QStringList copied; // target file names
    QString message;    // the closing message or why nothing was copied
};

// Asks both confirmations, converts and copies. Nothing is changed unless both pass and the old
// database converts completely; the current database is replaced with one rename at the end.
// beforeReplace runs once everything is staged, right before the files are swapped: the caller
// closes its handles on the database there.
TakeoverResult takeOverVersion2(const QString& oldFolder, const QString& dataFolder, const QString& databasePath,
                                bool currentHasHarvests, Prompter& prompter, const std::function<void()>& beforeReplace = {});

} // namespace tarvik
