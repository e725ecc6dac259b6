// "Einstellungen.tk3": 173 lines, repairs after reading, tolerance of damaged files.
#include "common/textfile.h"
#include "settings/settings.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace tarvik;

class TestSettings : public QObject {
    Q_OBJECT
private slots:
    // Each slot on its own line, as the file has always been laid out; what is saved is read back.
    void fileHasTheExactLayoutAndRoundTrips()
    {
        test::TempDataFolder dir;
        const QString path = dir.filePath(QLatin1String(SettingsFileName));
        Einstellungen s = EinstellungenLaden(path);
        for (int i = 0; i < Einstellungen::ZahlCount; ++i)
            s.zahl[size_t(i)] = qint16(i * 3 - 20);
        s.zahl[4] = 3;
        s.zahl[5] = -2;
        s.zahl[17] = 14;
        s.dezimal[3] = 12.345f;
        s.dezimal[10] = -1.5f;
        s.text[1] = QStringLiteral("  Forstbetrieb Müller  ");
        s.text[60] = QStringLiteral("letzter");
        QVERIFY(EinstellungenSpeichern(s, path));

        QFile f(path);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray bytes = f.readAll();
        QCOMPARE(bytes.count("\r\n"), 173);
        const QList<QByteArray> lines = bytes.split('\n');
        QCOMPARE(lines[4], QByteArray(" 3\r"));
        QCOMPARE(lines[5], QByteArray("-2\r"));
        QCOMPARE(lines[17], QByteArray(" 14\r"));
        QCOMPARE(lines[101], QByteArray("0.70\r"));
        QCOMPARE(lines[102], QByteArray("0.65\r"));
        QCOMPARE(lines[104], QByteArray("12.35\r"));
        QCOMPARE(lines[112 + 1], QByteArray("  Forstbetrieb M\xfcller  \r"));
        QCOMPARE(lines[112 + 10], QByteArray(" | \r"));
        const Einstellungen read = EinstellungenLaden(path);
        QCOMPARE(read.zahl, s.zahl);
        QCOMPARE(read.text, s.text);
        QCOMPARE(read.dezimal[10], -1.5f);
    }

