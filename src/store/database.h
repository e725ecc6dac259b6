#pragma once
// The database file: created with its master data when missing, checked before it is
// touched, opened with two handles that can both read and write.
#include "common/folders.h"
#include "common/storeerror.h"

#include <QSqlDatabase>
#include <QString>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace tarvik {

class BackgroundCheckpoint;

// How long a statement waits for another program's write lock before it gives up.
inline constexpr int DefaultBusyTimeoutMs = 10000;

struct OpenOptions {
    int busyTimeoutMs = DefaultBusyTimeoutMs;
    // Every page checked before the file is opened (about 2.5 ms per MiB, ten times that from
    // a cold disk). Left off, opening reads the header and the table list only, whatever the
    // file's size, and the check of the pages runs where it does not hold up the user
    // (PageCheck); damage a statement meets before is reported as damage all the same.
    bool checkPages = false;
};

class Database {
public:
    // Opens the file, or creates it when it does not exist. Before anything is written the
    // file is checked: not a database of this program, damaged (its header and table list; its
    // pages with options.checkPages), locked by another program, or not writable each end in a
    // StoreError with its own German message naming the file; such a file is left untouched.
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

// The check of every page of the file (SQLite's quick check) on a read-only connection of its
// own: the damage it found, in the words opening uses for it, or nothing.
std::optional<StoreError> checkPages(const QString& path);

// checkPages on a thread of its own, so that the program shows its main list at once. Damage
// is handed to onDamage, on the check's thread; a check still running when the object goes is
// stopped.
class PageCheck {
public:
    using Report = std::function<void(const StoreError&)>;
    PageCheck(const QString& path, Report onDamage);
    ~PageCheck();
    PageCheck(const PageCheck&) = delete;
    PageCheck& operator=(const PageCheck&) = delete;

    // Waits until the check is through; what it found.
    std::optional<StoreError> wait();

private:
    void run();

    QString m_path;
    Report m_onDamage;
    std::atomic_bool m_stop = false;
    std::optional<StoreError> m_found;
    std::thread m_thread;
};

// The note shown after a new file was created.
QString masterDataNote();

// Creates a new file at path with every table, index and default row, in one go: the file
// appears complete or not at all. Throws StoreError.
void createDatabaseFile(const QString& path);

} // namespace tarvik
