// Compaction, the takeover of version-2 data, and the takeover's Jet reader against public
// sample files compared with mdbtools' own export: all on real files.
#include "maintenance/compaction.h"
#include "maintenance/jetconvert.h"
#include "maintenance/takeover.h"
#include "store/database.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/reliabilityfiles.h"
#include "support/tempdatafolder.h"

#include <QProcess>
#include <QSqlQuery>
#include <QtTest>
#include <algorithm>

using namespace tarvik;

namespace {

QString fixture(const QString& name) { return QStringLiteral(TARVIK_TEST_DATA "/jet/") + name; }

QString run(const QString& program, const QStringList& args)
{
    QProcess p;
    // mdbtools' tools read nothing under a locale the machine lacks; the test compares in C.
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    p.setProcessEnvironment(env);
    p.start(program, args);
    p.waitForFinished(60000);
    return QString::fromUtf8(p.readAllStandardOutput());
}

// Row count of a table as mdbtools' own counting tool reads it.
qint64 countedRows(const QString& mdb, const QString& table)
{
    return run(QStringLiteral("mdb-count"), {mdb, table}).trimmed().toLongLong();
}

// A value of the converted file, read as another program reads it.
QVariant valueIn(const QString& path, const QString& sql)
{
    QVariant value(QStringLiteral("<keine Zeile>"));
    test::withPlainConnection(path, [&](const QSqlDatabase& db) {
        QSqlQuery q(db);
        if (q.exec(sql) && q.next())
            value = q.value(0);
    });
    return value;
}

} // namespace

class TestMaintenance : public QObject {
    Q_OBJECT
    test::TempDataFolder m_dir;

private slots:
    // The progress only rises, from the start to the end, and says in German what is done.
    // (That the file shrinks and keeps every row is shown by the command-line script.)
    void compactionReportsItsProgress()
    {
        test::TempDataFolder dir;
        {
            auto db = dir.openDatabase();
            for (int h = 1; h <= 30; ++h)
                test::addHarvest(db->shared(), h);
        }
        QList<int> percents;
        QStringList stages;
        const CompactionResult result = compactDatabaseFile(dir.databasePath(), [&](int percent, const QString& stage) {
            percents << percent;
            stages << stage;
        });
        QVERIFY2(result.ok, qPrintable(result.message));
        QCOMPARE(result.message, compactionDoneMessage());
        QVERIFY(percents.size() >= 4);
        QCOMPARE(percents.first(), 0);
        QCOMPARE(percents.last(), 100);
        QVERIFY(std::is_sorted(percents.begin(), percents.end()));
        QVERIFY(stages.contains(QStringLiteral("Die Kopie wird geprüft ...")));
    }

