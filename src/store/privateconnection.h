#pragma once
// A database handle of its own for work beside the program's two handles (compaction, a file
// being converted); closed and removed on every way out.
#include <QSqlDatabase>
#include <QString>

namespace tarvik {

class PrivateConnection {
public:
    // Opens path (creating it when missing); ok() tells whether it opened.
    PrivateConnection(const QString& path, const QString& purpose, int busyTimeoutMs = 500);
    ~PrivateConnection();
    PrivateConnection(const PrivateConnection&) = delete;
    PrivateConnection& operator=(const PrivateConnection&) = delete;

    bool ok() const { return m_ok; }
    QSqlDatabase db() const;
    // Closes early; every QSqlDatabase copy taken from db() must be gone by then.
    void close();

private:
    QString m_name;
    bool m_ok = false;
};

} // namespace tarvik
