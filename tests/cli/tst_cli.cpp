// tarvik-cli: usage, exit codes and "init", run in-process.
#include "cli/cli.h"
#include "support/clirun.h"
#include "store/database.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSemaphore>
#include <QSqlQuery>
#include <QThread>
#include <cstdio>

using namespace tarvik;

namespace {

using Output = test::CliOutput;
using test::runCli;

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

} // namespace

class TestCli : public QObject {
    Q_OBJECT
private slots:
    void usage_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::newRow("help") << QStringList{"--help"} << 0;
        QTest::newRow("no command") << QStringList{} << 2;
        QTest::newRow("unknown command") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "tanzen"} << 2;
        QTest::newRow("unknown option") << QStringList{"--schnell", "init"} << 2;
        QTest::newRow("yes and no") << QStringList{"--ja", "--nein", "init"} << 2;
        QTest::newRow("missing folder") << QStringList{"--daten"} << 2;
        QTest::newRow("init with argument") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "init", "x"} << 2;
        QTest::newRow("empty folder name") << QStringList{"--daten", "", "init"} << 2;
        QTest::newRow("empty folder name with =") << QStringList{"--daten=", "hiebe"} << 2;
        QTest::newRow("blank folder name") << QStringList{"--daten", "  ", "hiebe"} << 2;
        QTest::newRow("unknown command option") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "holzliste", "5", "--schnell"} << 2;
        QTest::newRow("option without value") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "holzliste", "5", "--datei"} << 2;
        QTest::newRow("timber list without number") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "holzliste"} << 2;
        QTest::newRow("recompute with bad bark") << QStringList{"--daten", "/tmp/tarvik-cli-usage", "neuberechnen", "1", "1", "--rinde", "X"} << 2;
        QTest::newRow("print without pdf") << QStringList{"drucken", "Daten.txt"} << 2;
    }
    void usage()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QDir(QStringLiteral("/tmp/tarvik-cli-usage")).removeRecursively();
        const Output o = runCli(args);
        QCOMPARE(o.code, code);
        if (code == 2) {
            QVERIFY(o.err.contains(QStringLiteral("Aufruf: tarvik-cli")));
            QVERIFY2(!o.err.contains(QStringLiteral("Unknown")) && !o.err.contains(QStringLiteral("Missing")), qPrintable(o.err));
            // Usage errors stop before any data folder is touched.
            QVERIFY(!QFileInfo::exists(QStringLiteral("/tmp/tarvik-cli-usage")));
        }
        else
            QVERIFY(o.out.contains(QStringLiteral("init")));
    }

    void initCreatesThenChangesNothing()
    {
        test::TempDataFolder root;
        const QString data = root.filePath(QStringLiteral("daten"));
        const Output first = runCli({QStringLiteral("--daten"), data, QStringLiteral("init")});
        QCOMPARE(first.code, 0);
        QVERIFY(first.out.startsWith(QStringLiteral("Datenbank angelegt: ")));
        QVERIFY(first.out.contains(QStringLiteral("51 Rindenabzüge für 18 Baumarten ergänzt")));
        QVERIFY(first.err.contains(QStringLiteral("In der Datenbasis wurden verschiedene Stammdaten")));
        QVERIFY(QFile::exists(data + QStringLiteral("/TARVIK3.db")));
        QVERIFY(QFile::exists(data + QStringLiteral("/Einstellungen.tk3")));

        const QByteArray settingsBefore = [&] {
            QFile f(data + QStringLiteral("/Einstellungen.tk3"));
            return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
        }();
        const Output second = runCli({QStringLiteral("--daten=") + data, QStringLiteral("init")});
        QCOMPARE(second.code, 0);
        QVERIFY(second.out.startsWith(QStringLiteral("Datenbank geöffnet: ")));
        QVERIFY(second.out.contains(QStringLiteral("nichts geändert")));
        QVERIFY(second.err.isEmpty());
        QFile f(data + QStringLiteral("/Einstellungen.tk3"));
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), settingsBefore);
    }

    // The command stores what the log window stores for typed-in logs, then the totals.
    void recomputeALotOfTypedLogs()
    {
        test::TempDataFolder root;
        QCOMPARE(runCli({QStringLiteral("--daten"), root.path(), QStringLiteral("init")}).code, 0);
        {
            auto db = Database::openOrCreate(root.databasePath());
            const qint32 id = test::addHarvest(db->shared(), 41);
            test::addLot(db->shared(), id, 1);
            test::addTypedLog(db->shared(), id, 1, 1, QStringLiteral("FI (Fichte)"), 55, 10, QStringLiteral("T"));
            test::addTypedLog(db->shared(), id, 1, 2, QStringLiteral("FI (Fichte)"), 35, 4.5, QStringLiteral("F"), 2);
        }
        const QStringList args{QStringLiteral("--daten"), root.path(), QStringLiteral("neuberechnen"), QStringLiteral("41"), QStringLiteral("1")};

        const Output refused = runCli(args); // questions are answered No
        QCOMPARE(refused.code, 1);
        QVERIFY(refused.err.contains(QStringLiteral("nochmals neu berechnen? -> Nein")));

        const Output done = runCli(QStringList{QStringLiteral("--ja")} + args);
        QCOMPARE(done.code, 0);
        QCOMPARE(done.out, QStringLiteral("2 von 2 Stämmen geändert.\n"));
        QVERIFY(done.err.contains(QStringLiteral("Es wurden 2 Stämme geändert.")));

        auto db = Database::openOrCreate(root.databasePath());
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT group_concat(Rindenabzug || '/' || Stärke_oR || '/' || Efm_oR || '/' || Stärkeklasse, ' ') "
                                                     "FROM (SELECT * FROM Stämme ORDER BY Laufende_Nr)")).toString(),
                 QStringLiteral("3/52/2.124/L5 2/33/0.385/L3a"));
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT Anzahl_Stämme || '/' || Efm_oR FROM Lose")).toString(), QStringLiteral("2/2.509"));
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT Stämme_Anzahl || '/' || Stämme_Efm || '/' || Verkauft FROM Hiebe")).toString(),
                 QStringLiteral("2/2.509/N"));
        db.reset();

        const Output again = runCli(QStringList{QStringLiteral("--ja")} + args + QStringList{QStringLiteral("--rinde"), QStringLiteral("O")});
        QCOMPARE(again.code, 0);
        QCOMPARE(again.out, QStringLiteral("2 von 2 Stämmen geändert.\n"));
    }

    // Captured device transfers and export files replay through the import the window uses.
    void deviceImportReplaysCapturedFiles()
    {
        test::TempDataFolder root;
        QCOMPARE(runCli({QStringLiteral("--daten"), root.path(), QStringLiteral("init")}).code, 0);
        {
            auto db = Database::openOrCreate(root.databasePath());
            const qint32 id = test::addHarvest(db->shared(), 41);
            test::addLot(db->shared(), id, 1);
        }
        const QString capture = root.filePath(QStringLiteral("fmr1.bin"));
        QFile f(capture);
        QVERIFY(f.open(QIODevice::WriteOnly));
        // Header, then Fi B 124 / 35 cm / 4 m in lot 3, Bu C 128 / 40 cm / 4 m, a species code 0000.
        f.write(QByteArray("4") + QByteArray(28, 'K') + QByteArray::fromHex("7A001F2303" "9B00202800" "0200011E00"));
        f.close();
        const QStringList args{QStringLiteral("--daten"), root.path(), QStringLiteral("geraeteimport"), QStringLiteral("fmr1"), capture,
                               QStringLiteral("41"), QStringLiteral("1")};
        const Output declined = runCli(args);
        QCOMPARE(declined.code, 1);
        const Output done = runCli(QStringList{QStringLiteral("--ja")} + args);
        QCOMPARE(done.code, 0);
        QCOMPARE(done.out, QStringLiteral("2 von 3 Stämmen eingelesen, 1 übersprungen.\n"));
        QVERIFY(done.err.contains(QStringLiteral("Das Los 3 wird deshalb jetzt angelegt.")));
        const Output again = runCli(QStringList{QStringLiteral("--ja")} + args);
        QCOMPARE(again.out, QStringLiteral("0 von 3 Stämmen eingelesen, 3 übersprungen.\n"));

        const QString exportFile = root.filePath(QStringLiteral("Export_wb7_TARVIK.DAT"));
        QFile e(exportFile);
        QVERIFY(e.open(QIODevice::WriteOnly));
        e.write("Los;Nr;Baumart;Guete;Laenge;Staerke;Zopf;Kaefer;Bemerkung\r\n1;500;Kie;B;4,5;30;;N;\r\n");
        e.close();
        const Output online = runCli({QStringLiteral("--ja"), QStringLiteral("--daten"), root.path(), QStringLiteral("geraeteimport"),
                                      QStringLiteral("online"), exportFile, QStringLiteral("41"), QStringLiteral("1"), QStringLiteral("--rinde"),
                                      QStringLiteral("O")});
        QCOMPARE(online.code, 0);
        auto db = Database::openOrCreate(root.databasePath());
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT Baumart || '/' || Stärke_oR FROM Stämme WHERE Laufende_Nr = 500")).toString(),
                 QStringLiteral("KI (Kiefer)/30"));
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT Stämme_Anzahl FROM Hiebe")).toInt(), 3);
        db.reset();

        e.open(QIODevice::WriteOnly);
        e.write("<html><body>Fehler 500</body></html>");
        e.close();
        const Output page = runCli({QStringLiteral("--ja"), QStringLiteral("--daten"), root.path(), QStringLiteral("geraeteimport"),
                                    QStringLiteral("online"), exportFile, QStringLiteral("41"), QStringLiteral("1")});
        QCOMPARE(page.code, 1);
        QVERIFY(page.err.contains(QStringLiteral("Internetseite")));
        QCOMPARE(runCli({QStringLiteral("--daten"), root.path(), QStringLiteral("geraeteimport"), QStringLiteral("usb"), exportFile,
                         QStringLiteral("41"), QStringLiteral("1")}).code, 2);
    }

    // A command-line run beside the desktop program, which holds the file for 1.5 s: the
    // recompute waits for it and succeeds.
    void recomputeWaitsForTheDesktopProgram()
    {
        test::TempDataFolder root;
        {
            auto db = Database::openOrCreate(root.databasePath());
            const qint32 id = test::addHarvest(db->shared(), 41);
            test::addLot(db->shared(), id, 1);
            test::addTypedLog(db->shared(), id, 1, 1, QStringLiteral("FI (Fichte)"), 55, 10, QStringLiteral("T"));
        }
        DesktopWriter desktop(root.databasePath(), 1500);
        desktop.start();
        QVERIFY(desktop.locked.tryAcquire(1, 5000));
        QElapsedTimer timer;
        timer.start();
        const Output o = runCli({QStringLiteral("--ja"), QStringLiteral("--daten"), root.path(), QStringLiteral("neuberechnen"),
                                 QStringLiteral("41"), QStringLiteral("1")});
        const qint64 waited = timer.elapsed();
        QVERIFY(desktop.wait(5000));
        QCOMPARE(o.err.contains(QStringLiteral("gesperrt")), false);
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
        const Output o = runCli({QStringLiteral("--daten"), root.path(), QStringLiteral("hiebe")});
        QCOMPARE(o.code, 0);
        const QStringList lines = o.out.split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].startsWith(QStringLiteral("Hieb_Nr\tJahr\tSelektiert\tWaldname")));
        QVERIFY(lines[0].endsWith(QStringLiteral("\tHarvester\tID")));
        const QStringList cells = lines[1].split(u'\t');
        QCOMPARE(cells.size(), 27);
        QCOMPARE(cells[3], QStringLiteral("O'Briens Wald"));
        QCOMPARE(cells[5], QStringLiteral("1,5000"));
        QCOMPARE(cells[8], QStringLiteral("01.03.2026"));
        QCOMPARE(cells[11], QStringLiteral("12,346"));
        QCOMPARE(cells[24], QStringLiteral("zwei Teile"));
        QCOMPARE(cells[25], QStringLiteral("vor nach Ende")); // a NUL does not cut the row short
        QCOMPARE(cells[26], QString::number(scalar(Database::openOrCreate(root.databasePath())->shared(),
                                                   QStringLiteral("SELECT ID FROM Hiebe")).toInt()));
    }

    void recomputeRefusals_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::newRow("unknown harvest") << QStringList{"neuberechnen", "99", "1"} << 1;
        QTest::newRow("unknown lot") << QStringList{"neuberechnen", "41", "9"} << 1;
        QTest::newRow("missing lot") << QStringList{"neuberechnen", "41"} << 2;
        QTest::newRow("bad bark mode") << QStringList{"neuberechnen", "41", "1", "--rinde", "X"} << 2;
    }
    void recomputeRefusals()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        test::TempDataFolder root;
        {
            auto db = Database::openOrCreate(root.databasePath());
            const qint32 id = test::addHarvest(db->shared(), 41);
            test::addLot(db->shared(), id, 1);
        }
        QCOMPARE(runCli(QStringList{QStringLiteral("--ja"), QStringLiteral("--daten"), root.path()} + args).code, code);
    }

    void foreignFileIsARefusal()
    {
        test::TempDataFolder root;
        QFile f(root.databasePath());
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("Standard Jet DB");
        f.close();
        const Output o = runCli({QStringLiteral("--daten"), root.path(), QStringLiteral("init")});
        QCOMPARE(o.code, 1);
        QVERIFY(o.err.contains(root.databasePath()));
    }
};

TARVIK_TEST_CORE_MAIN(TestCli)
#include "tst_cli.moc"
