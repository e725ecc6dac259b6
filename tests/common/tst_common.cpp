// The shared helpers without windows: numbers and dates as typed and shown, Windows-1252 text
// files, the data folder, stepping through an opener's rows, the regional settings, and what
// the system reports in English reaching the user as a German sentence.
#include "common/folders.h"
#include "common/germanlocale.h"
#include "common/numbers.h"
#include "common/openerrows.h"
#include "common/sqldate.h"
#include "common/systemerror.h"
#include "common/text.h"
#include "common/textfile.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <cerrno>
#include <cstring>

using namespace tarvik;

namespace {

QByteArray fileBytes(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("(nicht lesbar)");
}


// English words a German sentence never holds.
bool soundsEnglish(const QString& text)
{
    static const QRegularExpression english(QStringLiteral("\\b(the|such|file|directory|denied|error|space|left|device|is|not)\\b"),
                                            QRegularExpression::CaseInsensitiveOption);
    return english.match(text).hasMatch();
}

} // namespace

class TestCommon : public QObject {
    Q_OBJECT
    test::TempDataFolder m_dir;

private slots:
    void readNumber_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("expected");
        QTest::newRow("empty") << "" << 0.0;
        QTest::newRow("junk") << "abc" << 0.0;
        QTest::newRow("comma") << "4,5" << 4.5;
        QTest::newRow("point") << "4.5" << 4.5;
        QTest::newRow("thousands and comma") << "1.234,5" << 1234.5;
        QTest::newRow("blanks and unit") << " 35 cm" << 35.0;
        QTest::newRow("negative") << "-2,25" << -2.25;
        QTest::newRow("second comma stops") << "1,2,3" << 1.2;
        QTest::newRow("exponent") << "1E3" << 1000.0;
        QTest::newRow("huge exponent") << "1E999" << 0.0;
    }
    void readNumber()
    {
        QFETCH(QString, text);
        QFETCH(double, expected);
        QCOMPARE(tarvik::readNumber(text), expected);
    }

    // Doubles round half away from zero; a float by the decimal it stands for, not its binary neighbour.
    void formatDecimal_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<bool>("single");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("expected");
        QTest::newRow("volume") << 0.38486 << false << 3 << "0,385";
        QTest::newRow("half away from zero") << 2.5 << false << 0 << "3";
        QTest::newRow("negative half") << -2.5 << false << 0 << "-3";
        QTest::newRow("decimal half") << 1.005 << false << 2 << "1,01";
        QTest::newRow("carry") << 9.9996 << false << 3 << "10,000";
        QTest::newRow("tiny negative is zero") << -0.0001 << false << 2 << "0,00";
        QTest::newRow("large") << 1234567.891 << false << 2 << "1234567,89";
        QTest::newRow("0.675f") << 0.675 << true << 2 << "0,68";
        QTest::newRow("2.675f") << 2.675 << true << 2 << "2,68";
        QTest::newRow("float sum") << 12345.678 << true << 3 << "12345,678";
    }
    void formatDecimal()
    {
        QFETCH(double, value);
        QFETCH(bool, single);
        QFETCH(int, decimals);
        QFETCH(QString, expected);
        QCOMPARE(single ? tarvik::formatDecimal(float(value), decimals) : tarvik::formatDecimal(value, decimals), expected);
    }

    void toShortRoundsHalfToEven_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("expected");
        QTest::newRow("2.5") << 2.5 << 2;
        QTest::newRow("3.5") << 3.5 << 4;
        QTest::newRow("-2.5") << -2.5 << -2;
        QTest::newRow("clamped") << 1e9 << 32767;
    }
    void toShortRoundsHalfToEven()
    {
        QFETCH(double, value);
        QFETCH(int, expected);
        QCOMPARE(int(toShort(value)), expected);
    }

    void cellTextsAndDates()
    {
        QCOMPARE(formatDecimalText(QStringLiteral("x"), 4), QStringLiteral("0,0000"));
        QCOMPARE(signedText(14) + u'|' + signedText(0) + u'|' + signedText(-3), QStringLiteral(" 14| 0|-3"));
        QCOMPARE(readText(QVariant(QStringLiteral("  FI (Fichte) "))), QStringLiteral("FI (Fichte)"));
        QCOMPARE(sqlDateLiteral(QStringLiteral("21.11.2026")), QStringLiteral("'2026-11-21'"));
        QCOMPARE(sqlDateLiteral(QStringLiteral("31.02.2026")), QStringLiteral("NULL"));
        QVERIFY(sqlDateValue(QString()).isNull());
        QCOMPARE(sqlDateValue(QStringLiteral("1.2.2026")).toString(), QStringLiteral("2026-02-01"));
        QCOMPARE(germanDateFromSql(QStringLiteral("2026-02-01")), QStringLiteral("01.02.2026"));
    }

    // Windows-1252 with CR LF, read back as written; texts whose bytes look like UTF-8 get the
    // mark so that they too read back unchanged. Files another installation reads stay Windows-1252.
    void textFileRoundTrip_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QByteArray>("begins");
        QTest::newRow("blanks and empty lines kept")
            << QStringList{QStringLiteral("Stämme Größe €"), QStringLiteral("  Nußbaum  "), QString(), QStringLiteral("‚quoted‘ – ok")}
            << QByteArray("St\xe4mme Gr\xf6\xdf" "e \x80\r\n  Nu\xdf" "baum  \r\n\r\n");
        QTest::newRow("mojibake umlaut") << QStringList{QStringLiteral("MÃ¼ller")} << QByteArray("\xef\xbb\xbf" "M\xc3\x83\xc2\xbc");
        QTest::newRow("a mark's own letters") << QStringList{QStringLiteral("ï»¿Wald")} << QByteArray("\xef\xbb\xbf\xc3\xaf");
    }
    void textFileRoundTrip()
    {
        QFETCH(QStringList, lines);
        QFETCH(QByteArray, begins);
        test::TempDataFolder dir;
        const QString path = dir.filePath(QStringLiteral("c.txt"));
        QVERIFY(writeTextFile(path, lines).ok);
        QVERIFY(fileBytes(path).startsWith(begins));
        QCOMPARE(readTextFile(path).lines, lines);
        bool written = true;
        QVERIFY(writeTextFileIfChanged(path, lines, &written).ok);
        QVERIFY(!written);
        QVERIFY(writeTextFile(path, lines, TextEncoding::Cp1252Only).ok);
        QCOMPARE(fileBytes(path), encodeCp1252(lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")));
    }

    void lfOnlyFilesAndMissingFiles()
    {
        test::TempDataFolder dir;
        const QString path = dir.filePath(QStringLiteral("a.txt"));
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("eins\nzwei\n");
        f.close();
        QCOMPARE(readTextFile(path).lines, (QStringList{QStringLiteral("eins"), QStringLiteral("zwei")}));
        const TextFileResult missing = readTextFile(QStringLiteral("/nonexistent/x.tk3"));
        QVERIFY(!missing.ok);
        QVERIFY(missing.error.contains(QStringLiteral("/nonexistent/x.tk3")));
    }

    // Every byte survives decoding and encoding, the five unassigned ones as the control character
    // of the same number; what the code page lacks becomes "?".
    void codePage()
    {
        QByteArray all;
        for (int b = 0; b < 256; ++b)
            all.append(char(b));
        QCOMPARE(encodeCp1252(decodeCp1252(all)), all);
        QCOMPARE(decodeCp1252("\x81\x8d\x8f\x90\x9d"), QStringLiteral("\u0081\u008d\u008f\u0090\u009d"));
        QCOMPARE(decodeCp1252("\x80\x9f\xa0\xff"), QStringLiteral("€Ÿ\u00a0ÿ"));
        QCOMPARE(encodeCp1252(QStringLiteral("a\u0416b\u0080")), QByteArray("a?b?"));
    }

    void recognisesUtf8_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("utf-8") << QByteArray("Gr\xc3\xb6\xc3\x9f" "e \xe2\x82\xac") << QStringLiteral("Größe €");
        QTest::newRow("utf-8 with mark") << QByteArray("\xef\xbb\xbf" "abc") << QStringLiteral("abc");
        QTest::newRow("windows-1252") << QByteArray("Gr\xf6\xdf" "e \x80") << QStringLiteral("Größe €");
        QTest::newRow("broken utf-8 is windows-1252") << QByteArray("\xc3\xb6\xc3") << QStringLiteral("Ã¶Ã");
    }
    void recognisesUtf8()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(decodeTextFile(bytes), text);
    }

    // The option wins over the environment, which wins over the default beside the program.
    void dataFolder_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("environment");
        QTest::addColumn<QString>("program");
        QTest::addColumn<bool>("windows");
        QTest::addColumn<QString>("expected");
        QTest::newRow("option") << "/a" << "/b" << "/p/" << false << "/a/";
        QTest::newRow("environment") << "" << "/b" << "/p/" << false << "/b/";
        QTest::newRow("drive E") << "" << "" << "E:\\Programme\\Tarvik\\" << true << "E:/Daten/Forstsoftware_TARVIK3/";
        QTest::newRow("drive without final separator") << "" << "" << "e:\\Programme\\Tarvik" << true << "E:/Daten/Forstsoftware_TARVIK3/";
        QTest::newRow("below home") << "" << "" << "/opt/tarvik/bin/" << false << "/home/anna/Daten/Forstsoftware_TARVIK3/";
    }
    void dataFolder()
    {
        QFETCH(QString, option);
        QFETCH(QString, environment);
        QFETCH(QString, program);
        QFETCH(bool, windows);
        QTEST(resolveDataFolder(option, environment, program, QStringLiteral("/home/anna"), windows), "expected");
    }

    void shareFolderBesideProgram()
    {
        QCOMPARE(shareFolderFor(QStringLiteral("/usr/bin")), QStringLiteral("/usr/share/tarvik/"));
        QCOMPARE(shareFolderFor(QStringLiteral("/home/anna/holz/bin/")), QStringLiteral("/home/anna/holz/share/tarvik/"));
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
        QVERIFY(QFile(copied).permissions() & QFileDevice::WriteOwner);

        // A second start finds the folder and copies nothing again.
        QVERIFY(QFile::remove(copied));
        QVERIFY(!prepareDataFolder(data, share).created);
        QVERIFY(!QFile::exists(copied));

        // A file where the folder should be is reported.
        const DataFolderResult blocked = prepareDataFolder(share + QStringLiteral("/LIESMICH.txt/Daten/"), QString());
        QVERIFY(!blocked.ok);
        QVERIFY(blocked.error.contains(QStringLiteral("kann nicht angelegt werden")));
    }

    // "+" is the next row, "-" the previous one; -1 stands for none.
    void openerRowsStepAndWrap_data()
    {
        QTest::addColumn<QList<qint32>>("ids");
        QTest::addColumn<qint32>("start");
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QList<qint32>>("visited");
        QTest::newRow("middle to end, then first") << QList<qint32>{7, 3, 9} << 3 << "++++" << QList<qint32>{9, 7, 3, 9};
        QTest::newRow("one row stays") << QList<qint32>{5} << 5 << "+-" << QList<qint32>{5, 5};
        QTest::newRow("unlisted start begins at first") << QList<qint32>{4, 6} << 99 << "+++" << QList<qint32>{4, 6, 4};
        QTest::newRow("back wraps to the last") << QList<qint32>{7, 3, 9} << 3 << "--+" << QList<qint32>{7, 9, 7};
        QTest::newRow("empty list") << QList<qint32>{} << 0 << "+-" << QList<qint32>{-1, -1};
    }
    void openerRowsStepAndWrap()
    {
        QFETCH(QList<qint32>, ids);
        QFETCH(qint32, start);
        QFETCH(QString, steps);
        QFETCH(QList<qint32>, visited);
        OpenerRows rows(ids, start);
        for (qsizetype i = 0; i < steps.size(); ++i) {
            const std::optional<qint32> expected = visited[i] < 0 ? std::nullopt : std::optional<qint32>(visited[i]);
            QCOMPARE(steps[i] == u'+' ? rows.advance() : rows.back(), expected);
            QCOMPARE(rows.current(), expected);
            QCOMPARE(rows.place(), expected ? ids.indexOf(*expected) + 1 : 0);
        }
    }

    // Outside the German regions the program stops with the long warning; inside it says nothing.
    void regionalSettings()
    {
        QVERIFY(!regionalSettingsProblem(QLocale(QLocale::German, QLocale::Germany)));
        QVERIFY(!currencyProblem(QLocale(QLocale::German, QLocale::Austria)));
        const auto text = regionalSettingsProblem(QLocale(QLocale::English, QLocale::UnitedStates));
        QVERIFY(text && text->startsWith(QStringLiteral("WICHTIG!!! Die Datumsberechnung")));
        QVERIFY(text->endsWith(QStringLiteral("wird ZEP jetzt beendet!")));
    }

    // Real files that cannot be opened or written, each with the sentence the user reads.
    void realFileFailures_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("write");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("missing file") << m_dir.filePath(QStringLiteral("gibtsnicht.txt")) << false
                                      << QStringLiteral("Die Datei oder der Ordner existiert nicht.");
        QTest::newRow("missing folder") << m_dir.filePath(QStringLiteral("weg/Daten.txt")) << true
                                        << QStringLiteral("Die Datei oder der Ordner existiert nicht.");
        QTest::newRow("a folder, not a file") << m_dir.path() << true << QStringLiteral("Der Name bezeichnet einen Ordner, keine Datei.");
        QTest::newRow("disk full") << QStringLiteral("/dev/full") << true << QStringLiteral("Der Datenträger ist voll.");
    }
    void realFileFailures()
    {
        QFETCH(QString, path);
        QFETCH(bool, write);
        QFETCH(QString, sentence);
        QFile file(path);
        bool failed = !file.open(write ? QIODevice::WriteOnly : QIODevice::ReadOnly);
        if (!failed) {
            failed = file.write(QByteArray(64 * 1024, 'x')) < 0;
            failed = !file.flush() || failed;
        }
        QVERIFY(failed);
        QVERIFY2(soundsEnglish(file.errorString()) || file.errorString() == sentence, qPrintable(file.errorString()));
        QCOMPARE(germanFileError(file), sentence);
    }

    void texts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("no permission") << QString::fromLocal8Bit(std::strerror(EACCES))
                                       << QStringLiteral("Sie haben keine Berechtigung für diese Datei oder diesen Ordner.");
        QTest::newRow("SQLite: locked") << QStringLiteral("database is locked Unable to fetch row")
                                        << QStringLiteral("Die Datenbank wird gerade von einem anderen Programm benutzt.");
        QTest::newRow("spreadsheet: cannot create") << QStringLiteral("Error creating output xlsx file. Usually a permissions error.")
                                                    << QStringLiteral("Die Tabellendatei kann nicht angelegt werden; meist fehlt die Schreibberechtigung.");
        QTest::newRow("network: host") << QStringLiteral("Host online.example not found")
                                       << QStringLiteral("Der Server ist nicht bekannt; bitte prüfen Sie die Internetverbindung.");
        QTest::newRow("unknown English") << QStringLiteral("Frobnication failed unexpectedly")
                                         << QStringLiteral("Das System meldet einen Fehler, der sich nicht näher bestimmen lässt.");
        QTest::newRow("German stays") << QStringLiteral("Die Datei ist gesperrt.") << QStringLiteral("Die Datei ist gesperrt.");
    }
    void texts()
    {
        QFETCH(QString, text);
        QFETCH(QString, sentence);
        QCOMPARE(germanErrorText(text), sentence);
    }
};

TARVIK_TEST_CORE_MAIN(TestCommon)
#include "tst_common.moc"
