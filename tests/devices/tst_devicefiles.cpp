// The device files read from hand-built bytes: the calliper's transfer (every species and
// quality code, the limits of the three numbers and their shared bits, the text route, broken
// transfers), the online service's log table, and the app's archive (a good file read through
// the unpack folder; every refused archive leaving nothing behind, inside or outside the folder).
#include "devices/apparchive.h"
#include "devices/fmr1.h"
#include "devices/logtable.h"
#include "support/reliabilityfiles.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QProcess>
#include <sys/stat.h>
#include <zip.h>

using namespace tarvik;
using test::garbage;

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

struct Entry {
    QString name;
    QByteArray content;
    bool link = false;
};

const QByteArray Table = QByteArray(LogTableHeader) + "\r\n1;1;Fi;B;4,5;35;;N;\r\n1;2;Kie;A;5;30;20;J;Sturm\r\n";

void writeZip(const QString& path, const QList<Entry>& entries)
{
    int error = 0;
    zip_t* z = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    QVERIFY(z);
    for (const Entry& e : entries) {
        zip_source_t* src = zip_source_buffer(z, e.content.constData(), zip_uint64_t(e.content.size()), 0);
        const zip_int64_t index = zip_file_add(z, e.name.toUtf8().constData(), src, ZIP_FL_ENC_UTF_8);
        QVERIFY(index >= 0);
        if (e.link)
            zip_file_set_external_attributes(z, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX, zip_uint32_t(S_IFLNK | 0777) << 16);
    }
    QCOMPARE(zip_close(z), 0);
}

// Rewrites the uncompressed size of every entry in the local and central headers: an archive
// that claims far more than it holds.
void claimHugeSizes(const QString& path)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::ReadWrite));
    QByteArray bytes = f.readAll();
    auto patch = [&bytes](const char* signature, int offset) {
        for (qsizetype at = bytes.indexOf(signature); at >= 0; at = bytes.indexOf(signature, at + 4))
            for (int i = 0; i < 4; ++i)
                bytes[at + offset + i] = char(i == 3 ? 0x7f : 0xff);
    };
    patch("PK\x03\x04", 22);
    patch("PK\x01\x02", 24);
    f.seek(0);
    f.write(bytes);
}

} // namespace

Q_DECLARE_METATYPE(Entry)

class TestDeviceFiles : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;

    QString zipPath() const { return m_folder.filePath(QStringLiteral("holzliste_2026-11-21.zip")); }
    // One level below the temporary folder, so "../../x" would land in it, where the test looks.
    QString data() const { return m_folder.filePath(QStringLiteral("daten/")); }
    QString unpack() const { return appUnpackFolder(data()); }

