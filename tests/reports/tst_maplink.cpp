// The lot's map link and the lot places as GeoJSON and KML, read back.
#include "reports/lotplaces.h"
#include "reports/maplink.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>
#include <QXmlStreamReader>
#include <QtTest>

using namespace tarvik;

class TestMapLink : public QObject {
    Q_OBJECT

private slots:
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

TARVIK_TEST_CORE_MAIN(TestMapLink)
#include "tst_maplink.moc"
