// The help file reader and the help shipped with the program.
#include "common/textfile.h"
#include "help/helpfile.h"
#include "support/tempdatafolder.h"

#include <QtTest>

using namespace tarvik;

class TestHelpFile : public QObject {
    Q_OBJECT
    test::TempDataFolder m_dir;

private slots:
    void topics_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        QTest::newRow("first topic") << QStringLiteral("Hilfe_Hiebe") << QStringLiteral("Hiebe") << QStringLiteral("Zeile 1\nZeile 2\n");
        QTest::newRow("title only") << QStringLiteral("FH_Hilfe") << QStringLiteral("Nur Titel") << QString();
        QTest::newRow("unknown key shows an empty window") << QStringLiteral("Hilfe_Gibtsnicht") << QString() << QString();
        QTest::newRow("key must match the whole line") << QStringLiteral("Hilfe") << QString() << QString();
        QTest::newRow("an empty key is no blank line's topic") << QString() << QString() << QString();
        QTest::newRow("without #ende# to the end of the file") << QStringLiteral("Hilfe_Letzte") << QStringLiteral("Letzte")
                                                              << QStringLiteral("bis zum Schluss\nÄußerst wichtig\n");
    }
    void topics()
    {
        QFETCH(QString, key);
        QVERIFY(writeTextFile(m_dir.filePath(QLatin1String(HelpFileName)),
                              {QStringLiteral("vorher"), QStringLiteral("Hilfe_Hiebe"), QStringLiteral("Hiebe"), QStringLiteral("Zeile 1"),
                               QStringLiteral("Zeile 2"), QStringLiteral("#ende#"), QString(), QStringLiteral("FH_Hilfe"), QStringLiteral("Nur Titel"),
                               QStringLiteral("#ende#"), QStringLiteral("Hilfe_Letzte"), QStringLiteral("Letzte"),
                               QStringLiteral("bis zum Schluss"), QStringLiteral("Äußerst wichtig")})
                    .ok);
        const HelpTopic topic = readHelpTopic(m_dir.path(), key);
        QVERIFY(topic.fileFound);
        QTEST(topic.title, "title");
        QTEST(topic.text, "text");
    }

    void aMissingFileIsSaid()
    {
        QTemporaryDir empty;
        const HelpTopic topic = readHelpTopic(empty.path(), QStringLiteral("Hilfe_Hiebe"));
        QVERIFY(!topic.fileFound);
        QCOMPARE(topic.missingFileMessage,
                 QStringLiteral("Die Hilfedatei %1%2HILFETARVIK.HLP existiert nicht!").arg(QDir::toNativeSeparators(empty.path()), QDir::separator()));
    }
};

TARVIK_TEST_CORE_MAIN(TestHelpFile)
#include "tst_helpfile.moc"
