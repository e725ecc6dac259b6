// tarvik-bench: how the program's work grows with its data, beside the bare database doing the
// same minimal work on the same file.
#include "backup.h"
#include "exchangeimport.h"
#include "harvesterimport.h"
#include "generator.h"
#include "listscenarios.h"
#include "measure.h"
#include "startsizes.h"

#include "harvests/harvestlist.h"
#include "common/consoleprompter.h"
#include "common/germanlocale.h"
#include "entry/logentry.h"
#include "reports/timberlist.h"
#include "rules/masterdatalookup.h"
#include "store/database.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"
#include "store/upgrade.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <functional>
#include <sqlite3.h>

using namespace tarvik;

namespace {

constexpr qint32 LargeHarvestNumber = 900001;

struct Raw {
    sqlite3* db = nullptr;
    explicit Raw(const QString& path) { sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READWRITE, nullptr); }
    ~Raw() { sqlite3_close(db); }
    // Steps through every row, reading every column as text, as a report would.
    int rows(const char* sql, std::initializer_list<int> values = {})
    {
        sqlite3_stmt* s = nullptr;
        sqlite3_prepare_v2(db, sql, -1, &s, nullptr);
        int i = 0;
        for (int v : values)
            sqlite3_bind_int(s, ++i, v);
        int n = 0;
        while (sqlite3_step(s) == SQLITE_ROW) {
            for (int c = 0; c < sqlite3_column_count(s); ++c)
                sqlite3_column_text(s, c);
            ++n;
        }
        sqlite3_finalize(s);
        return n;
    }
};

// The timber list's own queries, without the program around them.
void rawTimberList(Raw& raw, int harvest)
{
    raw.rows("SELECT * FROM Hiebe WHERE ID = ?", {harvest});
    raw.rows("SELECT Los_Nr, Anzahl_Stämme, Efm_oR, Preis_berechnet, Los_Bezeichnung, Lagerort FROM Lose WHERE Kennung = ? "
             "AND Sortierung = 'Stämme' ORDER BY Los_Nr", {harvest});
    raw.rows("SELECT sum(Anzahl_Stämme), sum(Efm_oR), sum(Preis_berechnet) FROM Lose WHERE Kennung = ? AND Sortierung = 'Stämme'", {harvest});
    sqlite3_stmt* lots = nullptr;
    sqlite3_prepare_v2(raw.db, "SELECT Los_Nr FROM Lose WHERE Kennung = ? AND Sortierung = 'Stämme'", -1, &lots, nullptr);
    sqlite3_bind_int(lots, 1, harvest);
    const char* perLot[] = {
        "SELECT sum(Efm_oR) FROM Stämme WHERE Kennung = ? AND Los_Nr = ?",
        "SELECT Baumart, Güteklasse, Stärkeklasse, count(*), sum(Efm_oR), avg(Länge_m), sum(Preis_berechnet) FROM Stämme "
        "WHERE Kennung = ? AND Los_Nr = ? GROUP BY Baumart, Güteklasse, Stärkeklasse ORDER BY Baumart, Güteklasse, Stärkeklasse",
        "SELECT Baumart, Güteklasse, count(*), sum(Efm_oR), avg(Länge_m), sum(Preis_berechnet) FROM Stämme "
        "WHERE Kennung = ? AND Los_Nr = ? GROUP BY Baumart, Güteklasse ORDER BY Baumart, Güteklasse",
        "SELECT Baumart, Stärkeklasse, count(*), sum(Efm_oR), avg(Länge_m), sum(Preis_berechnet) FROM Stämme "
        "WHERE Kennung = ? AND Los_Nr = ? GROUP BY Baumart, Stärkeklasse ORDER BY Baumart, Stärkeklasse",
        "SELECT Baumart, count(*), sum(Efm_oR), avg(Länge_m), sum(Preis_berechnet) FROM Stämme "
        "WHERE Kennung = ? AND Los_Nr = ? GROUP BY Baumart ORDER BY Baumart",
        "SELECT count(*), sum(Efm_oR), avg(Länge_m), sum(Preis_berechnet) FROM Stämme WHERE Kennung = ? AND Los_Nr = ?",
        "SELECT Güteklasse, Stärkeklasse, sum(Efm_oR) FROM Stämme WHERE Kennung = ? AND Los_Nr = ? "
        "GROUP BY Güteklasse, Stärkeklasse ORDER BY Güteklasse, Stärkeklasse",
        "SELECT Güteklasse, sum(Efm_oR) FROM Stämme WHERE Kennung = ? AND Los_Nr = ? GROUP BY Güteklasse ORDER BY Güteklasse",
        "SELECT Stärkeklasse, sum(Efm_oR) FROM Stämme WHERE Kennung = ? AND Los_Nr = ? GROUP BY Stärkeklasse ORDER BY Stärkeklasse",
        "SELECT sum(Efm_oR) FROM Stämme WHERE Kennung = ? AND Los_Nr = ?",
        "SELECT Laufende_Nr, Baumart, Stärke_gemessen, Länge_m, Efm_oR, Stärkeklasse, Güteklasse FROM Stämme "
        "WHERE Kennung = ? AND Los_Nr = ? ORDER BY Laufende_Nr, ID",
    };
    while (sqlite3_step(lots) == SQLITE_ROW) {
        const int lot = sqlite3_column_int(lots, 0);
        for (const char* sql : perLot)
            raw.rows(sql, {harvest, lot});
    }
    sqlite3_finalize(lots);
    raw.rows("SELECT Los_Nr, Anzahl_Pfähle, Los_Bezeichnung, Lagerort FROM Lose WHERE Kennung = ? AND Sortierung = 'Pfähle'", {harvest});
    raw.rows("SELECT Los_Nr, Efm_Schichtholz, m3_Schichtholz, Los_Bezeichnung, Lagerort FROM Lose WHERE Kennung = ? "
             "AND Sortierung = 'Schichtholz'", {harvest});
}

