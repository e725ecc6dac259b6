// The device files read from hand-built bytes: the calliper's records (every species and
// quality code, the limits of the three numbers and their shared bits), its transfers (binary,
// text, broken), the online service's log table (good, cut off, refused), and the app's archive
// (a good file read through the unpack folder; every refused archive leaving nothing behind,
// inside or outside the folder).
#include "devices/apparchive.h"
#include "devices/fmr1.h"
#include "devices/logtable.h"
#include "support/reliabilityfiles.h"
#include "support/tempdatafolder.h"

#include <QDir>
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

// Each log as "lot;number;species;quality;diameter;length;top;beetle;remark".
QStringList described(const QList<ImportedLog>& logs)
{
    QStringList out;
    for (const ImportedLog& l : logs)
        out << QStringList{QString::number(l.lot), QString::number(l.number), l.species, l.quality, l.diameter, l.length, l.top,
                           l.beetle ? QStringLiteral("J") : QStringLiteral("N"), l.remark}
                   .join(u';');
    return out;
}

struct Entry {
    QString name; // empty: the content is written as the whole file
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

    // Species (bits 1-4), bit 5, quality (bits 6-8), then the three numbers and their shared bits.
    void records_data()
    {
        QTest::addColumn<QString>("bits");
        QTest::addColumn<QString>("species");
        QTest::addColumn<QString>("quality");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("second");
        QTest::addColumn<int>("third");
        const QString zeros = QStringLiteral("00000000 00000000 00000000");
        const char* species[] = {"", "Do", "Es", "Ah", "Ki", "Ei", "La", "Fi", "Ta", "Bu", "", "", "", "", "", ""};
        for (int n = 0; n < 16; ++n) {
            const QString code = QStringLiteral("%1").arg(n, 4, 2, QLatin1Char('0'));
            QTest::addRow("species %s", qPrintable(code)) << code + "0010" + zeros << QString::fromLatin1(species[n]) << "B" << 0 << 0 << 0;
        }
        const char* qualities[] = {" ", "A", "B", "C", "D", " ", " ", " "};
        for (int n = 0; n < 8; ++n) {
            const QString code = QStringLiteral("%1").arg(n, 3, 2, QLatin1Char('0'));
            QTest::addRow("quality %s", qPrintable(code)) << "01111" + code + zeros << "Fi" << QString::fromLatin1(qualities[n]) << 0 << 0 << 4;
        }
        //                                            1234 5 678 9....... 17...... 25......
        QTest::newRow("bits 9-14")      << QString("0111 0 010 11111100 00000000 00000000") << "Fi" << "B" << 16128 << 0 << 0;
        QTest::newRow("bit 9 alone")    << QString("0111 0 010 10000000 00000000 00000000") << "Fi" << "B" << 8192 << 0 << 0;
        QTest::newRow("unused 15-16")   << QString("0111 0 010 00000011 00000000 00000000") << "Fi" << "B" << 0 << 0 << 0;
        QTest::newRow("bits 19-24")     << QString("0111 0 010 00000000 00111111 00000000") << "Fi" << "B" << 252 << 0 << 0;
        QTest::newRow("bit 25 shared")  << QString("0111 0 010 00000000 00000000 10000000") << "Fi" << "B" << 2 << 0 << 8;
        QTest::newRow("bit 26 shared")  << QString("0111 0 010 00000000 00000000 01000000") << "Fi" << "B" << 1 << 64 << 0;
        QTest::newRow("bits 27-32")     << QString("0111 0 010 00000000 00000000 00111111") << "Fi" << "B" << 0 << 63 << 0;
        QTest::newRow("bits 17-18")     << QString("0111 0 010 00000000 11000000 00000000") << "Fi" << "B" << 0 << 0 << 3;
        QTest::newRow("all ones")       << QString("1111 1 111 11111111 11111111 11111111") << "" << " " << 16383 << 127 << 15;
        QTest::newRow("worked example") << QString("0111 1 010 00000000 00011111 00100011") << "Fi" << "B" << 124 << 35 << 4;
    }
    void records()
    {
        QFETCH(QString, bits);
        const Fmr1Record r = decodeFmr1Record(record(bits));
        QTEST(r.species, "species");
        QTEST(r.quality, "quality");
        QTEST(r.first, "first");
        QTEST(r.second, "second");
        QTEST(r.third, "third");
    }

