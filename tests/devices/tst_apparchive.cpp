// The app's archive: a good file read through the unpack folder, and every refused archive
// (paths out of the folder, absolute paths, links, declared sizes too large, no log table)
// leaving nothing behind, inside or outside the folder.
#include "devices/apparchive.h"
#include "support/tempdatafolder.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <sys/stat.h>
#include <zip.h>

using namespace tarvik;

namespace {

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

class TestAppArchive : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;

    QString zipPath() const { return m_folder.filePath(QStringLiteral("holzliste_2026-11-21.zip")); }
    // One level below the temporary folder, so "../../x" would land in it, where the test looks.
    QString data() const { return m_folder.filePath(QStringLiteral("daten/")); }
    QString unpack() const { return appUnpackFolder(data()); }

private slots:
    void initTestCase() { QVERIFY(QDir().mkpath(data())); }

    void goodArchiveIsReadAndTheFolderCleared()
    {
        // A leftover of an earlier run is cleared first.
        QDir().mkpath(unpack());
        QFile stale(unpack() + QStringLiteral("/holzliste.csv"));
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.write("alt");
        stale.close();

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

    void notAnArchive()
    {
        QFile f(zipPath());
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("PK kein Archiv");
        f.close();
        QVERIFY(readAppArchive(zipPath(), data()).error.contains(QStringLiteral("kein gültiges ZIP-Archiv")));
        QVERIFY(readAppArchive(m_folder.filePath(QStringLiteral("fehlt.zip")), data()).error.contains(QStringLiteral("kein gültiges")));
    }
};

TARVIK_TEST_CORE_MAIN(TestAppArchive)
#include "tst_apparchive.moc"