struct Session {
    std::unique_ptr<Database> database;
    std::FILE* devNull = std::fopen("/dev/null", "w");
    ConsolePrompter quiet{true, devNull};
    Einstellungen settings = EinstellungenLaden(QString());
    SystemClock clock;
    explicit Session(const QString& path) : database(Database::openOrCreate(path)) { upgradeDatabase(database->shared(), quiet); }
    ~Session()
    {
        database.reset();
        std::fclose(devNull);
    }
    AppContext context() { return {database->shared(), settings, QString(), quiet, clock}; }
};

bench::Result startScenario(const QString& path, int runs)
{
    bench::Result r;
    r.scenario = QStringLiteral("start (open, upgrade checks, main list)");
    r.program = bench::measure(runs, [&] { bench::programStart(path); });
    QString columns;
    for (const QString& c : harvestListColumns())
        columns += (columns.isEmpty() ? QString() : QStringLiteral(", ")) + quoted(c);
    const QByteArray listSql = (QStringLiteral("SELECT ") + columns + QStringLiteral(" FROM Hiebe")).toUtf8();
    r.raw = bench::measure(runs, [&] {
        Raw raw(path);
        raw.rows(listSql.constData());
    });
    return r;
}

// The page check of the whole file, which runs on a thread of its own once the main list shows.
bench::Result quickCheckScenario(const QString& path, int runs)
{
    bench::Result r;
    r.scenario = QStringLiteral("page check of the whole file (background, after the start)");
    auto db = Database::openOrCreate(path);
    r.program = bench::measure(runs, [&] { checkPages(path); });
    Raw raw(path);
    r.raw = bench::measure(runs, [&] { raw.rows("PRAGMA quick_check"); });
    return r;
}

