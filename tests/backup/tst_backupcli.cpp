// tarvik-cli sicherung and wiederherstellen, run in-process as a scheduled task would.
#include "backup/archive.h"
#include "backup/stagedrestore.h"
#include "cli/cli.h"
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
        QVERIFY(hasStagedRestore(data.path()));
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
