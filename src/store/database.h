#pragma once
// The database file: created with its master data when missing, checked before it is
// touched, opened with two handles that can both read and write.
#include "common/folders.h"

#include <QSqlDatabase>
#include <QString>
#include <memory>

namespace tarvik {

class BackgroundCheckpoint;

// How long a statement waits for another program's write lock before it gives up.
inline constexpr int DefaultBusyTimeoutMs = 10000;

struct OpenOptions {
    int busyTimeoutMs = DefaultBusyTimeoutMs;
    // Up to this size every page is checked on opening (about 2.5 ms per MiB). A larger file
    // has its small tables checked; the log, pole and section tables, which make up its bulk,
    // are not, and damage in them is reported as damage when a statement meets it.
    qint64 fullPageCheckBytes = 64LL * 1024 * 1024;
};

class Database {
public:
    // Opens the file, or creates it when it does not exist. Before anything is written the
    // file is checked: not a database of this program, damaged (quick check of its pages),
    // locked by another program, or not writable each end in a StoreError with its own German
    // message naming the file; such a file is left untouched.
    static std::unique_ptr<Database> openOrCreate(const QString& path, const OpenOptions& options = {});
    ~Database();

    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // The handle all windows and commands use.
    QSqlDatabase shared() const;
    // The main window's list keeps its own handle on the same file.
    QSqlDatabase listHandle() const;
    bool newlyCreated() const { return m_created; }
    const QString& path() const { return m_path; }

private:
    Database(const QString& path, bool created, int busyTimeoutMs);
    QString m_path;
    QString m_sharedName;
    QString m_listName;
    bool m_created;
    std::unique_ptr<BackgroundCheckpoint> m_checkpoint;
};

// The note shown after a new file was created.
QString masterDataNote();

// Creates a new file at path with every table, index and default row, in one go: the file
// appears complete or not at all. Throws StoreError.
void createDatabaseFile(const QString& path);

} // namespace tarvik
