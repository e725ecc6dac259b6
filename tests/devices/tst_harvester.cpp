// Harvester production files: the three real files read and imported (counts, first and last
// log, mapping, the lot's position), damaged files refused whole with the stem named, and the
// mapping chosen once kept for the next file. Expected values are read off the files by hand.
#include "cli/cli.h"
#include "common/numbers.h"
#include "devices/harvesterimport.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/clirun.h"
#include "support/entryfixture.h"
#include "support/reliabilityfiles.h"

#include <QBuffer>
#include <QTest>

using namespace tarvik;

namespace {

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

class TestHarvester : public QObject, protected test::EntryFixture {
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

    void readsEveryVersion_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("version");
        QTest::addColumn<int>("stems");
        QTest::addColumn<int>("logs");
        QTest::addColumn<int>("felledOnly");
        QTest::addColumn<int>("multiStems");
        QTest::addColumn<QString>("multiVolume");
        QTest::addColumn<QStringList>("species");
        // stem number, position, species, product, Mid ob mm, Mid (HKS) ub mm, length cm
        QTest::addColumn<QVariantList>("first");
        QTest::addColumn<QVariantList>("last");
        QTest::newRow("2.1") << V201 << "2.1" << 9 << 40 << 0 << 0 << "0,000" << QStringList{"Furu", "Gran", "Bjork", "Andre"}
                             << QVariantList{99, 1, "Gran", "Unclassified", 218, 200, 31}
                             << QVariantList{107, 5, "Gran", "Unclassified", 94, 80, 243};
        QTest::newRow("3.0") << V300 << "3.0" << 31 << 57 << 2 << 0 << "0,000" << QStringList{"FURU", "GRAN", "LAUV", "TØRRGRAN"}
                             << QVariantList{3, 1, "GRAN", "MASSE FRISK", 85, 78, 374}
                             << QVariantList{31, 2, "LAUV", "Øvrig løv", 80, 74, 396};
        // 22 single and 10 bunch-felled stems bring no logs; 6 bunch-processed stems estimated ones.
        QTest::newRow("3.6") << V306 << "3.6" << 141 << 153 << 32 << 6 << "0,078" << QStringList{"FURU", "GRAN", "BJØRK", "LAUV"}
                             << QVariantList{1, 1, "BJØRK", "BJORK", 88, 88, 520}
                             << QVariantList{140, 2, "GRAN", "MASSE", 104, 96, 395};
    }
    void readsEveryVersion()
    {
        QFETCH(QString, file);
        const HarvesterFile f = read(file);
        QCOMPARE(f.fileName, file);
        QTEST(f.version, "version");
        QTEST(f.stems, "stems");
        QTEST(int(f.logs.size()), "logs");
        QTEST(f.felledOnly, "felledOnly");
        QTEST(f.multiTreeStems, "multiStems");
        QCOMPARE(f.multiTreeLogs, f.multiTreeStems); // one log each in these files
        QTEST(formatDecimal(f.multiTreeVolume, 3), "multiVolume");
        QTEST(f.speciesNames, "species");
        QFETCH(QVariantList, first);
        QFETCH(QVariantList, last);
        for (const auto& [log, e] : {std::pair{f.logs.front(), first}, std::pair{f.logs.back(), last}}) {
            QCOMPARE(log.stemNumber, e[0].toLongLong());
            QCOMPARE(log.position, e[1].toInt());
            QCOMPARE(f.speciesNames.value(log.species), e[2].toString());
            QCOMPARE(f.productNames.value(log.product), e[3].toString());
            QCOMPARE(log.midOverBarkMm, e[4].toDouble());
            QCOMPARE(log.midUnderBarkMm, e[5].toDouble());
            QCOMPARE(log.lengthCm, e[6].toDouble());
        }
    }

