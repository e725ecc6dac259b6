// The calliper's transfer decoded from hand-built bytes: every species and quality code, the
// limits of the three numbers and their shared bits, the text route, and broken transfers.
#include "devices/fmr1.h"
#include "devices/logtable.h"
#include "support/tempdatafolder.h"

using namespace tarvik;

namespace {

// Four bytes from 32 characters '0'/'1' (blanks for readability are ignored), then the fifth.
QByteArray record(QString bitText, unsigned char fifth = 0)
{
    bitText.remove(u' ');
    Q_ASSERT(bitText.size() == 32);
    QByteArray bytes;
    for (int b = 0; b < 4; ++b)
        bytes += char(bitText.mid(b * 8, 8).toInt(nullptr, 2));
    return bytes + char(fifth);
}

QByteArray header() { return QByteArray("4") + QByteArray(Fmr1HeaderBytes - 1, 'H'); }

} // namespace

class TestFmr1 : public QObject {
    Q_OBJECT
private slots:
    void speciesCodes_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("species");
        const char* names[] = {"", "Do", "Es", "Ah", "Ki", "Ei", "La", "Fi", "Ta", "Bu", "", "", "", "", "", ""};
        for (int n = 0; n < 16; ++n) {
            const QString code = QStringLiteral("%1").arg(n, 4, 2, QLatin1Char('0'));
            QTest::addRow("%s", qPrintable(code)) << code << QString::fromLatin1(names[n]);
        }
    }
    void speciesCodes()
    {
        QFETCH(QString, code);
        QFETCH(QString, species);
        const Fmr1Record r = decodeFmr1Record(record(code + QStringLiteral("0 010 00000000 00000000 00000000")));
        QCOMPARE(r.species, species);
        QCOMPARE(r.quality, QStringLiteral("B"));
        // A code without species leaves a line the import does not take.
        QCOMPARE(deviceSpeciesCode(r.species).isEmpty(), species.isEmpty());
    }

    void qualityCodes_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("quality");
        const char* names[] = {" ", "A", "B", "C", "D", " ", " ", " "};
        for (int n = 0; n < 8; ++n) {
            const QString code = QStringLiteral("%1").arg(n, 3, 2, QLatin1Char('0'));
            QTest::addRow("%s", qPrintable(code)) << code << QString::fromLatin1(names[n]);
        }
    }
    void qualityCodes()
    {
        QFETCH(QString, code);
        QFETCH(QString, quality);
        QCOMPARE(decodeFmr1Record(record(QStringLiteral("0111 1") + code + QStringLiteral("00000000 00000000 00000000"))).quality,
                 quality);
    }

    void numbers_data()
    {
        QTest::addColumn<QString>("bits");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("second");
        QTest::addColumn<int>("third");
        //                                   1234 5 678 9....... 17...... 25......
        QTest::newRow("all zero")       << "0111 0 010 00000000 00000000 00000000" << 0 << 0 << 0;
        QTest::newRow("bits 9-14")      << "0111 0 010 11111100 00000000 00000000" << 16128 << 0 << 0;
        QTest::newRow("bit 9 alone")    << "0111 0 010 10000000 00000000 00000000" << 8192 << 0 << 0;
        QTest::newRow("unused 15-16")   << "0111 0 010 00000011 00000000 00000000" << 0 << 0 << 0;
        QTest::newRow("bits 19-24")     << "0111 0 010 00000000 00111111 00000000" << 252 << 0 << 0;
        QTest::newRow("bit 25 shared")  << "0111 0 010 00000000 00000000 10000000" << 2 << 0 << 8;
        QTest::newRow("bit 26 shared")  << "0111 0 010 00000000 00000000 01000000" << 1 << 64 << 0;
        QTest::newRow("bits 27-32")     << "0111 0 010 00000000 00000000 00111111" << 0 << 63 << 0;
        QTest::newRow("bit 5")          << "0111 1 010 00000000 00000000 00000000" << 0 << 0 << 4;
        QTest::newRow("bits 17-18")     << "0111 0 010 00000000 11000000 00000000" << 0 << 0 << 3;
        QTest::newRow("all ones")       << "1111 1 111 11111111 11111111 11111111" << 16383 << 127 << 15;
        QTest::newRow("worked example") << "0111 1 010 00000000 00011111 00100011" << 124 << 35 << 4;
    }
    void numbers()
    {
        QFETCH(QString, bits);
        const Fmr1Record r = decodeFmr1Record(record(bits));
        QFETCH(int, first);
        QFETCH(int, second);
        QFETCH(int, third);
        QCOMPARE(r.first, first);
        QCOMPARE(r.second, second);
        QCOMPARE(r.third, third);
    }

    void bitStringIsHighestBitFirst()
    {
        QCOMPARE(fmr1BitString(QByteArray::fromHex("7A001F23")), QStringLiteral("01111010000000000001111100100011"));
    }

    void workedExampleBecomesItsLine()
    {
        const QByteArray bytes = QByteArray::fromHex("7A001F2303");
        QCOMPARE(fmr1Line(decodeFmr1Record(bytes)), QStringLiteral("Fi\tB\t124\t35\t04\t3"));
        QCOMPARE(fmr1Line(decodeFmr1Record(QByteArray::fromHex("7A001F2300"))), QStringLiteral("Fi\tB\t124\t35\t04"));
    }

    void binaryTransfer()
    {
        QByteArray t = header();
        t += QByteArray::fromHex("7A001F2303");                   // Fi B 124, 35 cm, 4 m, lot 3
        t += record("1001 1 011 00000000 00100000 00101000");   // Bu C 128, 40 cm, 4 m
        t += record("0000 0 010 00000000 00000001 00011110");   // species 0000: a line without species
        t += QByteArray(Fmr1RecordBytes, '\0');                // empty memory
        const Fmr1Conversion c = convertFmr1Transfer(t);
        QVERIFY(c.binary);
        QCOMPARE(c.paddingRecords, 1);
        QCOMPARE(c.cutOffBytes, 0);
        QCOMPARE(c.lines, (QStringList{"FMR 1", "Baumart", "Fi\tB\t124\t35\t04\t3", "Bu\tC\t128\t40\t04", "\tB\t4\t30\t00"}));
        const QList<ImportedLog> logs = parseFmr1Lines(c.lines);
        QCOMPARE(logs.size(), 3);
        QCOMPARE(logs.at(0).lot, 3);
        QCOMPARE(logs.at(0).number, 124);
        QCOMPARE(logs.at(0).diameter, QStringLiteral("35"));
        QCOMPARE(logs.at(0).length, QStringLiteral("4"));
        QCOMPARE(logs.at(1).lot, 0);
        QCOMPARE(logs.at(1).quality, QStringLiteral("C"));
        QVERIFY(deviceSpeciesCode(logs.at(2).species).isEmpty());
    }

    void brokenTransfers_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("logs");
        QTest::addColumn<int>("cutOff");
        const QByteArray one = QByteArray::fromHex("7A001F2303");
        QTest::newRow("zero length") << QByteArray() << 0 << 0;
        QTest::newRow("only the first character") << QByteArray("4") << 0 << 0;
        QTest::newRow("header cut off") << header().left(20) << 0 << 0;
        QTest::newRow("header only") << header() << 0 << 0;
        QTest::newRow("record cut off") << header() + one + one.left(3) << 1 << 3;
        QTest::newRow("one byte of a record") << header() + one.left(1) << 0 << 1;
        // At the wrong speed the bytes come as noise and are taken for text without log lines.
        QTest::newRow("wrong baud rate") << QByteArray::fromHex("f80f78f8e0fe80f00f80ff0078f8") << 0 << 0;
        QTest::newRow("text noise") << QByteArray("x\r\n\r\n;;\t\t\r") << 0 << 0;
    }
    void brokenTransfers()
    {
        QFETCH(QByteArray, bytes);
        const Fmr1Conversion c = convertFmr1Transfer(bytes);
        QFETCH(int, logs);
        QFETCH(int, cutOff);
        QCOMPARE(parseFmr1Lines(c.lines).size(), logs);
        QCOMPARE(c.cutOffBytes, cutOff);
    }

    void textRouteCopiesLines()
    {
        // CR, LF and CR LF each end a line; empty lines are dropped; "4" only counts first.
        const QByteArray t("Fi\tB\t1\t35\t4,5\r\nKie\tA\t2\t40\t5\t7\rL\xe4\t\t3\t28\t12.5\nEnde");
        const Fmr1Conversion c = convertFmr1Transfer(t);
        QVERIFY(!c.binary);
        QCOMPARE(c.lines.size(), 6);
        QCOMPARE(c.lines.at(4), QStringLiteral("Lä\t\t3\t28\t12.5"));
        const QList<ImportedLog> logs = parseFmr1Lines(c.lines);
        QCOMPARE(logs.size(), 3);
        QCOMPARE(logs.at(0).length, QStringLiteral("4,5"));
        QCOMPARE(logs.at(1).lot, 7);
        QCOMPARE(deviceSpeciesCode(logs.at(2).species), QStringLiteral("LA"));
        QCOMPARE(logs.at(2).length, QStringLiteral("12,5"));
        QVERIFY(logs.at(2).quality.isEmpty());
    }

    void speciesWords_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("code");
        for (const auto& [w, c] : std::initializer_list<std::pair<const char*, const char*>>{
                 {"Fi", "FI"}, {"Ta", "TA"}, {"Bu", "BU"}, {"Kie", "KI"}, {"Ei", "EI"}, {"Lä", "LA"}, {"Dgl", "DO"},
                 {"Es", "ES"}, {"Aho", "AH"}, {"KIE", "KI"}, {"LAE", "LA"}, {"DGL", "DO"}, {"AHO", "AH"},
                 {"Ki", "KI"}, {"La", "LA"}, {"Do", "DO"}, {"Ah", "AH"}, {" fi ", "FI"},
                 {"Hb", ""}, {"Fichte", ""}, {"", ""}, {"0000", ""}})
            QTest::addRow("%s", w) << QString::fromUtf8(w) << QString::fromLatin1(c);
    }
    void speciesWords()
    {
        QFETCH(QString, word);
        QFETCH(QString, code);
        QCOMPARE(deviceSpeciesCode(word), code);
    }

    void logTable()
    {
        const QByteArray file("Los;Nr;Baumart;Guete;Laenge;Staerke;Zopf;Kaefer;Bemerkung\r\n"
                              "2;17;Fi;B;4,5;35;;N;\r\n"
                              "2;10017;Fi;C;3;22;14;J;Gabel; links\r\n"
                              "kaputt\r\n"
                              "\r\n");
        const LogTable t = parseLogTable(file);
        QVERIFY(t.error.isEmpty());
        QCOMPARE(t.logs.size(), 2);
        QCOMPARE(t.unreadableLines, 1);
        QCOMPARE(t.logs.at(0).length, QStringLiteral("4,5"));
        QCOMPARE(t.logs.at(1).number, 10017);
        QCOMPARE(t.logs.at(1).top, QStringLiteral("14"));
        QVERIFY(t.logs.at(1).beetle);
        QCOMPARE(t.logs.at(1).remark, QStringLiteral("Gabel; links"));
        // Windows-1252 as well as UTF-8.
        QCOMPARE(parseLogTable(QByteArray(LogTableHeader) + "\n1;1;L\xe4;;4;30\n").logs.at(0).species, QStringLiteral("Lä"));
        QCOMPARE(parseLogTable(QByteArray(LogTableHeader) + "\n1;1;Lä;;4;30\n").logs.at(0).species, QStringLiteral("Lä"));
    }

    // A file cut off inside its last line loses that log, never a digit of it.
    void logTableCutOffLastLine_data()
    {
        QTest::addColumn<QByteArray>("tail");
        QTest::addColumn<int>("logs");
        QTest::newRow("cut inside the diameter") << QByteArray("2;18;Fi;B;4,5;3") << 1;
        QTest::newRow("cut after the top") << QByteArray("2;18;Fi;B;4,5;34;20") << 1;
        QTest::newRow("all fields, no line end") << QByteArray("2;18;Fi;B;4,5;34;20;N;") << 2;
        QTest::newRow("cut inside the remark only") << QByteArray("2;18;Fi;B;4,5;34;20;N;Gab") << 2;
        QTest::newRow("short line with its line end") << QByteArray("2;18;Fi;B;4,5;34\r\n") << 2;
    }
    void logTableCutOffLastLine()
    {
        QFETCH(QByteArray, tail);
        QFETCH(int, logs);
        const LogTable t = parseLogTable(QByteArray(LogTableHeader) + "\r\n2;17;Fi;B;4,5;35;;N;\r\n" + tail);
        QVERIFY(t.error.isEmpty());
        QCOMPARE(t.logs.size(), logs);
        QCOMPARE(t.unreadableLines, 2 - logs);
        if (logs == 2)
            QCOMPARE(t.logs.at(1).diameter, QStringLiteral("34"));
    }

    void logTableRefusals_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("html error page") << QByteArray("<!DOCTYPE html>\n<html><body><h1>Fehler</h1></body></html>");
        QTest::newRow("html without doctype") << QByteArray("  <HTML><head><title>500</title></head></HTML>");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no header") << QByteArray("2;17;Fi;B;4,5;35;;N;\r\n");
    }
    void logTableRefusals()
    {
        QFETCH(QByteArray, bytes);
        const LogTable t = parseLogTable(bytes);
        QVERIFY(!t.error.isEmpty());
        QVERIFY(t.logs.isEmpty());
    }
};

TARVIK_TEST_CORE_MAIN(TestFmr1)
#include "tst_fmr1.moc"
