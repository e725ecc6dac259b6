#include "common/textfile.h"
#include "support/tempdatafolder.h"

#include <QFile>

using namespace tarvik;

class TestTextFile : public QObject {
    Q_OBJECT
private slots:
    void writesCp1252WithCrLf()
    {
        test::TempDataFolder dir;
        const QString path = dir.filePath(QStringLiteral("a.txt"));
        QVERIFY(writeTextFile(path, {QStringLiteral("Stämme Größe €"), QStringLiteral(" | ")}).ok);
        QFile f(path);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), QByteArray("St\xe4mme Gr\xf6\xdf" "e \x80\r\n | \r\n"));
    }

    void roundTripKeepsBlanksAndUmlauts()
    {
        test::TempDataFolder dir;
        const QString path = dir.filePath(QStringLiteral("b.txt"));
        const QStringList lines{QStringLiteral("  Nußbaum  "), QString(), QStringLiteral("‚quoted‘ – ok")};
        QVERIFY(writeTextFile(path, lines).ok);
        const TextFileResult read = readTextFile(path);
        QVERIFY(read.ok);
        QCOMPARE(read.lines, lines);
    }

    // Texts whose Windows-1252 bytes look like UTF-8 still read back as they were written.
    void textsThatLookLikeUtf8ReadBackUnchanged_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("begins");
        QTest::newRow("mojibake umlaut") << QStringLiteral("MÃ¼ller") << QByteArray("\xef\xbb\xbf" "M\xc3\x83\xc2\xbc");
        QTest::newRow("a mark's own letters") << QStringLiteral("ï»¿Wald") << QByteArray("\xef\xbb\xbf\xc3\xaf");
        QTest::newRow("plain umlauts stay windows-1252") << QStringLiteral("Müller") << QByteArray("M\xfc");
    }
    void textsThatLookLikeUtf8ReadBackUnchanged()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, begins);
        test::TempDataFolder dir;
        const QString path = dir.filePath(QStringLiteral("c.txt"));
        QVERIFY(writeTextFile(path, {text}).ok);
        QFile f(path);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QVERIFY(f.readAll().startsWith(begins));
        QCOMPARE(readTextFile(path).lines, QStringList{text});
        bool written = true;
        QVERIFY(writeTextFileIfChanged(path, {text}, &written).ok);
        QVERIFY(!written);
        // files another installation reads byte for byte stay Windows-1252
        QVERIFY(writeTextFile(path, {text}, TextEncoding::Cp1252Only).ok);
        f.seek(0);
        QFile again(path);
        QVERIFY(again.open(QIODevice::ReadOnly));
        QCOMPARE(again.readAll(), encodeCp1252(text + QStringLiteral("\r\n")));
    }

    void characterOutsideCodePageBecomesQuestionMark()
    {
        QCOMPARE(encodeCp1252(QStringLiteral("a\u0416b")), QByteArray("a?b"));
        QCOMPARE(decodeCp1252(encodeCp1252(QStringLiteral("Ÿœ™"))), QStringLiteral("Ÿœ™"));
    }

    void everyByteRoundTrips()
    {
        QByteArray all;
        for (int b = 0; b < 256; ++b)
            all.append(char(b));
        QCOMPARE(encodeCp1252(decodeCp1252(all)), all);
        QCOMPARE(decodeCp1252("\x81\x9d"), QStringLiteral("\u0081\u009d"));
    }

    void recognisesUtf8_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("utf-8") << QByteArray("Gr\xc3\xb6\xc3\x9f" "e \xe2\x82\xac") << QStringLiteral("Größe €");
        QTest::newRow("utf-8 with mark") << QByteArray("\xef\xbb\xbf" "abc") << QStringLiteral("abc");
        QTest::newRow("windows-1252") << QByteArray("Gr\xf6\xdf" "e \x80") << QStringLiteral("Größe €");
        QTest::newRow("ascii") << QByteArray("abc") << QStringLiteral("abc");
        QTest::newRow("broken utf-8 is windows-1252") << QByteArray("\xc3\xb6\xc3") << QStringLiteral("Ã¶Ã");
    }
    void recognisesUtf8()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(decodeTextFile(bytes), text);
    }

    // The five bytes the code page leaves unassigned read as the control character of the same
    // number and are written back as that byte, so a file read and written again is unchanged.
    void unassignedBytesSurviveReadAndWrite()
    {
        const QByteArray bytes("\x81\x8D\x8F\x90\x9D|\x80\x9F\xA0\xFF", 10);
        const QString text = decodeCp1252(bytes);
        QCOMPARE(text.at(0).unicode(), char16_t(0x81));
        QCOMPARE(encodeCp1252(text), bytes);
        QCOMPARE(encodeCp1252(QString(QChar(char16_t(0x80)))), QByteArray("?")); // U+0080 is no Windows-1252 character
    }

    void readsLfOnlyFiles()
    {
        test::TempDataFolder dir;
        const QString path = dir.filePath(QStringLiteral("c.txt"));
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("eins\nzwei\n");
        f.close();
        QCOMPARE(readTextFile(path).lines, (QStringList{QStringLiteral("eins"), QStringLiteral("zwei")}));
    }

    void missingFileNamesTheFile()
    {
        const TextFileResult r = readTextFile(QStringLiteral("/nonexistent/x.tk3"));
        QVERIFY(!r.ok);
        QVERIFY(r.error.contains(QStringLiteral("/nonexistent/x.tk3")));
    }
};

TARVIK_TEST_CORE_MAIN(TestTextFile)
#include "tst_textfile.moc"
