#include "generator.h"

#include "common/consoleprompter.h"
#include "entry/harvestentry.h"
#include "entry/logentry.h"
#include "entry/poleentry.h"
#include "entry/stackentry.h"
#include "rules/masterdatalookup.h"
#include "store/database.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"
#include "store/upgrade.h"

#include <QDir>
#include <chrono>

namespace tarvik::bench {
namespace {

const QStringList Species{QStringLiteral("FI (Fichte)"), QStringLiteral("FI (Fichte)"), QStringLiteral("KI (Kiefer)"),
                          QStringLiteral("TA (Tanne)"), QStringLiteral("DO (Douglasie)"), QStringLiteral("BU (Rotbuche)"),
                          QStringLiteral("EI (Eiche)"), QStringLiteral("LA (Lärche)")};
const QStringList Qualities{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D")};
const QStringList Woods{QStringLiteral("Eichwald"), QStringLiteral("Hochwald"), QStringLiteral("Am Bach"), QStringLiteral("Großer Schlag"),
                        QStringLiteral("Steinriegel"), QStringLiteral("Buchenhang")};

QString pick(QRandomGenerator& random, const QStringList& list) { return list[random.bounded(int(list.size()))]; }

LogForm randomLog(QRandomGenerator& random, qint32 lot)
{
    LogForm f;
    f.losNr = QString::number(lot);
    f.species = pick(random, Species);
    f.quality = pick(random, Qualities);
    f.measuredDiameter = QString::number(10 + random.bounded(71));
    f.length = QString::number(2 + random.bounded(181) / 10.0).replace(u'.', u',');
    f.mode = BarkMode::Tabelle;
    f.kaeferholz = random.bounded(20) == 0;
    return f;
}

void addLogs(const AppContext& ctx, MasterDataLookup& masterData, LogInserter& inserter, qint32 harvest, qint32 lot,
             int count, qint32& number, QRandomGenerator& random)
{
    for (int i = 0; i < count; ++i) {
        LogForm f = randomLog(random, lot);
        recomputeLog(f, masterData);
        inserter.insert(harvest, f, ++number, QString());
    }
    (void)ctx;
}

} // namespace

qint32 addLogHarvest(const AppContext& ctx, MasterDataLookup& masterData, qint32 hiebNr, int logs, QRandomGenerator& random)
{
    TransactionGuard guard(ctx.db);
    HarvestForm h;
    h.hiebNr = QString::number(hiebNr);
    h.jahr = QStringLiteral("2026");
    h.waldname = QStringLiteral("Benchmark");
    const qint32 harvest = saveHarvest(ctx.db, h, std::nullopt);
    LogInserter inserter(ctx.db);
    qint32 number = 0;
    for (int lot = 1; lot <= (logs + 999) / 1000; ++lot) {
        createLot(ctx.db, harvest, lot, QStringLiteral("Stämme"));
        addLogs(ctx, masterData, inserter, harvest, lot, std::min(1000, logs - (lot - 1) * 1000), number, random);
    }
    recomputeTotals(ctx.db, harvest);
    guard.commit();
    return harvest;
}

void generate(const QString& dataFolder, const GeneratorSizes& sizes, std::FILE* progress)
{
    QDir().mkpath(dataFolder);
    auto db = Database::openOrCreate(QDir(dataFolder).filePath(QLatin1String(DatabaseFileName)));
    std::FILE* devNull = std::fopen("/dev/null", "w");
    {
        ConsolePrompter quiet(true, devNull);
        upgradeDatabase(db->shared(), quiet);
        Einstellungen settings = EinstellungenLaden(QString());
        SystemClock clock;
        const AppContext ctx{db->shared(), settings, dataFolder, quiet, clock};
        MasterDataLookup masterData(ctx.db);
        LogInserter inserter(ctx.db);
        QRandomGenerator random(sizes.seed);
        const auto start = std::chrono::steady_clock::now();

        const int harvests = std::max(1, sizes.harvests);
        const int lotsPerHarvest = std::max(3, sizes.lots / harvests);
        for (int h = 0; h < harvests; ++h) {
            // One transaction per harvest: a power cut loses at most the harvest being written.
            TransactionGuard guard(ctx.db);
            HarvestForm form;
            form.hiebNr = QString::number(h + 1);
            form.jahr = QString::number(2015 + random.bounded(12));
            form.waldname = pick(random, Woods);
            form.waldort = QStringLiteral("Abteilung %1").arg(1 + random.bounded(40));
            form.hiebflaeche = QString::number(random.bounded(500) / 100.0).replace(u'.', u',');
            const qint32 harvest = saveHarvest(ctx.db, form, std::nullopt);

            const int logLots = lotsPerHarvest - 2;
            for (int lot = 1; lot <= logLots; ++lot)
                createLot(ctx.db, harvest, lot, QStringLiteral("Stämme"));
            const qint32 poleLot = logLots + 1;
            const qint32 stackLot = logLots + 2;
            createLot(ctx.db, harvest, poleLot, QStringLiteral("Pfähle"));
            createLot(ctx.db, harvest, stackLot, QStringLiteral("Schichtholz"));

            const int logs = sizes.logs / harvests + (h < sizes.logs % harvests ? 1 : 0);
            qint32 number = 0;
            for (int lot = 1; lot <= logLots; ++lot)
                addLogs(ctx, masterData, inserter, harvest, lot, logs / logLots + (lot <= logs % logLots ? 1 : 0), number, random);

            const int poles = sizes.poles / harvests + (h < sizes.poles % harvests ? 1 : 0);
            for (int i = 0; i < poles; ++i) {
                PoleForm p{QString::number(poleLot), pick(random, Species), QString::number(5 + random.bounded(12)),
                           QString::number(2 + random.bounded(15)), QString::number(1 + random.bounded(50)), QString(), QStringLiteral("2,50"),
                           QString(), QString()};
                poleMeasureChanged(p, masterData);
                if (p.poleClass.isEmpty())
                    continue; // a pole no class holds is refused by the window too
                storePole(ctx, harvest, p, std::nullopt);
            }
            const int stacks = sizes.stacks / harvests + (h < sizes.stacks % harvests ? 1 : 0);
            for (int i = 0; i < stacks; ++i) {
                StackForm s{QString::number(stackLot), QString::number(i + 1), pick(random, Species), QString::number(4 + random.bounded(30)),
                            QString::number(2 + random.bounded(9)), QStringLiteral("1"), QStringLiteral("1,5"), QString(), QString(),
                            QString(), QStringLiteral("12,00"), QString(), QString()};
                stackDiameterChanged(s, masterData);
                storeStack(ctx, harvest, s, std::nullopt);
            }
            recomputeTotals(ctx.db, harvest);
            recomputeSaleState(ctx.db, harvest);
            guard.commit();
            if (progress && (h + 1) % 100 == 0) {
                const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
                std::fprintf(progress, "%d/%d Hiebe erzeugt (%.0f s)\n", h + 1, harvests, seconds);
                std::fflush(progress);
            }
        }
    }
    std::fclose(devNull);
}

} // namespace tarvik::bench
