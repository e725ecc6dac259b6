// Collected logs stored in a harvest: lots created where missing, duplicates and unknown
// species skipped and counted, bracket logs, bark by the window's mode, prices and totals,
// every message in its wording, and nothing stored when the database refuses one row.
// Harvester production files: the three real files read and imported (counts, first and last
// log, mapping, the lot's position), damaged files refused whole with the stem named, and the
// mapping chosen once kept for the next file. Expected values are read off the files by hand.
#include "cli/cli.h"
#include "common/numbers.h"
#include "devices/harvesterimport.h"
#include "devices/logimport.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/clirun.h"
#include "support/entryfixture.h"
#include "support/records.h"
#include "support/reliabilityfiles.h"

#include <QBuffer>


using namespace tarvik;

Q_DECLARE_METATYPE(QList<tarvik::ImportedLog>)

namespace {

ImportedLog log(qint32 lot, qint32 number, const char* species, const char* diameter, const char* length,
                const char* quality = "B", const char* remark = "")
{
    ImportedLog l;
    l.lot = lot;
    l.number = number;
    l.species = QString::fromUtf8(species);
    l.diameter = QString::fromLatin1(diameter);
    l.length = QString::fromLatin1(length);
    l.quality = QString::fromLatin1(quality);
    l.remark = QString::fromUtf8(remark);
    return l;
}

const QString Done = QStringLiteral("Der Import wurde erforgreich abgeschlossen!");
const QString Attention = QStringLiteral("ACHTUNG!!!\n\nDa Sie die Stämme automatisch eingelesen haben, müssen Sie dieses Modul mit "
                                         "[Abbrechen] schließen. Nur wenn Sie weitere Stämme zusätzliche Stämme eingeben, können Sie "
                                         "diese wie gewohnt mit [OK] buchen!");


QString fixture(const QString& name) { return QStringLiteral(TARVIK_STANFORD "/") + name; }

const QString V201 = QStringLiteral("HPR_V0201_MaxiXplorer_0310_20170309.hpr");
const QString V300 = QStringLiteral("HPR_V0300_TimberMaticH_020125_20210211.hpr");
const QString V306 = QStringLiteral("HPR_V0306_TimberMaticH_021015_20241119.hpr");

// A small file of the current version around the given stems.
QByteArray smallFile(const QByteArray& stems, const QByteArray& rootAttributes = "version=\"3.6\" diameterUnit=\"mm\" lengthUnit=\"cm\"")
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<HarvestedProduction xmlns=\"urn:skogforsk:stanford2010\" " + rootAttributes
           + "><Machine><SpeciesGroupDefinition><SpeciesGroupKey>1</SpeciesGroupKey><SpeciesGroupName>Fichte</SpeciesGroupName>"
             "</SpeciesGroupDefinition><ProductDefinition><ProductKey>7</ProductKey><ClassifiedProductDefinition><ProductName>Abschnitt"
             "</ProductName></ClassifiedProductDefinition></ProductDefinition>"
           + stems + "</Machine></HarvestedProduction>\n";
}

QByteArray stem(int number, const QByteArray& logs)
{
    return "<Stem><StemKey>9" + QByteArray::number(number) + "</StemKey><SpeciesGroupKey>1</SpeciesGroupKey><StemNumber>"
           + QByteArray::number(number) + "</StemNumber><SingleTreeProcessedStem><DBH>300</DBH>" + logs
           + "</SingleTreeProcessedStem></Stem>";
}

const QByteArray GoodLog = "<Log><LogKey>1</LogKey><ProductKey>7</ProductKey><LogMeasurement><LogDiameter logDiameterCategory=\"Mid ob\">"
                           "356</LogDiameter><LogDiameter logDiameterCategory=\"Mid ub\">338</LogDiameter><LogDiameter "
                           "logDiameterCategory=\"Mid HKS ub\">329</LogDiameter><LogLength>459</LogLength></LogMeasurement></Log>";

} // namespace

class TestLogImport : public QObject, protected test::EntryFixture {
    Q_OBJECT

    QVariant sql(const QString& text, const QVariantList& values = {}) const { return scalar(db(), text, values); }
    int logCount() const { return sql(QStringLiteral("SELECT count(*) FROM Stämme")).toInt(); }

    HarvesterFile read(const QString& name)
    {
        const HarvesterRead r = readHarvesterFile(fixture(name));
        if (!r.file)
            qFatal("%s", qPrintable(r.error));
        return *r.file;
    }

