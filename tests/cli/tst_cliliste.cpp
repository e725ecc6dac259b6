// tarvik-cli liste: the evaluation lists from the command line, run in-process.
#include "cli/cli.h"
#include "support/clirun.h"
#include "harvests/filter.h"
#include "store/database.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QProcess>
#include <cstdio>

using namespace tarvik;

namespace {

using Output = test::CliOutput;
using test::runCli;

} // namespace

class TestCliListe : public QObject {
    Q_OBJECT
    test::TempDataFolder m_root;

    Output liste(const QStringList& args)
    {
        return runCli(QStringList{QStringLiteral("--daten"), m_root.path(), QStringLiteral("liste")} + args);
    }

private slots:
    void initTestCase()
    {
        QCOMPARE(runCli({QStringLiteral("--daten"), m_root.path(), QStringLiteral("init")}).code, 0);
        auto db = Database::openOrCreate(m_root.databasePath());
        const qint32 a = test::addHarvest(db->shared(), 7);
        const qint32 b = test::addHarvest(db->shared(), 8);
        execSql(db->shared(), QStringLiteral("UPDATE Hiebe SET Jahr = '2026', Teilverkauft = 'N', Verkauft = 'N'"));
        test::addLot(db->shared(), a, 1);
        test::addLot(db->shared(), b, 1);
        execSql(db->shared(), QStringLiteral("UPDATE Lose SET Lagerort = ?"), {QStringLiteral("O'Brien's Weg")});
        for (const auto& [id, nr, species, efm] : {std::tuple{a, 1, "FI (Fichte)", 0.5}, std::tuple{a, 2, "FI (Fichte)", 0.25},
                                                   std::tuple{a, 3, "BU (Rotbuche)", 1.0}, std::tuple{b, 1, "FI (Fichte)", 2.0}})
            execSql(db->shared(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Efm_oR, Kennung) VALUES (1, ?, ?, ?, ?)"),
                    {nr, QString::fromUtf8(species), efm, id});
    }

    void groupedOnStdout()
    {
        const Output o = liste({QStringLiteral("staemme"), QStringLiteral("--hiebe"), QStringLiteral("aktuell:7"), QStringLiteral("--gruppe"),
                                QStringLiteral("10")});
        QCOMPARE(o.code, 0);
        const QStringList lines = o.out.split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.first(), QStringLiteral("Stämme auswerten – Nach der Baumart"));
        // The species column is as wide as its longest value.
        QVERIFY(lines[3].startsWith(QStringLiteral("BU (Rotbuche) |             1 |       1,000")));
        QVERIFY(lines[4].startsWith(QStringLiteral("FI (Fichte)   |             2 |       0,750")));
        QCOMPARE(lines.size(), 5);
    }

    void sortedFilteredIntoFiles()
    {
        const Output text = liste({QStringLiteral("lose"), QStringLiteral("--filter"), QStringLiteral("Lagerort=O'Brien's Weg"),
                                   QStringLiteral("--sortierung"), QStringLiteral("Hieb_Nr"), QStringLiteral("--absteigend")});
        QCOMPARE(text.code, 0);
        const QStringList lines = text.out.split(u'\n', Qt::SkipEmptyParts);
        QVERIFY(lines[3].startsWith(QStringLiteral("       8 |")));
        QVERIFY(lines[4].startsWith(QStringLiteral("       7 |")));

        const QString sheet = m_root.filePath(QStringLiteral("lose.xlsx"));
        const Output x = liste({QStringLiteral("lose"), QStringLiteral("--format"), QStringLiteral("xlsx"), QStringLiteral("--datei"), sheet});
        QCOMPARE(x.code, 0);
        QCOMPARE(x.out.trimmed(), QStringLiteral("2 Datensätze in ") + sheet);
        QProcess unzip;
        unzip.start(QStringLiteral("unzip"), {QStringLiteral("-t"), sheet});
        QVERIFY(unzip.waitForFinished());
        QCOMPARE(unzip.exitCode(), 0);

        const Output h = liste({QStringLiteral("rechnungen"), QStringLiteral("--format"), QStringLiteral("html")});
        QCOMPARE(h.code, 1); // no invoices yet
        QCOMPARE(h.err.trimmed(), QStringLiteral("Es wurden lt. den aktuellen Einstellungen keine Rechnungen gefunden!"));
        const Output page = liste({QStringLiteral("hiebe"), QStringLiteral("--format"), QStringLiteral("html")});
        QCOMPARE(page.code, 0);
        QVERIFY(QFile::exists(m_root.filePath(QStringLiteral("report-1.htm"))));
    }

    void refusals_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        QTest::newRow("unknown list") << QStringList{"baeume"} << 2 << "liste erwartet";
        QTest::newRow("unknown scope") << QStringList{"lose", "--hiebe", "aktuell"} << 2 << "--hiebe erwartet";
        QTest::newRow("grouping out of range") << QStringList{"schichtholz", "--gruppe", "6"} << 2 << "--gruppe erwartet eine Zahl von 1 bis 5.";
        QTest::newRow("unknown sort") << QStringList{"lose", "--sortierung", "Kennung"} << 2 << "--sortierung erwartet";
        QTest::newRow("unknown filter") << QStringList{"hiebe", "--filter", "Jahr=2026"} << 2 << "--filter erwartet SPALTE=WERT mit einer dieser Spalten: (keine)";
        QTest::newRow("no such harvest") << QStringList{"lose", "--hiebe", "aktuell:99"} << 1 << "";
        QTest::newRow("nothing sold") << QStringList{"staemme", "--hiebe", "verkauft"} << 1
                                      << "Es wurden lt. den aktuellen Einstellungen keine Stämme gefunden!";
    }

    void refusals()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QFETCH(QString, message);
        const Output o = liste(args);
        QCOMPARE(o.code, code);
        QVERIFY2(o.err.contains(message), qPrintable(o.err));
        QVERIFY(o.out.isEmpty());
    }

    void rangeOfTheSettings()
    {
        Einstellungen s = EinstellungenLaden(m_root.filePath(QString::fromLatin1(SettingsFileName)));
        s.zahl[RangeModeSlot] = 1;
        s.text[YearFromSlot] = QStringLiteral("05");
        s.text[YearToSlot] = QStringLiteral("2026");
        QVERIFY(EinstellungenSpeichern(s, m_root.filePath(QString::fromLatin1(SettingsFileName))));
        const Output o = liste({QStringLiteral("lose")});
        QCOMPARE(o.code, 1);
        QCOMPARE(o.err.trimmed(), QStringLiteral("Die Liste kann nicht erstellt werden, weil die Jahre von... bis... 4-stellig sein müssen."));
        s.text[YearFromSlot] = QStringLiteral("2027");
        s.text[YearToSlot] = QStringLiteral("2028");
        QVERIFY(EinstellungenSpeichern(s, m_root.filePath(QString::fromLatin1(SettingsFileName))));
        QCOMPARE(liste({QStringLiteral("lose")}).err.trimmed(), QStringLiteral("Es wurden lt. den aktuellen Einstellungen keine Lose gefunden!"));
        s.zahl[RangeModeSlot] = 0;
        QVERIFY(EinstellungenSpeichern(s, m_root.filePath(QString::fromLatin1(SettingsFileName))));
    }
};

TARVIK_TEST_CORE_MAIN(TestCliListe)
#include "tst_cliliste.moc"
