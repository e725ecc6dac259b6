// The wizard's steps without the window: which stick is due, the drive questions, creating
// and copying the archive with what it remembers, the summary, keeping three, and restoring.
#include "backup/wizardsteps.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "backupfixtures.h"

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
    Fixture(int monthlyDaysAgo = -1, int yearlyDaysAgo = -1)
    {
        test::ScriptedPrompter quiet;
        session = folder.start(quiet);
        test::addHarvest(session->database->shared(), 1);
        BackupChoices choices;
        choices.rotation = true;
        if (monthlyDaysAgo >= 0)
            choices.lastMonthly = Today.addDays(-monthlyDaysAgo);
        if (yearlyDaysAgo >= 0)
            choices.lastYearly = Today.addDays(-yearlyDaysAgo);
        QVERIFY(saveBackupChoices(folder.path(), choices));
    }
    AppContext context() { return {session->database->shared(), session->settings, session->dataFolder, prompter, clock}; }
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
        Fixture f(monthlyDaysAgo, yearlyDaysAgo);
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

    // Cancel at the hint ends the backup; a pulled stick is refused; with the rotation on, a
    // stick of another name raises the name question, the due one none.
    void driveQuestions()
    {
        Fixture f(61, 100);
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerNo();
        QVERIFY(!steps.begin(false));
        QCOMPARE(f.prompter.questions(), QStringList{externalDriveHint()});

        const Drive green = f.drives.addStick(QStringLiteral("KELMO_GRUEN"));
        const Drive blue = f.drives.addStick(QStringLiteral("KELMO_BLAU"));
        const Drive pulled = f.drives.addStick(QStringLiteral("STICK"));
        f.drives.pull(QStringLiteral("STICK"));
        QVERIFY(!steps.chooseDrive(pulled));
        QCOMPARE(f.prompter.messages(), QStringList{QStringLiteral("Das Laufwerk ist nicht ansprechbar! Bitte wählen Sie ein korrektes Laufwerk aus!")});

        f.prompter.clear();
        BackupSteps rotation(f.context(), f.drives, f.runner);
        f.prompter.answerYes();
        QVERIFY(rotation.begin(true));
        const QList<Drive> list = rotation.drives();
        QCOMPARE(list[rotation.proposedDrive(list)].volumeName, QStringLiteral("KELMO_BLAU"));
        f.prompter.answerNo();
        QVERIFY(!rotation.chooseDrive(green));
        QVERIFY(f.prompter.questions().last().contains(QStringLiteral("nicht den zum Backup-Konzept passenden Volume-Name")));
        QVERIFY(rotation.chooseDrive(blue));
        QCOMPARE(f.prompter.questions().size(), 2);
    }

    // A whole backup onto a stick (or the data's own drive) and into a cloud folder, and what
    // goes wrong on the way: the messages, the summary, the copies, the stick's date (only when
    // the due stick got its copy) and what the archive knows of itself once restored: the date
    // of its backup, the stick's date and the cloud folder; the copies kept before an upgrade
    // stay out of it. "Nein" to today's archive keeps it, and it still goes to the stick and
    // the cloud.
    void backup_data()
    {
        QTest::addColumn<bool>("rotation");
        QTest::addColumn<int>("monthlyDaysAgo");
        QTest::addColumn<int>("yearlyDaysAgo");
        QTest::addColumn<QString>("volume"); // none: the drive of the data
        QTest::addColumn<QString>("trouble");
        QTest::addColumn<QStringList>("messages"); // <lokal>: the archive, <stick>: its copy, <name>
        QTest::addColumn<QStringList>("summary");
        QTest::addColumn<QString>("stamped"); // the stick's date set to today

        const QString created = QStringLiteral("Die Datensicherung wurde erstellt und ist in der ZIP-Datei <lokal> gespeichert.");
        const QString copied = QStringLiteral("Die Datensicherung wurde kopiert und ist abgelegt unter <stick>");
        const QStringList rotation{QStringLiteral("Das Backup wurde mit dem Backup-Konzept für hohe Datensicherheit gestartet."),
                                   QStringLiteral("Für das Backup wurde ein externer Datenträger / USB-Stick ausgewählt."),
                                   QStringLiteral("Es wurde der USB-Stick vom KELMO-Backup-Konzept verwendet.")};
        const QStringList plain{QStringLiteral("Das Backup wurde NICHT mit dem Backup-Konzept für hohe Datensicherheit gestartet."),
                                QStringLiteral("Für das Backup wurde ein externer Datenträger / USB-Stick ausgewählt."),
                                QStringLiteral("Es wurde NICHT der USB-Stick vom KELMO-Backup-Konzept verwendet.")};
        const QString made = QStringLiteral("Das Backup <name> wurde erstellt.");
        const QString onStick = QStringLiteral("Die Backupdatei wurde kopiert nach <stick>");
        const QString notOnStick = QStringLiteral("Die Backupdatei wurde NICHT auf einen externen Datenträger kopiert.");
        const QString inCloud = QStringLiteral("Die Backupdatei wurde in den Cloudordner übertragen.");
        const QStringList allWell{made, onStick, inCloud};

        QTest::newRow("blue stick due") << true << 61 << 100 << "KELMO_BLAU" << "" << QStringList{created, copied} << rotation + allWell << "monthly";
        QTest::newRow("red stick due") << true << 10 << 181 << "KELMO_ROT" << "" << QStringList{created, copied} << rotation + allWell << "yearly";
        QTest::newRow("green stick due") << true << 10 << 20 << "KELMO_GRUEN" << "" << QStringList{created, copied} << rotation + allWell << "";
        QTest::newRow("blue stick pulled out before the copy")
            << true << 61 << 100 << "KELMO_BLAU" << "pulled"
            << QStringList{created, QStringLiteral("Das Laufwerk ist nicht ansprechbar! Bitte wählen Sie ein korrektes Laufwerk aus!")}
            << QStringList{rotation[0], rotation[1], plain[2], made, notOnStick, inCloud} << "";
        QTest::newRow("name on the stick, not copied") << false << 61 << 100 << "STICK" << "on stick"
                                                       << QStringList{created, QStringLiteral("Die Datensicherung wurde nicht kopiert.")}
                                                       << plain + QStringList{made, notOnStick, inCloud} << "";
        QTest::newRow("missing cloud folder")
            << false << 61 << 100 << "STICK" << "no cloud"
            << QStringList{created, copied,
                           QStringLiteral("Die Datei konnte nicht in die Cloud gespeichert werden, weil der Ordner /gibt/es/nicht nicht existiert.")}
            << plain + QStringList{made, onStick, QStringLiteral("Die Backupdatei wurde NICHT in den Cloudordner übertragen.")} << "";
        QTest::newRow("the drive of the data")
            << false << 61 << 100 << "" << ""
            << QStringList{created, QStringLiteral("Die Datensicherung wurde nicht auf einen externen Datenträger kopiert, weil kein externer "
                                                   "Datenträger ausgewählt wurde. Die Datensicherung befindet sich auf Ihrer Festplatte unter <lokal>")}
            << QStringList{plain[0], QStringLiteral("Für das Backup wurde NICHT ein externer Datenträger / USB-Stick ausgewählt."), plain[2],
                           made, notOnStick, inCloud}
            << "";
        QTest::newRow("today's archive kept")
            << false << 61 << 100 << "STICK" << "kept"
            << QStringList{QStringLiteral("Es wurde keine neue Datensicherung erstellt, weil bereits eine existiert hatte."), copied}
            << plain + QStringList{QStringLiteral("Das Backup wurde NICHT erstellt, weil bereits ein Backup vom heutigen Tag existiert hatte."),
                                   onStick, inCloud}
            << "";
    }
    void backup()
    {
        QFETCH(bool, rotation);
        QFETCH(int, monthlyDaysAgo);
        QFETCH(int, yearlyDaysAgo);
        QFETCH(QString, volume);
        QFETCH(QString, trouble);
        QFETCH(QStringList, messages);
        QFETCH(QStringList, summary);
        QFETCH(QString, stamped);
        Fixture f(monthlyDaysAgo, yearlyDaysAgo);
        f.session->settings.text[12] = QStringLiteral("01.10.2026");
        test::writeBytes(f.folder.filePath(QStringLiteral("TARVIK3.vor-Aktualisierung-2026-11-01.db")), "alter Stand");
        const Drive stick = volume.isEmpty() ? *f.drives.driveOf(f.folder.path()) : f.drives.addStick(volume);
        QTemporaryDir cloudFolder;
        const QString cloud = trouble == u"no cloud" ? QStringLiteral("/gibt/es/nicht") : cloudFolder.path();
        const QString name = archiveName(Today);
        const QString local = localArchiveFolder(f.folder.path()) + name;
        const QString copy = stick.rootPath + name;
        if (trouble == u"kept") {
            BackupSteps first(f.context(), f.drives, f.runner);
            first.createArchive();
            test::addHarvest(f.session->database->shared(), 2); // a change the kept archive does not hold
            f.prompter.clear();
        }
        if (trouble == u"on stick")
            test::writeBytes(copy, "alt");
        const QByteArray kept = test::sha256(local);

        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerYes(); // the stick or the hint
        if (trouble == u"kept" || trouble == u"on stick")
            f.prompter.answerNo();
        QVERIFY(steps.begin(rotation));
        if (volume.isEmpty()) { // warned, and "Nein" keeps the page
            f.prompter.answerNo();
            QVERIFY(!steps.chooseDrive(stick));
            QVERIFY(f.prompter.questions().last().startsWith(QStringLiteral("Sie haben das selbe Laufwerk ausgewählt")));
            QVERIFY(f.prompter.questions().last().endsWith(QStringLiteral("Möchten Sie trotzdem fortfahren?")));
            f.prompter.answerYes();
        }
        QVERIFY(steps.chooseDrive(stick));
        steps.chooseCloudFolder(cloud);
        steps.createArchive();
        if (trouble == u"pulled")
            f.drives.pull(volume);
        steps.copyToDrive();
        steps.copyToCloud();

        for (QStringList* texts : {&messages, &summary})
            for (QString& text : *texts)
                text.replace(QStringLiteral("<lokal>"), QDir::toNativeSeparators(local))
                    .replace(QStringLiteral("<stick>"), QDir::toNativeSeparators(copy))
                    .replace(QStringLiteral("<name>"), name);
        QCOMPARE(f.prompter.messages(), messages);
        QCOMPARE(steps.summary(), summary);
        if (summary.contains(QDir::toNativeSeparators(QStringLiteral("Die Backupdatei wurde kopiert nach ") + copy))) {
            QCOMPARE(test::sha256(copy), test::sha256(local));
            QCOMPARE(QDir(stick.rootPath).entryList(QDir::Files | QDir::Hidden), QStringList{name}); // nothing half-copied beside it
        }
        if (trouble != u"no cloud")
            QCOMPARE(test::sha256(QDir(cloud).filePath(name)), test::sha256(local));

        const BackupChoices now = loadBackupChoices(f.folder.path());
        QCOMPARE(now.lastMonthly, stamped == u"monthly" ? Today : Today.addDays(-monthlyDaysAgo));
        QCOMPARE(now.lastYearly, stamped == u"yearly" ? Today : Today.addDays(-yearlyDaysAgo));
        if (trouble == u"kept") {
            QCOMPARE(test::sha256(local), kept);
            return;
        }
        QCOMPARE(now.cloudFolder, cloud);
        QCOMPARE(f.session->settings.text[12], QStringLiteral("23.11.2026"));
        QCOMPARE(EinstellungenLaden(f.session->settingsPath()).text[12], QStringLiteral("23.11.2026"));
        QTemporaryDir unpacked;
        const ArchiveCheck check = checkArchive(local, {}, unpacked.path());
        QVERIFY2(check.ok, qPrintable(check.error));
        QVERIFY2(check.names.filter(QStringLiteral("vor-Aktualisierung")).isEmpty(), qPrintable(check.names.join(u' ')));
        QCOMPARE(EinstellungenLaden(QDir(unpacked.path()).filePath(QStringLiteral("Einstellungen.tk3"))).text[12], QStringLiteral("23.11.2026"));
        const BackupChoices inArchive = loadBackupChoices(unpacked.path());
        QCOMPARE(inArchive.cloudFolder, now.cloudFolder);
        if (trouble == u"pulled")
            return; // the archive was written for the stick before it was pulled
        QCOMPARE(inArchive.lastMonthly, now.lastMonthly);
        QCOMPARE(inArchive.lastYearly, now.lastYearly);
    }

    // Closing offers to delete all but the three newest archives of the disk; other files stay.
    void closingOffersToKeepThree()
    {
        Fixture f;
        const QString local = localArchiveFolder(f.folder.path());
        QDir().mkpath(local);
        for (int daysAgo : {40, 2, 400, 9, 1})
            test::writeBytes(local + archiveName(Today.addDays(-daysAgo)), "x");
        test::writeBytes(local + QStringLiteral("urlaub.zip"), "x");
        BackupSteps steps(f.context(), f.drives, f.runner);
        f.prompter.answerNo();
        steps.closing();
        QCOMPARE(f.prompter.questions().last(), backupCleanupQuestion());
        QCOMPARE(listArchives(local).size(), 5);
        f.prompter.answerYes();
        steps.closing();
        QCOMPARE(QDir(local).entryList(QDir::Files, QDir::Name),
                 (QStringList{archiveName(Today.addDays(-9)), archiveName(Today.addDays(-2)), archiveName(Today.addDays(-1)),
                              QStringLiteral("urlaub.zip")}));
        steps.closing(); // three left: no question
        QCOMPARE(f.prompter.questions().size(), 2);
    }
};

TARVIK_TEST_CORE_MAIN(TestBackupSteps)
#include "tst_backupsteps.moc"
