// The wizard's steps without the window: which stick is due, the drive questions, creating
// and copying the archive, the summary, keeping three, and restoring.
#include "backup/stagedrestore.h"
#include "backup/wizardsteps.h"
#include "common/textfile.h"
#include "support/tempdatafolder.h"
#include "backupfixtures.h"
#include "fakedrives.h"

using namespace tarvik;

namespace {

const QDate Today(2026, 11, 23);

struct Fixture {
    test::TempDataFolder folder;
    test::ScriptedPrompter prompter;
    std::unique_ptr<Session> session;
    FixedClock clock{Today};
    test::FakeDrives drives;
    DirectRunner runner;
    Fixture()
    {
        test::ScriptedPrompter quiet;
        session = folder.start(quiet);
        test::addHarvest(session->database->shared(), 1);
    }
    AppContext context() { return {session->database->shared(), session->settings, session->dataFolder, prompter, clock}; }
    void setLastBackups(int monthlyDaysAgo, int yearlyDaysAgo)
    {
        BackupChoices choices;
        choices.rotation = true;
        if (monthlyDaysAgo >= 0)
            choices.lastMonthly = Today.addDays(-monthlyDaysAgo);
        if (yearlyDaysAgo >= 0)
            choices.lastYearly = Today.addDays(-yearlyDaysAgo);
        QVERIFY(saveBackupChoices(folder.path(), choices));
    }
};

} // namespace

class TestBackupSteps : public QObject {
    Q_OBJECT

private slots:
    void stickChoice_data()
    {
        QTest::addColumn<int>("monthlyDaysAgo"); // -1: never
        QTest::addColumn<int>("yearlyDaysAgo");
        QTest::addColumn<Stick>("stick");
        QTest::newRow("61 / 100 days: blue") << 61 << 100 << Stick::Blau;
        QTest::newRow("61 / 181 days: red wins") << 61 << 181 << Stick::Rot;
        QTest::newRow("10 / 181 days: red") << 10 << 181 << Stick::Rot;
        QTest::newRow("60 / 180 days: green") << 60 << 180 << Stick::Gruen;
        QTest::newRow("no monthly yet: blue") << -1 << 30 << Stick::Blau;
        QTest::newRow("none at all: red") << -1 << -1 << Stick::Rot;
    }
    void stickChoice()
    {
        QFETCH(int, monthlyDaysAgo);
        QFETCH(int, yearlyDaysAgo);
        QFETCH(Stick, stick);
        const QDate monthly = monthlyDaysAgo < 0 ? QDate() : Today.addDays(-monthlyDaysAgo);
        const QDate yearly = yearlyDaysAgo < 0 ? QDate() : Today.addDays(-yearlyDaysAgo);
        QCOMPARE(dueStick(monthly, yearly, Today), stick);

        // The start of a backup asks for that stick by its colour.
        Fixture f;
        f.setLastBackups(monthlyDaysAgo, yearlyDaysAgo);
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerYes();
        QVERIFY(steps.begin(true));
        QCOMPARE(steps.requestedStick(), std::optional<Stick>(stick));
        QCOMPARE(f.prompter.questions().first(), insertStickMessage(stick));
    }

    void choicesFileIsCp1252WithCrLf()
    {
        QTemporaryDir dir;
        BackupChoices choices;
        choices.rotation = true;
        choices.lastMonthly = QDate(2026, 9, 1);
        choices.cloudFolder = QStringLiteral("/home/anna/Wolke Größe");
        QVERIFY(saveBackupChoices(dir.path(), choices));
        const QByteArray bytes = test::readBytes(dir.filePath(QLatin1String(BackupChoicesFileName)));
        QVERIFY(bytes.contains("Monatsbackup=01.09.2026\r\nJahresbackup=\r\n"));
        QVERIFY(bytes.contains("Gr\xf6\xdf" "e\r\n"));
        const BackupChoices back = loadBackupChoices(dir.path());
        QCOMPARE(back.rotation, true);
        QCOMPARE(back.lastMonthly, choices.lastMonthly);
        QVERIFY(!back.lastYearly.isValid());
        QCOMPARE(back.cloudFolder, choices.cloudFolder);
    }

