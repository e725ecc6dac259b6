#include "crash/operations.h"

#include "backup/archive.h"
#include "backup/restore.h"
#include "backup/stagedrestore.h"
#include "common/clock.h"
#include "common/consoleprompter.h"
#include "entry/logentry.h"
#include "exchange/exchangefile.h"
#include "exchange/exportfiles.h"
#include "exchange/importfiles.h"
#include "invoices/invoice.h"
#include "maintenance/compaction.h"
#include "masterdata/classtables.h"
#include "rules/lotrecompute.h"
#include "rules/masterdatalookup.h"
#include "settings/settings.h"
#include "store/database.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"
#include "support/records.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <cstdio>
#include <memory>

namespace tarvik::crash {
namespace {

QString databasePath(const QString& folder) { return QDir(folder).filePath(QLatin1String(DatabaseFileName)); }

// What a worker keeps alive while its write runs.
struct Workbench {
    std::unique_ptr<Database> database;
    QSqlDatabase db;
    Einstellungen settings;
    FixedClock clock{QDate(2026, 11, 23)};
    std::FILE* sink = std::fopen("/dev/null", "w");
    ConsolePrompter prompter{true, sink};
    std::unique_ptr<MasterDataLookup> lookup;
    AppContext context;
    QString folder;

    explicit Workbench(const QString& dataFolder)
        : database(Database::openOrCreate(databasePath(dataFolder))), db(database->shared()),
          lookup(std::make_unique<MasterDataLookup>(db)), context{db, settings, dataFolder, prompter, clock},
          folder(dataFolder)
    {
    }
};

// A harvest with a few lots of typed logs, poles and stacked wood.
qint32 seedHarvest(const QSqlDatabase& db, qint32 hiebNr, int logsPerLot, int lots)
{
    const qint32 harvest = test::addHarvest(db, hiebNr);
    TransactionGuard guard(db);
    static const char* const species[] = {"FI (Fichte)", "BU (Rotbuche)", "KI (Kiefer)", "EI (Eiche)"};
    for (int lot = 1; lot <= lots; ++lot) {
        test::addLot(db, harvest, lot);
        for (int i = 1; i <= logsPerLot; ++i)
            test::addTypedLog(db, harvest, lot, i, QString::fromUtf8(species[(i + lot) % 4]), 20 + (i * 7) % 40,
                              4 + (i % 12) * 0.5, QStringLiteral("T"), 0, 0, QStringLiteral("B"));
    }
    test::addLot(db, harvest, lots + 1, QStringLiteral("Pfähle"));
    for (int i = 0; i < 20; ++i)
        execSql(db, QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Länge_m, Anzahl, Kennung) VALUES (?, 'FI (Fichte)', ?, ?, ?)"),
                {lots + 1, 6 + i % 5, 10 + i, harvest});
    test::addLot(db, harvest, lots + 2, QStringLiteral("Schichtholz"));
    for (int i = 0; i < 20; ++i)
        execSql(db, QStringLiteral("INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, m3, Kennung) VALUES (?, 'BU (Rotbuche)', ?, ?, ?)"),
                {lots + 2, i + 1, 2.5 + i, harvest});
    guard.commit();
    recomputeTotals(db, harvest);
    return harvest;
}

QString backupArchive(const QString& folder) { return QDir(folder).filePath(QStringLiteral("archiv/TARVIK_2026-11-23.zip")); }

const QDateTime RestoreTime(QDate(2026, 11, 24), QTime(8, 0));

LogForm typedLog(const QSqlDatabase& db, qint32 harvest, const QString& girthCount)
{
    LogForm form;
    form.losNr = QStringLiteral("1");
    form.laufendeNr = QStringLiteral("1"); // taken: the store picks the next free number
    form.species = QStringLiteral("FI (Fichte)");
    form.quality = QStringLiteral("B");
    form.measuredDiameter = QStringLiteral("34");
    form.length = QStringLiteral("12,5");
    form.girthCount = girthCount;
    form.remark = QStringLiteral("Nachtrag O'Neill");
    form.mode = BarkMode::Tabelle;
    if (const auto prices = loadLotPriceSettings(db, harvest, 1))
        form.prices = *prices;
    return form;
}

std::function<std::function<void()>(const QString&)> logStore(const QString& girthCount)
{
    return [girthCount](const QString& folder) -> std::function<void()> {
        auto bench = std::make_shared<Workbench>(folder);
        const qint32 harvest = *harvestIdByNumber(bench->db, 1);
        auto form = std::make_shared<LogForm>(typedLog(bench->db, harvest, girthCount));
        recomputeLog(*form, *bench->lookup);
        return [bench, harvest, form] {
            if (!storeLog(bench->context, *bench->lookup, harvest, *form, std::nullopt))
                throw StoreError(QStringLiteral("Der Stamm wurde nicht gespeichert."));
        };
    };
}

std::vector<Operation> makeOperations()
{
    std::vector<Operation> ops;
    const auto seedOneHarvest = [](const QSqlDatabase& db, const QString&) {
        seedHarvest(db, 1, 150, 3);
        seedHarvest(db, 2, 40, 2);
    };
    ops.push_back({QStringLiteral("stamm"), QStringLiteral("ein Stamm mit Los- und Hiebsummen"), seedOneHarvest,
                   logStore(QString())});
    ops.push_back({QStringLiteral("mantelmessung"), QStringLiteral("Mantelmessung von 20 Stämmen"), seedOneHarvest,
                   logStore(QStringLiteral("20"))});
    ops.push_back({QStringLiteral("losneuberechnung"), QStringLiteral("Rindenabzug eines Loses mit 400 Stämmen neu"),
                   [](const QSqlDatabase& db, const QString&) { seedHarvest(db, 1, 400, 1); },
                   [](const QString& folder) -> std::function<void()> {
                       auto bench = std::make_shared<Workbench>(folder);
                       const qint32 harvest = *harvestIdByNumber(bench->db, 1);
                       const PriceSettings prices = loadLotPriceSettings(bench->db, harvest, 1).value_or(PriceSettings{});
                       return [bench, harvest, prices] {
                           if (!recomputeLotBark(bench->db, *bench->lookup, harvest, 1, BarkMode::Tabelle, prices,
                                                 bench->prompter))
                               throw StoreError(QStringLiteral("Das Los wurde nicht neu berechnet."));
                       };
                   }});
    ops.push_back({QStringLiteral("hiebloeschen"), QStringLiteral("Hieb mit Losen, Stämmen, Pfählen, Schichtholz löschen"),
                   seedOneHarvest,
                   [](const QString& folder) -> std::function<void()> {
                       auto bench = std::make_shared<Workbench>(folder);
                       const qint32 harvest = *harvestIdByNumber(bench->db, 1);
                       return [bench, harvest] { deleteHarvest(bench->db, harvest); };
                   }});
    ops.push_back({QStringLiteral("rechnung"), QStringLiteral("Rechnung über drei Lose speichern"),
                   [](const QSqlDatabase& db, const QString&) { seedHarvest(db, 1, 120, 3); },
                   [](const QString& folder) -> std::function<void()> {
                       auto bench = std::make_shared<Workbench>(folder);
                       const qint32 harvest = *harvestIdByNumber(bench->db, 1);
                       auto input = std::make_shared<InvoiceInput>();
                       input->buyer = QStringLiteral("Sägewerk O'Neill \"Nord\"");
                       input->name = QStringLiteral("Jörg O'Neill");
                       input->street = QStringLiteral("Am Bühl 3");
                       input->town = QStringLiteral("88662 Überlingen");
                       input->number = QStringLiteral("20260001");
                       input->levy = QStringLiteral("2");
                       input->vat = QStringLiteral("10,7");
                       input->discount = QStringLiteral("2");
                       input->date = QStringLiteral("23.11.2026");
                       for (int lot : {1, 2, 4})
                           input->lotIds << scalar(bench->db, QStringLiteral("SELECT ID FROM Lose WHERE Kennung = ? AND Los_Nr = ?"),
                                                   {harvest, lot}).toInt();
                       return [bench, input] {
                           if (!storeInvoice(bench->context, *input))
                               throw StoreError(QStringLiteral("Die Rechnung wurde nicht gespeichert."));
                       };
                   }});
    ops.push_back({QStringLiteral("komprimieren"), QStringLiteral("Datenbank komprimieren"),
                   [](const QSqlDatabase& db, const QString&) {
                       seedHarvest(db, 1, 600, 4);
                       seedHarvest(db, 2, 600, 4);
                       deleteHarvest(db, *harvestIdByNumber(db, 1)); // free pages for the compaction to drop
                   },
                   [](const QString& folder) -> std::function<void()> {
                       const QString path = databasePath(folder);
                       return [path] {
                           const CompactionResult r = compactDatabaseFile(path);
                           if (!r.ok)
                               throw StoreError(r.message);
                       };
                   }});
    // An exchange file of a large harvest taken over: the whole harvest, or nothing of it.
    ops.push_back({QStringLiteral("austausch"), QStringLiteral("Austauschdatei eines Hiebs mit 6000 Stämmen einlesen"),
                   [](const QSqlDatabase& db, const QString& folder) {
                       const qint32 harvest = seedHarvest(db, 5, 1500, 4);
                       const QString exchangeFolder = QDir(folder).filePath(QStringLiteral("austausch"));
                       QDir().mkpath(exchangeFolder);
                       std::FILE* sink = std::fopen("/dev/null", "w");
                       ConsolePrompter yes(true, sink);
                       const exchange::ExportOutcome out = exchange::writeExportFiles(db, exchangeFolder, yes, {harvest});
                       std::fclose(sink);
                       if (!out.written)
                           throw StoreError(QStringLiteral("Die Austauschdatei wurde nicht geschrieben."));
                       deleteHarvest(db, harvest); // taken over anew by the import
                   },
                   [](const QString& folder) -> std::function<void()> {
                       auto bench = std::make_shared<Workbench>(folder);
                       const QString file = QDir(folder).filePath(QStringLiteral("austausch/") + exchange::harvestFileName(5));
                       return [bench, file] {
                           const exchange::ImportReport report = exchange::importFiles(bench->db, bench->settings, {file});
                           if (!report.refusedFiles.isEmpty() || report.counts.logs == 0)
                               throw StoreError(report.messages.join(u'\n'));
                       };
                   }});
    // A new log class adds its columns to three price tables: the class and all columns, or none.
    ops.push_back({QStringLiteral("klasse"), QStringLiteral("Stärkeklasse mit ihren Spalten anlegen"),
                   [](const QSqlDatabase& db, const QString&) { seedHarvest(db, 1, 100, 2); },
                   [](const QString& folder) -> std::function<void()> {
                       auto bench = std::make_shared<Workbench>(folder);
                       return [bench] {
                           if (!storeClass(bench->context, ClassTable::Staemme, EditMode::Neu, std::nullopt,
                                           {QStringLiteral("L7"), {QStringLiteral("70"), QStringLiteral("79")}}))
                               throw StoreError(QStringLiteral("Die Klasse wurde nicht angelegt."));
                       };
                   }});
    // A backup leaves the data alone; its archive appears checked under its name or not at all.
    ops.push_back({QStringLiteral("sicherung"), QStringLiteral("Datensicherung als geprüftes Archiv"),
                   [](const QSqlDatabase& db, const QString&) {
                       seedHarvest(db, 1, 600, 4);
                       seedHarvest(db, 2, 300, 2);
                   },
                   [](const QString& folder) -> std::function<void()> {
                       QDir().mkpath(QDir(folder).filePath(QStringLiteral("archiv")));
                       const QString archive = backupArchive(folder);
                       return [folder, archive] {
                           const ArchiveResult r = writeArchive(folder, archive);
                           if (!r.ok)
                               throw StoreError(r.error);
                       };
                   },
                   {},
                   [](const QString& folder) -> QString {
                       const QString archive = backupArchive(folder);
                       if (!QFile::exists(archive))
                           return {};
                       const ArchiveCheck check = checkArchive(archive);
                       return check.ok ? QString() : QStringLiteral("Archiv unter seinem Namen, aber fehlerhaft: ") + check.error;
                   }});
    // A restore is unpacked into the staging folder and swapped in at the next start; killed
    // anywhere, the start after it leaves the old data or the restored, never a mix.
    ops.push_back({QStringLiteral("wiederherstellung"),
                   QStringLiteral("Rücksicherung bereitstellen und beim Start einsetzen"),
                   [](const QSqlDatabase& db, const QString& folder) {
                       seedHarvest(db, 1, 300, 3);
                       seedHarvest(db, 2, 300, 3);
                       QDir().mkpath(QDir(folder).filePath(QStringLiteral("archiv")));
                       const ArchiveResult r = writeArchive(folder, backupArchive(folder));
                       if (!r.ok)
                           throw StoreError(r.error);
                       deleteHarvest(db, *harvestIdByNumber(db, 2)); // the data now differ from the backup
                   },
                   [](const QString& folder) -> std::function<void()> {
                       return [folder] {
                           const StageResult staged = stageRestore(backupArchive(folder), folder, std::nullopt);
                           if (!staged.ok)
                               throw StoreError(staged.error);
                           const SwapResult swap = swapInStagedRestore(folder, RestoreTime);
                           if (!swap.swapped)
                               throw StoreError(swap.error);
                       };
                   },
                   [](const QString& folder) { swapInStagedRestore(folder, RestoreTime); }});
    return ops;
}

} // namespace

const std::vector<Operation>& operations()
{
    static const std::vector<Operation> ops = makeOperations();
    return ops;
}

} // namespace tarvik::crash
