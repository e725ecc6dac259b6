// Opening: a file that is not ours, a damaged, a locked and a read-only file are each told
// apart and left untouched; two handles share a file; a writer waits for another writer.
#include "store/database.h"
#include "store/sql.h"
#include "support/storefixture.h"
#include "support/tempdatafolder.h"

#include <QElapsedTimer>
#include <QDir>
#include <QFileInfo>
#include <QSemaphore>
#include <QThread>
#include <unistd.h>

using namespace tarvik;

namespace {

// The German sentence of a refusal: its kind, its words, the file it names, and none of the
// engine's own words.
void verifyTold(const StoreError& e, StoreProblem problem, const QString& words, const QString& path)
{
    QCOMPARE(e.problem(), problem);
    QVERIFY2(e.message().contains(words), qPrintable(e.message()));
    QVERIFY(e.message().contains(QDir::toNativeSeparators(path)));
    for (const char* engine : {"locked", "btree", "malformed", "INSERT"})
        QVERIFY2(!e.message().contains(QString::fromUtf8(engine), Qt::CaseInsensitive), qPrintable(e.message()));
}

// n logs with a remark each, in one statement.
void addLogs(const QSqlDatabase& db, int n)
{
    execSql(db, QStringLiteral("WITH RECURSIVE k(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM k WHERE i < ?) "
                               "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Bemerkung) SELECT 1, i, ? FROM k"),
            {n, QString(30, u'x')});
}

// Another program holding the write lock for a while, on its own connection and thread.
class OtherWriter : public QThread {
public:
    OtherWriter(QString path, int holdMs) : m_path(std::move(path)), m_holdMs(holdMs) {}
    QSemaphore locked;
    bool committed = false;

protected:
    void run() override
    {
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("other-writer"));
            db.setDatabaseName(m_path);
            try {
                db.open();
                execSql(db, QStringLiteral("BEGIN IMMEDIATE"));
                execSql(db, QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (100)"));
                locked.release();
                msleep(static_cast<unsigned long>(m_holdMs));
                execSql(db, QStringLiteral("COMMIT"));
                committed = true;
            } catch (const StoreError&) {
                locked.release();
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("other-writer"));
    }

private:
    QString m_path;
    int m_holdMs;
};

// Root may write any file: the read-only cases run as an ordinary user, and switch back after.
class AsOrdinaryUser {
public:
    AsOrdinaryUser()
    {
        if (geteuid() != 0)
            return;
        m_switched = setresgid(65534, 65534, 0) == 0 && setresuid(65534, 65534, 0) == 0;
    }
    ~AsOrdinaryUser()
    {
        if (m_switched) {
            [[maybe_unused]] const int u = setresuid(0, 0, 0);
            [[maybe_unused]] const int g = setresgid(0, 0, 0);
        }
    }
    bool ok() const { return geteuid() != 0; }

private:
    bool m_switched = false;
};

} // namespace

