// The archive: its name, which files go in, the database captured while it is open, the
// check that refuses anything that is not a sound archive of ours, and keeping three.
#include "backup/archive.h"
#include "backup/dbsnapshot.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "backupfixtures.h"

#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QTemporaryDir>

using namespace tarvik;

class TestBackupArchive : public QObject {
    Q_OBJECT

    // A data folder in use: open database with rows still in the write-ahead log, the
    // settings, a report, a document and an older archive.
    struct Filled {
        test::TempDataFolder folder;
        std::unique_ptr<Database> db;
        Filled()
        {
            db = folder.openDatabase();
            execSql(db->shared(), QStringLiteral("PRAGMA wal_autocheckpoint = 0"));
            for (int nr = 1; nr <= 25; ++nr)
                test::addHarvest(db->shared(), nr);
            execSql(db->shared(), QStringLiteral("UPDATE Hiebe SET Waldname = 'O''Brien' WHERE Hieb_Nr = 7"));
            test::writeBytes(folder.filePath(QStringLiteral("Einstellungen.tk3")), "0\r\n");
            test::writeBytes(folder.filePath(QStringLiteral("FH_Datensicherung.TK3")), "Backupkonzept=1\r\n");
            test::writeBytes(folder.filePath(QStringLiteral("Daten.txt")), "Bericht");
            test::writeBytes(folder.filePath(QStringLiteral("Handbuch.PDF")), "%PDF");
            test::writeBytes(folder.filePath(QStringLiteral("17_Tarvik_Export.f10")), "Austausch");
            test::writeBytes(folder.filePath(QStringLiteral("TARVIK30_backup_2020_01_01.zip")), "alt");
            QDir(folder.path()).mkdir(QStringLiteral("Unterordner"));
            test::writeBytes(folder.filePath(QStringLiteral("Unterordner/x.tk3")), "x");
        }
    };

private slots:
    void namesOfArchives_data()
    {
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QString>("name");
        QTest::newRow("autumn") << QDate(2026, 11, 23) << QStringLiteral("TARVIK30_backup_2026_11_23.zip");
        QTest::newRow("one-digit month and day") << QDate(2027, 1, 5) << QStringLiteral("TARVIK30_backup_2027_01_05.zip");
        QTest::newRow("leap day") << QDate(2028, 2, 29) << QStringLiteral("TARVIK30_backup_2028_02_29.zip");
    }
    void namesOfArchives()
    {
        QFETCH(QDate, date);
        QFETCH(QString, name);
        QCOMPARE(tarvik::archiveName(date), name);
        QCOMPARE(archiveDate(name), std::optional<QDate>(date));
    }

