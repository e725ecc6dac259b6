#include "devices/harvesterfile.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QXmlStreamReader>
#include <cmath>

namespace tarvik {
namespace {

const QString Namespace = QStringLiteral("urn:skogforsk:stanford2010");

struct Refusal {
    QString reason;
};

class Reader {
public:
    Reader(QIODevice& device, const QString& fileName) : m_xml(&device) { m_file.fileName = fileName; }

    HarvesterFile read()
    {
        readRoot();
        while (!m_xml.atEnd()) {
            m_xml.readNext();
            if (!m_xml.isStartElement())
                continue;
            const auto name = m_xml.name();
            if (name == u"SpeciesGroupDefinition")
                readSpeciesGroup();
            else if (name == u"ProductDefinition")
                readProduct();
            else if (name == u"Stem")
                readStem();
        }
        failOnXmlError();
        return std::move(m_file);
    }

private:
    QString place() const
    {
        if (m_stem.isEmpty())
            return m_lastStem.isEmpty() ? QString() : QStringLiteral(" (nach dem Baum Nr. %1)").arg(m_lastStem);
        return QStringLiteral(" beim Baum Nr. %1").arg(m_stem);
    }

    [[noreturn]] void refuse(const QString& reason) const { throw Refusal{reason}; }

    void failOnXmlError() const
    {
        if (!m_xml.hasError())
            return;
        if (m_xml.error() == QXmlStreamReader::PrematureEndOfDocumentError)
            refuse(m_stem.isEmpty() ? QStringLiteral("sie endet vorzeitig%1").arg(place())
                                    : QStringLiteral("sie endet mitten im Baum Nr. %1").arg(m_stem));
        refuse(QStringLiteral("sie ist keine gültige XML-Datei (Fehler in Zeile %1%2)").arg(m_xml.lineNumber()).arg(place()));
    }

    // Steps to the next child element of the current one; false at its end.
    bool nextChild()
    {
        if (!m_xml.readNextStartElement()) {
            failOnXmlError();
            return false;
        }
        return true;
    }

    QString text()
    {
        const QString t = m_xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
        failOnXmlError();
        return t;
    }

    double number(const QString& what)
    {
        const QString t = text();
        bool ok = false;
        const double v = t.toDouble(&ok);
        if (!ok || !std::isfinite(v))
            refuse(QStringLiteral("%1 \"%2\" ist keine Zahl%3").arg(what, t.left(20), place()));
        return v;
    }

    void skip()
    {
        m_xml.skipCurrentElement();
        failOnXmlError();
    }

    void readRoot()
    {
        if (!m_xml.readNextStartElement()) {
            failOnXmlError();
            refuse(QStringLiteral("sie enthält keine Daten"));
        }
        if (m_xml.name() != u"HarvestedProduction" || m_xml.namespaceUri() != Namespace)
            refuse(QStringLiteral("sie ist keine Produktionsdatei eines Harvesters (StanForD 2010, HarvestedProduction)"));
        const auto attributes = m_xml.attributes();
        m_file.version = attributes.value(QLatin1String("version")).toString().trimmed();
        if (!m_file.version.startsWith(u"2.") && !m_file.version.startsWith(u"3."))
            refuse(QStringLiteral("sie hat die StanForD-2010-Version \"%1\"; gelesen werden die Versionen 2.x und 3.x").arg(m_file.version));
        m_diameterToMm = unit(attributes.value(QLatin1String("diameterUnit")).toString(), {{"mm", 1.0}, {"cm", 10.0}}, 1.0, QStringLiteral("Durchmesser"));
        m_lengthToCm = unit(attributes.value(QLatin1String("lengthUnit")).toString(), {{"cm", 1.0}, {"mm", 0.1}, {"dm", 10.0}, {"m", 100.0}}, 1.0,
                            QStringLiteral("Längen"));
        m_volumeToM3 = unit(attributes.value(QLatin1String("volumeUnit")).toString(), {{"m3", 1.0}, {"dm3", 0.001}}, 1.0, QStringLiteral("Volumen"));
    }

    double unit(const QString& given, std::initializer_list<std::pair<const char*, double>> known, double fallback, const QString& what) const
    {
        if (given.trimmed().isEmpty())
            return fallback; // the standard's defaults: mm, cm, m³
        for (const auto& [name, factor] : known)
            if (given.trimmed() == QLatin1String(name))
                return factor;
        refuse(QStringLiteral("die Einheit der %1 \"%2\" ist unbekannt").arg(what, given));
    }

    int indexOf(QStringList& names, const QString& name)
    {
        qsizetype i = names.indexOf(name);
        if (i < 0) {
            names << name;
            i = names.size() - 1;
        }
        return int(i);
    }

