// Reading a backup back: the archive is checked and staged, the next start swaps it in and
// keeps the replaced files; anything wrong leaves the current data exactly as they were.
#include "backup/archive.h"
#include "backup/restore.h"
#include "backup/restoreatstart.h"
#include "backup/stagedrestore.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "backupfixtures.h"

#include <QDirIterator>

using namespace tarvik;

namespace {

// Every file below the folder with its checksum.
QMap<QString, QByteArray> checksums(const QString& folder)
{
    QMap<QString, QByteArray> sums;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        sums.insert(QDir(folder).relativeFilePath(path), test::sha256(path));
    }
    return sums;
}

// A start of the desktop program: only it, holding the folder's lock, takes a staged restore over.
std::unique_ptr<Session> startDesktop(const test::TempDataFolder& folder, test::ScriptedPrompter& prompter)
{
    StartupOptions options;
    options.dataFolder = folder.path();
    options.locale = QLocale();
    options.singleInstance = true;
    options.beforeOpening = takeOverRestoreAtStart;
    return startSession(options, prompter);
}

QStringList rowsOf(const test::TempDataFolder& folder)
{
    test::ScriptedPrompter quiet;
    auto session = startDesktop(folder, quiet);
    return test::dumpRows(session->database->shared());
}

} // namespace

class TestRestore : public QObject {
    Q_OBJECT

    // A data folder as a user leaves it: harvests, lots, logs, settings; closed.
    static void fill(const test::TempDataFolder& folder, int firstHarvest, const QString& forest)
    {
        test::ScriptedPrompter prompter;
        auto session = folder.start(prompter);
        const QSqlDatabase db = session->database->shared();
        for (int nr = firstHarvest; nr < firstHarvest + 4; ++nr) {
            const qint32 id = test::addHarvest(db, nr);
            execSql(db, QStringLiteral("UPDATE Hiebe SET Waldname = ? WHERE ID = ?"), {forest, id});
            test::addLot(db, id, 1);
            for (int log = 1; log <= 5; ++log)
                test::addTypedLog(db, id, 1, log, QStringLiteral("FI (Fichte)"), 20 + log, 4.5, QStringLiteral("O"));
        }
        session->settings.text[1] = forest;
        session->saveSettings(prompter);
    }

private slots:
    // Backup in one data folder, restore in another, next start: the same rows.
    void backupRestoreNextStart()
    {
        test::TempDataFolder origin;
        fill(origin, 1, QStringLiteral("O'Briens Wald"));
        const QString archive = localArchiveFolder(origin.path()) + archiveName(QDate(2026, 11, 23));
        QVERIFY(writeArchive(origin.path(), archive).ok);
        const QStringList originRows = rowsOf(origin);

        test::TempDataFolder other;
        fill(other, 50, QStringLiteral("Buchenhang"));
        const QStringList otherRows = rowsOf(other);
        QVERIFY(otherRows != originRows);
        const QByteArray otherDatabase = test::sha256(other.databasePath());

        const StageResult staged = stageRestore(archive, other.path(), std::nullopt);
        QVERIFY2(staged.ok, qPrintable(staged.error));
        QCOMPARE(test::sha256(other.databasePath()), otherDatabase); // nothing touched before the next start
        QVERIFY(hasStagedRestore(other.path()));

        test::ScriptedPrompter prompter;
        auto session = startDesktop(other, prompter);
        QVERIFY(session);
        QVERIFY(prompter.messages().first().startsWith(QStringLiteral("Die eingelesene Datensicherung wurde übernommen.")));
        QCOMPARE(test::dumpRows(session->database->shared()), originRows);
        QCOMPARE(session->settings.text[1], QStringLiteral("O'Briens Wald"));
        QVERIFY(!hasStagedRestore(other.path()));

        // The replaced files are kept in the dated folder the message names.
        const QStringList kept = QDir(other.path()).entryList({QStringLiteral("Sicherheitskopie_*")}, QDir::Dirs);
        QCOMPARE(kept.size(), 1);
        QVERIFY(prompter.messages().first().contains(kept.first()));
        QCOMPARE(test::sha256(other.filePath(kept.first() + QStringLiteral("/TARVIK3.db"))), otherDatabase);
        session.reset();
        QCOMPARE(rowsOf(other), originRows); // and again at the start after
    }

