#include "store/privateconnection.h"

#include "store/collation.h"

#include <QUuid>

namespace tarvik {

PrivateConnection::PrivateConnection(const QString& path, const QString& purpose, int busyTimeoutMs)
    : m_name(QStringLiteral("tarvik-%1-%2").arg(purpose, QUuid::createUuid().toString(QUuid::WithoutBraces)))
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    db.setDatabaseName(path);
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(busyTimeoutMs));
    m_ok = db.open() && registerGermanCollation(db);
}

PrivateConnection::~PrivateConnection() { close(); }

QSqlDatabase PrivateConnection::db() const { return QSqlDatabase::database(m_name, false); }

void PrivateConnection::close()
{
    if (!QSqlDatabase::contains(m_name))
        return;
    QSqlDatabase::database(m_name, false).close();
    QSqlDatabase::removeDatabase(m_name);
}

} // namespace tarvik
