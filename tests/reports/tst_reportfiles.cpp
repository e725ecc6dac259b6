// The report files of a harvest: the timber list against checked-in golden files, byte for
// byte (Windows-1252, CR LF); the lot's map link and the lot places as GeoJSON and KML, read back.
#include "common/textfile.h"
#include "reports/lotplaces.h"
#include "reports/maplink.h"
#include "reports/timberlist.h"
#include "store/sql.h"
#include "store/totals.h"
#include "support/records.h"
#include "support/reportsfixture.h"
#include "support/tempdatafolder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QXmlStreamReader>

using namespace tarvik;

namespace {

void run(const QSqlDatabase& db, const char* sql) { execSql(db, QString::fromUtf8(sql)); }

// Several log lots (mixed species, qualities and classes, one whose logs all have 0 Efm), a
// pole lot and a stacked-wood lot.
qint32 fullHarvest(const QSqlDatabase& db)
{
    run(db, "INSERT INTO Hiebe(Hieb_Nr, Jahr, Waldname, Waldort, Hiebfläche, Hiebgrund, Hiebart, Hiebdatum_von, Hiebdatum_bis, "
            "Teilverkauft, Verkauft, Waldbesitzer_Name, Bemerkung, Harvester) VALUES (41, '2026', 'O''Briens Wald', 'Überlingen', "
            "1.25, 'Sturm', 'Durchforstung', '2026-03-01', '2026-03-05', 'N', 'N', 'Anna Müller', 'Nordhang', '')");
    const qint32 id = scalar(db, QStringLiteral("SELECT max(ID) FROM Hiebe")).toInt();
    execSql(db, QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Los_Bezeichnung, Lagerort, Preis_Art, Abgerechnet, Kennung) VALUES "
                               "(1, 'Stämme', 'Fichte lang', 'Weg 7', 0, 'N', ?1), (2, 'Stämme', 'Bruch', '', 0, 'N', ?1), "
                               "(3, 'Pfähle', 'Zaun', 'Hof', 0, 'N', ?1), (4, 'Schichtholz', 'Brennholz', 'Weg 7', 0, 'N', ?1)")
                    .replace(QStringLiteral("?1"), QString::number(id)));
    execSql(db, QStringLiteral(
        "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, Stärke_oR, Länge_m, Efm_oR, "
        "Stärkeklasse, Güteklasse, Holzpreis, Preis_berechnet, Kennung) VALUES "
        "(1, 1, 'FI (Fichte)', 35, 'T', 2, 33, 4.5, 0.385, 'L3a', 'B', 8.855, 8.855, ?1), "
        "(1, 2, 'FI (Fichte)', 55, 'T', 3, 52, 10, 2.124, 'L5', 'B', 55.224, 55.224, ?1), "
        "(1, 3, 'FI (Fichte)', 28, 'T', 2, 26, 12.5, 0.664, 'L2b', 'C', 11.288, 11.288, ?1), "
        "(1, 4, 'BU (Rotbuche)', 45, 'T', 2, 43, 6, 0.871, 'L4', 'A', 30.485, 30.485, ?1), "
        "(1, 5, 'XY (Weißtanne Ostalbk)', 30, 'O', 0, 30, 4, 0.283, 'L3a', NULL, NULL, NULL, ?1), "
        "(2, 6, 'KI (Kiefer)', 0, 'O', 0, 0, 3, 0, 'L0', 'D', 0, 0, ?1), "
        "(2, 7, 'KI (Kiefer)', 0, 'O', 0, 0, 3, 0, 'L0', 'D', 0, 0, ?1)").replace(QStringLiteral("?1"), QString::number(id)));
    execSql(db, QStringLiteral(
        "INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Stärkeklasse, Anzahl, Preis_je_Stück, Preis_berechnet, Kennung) VALUES "
        "(3, 'FI (Fichte)', 8, 8, 'P2.11', 10, 2.5, 25, ?1), (3, 'FI (Fichte)', 12, 14, 'P2.32', 4, 6, 24, ?1), "
        "(3, 'LA (Lärche)', 8, 8, 'P2.11', 25, 2.5, 62.5, ?1)").replace(QStringLiteral("?1"), QString::number(id)));
    execSql(db, QStringLiteral(
        "INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Stärke, Sektionslänge_m, Sektionstiefe_m, Sektionshöhe_m, Stärkeklasse, "
        "m3, Efm, Preis_je_Ster, Preis_berechnet, Kennung) VALUES "
        "(4, 'BU (Rotbuche)', 1, 8, 10, 2, 1.5, 'S2.1', 30, 19.5, 12.5, 375, ?1), "
        "(4, 'BU (Rotbuche)', 2, 15, 4, 1, 1.2, 'S3.1', 4.8, 3.36, 0, 0, ?1)").replace(QStringLiteral("?1"), QString::number(id)));
    recomputeTotals(db, id);
    return id;
}

