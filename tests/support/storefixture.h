#pragma once
// Files as bytes, plain engine connections as another program or an older layout has them,
// and the rows of a database as text, for the store and backup tests.
#include <QByteArray>
#include <QCryptographicHash>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>
#include <QtTest>

namespace tarvik::test {

inline void writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(path));
    f.write(bytes);
}

inline QByteArray readBytes(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline QByteArray sha256(const QString& path) { return QCryptographicHash::hash(readBytes(path), QCryptographicHash::Sha256); }

// A connection of the engine's own to the file for the time of work, with nothing of ours
// run at opening.
template <typename Work>
void withPlainConnection(const QString& path, Work work)
{
    const QString name = QStringLiteral("plain");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        if (!db.open())
            qFatal("cannot open %s", qPrintable(path));
        work(db);
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
}

// Every row of every table, in a fixed order, as text: two databases with the same dump hold
// the same data.
inline QStringList dumpRows(const QSqlDatabase& db)
{
    QStringList out;
    QSqlQuery tables(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%' ORDER BY name"), db);
    QStringList names;
    while (tables.next())
        names << tables.value(0).toString();
    for (const QString& table : names) {
        QSqlQuery rows(QStringLiteral("SELECT * FROM \"%1\" ORDER BY rowid").arg(table), db);
        while (rows.next()) {
            QString line = table;
            for (int c = 0; c < rows.record().count(); ++c)
                line += u'|' + rows.value(c).toString();
            out << line;
        }
    }
    return out;
}

inline QStringList dumpRows(const QString& path)
{
    QStringList rows;
    withPlainConnection(path, [&](const QSqlDatabase& db) { rows = dumpRows(db); });
    return rows;
}

} // namespace tarvik::test
