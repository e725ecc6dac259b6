#include "reports/lotplaces.h"

#include "common/numbers.h"
#include "common/text.h"
#include "reports/maplink.h"
#include "store/sql.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSqlQuery>
#include <QXmlStreamWriter>

namespace tarvik {

QList<HarvestRow> harvestsForMap(const QSqlDatabase& db)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT Hieb_Nr, Jahr, Waldname, Waldort, ID FROM Hiebe ORDER BY Hieb_Nr"));
    QList<HarvestRow> rows;
    while (q.next())
        rows.append({q.value(0).toInt(), readText(q.value(1)), readText(q.value(2)), readText(q.value(3)), q.value(4).toInt()});
    return rows;
}

QList<LotPlace> lotPlaces(const QSqlDatabase& db, qint32 harvestId)
{
    QSqlQuery q = execSql(db,
                          QStringLiteral("SELECT Los_Nr, Los_Bezeichnung, Lagerort, GPS_L, GPS_B, Anfahrt, Sortierung, Efm_oR, "
                                         "Efm_Schichtholz, Anzahl_Pfähle FROM Lose WHERE Kennung = ? ORDER BY Los_Nr"),
                          {harvestId});
    QList<LotPlace> lots;
    while (q.next()) {
        LotPlace lot;
        lot.losNr = q.value(0).toInt();
        lot.bezeichnung = readText(q.value(1));
        lot.lagerort = readText(q.value(2));
        lot.gpsL = readText(q.value(3));
        lot.gpsB = readText(q.value(4));
        lot.anfahrt = readText(q.value(5));
        lot.sortierung = readText(q.value(6));
        lot.volume = readNumber(q.value(7)) + readNumber(q.value(8));
        lot.poles = q.value(9).toInt();
        lots.append(lot);
    }
    return lots;
}

namespace {

QString lotName(const LotPlace& lot)
{
    QString name = QStringLiteral("Los %1").arg(lot.losNr);
    if (!lot.bezeichnung.isEmpty())
        name += u' ' + lot.bezeichnung;
    return name;
}

QString volumeText(const LotPlace& lot)
{
    return lot.sortierung == u"Pfähle" ? QStringLiteral("%1 Stück").arg(lot.poles)
                                        : QStringLiteral("%1 Efm").arg(formatDecimal(lot.volume, 3));
}

} // namespace

