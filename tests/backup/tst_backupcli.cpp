// tarvik-cli sicherung and wiederherstellen, run in-process as a scheduled task would.
#include "backup/archive.h"
#include "backup/restoreatstart.h"
#include "backup/stagedrestore.h"
#include "cli/cli.h"
#include "store/startup.h"
#include "support/clirun.h"
#include "support/tempdatafolder.h"
#include "backupfixtures.h"

#include <cstdio>

using namespace tarvik;

namespace {

using Output = test::CliOutput;

// The printed path without its line end.
Output runCli(const QStringList& args)
{
    Output o = test::runCli(args);
    o.out = o.out.trimmed();
    o.err = o.err.trimmed();
    return o;
}

} // namespace

class TestBackupCli : public QObject {
    Q_OBJECT
private slots:
    void backupIntoAFolderThenRestore()
    {
        test::TempDataFolder data;
        {
            test::ScriptedPrompter quiet;
            auto session = data.start(quiet);
            test::addHarvest(session->database->shared(), 4711);
        }
        QTemporaryDir target;
        const QStringList backup = {QStringLiteral("--daten"), data.path(), QStringLiteral("sicherung"), QStringLiteral("--ziel"), target.path()};
        const Output first = runCli(backup);
        QVERIFY2(first.code == 0, qPrintable(first.err));
        const QString name = archiveName(QDate::currentDate());
        QCOMPARE(first.out, QDir::toNativeSeparators(QDir(target.path()).filePath(name)));
        QCOMPARE(test::run(QStringLiteral("unzip"), {QStringLiteral("-tq"), first.out}).first, 0);
        QCOMPARE(EinstellungenLaden(data.filePath(QLatin1String(SettingsFileName))).text[12], QDate::currentDate().toString(QStringLiteral("dd.MM.yyyy")));

        // Today's archive exists: without --ja nothing is replaced.
        const QByteArray before = test::sha256(localArchiveFolder(data.path()) + name);
        const Output again = runCli(backup);
        QCOMPARE(again.code, 1);
        QVERIFY(again.err.contains(QStringLiteral("Es wurde keine neue Datensicherung erstellt, weil bereits eine existiert hatte.")));
        QCOMPARE(test::sha256(localArchiveFolder(data.path()) + name), before);
        QCOMPARE(runCli(QStringList{QStringLiteral("--ja")} + backup).code, 0);

        const QStringList restore = {QStringLiteral("--daten"), data.path(), QStringLiteral("wiederherstellen"), first.out};
        const Output unconfirmed = runCli(restore);
        QCOMPARE(unconfirmed.code, 1);
        QVERIFY(!hasStagedRestore(data.path()));
        const Output confirmed = runCli(QStringList{QStringLiteral("--ja")} + restore);
        QVERIFY2(confirmed.code == 0, qPrintable(confirmed.err));
        QCOMPARE(confirmed.out, QStringLiteral("Die Datensicherung ist übernommen."));
        QVERIFY(!hasStagedRestore(data.path()));
    }

