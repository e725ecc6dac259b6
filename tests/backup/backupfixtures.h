#pragma once
// Archives made by hand for the backup tests, and the file checks they need.
#include <QByteArray>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QList>
#include <QProcess>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QString>
#include <QStringList>
#include <utility>
#include <zip.h>

#include "backup/dbsnapshot.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QSqlDatabase>
#include <QTemporaryDir>

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
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
}

inline QByteArray sha256(const QString& path) { return QCryptographicHash::hash(readBytes(path), QCryptographicHash::Sha256); }

// Names and contents, exactly as given: the writer does not clean up names.
inline void makeZip(const QString& path, const QList<std::pair<QString, QByteArray>>& entries)
{
    int code = 0;
    zip_t* archive = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!archive)
        qFatal("zip_open %d", code);
    QList<QByteArray> keep;
    for (const auto& [name, bytes] : entries) {
        keep.append(bytes);
        zip_source_t* source = zip_source_buffer(archive, keep.last().constData(), zip_uint64_t(keep.last().size()), 0);
        if (zip_file_add(archive, name.toUtf8().constData(), source, ZIP_FL_ENC_UTF_8) < 0)
            qFatal("zip_file_add %s", zip_strerror(archive));
    }
    if (zip_close(archive) != 0)
        qFatal("zip_close");
}

// Exit code and output of a command-line tool.
inline std::pair<int, QString> run(const QString& program, const QStringList& arguments, const QString& folder = {})
{
    QProcess p;
    if (!folder.isEmpty())
        p.setWorkingDirectory(folder);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, arguments);
    if (!p.waitForFinished(120000))
        return {-1, QStringLiteral("timeout")};
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, QString::fromLocal8Bit(p.readAll())};
}

// Every row of every table of a database, in a fixed order, as text: two databases with the
// same dump hold the same data.
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

// A database of this program with one harvest, as one file.
inline QByteArray goodDatabase()
{
    TempDataFolder folder;
    {
        auto db = folder.openDatabase();
        addHarvest(db->shared(), 1);
    }
    QTemporaryDir dir;
    const QString copy = dir.filePath(QStringLiteral("copy.db"));
    if (!snapshotDatabase(folder.databasePath(), copy).ok)
        qFatal("snapshot");
    return readBytes(copy);
}

// An archive of the given kind: "corrupt", "truncated", "empty", "link", "foreign", "baddb",
// "otherdb", or else one with an entry of that name beside a sound database.
inline void makeBadArchive(const QString& kind, const QString& path, const QTemporaryDir& dir)
{
    const QByteArray database = goodDatabase();
    if (kind == QLatin1String("corrupt") || kind == QLatin1String("truncated")) {
        makeZip(path, {{QStringLiteral("TARVIK3.db"), database}, {QStringLiteral("Einstellungen.tk3"), "0\r\n"}});
        QByteArray bytes = readBytes(path);
        if (kind == QLatin1String("truncated"))
            bytes.truncate(bytes.size() / 2);
        else
            for (int i = 200; i < 260; ++i)
                bytes[i] = char(bytes[i] ^ 0x5a);
        writeBytes(path, bytes);
    } else if (kind == QLatin1String("empty")) {
        writeBytes(path, QByteArray());
    } else if (kind == QLatin1String("link")) {
        const QString folder = dir.filePath(QStringLiteral("quelle"));
        QDir().mkpath(folder);
        writeBytes(folder + QStringLiteral("/TARVIK3.db"), database);
        QFile::link(QStringLiteral("/etc/passwd"), folder + QStringLiteral("/Einstellungen.tk3"));
        const auto [code, output] = run(QStringLiteral("zip"), {QStringLiteral("-q"), QStringLiteral("-y"), path,
                                                                      QStringLiteral("TARVIK3.db"), QStringLiteral("Einstellungen.tk3")}, folder);
        QVERIFY2(code == 0, qPrintable(output));
    } else if (kind == QLatin1String("foreign")) {
        const QString folder = dir.filePath(QStringLiteral("fremd"));
        QDir().mkpath(folder);
        writeBytes(folder + QStringLiteral("/bild.txt"), "Urlaub");
        const auto [code, output] = run(QStringLiteral("zip"), {QStringLiteral("-q"), path, QStringLiteral("bild.txt")}, folder);
        QVERIFY2(code == 0, qPrintable(output));
    } else if (kind == QLatin1String("baddb")) {
        QByteArray broken = database;
        for (int i = 4096; i < broken.size(); i += 97)
            broken[i] = char(0xff);
        makeZip(path, {{QStringLiteral("TARVIK3.db"), broken}});
    } else if (kind == QLatin1String("otherdb")) {
        const QString other = dir.filePath(QStringLiteral("other.db"));
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("other"));
            db.setDatabaseName(other);
            QVERIFY(db.open());
            execSql(db, QStringLiteral("CREATE TABLE Kunden(Name TEXT)"));
        }
        QSqlDatabase::removeDatabase(QStringLiteral("other"));
        makeZip(path, {{QStringLiteral("TARVIK3.db"), readBytes(other)}});
    } else {
        makeZip(path, {{QStringLiteral("TARVIK3.db"), database}, {kind, "boese"}});
    }
}

} // namespace tarvik::test