private slots:
    void initTestCase() { QVERIFY(QDir().mkpath(data())); }

    // The first byte: species (bits 1-4), quality (bits 6-8).
    void codes_data()
    {
        QTest::addColumn<QString>("bits");
        QTest::addColumn<QString>("species");
        QTest::addColumn<QString>("quality");
        const char* species[] = {"", "Do", "Es", "Ah", "Ki", "Ei", "La", "Fi", "Ta", "Bu", "", "", "", "", "", ""};
        for (int n = 0; n < 16; ++n) {
            const QString code = QStringLiteral("%1").arg(n, 4, 2, QLatin1Char('0'));
            QTest::addRow("species %s", qPrintable(code)) << code + "0010" << QString::fromLatin1(species[n]) << "B";
        }
        const char* qualities[] = {" ", "A", "B", "C", "D", " ", " ", " "};
        for (int n = 0; n < 8; ++n) {
            const QString code = QStringLiteral("%1").arg(n, 3, 2, QLatin1Char('0'));
            QTest::addRow("quality %s", qPrintable(code)) << "01111" + code << "Fi" << QString::fromLatin1(qualities[n]);
        }
    }
    void codes()
    {
        QFETCH(QString, bits);
        QFETCH(QString, species);
        const Fmr1Record r = decodeFmr1Record(record(bits + QStringLiteral("00000000 00000000 00000000")));
        QCOMPARE(r.species, species);
        QTEST(r.quality, "quality");
        // A code without species leaves a line the import does not take.
        QCOMPARE(deviceSpeciesCode(r.species).isEmpty(), species.isEmpty());
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
        QTEST(r.first, "first");
        QTEST(r.second, "second");
        QTEST(r.third, "third");
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
        QTEST(int(parseFmr1Lines(c.lines).size()), "logs");
        QTEST(c.cutOffBytes, "cutOff");
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
        QTEST(deviceSpeciesCode(word), "code");
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
        QTest::addColumn<QString>("reason");
        const QString web = QStringLiteral("Die Antwort ist eine Internetseite und keine Exportdatei von Online-TARVIK.");
        const QString noTable = QStringLiteral("Die Datei enthält keine Stammliste (die Kopfzeile \"Los;Nr;Baumart;Guete;Laenge;"
                                               "Staerke;Zopf;Kaefer;Bemerkung\" fehlt).");
        QTest::newRow("html error page") << QByteArray("<!DOCTYPE html>\n<html><body><h1>Fehler</h1></body></html>") << web;
        QTest::newRow("html without doctype") << QByteArray("  <HTML><head><title>500</title></head></HTML>") << web;
        QTest::newRow("empty") << QByteArray() << noTable;
        QTest::newRow("no header") << QByteArray("2;17;Fi;B;4,5;35;;N;\r\n") << noTable;
        QTest::newRow("garbage") << garbage(8192) << noTable;
    }
    void logTableRefusals()
    {
        QFETCH(QByteArray, bytes);
        const LogTable t = parseLogTable(bytes);
        QTEST(t.error, "reason");
        QVERIFY(t.logs.isEmpty());
    }

    void goodArchiveIsReadAndTheFolderCleared()
    {
        // A leftover of an earlier run is cleared first.
        QDir().mkpath(unpack());
        test::writeBytes(unpack() + QStringLiteral("/holzliste.csv"), "alt");

        writeZip(zipPath(), {{QStringLiteral("META-INF/MANIFEST.MF"), "Holzliste-Export: 1\r\n"}, {QStringLiteral("holzliste.csv"), Table}});
        QCOMPARE(QProcess::execute(QStringLiteral("unzip"), {QStringLiteral("-tq"), zipPath()}), 0);
        const LogTable t = readAppArchive(zipPath(), data());
        QVERIFY2(t.error.isEmpty(), qPrintable(t.error));
        QCOMPARE(t.logs.size(), 2);
        QCOMPARE(t.logs.at(1).species, QStringLiteral("Kie"));
        QCOMPARE(t.logs.at(1).top, QStringLiteral("20"));
        QVERIFY(t.logs.at(1).beetle);
        QVERIFY(!QFileInfo::exists(unpack()));
    }

    void refusedArchives_data()
    {
        QTest::addColumn<QList<Entry>>("entries");
        QTest::addColumn<bool>("huge");
        QTest::addColumn<QString>("reason");
        const Entry table{QStringLiteral("holzliste.csv"), Table};
        QTest::newRow("up and out") << QList<Entry>{table, {QStringLiteral("../../x"), "böse"}} << false << QStringLiteral("hinaus");
        QTest::newRow("up inside a path") << QList<Entry>{{QStringLiteral("a/../../x"), "böse"}, table} << false << QStringLiteral("hinaus");
        QTest::newRow("backslashes") << QList<Entry>{{QStringLiteral("..\\..\\x"), "böse"}, table} << false << QStringLiteral("hinaus");
        QTest::newRow("absolute") << QList<Entry>{{QStringLiteral("/tmp/tarvik_x"), "böse"}, table} << false << QStringLiteral("absoluten");
        QTest::newRow("drive letter") << QList<Entry>{{QStringLiteral("C:/x"), "böse"}, table} << false << QStringLiteral("absoluten");
        QTest::newRow("link") << QList<Entry>{{QStringLiteral("holzliste.csv"), "/etc/passwd", true}} << false << QStringLiteral("Verknüpfung");
        QTest::newRow("declared size huge") << QList<Entry>{table} << true << QStringLiteral("zu groß");
        const QByteArray zeros(30 * 1024 * 1024, '\0');
        QTest::newRow("bomb of several entries")
            << QList<Entry>{{QStringLiteral("a"), zeros}, {QStringLiteral("b"), zeros}, {QStringLiteral("c"), zeros}, table} << false
            << QStringLiteral("zu groß");
        QTest::newRow("no log table") << QList<Entry>{{QStringLiteral("META-INF/MANIFEST.MF"), "x"}} << false << QStringLiteral("keine Stammliste");
        QTest::newRow("web page") << QList<Entry>{{QStringLiteral("holzliste.csv"), "<html><body>404</body></html>"}} << false
                                  << QStringLiteral("Internetseite");
    }
    void refusedArchives()
    {
        QFETCH(QList<Entry>, entries);
        QFETCH(bool, huge);
        QFETCH(QString, reason);
        writeZip(zipPath(), entries);
        if (huge)
            claimHugeSizes(zipPath());
        const LogTable t = readAppArchive(zipPath(), data());
        QVERIFY(t.logs.isEmpty());
        QVERIFY2(t.error.contains(reason), qPrintable(t.error));
        QVERIFY(t.error.startsWith(QStringLiteral("Die Datei \"holzliste_2026-11-21.zip\" kann nicht eingelesen werden.")));
        QVERIFY(!QFileInfo::exists(unpack()));
        QVERIFY(!QFileInfo::exists(m_folder.filePath(QStringLiteral("x"))));
        QVERIFY(!QFileInfo::exists(QDir(unpack()).filePath(QStringLiteral("../../x"))));
        QVERIFY(!QFileInfo::exists(QStringLiteral("/tmp/tarvik_x")));
    }

    void notAnArchive_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        writeZip(zipPath(), {{QStringLiteral("holzliste.csv"), Table}});
        const QByteArray good = test::readBytes(zipPath());
        QTest::newRow("signature only") << QByteArray("PK kein Archiv");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut off") << good.left(good.size() / 2 + 17);
        QTest::newRow("garbage") << garbage(8192);
    }
    void notAnArchive()
    {
        QFETCH(QByteArray, bytes);
        test::writeBytes(zipPath(), bytes);
        const LogTable t = readAppArchive(zipPath(), data());
        QCOMPARE(t.error, QStringLiteral("Die Datei \"holzliste_2026-11-21.zip\" kann nicht eingelesen werden.\n\nSie ist kein gültiges ZIP-Archiv."));
        QVERIFY(t.logs.isEmpty());
        QVERIFY(!QFileInfo::exists(unpack()));
        QVERIFY(readAppArchive(m_folder.filePath(QStringLiteral("fehlt.zip")), data()).error.contains(QStringLiteral("kein gültiges")));
    }
};

TARVIK_TEST_CORE_MAIN(TestDeviceFiles)
#include "tst_devicefiles.moc"
