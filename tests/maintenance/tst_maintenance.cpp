// Compaction and the takeover of version-2 data, on real files.
#include "maintenance/compaction.h"
#include "maintenance/takeover.h"
#include "store/database.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/reliabilityfiles.h"
#include "support/tempdatafolder.h"

#include <QCryptographicHash>
#include <QProcess>
#include <QtTest>
#include <algorithm>

using namespace tarvik;

namespace {

QByteArray checksum(const QString& path) { return QCryptographicHash::hash(test::readBytes(path), QCryptographicHash::Sha256); }

QString fixture(const QString& name) { return QStringLiteral(TARVIK_TEST_DATA "/jet/") + name; }

} // namespace

class TestMaintenance : public QObject {
    Q_OBJECT

private slots:
    void compactionShrinksAndKeepsEveryRow()
    {
        test::TempDataFolder dir;
        qint64 rows = 0;
        {
            auto db = dir.openDatabase();
            TransactionGuard guard(db->shared());
            for (int h = 1; h <= 300; ++h)
                test::addHarvest(db->shared(), h);
            guard.commit();
            execSql(db->shared(), QStringLiteral("DELETE FROM Hiebe WHERE Hieb_Nr > 20"));
            rows = scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toLongLong();
        }
        const qint64 before = QFileInfo(dir.databasePath()).size();
        QList<int> percents;
        QStringList stages;
        const CompactionResult result = compactDatabaseFile(dir.databasePath(), [&](int percent, const QString& stage) {
            percents << percent;
            stages << stage;
        });
        QVERIFY2(result.ok, qPrintable(result.message));
        QCOMPARE(result.message, compactionDoneMessage());
        // The progress only rises, from the start to the end, and says in German what is done.
        QVERIFY(percents.size() >= 4);
        QCOMPARE(percents.first(), 0);
        QCOMPARE(percents.last(), 100);
        QVERIFY(std::is_sorted(percents.begin(), percents.end()));
        QVERIFY(stages.contains(QStringLiteral("Die Kopie wird geprüft ...")));
        QVERIFY2(result.sizeAfter < before, qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(result.sizeAfter)));
        QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("TARVIK3.$$$"))));
        auto db = Database::openOrCreate(dir.databasePath());
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toLongLong(), rows);
        QCOMPARE(scalar(db->shared(), QStringLiteral("PRAGMA integrity_check")).toString(), QStringLiteral("ok"));
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
        const QByteArray sum = checksum(dir.databasePath());
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
        QCOMPARE(checksum(dir.databasePath()), sum);
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
        const QByteArray sum = checksum(data.databasePath());

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
        QCOMPARE(checksum(data.databasePath()), sum);
        QVERIFY(checksum(data.filePath(QStringLiteral("Einstellungen.tk3"))) != checksum(old.filePath(QStringLiteral("Einstellungen.tk2"))));
        QCOMPARE(QDir(data.path()).entryList({QStringLiteral("*.übernahme")}, QDir::Files), QStringList());
        QCOMPARE(version2Database(old.filePath(QStringLiteral("leer"))), QString());
    }

    // The label of the folder choice, as the user reads it (its wording kept as it always was).
    void takeoverFolderLabelText()
    {
        QCOMPARE(takeoverFolderLabel(), QStringLiteral("Auswahl (In welchem Ordner befindes sich die Datei TARVIK.MDB)"));
    }
};

TARVIK_TEST_CORE_MAIN(TestMaintenance)
#include "tst_maintenance.moc"