    // The binary route (first character "4") and the text route, whole and broken: the logs
    // the import gets, the size of a record cut off, the empty memory after the last log.
    void transfers_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("binary");
        QTest::addColumn<int>("cutOff");
        QTest::addColumn<int>("padding");
        QTest::addColumn<QStringList>("logs");
        const QByteArray one = QByteArray::fromHex("7A001F2303"); // Fi B 124, 35 cm, 4 m, lot 3
        const QString first = QStringLiteral("3;124;Fi;B;35;4;;N;");
        QTest::newRow("binary") << header() + one + record("1001 1 011 00000000 00100000 00101000") // Bu C 128, 40 cm, 4 m
                                       + record("0000 0 010 00000000 00000001 00011110")           // a code without species
                                       + QByteArray(Fmr1RecordBytes, '\0')                       // empty memory
                                << true << 0 << 1 << QStringList{first, "0;128;Bu;C;40;4;;N;", "0;4;;B;30;0;;N;"};
        // CR, LF and CR LF each end a line; empty lines are dropped; "4" only counts first.
        QTest::newRow("text") << QByteArray("Fi\tB\t1\t35\t4,5\r\nKie\tA\t2\t40\t5\t7\rL\xe4\t\t3\t28\t12.5\nEnde") << false << 0 << 0
                              << QStringList{"0;1;Fi;B;35;4,5;;N;", "7;2;Kie;A;40;5;;N;", "0;3;Lä;;28;12,5;;N;"};
        QTest::newRow("zero length") << QByteArray() << false << 0 << 0 << QStringList();
        QTest::newRow("only the first character") << QByteArray("4") << true << 0 << 0 << QStringList();
        QTest::newRow("header cut off") << header().left(20) << true << 0 << 0 << QStringList();
        QTest::newRow("header only") << header() << true << 0 << 0 << QStringList();
        QTest::newRow("record cut off") << header() + one + one.left(3) << true << 3 << 0 << QStringList{first};
        QTest::newRow("one byte of a record") << header() + one.left(1) << true << 1 << 0 << QStringList();
        // At the wrong speed the bytes come as noise and are taken for text without log lines.
        QTest::newRow("wrong baud rate") << QByteArray::fromHex("f80f78f8e0fe80f00f80ff0078f8") << false << 0 << 0 << QStringList();
        QTest::newRow("text noise") << QByteArray("x\r\n\r\n;;\t\t\r") << false << 0 << 0 << QStringList();
    }
    void transfers()
    {
        QFETCH(QByteArray, bytes);
        const Fmr1Conversion c = convertFmr1Transfer(bytes);
        QTEST(c.binary, "binary");
        QTEST(c.cutOffBytes, "cutOff");
        QTEST(c.paddingRecords, "padding");
        QTEST(described(parseFmr1Lines(c.lines)), "logs");
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

    // The service's table: fields, bracket numbers, both encodings; a file cut off inside its
    // last line loses that log, never a digit of it; what is no table at all is refused.
    void logTables_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("logs");
        QTest::addColumn<int>("unreadable");
        QTest::addColumn<QString>("error");
        const QByteArray head = QByteArray(LogTableHeader) + "\r\n";
        const QString log17 = QStringLiteral("2;17;Fi;B;35;4,5;;N;");
        const QString log18 = QStringLiteral("2;18;Fi;B;34;4,5;20;N;");
        QTest::newRow("fields") << head + "2;17;Fi;B;4,5;35;;N;\r\n2;10017;Fi;C;3;22;14;J;Gabel; links\r\nkaputt\r\n\r\n"
                                << QStringList{log17, "2;10017;Fi;C;22;3;14;J;Gabel; links"} << 1 << QString();
        QTest::newRow("Windows-1252") << head + "1;1;L\xe4;;4;30\n" << QStringList{"1;1;Lä;;30;4;;N;"} << 0 << QString();
        QTest::newRow("UTF-8") << head + "1;1;Lä;;4;30\n" << QStringList{"1;1;Lä;;30;4;;N;"} << 0 << QString();
        const QByteArray good = head + "2;17;Fi;B;4,5;35;;N;\r\n";
        QTest::newRow("cut inside the diameter") << good + "2;18;Fi;B;4,5;3" << QStringList{log17} << 1 << QString();
        QTest::newRow("cut after the top") << good + "2;18;Fi;B;4,5;34;20" << QStringList{log17} << 1 << QString();
        QTest::newRow("all fields, no line end") << good + "2;18;Fi;B;4,5;34;20;N;" << QStringList{log17, log18} << 0 << QString();
        QTest::newRow("cut inside the remark only") << good + "2;18;Fi;B;4,5;34;20;N;Gab" << QStringList{log17, log18 + "Gab"} << 0 << QString();
        QTest::newRow("short line with its line end") << good + "2;18;Fi;B;4,5;34\r\n" << QStringList{log17, "2;18;Fi;B;34;4,5;;N;"} << 0
                                                      << QString();
        const QString web = QStringLiteral("Die Antwort ist eine Internetseite und keine Exportdatei von Online-TARVIK.");
        const QString noTable = QStringLiteral("Die Datei enthält keine Stammliste (die Kopfzeile \"Los;Nr;Baumart;Guete;Laenge;"
                                               "Staerke;Zopf;Kaefer;Bemerkung\" fehlt).");
        QTest::newRow("html error page") << QByteArray("<!DOCTYPE html>\n<html><body><h1>Fehler</h1></body></html>") << QStringList() << 0 << web;
        QTest::newRow("html without doctype") << QByteArray("  <HTML><head><title>500</title></head></HTML>") << QStringList() << 0 << web;
        QTest::newRow("empty") << QByteArray() << QStringList() << 0 << noTable;
        QTest::newRow("no header") << QByteArray("2;17;Fi;B;4,5;35;;N;\r\n") << QStringList() << 0 << noTable;
        QTest::newRow("garbage") << garbage(8192) << QStringList() << 0 << noTable;
    }
    void logTables()
    {
        QFETCH(QByteArray, bytes);
        const LogTable t = parseLogTable(bytes);
        QTEST(t.error, "error");
        QTEST(described(t.logs), "logs");
        QTEST(t.unreadableLines, "unreadable");
    }

    void goodArchiveIsReadAndTheFolderCleared()
    {
        // A leftover of an earlier run is cleared first.
        QDir().mkpath(unpack());
        test::writeBytes(unpack() + QStringLiteral("/holzliste.csv"), "alt");

        writeZip(zipPath(), {{QStringLiteral("META-INF/MANIFEST.MF"), "Holzliste-Export: 1\r\n"}, {QStringLiteral("holzliste.csv"), Table}});
        const LogTable t = readAppArchive(zipPath(), data());
        QVERIFY2(t.error.isEmpty(), qPrintable(t.error));
        QCOMPARE(described(t.logs), (QStringList{"1;1;Fi;B;35;4,5;;N;", "1;2;Kie;A;30;5;20;J;Sturm"}));
        QVERIFY(!QFileInfo::exists(unpack()));
    }

    void refusedArchives_data()
    {
        QTest::addColumn<QList<Entry>>("entries"); // none: no file at all
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
        writeZip(zipPath(), {table});
        const QByteArray good = test::readBytes(zipPath());
        const QString noZip = QStringLiteral("\n\nSie ist kein gültiges ZIP-Archiv.");
        QTest::newRow("signature only") << QList<Entry>{{QString(), "PK kein Archiv"}} << false << noZip;
        QTest::newRow("empty") << QList<Entry>{{QString(), QByteArray()}} << false << noZip;
        QTest::newRow("cut off") << QList<Entry>{{QString(), good.left(good.size() / 2 + 17)}} << false << noZip;
        QTest::newRow("garbage") << QList<Entry>{{QString(), garbage(8192)}} << false << noZip;
        QTest::newRow("missing") << QList<Entry>{} << false << noZip;
    }
    void refusedArchives()
    {
        QFETCH(QList<Entry>, entries);
        QFETCH(bool, huge);
        QFETCH(QString, reason);
        QFile::remove(zipPath());
        if (!entries.isEmpty() && entries.first().name.isEmpty())
            test::writeBytes(zipPath(), entries.first().content);
        else if (!entries.isEmpty())
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
};

TARVIK_TEST_CORE_MAIN(TestDeviceFiles)
#include "tst_devicefiles.moc"