class TestDatabase : public QObject {
    Q_OBJECT
private slots:
    // A file that is not ours is refused, naming the file, and left as it was (empty, cut-off
    // and garbage files: the bad-input table).
    void refusedFileIsLeftAlone_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QByteArray jet(4096, '\0');
        jet.replace(0, 19, QByteArray("\x00\x01\x00\x00Standard Jet DB", 19));
        test::TempDataFolder folder;
        const QString other = folder.filePath(QStringLiteral("other.db"));
        test::withPlainConnection(other, [](const QSqlDatabase& db) { execSql(db, QStringLiteral("CREATE TABLE notes(x)")); });
        QTest::newRow("Access file renamed") << jet;
        QTest::newRow("header only") << QByteArray("SQLite format 3\0", 16);
        QTest::newRow("another program's database") << test::readBytes(other);
    }
    void refusedFileIsLeftAlone()
    {
        QFETCH(QByteArray, bytes);
        test::TempDataFolder folder;
        test::writeBytes(folder.databasePath(), bytes);
        try {
            Database::openOrCreate(folder.databasePath());
            QFAIL("the file was opened");
        } catch (const StoreError& e) {
            verifyTold(e, StoreProblem::Damaged, QStringLiteral("keine Datenbank von TARVIK 3.0"), folder.databasePath());
        }
        QCOMPARE(test::readBytes(folder.databasePath()), bytes);
        QVERIFY(!QFile::exists(folder.databasePath() + QStringLiteral("-wal")));
    }

    // Both handles read what the other wrote. Commits leave the copying of the log into the
    // file to a thread of their own; it must happen, or the log grows without end while the
    // program is open; at the end no log remains.
    void bothHandlesAndTheLog()
    {
        test::TempDataFolder folder;
        auto db = Database::openOrCreate(folder.databasePath());
        QVERIFY(db->newlyCreated());
        execSql(db->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (1)"));
        QCOMPARE(scalar(db->listHandle(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 1);
        execSql(db->listHandle(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (2)"));
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 2);
        QCOMPARE(scalar(db->shared(), QStringLiteral("PRAGMA journal_mode")).toString(), QStringLiteral("wal"));

        execSql(db->shared(), QStringLiteral("CREATE TABLE ballast(b BLOB)"));
        const qint64 before = QFileInfo(folder.databasePath()).size();
        for (int i = 0; i < 300; ++i) // five pages a commit, beyond the point a copy is due
            execSql(db->shared(), QStringLiteral("INSERT INTO ballast VALUES (randomblob(20000))"));
        // 1,500 pages were logged; at least the first 1,000 (4 MiB) must reach the file.
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(folder.databasePath()).size() > before + 3 * 1024 * 1024, 20000);
        db.reset();
        QVERIFY(!QFileInfo::exists(folder.databasePath() + QStringLiteral("-wal")));

        auto reopened = Database::openOrCreate(folder.databasePath());
        QVERIFY(!reopened->newlyCreated());
        QCOMPARE(scalar(reopened->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 2);
        QCOMPARE(scalar(reopened->shared(), QStringLiteral("SELECT count(*) FROM ballast")).toInt(), 300);
    }

    // Guards inside guards are one transaction: only what the outer one commits stays, and an
    // inner one left without a commit takes back its own rows only.
    void nestedGuards_data()
    {
        QTest::addColumn<bool>("innerCommits");
        QTest::addColumn<bool>("outerCommits");
        QTest::addColumn<QString>("kept");
        QTest::newRow("both commit") << true << true << "1,2";
        QTest::newRow("outer fails after the inner succeeded") << true << false << "";
        QTest::newRow("inner fails, outer goes on") << false << true << "1";
        QTest::newRow("both fail") << false << false << "";
    }
    void nestedGuards()
    {
        QFETCH(bool, innerCommits);
        QFETCH(bool, outerCommits);
        test::TempDataFolder folder;
        auto db = Database::openOrCreate(folder.databasePath());
        {
            TransactionGuard outer(db->shared());
            execSql(db->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (1)"));
            {
                TransactionGuard inner(db->shared());
                execSql(db->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (2)"));
                if (innerCommits)
                    inner.commit();
            }
            QVERIFY(inTransaction(db->shared()));
            if (outerCommits)
                outer.commit();
        }
        QVERIFY(!inTransaction(db->shared()));
        QTEST(scalar(db->shared(), QStringLiteral("SELECT coalesce(group_concat(Hieb_Nr), '') FROM Hiebe")).toString(), "kept");
    }

    // A command-line run beside the open desktop program: it reads, then writes, while the
    // other program holds the write lock for 1.5 s. It must wait and succeed, not fail at once.
    void writerWaitsForAnotherWriter()
    {
        test::TempDataFolder folder;
        auto db = Database::openOrCreate(folder.databasePath());
        OtherWriter other(folder.databasePath(), 1500);
        other.start();
        QVERIFY(other.locked.tryAcquire(1, 5000));
        QElapsedTimer timer;
        timer.start();
        try {
            TransactionGuard guard(db->shared());
            const int before = scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt();
            execSql(db->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (?)"), {before + 1});
            guard.commit();
        } catch (const StoreError& e) {
            other.wait();
            QFAIL(qPrintable(e.message()));
        }
        QVERIFY2(timer.elapsed() >= 1000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(other.wait(5000));
        QVERIFY(other.committed);
        // The waiting writer saw the other's row: its number follows it.
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT group_concat(Hieb_Nr, ',') FROM (SELECT Hieb_Nr FROM Hiebe ORDER BY ID)")).toString(),
                 QStringLiteral("100,2"));
    }

    // Locked is not damaged: the message must not send the user to a backup.
    void lockedFileIsToldApartFromDamage()
    {
        test::TempDataFolder folder;
        createDatabaseFile(folder.databasePath());
        test::withPlainConnection(folder.databasePath(), [&](const QSqlDatabase& holder) {
            execSql(holder, QStringLiteral("PRAGMA locking_mode = EXCLUSIVE"));
            execSql(holder, QStringLiteral("BEGIN EXCLUSIVE"));
            execSql(holder, QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (1)"));
            try {
                OpenOptions quick;
                quick.busyTimeoutMs = 200;
                Database::openOrCreate(folder.databasePath(), quick);
                QFAIL("a locked file was opened");
            } catch (const StoreError& e) {
                verifyTold(e, StoreProblem::Locked, QStringLiteral("durch ein anderes Programm gesperrt"), folder.databasePath());
                QVERIFY(!e.message().contains(QStringLiteral("ist beschädigt")));
                QVERIFY(!e.message().contains(QStringLiteral("keine Datenbank")));
            }
            execSql(holder, QStringLiteral("ROLLBACK"));
        });
        QVERIFY(Database::openOrCreate(folder.databasePath()));
    }

    // Broken pages inside a table: the header and the table list are fine, only a check of
    // the pages finds them. Opening does not wait for that check: it opens the file whatever
    // its size, and the check on its own thread reports the damage, naming the file, which it
    // leaves as it was. Asked to check first, opening refuses the file.
    void damagedPagesAreReported_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("in the background") << QStringLiteral("background");
        QTest::newRow("before opening") << QStringLiteral("first");
    }
    void damagedPagesAreReported()
    {
        QFETCH(QString, how);
        test::TempDataFolder folder;
        int rootPage = 0;
        int pageSize = 0;
        {
            auto db = Database::openOrCreate(folder.databasePath());
            addLogs(db->shared(), 400);
            rootPage = scalar(db->shared(), QStringLiteral("SELECT rootpage FROM sqlite_master WHERE name = 'Stämme'")).toInt();
            pageSize = scalar(db->shared(), QStringLiteral("PRAGMA page_size")).toInt();
        }
        if (const auto sound = checkPages(folder.databasePath()))
            QFAIL(qPrintable(sound->message() + sound->detail())); // sound before
        QByteArray bytes = test::readBytes(folder.databasePath());
        QVERIFY(!QFile::exists(folder.databasePath() + QStringLiteral("-wal")) ||
                QFileInfo(folder.databasePath() + QStringLiteral("-wal")).size() == 0);
        bytes[qsizetype(rootPage - 1) * pageSize] = char(0x07); // no valid page type
        test::writeBytes(folder.databasePath(), bytes);
        auto verifyDamage = [&](const StoreError& e) {
            verifyTold(e, StoreProblem::Damaged, QStringLiteral("ist beschädigt"), folder.databasePath());
        };
        if (how == u"first") {
            OpenOptions options;
            options.checkPages = true;
            try {
                Database::openOrCreate(folder.databasePath(), options);
                QFAIL("a damaged file was opened");
            } catch (const StoreError& e) {
                verifyDamage(e);
            }
        } else {
            auto db = Database::openOrCreate(folder.databasePath());
            QVERIFY(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).isValid()); // the main list opens
            std::optional<QString> reported;
            PageCheck check(folder.databasePath(), [&](const StoreError& e) { reported = e.message(); });
            const std::optional<StoreError> found = check.wait();
            QVERIFY(found.has_value());
            verifyDamage(*found);
            QCOMPARE(reported, std::optional<QString>(found->message()));
        }
        QCOMPARE(test::readBytes(folder.databasePath()), bytes);
    }

    // A check still running when the program ends is stopped, and reports nothing.
    void aRunningCheckStopsWithTheProgram()
    {
        test::TempDataFolder folder;
        addLogs(Database::openOrCreate(folder.databasePath())->shared(), 20000);
        bool reported = false;
        QElapsedTimer timer;
        timer.start();
        {
            PageCheck check(folder.databasePath(), [&](const StoreError&) { reported = true; });
        }
        QVERIFY(!reported);
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    }

    void readOnlyFileIsToldOnOpening_data()
    {
        QTest::addColumn<bool>("folderReadOnly");
        QTest::addColumn<QString>("named");
        QTest::newRow("file") << false << QStringLiteral("Die Datenbank ist schreibgeschützt");
        QTest::newRow("folder") << true << QStringLiteral("der Datenbank ist schreibgeschützt");
    }
    void readOnlyFileIsToldOnOpening()
    {
        QFETCH(bool, folderReadOnly);
        QFETCH(QString, named);
        test::TempDataFolder folder;
        createDatabaseFile(folder.databasePath());
        const QByteArray before = test::readBytes(folder.databasePath());
        QFile::setPermissions(folder.databasePath(), QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther);
        const QFileDevice::Permissions open = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner |
                                              QFileDevice::ReadOther | QFileDevice::ExeOther;
        if (folderReadOnly) {
            QFile::setPermissions(folder.databasePath(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadOther |
                                                             QFileDevice::WriteOther);
            QFile::setPermissions(folder.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::ReadOther |
                                                     QFileDevice::ExeOther);
        } else {
            QFile::setPermissions(folder.path(), open | QFileDevice::WriteOther);
        }
        {
            AsOrdinaryUser user;
            QVERIFY(user.ok());
            try {
                Database::openOrCreate(folder.databasePath());
                QFAIL("a read-only file was opened without a word");
            } catch (const StoreError& e) {
                verifyTold(e, StoreProblem::ReadOnly, named, folder.databasePath());
            }
        }
        QFile::setPermissions(folder.path(), open | QFileDevice::WriteOther);
        QCOMPARE(test::readBytes(folder.databasePath()), before);
    }

    // A full disk in the middle of a transaction: the engine's text is kept for the developer,
    // the user reads German, and no row of the transaction remains.
    void fullDiskReadsInGerman()
    {
        test::TempDataFolder folder;
        auto db = Database::openOrCreate(folder.databasePath());
        const int pages = scalar(db->shared(), QStringLiteral("PRAGMA page_count")).toInt();
        execSql(db->shared(), QStringLiteral("PRAGMA max_page_count = %1").arg(pages + 2));
        try {
            TransactionGuard guard(db->shared());
            for (int i = 0; i < 200; ++i)
                execSql(db->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Bemerkung) VALUES (?, ?)"), {i, QString(250, u'y')});
            guard.commit();
            QFAIL("a full file took every row");
        } catch (const StoreError& e) {
            QCOMPARE(e.problem(), StoreProblem::DiskFull);
            QVERIFY2(e.message().startsWith(QStringLiteral("Der Datenträger ist voll")), qPrintable(e.message()));
            QVERIFY(!e.message().contains(QStringLiteral("INSERT")));
            QVERIFY(e.detail().contains(QStringLiteral("INSERT")));
        }
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 0);
    }
};

TARVIK_TEST_CORE_MAIN(TestDatabase)
#include "tst_database.moc"
