#include "reports/maplink.h"

#include "common/numbers.h"

#include <QStringList>

namespace tarvik {

QString mapRangeMessage()
{
    return QStringLiteral("Im aktuellen Los müssen die Breidegrade zwischen 40.000000 und 60.000000 und die Längengrade "
                          "zwischen 1.000000 und 25.000000 liegen (Bereich Deutschlang und Nachbarländer). Bitte tragen "
                          "Sie diese Daten korrekt im Los ein.");
}

MapLink mapLink(const QString& latitude, const QString& longitude, const QString& host)
{
    // The tolerant reader takes "50,5" and "50.5" alike; text and empty fields read as 0.
    const double lat = readNumber(latitude);
    const double lon = readNumber(longitude);
    if (!(lat >= 40.0 && lat <= 60.0 && lon >= 1.0 && lon <= 25.0))
        return {false, {}, mapRangeMessage()};
    const QString point = QStringLiteral("%1,%2").arg(QString::number(lat, 'f', 6), QString::number(lon, 'f', 6));
    const QStringList query{QStringLiteral("f=d"),     QStringLiteral("hl=de"),       QStringLiteral("geocode="),
                            QStringLiteral("saddr=") + point,         QStringLiteral("daddr="),      QStringLiteral("mra=mi"),
                            QStringLiteral("mrsp=0"),  QStringLiteral("sz=15"),       QStringLiteral("sll=") + point,
                            QStringLiteral("sspn=0.019719,0.057077"), QStringLiteral("ie=UTF8"), QStringLiteral("t=h"),
                            QStringLiteral("z=15")};
    QString base = host.trimmed().isEmpty() ? QString::fromLatin1(DefaultMapHost) : host.trimmed();
    if (!base.contains(QLatin1String("://")))
        base.prepend(QLatin1String("https://"));
    while (base.endsWith(u'/'))
        base.chop(1);
    return {true, QUrl(base + QStringLiteral("/maps?") + query.join(u'&')), {}};
}

} // namespace tarvik
