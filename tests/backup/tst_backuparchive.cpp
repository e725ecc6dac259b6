// The archive and reading it back: its name, which files go in, the database captured while it
// is open, the refusal of anything that is not a sound archive of ours, and the staged restore
// the next start swaps in, keeping the replaced files; anything wrong leaves the current data
// exactly as they were. And tarvik-cli sicherung and wiederherstellen, run in-process as a
// scheduled task would: what the commands add (arguments, exit codes, output).
#include "backup/archive.h"
#include "backup/dbsnapshot.h"
#include "backup/restore.h"
#include "backup/restoreatstart.h"
#include "backup/stagedrestore.h"
#include "store/startup.h"
#include "support/clirun.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "backupfixtures.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <zip.h>

using namespace tarvik;

namespace {

const QDate Day(2026, 11, 23);

// A data folder as a user leaves it: harvests, lots, logs, settings; closed.
void fill(const test::TempDataFolder& folder, int firstHarvest, const QString& forest)
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

// A start of the desktop program: only it, holding the folder's lock, takes a staged restore over.
std::unique_ptr<Session> startDesktop(const test::TempDataFolder& folder, test::ScriptedPrompter& prompter)
{
    StartupOptions options;
    options.dataFolder = folder.path();
    options.locale = QLocale();
    options.singleInstance = true;
    options.beforeOpening = takeOverStagedRestore;
    return startSession(options, prompter);
}

QStringList rowsOf(const test::TempDataFolder& folder)
{
    test::ScriptedPrompter quiet;
    return test::dumpRows(startDesktop(folder, quiet)->database->shared());
}

// The printed path without its line end.
test::CliOutput runCli(const QStringList& args)
{
    test::CliOutput o = test::runCli(args);
    o.out = o.out.trimmed();
    o.err = o.err.trimmed();
    return o;
}

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

// Names and contents exactly as given: libzip does not clean up names.
void makeZip(const QString& path, const QList<std::pair<QString, QByteArray>>& entries)
{
    int code = 0;
    zip_t* archive = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    QVERIFY(archive);
    for (const auto& [name, bytes] : entries) {
        zip_source_t* source = zip_source_buffer(archive, bytes.constData(), zip_uint64_t(bytes.size()), 0);
        QVERIFY(zip_file_add(archive, name.toUtf8().constData(), source, ZIP_FL_ENC_UTF_8) >= 0);
    }
    QVERIFY(zip_close(archive) == 0);
}

// An archive of the given kind: "corrupt", "truncated", "empty", "link", "foreign", "baddb",
// "otherdb", or else one with an entry of that name beside a sound database.
void makeBadArchive(const QString& kind, const QString& path, const QTemporaryDir& dir)
{
    QByteArray database;
    {
        test::TempDataFolder folder;
        test::addHarvest(folder.openDatabase()->shared(), 1);
        QVERIFY(snapshotDatabase(folder.databasePath(), dir.filePath(QStringLiteral("copy.db"))).ok);
        database = test::readBytes(dir.filePath(QStringLiteral("copy.db")));
    }
    if (kind == u"corrupt" || kind == u"truncated") {
        makeZip(path, {{QStringLiteral("TARVIK3.db"), database}, {QStringLiteral("Einstellungen.tk3"), "0\r\n"}});
        QByteArray bytes = test::readBytes(path);
        if (kind == u"truncated")
            bytes.truncate(bytes.size() / 2);
        else
            for (int i = 200; i < 260; ++i)
                bytes[i] = char(bytes[i] ^ 0x5a);
        test::writeBytes(path, bytes);
    } else if (kind == u"empty") {
        test::writeBytes(path, QByteArray());
    } else if (kind == u"link") {
        test::writeBytes(dir.filePath(QStringLiteral("TARVIK3.db")), database);
        QFile::link(QStringLiteral("/etc/passwd"), dir.filePath(QStringLiteral("Einstellungen.tk3")));
        const auto [code, output] = test::run(QStringLiteral("zip"), {QStringLiteral("-qy"), path, QStringLiteral("TARVIK3.db"),
                                                                      QStringLiteral("Einstellungen.tk3")}, dir.path());
        QVERIFY2(code == 0, qPrintable(output));
    } else if (kind == u"foreign") {
        makeZip(path, {{QStringLiteral("bild.txt"), "Urlaub"}});
    } else if (kind == u"baddb") {
        for (int i = 4096; i < database.size(); i += 97)
            database[i] = char(0xff);
        makeZip(path, {{QStringLiteral("TARVIK3.db"), database}});
    } else if (kind == u"otherdb") {
        test::withPlainConnection(dir.filePath(QStringLiteral("other.db")),
                                  [](const QSqlDatabase& db) { execSql(db, QStringLiteral("CREATE TABLE Kunden(Name TEXT)")); });
        makeZip(path, {{QStringLiteral("TARVIK3.db"), test::readBytes(dir.filePath(QStringLiteral("other.db")))}});
    } else {
        makeZip(path, {{QStringLiteral("TARVIK3.db"), database}, {kind, "boese"}});
    }
}

// Two filled data folders, an archive of the first, staged into the second.
struct Staged {
    test::TempDataFolder origin;
    test::TempDataFolder data;
    QStringList originRows;
    QStringList currentRows;
    QByteArray currentDatabase;
    Staged()
    {
        fill(origin, 1, QStringLiteral("O'Briens Wald"));
        fill(data, 50, QStringLiteral("Buchenhang"));
        const QString archive = localArchiveFolder(origin.path()) + archiveName(Day);
        QVERIFY(writeArchive(origin.path(), archive).ok);
        originRows = rowsOf(origin);
        currentRows = rowsOf(data);
        currentDatabase = test::sha256(data.databasePath());
        const StageResult staged = stageRestore(archive, data.path(), std::nullopt);
        QVERIFY2(staged.ok, qPrintable(staged.error));
    }
};

} // namespace