    // One line of a saved file (defaults, zahl[2] = 3, text[60] = "Ende") changed, and the slot
    // read from it; what was read is what a save writes back. Line -1: no file at all; a null
    // value: the file ends before that line.
    void reading_data()
    {
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("expected");
        const QString cut;
        QTest::newRow("no file: backup days") << -1 << "" << "zahl17" << "14";
        QTest::newRow("short file keeps what was read") << 3 << cut << "zahl2" << "3";
        QTest::newRow("short file: the rest as without a file") << 3 << cut << "zahl17" << "14";
        QTest::newRow("an extra line is ignored") << 173 << "zuviel" << "text60" << "Ende";
        QTest::newRow("backup days 2 becomes 14") << 17 << " 2" << "zahl17" << "14";
        QTest::newRow("backup days 3 stays") << 17 << " 3" << "zahl17" << "3";
        QTest::newRow("blank separator repaired") << 122 << "   " << "text10" << " | ";
        QTest::newRow("lone CR in a text is a blank") << 115 << "Forst\rbetrieb" << "text3" << "Forst betrieb";
        QTest::newRow("factor 0 repaired") << 101 << "0.00" << "dez0" << "0.7";
        QTest::newRow("factor below a cent is 0, repaired") << 101 << "0.001" << "dez0" << "0.7";
        QTest::newRow("garbled factor counts as 0") << 102 << "abc" << "dez1" << "0.65";
        QTest::newRow("garbled number counts as 0") << 2 << "x1" << "zahl2" << "0";
        QTest::newRow("factor -inf repaired") << 103 << "-inf" << "dez2" << "0.6";
        QTest::newRow("factor overflow repaired") << 103 << "1e40" << "dez2" << "0.6";
        // Too long for a factor line: written back, it would be cut to another number.
        QTest::newRow("factor too long repaired") << 103 << "7777777777777740" << "dez2" << "0.6";
        QTest::newRow("spare factor too long is 0") << 106 << "-313333333330" << "dez5" << "0";
        QTest::newRow("spare factor of ten characters") << 107 << "1234567.5" << "dez6" << "1234567.5";
        QTest::newRow("spare factor to two decimals") << 105 << "0.456" << "dez4" << "0.46";
    }
    void reading()
    {
        QFETCH(int, line);
        QFETCH(QString, value);
        QFETCH(QString, slot);
        QFETCH(QString, expected);
        test::TempDataFolder dir;
        const QString path = dir.filePath(QLatin1String(SettingsFileName));
        if (line >= 0) {
            Einstellungen saved = EinstellungenLaden(path);
            saved.zahl[2] = 3;
            saved.text[60] = QStringLiteral("Ende");
            QVERIFY(EinstellungenSpeichern(saved, path));
            QStringList lines = readTextFile(path).lines;
            if (value.isNull())
                lines = lines.mid(0, line);
            else if (line < lines.size())
                lines[line] = value;
            else
                lines << value;
            QVERIFY(writeTextFile(path, lines).ok);
        }
        const Einstellungen s = EinstellungenLaden(path);
        const int index = slot.mid(slot.startsWith(u'd') ? 3 : 4).toInt();
        if (slot.startsWith(QLatin1String("zahl")))
            QCOMPARE(s.zahl[size_t(index)], qint16(expected.toInt()));
        else if (slot.startsWith(QLatin1String("dez")))
            QCOMPARE(s.dezimal[size_t(index)], expected.toFloat());
        else
            QCOMPARE(s.text[size_t(index)], expected);
        const QString copy = dir.filePath(QStringLiteral("Kopie.tk3"));
        QVERIFY(EinstellungenSpeichern(s, copy));
        const Einstellungen again = EinstellungenLaden(copy);
        QCOMPARE(again.zahl, s.zahl);
        QCOMPARE(again.dezimal, s.dezimal);
        QCOMPARE(again.text, s.text);
    }

    // An editor saved the file as UTF-8: it is read as such and written back once in the
    // program's code page; saved again unchanged, it is not touched, and no temporary file is left.
    void utf8FileIsReadAndConvertedOnce()
    {
        test::TempDataFolder dir;
        const QString path = dir.filePath(QLatin1String(SettingsFileName));
        Einstellungen s = EinstellungenLaden(path);
        s.text[1] = QStringLiteral("Forstbetrieb Müller – Säge „Nord“ €");
        QVERIFY(EinstellungenSpeichern(s, path));
        const QStringList lines = readTextFile(path).lines;
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(QByteArray("\xEF\xBB\xBF") + (lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")).toUtf8());
        f.close();

        const Einstellungen read = EinstellungenLaden(path);
        QCOMPARE(read.text[1], s.text[1]);
        QCOMPARE(read.zahl[17], qint16(14));
        QVERIFY(EinstellungenSpeichern(read, path));
        QVERIFY(f.open(QIODevice::ReadWrite));
        const QByteArray bytes = f.readAll();
        const QDateTime old(QDate(2020, 1, 1), QTime(12, 0));
        QVERIFY(f.setFileTime(old, QFileDevice::FileModificationTime));
        f.close();
        QVERIFY(!bytes.startsWith("\xEF\xBB\xBF"));
        QVERIFY(bytes.contains("Forstbetrieb M\xfcller \x96 S\xe4ge \x84Nord\x93 \x80\r\n"));
        QVERIFY(EinstellungenSpeichern(EinstellungenLaden(path), path));
        QCOMPARE(QFileInfo(path).lastModified(), old);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QLatin1String(SettingsFileName)});
    }
};

TARVIK_TEST_CORE_MAIN(TestSettings)
#include "tst_settings.moc"
