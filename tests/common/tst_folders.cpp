#include "common/folders.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFile>

using namespace tarvik;

class TestFolders : public QObject {
    Q_OBJECT
private slots:
    void defaultFolder_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<bool>("windows");
        QTest::addColumn<QString>("expected");
        QTest::newRow("drive E") << "E:\\Programme\\Tarvik\\" << true << "E:/Daten/Forstsoftware_TARVIK3/";
        QTest::newRow("no final separator") << "e:\\Programme\\Tarvik" << true << "E:/Daten/Forstsoftware_TARVIK3/";
        QTest::newRow("elsewhere below home") << "/opt/tarvik/bin/" << false << "/home/anna/Daten/Forstsoftware_TARVIK3/";
    }
    void defaultFolder()
    {
        QFETCH(QString, program);
        QFETCH(bool, windows);
        QFETCH(QString, expected);
        QCOMPARE(defaultDataFolder(program, QStringLiteral("/home/anna"), windows), expected);
    }

    void shareFolderBesideProgram_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("expected");
        QTest::newRow("installed package") << "/usr/bin/" << "/usr/share/tarvik/";
        QTest::newRow("no final separator") << "/usr/bin" << "/usr/share/tarvik/";
        QTest::newRow("relocated copy") << "/home/anna/holz/bin/" << "/home/anna/holz/share/tarvik/";
        QTest::newRow("build tree") << "/work/tarvik/build/bin/" << "/work/tarvik/build/share/tarvik/";
    }
    void shareFolderBesideProgram()
    {
        QFETCH(QString, program);
        QFETCH(QString, expected);
        QCOMPARE(shareFolderFor(program), expected);
    }

    void optionWinsOverEnvironment()
    {
        QCOMPARE(resolveDataFolder(QStringLiteral("/a"), QStringLiteral("/b"), QStringLiteral("/p/"), QStringLiteral("/h"), false),
                 QStringLiteral("/a/"));
        QCOMPARE(resolveDataFolder(QString(), QStringLiteral("/b"), QStringLiteral("/p/"), QStringLiteral("/h"), false),
                 QStringLiteral("/b/"));
        QCOMPARE(resolveDataFolder(QString(), QString(), QStringLiteral("/p/"), QStringLiteral("/h"), false),
                 QStringLiteral("/h/Daten/Forstsoftware_TARVIK3/"));
    }

    void firstStartSeedsAndMakesWritable()
    {
        test::TempDataFolder root;
        const QString share = root.filePath(QStringLiteral("share"));
        QVERIFY(QDir().mkpath(share));
        QFile seed(share + QStringLiteral("/LIESMICH.txt"));
        QVERIFY(seed.open(QIODevice::WriteOnly));
        seed.write("x");
        seed.close();
        QVERIFY(seed.setPermissions(QFileDevice::ReadOwner)); // as if from read-only media

        const QString data = root.filePath(QStringLiteral("Daten/Forstsoftware_TARVIK3/"));
        const DataFolderResult result = prepareDataFolder(data, share);
        QVERIFY2(result.ok, qPrintable(result.error));
        QVERIFY(result.created);
        const QString copied = data + QStringLiteral("LIESMICH.txt");
        QVERIFY(QFile::exists(copied));
        QVERIFY(QFile(copied).permissions() & QFileDevice::WriteOwner);

        // A second start finds the folder and copies nothing again.
        QVERIFY(QFile::remove(copied));
        QVERIFY(!prepareDataFolder(data, share).created);
        QVERIFY(!QFile::exists(copied));
    }

    void folderThatCannotBeCreatedIsReported()
    {
        test::TempDataFolder root;
        const QString blocker = root.filePath(QStringLiteral("datei"));
        QFile f(blocker);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.close();
        const DataFolderResult result = prepareDataFolder(blocker + QStringLiteral("/Daten/"), QString());
        QVERIFY(!result.ok);
        QVERIFY(result.error.contains(QStringLiteral("kann nicht angelegt werden")));
    }
};

TARVIK_TEST_CORE_MAIN(TestFolders)
#include "tst_folders.moc"