bench::Result logStoreScenario(const QString& path, qint32 harvest, int harvestLogs, int runs)
{
    bench::Result r;
    r.scenario = QStringLiteral("log store + totals (%1 logs)").arg(harvestLogs);
    {
        Session session(path);
        const AppContext ctx = session.context();
        MasterDataLookup masterData(ctx.db);
        QRandomGenerator random(7);
        // Each store commits on its own, synced, as a typed log does.
        r.program = bench::measure(runs, [&] {
            LogForm f;
            f.losNr = QString::number(1 + random.bounded(std::max(1, harvestLogs / 1000)));
            f.species = QStringLiteral("FI (Fichte)");
            f.quality = QStringLiteral("B");
            f.measuredDiameter = QString::number(10 + random.bounded(71));
            f.length = QString::number(2 + random.bounded(19));
            f.laufendeNr = QString::number(nextRunningNumber(ctx.db, ctx.settings, harvest, f.losNr.toInt(), QString()));
            storeLog(ctx, masterData, harvest, f, std::nullopt);
        });
    }
    Raw raw(path);
    sqlite3_exec(raw.db, "PRAGMA synchronous=FULL;", nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(raw.db, "INSERT INTO \"Stämme\"(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Länge_m, Efm_oR, Kennung) "
                               "VALUES (1, ?, 'FI (Fichte)', 35, 4.5, 0.385, ?)", -1, &insert, nullptr);
    int number = 500000;
    r.raw = bench::measure(runs, [&] {
        sqlite3_exec(raw.db, "BEGIN", nullptr, nullptr, nullptr);
        sqlite3_bind_int(insert, 1, ++number);
        sqlite3_bind_int(insert, 2, harvest);
        sqlite3_step(insert);
        sqlite3_reset(insert);
        sqlite3_exec(raw.db, "COMMIT", nullptr, nullptr, nullptr);
    });
    sqlite3_finalize(insert);
    return r;
}

// A scenario of reading or summing: the program's work in a session on the file, then the same
// minimal work on a raw connection of its own.
bench::Result sessionScenario(const QString& path, const QString& name, int runs, const std::function<void(const QSqlDatabase&)>& program,
                              const std::function<void(Raw&)>& rawWork)
{
    bench::Result r;
    r.scenario = name;
    {
        Session session(path);
        const QSqlDatabase db = session.database->shared();
        r.program = bench::measure(runs, [&] { program(db); });
    }
    Raw raw(path);
    r.raw = bench::measure(runs, [&] { rawWork(raw); });
    return r;
}

// What every store adds to the insert: the totals of every lot of the harvest and the harvest's,
// beside the grouped query alone.
bench::Result refreshScenario(const QString& path, qint32 harvest, int runs)
{
    const QByteArray sums = logLotSumsSql().toUtf8();
    return sessionScenario(path, QStringLiteral("totals of every lot (harvest of 10,000 logs)"), runs,
                           [&](const QSqlDatabase& db) { refreshHarvest(db, harvest); },
                           [&](Raw& raw) { raw.rows(sums.constData(), {harvest}); });
}

bench::Result timberListScenario(const QString& path, qint32 harvest, int runs)
{
    return sessionScenario(path, QStringLiteral("timber list (harvest of 10,000 logs)"), runs,
                           [&](const QSqlDatabase& db) { timberList(db, harvest); }, [&](Raw& raw) { rawTimberList(raw, harvest); });
}

// Peak resident memory of the desktop program showing the main list of this data folder.
long desktopPeakKb(const QString& program, const QString& dataFolder)
{
    if (!QFile::exists(program))
        return -1;
    QProcess desktop;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    desktop.setProcessEnvironment(env);
    desktop.start(program, {QStringLiteral("--daten"), dataFolder});
    if (!desktop.waitForStarted())
        return -1;
    long peak = 0, stableFor = 0;
    for (int i = 0; i < 150 && stableFor < 15; ++i) { // at most 30 s; done when 3 s without growth
        QThread::msleep(200);
        QFile status(QStringLiteral("/proc/%1/status").arg(desktop.processId()));
        if (!status.open(QIODevice::ReadOnly))
            break;
        long hwm = peak;
        for (const QByteArray& line : status.readAll().split('\n'))
            if (line.startsWith("VmHWM:"))
                hwm = line.mid(6).trimmed().split(' ').first().toLong();
        stableFor = hwm == peak && i > 10 ? stableFor + 1 : 0;
        peak = std::max(peak, hwm);
    }
    desktop.kill();
    desktop.waitForFinished();
    return peak;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    useGermanLocale();
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("TARVIK benchmark: Szenarien gegen SQLite ohne Programm"));
    parser.addHelpOption();
    const bench::GeneratorSizes defaults;
    const QCommandLineOption data(QStringLiteral("daten"), QStringLiteral("Datenordner (wird erzeugt, wenn er keine Datenbank hat)"), QStringLiteral("ORDNER"));
    const QCommandLineOption harvests(QStringLiteral("hiebe"), QStringLiteral("Hiebe"), QStringLiteral("N"), QString::number(defaults.harvests));
    const QCommandLineOption lots(QStringLiteral("lose"), QStringLiteral("Lose"), QStringLiteral("N"), QString::number(defaults.lots));
    const QCommandLineOption logs(QStringLiteral("staemme"), QStringLiteral("Stämme"), QStringLiteral("N"), QString::number(defaults.logs));
    const QCommandLineOption poles(QStringLiteral("pfaehle"), QStringLiteral("Pfähle"), QStringLiteral("N"), QString::number(defaults.poles));
    const QCommandLineOption stacks(QStringLiteral("schichtholz"), QStringLiteral("Schichtholz-Sektionen"), QStringLiteral("N"), QString::number(defaults.stacks));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Startwert des Zufalls"), QStringLiteral("N"), QString::number(defaults.seed));
    const QCommandLineOption generateOnly(QStringLiteral("nur-erzeugen"), QStringLiteral("nur den Datenordner erzeugen"));
    const QCommandLineOption desktop(QStringLiteral("desktop"), QStringLiteral("Programmdatei für die Speichermessung"), QStringLiteral("PFAD"),
                                     QCoreApplication::applicationDirPath() + QStringLiteral("/tarvik"));
    const QCommandLineOption only(QStringLiteral("nur"),
                                  QStringLiteral("nur diese Szenarien, mit Komma getrennt: start, startgroessen, pruefung, holzliste, summen, "
                                                 "speichern, listen, sicherung, austausch, harvester, speicher"),
                                  QStringLiteral("NAMEN"));
    parser.addOptions({data, harvests, lots, logs, poles, stacks, seed, generateOnly, desktop, only});
    parser.process(app);
    const QStringList chosen = parser.value(only).split(u',', Qt::SkipEmptyParts);
    const auto wanted = [&](const char* name) { return chosen.isEmpty() || chosen.contains(QLatin1String(name)); };

    QTemporaryDir scratch;
    const QString folder = parser.isSet(data) ? parser.value(data) : scratch.filePath(QStringLiteral("daten"));
    const QString generated = QDir(folder).filePath(QLatin1String(DatabaseFileName));
    if (!QFile::exists(generated)) {
        bench::GeneratorSizes sizes{parser.value(harvests).toInt(), parser.value(lots).toInt(), parser.value(logs).toInt(),
                                    parser.value(poles).toInt(), parser.value(stacks).toInt(), parser.value(seed).toUInt()};
        const auto start = std::chrono::steady_clock::now();
        bench::generate(folder, sizes, stderr);
        std::printf("generated %d harvests, %d logs in %.1f s\n", sizes.harvests, sizes.logs,
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    if (parser.isSet(generateOnly))
        return 0;

    // The scenarios write; they run on a copy so the generated folder stays as it was.
    const QString copyFolder = scratch.filePath(QStringLiteral("kopie"));
    QDir().mkpath(copyFolder);
    const QString path = QDir(copyFolder).filePath(QLatin1String(DatabaseFileName));
    {
        auto checkpoint = Database::openOrCreate(generated); // fold the write-ahead log into the file before copying
        execSql(checkpoint->shared(), QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    }
    QFile::copy(generated, path);

    qint32 large = 0;
    {
        Session session(path);
        MasterDataLookup masterData(session.database->shared());
        QRandomGenerator random(parser.value(seed).toUInt());
        large = bench::addLogHarvest(session.context(), masterData, LargeHarvestNumber, 10000, random);
    }

    std::vector<bench::Result> results;
    if (wanted("start"))
        results.push_back(startScenario(path, 20));
    if (wanted("startgroessen"))
        for (const bench::Result& r : bench::startSizeScenarios(scratch.filePath(QStringLiteral("startgroessen")), {10, 60, 250}, 5))
            results.push_back(r);
    if (wanted("pruefung"))
        results.push_back(quickCheckScenario(path, 20));
    if (wanted("holzliste"))
        results.push_back(timberListScenario(path, large, 10));
    if (wanted("summen"))
        results.push_back(refreshScenario(path, large, 200));
    if (wanted("speichern"))
        results.push_back(logStoreScenario(path, large, 10000, 1000));
    if (wanted("listen"))
        for (bench::Result& r : bench::listScenarios(path, 5, 3))
            results.push_back(r);
    if (wanted("sicherung"))
        for (const bench::Result& r : bench::backupScenarios(folder, scratch.filePath(QStringLiteral("sicherung")), 3))
            results.push_back(r);
    if (wanted("austausch"))
        results.push_back(bench::exchangeImportScenario(path, 100000, 3));
    if (wanted("harvester"))
        results.push_back(bench::harvesterImportScenario(path, 50000, 3));
    const long desktopKb = wanted("speicher") ? desktopPeakKb(parser.value(desktop), folder) : -1;
    bench::report(results, bench::peakResidentKb());
    if (desktopKb > 0)
        std::printf("desktop program with the main list open: peak resident memory %ld kB\n", desktopKb);
    return 0;
}
