// tarvik-cli run in-process: usage and exit codes, "init", recomputing typed logs (also while
// the desktop program holds the file), device imports, the harvest list and the evaluation lists.
#include "cli/cli.h"
#include "harvests/filter.h"
#include "store/database.h"
#include "store/sql.h"
#include "support/clirun.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSemaphore>
#include <QSqlQuery>
#include <QThread>

using namespace tarvik;
using test::CliOutput;
using test::runCli;

namespace {

// The desktop program in the middle of a store: holds the write lock for a while.
class DesktopWriter : public QThread {
public:
    DesktopWriter(QString path, int holdMs) : m_path(std::move(path)), m_holdMs(holdMs) {}
    QSemaphore locked;

protected:
    void run() override
    {
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("desktop"));
            db.setDatabaseName(m_path);
            if (db.open()) {
                QSqlQuery q(db);
                q.exec(QStringLiteral("BEGIN IMMEDIATE"));
                q.exec(QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (999)"));
                locked.release();
                msleep(static_cast<unsigned long>(m_holdMs));
                q.exec(QStringLiteral("COMMIT"));
            } else {
                locked.release();
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("desktop"));
    }

private:
    QString m_path;
    int m_holdMs;
};

// Harvest 41 with lot 1 and the typed logs given (diameter, length, bark mode, deduction).
void harvest41(const test::TempDataFolder& root, const QList<std::tuple<int, double, const char*, int>>& logs = {})
{
    auto db = Database::openOrCreate(root.databasePath());
    const qint32 id = test::addHarvest(db->shared(), 41);
    test::addLot(db->shared(), id, 1);
    int nr = 0;
    for (const auto& [diameter, length, bark, deduction] : logs)
        test::addTypedLog(db->shared(), id, 1, ++nr, QStringLiteral("FI (Fichte)"), diameter, length, QString::fromLatin1(bark), deduction);
}

QString sql(const test::TempDataFolder& root, const QString& statement)
{
    return scalar(Database::openOrCreate(root.databasePath())->shared(), statement).toString();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

} // namespace

class TestCli : public QObject {
    Q_OBJECT
    test::TempDataFolder m_lists; // harvests 7 and 8 for the evaluation lists