    void importsEveryVersion_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("stored");
        // running number, species, with bark cm, deduction cm, under bark cm, length m, Efm
        QTest::addColumn<QStringList>("first");
        QTest::addColumn<QStringList>("last");
        QTest::addColumn<QString>("latitude");
        QTest::addColumn<QString>("longitude");
        // 218 mm → 21 cm, HKS 200 mm → 20 cm; 31 cm → 0,3 m; 0,2² × 3.14159 ÷ 4 × 0,3 = 0,0094
        QTest::newRow("2.1") << V201 << 40 << QStringList{"991", "FI (Fichte)", "21", "1", "20", "0,3", "0,009"}
                             // 94 → 9, HKS 80 → 8; 243 cm → 2,4 m; 0,08² × 0,785398 × 2,4 = 0,0121
                             << QStringList{"1075", "FI (Fichte)", "9", "1", "8", "2,4", "0,012"} << "60,923997" << "9,306816";
        // "TØRRGRAN" is dry spruce: spruce as well. 85 → 8, 78 → 7; 3,7 m: 0,07² × 0,785398 × 3,7 = 0,0142
        QTest::newRow("3.0") << V300 << 57 << QStringList{"31", "FI (Fichte)", "8", "1", "7", "3,7", "0,014"}
                             // "LAUV" (broadleaf): 80 → 8, 74 → 7; 3,9 m: 0,0150
                             << QStringList{"312", "AL (Anderes Laubholz)", "8", "1", "7", "3,9", "0,015"} << "59,999898" << "10,798433";
        // 88 = 88: no bark; 5,2 m: 0,08² × 0,785398 × 5,2 = 0,0261
        QTest::newRow("3.6") << V306 << 153 << QStringList{"11", "BI (Birke)", "8", "0", "8", "5,2", "0,026"}
                             // 104 → 10, 96 → 9; 3,9 m: 0,09² × 0,785398 × 3,9 = 0,0248
                             << QStringList{"1402", "FI (Fichte)", "10", "1", "9", "3,9", "0,025"} << "63,709719" << "11,497934";
    }
    void importsEveryVersion()
    {
        QFETCH(QString, file);
        QFETCH(int, stored);
        const HarvesterFile f = read(file);
        const auto outcome = importWith(f, proposed(f));
        QVERIFY(outcome);
        QCOMPARE(outcome->found, int(f.logs.size()));
        QCOMPARE(outcome->stored, stored);
        QCOMPARE(logCount(), stored);
        QCOMPARE(m_prompter.questions().first(),
                 QStringLiteral("Es wurden %1 Stämme gefunden. Sollen diese jetzt übertragen werden?").arg(f.logs.size()));
        const QString columns = QStringLiteral("Laufende_Nr || '|' || Baumart || '|' || Stärke_gemessen || '|' || Rindenabzug || '|' || "
                                               "Stärke_oR || '|' || replace(printf('%.1f', Länge_m), '.', ',') || '|' || "
                                               "replace(printf('%.3f', Efm_oR), '.', ',')");
        QTEST(sql(QStringLiteral("SELECT %1 FROM Stämme ORDER BY ID LIMIT 1").arg(columns)).toString().split(u'|'), "first");
        QTEST(sql(QStringLiteral("SELECT %1 FROM Stämme ORDER BY ID DESC LIMIT 1").arg(columns)).toString().split(u'|'), "last");
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM Stämme WHERE Rindenabzugsart = 'F' AND Los_Nr = 1")).toInt(), stored);
        // The lot's totals and its position from the mean of the processed stems.
        QCOMPARE(sql(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Los_Nr = 1")).toInt(), stored);
        QTEST(sql(QStringLiteral("SELECT GPS_B FROM Lose WHERE Los_Nr = 1")).toString(), "latitude");
        QTEST(sql(QStringLiteral("SELECT GPS_L FROM Lose WHERE Los_Nr = 1")).toString(), "longitude");
        QVERIFY(outcome->positionSet);
        // The summary shows the machine's volume beside the program's; neither is the other.
        const QString summary = m_prompter.messages().first();
        QVERIFY2(summary.contains(QStringLiteral("m³ oR laut Harvester")), qPrintable(summary));
        QVERIFY(outcome->machineVolume > 0 && outcome->volume > 0);
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

        // Through the command line: refused, nothing stored, the message on stderr.
        const test::CliOutput run = test::runCli({QStringLiteral("--ja"), QStringLiteral("--daten"), m_folder.path(),
                                                  QStringLiteral("geraeteimport"), QStringLiteral("harvester"), path,
                                                  QStringLiteral("1"), QStringLiteral("1")});
        QCOMPARE(run.code, 1);
        QVERIFY2(run.err.contains(message), qPrintable(run.err));
        QCOMPARE(logCount(), 0);
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
    }
};

QTEST_GUILESS_MAIN(TestHarvester)
#include "tst_harvester.moc"