    void cancelAtTheStartEndsTheBackup()
    {
        Fixture f;
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerNo();
        QVERIFY(!steps.begin(false));
        QCOMPARE(f.prompter.questions(), QStringList{externalDriveHint()});
    }

    void greenStickOfferedWhenBlueIsDueRaisesTheNameQuestion()
    {
        Fixture f;
        f.setLastBackups(61, 100);
        const Drive green = f.drives.addStick(QStringLiteral("KELMO_GRUEN"));
        const Drive blue = f.drives.addStick(QStringLiteral("KELMO_BLAU"));
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerYes();
        QVERIFY(steps.begin(true));
        const QList<Drive> list = steps.drives();
        QCOMPARE(list[steps.proposedDrive(list)].volumeName, QStringLiteral("KELMO_BLAU"));

        f.prompter.answerNo();
        QVERIFY(!steps.chooseDrive(green));
        QVERIFY(f.prompter.questions().last().contains(QStringLiteral("nicht den zum Backup-Konzept passenden Volume-Name")));
        QVERIFY(steps.chooseDrive(blue)); // no question for the right stick
        QCOMPARE(f.prompter.questions().size(), 2);
    }

    void driveOfTheDataWarnsAndKeepsTheArchiveOnTheDisk()
    {
        Fixture f;
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerYes();
        QVERIFY(steps.begin(false));
        const Drive disk = *f.drives.driveOf(f.folder.path());
        f.prompter.answerNo();
        QVERIFY(!steps.chooseDrive(disk));
        QVERIFY(f.prompter.questions().last().startsWith(QStringLiteral("Sie haben das selbe Laufwerk ausgewählt")));
        QVERIFY(f.prompter.questions().last().endsWith(QStringLiteral("Möchten Sie trotzdem fortfahren?")));
        f.prompter.answerYes();
        QVERIFY(steps.chooseDrive(disk));
        steps.createArchive();
        steps.copyToDrive();
        QVERIFY(f.prompter.messages().last().startsWith(QStringLiteral("Die Datensicherung wurde nicht auf einen externen Datenträger kopiert, weil kein externer Datenträger ausgewählt wurde.")));
        QVERIFY(steps.summary().contains(QStringLiteral("Für das Backup wurde NICHT ein externer Datenträger / USB-Stick ausgewählt.")));
    }

    void unreachableDriveIsRefused()
    {
        Fixture f;
        f.drives.addStick(QStringLiteral("STICK"));
        const Drive stick = f.drives.stickNamed(QStringLiteral("STICK"));
        f.drives.pull(QStringLiteral("STICK"));
        BackupSteps steps(f.context(), f.drives, f.runner);
        QVERIFY(!steps.chooseDrive(stick));
        QCOMPARE(f.prompter.messages(), QStringList{QStringLiteral("Das Laufwerk ist nicht ansprechbar! Bitte wählen Sie ein korrektes Laufwerk aus!")});
    }

