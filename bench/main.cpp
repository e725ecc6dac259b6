// tarvik-bench: how the program's work grows with its data, beside the bare database doing the
// same minimal work on the same file.
#include "measure.h"

#include "common/clock.h"
#include "common/consoleprompter.h"
#include "common/germanlocale.h"
#include "entry/logentry.h"
#include "rules/masterdatalookup.h"
#include "store/database.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/upgrade.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <sqlite3.h>

using namespace tarvik;

namespace {

const QStringList Species{QStringLiteral("FI (Fichte)"), QStringLiteral("KI (Kiefer)"), QStringLiteral("BU (Rotbuche)"),
                          QStringLiteral("EI (Eiche)"), QStringLiteral("DO (Douglasie)")};
const QStringList Qualities{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D")};

LogForm randomLog(QRandomGenerator& random, qint32 lot)
{
    LogForm f;
    f.losNr = QString::number(lot);
    f.laufendeNr = QStringLiteral("0");
    f.species = Species[random.bounded(int(Species.size()))];
    f.quality = Qualities[random.bounded(int(Qualities.size()))];
    f.measuredDiameter = QString::number(10 + random.bounded(71));
    f.length = QString::number(2 + random.bounded(19));
    f.mode = BarkMode::Tabelle;
    return f;
}

// A harvest of `logs` logs in lots of 1,000, stored through the program's own log store.
qint32 buildHarvest(const AppContext& ctx, MasterDataLookup& masterData, int logs, QRandomGenerator& random)
{
    const qint32 harvest = execSql(ctx.db, QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr, Waldname) VALUES (1, '2026', 'Benchmark')"))
                               .lastInsertId().toInt();
    for (int lot = 1; lot <= (logs + 999) / 1000; ++lot)
        createLot(ctx.db, harvest, lot, QStringLiteral("Stämme"));
    TransactionGuard guard(ctx.db); // one transaction for the set-up, not one per log
    QSqlQuery insert = prepareSql(ctx.db, QStringLiteral(
        "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, Stärke_oR, Länge_m, "
        "Efm_oR, Stärkeklasse, Güteklasse, Kennung) VALUES (?, ?, ?, ?, 'T', ?, ?, ?, ?, ?, ?, ?)"));
    for (int i = 0; i < logs; ++i) {
        LogForm f = randomLog(random, 1 + i / 1000);
        recomputeLog(f, masterData);
        execPrepared(insert, {1 + i / 1000, i + 1, f.species, f.measuredDiameter.toInt(), f.deduction.toInt(), f.underBark.toInt(),
                              f.length.toDouble(), f.volume.replace(u',', u'.').toDouble(), f.diameterClass, f.quality, harvest});
    }
    guard.commit();
    return harvest;
}

bench::Result logStore(const QString& path, int harvestLogs, int runs)
{
    bench::Result result;
    result.scenario = QStringLiteral("log store + totals (%1 logs)").arg(harvestLogs);
    qint32 harvest = 0;
    {
        auto db = Database::openOrCreate(path);
        std::FILE* devNull = std::fopen("/dev/null", "w");
        ConsolePrompter quiet(true, devNull);
        upgradeDatabase(db->shared(), quiet);
        Einstellungen settings = EinstellungenLaden(QString());
        SystemClock clock;
        const AppContext ctx{db->shared(), settings, QString(), quiet, clock};
        MasterDataLookup masterData(ctx.db);
        QRandomGenerator random(20261121);
        harvest = buildHarvest(ctx, masterData, harvestLogs, random);

        // Each store commits on its own, synced, as a typed log does.
        result.program = bench::measure(runs, [&] {
            LogForm f = randomLog(random, 1 + random.bounded(harvestLogs / 1000));
            f.laufendeNr = QString::number(nextRunningNumber(ctx.db, settings, harvest, f.losNr.toInt(), QString()));
            storeLog(ctx, masterData, harvest, f, std::nullopt);
        });
        std::fclose(devNull);
    }

    // The bare minimum of the same work: one committed row through the C API.
    sqlite3* raw = nullptr;
    sqlite3_open(path.toUtf8().constData(), &raw);
    sqlite3_exec(raw, "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL;", nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(raw, "INSERT INTO \"Stämme\"(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Länge_m, Efm_oR, Kennung) "
                            "VALUES (1, ?, 'FI (Fichte)', 35, 4.5, 0.385, ?)", -1, &insert, nullptr);
    int number = 900000;
    result.raw = bench::measure(runs, [&] {
        sqlite3_exec(raw, "BEGIN", nullptr, nullptr, nullptr);
        sqlite3_bind_int(insert, 1, ++number);
        sqlite3_bind_int(insert, 2, harvest);
        sqlite3_step(insert);
        sqlite3_reset(insert);
        sqlite3_exec(raw, "COMMIT", nullptr, nullptr, nullptr);
    });
    sqlite3_finalize(insert);
    sqlite3_close(raw);
    return result;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    useGermanLocale();
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("TARVIK benchmark"));
    parser.addHelpOption();
    const QCommandLineOption logs(QStringLiteral("stämme"), QStringLiteral("Stämme im Hieb"), QStringLiteral("N"), QStringLiteral("10000"));
    const QCommandLineOption runs(QStringLiteral("durchläufe"), QStringLiteral("Wiederholungen"), QStringLiteral("N"), QStringLiteral("1000"));
    parser.addOptions({logs, runs});
    parser.process(app);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("TARVIK3.db"));
    std::vector<bench::Result> results;
    results.push_back(logStore(path, std::max(1000, parser.value(logs).toInt()), std::max(10, parser.value(runs).toInt())));
    bench::report(results, bench::peakResidentKb());
    return 0;
}