    CliOutput liste(const QStringList& args) { return runCli(QStringList{"--daten", m_lists.path(), "liste"} + args); }

private slots:
    void initTestCase()
    {
        QCOMPARE(runCli({"--daten", m_lists.path(), "init"}).code, 0);
        auto db = Database::openOrCreate(m_lists.databasePath());
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

    void usage_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::newRow("help") << QStringList{"--help"} << 0;
        QTest::newRow("no command") << QStringList{} << 2;
        QTest::newRow("unknown command") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "tanzen"} << 2;
        QTest::newRow("yes and no") << QStringList{"--ja", "--nein", "init"} << 2;
        QTest::newRow("missing folder") << QStringList{"--daten"} << 2;
        QTest::newRow("empty folder name with =") << QStringList{"--daten=", "hiebe"} << 2;
        QTest::newRow("blank folder name") << QStringList{"--daten", "  ", "hiebe"} << 2;
        QTest::newRow("unknown command option") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "holzliste", "5", "--schnell"} << 2;
        QTest::newRow("option without value") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "holzliste", "5", "--datei"} << 2;
        QTest::newRow("recompute with bad bark") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "neuberechnen", "1", "1", "--rinde", "X"} << 2;
        QTest::newRow("import from an unknown device") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "geraeteimport", "usb", "x", "1", "1"} << 2;
        QTest::newRow("print without pdf") << QStringList{"drucken", "Daten.txt"} << 2;
    }
    void usage()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QDir(QStringLiteral("/tmp/tarvik-cli-usage")).removeRecursively();
        const CliOutput o = runCli(args);
        QCOMPARE(o.code, code);
        if (code == 2) {
            QVERIFY(o.err.contains(QStringLiteral("Aufruf: tarvik-cli")));
            QVERIFY2(!o.err.contains(QStringLiteral("Unknown")) && !o.err.contains(QStringLiteral("Missing")), qPrintable(o.err));
            // Usage errors stop before any data folder is touched.
            QVERIFY(!QFileInfo::exists(QStringLiteral("/tmp/tarvik-cli-usage")));
        } else {
            QVERIFY(o.out.contains(QStringLiteral("init")));
        }
    }

    void initCreatesThenChangesNothing()
    {
        test::TempDataFolder root;
        const QString data = root.filePath(QStringLiteral("daten"));
        const CliOutput first = runCli({"--daten", data, "init"});
        QCOMPARE(first.code, 0);
        QVERIFY(first.out.startsWith(QStringLiteral("Datenbank angelegt: ")));
        QVERIFY(first.out.contains(QStringLiteral("51 Rindenabzüge für 18 Baumarten ergänzt")));
        QVERIFY(first.err.contains(QStringLiteral("In der Datenbasis wurden verschiedene Stammdaten")));
        QFile settings(data + QStringLiteral("/Einstellungen.tk3"));
        QVERIFY(settings.open(QIODevice::ReadOnly));
        const QByteArray settingsBefore = settings.readAll();

        const CliOutput second = runCli({"--daten=" + data, "init"});
        QCOMPARE(second.code, 0);
        QVERIFY(second.out.startsWith(QStringLiteral("Datenbank geöffnet: ")));
        QVERIFY(second.out.contains(QStringLiteral("nichts geändert")));
        QVERIFY(second.err.isEmpty());
        settings.seek(0);
        QCOMPARE(settings.readAll(), settingsBefore);
    }

    // The command stores what the log window stores for typed-in logs, then the totals.
    void recomputeALotOfTypedLogs()
    {
        test::TempDataFolder root;
        QCOMPARE(runCli({"--daten", root.path(), "init"}).code, 0);
        harvest41(root, {{55, 10, "T", 0}, {35, 4.5, "F", 2}});
        const QStringList args{"--daten", root.path(), "neuberechnen", "41", "1"};

        const CliOutput refused = runCli(args); // questions are answered No
        QCOMPARE(refused.code, 1);
        QVERIFY(refused.err.contains(QStringLiteral("nochmals neu berechnen? -> Nein")));

        const CliOutput done = runCli(QStringList{"--ja"} + args);
        QCOMPARE(done.code, 0);
        QCOMPARE(done.out, QStringLiteral("2 von 2 Stämmen geändert.\n"));
        QVERIFY(done.err.contains(QStringLiteral("Es wurden 2 Stämme geändert.")));
        QCOMPARE(sql(root, QStringLiteral("SELECT group_concat(Rindenabzug || '/' || Stärke_oR || '/' || Efm_oR || '/' || Stärkeklasse, ' ') "
                                          "FROM (SELECT * FROM Stämme ORDER BY Laufende_Nr)")),
                 QStringLiteral("3/52/2.124/L5 2/33/0.385/L3a"));
        QCOMPARE(sql(root, QStringLiteral("SELECT Anzahl_Stämme || '/' || Efm_oR FROM Lose")), QStringLiteral("2/2.509"));
        QCOMPARE(sql(root, QStringLiteral("SELECT Stämme_Anzahl || '/' || Stämme_Efm || '/' || Verkauft FROM Hiebe")), QStringLiteral("2/2.509/N"));
    }

    // A command-line run beside the desktop program, which holds the file for 1.5 s: the
    // recompute waits for it and succeeds.
    void recomputeWaitsForTheDesktopProgram()
    {
        test::TempDataFolder root;
        harvest41(root, {{55, 10, "T", 0}});
        DesktopWriter desktop(root.databasePath(), 1500);
        desktop.start();
        QVERIFY(desktop.locked.tryAcquire(1, 5000));
        QElapsedTimer timer;
        timer.start();
        const CliOutput o = runCli({"--ja", "--daten", root.path(), "neuberechnen", "41", "1"});
        const qint64 waited = timer.elapsed();
        QVERIFY(desktop.wait(5000));
        QCOMPARE(o.code, 0);
        QVERIFY2(waited >= 1000, qPrintable(QString::number(waited)));
        QCOMPARE(o.out, QStringLiteral("1 von 1 Stämmen geändert.\n"));
    }

    void harvestListAsTheListShowsIt()
    {
        test::TempDataFolder root;
        {
            auto db = Database::openOrCreate(root.databasePath());
            const qint32 id = test::addHarvest(db->shared(), 7);
            execSql(db->shared(), QStringLiteral("UPDATE Hiebe SET Waldname = ?, Hiebfläche = 1.5, Hiebdatum_von = '2026-03-01', "
                                                 "Stämme_Efm = 12.3456, Bemerkung = 'zwei\tTeile', "
                                                 "Harvester = 'vor' || char(0) || 'nach' || char(13, 10) || 'Ende' WHERE ID = ?"),
                    {QStringLiteral("O'Briens Wald"), id});
        }
        const CliOutput o = runCli({"--daten", root.path(), "hiebe"});
        QCOMPARE(o.code, 0);
        const QStringList lines = o.out.split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].startsWith(QStringLiteral("Hieb_Nr\tJahr\tSelektiert\tWaldname")));
        const QStringList cells = lines[1].split(u'\t');
        QCOMPARE(cells.size(), 27);
        QCOMPARE(cells[5], QStringLiteral("1,5000"));
        QCOMPARE(cells[8], QStringLiteral("01.03.2026"));
        QCOMPARE(cells[11], QStringLiteral("12,346"));
        QCOMPARE(cells[24], QStringLiteral("zwei Teile"));
        QCOMPARE(cells[25], QStringLiteral("vor nach Ende")); // a NUL does not cut the row short
    }

    void foreignFileIsARefusal()
    {
        test::TempDataFolder root;
        writeFile(root.databasePath(), "Standard Jet DB");
        const CliOutput o = runCli({"--daten", root.path(), "init"});
        QCOMPARE(o.code, 1);
        QVERIFY(o.err.contains(root.databasePath()));
    }

    void listsGroupedOnStdout()
    {
        const CliOutput o = liste({"staemme", "--hiebe", "aktuell:7", "--gruppe", "10"});
        QCOMPARE(o.code, 0);
        const QStringList lines = o.out.split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.first(), QStringLiteral("Stämme auswerten – Nach der Baumart"));
        // The species column is as wide as its longest value.
        QVERIFY(lines[3].startsWith(QStringLiteral("BU (Rotbuche) |             1 |       1,000")));
        QVERIFY(lines[4].startsWith(QStringLiteral("FI (Fichte)   |             2 |       0,750")));
        QCOMPARE(lines.size(), 5);
    }

    void listsSortedFilteredIntoFiles()
    {
        const CliOutput text = liste({"lose", "--filter", "Lagerort=O'Brien's Weg", "--sortierung", "Hieb_Nr", "--absteigend"});
        QCOMPARE(text.code, 0);
        const QStringList lines = text.out.split(u'\n', Qt::SkipEmptyParts);
        QVERIFY(lines[3].startsWith(QStringLiteral("       8 |")));
        QVERIFY(lines[4].startsWith(QStringLiteral("       7 |")));

        const QString sheet = m_lists.filePath(QStringLiteral("lose.xlsx"));
        const CliOutput x = liste({"lose", "--format", "xlsx", "--datei", sheet});
        QCOMPARE(x.code, 0);
        QCOMPARE(x.out.trimmed(), QStringLiteral("2 Datensätze in ") + sheet);
        QProcess unzip;
        unzip.start(QStringLiteral("unzip"), {QStringLiteral("-t"), sheet});
        QVERIFY(unzip.waitForFinished());
        QCOMPARE(unzip.exitCode(), 0);
        QCOMPARE(liste({"hiebe", "--format", "html"}).code, 0);
        QVERIFY(QFile::exists(m_lists.filePath(QStringLiteral("report-1.htm"))));
    }

    // Refused commands: 2 for a call that is wrong, 1 for data that are not there.
    void refusals_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        QTest::newRow("recompute, unknown harvest") << QStringList{"--ja", "neuberechnen", "99", "1"} << 1 << "";
        QTest::newRow("recompute, unknown lot") << QStringList{"--ja", "neuberechnen", "7", "9"} << 1 << "";
        QTest::newRow("unknown scope") << QStringList{"liste", "lose", "--hiebe", "aktuell"} << 2 << "--hiebe erwartet";
        QTest::newRow("grouping out of range") << QStringList{"liste", "schichtholz", "--gruppe", "6"} << 2 << "--gruppe erwartet eine Zahl von 1 bis 5.";
        QTest::newRow("unknown filter") << QStringList{"liste", "hiebe", "--filter", "Jahr=2026"} << 2 << "--filter erwartet SPALTE=WERT mit einer dieser Spalten: (keine)";
        QTest::newRow("no such harvest") << QStringList{"liste", "lose", "--hiebe", "aktuell:99"} << 1 << "";
        QTest::newRow("no invoices yet") << QStringList{"liste", "rechnungen", "--format", "html"} << 1
                                         << "Es wurden lt. den aktuellen Einstellungen keine Rechnungen gefunden!";
    }
    void refusals()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QFETCH(QString, message);
        const CliOutput o = runCli(QStringList{"--daten", m_lists.path()} + args);
        QCOMPARE(o.code, code);
        QVERIFY2(o.err.contains(message), qPrintable(o.err));
        QVERIFY(o.out.isEmpty());
    }
};

TARVIK_TEST_CORE_MAIN(TestCli)
#include "tst_cli.moc"