    // The whole way with the rotation: archive on the disk, copy on the blue stick, cloud.
    void backupOnTheDueStickAndInTheCloud()
    {
        Fixture f;
        f.setLastBackups(61, 100);
        const Drive blue = f.drives.addStick(QStringLiteral("KELMO_BLAU"));
        QTemporaryDir cloud;
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerYes();
        QVERIFY(steps.begin(true));
        QVERIFY(steps.chooseDrive(blue));
        steps.chooseCloudFolder(cloud.path());
        steps.createArchive();
        steps.copyToDrive();
        steps.copyToCloud();

        const QString name = QStringLiteral("TARVIK30_backup_2026_11_23.zip");
        const QString onStick = blue.rootPath + name;
        QCOMPARE(f.prompter.messages(), (QStringList{
            QStringLiteral("Die Datensicherung wurde erstellt und ist in der ZIP-Datei ") + QDir::toNativeSeparators(steps.archivePath()) + QStringLiteral(" gespeichert."),
            QStringLiteral("Die Datensicherung wurde kopiert und ist abgelegt unter ") + QDir::toNativeSeparators(onStick)}));
        QCOMPARE(test::run(QStringLiteral("unzip"), {QStringLiteral("-tq"), onStick}).first, 0);
        QCOMPARE(test::sha256(QDir(cloud.path()).filePath(name)), test::sha256(steps.archivePath()));
        QCOMPARE(steps.summary(), (QStringList{
            QStringLiteral("Das Backup wurde mit dem Backup-Konzept für hohe Datensicherheit gestartet."),
            QStringLiteral("Für das Backup wurde ein externer Datenträger / USB-Stick ausgewählt."),
            QStringLiteral("Es wurde der USB-Stick vom KELMO-Backup-Konzept verwendet."),
            QStringLiteral("Das Backup ") + name + QStringLiteral(" wurde erstellt."),
            QStringLiteral("Die Backupdatei wurde kopiert nach ") + QDir::toNativeSeparators(onStick),
            QStringLiteral("Die Backupdatei wurde in den Cloudordner übertragen.")}));
        QCOMPARE(f.session->settings.text[12], QStringLiteral("23.11.2026"));
        QCOMPARE(EinstellungenLaden(f.session->settingsPath()).text[12], QStringLiteral("23.11.2026"));
        const BackupChoices remembered = loadBackupChoices(f.folder.path());
        QCOMPARE(remembered.lastMonthly, Today); // the blue stick is done: green is next
        QCOMPARE(remembered.cloudFolder, cloud.path());
        QCOMPARE(dueStick(remembered.lastMonthly, remembered.lastYearly, Today), Stick::Gruen);
    }

    // "Nein" keeps today's archive and creates nothing, but what is there still goes to the
    // stick and the cloud, and the summary says so.
    void secondBackupOfTheDayKeptOnNoIsCopiedAllTheSame()
    {
        Fixture f;
        const Drive stick = f.drives.addStick(QStringLiteral("STICK"));
        QTemporaryDir cloud;
        {
            BackupSteps first(f.context(), f.drives, f.runner);
            first.createArchive();
        }
        const QString local = localArchiveFolder(f.folder.path()) + archiveName(Today);
        const QByteArray before = test::sha256(local);
        test::addHarvest(f.session->database->shared(), 2); // a change the kept archive does not hold
        f.prompter.clear();
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerYes().answerNo();
        QVERIFY(steps.begin(false));
        QVERIFY(steps.chooseDrive(stick));
        steps.chooseCloudFolder(cloud.path());
        steps.createArchive();
        steps.copyToDrive();
        steps.copyToCloud();
        QCOMPARE(f.prompter.questions().last(), QStringLiteral("Für den heutigen Tag existiert bereits eine Datensicherung. Soll diese überschrieben werden?"));
        const QString onStick = stick.rootPath + archiveName(Today);
        QCOMPARE(f.prompter.messages(), (QStringList{
            QStringLiteral("Es wurde keine neue Datensicherung erstellt, weil bereits eine existiert hatte."),
            QStringLiteral("Die Datensicherung wurde kopiert und ist abgelegt unter ") + QDir::toNativeSeparators(onStick)}));
        QCOMPARE(test::sha256(local), before);
        QCOMPARE(test::sha256(onStick), before);
        QCOMPARE(test::sha256(QDir(cloud.path()).filePath(archiveName(Today))), before);
        QCOMPARE(steps.summary().mid(3), (QStringList{
            QStringLiteral("Das Backup wurde NICHT erstellt, weil bereits ein Backup vom heutigen Tag existiert hatte."),
            QStringLiteral("Die Backupdatei wurde kopiert nach ") + QDir::toNativeSeparators(onStick),
            QStringLiteral("Die Backupdatei wurde in den Cloudordner übertragen.")}));
    }