    void aFileOpenElsewhereIsNotCompacted_data()
    {
        QTest::addColumn<QString>("hold");
        QTest::newRow("writer in another process") << QStringLiteral("BEGIN IMMEDIATE; INSERT INTO Liste_Hiebart VALUES('x');");
        QTest::newRow("reader in another process") << QStringLiteral("BEGIN; SELECT count(*) FROM Hiebe;");
    }
    void aFileOpenElsewhereIsNotCompacted()
    {
        QFETCH(QString, hold);
        test::TempDataFolder dir;
        {
            auto db = dir.openDatabase();
            test::addHarvest(db->shared(), 1);
        }
        const QByteArray sum = test::sha256(dir.databasePath());
        // A separate program keeps the file open for the length of the attempt.
        QProcess other;
        other.start(QStringLiteral("sqlite3"), {dir.databasePath()});
        QVERIFY(other.waitForStarted());
        other.write((hold + QStringLiteral("\n.print bereit\n")).toUtf8());
        QVERIFY(other.waitForReadyRead(10000));
        const CompactionResult result = compactDatabaseFile(dir.databasePath());
        other.write("ROLLBACK;\n.quit\n");
        other.closeWriteChannel();
        other.waitForFinished(10000);
        QVERIFY(!result.ok);
        QCOMPARE(result.message, compactionFailedMessage());
        QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("TARVIK3.$$$"))));
        QCOMPARE(test::sha256(dir.databasePath()), sum);
    }

    // Every way the takeover stops leaves the database as it was and takes no file over.
    void takeoverRefusals_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("hasHarvests");
        QTest::addColumn<QVariantList>("answers"); // bool for yes/no, string for the typed answer
        QTest::addColumn<QString>("message");
        const QString wrong = QStringLiteral("Falsche Eingabe - Der Import wird nicht ausgeführt!");
        QTest::newRow("No to the first question") << "TARVIK2.MDB" << false << QVariantList{false} << QString();
        QTest::newRow("harvests, typed ja") << "TARVIK2.MDB" << true << QVariantList{true, QStringLiteral("ja")} << wrong;
        QTest::newRow("harvests, typed JA with blanks") << "TARVIK2.MDB" << true << QVariantList{true, QStringLiteral(" JA ")} << wrong;
        QTest::newRow("harvests, cancelled") << "TARVIK2.MDB" << true << QVariantList{true, QVariant()} << wrong;
        // A Jet file without harvests is no version-2 database: refused after the answers.
        QTest::newRow("foreign Jet file") << "TARVIK2.MDB" << true << QVariantList{true, QStringLiteral("JA")}
                                          << QStringLiteral("keine Datenbank von TARVIK 2.0");
        QTest::newRow("foreign Jet file, lower case") << "tarvik2.mdb" << false << QVariantList{true}
                                                      << QStringLiteral("keine Datenbank von TARVIK 2.0");
    }
    void takeoverRefusals()
    {
        QFETCH(QString, file);
        QFETCH(bool, hasHarvests);
        QFETCH(QVariantList, answers);
        QFETCH(QString, message);
        test::TempDataFolder data;
        QTemporaryDir old;
        QVERIFY(QFile::copy(fixture(QStringLiteral("nwind.mdb")), old.filePath(file)));
        test::writeBytes(old.filePath(QStringLiteral("Einstellungen.tk2")), "alt\r\n");
        { auto db = data.openDatabase(); }
        const QByteArray sum = test::sha256(data.databasePath());

        test::ScriptedPrompter prompter;
        for (const QVariant& a : answers) {
            if (a.typeId() == QMetaType::Bool)
                a.toBool() ? prompter.answerYes() : prompter.answerNo();
            else if (a.isNull())
                prompter.answerCancel();
            else
                prompter.answerText(a.toString());
        }
        QCOMPARE(version2Database(old.path()), old.filePath(file));
        const TakeoverResult result = takeOverVersion2(old.path(), data.path(), data.databasePath(), hasHarvests, prompter);
        QVERIFY(!result.done);
        QVERIFY(result.copied.isEmpty());
        if (!message.isEmpty())
            QVERIFY2(prompter.messages().join(u'|').contains(message), qPrintable(prompter.messages().join(u'|')));
        QCOMPARE(test::sha256(data.databasePath()), sum);
        QVERIFY(test::sha256(data.filePath(QStringLiteral("Einstellungen.tk3"))) != test::sha256(old.filePath(QStringLiteral("Einstellungen.tk2"))));
        QCOMPARE(QDir(data.path()).entryList({QStringLiteral("*.übernahme")}, QDir::Files), QStringList());
        QCOMPARE(version2Database(old.filePath(QStringLiteral("leer"))), QString());
    }

    void everyTableWithItsRows_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("Jet 3 Northwind") << QStringLiteral("nwind.mdb");
        QTest::newRow("Jet 4 dates") << QStringLiteral("DateTestDatabase.mdb");
    }
    void everyTableWithItsRows()
    {
        QFETCH(QString, file);
        const QString target = m_dir.filePath(file + QStringLiteral(".db"));
        const JetConversion result = convertJetToSqlite(fixture(file), target);
        QVERIFY2(result.ok, qPrintable(result.message));
        const QStringList expected = run(QStringLiteral("mdb-tables"), {QStringLiteral("-1"), fixture(file)}).split(u'\n', Qt::SkipEmptyParts);
        QStringList converted;
        for (const JetTableReport& t : result.tables)
            converted << t.name;
        QCOMPARE(converted, expected);
        for (const JetTableReport& t : result.tables) {
            QCOMPARE(valueIn(target, QStringLiteral("SELECT count(*) FROM \"%1\"").arg(t.name)).toLongLong(), t.rows);
            QCOMPARE(t.rows, countedRows(fixture(file), t.name));
        }
        QVERIFY(!QFileInfo::exists(target + QStringLiteral(".entsteht")));
    }

    void valuesUmlautsDatesAndNulls()
    {
        const QString target = m_dir.filePath(QStringLiteral("nwind-werte.db"));
        QVERIFY(convertJetToSqlite(fixture(QStringLiteral("nwind.mdb")), target).ok);
        // The table with an umlaut in its name arrives under that name.
        QVERIFY(valueIn(target, QStringLiteral("SELECT count(*) FROM \"Umsätze\"")).toInt() > 0);
        // Text, money and dates of one order, as mdb-export gives them.
        const QString csv = run(QStringLiteral("mdb-export"), {QStringLiteral("-D"), QStringLiteral("%Y-%m-%d"), QStringLiteral("-T"), QStringLiteral("%Y-%m-%d"), fixture(QStringLiteral("nwind.mdb")), QStringLiteral("Orders")});
        const QStringList header = csv.section(u'\n', 0, 0).split(u',');
        const QString first = csv.section(u'\n', 1, 1);
        const QString orderId = first.section(u',', 0, 0);
        const QString orderDate = first.section(u',', header.indexOf(QStringLiteral("OrderDate")), header.indexOf(QStringLiteral("OrderDate"))).remove(u'"');
        QCOMPARE(valueIn(target, QStringLiteral("SELECT OrderDate FROM Orders WHERE OrderID = %1").arg(orderId)).toString(), orderDate);
        QCOMPARE(valueIn(target, QStringLiteral("SELECT typeof(Freight) FROM Orders WHERE OrderID = %1").arg(orderId)).toString(), QStringLiteral("real"));
        // Empty fields stay NULL, not empty text.
        const int nullRegions = valueIn(target, QStringLiteral("SELECT count(*) FROM Orders WHERE ShipRegion IS NULL")).toInt();
        QCOMPARE(valueIn(target, QStringLiteral("SELECT count(*) FROM Orders WHERE ShipRegion = ''")).toInt(), 0);
        QVERIFY(nullRegions > 0);
        // Non-ASCII text of the code page comes through as Unicode.
        QVERIFY(valueIn(target, QStringLiteral("SELECT count(*) FROM Customers WHERE CompanyName GLOB '*[äöüßéñ]*'")).toInt() > 0);
    }

    void badFilesAreRefusedAndNothingIsWritten_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        const QByteArray whole = test::readBytes(fixture(QStringLiteral("nwind.mdb")));
        QByteArray ace = whole.left(4096 * 4);
        ace.replace(4, 15, "Standard ACE DB");
        const QString notJet = QStringLiteral("ist keine Datenbank von TARVIK 2.0 (keine Access/Jet-Datei).");
        QTest::newRow("text file") << QByteArray("Hieb;Los\r\n1;2\r\n") << notJet;
        QTest::newRow("empty") << QByteArray() << notJet;
        QTest::newRow("garbage") << test::garbage(8192) << notJet;
        QTest::newRow("cut off mid-page") << whole.left(whole.size() / 2 + 100)
                                          << "ist unvollständig (abgeschnitten) und kann nicht übernommen werden.";
        QTest::newRow("Access 2007") << ace << "ist eine Access-Datenbank ab Version 2007. TARVIK 2.0 hat seine Daten nie in diesem "
                                               "Format gespeichert; bitte wählen Sie die Datei tarvik2.mdb aus dem Ordner von TARVIK 2.0.";
    }
    void badFilesAreRefusedAndNothingIsWritten()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        const QString mdb = m_dir.filePath(QStringLiteral("tarvik2.mdb"));
        test::writeBytes(mdb, content);
        const QString target = m_dir.filePath(QStringLiteral("ziel.db"));
        const JetConversion result = convertJetToSqlite(mdb, target);
        QVERIFY(!result.ok);
        QVERIFY2(result.message.startsWith(QStringLiteral("Die Datei ")) && result.message.endsWith(reason), qPrintable(result.message));
        QVERIFY(!QFileInfo::exists(target));
    }
};

TARVIK_TEST_CORE_MAIN(TestMaintenance)
#include "tst_maintenance.moc"
