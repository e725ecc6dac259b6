// Opening: a file that is not ours is reported and left untouched; two handles share a file.
#include "store/database.h"
#include "store/sql.h"
#include "support/tempdatafolder.h"

#include <QFile>

using namespace tarvik;

namespace {

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeAll(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

} // namespace

class TestDatabase : public QObject {
    Q_OBJECT
private slots:
    void foreignFileIsRefusedAndLeftAlone_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QByteArray jet(4096, '\0');
        jet.replace(0, 19, QByteArray("\x00\x01\x00\x00Standard Jet DB", 19));
        QByteArray noise;
        for (int i = 0; i < 5000; ++i)
            noise.append(char((i * 7919) % 251));
        QTest::newRow("Access file renamed") << jet;
        QTest::newRow("random bytes") << noise;
        QTest::newRow("empty file") << QByteArray();
        QTest::newRow("header only") << QByteArray("SQLite format 3\0", 16);
    }
    void foreignFileIsRefusedAndLeftAlone()
    {
        QFETCH(QByteArray, bytes);
        test::TempDataFolder folder;
        writeAll(folder.databasePath(), bytes);
        try {
            Database::openOrCreate(folder.databasePath());
            QFAIL("a foreign file was opened");
        } catch (const StoreError& e) {
            QVERIFY2(e.message().contains(folder.databasePath()), qPrintable(e.message()));
            QVERIFY(e.message().contains(QStringLiteral("keine Datenbank von TARVIK 3.0")));
        }
        QCOMPARE(readAll(folder.databasePath()), bytes);
        QVERIFY(!QFile::exists(folder.databasePath() + QStringLiteral("-wal")));
    }

    void truncatedFileIsRefused()
    {
        test::TempDataFolder folder;
        createDatabaseFile(folder.databasePath());
        QByteArray bytes = readAll(folder.databasePath());
        bytes.truncate(bytes.size() / 2);
        writeAll(folder.databasePath(), bytes);
        QVERIFY_THROWS_EXCEPTION(StoreError, Database::openOrCreate(folder.databasePath()));
        QCOMPARE(readAll(folder.databasePath()), bytes);
    }

    void sqliteFileOfAnotherProgramIsRefused()
    {
        test::TempDataFolder folder;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("other"));
            db.setDatabaseName(folder.databasePath());
            QVERIFY(db.open());
            execSql(db, QStringLiteral("CREATE TABLE notes(x)"));
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("other"));
        const QByteArray before = readAll(folder.databasePath());
        QVERIFY_THROWS_EXCEPTION(StoreError, Database::openOrCreate(folder.databasePath()));
        QCOMPARE(readAll(folder.databasePath()), before);
    }

    void bothHandlesReadAndWrite()
    {
        test::TempDataFolder folder;
        auto db = Database::openOrCreate(folder.databasePath());
        QVERIFY(db->newlyCreated());
        execSql(db->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (1)"));
        QCOMPARE(scalar(db->listHandle(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 1);
        execSql(db->listHandle(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (2)"));
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 2);
        QCOMPARE(scalar(db->shared(), QStringLiteral("PRAGMA journal_mode")).toString(), QStringLiteral("wal"));
        db.reset();

        auto reopened = Database::openOrCreate(folder.databasePath());
        QVERIFY(!reopened->newlyCreated());
        QCOMPARE(scalar(reopened->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 2);
    }

    void failedTransactionLeavesNothing()
    {
        test::TempDataFolder folder;
        auto db = Database::openOrCreate(folder.databasePath());
        try {
            TransactionGuard guard(db->shared());
            execSql(db->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr) VALUES (1, '2026')"));
            execSql(db->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr) VALUES (2, '20266')"));
            guard.commit();
            QFAIL("an overlong year was stored");
        } catch (const StoreError&) {
        }
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 0);
    }

    void nestedGuardsAreOneTransaction()
    {
        test::TempDataFolder folder;
        auto db = Database::openOrCreate(folder.databasePath());
        {
            TransactionGuard outer(db->shared());
            {
                TransactionGuard inner(db->shared());
                execSql(db->shared(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr) VALUES (1)"));
                inner.commit();
            }
            // The outer operation fails after the inner one succeeded: neither remains.
        }
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 0);
    }
};

TARVIK_TEST_CORE_MAIN(TestDatabase)
#include "tst_database.moc"