class TestBackupArchive : public QObject {
    Q_OBJECT

private slots:
    void names_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QDate>("date"); // none: no archive of ours
        QTest::newRow("autumn") << QStringLiteral("TARVIK30_backup_2026_11_23.zip") << QDate(2026, 11, 23);
        QTest::newRow("one-digit month and day") << QStringLiteral("TARVIK30_backup_2027_01_05.zip") << QDate(2027, 1, 5);
        QTest::newRow("leap day") << QStringLiteral("TARVIK30_backup_2028_02_29.zip") << QDate(2028, 2, 29);
        QTest::newRow("other zip") << QStringLiteral("fotos.zip") << QDate();
        QTest::newRow("month 13") << QStringLiteral("TARVIK30_backup_2026_13_01.zip") << QDate();
        QTest::newRow("temporary") << QStringLiteral("TARVIK30_backup_2026_11_23.zip.tmp") << QDate();
        QTest::newRow("short year") << QStringLiteral("TARVIK30_backup_26_11_23.zip") << QDate();
    }
    void names()
    {
        QFETCH(QString, name);
        QFETCH(QDate, date);
        if (date.isValid())
            QCOMPARE(archiveName(date), name);
        QCOMPARE(archiveDate(name), date.isValid() ? std::optional<QDate>(date) : std::nullopt);
    }

    // Cancelled, it leaves nothing. Written twice on one day, while the database is open and
    // its last rows are still in the write-ahead log: the second archive replaces the first and
    // holds every committed row; programs, documents, archives and the database's side files
    // stay out; `unzip -t` accepts it.
    void archiveOfAFolderInUse()
    {
        test::TempDataFolder folder;
        auto db = folder.openDatabase();
        execSql(db->shared(), QStringLiteral("PRAGMA wal_autocheckpoint = 0"));
        for (int nr = 1; nr <= 25; ++nr)
            test::addHarvest(db->shared(), nr);
        execSql(db->shared(), QStringLiteral("UPDATE Hiebe SET Waldname = 'O''Brien' WHERE Hieb_Nr = 7"));
        const QStringList archived{"17_Tarvik_Export.f10", "Brief.docx", "Einstellungen.tk3", "FH_Datensicherung.TK3", "Notizen", "report-3.htm"};
        QStringList left{"TARVIK30_backup_2020_01_01.zip", ".snapshot-1234.db", "Unterordner/x.tk3"};
        for (const QString ext : {"DLL", "EXE", "HLP", "TXT", "OCX", "VBX", "INI", "DOC", "ZIP", "PDF"})
            left << QStringLiteral("datei.") + ext << QStringLiteral("datei.") + ext.toLower();
        QDir(folder.path()).mkdir(QStringLiteral("Unterordner"));
        for (const QString& name : archived + left)
            test::writeBytes(folder.filePath(name), name.toUtf8());

        const QString path = localArchiveFolder(folder.path()) + archiveName(Day);
        const ArchiveResult cancelled = writeArchive(folder.path(), path, [](int p, const QString&) { return p < 40; });
        QVERIFY(cancelled.cancelled);
        QVERIFY(!cancelled.ok);
        QCOMPARE(QDir(localArchiveFolder(folder.path())).entryList(QDir::Files | QDir::Hidden), QStringList());
        QVERIFY(writeArchive(folder.path(), path).ok);
        test::addHarvest(db->shared(), 99);
        const QStringList rows = test::dumpRows(db->shared());
        QVERIFY(QFileInfo(folder.databasePath() + QStringLiteral("-wal")).size() > 0);
        QList<int> percents;
        const ArchiveResult written = writeArchive(folder.path(), path, [&](int p, const QString&) {
            percents << p;
            return true;
        });
        QVERIFY2(written.ok, qPrintable(written.error));
        QVERIFY(std::is_sorted(percents.begin(), percents.end()));
        QCOMPARE(percents.last(), 100);
        QCOMPARE(QDir(localArchiveFolder(folder.path())).entryList(QDir::Files | QDir::Hidden), QStringList{archiveName(Day)});

        QVERIFY(test::unzipAccepts(path));
        const auto [listCode, listing] = test::run(QStringLiteral("unzip"), {QStringLiteral("-Z1"), path});
        QCOMPARE(listCode, 0);
        QStringList names = listing.split(u'\n', Qt::SkipEmptyParts);
        names.sort();
        // The upgrade's log of the new database is a file of the folder like the others.
        QStringList expected = archived + QStringList{QStringLiteral("Aktualisierung.log"), QStringLiteral("TARVIK3.db")};
        expected.sort();
        QCOMPARE(names, expected);
        QTemporaryDir out;
        QCOMPARE(test::run(QStringLiteral("unzip"), {QStringLiteral("-q"), path, QStringLiteral("-d"), out.path()}).first, 0);
        QVERIFY(!QFile::exists(out.filePath(QStringLiteral("TARVIK3.db-wal"))));
        QCOMPARE(test::dumpRows(out.filePath(QStringLiteral("TARVIK3.db"))), rows);
        QCOMPARE(test::readBytes(out.filePath(QStringLiteral("FH_Datensicherung.TK3"))), QByteArray("FH_Datensicherung.TK3"));
    }

    // Everything the check refuses, with the reason named in German; staging it then leaves
    // the current data as they were, and the next start works on them without a word.
    void badArchivesAreRefused_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("reason");
        QTest::newRow("corrupt") << QStringLiteral("corrupt") << QStringLiteral("beschädigt");
        QTest::newRow("truncated") << QStringLiteral("truncated") << QStringLiteral("beschädigt");
        QTest::newRow("empty file") << QStringLiteral("empty") << QStringLiteral("kein lesbares ZIP-Archiv");
        QTest::newRow("parent folder") << QStringLiteral("../x") << QStringLiteral("kein einfacher Dateiname");
        QTest::newRow("absolute path") << QStringLiteral("/etc/x") << QStringLiteral("kein einfacher Dateiname");
        QTest::newRow("drive letter") << QStringLiteral("C:x") << QStringLiteral("kein einfacher Dateiname");
        QTest::newRow("backslash folder") << QStringLiteral("..\\x") << QStringLiteral("kein einfacher Dateiname");
        QTest::newRow("link") << QStringLiteral("link") << QStringLiteral("Verknüpfung");
        QTest::newRow("another program's zip") << QStringLiteral("foreign") << QStringLiteral("fehlt darin");
        QTest::newRow("damaged database inside") << QStringLiteral("baddb") << QStringLiteral("nicht in Ordnung");
        QTest::newRow("other database inside") << QStringLiteral("otherdb") << QStringLiteral("Tabellen der Holzliste fehlen");
        QTest::newRow("sound archive, full drive") << QStringLiteral("full") << QStringLiteral("nicht genug Platz frei");
    }
    void badArchivesAreRefused()
    {
        QFETCH(QString, kind);
        QFETCH(QString, reason);
        test::TempDataFolder data;
        fill(data, 1, QStringLiteral("Eichwald"));
        const QStringList rows = rowsOf(data);
        QTemporaryDir dir;
        const QString archive = dir.filePath(archiveName(Day));
        if (kind == u"full") {
            QVERIFY(writeArchive(data.path(), archive).ok);
        } else {
            makeBadArchive(kind, archive, dir);
            QTemporaryDir extract;
            const ArchiveCheck check = checkArchive(archive, {}, extract.path());
            QVERIFY(!check.ok);
            QVERIFY2(check.error.contains(reason), qPrintable(check.error));
            // libzip's own English reasons are not shown as they are
            static const QRegularExpression english(QStringLiteral("\\b(not|error|inconsistent|premature|invalid|archive|file)\\b"),
                                                    QRegularExpression::CaseInsensitiveOption);
            QVERIFY2(!check.error.contains(english), qPrintable(check.error));
        }
        const QMap<QString, QByteArray> before = checksums(data.path());

        const StageResult staged = stageRestore(archive, data.path(), kind == u"full" ? std::optional<qint64>(4096) : std::nullopt);
        QVERIFY(!staged.ok);
        QVERIFY2(staged.error.contains(reason), qPrintable(staged.error));
        QVERIFY2(staged.error.endsWith(QStringLiteral("Die bisherigen Daten bleiben unverändert.")), qPrintable(staged.error));
        QCOMPARE(checksums(data.path()), before);
        QVERIFY(!hasStagedRestore(data.path()));
        QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("x"))));
        QVERIFY(!QFile::exists(data.filePath(QStringLiteral("x"))));

        test::ScriptedPrompter prompter;
        auto session = startDesktop(data, prompter);
        QCOMPARE(prompter.messages(), QStringList());
        QCOMPARE(test::dumpRows(session->database->shared()), rows);
    }

    // A staged restore is swapped in at the next start, by the desktop program or a script,
    // only while no other program has the data: the desktop program running (its lock) or any
    // program with the database open makes it wait, and every start meanwhile says so and
    // works on the current data. Swapped in, the archive's rows and settings are there and the
    // replaced files are kept in the dated folder the message names.
    void stagedRestoreAtTheNextStart_data()
    {
        QTest::addColumn<QString>("inUse");
        QTest::addColumn<bool>("scriptStart"); // a start of the command-line tool, else of the desktop program
        QTest::newRow("free: a script takes it over") << QString() << true;
        QTest::newRow("free: the desktop takes it over") << QString() << false;
        QTest::newRow("desktop program running, script") << QStringLiteral("desktop") << true;
        QTest::newRow("database open elsewhere, script") << QStringLiteral("open") << true;
        QTest::newRow("database open elsewhere, desktop") << QStringLiteral("open") << false;
    }
    void stagedRestoreAtTheNextStart()
    {
        QFETCH(QString, inUse);
        QFETCH(bool, scriptStart);
        Staged s;
        QCOMPARE(test::sha256(s.data.databasePath()), s.currentDatabase); // nothing touched before the next start
        QVERIFY(hasStagedRestore(s.data.path()));
        std::unique_ptr<QLockFile> desktop;
        std::unique_ptr<Database> elsewhere;
        if (inUse == u"desktop")
            desktop = instanceLockFor(s.data.path());
        if (inUse == u"open")
            elsewhere = Database::openOrCreate(s.data.databasePath());
        test::ScriptedPrompter prompter;
        auto session = scriptStart ? s.data.start(prompter) : startDesktop(s.data, prompter);
        QVERIFY(session);
        if (!inUse.isEmpty()) {
            QCOMPARE(prompter.messages(), QStringList{restoreWaitsMessage()});
            QVERIFY(hasStagedRestore(s.data.path()));
            QCOMPARE(test::dumpRows(session->database->shared()), s.currentRows);
            return;
        }
        QVERIFY(prompter.messages().first().startsWith(QStringLiteral("Die eingelesene Datensicherung wurde übernommen.")));
        QVERIFY(!hasStagedRestore(s.data.path()));
        QCOMPARE(test::dumpRows(session->database->shared()), s.originRows);
        QCOMPARE(session->settings.text[1], QStringLiteral("O'Briens Wald"));
        const QStringList kept = QDir(s.data.path()).entryList({QStringLiteral("Sicherheitskopie_*")}, QDir::Dirs);
        QCOMPARE(kept.size(), 1);
        QVERIFY(prompter.messages().first().contains(kept.first()));
        QCOMPARE(test::sha256(s.data.filePath(kept.first() + QStringLiteral("/TARVIK3.db"))), s.currentDatabase);
        session.reset();
        QCOMPARE(rowsOf(s.data), s.originRows); // and again at the start after
    }

    // A power cut in the middle of the swap: the next start finishes it into the same
    // safety-copy folder.
    void interruptedSwapFinishesAtTheNextStart()
    {
        Staged s;
        const QByteArray settings = test::sha256(s.data.filePath(QStringLiteral("Einstellungen.tk3")));
        // As the swap leaves it after moving the old settings away and the new ones in.
        const QString safety = QStringLiteral("Sicherheitskopie_2026-11-23_101500");
        test::writeBytes(stagingFolder(s.data.path()) + QLatin1String(SwapMarkerName), safety.toUtf8());
        QDir(s.data.path()).mkdir(safety);
        QVERIFY(QFile::rename(s.data.filePath(QStringLiteral("Einstellungen.tk3")), s.data.filePath(safety + QStringLiteral("/Einstellungen.tk3"))));
        QVERIFY(QFile::rename(stagingFolder(s.data.path()) + QStringLiteral("Einstellungen.tk3"), s.data.filePath(QStringLiteral("Einstellungen.tk3"))));

        const SwapResult swap = swapInStagedRestore(s.data.path(), QDateTime(QDate(2026, 11, 24), QTime(8, 0)));
        QVERIFY2(swap.swapped, qPrintable(swap.error));
        QCOMPARE(QDir(swap.safetyCopy).dirName(), safety);
        QCOMPARE(test::sha256(s.data.filePath(safety + QStringLiteral("/Einstellungen.tk3"))), settings);
        QCOMPARE(test::sha256(s.data.filePath(safety + QStringLiteral("/TARVIK3.db"))), s.currentDatabase);
        QCOMPARE(rowsOf(s.data), s.originRows);
    }

    // Each restore keeps the replaced files; only the three newest such folders stay.
    void olderSafetyCopiesAreRemoved()
    {
        Staged s;
        const QStringList older{QStringLiteral("Sicherheitskopie_2025-01-02_080000"), QStringLiteral("Sicherheitskopie_2026-03-04_090000"),
                                QStringLiteral("Sicherheitskopie_2026-10-30_170000")};
        for (const QString& name : older + QStringList{QStringLiteral("Sicherungen_privat")}) {
            QVERIFY(QDir(s.data.path()).mkdir(name));
            test::writeBytes(s.data.filePath(name + QStringLiteral("/TARVIK3.db")), "alt");
        }
        const SwapResult swap = swapInStagedRestore(s.data.path(), QDateTime(QDate(2026, 11, 24), QTime(8, 0)));
        QVERIFY2(swap.swapped, qPrintable(swap.error));
        const QStringList left = QDir(s.data.path()).entryList({QStringLiteral("Sicherheitskopie_*")}, QDir::Dirs, QDir::Name);
        QCOMPARE(left, (QStringList{older.at(1), older.at(2), QStringLiteral("Sicherheitskopie_2026-11-24_080000")}));
        QVERIFY(QFile::exists(s.data.filePath(QStringLiteral("Sicherungen_privat/TARVIK3.db"))));
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

    // A backup into a folder, stamped into the settings, refused a second time that day without
    // --ja; the restore, refused without --ja, then taken over at once. (What a restore brings
    // back, and its waiting for a busy folder, are proven above.)
    void commandLineBackupThenRestore()
    {
        test::TempDataFolder data;
        fill(data, 1, QStringLiteral("Eichwald"));
        const QStringList at = {QStringLiteral("--daten"), data.path()};
        QTemporaryDir target;
        const QStringList backup = at + QStringList{QStringLiteral("sicherung"), QStringLiteral("--ziel"), target.path()};
        const test::CliOutput first = runCli(backup);
        QVERIFY2(first.code == 0, qPrintable(first.err));
        const QString name = archiveName(QDate::currentDate());
        QCOMPARE(first.out, QDir::toNativeSeparators(QDir(target.path()).filePath(name)));
        QVERIFY(test::unzipAccepts(first.out));
        QCOMPARE(EinstellungenLaden(data.filePath(QLatin1String(SettingsFileName))).text[12],
                 QDate::currentDate().toString(QStringLiteral("dd.MM.yyyy")));
        const QByteArray before = test::sha256(localArchiveFolder(data.path()) + name);
        QCOMPARE(runCli(backup).code, 1);
        QCOMPARE(test::sha256(localArchiveFolder(data.path()) + name), before);
        QCOMPARE(runCli(QStringList{QStringLiteral("--ja")} + backup).code, 0);

        const QStringList restore = at + QStringList{QStringLiteral("wiederherstellen"), first.out};
        QCOMPARE(runCli(restore).code, 1);
        QVERIFY(!hasStagedRestore(data.path()));
        const test::CliOutput restored = runCli(QStringList{QStringLiteral("--ja")} + restore);
        QVERIFY2(restored.code == 0, qPrintable(restored.err));
        QCOMPARE(restored.out, QStringLiteral("Die Datensicherung ist übernommen."));
        QVERIFY(!hasStagedRestore(data.path()));
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
            test::ScriptedPrompter prompter;
            auto session = startDesktop(desktop, prompter);
            QVERIFY(session);
            firstActivation(*session, prompter);
            desktopRows = test::dumpRows(session->database->shared());
        }
        test::TempDataFolder script;
        const test::CliOutput ran = runCli(QStringList{QStringLiteral("--daten"), script.path()} + command);
        QVERIFY2(ran.code == 0, qPrintable(ran.err));
        // Read as it lies, with nothing run at opening.
        QCOMPARE(test::dumpRows(script.databasePath()), desktopRows);
    }

    void commandLineRefusals_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::newRow("missing target folder") << QStringList{"sicherung", "--ziel", "/gibt/es/nicht"} << 1;
        QTest::newRow("backup with argument") << QStringList{"sicherung", "x"} << 2;
        QTest::newRow("restore without archive") << QStringList{"--ja", "wiederherstellen"} << 2;
        QTest::newRow("restore of a missing archive") << QStringList{"--ja", "wiederherstellen", "/gibt/es/nicht.zip"} << 1;
    }
    void commandLineRefusals()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        test::TempDataFolder data;
        const test::CliOutput o = runCli(QStringList{QStringLiteral("--daten"), data.path()} + args);
        QCOMPARE(o.code, code);
        QVERIFY(!o.err.isEmpty());
        QVERIFY(!hasStagedRestore(data.path()));
    }
};

TARVIK_TEST_CORE_MAIN(TestBackupArchive)
#include "tst_backuparchive.moc"