    // What an archive knows of itself once restored: the date of its backup in the settings,
    // the stick it went to and the cloud folder in the remembered choices. The copies kept
    // before an upgrade stay out of it.
    void archiveHoldsItsOwnBackup_data()
    {
        QTest::addColumn<int>("monthlyDaysAgo");
        QTest::addColumn<int>("yearlyDaysAgo");
        QTest::addColumn<QString>("volume");
        QTest::addColumn<bool>("cloud");
        QTest::newRow("blue stick and cloud") << 61 << 100 << QStringLiteral("KELMO_BLAU") << true;
        QTest::newRow("red stick, no cloud") << 10 << 181 << QStringLiteral("KELMO_ROT") << false;
        QTest::newRow("green stick") << 10 << 20 << QStringLiteral("KELMO_GRUEN") << true;
    }
    void archiveHoldsItsOwnBackup()
    {
        QFETCH(int, monthlyDaysAgo);
        QFETCH(int, yearlyDaysAgo);
        QFETCH(QString, volume);
        QFETCH(bool, cloud);
        Fixture f;
        f.setLastBackups(monthlyDaysAgo, yearlyDaysAgo);
        f.session->settings.text[12] = QStringLiteral("01.10.2026");
        test::writeBytes(f.folder.filePath(QStringLiteral("TARVIK3.vor-Aktualisierung-2026-11-01.db")), "alter Stand");
        test::writeBytes(f.folder.filePath(QStringLiteral("TARVIK3.vor-Aktualisierung-2026-11-01-2.db")), "noch einer");
        const Drive stick = f.drives.addStick(volume);
        QTemporaryDir cloudFolder;
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerYes();
        QVERIFY(steps.begin(true));
        QVERIFY(steps.chooseDrive(stick));
        steps.chooseCloudFolder(cloud ? cloudFolder.path() : QString());
        steps.createArchive();
        steps.copyToDrive();
        steps.copyToCloud();

        QTemporaryDir unpacked;
        const ArchiveCheck check = checkArchive(stick.rootPath + archiveName(Today), {}, unpacked.path());
        QVERIFY2(check.ok, qPrintable(check.error));
        for (const QString& name : check.names)
            QVERIFY2(!name.contains(QStringLiteral("vor-Aktualisierung")), qPrintable(name));
        QCOMPARE(EinstellungenLaden(QDir(unpacked.path()).filePath(QStringLiteral("Einstellungen.tk3"))).text[12], QStringLiteral("23.11.2026"));
        const BackupChoices inArchive = loadBackupChoices(unpacked.path());
        const BackupChoices now = loadBackupChoices(f.folder.path());
        QCOMPARE(inArchive.cloudFolder, cloud ? cloudFolder.path() : QString());
        QCOMPARE(inArchive.lastMonthly, volume == u"KELMO_BLAU" ? Today : Today.addDays(-monthlyDaysAgo));
        QCOMPARE(inArchive.lastYearly, volume == u"KELMO_ROT" ? Today : Today.addDays(-yearlyDaysAgo));
        QCOMPARE(inArchive.lastMonthly, now.lastMonthly);
        QCOMPARE(inArchive.lastYearly, now.lastYearly);
        QCOMPARE(inArchive.cloudFolder, now.cloudFolder);
    }

    // A stick that is not reached keeps its old date: the rotation asks for it again.
    void stickNotReachedKeepsItsDate()
    {
        Fixture f;
        f.setLastBackups(61, 100);
        const Drive blue = f.drives.addStick(QStringLiteral("KELMO_BLAU"));
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerYes();
        QVERIFY(steps.begin(true));
        QVERIFY(steps.chooseDrive(blue));
        steps.createArchive();
        f.drives.pull(QStringLiteral("KELMO_BLAU"));
        steps.copyToDrive();
        QCOMPARE(loadBackupChoices(f.folder.path()).lastMonthly, Today.addDays(-61));
        QCOMPARE(dueStick(loadBackupChoices(f.folder.path()).lastMonthly, loadBackupChoices(f.folder.path()).lastYearly, Today), Stick::Blau);
    }