GeoExport exportLotPlaces(const QList<LotPlace>& lots, const QString& harvestTitle)
{
    GeoExport out;
    QJsonArray features;
    QByteArray kmlBody;
    {
        // The writer hands its last bytes over when it is destroyed.
        QXmlStreamWriter kml(&kmlBody);
        kml.setAutoFormatting(true);
        kml.writeStartDocument();
        kml.writeStartElement(QStringLiteral("kml"));
        kml.writeDefaultNamespace(QStringLiteral("http://www.opengis.net/kml/2.2"));
        kml.writeStartElement(QStringLiteral("Document"));
        kml.writeTextElement(QStringLiteral("name"), harvestTitle);
        for (const LotPlace& lot : lots) {
            if (!mapLink(lot.gpsB, lot.gpsL).ok) {
                ++out.skipped;
                continue;
            }
            ++out.written;
            const double lat = readNumber(lot.gpsB), lon = readNumber(lot.gpsL);
            QJsonObject properties{{QStringLiteral("name"), lotName(lot)},
                                   {QStringLiteral("Los_Nr"), lot.losNr},
                                   {QStringLiteral("Lagerort"), lot.lagerort},
                                   {QStringLiteral("Anfahrt"), lot.anfahrt},
                                   {QStringLiteral("Sortierung"), lot.sortierung},
                                   {QStringLiteral("Menge"), volumeText(lot)}};
            features.append(QJsonObject{{QStringLiteral("type"), QStringLiteral("Feature")},
                                        {QStringLiteral("geometry"),
                                         QJsonObject{{QStringLiteral("type"), QStringLiteral("Point")},
                                                     {QStringLiteral("coordinates"), QJsonArray{lon, lat}}}},
                                        {QStringLiteral("properties"), properties}});
            kml.writeStartElement(QStringLiteral("Placemark"));
            kml.writeTextElement(QStringLiteral("name"), lotName(lot));
            kml.writeTextElement(QStringLiteral("description"),
                                 QStringLiteral("Lagerort: %1\nAnfahrt: %2\nSortierung: %3\nMenge: %4")
                                     .arg(lot.lagerort, lot.anfahrt, lot.sortierung, volumeText(lot)));
            kml.writeStartElement(QStringLiteral("ExtendedData"));
            for (auto it = properties.begin(); it != properties.end(); ++it) {
                kml.writeStartElement(QStringLiteral("Data"));
                kml.writeAttribute(QStringLiteral("name"), it.key());
                kml.writeTextElement(QStringLiteral("value"), it.value().isDouble() ? QString::number(it.value().toInt()) : it.value().toString());
                kml.writeEndElement();
            }
            kml.writeEndElement();
            kml.writeStartElement(QStringLiteral("Point"));
            kml.writeTextElement(QStringLiteral("coordinates"), QStringLiteral("%1,%2,0").arg(QString::number(lon, 'f', 6), QString::number(lat, 'f', 6)));
            kml.writeEndElement();
            kml.writeEndElement();
        }
        kml.writeEndElement();
        kml.writeEndElement();
        kml.writeEndDocument();
    }
    out.kml = kmlBody;
    out.geoJson = QJsonDocument(QJsonObject{{QStringLiteral("type"), QStringLiteral("FeatureCollection")},
                                            {QStringLiteral("name"), harvestTitle},
                                            {QStringLiteral("features"), features}})
                      .toJson(QJsonDocument::Indented);
    return out;
}

namespace {

bool writeWhole(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

} // namespace

GeoFilesResult writeLotPlaceFiles(const QSqlDatabase& db, qint32 harvestId, const QString& basePath)
{
    return writeLotPlaceFiles(db, harvestId, [&basePath] { return basePath; });
}

GeoFilesResult writeLotPlaceFiles(const QSqlDatabase& db, qint32 harvestId, const std::function<QString()>& chooseBasePath)
{
    const QVariant hiebNr = scalar(db, QStringLiteral("SELECT Hieb_Nr FROM Hiebe WHERE ID = ?"), {harvestId});
    const GeoExport geo = exportLotPlaces(lotPlaces(db, harvestId), QStringLiteral("Hieb %1").arg(hiebNr.toInt()));
    if (geo.written == 0)
        return {false, 0, geo.skipped,
                QStringLiteral("Keines der Lose dieses Hiebs hat gültige Koordinaten; es wurde keine Datei geschrieben.")};
    const QString basePath = chooseBasePath();
    if (basePath.isEmpty())
        return {false, 0, geo.skipped, {}};
    const QString json = basePath + QStringLiteral(".geojson"), kml = basePath + QStringLiteral(".kml");
    for (const auto& [path, bytes] : {std::pair{json, geo.geoJson}, std::pair{kml, geo.kml}})
        if (!writeWhole(path, bytes))
            return {false, 0, geo.skipped,
                    QStringLiteral("Die Datei %1 kann nicht geschrieben werden.").arg(QDir::toNativeSeparators(path))};
    QString message = QStringLiteral("%1 Lose mit Koordinaten wurden in die Dateien\n%2\n%3\ngeschrieben.")
                          .arg(geo.written)
                          .arg(QDir::toNativeSeparators(json), QDir::toNativeSeparators(kml));
    if (geo.skipped > 0)
        message += QStringLiteral("\n%1 Lose ohne gültige Koordinaten wurden übergangen.").arg(geo.skipped);
    return {true, geo.written, geo.skipped, message};
}

} // namespace tarvik