    std::optional<HarvesterOutcome> importWith(const HarvesterFile& file, const HarvesterMapping& mapping, qint32 lot = 1)
    {
        m_prompter.answerYes();
        return importHarvesterLogs(context(), m_harvest, lot, file, mapping);
    }

    HarvesterMapping proposed(const HarvesterFile& file)
    {
        return proposedHarvesterMapping(db(), m_folder.path(), file.speciesNames, file.productNames);
    }

private slots:
    void init()
    {
        resetDatabase(1, {QString::fromLatin1(HarvesterMappingFile)});
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
    }

    void deviceLogsAreMeasuredPricedAndTotalled()
    {
        execSql(db(), QStringLiteral("UPDATE Lose SET Preis_Art = 2, Pauschalpreis_efm = 50 WHERE Los_Nr = 1"));
        test::addTypedLog(db(), m_harvest, 1, 7, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        const QList<ImportedLog> logs{
            log(0, 1, "Fi", "35", "4"),       // into the window's lot
            log(0, 2, "Kie", "28", "4,5", "A"),
            log(3, 3, "Bu", "40", "5", "C"),  // the device keeps lot 3, which is missing
            log(0, 7, "Fi", "30", "4"),       // number taken in the harvest
            log(0, 8, "Hb", "30", "4"),       // species the device does not know
            log(0, 9, "", "30", "4"),         // species code without species
            log(0, 10, "Fi", "0", "4"),       // no diameter: the log window would refuse it
        };
        m_prompter.answerYes();
        const auto outcome = importLogs(context(), m_harvest, 1, ImportSource::Fmr1, logs, {BarkMode::Tabelle, {}});
        QVERIFY(outcome);
        QCOMPARE(outcome->found, 7);
        QCOMPARE(outcome->stored, 3);
        QCOMPARE(outcome->skipped, 4);
        QCOMPARE(outcome->createdLots, QList<qint32>{3});
        QCOMPARE(m_prompter.questions().first(), QStringLiteral("Es wurden 7 Stämme gefunden. Sollen diese jetzt übertragen werden?"));
        QCOMPARE(m_prompter.messages(),
                 (QStringList{QStringLiteral("Der FMR1 hat Sämme aus einem Los gespeichert, welches im aktuellen Hieb noch nicht "
                                             "angelegt ist. Das Los 3 wird deshalb jetzt angelegt."),
                              QStringLiteral("Von den 7 Stämmen wurden 4 nicht importiert. Das kann damit zusammenhängen, dass z.B. "
                                             "die Baumart in Tarvik nicht auffindbar ist oder die laufende Nummer im aktuellen Hieb "
                                             "bereits vergeben ist."),
                              Done, Attention}));

        // Bark by table: spruce 27–50 cm loses 2 cm; 0,33 × 0,33 × 3.14159 ÷ 4 × 4 = 0,342.
        QCOMPARE(sql(QStringLiteral("SELECT Baumart || '|' || Rindenabzugsart || '|' || Rindenabzug || '|' || Stärke_oR || '|' || "
                                      "printf('%.3f', Efm_oR) || '|' || Stärkeklasse || '|' || Güteklasse || '|' || "
                                      "printf('%.2f', Holzpreis) || '|' || Los_Nr FROM Stämme WHERE Laufende_Nr = 1")).toString(),
                 QStringLiteral("FI (Fichte)|T|2|33|0.342|L3a|B|17.10|1")); // flat 50 per Efm of the lot
        QCOMPARE(sql(QStringLiteral("SELECT group_concat(Laufende_Nr || ':' || Baumart || ':' || Los_Nr) FROM Stämme WHERE Laufende_Nr IN (2, 3)")).toString(),
                 QStringLiteral("2:KI (Kiefer):1,3:BU (Rotbuche):3"));
        QCOMPARE(sql(QStringLiteral("SELECT Sortierung FROM Lose WHERE Los_Nr = 3")).toString(), QStringLiteral("Stämme"));

        // Totals of the lots and of the harvest follow at once.
        QCOMPARE(sql(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Los_Nr = 1")).toInt(), 3);
        QCOMPARE(sql(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Los_Nr = 3")).toInt(), 1);
        QCOMPARE(sql(QStringLiteral("SELECT Stämme_Anzahl FROM Hiebe WHERE ID = ?"), {m_harvest}).toInt(), 4);
        QCOMPARE(sql(QStringLiteral("SELECT Anzahl_Lose FROM Hiebe WHERE ID = ?"), {m_harvest}).toInt(), 2);
    }

    void barkFollowsTheWindowsMode_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("fixed");
        QTest::addColumn<int>("underBark");
        QTest::newRow("ohne") << int(BarkMode::Ohne) << QString() << 35;
        QTest::newRow("fest 3") << int(BarkMode::Fest) << QStringLiteral("3") << 32;
        QTest::newRow("tabelle") << int(BarkMode::Tabelle) << QString() << 33;
    }
    void barkFollowsTheWindowsMode()
    {
        QFETCH(int, mode);
        QFETCH(QString, fixed);
        QFETCH(int, underBark);
        m_prompter.answerYes();
        QVERIFY(importLogs(context(), m_harvest, 1, ImportSource::App, {log(1, 1, "Fi", "35", "4")}, {BarkMode(mode), fixed}));
        QCOMPARE(sql(QStringLiteral("SELECT Stärke_oR FROM Stämme")).toInt(), underBark);
    }

    void bracketLogsBelongToTheirMainLog()
    {
        const QList<ImportedLog> logs{log(4, 5, "Fi", "35", "4"), log(4, 10005, "Fi", "22", "4", "C", "Zwiesel"),
                                      log(4, 10006, "Fi", "20", "3")};
        m_prompter.answerYes().answerYes();
        const auto outcome = importLogs(context(), m_harvest, std::nullopt, ImportSource::Online, logs, {});
        QVERIFY(outcome);
        QCOMPARE(outcome->stored, 3);
        QCOMPARE(m_prompter.questions().at(1),
                 QStringLiteral("Es wurden Stämme mit einer Stammnummer über 10000 gefunden. Hier könnte es sich auch um Klammerstämme "
                                "handeln, die zu den Stämmen 'Aktuelle Stammnummer - 10.000' gehören. Sollen die Stämme mit einer "
                                "Stammnummer > 10.000 als Klammerstämme gespeichert werden?"));
        QCOMPARE(m_prompter.messages().first(),
                 QStringLiteral("Das Los 4 ist im aktuellen Hieb noch nicht angelegt ist. Das Los 4 wird deshalb jetzt angelegt."));
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM Stämme WHERE Laufende_Nr = 5")).toInt(), 2);
        QCOMPARE(sql(QStringLiteral("SELECT Bemerkung FROM Stämme WHERE Laufende_Nr = 5 AND Stärke_gemessen = 22")).toString(),
                 QStringLiteral("Klammerstamm zu 5 Zwiesel"));
        QCOMPARE(sql(QStringLiteral("SELECT Bemerkung FROM Stämme WHERE Laufende_Nr = 6")).toString(), QStringLiteral("Klammerstamm zu 6"));

        // The same file again: main and bracket logs are all found and skipped.
        m_prompter.clear();
        m_prompter.answerYes().answerYes();
        const auto again = importLogs(context(), m_harvest, std::nullopt, ImportSource::Online, logs, {});
        QVERIFY(again);
        QCOMPARE(again->stored, 0);
        QCOMPARE(again->skipped, 3);
        QCOMPARE(logCount(), 3);
    }

    void bracketLogsDeclinedKeepTheirNumber()
    {
        m_prompter.answerYes().answerNo();
        QVERIFY(importLogs(context(), m_harvest, 1, ImportSource::Online, {log(1, 10005, "Fi", "22", "4")}, {}));
        QCOMPARE(sql(QStringLiteral("SELECT Laufende_Nr FROM Stämme")).toInt(), 10005);
        QVERIFY(sql(QStringLiteral("SELECT Bemerkung FROM Stämme")).toString().isEmpty());
    }

    void nothingStored_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<bool>("empty");
        QTest::addColumn<QString>("message");
        QTest::newRow("device, nothing found") << int(ImportSource::Fmr1) << true
                                               << QStringLiteral("Es wurden keine Daten gefunden. Bitte prüfen Sie ggf. nochmals die COM-Schnittstelle.");
        QTest::newRow("service, nothing found") << int(ImportSource::Online) << true << QStringLiteral("Es wurden keine Stämme gefunden.");
        QTest::newRow("transfer declined") << int(ImportSource::App) << false << QString();
    }
    void nothingStored()
    {
        QFETCH(int, source);
        QFETCH(bool, empty);
        QFETCH(QString, message);
        if (!empty)
            m_prompter.answerNo();
        QVERIFY(!importLogs(context(), m_harvest, 1, ImportSource(source), empty ? QList<ImportedLog>{} : QList<ImportedLog>{log(9, 1, "Fi", "35", "4")}, {}));
        QCOMPARE(m_prompter.messages(), message.isEmpty() ? QStringList{} : QStringList{message});
        QCOMPARE(logCount(), 0);
        QVERIFY(!sql(QStringLiteral("SELECT 1 FROM Lose WHERE Los_Nr = 9")).isValid());
    }

    // The question shows each log with what will become of it, and the import keeps to it:
    // the logs marked without a reason are stored, the others are not, and when none is
    // stored the closing message says so.
    void refusedLogsAreMarkedWithTheirReason_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<QList<ImportedLog>>("logs");
        QTest::addColumn<QStringList>("reasons");
        const int app = int(ImportSource::App);
        QTest::newRow("lot of another assortment") << app << QList<ImportedLog>{log(5, 1, "Fi", "35", "4"), log(1, 2, "Fi", "35", "4")}
                                                   << QStringList{"Los 5 ist ein Los der Sortierung Pfähle", ""};
        QTest::newRow("number taken in the lot") << app << QList<ImportedLog>{log(1, 7, "Fi", "35", "4"), log(2, 7, "Fi", "35", "4")}
                                                 << QStringList{"Stammnummer 7 im Los 1 bereits vergeben", ""};
        // The device's numbers are unique in the harvest, the app's and the service's in their lot.
        QTest::newRow("device: number taken in the harvest")
            << int(ImportSource::Fmr1) << QList<ImportedLog>{log(2, 7, "Fi", "35", "4")} << QStringList{"Stammnummer 7 im Hieb bereits vergeben"};
        QTest::newRow("service: number of another lot") << int(ImportSource::Online) << QList<ImportedLog>{log(2, 7, "Fi", "35", "4")}
                                                        << QStringList{""};
        QTest::newRow("twice in one transfer") << int(ImportSource::Online)
                                               << QList<ImportedLog>{log(1, 8, "Fi", "35", "4"), log(1, 8, "Ta", "30", "4")}
                                               << QStringList{"", "Stammnummer 8 im Los 1 bereits vergeben"};
        QTest::newRow("unknown and missing species") << app << QList<ImportedLog>{log(1, 8, "Hb", "35", "4"), log(1, 9, "", "35", "4")}
                                                     << QStringList{"Baumart Hb unbekannt", "keine Baumart"};
        QTest::newRow("nothing measured, in a new lot") << app << QList<ImportedLog>{log(9, 1, "Fi", "0", "4"), log(9, 2, "Fi", "30", "0")}
                                                        << QStringList{"Stärke oder Länge fehlt", "Stärke oder Länge fehlt"};
    }
    void refusedLogsAreMarkedWithTheirReason()
    {
        QFETCH(int, source);
        QFETCH(QList<ImportedLog>, logs);
        QFETCH(QStringList, reasons);
        createLot(db(), m_harvest, 5, QStringLiteral("Pfähle"));
        test::addTypedLog(db(), m_harvest, 1, 7, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        QStringList shown;
        QString question;
        const auto outcome = importLogs(context(), m_harvest, 1, ImportSource(source), logs, {},
                                        [&](const QString& q, const QList<ImportedLog>& asked, const QStringList& r) {
                                            question = q;
                                            shown = r;
                                            return asked.size() == logs.size();
                                        });
        QCOMPARE(question, QStringLiteral("Es wurden %1 Stämme gefunden. Sollen diese jetzt übertragen werden?").arg(logs.size()));
        QCOMPARE(shown, reasons);
        QVERIFY(outcome);
        const int stored = int(reasons.count(QString()));
        QCOMPARE(outcome->stored, stored);
        QCOMPARE(outcome->skipped, int(logs.size()) - stored);
        QCOMPARE(logCount(), 1 + stored);
        QVERIFY(m_prompter.questions().isEmpty());
        if (stored == 0) {
            QCOMPARE(m_prompter.messages().last(), QString::fromUtf8(NothingStoredMessage));
            QVERIFY(!sql(QStringLiteral("SELECT 1 FROM Lose WHERE Los_Nr = 9")).isValid()); // no lot for logs that do not come
        }
    }

    // Logs of the app and the service that bring no lot, with none in the window, stop the
    // import with the device import's message; with a lot in the window they go there.
    void logsWithoutLotNeedTheFormsLot_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<bool>("formLot");
        QTest::newRow("app, no lot") << int(ImportSource::App) << false;
        QTest::newRow("service, no lot") << int(ImportSource::Online) << false;
        QTest::newRow("app, the window's lot") << int(ImportSource::App) << true;
        QTest::newRow("service, the window's lot") << int(ImportSource::Online) << true;
    }
    void logsWithoutLotNeedTheFormsLot()
    {
        QFETCH(int, source);
        QFETCH(bool, formLot);
        const QList<ImportedLog> logs{log(1, 1, "Fi", "35", "4"), log(0, 2, "Fi", "35", "4")};
        if (formLot)
            m_prompter.answerYes();
        const auto outcome = importLogs(context(), m_harvest, formLot ? std::optional<qint32>(1) : std::nullopt, ImportSource(source), logs, {});
        QCOMPARE(bool(outcome), formLot);
        if (formLot) {
            QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM Stämme WHERE Los_Nr = 1")).toInt(), 2);
            return;
        }
        QCOMPARE(m_prompter.questions(), QStringList{});
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Der Datenimport ist nur möglich, wenn die LOS-Nummer angegeben wird!")});
        QCOMPARE(logCount(), 0);
    }

    void aRefusedRowLeavesNothingStored()
    {
        // The database refuses the third log: the two before it and the new lot go as well.
        execSql(db(), QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON Stämme WHEN NEW.Laufende_Nr = 3 "
                                     "BEGIN SELECT RAISE(ABORT, 'kaputt'); END"));
        m_prompter.answerYes();
        const QList<ImportedLog> logs{log(6, 1, "Fi", "35", "4"), log(6, 2, "Fi", "35", "4"), log(6, 3, "Fi", "35", "4")};
        QVERIFY(!importLogs(context(), m_harvest, 1, ImportSource::App, logs, {}));
        QCOMPARE(logCount(), 0);
        QVERIFY(!sql(QStringLiteral("SELECT 1 FROM Lose WHERE Los_Nr = 6")).isValid());
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("Der Import konnte nicht gespeichert werden")));
    }

    // Each version read and imported with the proposed mapping: the file's counts, the first
    // and last log as stored, and the lot's position from the mean of the processed stems.
    void everyVersion_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("version");
        QTest::addColumn<int>("stems");
        QTest::addColumn<int>("felledOnly");
        QTest::addColumn<int>("multiStems");
        QTest::addColumn<QString>("multiVolume");
        QTest::addColumn<QStringList>("species");
        QTest::addColumn<int>("stored");
        // running number, species, with bark cm, deduction cm, under bark cm, length m, Efm
        QTest::addColumn<QStringList>("first");
        QTest::addColumn<QStringList>("last");
        QTest::addColumn<QString>("latitude");
        QTest::addColumn<QString>("longitude");
        // Stem 99, log 1: 218 mm → 21 cm, HKS 200 mm → 20 cm; 31 cm → 0,3 m; 0,2² × 3.14159 ÷ 4 × 0,3 = 0,0094
        QTest::newRow("2.1") << V201 << "2.1" << 9 << 0 << 0 << "0,000" << QStringList{"Furu", "Gran", "Bjork", "Andre"} << 40
                             << QStringList{"991", "FI (Fichte)", "21", "1", "20", "0,3", "0,009"}
                             // stem 107, log 5: 94 → 9, HKS 80 → 8; 243 cm → 2,4 m; 0,08² × 0,785398 × 2,4 = 0,0121
                             << QStringList{"1075", "FI (Fichte)", "9", "1", "8", "2,4", "0,012"} << "60,923997" << "9,306816";
        // "TØRRGRAN" is dry spruce: spruce as well. 85 → 8, 78 → 7; 3,74 m: 0,07² × 0,785398 × 3,7 = 0,0142
        QTest::newRow("3.0") << V300 << "3.0" << 31 << 2 << 0 << "0,000" << QStringList{"FURU", "GRAN", "LAUV", "TØRRGRAN"} << 57
                             << QStringList{"31", "FI (Fichte)", "8", "1", "7", "3,7", "0,014"}
                             // "LAUV" (broadleaf): 80 → 8, 74 → 7; 3,96 m: 0,0150
                             << QStringList{"312", "AL (Anderes Laubholz)", "8", "1", "7", "3,9", "0,015"} << "59,999898" << "10,798433";
        // 22 single and 10 bunch-felled stems bring no logs; 6 bunch-processed stems estimated ones.
        // 88 = 88: no bark; 5,2 m: 0,08² × 0,785398 × 5,2 = 0,0261
        QTest::newRow("3.6") << V306 << "3.6" << 141 << 32 << 6 << "0,078" << QStringList{"FURU", "GRAN", "BJØRK", "LAUV"} << 153
                             << QStringList{"11", "BI (Birke)", "8", "0", "8", "5,2", "0,026"}
                             // 104 → 10, 96 → 9; 3,95 m: 0,09² × 0,785398 × 3,9 = 0,0248
                             << QStringList{"1402", "FI (Fichte)", "10", "1", "9", "3,9", "0,025"} << "63,709719" << "11,497934";
    }
    void everyVersion()
    {
        QFETCH(QString, file);
        QFETCH(int, stored);
        const HarvesterFile f = read(file);
        QCOMPARE(f.fileName, file);
        QTEST(f.version, "version");
        QTEST(f.stems, "stems");
        QTEST(f.felledOnly, "felledOnly");
        QTEST(f.multiTreeStems, "multiStems");
        QCOMPARE(f.multiTreeLogs, f.multiTreeStems); // one log each in these files
        QTEST(formatDecimal(f.multiTreeVolume, 3), "multiVolume");
        QTEST(f.speciesNames, "species");

        const auto outcome = importWith(f, proposed(f));
        QVERIFY(outcome);
        QCOMPARE(outcome->found, int(f.logs.size()));
        QCOMPARE(outcome->stored, stored);
        QCOMPARE(logCount(), stored);
        const QString columns = QStringLiteral("Laufende_Nr || '|' || Baumart || '|' || Stärke_gemessen || '|' || Rindenabzug || '|' || "
                                               "Stärke_oR || '|' || replace(printf('%.1f', Länge_m), '.', ',') || '|' || "
                                               "replace(printf('%.3f', Efm_oR), '.', ',')");
        QTEST(sql(QStringLiteral("SELECT %1 FROM Stämme ORDER BY ID LIMIT 1").arg(columns)).toString().split(u'|'), "first");
        QTEST(sql(QStringLiteral("SELECT %1 FROM Stämme ORDER BY ID DESC LIMIT 1").arg(columns)).toString().split(u'|'), "last");
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM Stämme WHERE Rindenabzugsart = 'F' AND Los_Nr = 1")).toInt(), stored);
        QCOMPARE(sql(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Los_Nr = 1")).toInt(), stored);
        QTEST(sql(QStringLiteral("SELECT GPS_B FROM Lose WHERE Los_Nr = 1")).toString(), "latitude");
        QTEST(sql(QStringLiteral("SELECT GPS_L FROM Lose WHERE Los_Nr = 1")).toString(), "longitude");
        QVERIFY(outcome->positionSet);
        // The summary shows the machine's volume beside the program's.
        const QString summary = m_prompter.messages().first();
        QVERIFY2(summary.contains(QStringLiteral("m³ oR laut Harvester")), qPrintable(summary));
    }

    void mappingDecidesWhatIsTaken()
    {
        // The built-in table knows the Scandinavian names, the English and the German ones.
        for (const auto& [name, code] : {std::pair{"Gran", "FI"}, {"Furu", "KI"}, {"Fichte", "FI"}, {"Kiefer", "KI"}, {"Spruce", "FI"},
                                         {"BJØRK", "BI"}, {"Björk", "BI"}, {"Andre", ""}}) // "other": the user decides
            QCOMPARE(builtInSpeciesCode(QString::fromUtf8(name)), QString::fromLatin1(code));

        const HarvesterFile f = read(V300);
        HarvesterMapping m = proposed(f);
        QCOMPARE(m.species.value(QStringLiteral("FURU")), QStringLiteral("KI (Kiefer)"));
        QCOMPARE(m.species.value(QStringLiteral("GRAN")), QStringLiteral("FI (Fichte)"));
        // Broadleaf left unmapped, the 34 logs of "MASSE FRISK" excluded, "Sagt BHV D12+" (4) as quality A.
        m.species.insert(QStringLiteral("LAUV"), QString());
        m.excludedProducts.insert(QStringLiteral("MASSE FRISK"));
        m.productQuality.insert(QStringLiteral("Sagt BHV D12+"), QStringLiteral("A"));
        const auto outcome = importWith(f, m);
        QVERIFY(outcome);
        QCOMPARE(outcome->unmapped, 15);
        QCOMPARE(outcome->excluded, 34);
        QCOMPARE(outcome->stored, 57 - 15 - 34);
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM Stämme WHERE Güteklasse = 'A' AND Bemerkung = 'Sagt BHV D12+'")).toInt(), 4);
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM Stämme WHERE Baumart = 'AL (Anderes Laubholz)'")).toInt(), 0);
        const QString summary = m_prompter.messages().first();
        QVERIFY2(summary.contains(QStringLiteral("...15 Stämme einer Baumart ohne Zuordnung")), qPrintable(summary));
        QVERIFY2(summary.contains(QStringLiteral("...34 Stämme ausgeschlossener Produkte")), qPrintable(summary));
        QVERIFY2(summary.contains(QStringLiteral("...2 nur gefällte Bäume")), qPrintable(summary));

        // The choices come back for the next file, over the built-in table.
        const HarvesterMapping again = proposed(f);
        QCOMPARE(again.species.value(QStringLiteral("LAUV")), QString());
        QCOMPARE(again.species.value(QStringLiteral("GRAN")), QStringLiteral("FI (Fichte)"));
        QVERIFY(again.excludedProducts.contains(QStringLiteral("MASSE FRISK")));
        QCOMPARE(again.productQuality.value(QStringLiteral("Sagt BHV D12+")), QStringLiteral("A"));
    }

    void secondImportSkipsTheNumbersItHas()
    {
        const HarvesterFile f = read(V201);
        QVERIFY(importWith(f, proposed(f)));
        m_prompter.clear();
        m_prompter.answerYes(); // lot 2 is created first
        const auto second = importWith(f, proposed(f), 2);
        QVERIFY(second);
        QCOMPARE(second->stored, 0);
        QCOMPARE(second->duplicates, 40);
        QCOMPARE(logCount(), 40);
    }

    void numbersAndBarkOfASmallFile_data()
    {
        QTest::addColumn<QByteArray>("stems");
        QTest::addColumn<QString>("numbers");
        QTest::addColumn<int>("unnumbered");
        // HKS ub wins over Mid ub: 356 → 35, 329 → 32: 3 cm; 459 cm → 4,5 m.
        QTest::newRow("three logs") << stem(12, GoodLog + GoodLog + GoodLog) << "121,122,123" << 0;
        QTest::newRow("tenth log has no number") << stem(4, GoodLog.repeated(10)) << "41,42,43,44,45,46,47,48,49" << 1;
        QTest::newRow("stem past 99999") << stem(100000, GoodLog) + stem(99999, GoodLog) << "999991" << 1;
    }
    void numbersAndBarkOfASmallFile()
    {
        QFETCH(QByteArray, stems);
        QByteArray bytes = smallFile(stems);
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        const HarvesterRead r = readHarvesterFile(buffer, QStringLiteral("klein.hpr"));
        QVERIFY2(r.file, qPrintable(r.error));
        const auto outcome = importWith(*r.file, proposed(*r.file));
        QVERIFY(outcome);
        QTEST(outcome->unnumbered, "unnumbered");
        QTEST(sql(QStringLiteral("SELECT group_concat(Laufende_Nr) FROM (SELECT Laufende_Nr FROM Stämme ORDER BY ID)")).toString(), "numbers");
        QCOMPARE(sql(QStringLiteral("SELECT DISTINCT Stärke_gemessen || '/' || Rindenabzug || '/' || Stärke_oR || '/' || Länge_m || '/' || "
                                    "Baumart FROM Stämme")).toString(),
                 QStringLiteral("35/3/32/4.5/FI (Fichte)"));
    }

    void damagedFilesAreRefusedWhole_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("message");
        const QString start = QStringLiteral("Die Datei \"defekt.hpr\" kann nicht eingelesen werden, ");
        const QString end = QStringLiteral(". Es wurde nichts übernommen.");
        QTest::newRow("not XML") << QByteArray("Stamm;Länge\n1;4,5\n") << start + "sie ist keine gültige XML-Datei (Fehler in Zeile 1)" + end;
        QTest::newRow("other XML") << QByteArray("<?xml version=\"1.0\"?><Holzliste/>")
                                   << start + "sie ist keine Produktionsdatei eines Harvesters (StanForD 2010, HarvestedProduction)" + end;
        QTest::newRow("StanForD Classic name, other namespace")
            << QByteArray("<HarvestedProduction xmlns=\"urn:example\" version=\"3.0\"/>")
            << start + "sie ist keine Produktionsdatei eines Harvesters (StanForD 2010, HarvestedProduction)" + end;
        QTest::newRow("version 4") << smallFile(stem(1, GoodLog), "version=\"4.0\"")
                                   << start + "sie hat die StanForD-2010-Version \"4.0\"; gelesen werden die Versionen 2.x und 3.x" + end;
        QTest::newRow("unknown unit") << smallFile(stem(1, GoodLog), "version=\"3.0\" lengthUnit=\"ft\"")
                                      << start + "die Einheit der Längen \"ft\" ist unbekannt" + end;
        QByteArray cut = smallFile(stem(1, GoodLog) + stem(2, GoodLog + GoodLog));
        cut.truncate(cut.indexOf("<Log>", cut.indexOf("<StemNumber>2")) + 40);
        QTest::newRow("cut off in stem 2") << cut << start + "sie endet mitten im Baum Nr. 2" + end;
        QByteArray noLength = GoodLog;
        noLength.replace("<LogLength>459</LogLength>", "");
        QTest::newRow("second log without length")
            << smallFile(stem(1, GoodLog) + stem(5, GoodLog + noLength)) << start + "dem 2. Stamm fehlt die Länge beim Baum Nr. 5" + end;
        QByteArray noDiameter = GoodLog;
        noDiameter.replace("\"Mid ob\">356", "\"Top ob\">356");
        QTest::newRow("log without diameter") << smallFile(stem(8, noDiameter))
                                              << start + "dem 1. Stamm fehlt der Durchmesser mit Rinde (Mid ob) beim Baum Nr. 8" + end;
        QByteArray badNumber = GoodLog;
        badNumber.replace("<LogLength>459", "<LogLength>4,59");
        QTest::newRow("length not a number") << smallFile(stem(3, badNumber))
                                             << start + "die Länge \"4,59\" ist keine Zahl beim Baum Nr. 3" + end;
    }
    void damagedFilesAreRefusedWhole()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, message);
        const QString path = m_folder.filePath(QStringLiteral("defekt.hpr"));
        test::writeBytes(path, bytes);
        QCOMPARE(readHarvesterFile(path).error, message);
    }

    void commandLineMapsAndExcludes()
    {
        // Birch as beech for once, the energy wood of the spruce left out.
        const test::CliOutput run = test::runCli({QStringLiteral("--ja"), QStringLiteral("--daten"), m_folder.path(),
                                                  QStringLiteral("geraeteimport"), QStringLiteral("harvester"), fixture(V306),
                                                  QStringLiteral("1"), QStringLiteral("3"), QStringLiteral("--baumart"),
                                                  QStringLiteral("BJØRK=BU"), QStringLiteral("--ohne-produkt"), QStringLiteral("MASSE")});
        QCOMPARE(run.code, 0);
        // 153 logs: 90 of "MASSE" left out; 63 taken: 45 "BJORK" and 3 unclassified birch logs,
        // 11 "Gran MVS 142" and 4 unclassified spruce logs.
        QVERIFY2(run.out.contains(QStringLiteral("63 von 153 Stämmen eingelesen, 90 übersprungen.")), qPrintable(run.out + run.err));
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM Stämme WHERE Los_Nr = 3 AND Baumart = 'BU (Rotbuche)'")).toInt(), 48);
        QCOMPARE(sql(QStringLiteral("SELECT Sortierung FROM Lose WHERE Los_Nr = 3")).toString(), QStringLiteral("Stämme"));

        const test::CliOutput unknown = test::runCli({QStringLiteral("--ja"), QStringLiteral("--daten"), m_folder.path(),
                                                      QStringLiteral("geraeteimport"), QStringLiteral("harvester"), fixture(V306),
                                                      QStringLiteral("1"), QStringLiteral("4"), QStringLiteral("--baumart"),
                                                      QStringLiteral("GRAN=XX")});
        QCOMPARE(unknown.code, 1);
        QVERIFY(unknown.err.contains(QStringLiteral("Die Baumart \"XX\" gibt es in den Stammdaten nicht.")));

        // A damaged file: refused, nothing stored, the reader's message on stderr.
        const QString damaged = m_folder.filePath(QStringLiteral("defekt.hpr"));
        test::writeBytes(damaged, "<?xml version=\"1.0\"?><Holzliste/>");
        const test::CliOutput refused = test::runCli({QStringLiteral("--ja"), QStringLiteral("--daten"), m_folder.path(),
                                                      QStringLiteral("geraeteimport"), QStringLiteral("harvester"), damaged,
                                                      QStringLiteral("1"), QStringLiteral("5")});
        QCOMPARE(refused.code, 1);
        QVERIFY2(refused.err.contains(readHarvesterFile(damaged).error), qPrintable(refused.err));
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM Stämme WHERE Los_Nr = 5")).toInt(), 0);
    }
};

TARVIK_TEST_CORE_MAIN(TestLogImport)
#include "tst_logimport.moc"