    void readSpeciesGroup()
    {
        QString key, name;
        while (nextChild()) {
            if (m_xml.name() == u"SpeciesGroupKey")
                key = text();
            else if (m_xml.name() == u"SpeciesGroupName")
                name = text();
            else
                skip();
        }
        if (name.isEmpty())
            name = QStringLiteral("Baumartengruppe %1").arg(key);
        m_speciesByKey.insert(key, indexOf(m_file.speciesNames, name));
    }

    void readProduct()
    {
        QString key, name;
        while (nextChild()) {
            if (m_xml.name() == u"ProductKey") {
                key = text();
            } else if (m_xml.name() == u"ClassifiedProductDefinition" || m_xml.name() == u"UnclassifiedProductDefinition") {
                while (nextChild()) {
                    if (m_xml.name() == u"ProductName")
                        name = text();
                    else
                        skip();
                }
            } else {
                skip();
            }
        }
        if (name.isEmpty())
            name = QStringLiteral("Produkt %1").arg(key);
        m_productByKey.insert(key, indexOf(m_file.productNames, name));
    }

    int species(const QString& key)
    {
        const auto it = m_speciesByKey.constFind(key);
        if (it != m_speciesByKey.constEnd())
            return *it;
        const int i = indexOf(m_file.speciesNames, QStringLiteral("Baumartengruppe %1").arg(key));
        m_speciesByKey.insert(key, i);
        return i;
    }

    int product(const QString& key)
    {
        const auto it = m_productByKey.constFind(key);
        if (it != m_productByKey.constEnd())
            return *it;
        const int i = indexOf(m_file.productNames, QStringLiteral("Produkt %1").arg(key));
        m_productByKey.insert(key, i);
        return i;
    }

    void readStem()
    {
        ++m_file.stems;
        m_stem.clear();
        QString stemKey, speciesKey;
        std::optional<HarvesterFile::Position> position;
        m_stemLogs.clear();
        enum { Unknown, Single, Multi, Felled } kind = Unknown;
        double multiVolume = 0;
        while (nextChild()) {
            const auto name = m_xml.name();
            if (name == u"StemNumber") {
                m_stem = text();
            } else if (name == u"StemKey") {
                stemKey = text();
                if (m_stem.isEmpty())
                    m_stem = stemKey;
            } else if (name == u"SpeciesGroupKey") {
                speciesKey = text();
            } else if (name == u"StemCoordinates") {
                const auto p = readCoordinates();
                if (!position)
                    position = p;
            } else if (name == u"SingleTreeProcessedStem") {
                kind = Single;
                readLogs();
            } else if (name == u"MultiTreeProcessedStem") {
                kind = Multi;
                multiVolume = readMultiTreeVolume();
            } else if (name == u"SingleTreeFelledStem" || name == u"MultiTreeFelledStem") {
                kind = Felled;
                skip();
            } else {
                skip();
            }
        }
        bool ok = false;
        const qint64 stemNumber = m_stem.toLongLong(&ok);
        if (kind == Single && !ok)
            refuse(QStringLiteral("die Stammnummer \"%1\" ist keine ganze Zahl").arg(m_stem.left(20)));
        switch (kind) {
        case Single: {
            const int sp = species(speciesKey);
            for (HarvesterLog& log : m_stemLogs) {
                log.stemNumber = stemNumber;
                log.species = sp;
                m_file.logs.push_back(log);
            }
            if (position) {
                m_file.latitudeSum += position->latitude;
                m_file.longitudeSum += position->longitude;
                ++m_file.positions;
            }
            break;
        }
        case Multi:
            ++m_file.multiTreeStems;
            m_file.multiTreeVolume += multiVolume;
            break;
        case Felled:
        case Unknown:
            ++m_file.felledOnly;
            break;
        }
        m_lastStem = m_stem;
        m_stem.clear();
    }

    std::optional<HarvesterFile::Position> readCoordinates()
    {
        const QString system = m_xml.attributes().value(QLatin1String("coordinateReferenceSystem")).toString();
        std::optional<double> latitude, longitude;
        while (nextChild()) {
            if (m_xml.name() == u"Latitude") {
                const bool south = m_xml.attributes().value(QLatin1String("latitudeCategory")) == u"South";
                latitude = number(QStringLiteral("die Breite")) * (south ? -1 : 1);
            } else if (m_xml.name() == u"Longitude") {
                const bool west = m_xml.attributes().value(QLatin1String("longitudeCategory")) == u"West";
                longitude = number(QStringLiteral("die Länge")) * (west ? -1 : 1);
            } else {
                skip();
            }
        }
        if (!system.isEmpty() && system != u"WGS84")
            return std::nullopt;
        if (!latitude || !longitude || std::abs(*latitude) > 90 || std::abs(*longitude) > 180)
            return std::nullopt;
        return HarvesterFile::Position{*latitude, *longitude};
    }

