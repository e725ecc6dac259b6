#pragma once
// Where the lots of a harvest lie, for the map dialog and as files that phone map apps and
// GIS programs open (GeoJSON and KML).
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <functional>

namespace tarvik {

struct LotPlace {
    qint32 losNr = 0;
    QString bezeichnung, lagerort, anfahrt, sortierung;
    QString gpsB, gpsL; // as stored: latitude, longitude
    double volume = 0;  // Efm of logs, or of stacked wood; 0 for poles
    qint32 poles = 0;
};

struct HarvestRow {
    qint32 hiebNr = 0;
    QString jahr, waldname, waldort;
    qint32 id = 0;
};

QList<HarvestRow> harvestsForMap(const QSqlDatabase& db);
QList<LotPlace> lotPlaces(const QSqlDatabase& db, qint32 harvestId);

// Only lots whose coordinates pass the map's range check are written; the count says how many.
struct GeoExport {
    QByteArray geoJson;
    QByteArray kml;
    int written = 0;
    int skipped = 0;
};
GeoExport exportLotPlaces(const QList<LotPlace>& lots, const QString& harvestTitle);

struct GeoFilesResult {
    bool ok = false;
    int written = 0, skipped = 0;
    QString message; // German: what was written, or why nothing was
};
// Writes "<base>.geojson" and "<base>.kml".
GeoFilesResult writeLotPlaceFiles(const QSqlDatabase& db, qint32 harvestId, const QString& basePath);
// The same, asking for the base path only when some lot has coordinates to write; an empty
// answer writes nothing and says nothing (message empty).
GeoFilesResult writeLotPlaceFiles(const QSqlDatabase& db, qint32 harvestId, const std::function<QString()>& chooseBasePath);

} // namespace tarvik
