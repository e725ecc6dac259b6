// tarvik-cli sicherung and wiederherstellen, run in-process as a scheduled task would.
#include "backup/archive.h"
#include "backup/restoreatstart.h"
#include "backup/stagedrestore.h"
#include "store/startup.h"
#include "support/clirun.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "backupfixtures.h"


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

// A harvest added in a session of its own, with the date of a last backup saved beside it.
void addHarvest(const test::TempDataFolder& data, qint32 number, const QString& lastBackup = {})
{
    test::ScriptedPrompter quiet;
    auto session = data.start(quiet);
    test::addHarvest(session->database->shared(), number);
    if (!lastBackup.isEmpty()) {
        session->settings.text[12] = lastBackup;
        QVERIFY(session->saveSettings(quiet));
    }
}

} // namespace

class TestBackupCli : public QObject {
    Q_OBJECT
private slots:
    // A backup into a folder, refused a second time that day without --ja; a change; the
    // restore, refused without --ja; then any command: the backup's data, and settings that
    // hold the date of that backup. With the data open in another program the restore waits,
    // each command says so and works on the current data, until the data are free.
    void backupThenRestore_data()
    {
        QTest::addColumn<bool>("openElsewhere");
        QTest::newRow("no other program") << false;
        QTest::newRow("data open in another program") << true;
    }
    void backupThenRestore()
    {
        QFETCH(bool, openElsewhere);
        test::TempDataFolder data;
        const QStringList at = {QStringLiteral("--daten"), data.path()};
        const QString settings = data.filePath(QLatin1String(SettingsFileName));
        const QString backupDate = QDate::currentDate().toString(QStringLiteral("dd.MM.yyyy"));
        addHarvest(data, 4711);
        QTemporaryDir target;
        const QStringList backup = at + QStringList{QStringLiteral("sicherung"), QStringLiteral("--ziel"), target.path()};
        const Output first = runCli(backup);
        QVERIFY2(first.code == 0, qPrintable(first.err));
        const QString name = archiveName(QDate::currentDate());
        QCOMPARE(first.out, QDir::toNativeSeparators(QDir(target.path()).filePath(name)));
        QVERIFY(test::unzipAccepts(first.out));
        QCOMPARE(EinstellungenLaden(settings).text[12], backupDate);
        const QByteArray before = test::sha256(localArchiveFolder(data.path()) + name);
        const Output again = runCli(backup);
        QCOMPARE(again.code, 1);
        QVERIFY(again.err.contains(QStringLiteral("Es wurde keine neue Datensicherung erstellt, weil bereits eine existiert hatte.")));
        QCOMPARE(test::sha256(localArchiveFolder(data.path()) + name), before);
        QCOMPARE(runCli(QStringList{QStringLiteral("--ja")} + backup).code, 0);

        addHarvest(data, 4712, QStringLiteral("01.01.2030")); // and a later backup
        auto harvests = [&] {
            const Output listed = runCli(at + QStringList{QStringLiteral("hiebe")});
            QStringList numbers;
            for (const QString& line : listed.out.split(u'\n').mid(1))
                for (const QString& cell : line.split(u'\t'))
                    if (cell == u"4711" || cell == u"4712")
                        numbers << cell;
            return std::pair{numbers, listed.err};
        };
        const QStringList restore = at + QStringList{QStringLiteral("wiederherstellen"), first.out};
        QCOMPARE(runCli(restore).code, 1);
        QVERIFY(!hasStagedRestore(data.path()));
        std::unique_ptr<Database> elsewhere;
        if (openElsewhere)
            elsewhere = Database::openOrCreate(data.databasePath());
        const Output restored = runCli(QStringList{QStringLiteral("--ja")} + restore);
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
        QCOMPARE(test::dumpRows(script.databasePath()), desktopRows);
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
