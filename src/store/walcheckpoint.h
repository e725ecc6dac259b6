#pragma once
// Copies the write-ahead log back into the database file on a thread of its own, so a typed
// record's commit never waits for that copy and its sync. Every commit is still synced to the
// log before it returns; the copy only keeps the log from growing.
#include <QSqlDatabase>
#include <QString>
#include <condition_variable>
#include <mutex>
#include <thread>

struct sqlite3;

namespace tarvik {

class BackgroundCheckpoint {
public:
    // Log pages after which a copy is started; the engine's own default.
    static constexpr int DuePages = 1000;
    // Should the thread fall this far behind, the committing handle copies itself.
    static constexpr int OverduePages = 20 * DuePages;

    explicit BackgroundCheckpoint(const QString& path);
    ~BackgroundCheckpoint();
    BackgroundCheckpoint(const BackgroundCheckpoint&) = delete;
    BackgroundCheckpoint& operator=(const BackgroundCheckpoint&) = delete;

    // Hands this handle's log copies to the thread; release() gives them back to the engine.
    void watch(const QSqlDatabase& db);
    static void release(const QSqlDatabase& db);

private:
    static int afterCommit(void* self, sqlite3* handle, const char* schema, int pages);
    sqlite3* openedHandle() const;
    void run();

    QByteArray m_path;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_due = false;
    bool m_stop = false;
    std::thread m_thread;
};

} // namespace tarvik
