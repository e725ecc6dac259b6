// The start of a program: refusals end it with their message; the first activation shows the
// first-steps note only while there is no harvest.
#include "common/textfile.h"
#include "store/sql.h"
#include "store/startup.h"
#include "support/storefixture.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFileInfo>

using namespace tarvik;

class TestStartup : public QObject {
    Q_OBJECT

    static StartupOptions optionsFor(const test::TempDataFolder& folder)
    {
        StartupOptions options;
        options.dataFolder = folder.path();
        options.locale = QLocale(QLocale::German, QLocale::Germany);
        options.singleInstance = true;
        return options;
    }

private slots:
    // A locale other than German and a database that is not ours each end the start with
    // their message; the first creates no database.
    void refusalsEndTheStart_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("told"); // <datei>: the database's path
        QTest::newRow("English locale") << QLocale(QLocale::English, QLocale::UnitedStates) << QByteArray() << "WICHTIG!!!";
        QTest::newRow("foreign database") << QLocale(QLocale::German, QLocale::Germany) << QByteArray("not a database")
                                          << "Die Datei \"<datei>\" ist keine Datenbank von TARVIK 3.0";
    }
    void refusalsEndTheStart()
    {
        QFETCH(QLocale, locale);
        QFETCH(QByteArray, file);
        QFETCH(QString, told);
        test::TempDataFolder folder;
        if (!file.isEmpty())
            test::writeBytes(folder.databasePath(), file);
        StartupOptions options = optionsFor(folder);
        options.locale = locale;
        test::ScriptedPrompter prompter;
        QVERIFY(!startSession(options, prompter));
        QCOMPARE(prompter.messages().size(), 1);
        QVERIFY2(prompter.messages().first().startsWith(told.replace(QStringLiteral("<datei>"), folder.databasePath())),
                 qPrintable(prompter.messages().first()));
        QCOMPARE(test::readBytes(folder.databasePath()), file);
    }

    void secondInstanceOnTheSameFolderEnds()
    {
        test::TempDataFolder folder;
        test::ScriptedPrompter first;
        auto running = startSession(optionsFor(folder), first);
        QVERIFY(running);
        test::ScriptedPrompter second;
        QVERIFY(!startSession(optionsFor(folder), second));
        QCOMPARE(second.messages(), QStringList{QString::fromUtf8(AlreadyRunningMessage)});

        running.reset(); // the first ends: a new start may go ahead
        test::ScriptedPrompter third;
        QVERIFY(startSession(optionsFor(folder), third));
    }

    void firstStartAndFirstActivation()
    {
        test::TempDataFolder folder;
        test::ScriptedPrompter prompter;
        auto session = startSession(optionsFor(folder), prompter);
        QVERIFY(session);
        QCOMPARE(prompter.messages().size(), 1);
        QVERIFY(prompter.messages().first().startsWith(QStringLiteral("Hinweis:\nIn der Datenbasis"))); // the master-data note
        QVERIFY(QFile::exists(session->settingsPath()));
        QCOMPARE(session->settings.zahl[17], qint16(14));

        prompter.clear();
        const UpgradeReport report = firstActivation(*session, prompter);
        QCOMPARE(prompter.messages(), QStringList{firstStepsNote()});
        QCOMPARE(report.barkRangesAdded, 51);

        // Once a harvest exists, the note is not shown again, and nothing changes.
        execSql(session->database->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (1)"));
        session.reset();
        test::ScriptedPrompter later;
        auto again = startSession(optionsFor(folder), later);
        QVERIFY(later.messages().isEmpty());
        QVERIFY(firstActivation(*again, later).changes.isEmpty());
        QVERIFY(later.messages().isEmpty());
    }

    // The desktop user is told what the upgrade added and where the old file is kept.
    void upgradeSaysWhatItAdded()
    {
        test::TempDataFolder folder;
        createDatabaseFile(folder.databasePath());
        test::withPlainConnection(folder.databasePath(), [](const QSqlDatabase& db) {
            execSql(db, QStringLiteral("DROP INDEX tarvik_stämme_los_summen")); // older files had neither
            execSql(db, QStringLiteral("ALTER TABLE Stämme DROP COLUMN Holzpreis"));
            execSql(db, QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (1)"));
        });
        test::ScriptedPrompter prompter;
        auto session = startSession(optionsFor(folder), prompter);
        QVERIFY(session);
        const UpgradeReport report = firstActivation(*session, prompter);
        QCOMPARE(prompter.messages().size(), 1);
        const QString shown = prompter.messages().first();
        QVERIFY2(shown.startsWith(QStringLiteral("Die Datenbank wurde auf den aktuellen Stand gebracht.\n")), qPrintable(shown));
        QVERIFY(shown.contains(QDir::toNativeSeparators(report.backupPath)));
        // Column and index names go to the log, which the message names.
        for (const char* technical : {"Holzpreis", "Spalte", "tarvik_", "Indizes"})
            QVERIFY2(!shown.contains(QString::fromUtf8(technical)), qPrintable(shown));
        QCOMPARE(report.logPath, folder.filePath(QStringLiteral("Aktualisierung.log")));
        QVERIFY(shown.contains(QDir::toNativeSeparators(report.logPath)));
        const QString log = readTextFile(report.logPath).lines.join(u'\n');
        QVERIFY2(log.contains(QStringLiteral("Spalte Stämme.Holzpreis ergänzt")), qPrintable(log));
        QVERIFY(log.contains(QStringLiteral("Kopie des vorherigen Stands: ")));
        QVERIFY(QFile::exists(report.backupPath));
        QVERIFY(QFileInfo(report.backupPath).fileName().startsWith(QStringLiteral("TARVIK3.vor-Aktualisierung-")));
    }
};

TARVIK_TEST_CORE_MAIN(TestStartup)
#include "tst_startup.moc"