qint32 logsOnly(const QSqlDatabase& db)
{
    const qint32 id = test::addHarvest(db, 42);
    test::addLot(db, id, 1);
    execSql(db, QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Länge_m, Efm_oR, Stärkeklasse, "
                               "Güteklasse, Kennung) VALUES (1, 1, 'EI (Eiche)', 62, 8.2, 2.311, 'L6', 'A', ?)"), {id});
    recomputeTotals(db, id);
    return id;
}

} // namespace

class TestReportFiles : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_db = m_folder.openDatabase();

    // The lines as the program writes them, against the golden file.
    void compareWithGolden(const QStringList& lines, const QString& name)
    {
        const QString written = m_folder.filePath(name);
        QVERIFY(writeTextFile(written, lines).ok);
        test::compareWithGolden(written, name);
    }

private slots:
    void fullHarvestMatchesItsGoldenFile()
    {
        compareWithGolden(timberList(m_db->shared(), fullHarvest(m_db->shared())), QStringLiteral("holzliste_voll.txt"));
    }

    // The pole and stacked-wood blocks stand there although empty.
    void harvestWithoutPolesAndStacks()
    {
        compareWithGolden(timberList(m_db->shared(), logsOnly(m_db->shared())), QStringLiteral("holzliste_nur_staemme.txt"));
    }

    // Line breaks and tabs typed into texts become blanks: the report keeps its lines.
    void textsCannotBreakTheLines()
    {
        const QSqlDatabase db = m_db->shared();
        const qint32 id = fullHarvest(db);
        const int plain = int(timberList(db, id).size());
        execSql(db, QStringLiteral("UPDATE Hiebe SET Waldname = ?, Bemerkung = ?, Harvester = ? WHERE ID = ?"),
                {QStringLiteral("Ober\r\nwald"), QStringLiteral("Nord\nhang\tmit Graben"), QStringLiteral("Zeile 1\r\nZeile 2\rZeile 3"), id});
        execSql(db, QStringLiteral("UPDATE Lose SET Los_Bezeichnung = ?, Lagerort = ? WHERE Kennung = ? AND Los_Nr = 1"),
                {QStringLiteral("Fichte\nlang"), QStringLiteral("Weg\r7\tam Bach"), id});
        const QStringList lines = timberList(db, id);
        QCOMPARE(lines.size(), plain + 1); // the harvester text now has its line
        for (const QString& line : lines)
            QVERIFY2(!line.contains(u'\r') && !line.contains(u'\n') && !line.contains(u'\t'), qPrintable(line));
        for (const char* joined : {"Waldname:        Ober wald", "Nord hang mit Graben", "Zeile 1 Zeile 2 Zeile 3",
                                   "     1       5    4,327   105,85  Fichte lang      Weg 7 am Bach"})
            QVERIFY2(lines.contains(QString::fromUtf8(joined)), joined);
    }

    void bounds_data()
    {
        QTest::addColumn<QString>("lat");
        QTest::addColumn<QString>("lon");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("lower corner") << "40" << "1" << true;
        QTest::newRow("upper corner") << "60.000000" << "25" << true;
        QTest::newRow("decimal comma") << "50,123456" << "9,5" << true;
        QTest::newRow("latitude just below") << "39.999999" << "10" << false;
        QTest::newRow("longitude just above") << "50" << "25.000001" << false;
        QTest::newRow("empty") << "" << "" << false;
        QTest::newRow("text") << "Nord" << "Ost" << false;
        QTest::newRow("swapped") << "9.5" << "50.1" << false;
    }
    void bounds()
    {
        QFETCH(QString, lat);
        QFETCH(QString, lon);
        QFETCH(bool, accepted);
        const MapLink link = mapLink(lat, lon);
        QCOMPARE(link.ok, accepted);
        QCOMPARE(link.message.isEmpty(), accepted);
        if (!accepted)
            QVERIFY(link.message.startsWith(QStringLiteral("Im aktuellen Los müssen die Breidegrade zwischen 40.000000 und 60.000000")));
    }

    void queryInItsOrder()
    {
        const MapLink link = mapLink(QStringLiteral("50,5"), QStringLiteral("9.25"), QStringLiteral("karten.example/"));
        QVERIFY(link.ok);
        QCOMPARE(link.url.toString(),
                 QStringLiteral("https://karten.example/maps?f=d&hl=de&geocode=&saddr=50.500000,9.250000&daddr=&mra=mi&mrsp=0&sz=15"
                                "&sll=50.500000,9.250000&sspn=0.019719,0.057077&ie=UTF8&t=h&z=15"));
        QCOMPARE(mapLink(QStringLiteral("50"), QStringLiteral("9")).url.host(), QStringLiteral("maps.google.com"));
    }

    void geoJsonAndKmlOfAHarvest()
    {
        test::TempDataFolder dir;
        auto db = dir.openDatabase();
        const qint32 harvest = test::addHarvest(db->shared(), 7);
        test::addLot(db->shared(), harvest, 1);
        test::addLot(db->shared(), harvest, 2);
        test::addLot(db->shared(), harvest, 3);
        execSql(db->shared(), QStringLiteral("UPDATE Lose SET GPS_B = '50,1234', GPS_L = '9.5', Lagerort = 'Am \"Weg\" <Süd>', "
                                             "Anfahrt = 'über B27', Efm_oR = 12.5 WHERE Los_Nr = 1"));
        execSql(db->shared(), QStringLiteral("UPDATE Lose SET GPS_B = '48.0', GPS_L = '11.25', Lagerort = 'Nord' WHERE Los_Nr = 2"));
        execSql(db->shared(), QStringLiteral("UPDATE Lose SET GPS_B = '', GPS_L = '' WHERE Los_Nr = 3"));
        const GeoFilesResult result = writeLotPlaceFiles(db->shared(), harvest, dir.filePath(QStringLiteral("lose")));
        QVERIFY2(result.ok, qPrintable(result.message));
        QCOMPARE(result.written, 2);
        QCOMPARE(result.skipped, 1);

        QFile json(dir.filePath(QStringLiteral("lose.geojson")));
        QVERIFY(json.open(QIODevice::ReadOnly));
        QJsonParseError error;
        const QJsonArray features = QJsonDocument::fromJson(json.readAll(), &error).object().value(QStringLiteral("features")).toArray();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(features.size(), 2);
        const QJsonObject first = features[0].toObject();
        QCOMPARE(first[QStringLiteral("geometry")].toObject()[QStringLiteral("coordinates")].toArray(), (QJsonArray{9.5, 50.1234}));
        QCOMPARE(first[QStringLiteral("properties")].toObject()[QStringLiteral("Lagerort")].toString(), QStringLiteral("Am \"Weg\" <Süd>"));
        QCOMPARE(first[QStringLiteral("properties")].toObject()[QStringLiteral("Menge")].toString(), QStringLiteral("12,500 Efm"));

        QFile kml(dir.filePath(QStringLiteral("lose.kml")));
        QVERIFY(kml.open(QIODevice::ReadOnly));
        const QByteArray kmlText = kml.readAll();
        QXmlStreamReader xml(kmlText);
        QStringList coordinates, names;
        while (xml.readNext() != QXmlStreamReader::EndDocument && !xml.hasError()) {
            if (xml.isStartElement() && xml.name() == u"coordinates")
                coordinates << xml.readElementText();
            else if (xml.isStartElement() && xml.name() == u"name")
                names << xml.readElementText();
        }
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        QCOMPARE(coordinates, (QStringList{QStringLiteral("9.500000,50.123400,0"), QStringLiteral("11.250000,48.000000,0")}));
        QCOMPARE(names, (QStringList{QStringLiteral("Hieb 7"), QStringLiteral("Los 1"), QStringLiteral("Los 2")}));

        // No lot with valid coordinates: no file at all.
        const qint32 bare = test::addHarvest(db->shared(), 8);
        test::addLot(db->shared(), bare, 1);
        QVERIFY(!writeLotPlaceFiles(db->shared(), bare, dir.filePath(QStringLiteral("leer"))).ok);
        QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("leer.geojson"))));
    }
};

TARVIK_TEST_CORE_MAIN(TestReportFiles)
#include "tst_reportfiles.moc"
