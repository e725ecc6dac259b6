#include "store/walcheckpoint.h"

#include "store/sql.h"

#include <sqlite3.h>

namespace tarvik {

BackgroundCheckpoint::BackgroundCheckpoint(const QString& path) : m_path(path.toUtf8()), m_thread([this] { run(); }) {}

BackgroundCheckpoint::~BackgroundCheckpoint()
{
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void BackgroundCheckpoint::watch(const QSqlDatabase& db)
{
    if (sqlite3* handle = sqliteHandle(db))
        sqlite3_wal_hook(handle, &BackgroundCheckpoint::afterCommit, this);
}

void BackgroundCheckpoint::release(const QSqlDatabase& db)
{
    if (sqlite3* handle = sqliteHandle(db))
        sqlite3_wal_autocheckpoint(handle, DuePages);
}

int BackgroundCheckpoint::afterCommit(void* self, sqlite3* handle, const char* schema, int pages)
{
    if (pages >= OverduePages) {
        sqlite3_wal_checkpoint_v2(handle, schema, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
    } else if (pages >= DuePages) {
        auto* checkpoint = static_cast<BackgroundCheckpoint*>(self);
        {
            std::lock_guard lock(checkpoint->m_mutex);
            checkpoint->m_due = true;
        }
        checkpoint->m_wake.notify_one();
    }
    return SQLITE_OK;
}

sqlite3* BackgroundCheckpoint::openedHandle() const
{
    sqlite3* handle = nullptr;
    if (sqlite3_open_v2(m_path.constData(), &handle, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        sqlite3_close(handle);
        return nullptr; // the overdue copy on the committing handle takes over
    }
    sqlite3_exec(handle, "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr);
    return handle;
}

void BackgroundCheckpoint::run()
{
    sqlite3* handle = nullptr;
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_due || m_stop; });
        if (m_stop)
            break;
        m_due = false;
        lock.unlock();
        if (!handle)
            handle = openedHandle();
        // Passive: readers and the next writer go on meanwhile; what is left is copied next time.
        if (handle)
            sqlite3_wal_checkpoint_v2(handle, "main", SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
        lock.lock();
    }
    lock.unlock();
    sqlite3_close(handle);
}

} // namespace tarvik
