#include "startsizes.h"

#include "common/consoleprompter.h"
#include "harvests/harvestlist.h"
#include "store/database.h"
#include "store/sql.h"
#include "store/upgrade.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQueryModel>
#include <cstdio>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

namespace tarvik::bench {
namespace {

constexpr int Harvests = 2000;
constexpr int LogsPerBatch = 10000; // about 2.7 MB with the indexes

void exec(sqlite3* db, const char* sql)
{
    char* error = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &error) != SQLITE_OK) {
        std::fprintf(stderr, "%s\n", error ? error : "?");
        sqlite3_free(error);
    }
}

// A new file grown with harvests and batches of logs until it holds `megabytes`.
void buildFile(const QString& path, int megabytes)
{
    createDatabaseFile(path);
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READWRITE, nullptr);
    exec(db, "PRAGMA journal_mode = WAL");
    exec(db, "PRAGMA synchronous = OFF");
    const QByteArray harvests = QStringLiteral(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
        "INSERT INTO Hiebe(Hieb_Nr, Jahr, Waldname, Waldort, Stämme_Anzahl, Stämme_Efm, Teilverkauft, Verkauft) "
        "SELECT i, 2015 + i % 12, 'Wald ' || (i % 40), 'Abteilung ' || (i % 40), 500, 250.5, 'N', 'N' FROM n").arg(Harvests).toUtf8();
    exec(db, harvests.constData());
    qint64 number = 0;
    while (QFileInfo(path).size() + QFileInfo(path + QStringLiteral("-wal")).size() < qint64(megabytes) * 1000 * 1000) {
        const QByteArray logs = QStringLiteral(
            "WITH RECURSIVE n(i) AS (SELECT %1 UNION ALL SELECT i + 1 FROM n WHERE i < %2) "
            "INSERT INTO Stämme(Kennung, Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, Stärke_oR, "
            "Länge_m, Efm_oR, Stärkeklasse, Güteklasse, Käferholz, Holzpreis, Preis_berechnet, Bemerkung) "
            "SELECT 1 + i % %3, 1 + (i / 1000) % 10, i, CASE i % 3 WHEN 0 THEN 'FI (Fichte)' WHEN 1 THEN 'BU (Rotbuche)' ELSE 'EI (Eiche)' END, "
            "20 + i % 40, 'T', 2, 18 + i % 40, 4.5 + (i % 10), 0.2 + (i % 50) / 25.0, 'L2b', 'B', 0, 55.5, 12.5 + i % 90, '' FROM n")
                                    .arg(number + 1).arg(number + LogsPerBatch).arg(Harvests).toUtf8();
        exec(db, "BEGIN");
        exec(db, logs.constData());
        exec(db, "COMMIT");
        exec(db, "PRAGMA wal_checkpoint(TRUNCATE)");
        number += LogsPerBatch;
    }
    sqlite3_close(db);
}

// Drops the file's pages from the operating system's cache, as after a reboot.
void dropFromCache(const QString& path)
{
    for (const QString& p : {path, path + QStringLiteral("-wal")}) {
        const int fd = ::open(QFile::encodeName(p).constData(), O_RDONLY);
        if (fd < 0)
            continue;
        ::fdatasync(fd);
        ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
        ::close(fd);
    }
}

void rawList(const QString& path)
{
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READWRITE, nullptr);
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db, "SELECT * FROM Hiebe", -1, &s, nullptr);
    while (sqlite3_step(s) == SQLITE_ROW)
        for (int c = 0; c < sqlite3_column_count(s); ++c)
            sqlite3_column_text(s, c);
    sqlite3_finalize(s);
    sqlite3_close(db);
}

} // namespace

void programStart(const QString& path, bool checkPagesFirst)
{
    OpenOptions options;
    options.checkPages = checkPagesFirst;
    auto db = Database::openOrCreate(path, options);
    std::FILE* devNull = std::fopen("/dev/null", "w");
    {
        ConsolePrompter quiet(true, devNull);
        upgradeDatabase(db->shared(), quiet);
        QSqlQueryModel model;
        model.setQuery(QSqlQuery(harvestListSql(), db->listHandle()));
        while (model.canFetchMore())
            model.fetchMore();
        harvestStatistics(model);
    }
    std::fclose(devNull);
}

std::vector<Result> startSizeScenarios(const QString& scratchFolder, const QList<int>& sizesMb, int runs)
{
    std::vector<Result> results;
    QDir().mkpath(scratchFolder);
    for (int mb : sizesMb) {
        const QString path = QDir(scratchFolder).filePath(QStringLiteral("start-%1mb.db").arg(mb));
        if (!QFile::exists(path))
            buildFile(path, mb);
        const double actual = double(QFileInfo(path).size()) / (1000 * 1000);
        programStart(path); // brings the file to the current layout before the runs
        for (bool cold : {false, true})
            for (bool checkFirst : {false, true}) {
                // Beside the start as it is, the start that checks every page before it opens.
                Result r;
                r.scenario = QStringLiteral("start, %1 MB file (%2%3)")
                                 .arg(actual, 0, 'f', 0)
                                 .arg(cold ? QStringLiteral("cold") : QStringLiteral("warm"),
                                      checkFirst ? QStringLiteral(", page check first") : QString());
                r.program = measure(runs, [&] {
                    if (cold)
                        dropFromCache(path);
                    programStart(path, checkFirst);
                });
                r.raw = measure(runs, [&] {
                    if (cold)
                        dropFromCache(path);
                    rawList(path);
                });
                results.push_back(r);
            }
    }
    return results;
}

} // namespace tarvik::bench