    void copyProblemsAreToldAndSummarised_data()
    {
        QTest::addColumn<QString>("problem");
        QTest::newRow("stick pulled out") << QStringLiteral("pulled");
        QTest::newRow("name exists, not copied") << QStringLiteral("exists");
        QTest::newRow("missing cloud folder") << QStringLiteral("cloud");
    }
    void copyProblemsAreToldAndSummarised()
    {
        QFETCH(QString, problem);
        Fixture f;
        const Drive stick = f.drives.addStick(QStringLiteral("STICK"));
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerYes();
        QVERIFY(steps.begin(false));
        QVERIFY(steps.chooseDrive(stick));
        steps.chooseCloudFolder(problem == QLatin1String("cloud") ? QStringLiteral("/gibt/es/nicht") : QString());
        steps.createArchive();
        if (problem == QLatin1String("pulled"))
            f.drives.pull(QStringLiteral("STICK"));
        if (problem == QLatin1String("exists")) {
            test::writeBytes(stick.rootPath + archiveName(Today), "alt");
            f.prompter.answerNo();
        }
        steps.copyToDrive();
        steps.copyToCloud();
        const QString last = f.prompter.messages().last();
        if (problem == QLatin1String("pulled"))
            QCOMPARE(last, QStringLiteral("Das Laufwerk ist nicht ansprechbar! Bitte wählen Sie ein korrektes Laufwerk aus!"));
        else if (problem == QLatin1String("exists"))
            QCOMPARE(last, QStringLiteral("Die Datensicherung wurde nicht kopiert."));
        else
            QCOMPARE(last, QStringLiteral("Die Datei konnte nicht in die Cloud gespeichert werden, weil der Ordner /gibt/es/nicht nicht existiert."));
        const QStringList summary = steps.summary();
        QVERIFY(summary.contains(QStringLiteral("Die Backupdatei wurde NICHT in den Cloudordner übertragen.")));
        QCOMPARE(summary.contains(QStringLiteral("Die Backupdatei wurde NICHT auf einen externen Datenträger kopiert.")),
                 problem != QLatin1String("cloud"));
    }

    void closingOffersToKeepThree()
    {
        Fixture f;
        const QString local = localArchiveFolder(f.folder.path());
        QDir().mkpath(local);
        for (int i = 1; i <= 5; ++i)
            test::writeBytes(local + archiveName(Today.addDays(-i)), "x");
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerNo();
        steps.closing();
        QCOMPARE(listArchives(local).size(), 5);
        QCOMPARE(f.prompter.questions().last(), backupCleanupQuestion());
        f.prompter.answerYes();
        steps.closing();
        QCOMPARE(listArchives(local).size(), 3);
        QCOMPARE(listArchives(local).last().date, Today.addDays(-3));
        steps.closing(); // three left: no question
        QCOMPARE(f.prompter.questions().size(), 2);
    }

    void restoreAsksAndStages()
    {
        Fixture f;
        const Drive stick = f.drives.addStick(QStringLiteral("KELMO_ROT"));
        QVERIFY(writeArchive(f.folder.path(), stick.rootPath + archiveName(Today.addDays(-2))).ok);
        QVERIFY(writeArchive(f.folder.path(), stick.rootPath + archiveName(Today.addDays(-9))).ok);
        RestoreSteps steps(f.context(), f.drives, f.runner);
        const QList<ArchiveInfo> archives = steps.archivesOn(stick);
        QCOMPARE(archives.size(), 2);
        QCOMPARE(archives.first().date, Today.addDays(-2));

        QVERIFY(!steps.restore(std::nullopt));
        QCOMPARE(f.prompter.messages().last(), QStringLiteral("Sie haben kein Backup ausgewählt. Bitte markieren Sie zuerst das Backup, welches eingelesen werden soll."));
        f.prompter.answerNo();
        QVERIFY(!steps.restore(archives.first()));
        QVERIFY(!hasStagedRestore(f.folder.path()));
        f.prompter.answerYes();
        QVERIFY(steps.restore(archives.first()));
        QCOMPARE(f.prompter.questions().last(), restoreQuestion());
        QCOMPARE(f.prompter.messages().last(), restoredMessage());
        QVERIFY(hasStagedRestore(f.folder.path()));
    }
};

TARVIK_TEST_CORE_MAIN(TestBackupSteps)
#include "tst_backupsteps.moc"