    // A staged restore is swapped in only while no other program has the data: the desktop
    // program running (its lock) or any program with the database open makes it wait, and
    // every start meanwhile says so and works on the current data.
    void stagedRestoreWaitsWhileTheDataAreInUse_data()
    {
        QTest::addColumn<QString>("inUse");
        QTest::addColumn<bool>("scriptStart"); // a start of the command-line tool, else of the desktop program
        QTest::newRow("free: a script takes it over") << QString() << true;
        QTest::newRow("free: the desktop takes it over") << QString() << false;
        QTest::newRow("desktop program running, script") << QStringLiteral("desktop") << true;
        QTest::newRow("database open elsewhere, script") << QStringLiteral("open") << true;
        QTest::newRow("database open elsewhere, desktop") << QStringLiteral("open") << false;
    }
    void stagedRestoreWaitsWhileTheDataAreInUse()
    {
        QFETCH(QString, inUse);
        QFETCH(bool, scriptStart);
        test::TempDataFolder origin;
        fill(origin, 1, QStringLiteral("Eichwald"));
        const QString archive = localArchiveFolder(origin.path()) + archiveName(QDate(2026, 11, 23));
        QVERIFY(writeArchive(origin.path(), archive).ok);
        test::TempDataFolder data;
        fill(data, 50, QStringLiteral("Buchenhang"));
        const QStringList current = rowsOf(data);
        QVERIFY(stageRestore(archive, data.path(), std::nullopt).ok);

        std::unique_ptr<QLockFile> desktop;
        std::unique_ptr<Database> elsewhere;
        if (inUse == u"desktop")
            desktop = instanceLockFor(data.path());
        if (inUse == u"open")
            elsewhere = Database::openOrCreate(data.databasePath());
        test::ScriptedPrompter prompter;
        auto session = scriptStart ? data.start(prompter) : startDesktop(data, prompter);
        QVERIFY(session);
        if (inUse.isEmpty()) {
            QVERIFY(prompter.messages().first().startsWith(QStringLiteral("Die eingelesene Datensicherung wurde übernommen.")));
            QVERIFY(!hasStagedRestore(data.path()));
            QCOMPARE(test::dumpRows(session->database->shared()), rowsOf(origin));
        } else {
            QCOMPARE(prompter.messages(), QStringList{restoreWaitsMessage()});
            QVERIFY(hasStagedRestore(data.path()));
            QCOMPARE(test::dumpRows(session->database->shared()), current);
        }
    }