    // The volumes of one log by category: under bark as measured, else as estimated, else the
    // price volume the machine's buyer agreed on.
    struct Volumes {
        std::optional<double> sub, subEstimated, price;
        double best() const { return sub.value_or(subEstimated.value_or(price.value_or(0))); }
    };

    void readVolume(Volumes& v)
    {
        const QString category = m_xml.attributes().value(QLatin1String("logVolumeCategory")).toString();
        const double value = number(QStringLiteral("das Volumen")) * m_volumeToM3;
        if (category == u"m3sub")
            v.sub = value;
        else if (category == u"m3subEstimated")
            v.subEstimated = value;
        else if (category == u"m3 (price)")
            v.price = value;
    }

    void readLogs()
    {
        while (nextChild()) {
            if (m_xml.name() != u"Log") {
                skip();
                continue;
            }
            HarvesterLog log;
            log.position = int(m_stemLogs.size()) + 1;
            Volumes volumes;
            std::optional<double> length, midOb, midUb, midHksUb;
            while (nextChild()) {
                const auto name = m_xml.name();
                if (name == u"ProductKey") {
                    log.product = product(text());
                } else if (name == u"LogVolume") {
                    readVolume(volumes);
                } else if (name == u"LogMeasurement") {
                    while (nextChild()) {
                        if (m_xml.name() == u"LogLength") {
                            const double v = number(QStringLiteral("die Länge")) * m_lengthToCm;
                            if (!length)
                                length = v;
                        } else if (m_xml.name() == u"LogDiameter") {
                            const QString category = m_xml.attributes().value(QLatin1String("logDiameterCategory")).toString();
                            const double v = number(QStringLiteral("der Durchmesser")) * m_diameterToMm;
                            std::optional<double>* slot = category == u"Mid ob"       ? &midOb
                                                          : category == u"Mid ub"     ? &midUb
                                                          : category == u"Mid HKS ub" ? &midHksUb
                                                                                      : nullptr;
                            if (slot && !*slot)
                                *slot = v;
                        } else {
                            skip();
                        }
                    }
                } else {
                    skip();
                }
            }
            if (!length || *length <= 0)
                refuse(QStringLiteral("dem %1. Stamm fehlt die Länge%2").arg(log.position).arg(place()));
            if (!midOb || *midOb <= 0)
                refuse(QStringLiteral("dem %1. Stamm fehlt der Durchmesser mit Rinde (Mid ob)%2").arg(log.position).arg(place()));
            if (log.product < 0)
                log.product = product(QString());
            log.lengthCm = *length;
            log.midOverBarkMm = *midOb;
            log.midUnderBarkMm = midHksUb.value_or(midUb.value_or(-1));
            log.machineVolume = volumes.best();
            m_stemLogs.push_back(log);
        }
    }

    double readMultiTreeVolume()
    {
        double sum = 0;
        while (nextChild()) {
            if (m_xml.name() != u"Log") {
                skip();
                continue;
            }
            ++m_file.multiTreeLogs;
            Volumes volumes;
            while (nextChild()) {
                if (m_xml.name() == u"LogVolume")
                    readVolume(volumes);
                else
                    skip();
            }
            sum += volumes.subEstimated.value_or(volumes.sub.value_or(volumes.price.value_or(0)));
        }
        return sum;
    }

    QXmlStreamReader m_xml;
    HarvesterFile m_file;
    QHash<QString, int> m_speciesByKey, m_productByKey;
    std::vector<HarvesterLog> m_stemLogs;
    QString m_stem, m_lastStem;
    double m_diameterToMm = 1, m_lengthToCm = 1, m_volumeToM3 = 1;
};

} // namespace

std::optional<HarvesterFile::Position> HarvesterFile::meanPosition() const
{
    if (positions == 0)
        return std::nullopt;
    return Position{latitudeSum / positions, longitudeSum / positions};
}

HarvesterRead readHarvesterFile(QIODevice& device, const QString& fileName)
{
    try {
        Reader reader(device, fileName);
        return {reader.read(), {}};
    } catch (const Refusal& r) {
        return {std::nullopt, QStringLiteral("Die Datei \"%1\" kann nicht eingelesen werden, %2. Es wurde nichts übernommen.")
                                  .arg(fileName, r.reason)};
    }
}

HarvesterRead readHarvesterFile(const QString& path)
{
    const QString name = QFileInfo(path).fileName();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {std::nullopt, QStringLiteral("Die Datei \"%1\" kann nicht gelesen werden.").arg(name)};
    return readHarvesterFile(file, name);
}

qint32 harvesterRunningNumber(const HarvesterLog& log)
{
    if (log.position < 1 || log.position > 9 || log.stemNumber < 0 || log.stemNumber > 99999)
        return 0;
    return qint32(log.stemNumber * 10 + log.position);
}

} // namespace tarvik
