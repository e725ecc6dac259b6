#include "harvesterimport.h"

#include "common/clock.h"
#include "common/numbers.h"
#include "devices/harvesterimport.h"
#include "entry/harvestentry.h"
#include "store/database.h"
#include "store/sql.h"
#include "store/context.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <cstdio>
#include <sqlite3.h>

namespace tarvik::bench {
namespace {

struct StemLog {
    int stem, position, species, midOb, midUb, length;
};

const char* const SpeciesNames[] = {"GRAN", "FURU", "BJØRK"};

// Stems of one to four logs, thinner towards the top, as a harvester cuts them.
std::vector<StemLog> makeLogs(int logs)
{
    QRandomGenerator random(50000);
    std::vector<StemLog> rows;
    rows.reserve(size_t(logs));
    for (int stem = 1; int(rows.size()) < logs; ++stem) {
        const int species = int(random.bounded(3));
        int diameter = 180 + int(random.bounded(300));
        const int count = 1 + int(random.bounded(4));
        for (int p = 1; p <= count && int(rows.size()) < logs; ++p) {
            rows.push_back({stem, p, species, diameter, diameter - 8 - int(random.bounded(12)), 300 + int(random.bounded(250))});
            diameter = std::max(60, diameter - 40 - int(random.bounded(30)));
        }
    }
    return rows;
}

void writeFile(const QString& path, const std::vector<StemLog>& rows)
{
    QFile f(path);
    f.open(QIODevice::WriteOnly);
    f.write("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<HarvestedProduction xmlns=\"urn:skogforsk:stanford2010\" version=\"3.6\" "
            "diameterUnit=\"mm\" lengthUnit=\"cm\" volumeUnit=\"m3\">\n<Machine>\n");
    for (int s = 0; s < 3; ++s)
        f.write(QStringLiteral("<SpeciesGroupDefinition><SpeciesGroupKey>%1</SpeciesGroupKey><SpeciesGroupName>%2</SpeciesGroupName>"
                               "</SpeciesGroupDefinition>\n").arg(s).arg(QString::fromUtf8(SpeciesNames[s])).toUtf8());
    f.write("<ProductDefinition><ProductKey>1</ProductKey><ClassifiedProductDefinition><ProductName>Sagholz</ProductName>"
            "</ClassifiedProductDefinition></ProductDefinition>\n");
    for (size_t i = 0; i < rows.size();) {
        const StemLog& first = rows[i];
        QByteArray stem = "<Stem><StemKey>" + QByteArray::number(first.stem) + "</StemKey><SpeciesGroupKey>" + QByteArray::number(first.species)
                          + "</SpeciesGroupKey><StemNumber>" + QByteArray::number(first.stem)
                          + "</StemNumber><StemCoordinates coordinateReferenceSystem=\"WGS84\"><Latitude latitudeCategory=\"North\">50.1"
                            "</Latitude><Longitude longitudeCategory=\"East\">10.2</Longitude></StemCoordinates><SingleTreeProcessedStem>";
        for (; i < rows.size() && rows[i].stem == first.stem; ++i) {
            const StemLog& l = rows[i];
            stem += "<Log><LogKey>" + QByteArray::number(l.position) + "</LogKey><ProductKey>1</ProductKey>"
                    "<LogVolume logVolumeCategory=\"m3sub\">0.25</LogVolume><LogMeasurement>"
                    "<LogDiameter logDiameterCategory=\"Mid ob\">" + QByteArray::number(l.midOb) + "</LogDiameter>"
                    "<LogDiameter logDiameterCategory=\"Mid ub\">" + QByteArray::number(l.midUb) + "</LogDiameter>"
                    "<LogLength>" + QByteArray::number(l.length) + "</LogLength></LogMeasurement></Log>";
        }
        f.write(stem + "</SingleTreeProcessedStem></Stem>\n");
    }
    f.write("</Machine>\n</HarvestedProduction>\n");
}

// Says yes to every question and keeps the messages to itself.
class YesPrompter final : public Prompter {
public:
    void inform(const QString&, Icon) override {}
    bool askYesNo(const QString&) override { return true; }
    bool askOkCancel(const QString&) override { return true; }
    std::optional<QString> askText(const QString&, const QString& proposal) override { return proposal; }
    QString chooseOpenFile(const QString&, const QString&, const QString&) override { return {}; }
    QString chooseSaveFile(const QString&, const QString&, const QString&) override { return {}; }
    QString chooseFolder(const QString&, const QString&) override { return {}; }
};

} // namespace

Result harvesterImportScenario(const QString& databasePath, int logs, int runs)
{
    Result result;
    result.scenario = QStringLiteral("harvester file import (%1 logs)").arg(logs);
    const std::vector<StemLog> rows = makeLogs(logs);
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("bench.hpr"));
    writeFile(file, rows);
    {
        auto db = Database::openOrCreate(databasePath);
        Einstellungen settings = EinstellungenLaden(QString());
        YesPrompter yes;
        SystemClock clock;
        const AppContext ctx{db->shared(), settings, folder.path(), yes, clock};
        int hiebNr = 800000;
        // Each run reads the file and stores it into a harvest of its own.
        result.program = measure(runs, [&] {
            HarvestForm h;
            h.hiebNr = QString::number(++hiebNr);
            h.jahr = QStringLiteral("2026");
            const qint32 harvest = saveHarvest(ctx.db, h, std::nullopt);
            const HarvesterRead read = readHarvesterFile(file);
            const HarvesterMapping mapping = proposedHarvesterMapping(ctx.db, ctx.dataFolder, read.file->speciesNames, read.file->productNames);
            const auto outcome = importHarvesterLogs(ctx, harvest, 1, *read.file, mapping);
            if (!outcome || outcome->stored != logs)
                std::fprintf(stderr, "harvester import took %d of %d logs\n", outcome ? outcome->stored : 0, logs);
        });
    }