    void badArchiveLeavesTheDataUntouched_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"corrupt", "truncated", "empty", "../x", "/etc/x", "C:x", "link", "foreign", "baddb", "otherdb"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
        QTest::newRow("full target") << QStringLiteral("full");
    }
    void badArchiveLeavesTheDataUntouched()
    {
        QFETCH(QString, kind);
        test::TempDataFolder data;
        fill(data, 1, QStringLiteral("Eichwald"));
        const QStringList rows = rowsOf(data);
        QTemporaryDir dir;
        const QString archive = dir.filePath(archiveName(QDate(2026, 11, 23)));
        std::optional<qint64> free;
        if (kind == QLatin1String("full")) {
            QVERIFY(writeArchive(data.path(), archive).ok);
            free = 4096;
        } else {
            test::makeBadArchive(kind, archive, dir);
        }
        const QMap<QString, QByteArray> before = checksums(data.path());

        const StageResult staged = stageRestore(archive, data.path(), free);
        QVERIFY(!staged.ok);
        QVERIFY2(staged.error.endsWith(QStringLiteral("Die bisherigen Daten bleiben unverändert.")), qPrintable(staged.error));
        QCOMPARE(checksums(data.path()), before);
        QVERIFY(!hasStagedRestore(data.path()));

        test::ScriptedPrompter prompter;
        auto session = startDesktop(data, prompter);
        QCOMPARE(prompter.messages(), QStringList());
        QCOMPARE(test::dumpRows(session->database->shared()), rows);
    }

    // A power cut in the middle of the swap: the next start finishes it into the same
    // safety-copy folder.
    void interruptedSwapFinishesAtTheNextStart()
    {
        test::TempDataFolder origin;
        fill(origin, 1, QStringLiteral("Eichwald"));
        const QString archive = localArchiveFolder(origin.path()) + archiveName(QDate(2026, 11, 23));
        QVERIFY(writeArchive(origin.path(), archive).ok);
        test::TempDataFolder other;
        fill(other, 50, QStringLiteral("Buchenhang"));
        const QByteArray otherSettings = test::sha256(other.filePath(QStringLiteral("Einstellungen.tk3")));
        QVERIFY(stageRestore(archive, other.path(), std::nullopt).ok);

        // As the swap leaves it after moving the old settings away and the new ones in.
        const QString safety = QStringLiteral("Sicherheitskopie_2026-11-23_101500");
        test::writeBytes(stagingFolder(other.path()) + QLatin1String(SwapMarkerName), safety.toUtf8());
        QDir(other.path()).mkdir(safety);
        QVERIFY(QFile::rename(other.filePath(QStringLiteral("Einstellungen.tk3")), other.filePath(safety + QStringLiteral("/Einstellungen.tk3"))));
        QVERIFY(QFile::rename(stagingFolder(other.path()) + QStringLiteral("Einstellungen.tk3"), other.filePath(QStringLiteral("Einstellungen.tk3"))));

        const SwapResult swap = swapInStagedRestore(other.path(), QDateTime(QDate(2026, 11, 24), QTime(8, 0)));
        QVERIFY2(swap.swapped, qPrintable(swap.error));
        QCOMPARE(QDir(swap.safetyCopy).dirName(), safety);
        QCOMPARE(test::sha256(other.filePath(safety + QStringLiteral("/Einstellungen.tk3"))), otherSettings);
        QVERIFY(QFile::exists(other.filePath(safety + QStringLiteral("/TARVIK3.db"))));
        QCOMPARE(rowsOf(other), rowsOf(origin));
    }

    // Each restore keeps the replaced files; only the three newest such folders stay.
    void olderSafetyCopiesAreRemoved()
    {
        test::TempDataFolder origin;
        fill(origin, 1, QStringLiteral("Eichwald"));
        const QString archive = localArchiveFolder(origin.path()) + archiveName(QDate(2026, 11, 23));
        QVERIFY(writeArchive(origin.path(), archive).ok);
        test::TempDataFolder data;
        fill(data, 50, QStringLiteral("Buchenhang"));
        const QStringList older{QStringLiteral("Sicherheitskopie_2025-01-02_080000"), QStringLiteral("Sicherheitskopie_2026-03-04_090000"),
                                QStringLiteral("Sicherheitskopie_2026-10-30_170000")};
        for (const QString& name : older + QStringList{QStringLiteral("Sicherungen_privat")}) {
            QVERIFY(QDir(data.path()).mkdir(name));
            test::writeBytes(data.filePath(name + QStringLiteral("/TARVIK3.db")), "alt");
        }
        QVERIFY(stageRestore(archive, data.path(), std::nullopt).ok);
        const SwapResult swap = swapInStagedRestore(data.path(), QDateTime(QDate(2026, 11, 24), QTime(8, 0)));
        QVERIFY2(swap.swapped, qPrintable(swap.error));
        const QStringList left = QDir(data.path()).entryList({QStringLiteral("Sicherheitskopie_*")}, QDir::Dirs, QDir::Name);
        QCOMPARE(left, (QStringList{older.at(1), older.at(2), QStringLiteral("Sicherheitskopie_2026-11-24_080000")}));
        QVERIFY(QFile::exists(data.filePath(QStringLiteral("Sicherungen_privat/TARVIK3.db"))));
    }

    void halfWrittenStagingIsDiscarded()
    {
        test::TempDataFolder data;
        fill(data, 1, QStringLiteral("Eichwald"));
        const QStringList rows = rowsOf(data);
        const QString partial = data.filePath(QLatin1String(StagingFolderName) + QLatin1String(StagingPartialSuffix));
        QDir().mkpath(partial);
        test::writeBytes(partial + QStringLiteral("/TARVIK3.db"), "halb");
        test::ScriptedPrompter prompter;
        auto session = startDesktop(data, prompter);
        QCOMPARE(prompter.messages(), QStringList());
        QVERIFY(!QFileInfo::exists(partial));
        QCOMPARE(test::dumpRows(session->database->shared()), rows);
    }
};

TARVIK_TEST_CORE_MAIN(TestRestore)
#include "tst_restore.moc"
