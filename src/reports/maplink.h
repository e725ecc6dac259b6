#pragma once
// The web-map link of a lot: its coordinates checked against the region the program serves,
// then a route address on the map service with the aerial view.
#include <QString>
#include <QUrl>

namespace tarvik {

inline constexpr char DefaultMapHost[] = "https://maps.google.com";

struct MapLink {
    bool ok = false;
    QUrl url;
    QString message; // German, when the coordinates are out of range
};

// Latitude and longitude as typed or stored: decimal point or comma; empty reads as 0.
MapLink mapLink(const QString& latitude, const QString& longitude, const QString& host = QLatin1String(DefaultMapHost));

QString mapRangeMessage();

} // namespace tarvik
