#include "exchangeimport.h"

#include "common/consoleprompter.h"
#include "common/numbers.h"
#include "common/textfile.h"
#include "exchange/exchangefile.h"
#include "exchange/importfiles.h"
#include "store/database.h"
#include "store/upgrade.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <cstdio>
#include <sqlite3.h>

namespace tarvik::bench {
namespace {

constexpr int LogsPerLot = 1000;
const char* const Classes[] = {"L1b", "L2a", "L2b", "L3a", "L3b", "L4"};
const char* const Qualities[] = {"A", "B", "C", "D"};

struct LogRow {
    int lot, number, diameter, deduction, top;
    double length, efm;
    QString cls, quality;
};

std::vector<LogRow> makeLogs(int logs)
{
    QRandomGenerator random(100000);
    std::vector<LogRow> rows;
    rows.reserve(static_cast<size_t>(logs));
    for (int i = 0; i < logs; ++i) {
        const int diameter = 15 + int(random.bounded(40));
        rows.push_back({1 + i / LogsPerLot, i + 1, diameter, 2, diameter / 2, 4 + int(random.bounded(16)) / 2.0,
                        0.1 + random.bounded(1500) / 1000.0, QString::fromLatin1(Classes[random.bounded(6)]),
                        QString::fromLatin1(Qualities[random.bounded(4)])});
    }
    return rows;
}

QStringList fileLines(const std::vector<LogRow>& rows)
{
    QStringList lines{QStringLiteral("#HIEBE#"), QStringLiteral("700001\t2026\tBenchwald\tDurchforstung\tKäfer\tN\tHang\t12,5\t"
                                                                 "01.03.2026\t31.03.2026\t\tAnna\t\t\t\t"),
                      QStringLiteral("#LOSE#")};
    const int lots = (int(rows.size()) + LogsPerLot - 1) / LogsPerLot;
    for (int lot = 1; lot <= lots; ++lot)
        lines << QStringLiteral("%1\tStämme\t0\t0\t0\t0\tWaldweg\t\tN").arg(lot);
    lines << QStringLiteral("#STÄMME#");
    for (const LogRow& r : rows)
        lines << QStringLiteral("%1\tFI (Fichte)\t%2\t%3\tF\t%4\t%5\t%6\t%7\t%8\t%9\tN\t%10\tH2")
                     .arg(r.lot).arg(r.number).arg(r.diameter).arg(r.deduction).arg(r.diameter - r.deduction)
                     .arg(exchange::fieldText(exchange::FieldKind::Real, r.length), exchange::fieldText(exchange::FieldKind::Real, r.efm),
                          r.cls, r.quality)
                     .arg(r.top);
    lines << QStringLiteral("#PFÄHLE#") << QStringLiteral("#SCHICHTHOLZ#");
    return lines;
}

} // namespace

Result exchangeImportScenario(const QString& databasePath, int logs, int runs)
{
    Result result;
    result.scenario = QStringLiteral("exchange import (%1 logs)").arg(logs);
    const std::vector<LogRow> rows = makeLogs(logs);
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("700001_Tarvik_Export.f10"));
    writeTextFile(file, fileLines(rows));
    {
        auto db = Database::openOrCreate(databasePath);
        Einstellungen settings = EinstellungenLaden(QString());
        // Each run adds one more harvest (renumbered): the same work every time.
        result.program = measure(runs, [&] {
            const exchange::ImportReport report = exchange::importFiles(db->shared(), settings, {file});
            if (report.counts.logs != logs)
                std::fprintf(stderr, "exchange import took %d of %d logs\n", report.counts.logs, logs);
        });
    }

    sqlite3* raw = nullptr;
    sqlite3_open_v2(databasePath.toUtf8().constData(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    sqlite3_exec(raw, "PRAGMA synchronous=FULL;", nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(raw,
                       "INSERT INTO \"Stämme\"(Los_Nr, Baumart, Laufende_Nr, Stärke_gemessen, Rindenabzugsart, Rindenabzug, Stärke_oR, "
                       "Länge_m, Efm_oR, Stärkeklasse, Güteklasse, Zopfdurchm_cm, Klasse_Heilbronn, Käferholz, Holzpreis, "
                       "Preis_berechnet, Bemerkung, Kennung) VALUES (?, 'FI (Fichte)', ?, ?, 'F', ?, ?, ?, ?, ?, ?, ?, 'H2', 0, ?, ?, '', ?)",
                       -1, &insert, nullptr);
    std::vector<std::pair<QByteArray, QByteArray>> texts;
    for (const LogRow& r : rows)
        texts.emplace_back(r.cls.toUtf8(), r.quality.toUtf8());
    int harvest = 9000000;
    result.raw = measure(runs, [&] {
        ++harvest;
        sqlite3_exec(raw, "BEGIN", nullptr, nullptr, nullptr);
        for (size_t i = 0; i < rows.size(); ++i) {
            const LogRow& r = rows[i];
            sqlite3_bind_int(insert, 1, r.lot);
            sqlite3_bind_int(insert, 2, r.number);
            sqlite3_bind_int(insert, 3, r.diameter);
            sqlite3_bind_int(insert, 4, r.deduction);
            sqlite3_bind_int(insert, 5, r.diameter - r.deduction);
            sqlite3_bind_double(insert, 6, r.length);
            sqlite3_bind_double(insert, 7, r.efm);
            sqlite3_bind_text(insert, 8, texts[i].first.constData(), -1, SQLITE_STATIC);
            sqlite3_bind_text(insert, 9, texts[i].second.constData(), -1, SQLITE_STATIC);
            sqlite3_bind_int(insert, 10, r.top);
            sqlite3_bind_double(insert, 11, 10.0);
            sqlite3_bind_double(insert, 12, 10.0);
            sqlite3_bind_int(insert, 13, harvest);
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_exec(raw, "COMMIT", nullptr, nullptr, nullptr);
    });
    sqlite3_finalize(insert);
    sqlite3_close(raw);
    printImportRates("exchange import", logs, result);
    return result;
}

} // namespace tarvik::bench
