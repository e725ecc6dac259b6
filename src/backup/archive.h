#pragma once
// The backup archive: one ZIP file a day holding the files of the data folder and a consistent
// copy of the database, written under a temporary name, read back and only then put in place.
#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace tarvik {

inline constexpr char ArchivePrefix[] = "TARVIK30_backup_";
// The archives on the hard disk live in this subfolder of the data folder.
inline constexpr char LocalArchiveFolderName[] = "Datensicherungen";
inline constexpr int ArchivesKept = 3;

// Percent done of the current stage and what is being done; returning false cancels the work.
using ProgressFn = std::function<bool(int percent, const QString& stage)>;

// "TARVIK30_backup_2026_11_23.zip"
QString archiveName(const QDate& date);
// The date in an archive's file name; nullopt for any other name.
std::optional<QDate> archiveDate(const QString& fileName);

// Whether a file of the data folder goes into the archive: program files, documents and
// earlier archives stay out, and so do the database's own files, which are captured apart,
// and the copies kept before an upgrade.
bool belongsInArchive(const QString& fileName);
// The file names of the data folder that go into the archive, sorted.
QStringList filesToArchive(const QString& dataFolder);

QString localArchiveFolder(const QString& dataFolder); // ends in "/"

struct ArchiveResult {
    bool ok = false;
    bool cancelled = false;
    QString error; // German
    int entries = 0;
    qint64 size = 0;
};

// Writes the archive of the data folder to archivePath, checks it and renames it into place;
// an archive already at that path is replaced only by a checked one. Safe to call from a
// worker thread: the database is read through its own connection.
ArchiveResult writeArchive(const QString& dataFolder, const QString& archivePath, const ProgressFn& progress = {});

struct ArchiveCheck {
    bool ok = false;
    bool cancelled = false;
    QString error;   // German
    QStringList names;
    qint64 uncompressedSize = 0;
};

// Reads every entry back and compares its CRC, refuses names that are not plain file names
// and links, and checks the database inside with the engine's integrity check. With
// extractTo set, the entries are written into that existing folder on the way.
ArchiveCheck checkArchive(const QString& archivePath, const ProgressFn& progress = {}, const QString& extractTo = {});

// A file name as libzip takes it on this platform.
QByteArray zipPath(const QString& path);

// Plain file name: no folder part, no drive letter, no "..", nothing hidden.
bool isPlainEntryName(const QString& name);

struct ArchiveInfo {
    QString path;
    QString fileName;
    QDate date;
    qint64 size = 0;
    QDateTime modified;
};

// The archives of a folder, newest first.
QList<ArchiveInfo> listArchives(const QString& folder);
// Deletes all but the `keep` newest archives of the folder; the number deleted.
int removeOlderArchives(const QString& folder, int keep = ArchivesKept);

// Copies a file through a temporary name and reads the copy back before it takes the name;
// a partial copy never stays behind.
struct CopyResult {
    bool ok = false;
    bool cancelled = false;
    QString error; // German
    QString path;
};
CopyResult copyVerified(const QString& source, const QString& targetFolder, const ProgressFn& progress = {});

} // namespace tarvik
