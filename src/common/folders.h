#pragma once
// Where the program's files and the user's data live.
#include <QString>

namespace tarvik {

inline constexpr char DataFolderEnv[] = "TARVIK_DATEN";

// The database file in the data folder.
inline constexpr char DatabaseFileName[] = "TARVIK3.db";

// The database file or one of the engine's files beside it ("-wal", "-shm", "-journal"), by
// name alone. Only the engine may open these: closing any other handle on them would release
// the engine's locks, which belong to the whole process.
bool isDatabaseFile(const QString& path);

// The folder of the running program, ending in "/".
QString programFolder();
// Files shipped with the program (help file, read-me, seed files), seeded into a new data folder.
QString shareFolder();
// The same for a given program folder: "../share/tarvik/" from it, so that an installed package
// (/usr/bin, /usr/share/tarvik), a relocated copy and the build tree all find their files.
QString shareFolderFor(const QString& programFolder);

// The default data folder for a program folder. On Windows: the program's drive followed by
// ":/Daten/Forstsoftware_TARVIK3/"; elsewhere below the home folder. Always ends in "/".
QString defaultDataFolder(const QString& programFolder, const QString& homeFolder, bool windows);

// The option --daten wins over the environment variable, which wins over the default.
QString resolveDataFolder(const QString& option, const QString& environment,
                          const QString& programFolder, const QString& homeFolder, bool windows);
QString resolveDataFolder(const QString& option); // with this process's environment

struct DataFolderResult {
    bool ok = false;
    bool created = false;
    QString error; // German
};

// Creates the data folder when missing and seeds it with every file of the share folder
// except the program itself; then makes every file in it writable for its owner.
DataFolderResult prepareDataFolder(const QString& dataFolder, const QString& shareFolder);

} // namespace tarvik