    sqlite3* raw = nullptr;
    sqlite3_open_v2(databasePath.toUtf8().constData(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    sqlite3_exec(raw, "PRAGMA synchronous=FULL;", nullptr, nullptr, nullptr);
    // The raw side inserts exactly the rows the program stored, read back from its last harvest.
    const char* const Columns = "Los_Nr, Baumart, Laufende_Nr, Stärke_gemessen, Rindenabzugsart, Rindenabzug, Stärke_oR, Länge_m, "
                                "Efm_oR, Stärkeklasse, Güteklasse, Zopfdurchm_cm, Klasse_Heilbronn, Käferholz, Holzpreis, "
                                "Preis_berechnet, Bemerkung";
    constexpr int ColumnCount = 17;
    std::vector<std::vector<QByteArray>> stored;
    sqlite3_stmt* read = nullptr;
    sqlite3_prepare_v2(raw, QStringLiteral("SELECT %1 FROM \"Stämme\" WHERE Kennung = (SELECT max(Kennung) FROM \"Stämme\") ORDER BY ID")
                                .arg(QString::fromUtf8(Columns)).toUtf8().constData(), -1, &read, nullptr);
    std::vector<int> types(ColumnCount, SQLITE_NULL);
    while (sqlite3_step(read) == SQLITE_ROW) {
        std::vector<QByteArray> row;
        for (int c = 0; c < ColumnCount; ++c) {
            types[size_t(c)] = sqlite3_column_type(read, c);
            row.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(read, c)));
        }
        stored.push_back(std::move(row));
    }
    sqlite3_finalize(read);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(raw, QStringLiteral("INSERT INTO \"Stämme\"(%1, Kennung) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
                                .arg(QString::fromUtf8(Columns)).toUtf8().constData(), -1, &insert, nullptr);
    int harvest = 9100000;
    result.raw = measure(runs, [&] {
        ++harvest;
        sqlite3_exec(raw, "BEGIN", nullptr, nullptr, nullptr);
        for (const auto& row : stored) {
            for (int c = 0; c < ColumnCount; ++c) {
                const QByteArray& v = row[size_t(c)];
                if (types[size_t(c)] == SQLITE_INTEGER)
                    sqlite3_bind_int64(insert, c + 1, v.toLongLong());
                else if (types[size_t(c)] == SQLITE_FLOAT)
                    sqlite3_bind_double(insert, c + 1, v.toDouble());
                else
                    sqlite3_bind_text(insert, c + 1, v.constData(), int(v.size()), SQLITE_STATIC);
            }
            sqlite3_bind_int(insert, ColumnCount + 1, harvest);
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_exec(raw, "COMMIT", nullptr, nullptr, nullptr);
    });
    sqlite3_finalize(insert);
    sqlite3_close(raw);
    printImportRates("harvester import", logs, result);
    return result;
}

} // namespace tarvik::bench