    void namesThatAreNoArchives_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("other zip") << QStringLiteral("fotos.zip");
        QTest::newRow("month 13") << QStringLiteral("TARVIK30_backup_2026_13_01.zip");
        QTest::newRow("temporary") << QStringLiteral("TARVIK30_backup_2026_11_23.zip.tmp");
        QTest::newRow("short year") << QStringLiteral("TARVIK30_backup_26_11_23.zip");
    }
    void namesThatAreNoArchives()
    {
        QFETCH(QString, name);
        QVERIFY(!archiveDate(name));
    }

    void fileChoice_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("archived");
        QTest::newRow("settings") << QStringLiteral("Einstellungen.tk3") << true;
        QTest::newRow("remembered choices") << QStringLiteral("FH_Datensicherung.TK3") << true;
        QTest::newRow("exchange file") << QStringLiteral("17_Tarvik_Export.f10") << true;
        QTest::newRow("no extension") << QStringLiteral("Notizen") << true;
        QTest::newRow("four-letter extension") << QStringLiteral("Brief.docx") << true;
        QTest::newRow("report page") << QStringLiteral("report-3.htm") << true;
        for (const char* ext : {"DLL", "EXE", "HLP", "TXT", "OCX", "VBX", "INI", "DOC", "ZIP", "PDF"}) {
            QTest::newRow(ext) << QStringLiteral("datei.") + QString::fromLatin1(ext) << false;
            QTest::newRow(QByteArray(ext).toLower().constData()) << QStringLiteral("datei.") + QString::fromLatin1(ext).toLower() << false;
        }
        QTest::newRow("database") << QStringLiteral("TARVIK3.db") << false;
        QTest::newRow("write-ahead log") << QStringLiteral("TARVIK3.db-wal") << false;
        QTest::newRow("shared memory") << QStringLiteral("TARVIK3.db-shm") << false;
        QTest::newRow("snapshot being written") << QStringLiteral(".snapshot-1234.db") << false;
    }
    void fileChoice()
    {
        QFETCH(QString, name);
        QFETCH(bool, archived);
        QCOMPARE(belongsInArchive(name), archived);
    }

    // The archive holds the files of the folder and a database with every committed row,
    // although the rows are still in the write-ahead log; `unzip -t` accepts it.
    void archiveOfAFolderInUse()
    {
        Filled data;
        const QStringList before = test::dumpRows(data.db->shared());
        QVERIFY(QFileInfo(data.folder.databasePath() + QStringLiteral("-wal")).size() > 0);
        const QString path = localArchiveFolder(data.folder.path()) + archiveName(QDate(2026, 11, 23));
        QList<int> percents;
        const ArchiveResult written = writeArchive(data.folder.path(), path, [&](int p, const QString&) {
            percents << p;
            return true;
        });
        QVERIFY2(written.ok, qPrintable(written.error));
        QVERIFY(std::is_sorted(percents.begin(), percents.end()));
        QCOMPARE(percents.last(), 100);
        QCOMPARE(QDir(localArchiveFolder(data.folder.path())).entryList(QDir::Files | QDir::Hidden),
                 QStringList{archiveName(QDate(2026, 11, 23))}); // no temporary file left

        const auto [testCode, testOutput] = test::run(QStringLiteral("unzip"), {QStringLiteral("-t"), path});
        QVERIFY2(testCode == 0, qPrintable(testOutput));
        const auto [listCode, listing] = test::run(QStringLiteral("unzip"), {QStringLiteral("-Z1"), path});
        QCOMPARE(listCode, 0);
        QStringList names = listing.split(u'\n', Qt::SkipEmptyParts);
        names.sort();
        // The upgrade's log of the new database is a file of the folder like the others.
        QCOMPARE(names, (QStringList{QStringLiteral("17_Tarvik_Export.f10"), QStringLiteral("Aktualisierung.log"), QStringLiteral("Einstellungen.tk3"),
                                     QStringLiteral("FH_Datensicherung.TK3"), QStringLiteral("TARVIK3.db")}));

        QTemporaryDir out;
        QCOMPARE(test::run(QStringLiteral("unzip"), {QStringLiteral("-q"), path, QStringLiteral("-d"), out.path()}).first, 0);
        QVERIFY(!QFile::exists(out.filePath(QStringLiteral("TARVIK3.db-wal"))));
        {
            QSqlDatabase copy = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("copy"));
            copy.setDatabaseName(out.filePath(QStringLiteral("TARVIK3.db")));
            copy.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
            QVERIFY(copy.open());
            QCOMPARE(test::dumpRows(copy), before);
        }
        QSqlDatabase::removeDatabase(QStringLiteral("copy"));
        QCOMPARE(test::readBytes(out.filePath(QStringLiteral("FH_Datensicherung.TK3"))), QByteArray("Backupkonzept=1\r\n"));
    }

    void secondArchiveOfTheDayReplacesTheFirst()
    {
        Filled data;
        const QString path = localArchiveFolder(data.folder.path()) + archiveName(QDate(2026, 11, 23));
        QVERIFY(writeArchive(data.folder.path(), path).ok);
        test::addHarvest(data.db->shared(), 99);
        QVERIFY(writeArchive(data.folder.path(), path).ok);
        QVERIFY(checkArchive(path).ok);
        QCOMPARE(listArchives(localArchiveFolder(data.folder.path())).size(), 1);
    }

    void cancelledArchiveLeavesNothing()
    {
        Filled data;
        const QString path = localArchiveFolder(data.folder.path()) + archiveName(QDate(2026, 11, 23));
        const ArchiveResult written = writeArchive(data.folder.path(), path, [](int p, const QString&) { return p < 40; });
        QVERIFY(!written.ok);
        QVERIFY(written.cancelled);
        QCOMPARE(QDir(localArchiveFolder(data.folder.path())).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    // Everything the restore must refuse, each with the reason named in its message.
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
    }
    void badArchivesAreRefused()
    {
        QFETCH(QString, kind);
        QFETCH(QString, reason);
        QTemporaryDir dir;
        const QString path = dir.filePath(archiveName(QDate(2026, 11, 23)));
        test::makeBadArchive(kind, path, dir);
        QTemporaryDir extract;
        const ArchiveCheck check = checkArchive(path, {}, extract.path());
        QVERIFY(!check.ok);
        QVERIFY2(check.error.contains(reason), qPrintable(check.error));
        // libzip's own English reasons are not shown as they are
        static const QRegularExpression english(QStringLiteral("\\b(not|error|inconsistent|premature|invalid|archive|file)\\b"),
                                                QRegularExpression::CaseInsensitiveOption);
        QVERIFY2(!check.error.contains(english), qPrintable(check.error));
        QVERIFY(!QFile::exists(QStringLiteral("/etc/x")) || kind != QLatin1String("/etc/x"));
        QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("x"))));
    }

    void keepThreeNewest()
    {
        QTemporaryDir dir;
        const QList<QDate> dates = {QDate(2026, 1, 4), QDate(2025, 12, 31), QDate(2026, 3, 1), QDate(2026, 2, 14), QDate(2024, 6, 6)};
        for (const QDate& d : dates)
            test::writeBytes(dir.filePath(archiveName(d)), "x");
        test::writeBytes(dir.filePath(QStringLiteral("urlaub.zip")), "x");
        const QList<ArchiveInfo> listed = listArchives(dir.path());
        QCOMPARE(listed.size(), 5);
        QCOMPARE(listed.first().date, QDate(2026, 3, 1));
        QCOMPARE(listed.last().date, QDate(2024, 6, 6));
        QCOMPARE(removeOlderArchives(dir.path()), 2);
        QStringList left = QDir(dir.path()).entryList(QDir::Files, QDir::Name);
        QCOMPARE(left, (QStringList{archiveName(QDate(2026, 1, 4)), archiveName(QDate(2026, 2, 14)), archiveName(QDate(2026, 3, 1)),
                                    QStringLiteral("urlaub.zip")}));
        QCOMPARE(removeOlderArchives(dir.path()), 0);
    }

    void verifiedCopy()
    {
        QTemporaryDir dir;
        QDir(dir.path()).mkdir(QStringLiteral("stick"));
        const QString source = dir.filePath(QStringLiteral("a.zip"));
        test::writeBytes(source, QByteArray(3 << 20, 'z'));
        const CopyResult copied = copyVerified(source, dir.filePath(QStringLiteral("stick")));
        QVERIFY2(copied.ok, qPrintable(copied.error));
        QCOMPARE(test::sha256(copied.path), test::sha256(source));
        QCOMPARE(QDir(dir.filePath(QStringLiteral("stick"))).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("a.zip")});

        // A stick pulled out: the folder is gone.
        const CopyResult gone = copyVerified(source, dir.filePath(QStringLiteral("abgezogen")));
        QVERIFY(!gone.ok);
        QVERIFY(gone.error.startsWith(QStringLiteral("Auf ")));
    }

};

TARVIK_TEST_CORE_MAIN(TestBackupArchive)
#include "tst_backuparchive.moc"