    // Backup, a change, restore with --ja, then any command: the backup's data, and settings
    // that hold the date of that backup. With the data open in another program the restore
    // waits, each command says so and works on the current data, until the data are free.
    void restoreThenNextCommand_data()
    {
        QTest::addColumn<bool>("openElsewhere");
        QTest::newRow("no other program") << false;
        QTest::newRow("data open in another program") << true;
    }
    void restoreThenNextCommand()
    {
        QFETCH(bool, openElsewhere);
        test::TempDataFolder data;
        const QStringList at = {QStringLiteral("--daten"), data.path()};
        {
            test::ScriptedPrompter quiet;
            auto session = data.start(quiet);
            test::addHarvest(session->database->shared(), 4711);
        }
        const Output backup = runCli(at + QStringList{QStringLiteral("sicherung")});
        QVERIFY2(backup.code == 0, qPrintable(backup.err));
        const QString backupDate = QDate::currentDate().toString(QStringLiteral("dd.MM.yyyy"));
        {
            test::ScriptedPrompter quiet;
            auto session = data.start(quiet);
            test::addHarvest(session->database->shared(), 4712);
            session->settings.text[12] = QStringLiteral("01.01.2030"); // a later backup
            QVERIFY(session->saveSettings(quiet));
        }
        auto harvests = [&] {
            const Output listed = runCli(at + QStringList{QStringLiteral("hiebe")});
            QStringList numbers;
            for (const QString& line : listed.out.split(u'\n').mid(1))
                for (const QString& cell : line.split(u'\t'))
                    if (cell == u"4711" || cell == u"4712")
                        numbers << cell;
            return std::pair{numbers, listed.err};
        };
        const QString settings = data.filePath(QLatin1String(SettingsFileName));

        std::unique_ptr<Database> elsewhere;
        if (openElsewhere)
            elsewhere = Database::openOrCreate(data.databasePath());
        const Output restored = runCli(QStringList{QStringLiteral("--ja")} + at + QStringList{QStringLiteral("wiederherstellen"), backup.out});
        QVERIFY2(restored.code == 0, qPrintable(restored.err));
        if (openElsewhere) {
            QVERIFY(restored.out.startsWith(QStringLiteral("Die Datensicherung ist geprüft und bereitgelegt.")));
            QVERIFY(restored.err.contains(restoreWaitsMessage()));
            const auto [numbers, said] = harvests();
            QCOMPARE(numbers, (QStringList{"4711", "4712"}));
            QVERIFY2(said.contains(restoreWaitsMessage()), qPrintable(said));
            QCOMPARE(EinstellungenLaden(settings).text[12], QStringLiteral("01.01.2030"));
            elsewhere.reset();
        } else {
            QCOMPARE(restored.out, QStringLiteral("Die Datensicherung ist übernommen."));
        }
        const auto [numbers, said] = harvests();
        QCOMPARE(numbers, QStringList{"4711"});
        QVERIFY(!said.contains(restoreWaitsMessage()));
        QVERIFY(!hasStagedRestore(data.path()));
        QCOMPARE(EinstellungenLaden(settings).text[12], backupDate);
    }

    // A data folder first opened by a command holds what the desktop program's first start
    // leaves: the same start steps, the upgrade among them.
    void everyCommandStartsLikeTheDesktop_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::newRow("hiebe") << QStringList{"hiebe"};
        QTest::newRow("sicherung") << QStringList{"sicherung"};
        QTest::newRow("init") << QStringList{"init"};
    }
    void everyCommandStartsLikeTheDesktop()
    {
        QFETCH(QStringList, command);
        test::TempDataFolder desktop;
        QStringList desktopRows;
        {
            StartupOptions options;
            options.dataFolder = desktop.path();
            options.locale = QLocale();
            options.singleInstance = true;
            options.beforeOpening = takeOverRestoreAtStart;
            test::ScriptedPrompter prompter;
            auto session = startSession(options, prompter);
            QVERIFY(session);
            firstActivation(*session, prompter);
            desktopRows = test::dumpRows(session->database->shared());
        }
        test::TempDataFolder script;
        const Output ran = runCli(QStringList{QStringLiteral("--daten"), script.path()} + command);
        QVERIFY2(ran.code == 0, qPrintable(ran.err));
        // Read as it lies, with nothing run at opening.
        QSqlDatabase raw = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("roh"));
        raw.setDatabaseName(script.databasePath());
        QVERIFY(raw.open());
        const QStringList scriptRows = test::dumpRows(raw);
        raw.close();
        raw = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("roh"));
        QCOMPARE(scriptRows.size(), desktopRows.size());
        QCOMPARE(scriptRows, desktopRows);
    }

    void refusals_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::newRow("missing target folder") << QStringList{"sicherung", "--ziel", "/gibt/es/nicht"} << 1;
        QTest::newRow("backup with argument") << QStringList{"sicherung", "x"} << 2;
        QTest::newRow("restore without archive") << QStringList{"--ja", "wiederherstellen"} << 2;
        QTest::newRow("restore of a missing archive") << QStringList{"--ja", "wiederherstellen", "/gibt/es/nicht.zip"} << 1;
    }
    void refusals()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        test::TempDataFolder data;
        const Output o = runCli(QStringList{QStringLiteral("--daten"), data.path()} + args);
        QCOMPARE(o.code, code);
        QVERIFY(!o.err.isEmpty());
        QVERIFY(!hasStagedRestore(data.path()));
    }
};

TARVIK_TEST_CORE_MAIN(TestBackupCli)
#include "tst_backupcli.moc"
