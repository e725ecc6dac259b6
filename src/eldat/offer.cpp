#include "eldat/offer.h"
#include "common/systemerror.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/text.h"
#include "eldat/codes.h"
#include "eldat/sender.h"
#include "reports/maplink.h"
#include "store/sql.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QSaveFile>
#include <QSqlQuery>
#include <QUuid>
#include <cmath>

namespace tarvik::eldat {
namespace {

// The standard types lengths and diameters as numbers up to 255, a pile's mean length up to 20 m.
constexpr double MaxMeasure = 255;
constexpr double MaxMeanLength = 20;

double rounded(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

QString uuid() { return QUuid::createUuid().toString(QUuid::WithoutBraces); }

// Date and time with the offset from UTC, as the standard's date-time fields expect them.
QString dateTimeText(const QDateTime& local) { return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODate); }

QJsonArray woodId(const char* type, qint32 number)
{
    return {QJsonObject{{QStringLiteral("wood_id_type"), QString::fromLatin1(type)},
                        {QStringLiteral("wood_id_no"), QString::number(number)}}};
}

struct LogRow {
    qint32 runningNr = 0;
    QString species, diameterClass, quality;
    int diameter = 0;
    double length = 0, volume = 0;
    bool beetle = false;
};

struct PoleRow {
    QString species;
    int diameter = 0;
    double length = 0;
    qint32 count = 0;
};

struct SectionRow {
    qint32 sectionNr = 0;
    QString species;
    double length = 0, depth = 0, height = 0, stacked = 0, solid = 0;
};

struct Lot {
    qint32 losNr = 0;
    QString sorting, label, place, directions, gpsB, gpsL, quality, remark;
    double fixedLength = 0;
    qint32 logCount = 0, poleCount = 0;
    double efm = 0, stackedM3 = 0, stackedEfm = 0;
    QList<LogRow> logs;
    QList<PoleRow> poles;
    QList<SectionRow> sections;
    bool empty() const
    {
        qint64 poleRows = 0;
        for (const PoleRow& p : poles)
            poleRows += p.count;
        return logs.isEmpty() && sections.isEmpty() && poleRows <= 0;
    }
};

std::optional<Lot> readLot(const QSqlDatabase& db, qint32 harvestId, qint32 losNr)
{
    QSqlQuery q = execSql(db,
                          QStringLiteral("SELECT Sortierung, Los_Bezeichnung, Lagerort, Anfahrt, GPS_B, GPS_L, Qualität, "
                                         "Bemerkung, Fixlänge, Anzahl_Stämme, Efm_oR, Anzahl_Pfähle, m3_Schichtholz, "
                                         "Efm_Schichtholz FROM Lose WHERE Kennung = ? AND Los_Nr = ? ORDER BY ID LIMIT 1"),
                          {harvestId, losNr});
    if (!q.next())
        return std::nullopt;
    Lot lot;
    lot.losNr = losNr;
    lot.sorting = readText(q.value(0));
    lot.label = readText(q.value(1));
    lot.place = readText(q.value(2));
    lot.directions = readText(q.value(3));
    lot.gpsB = readText(q.value(4));
    lot.gpsL = readText(q.value(5));
    lot.quality = readText(q.value(6));
    lot.remark = readText(q.value(7));
    lot.fixedLength = readNumber(q.value(8));
    lot.logCount = q.value(9).toInt();
    lot.efm = readNumber(q.value(10));
    lot.poleCount = q.value(11).toInt();
    lot.stackedM3 = readNumber(q.value(12));
    lot.stackedEfm = readNumber(q.value(13));

    // A lot holds one assortment; its rows are read from that table only.
    if (lot.sorting == u"Stämme") {
        QSqlQuery l = execSql(db,
                              QStringLiteral("SELECT Laufende_Nr, Baumart, Stärke_oR, Stärke_gemessen, Länge_m, Efm_oR, "
                                             "Stärkeklasse, Güteklasse, Käferholz FROM Stämme WHERE Kennung = ? AND "
                                             "Los_Nr = ? ORDER BY Laufende_Nr, ID"),
                              {harvestId, losNr});
        while (l.next()) {
            LogRow r;
            r.runningNr = l.value(0).toInt();
            r.species = readText(l.value(1));
            r.diameter = l.value(2).toInt() > 0 ? l.value(2).toInt() : l.value(3).toInt();
            r.length = readNumber(l.value(4));
            r.volume = readNumber(l.value(5));
            r.diameterClass = readText(l.value(6));
            r.quality = readText(l.value(7));
            r.beetle = l.value(8).toInt() != 0;
            lot.logs << r;
        }
    } else if (lot.sorting == u"Pfähle") {
        QSqlQuery p = execSql(db,
                              QStringLiteral("SELECT Baumart, Stärke_mR, Länge_m, Anzahl FROM Pfähle WHERE Kennung = ? "
                                             "AND Los_Nr = ? ORDER BY ID"),
                              {harvestId, losNr});
        while (p.next())
            lot.poles << PoleRow{readText(p.value(0)), p.value(1).toInt(), readNumber(p.value(2)), p.value(3).toInt()};
    } else if (lot.sorting == u"Schichtholz") {
        QSqlQuery s = execSql(db,
                              QStringLiteral("SELECT Sektions_Nr, Baumart, Sektionslänge_m, Sektionstiefe_m, "
                                             "Sektionshöhe_m, m3, Efm FROM Schichtholz WHERE Kennung = ? AND Los_Nr = ? "
                                             "ORDER BY Sektions_Nr, ID"),
                              {harvestId, losNr});
        while (s.next())
            lot.sections << SectionRow{s.value(0).toInt(),      readText(s.value(1)),   readNumber(s.value(2)),
                                       readNumber(s.value(3)),  readNumber(s.value(4)), readNumber(s.value(5)),
                                       readNumber(s.value(6))};
    }
    return lot;
}

struct Harvest {
    qint32 hiebNr = 0;
    QDate felled;
};

std::optional<Harvest> readHarvest(const QSqlDatabase& db, qint32 harvestId)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT Hieb_Nr, Hiebdatum_von, Hiebdatum_bis FROM Hiebe WHERE ID = ?"), {harvestId});
    if (!q.next())
        return std::nullopt;
    // The wood lies ready once the harvest is over: its last day, else its first.
    QDate felled = parseGermanDate(germanDateFromSql(q.value(2)));
    if (!felled.isValid())
        felled = parseGermanDate(germanDateFromSql(q.value(1)));
    return Harvest{q.value(0).toInt(), felled};
}

// The lot's point in WGS84 when it passes the program's range check.
std::optional<QJsonObject> lotPoint(const Lot& lot)
{
    if (!mapLink(lot.gpsB, lot.gpsL).ok)
        return std::nullopt;
    return QJsonObject{{QStringLiteral("latitude"), rounded(readNumber(lot.gpsB), 6)},
                       {QStringLiteral("longitude"), rounded(readNumber(lot.gpsL), 6)},
                       {QStringLiteral("crs"), QStringLiteral("WGS84")}};
}

QJsonObject qualityShare(const QString& qualityClass, double percent)
{
    QJsonObject q{{QStringLiteral("qual_rat"), rounded(percent, 1)}};
    if (const auto code = qualityCode(qualityClass)) {
        q.insert(QStringLiteral("qual_type"), *code);
    } else {
        q.insert(QStringLiteral("qual_type"), QStringLiteral("o"));
        q.insert(QStringLiteral("other_qual_type"), qualityClass.left(20));
    }
    return q;
}

// The shares of the quality classes in the lot's volume (by count while no log has a volume).
QJsonArray logQualities(const Lot& lot)
{
    QMap<QString, double> weight;
    double total = 0;
    for (const LogRow& r : lot.logs)
        total += r.volume;
    for (const LogRow& r : lot.logs)
        weight[r.quality] += total > 0 ? r.volume : 1.0;
    const double sum = total > 0 ? total : double(lot.logs.size());
    QJsonArray out;
    for (auto it = weight.cbegin(); it != weight.cend(); ++it)
        out << qualityShare(it.key(), 100.0 * it.value() / sum);
    return out;
}

QJsonObject singleLogMeasurement(const Lot& lot)
{
    QJsonArray logs;
    for (const LogRow& r : lot.logs) {
        QJsonObject log{{QStringLiteral("stam_id"), QString::number(r.runningNr)},
                        {QStringLiteral("species"), speciesCode(r.species).value_or(QString())},
                        {QStringLiteral("stem_length"), rounded(r.length, 2)},
                        {QStringLiteral("diameter"), r.diameter}};
        if (const auto d = diameterClassCode(r.diameterClass))
            log.insert(QStringLiteral("thickness_class"), *d);
        QJsonObject quality;
        if (const auto q = qualityCode(r.quality))
            quality.insert(QStringLiteral("qual_type"), *q);
        else if (!r.quality.isEmpty())
            quality.insert(QStringLiteral("other_qual_type"), r.quality.left(20));
        if (r.beetle)
            quality.insert(QStringLiteral("quality_attribute"), QStringLiteral("bk"));
        if (!quality.isEmpty())
            log.insert(QStringLiteral("quality_definition"), quality);
        logs << log;
    }
    return {{QStringLiteral("measurement_type_single_log"), QJsonObject{{QStringLiteral("log"), logs}}}};
}

// Poles are counted by group; each pole of a group becomes one entry with the group's measures.
QJsonObject poleMeasurement(const Lot& lot)
{
    QJsonArray logs;
    int number = 0;
    for (const PoleRow& r : lot.poles)
        for (qint32 i = 0; i < r.count; ++i)
            logs << QJsonObject{{QStringLiteral("stam_id"), QString::number(++number)},
                                {QStringLiteral("species"), speciesCode(r.species).value_or(QString())},
                                {QStringLiteral("stem_length"), rounded(r.length, 2)},
                                {QStringLiteral("diameter"), r.diameter}};
    return {{QStringLiteral("measurement_type_single_log"), QJsonObject{{QStringLiteral("log"), logs}}}};
}

// The length of the stacked pieces (the sections' depth): one figure for the pile, weighted by
// the stacked volume when the sections differ.
double pieceLength(const Lot& lot)
{
    double weighted = 0, volume = 0, plain = 0;
    for (const SectionRow& s : lot.sections) {
        weighted += s.depth * s.stacked;
        volume += s.stacked;
        plain += s.depth;
    }
    return volume > 0 ? weighted / volume : plain / double(lot.sections.size());
}

QJsonObject sectionalMeasurement(const Lot& lot)
{
    QMap<QString, std::pair<double, double>> bySpecies; // stacked, solid
    double stacked = 0;
    QJsonArray heights;
    for (const SectionRow& s : lot.sections) {
        bySpecies[s.species].first += s.stacked;
        bySpecies[s.species].second += s.solid;
        stacked += s.stacked;
        heights << rounded(s.height, 2);
    }
    QJsonArray estimate;
    for (auto it = bySpecies.cbegin(); it != bySpecies.cend(); ++it) {
        const double share = stacked > 0 ? 100.0 * it->first / stacked : 100.0 / double(bySpecies.size());
        QJsonObject e{{QStringLiteral("species"), speciesCode(it.key()).value_or(QString())},
                      {QStringLiteral("species_quality"), rounded(share, 1)}};
        if (it->first > 0)
            e.insert(QStringLiteral("conversion_factor_qm"), rounded(it->second / it->first, 3));
        estimate << e;
    }
    return {{QStringLiteral("measurement_type_sectional"),
             QJsonObject{{QStringLiteral("estimate"), estimate},
                         {QStringLiteral("count"), int(lot.sections.size())},
                         {QStringLiteral("sort_length"), rounded(pieceLength(lot), 2)},
                         {QStringLiteral("sample"), heights}}}};
}

double meanLength(const Lot& lot)
{
    double sum = 0, n = 0;
    for (const LogRow& r : lot.logs)
        sum += r.length, n += 1;
    for (const PoleRow& r : lot.poles)
        sum += r.length * r.count, n += r.count;
    if (!lot.sections.isEmpty())
        return pieceLength(lot);
    return n > 0 ? sum / n : 0;
}

QString pileText(const Lot& lot, bool withPoint)
{
    QStringList parts;
    auto add = [&](const char* caption, const QString& value) {
        if (!value.isEmpty())
            parts << QString::fromUtf8(caption) + QStringLiteral(": ") + singleLine(value);
    };
    add("Bezeichnung", lot.label);
    add("Lagerort", lot.place);
    add("Anfahrt", lot.directions);
    add("Qualität", lot.quality);
    add("Bemerkung", lot.remark);
    if (!withPoint)
        parts << QStringLiteral("ohne gültige GPS-Position");
    return parts.join(QStringLiteral("; ")).left(255);
}

QJsonObject pile(const Lot& lot, const AssortmentCodes& codes, const std::optional<QJsonObject>& point)
{
    QJsonObject amount{{QStringLiteral("amount_unit"), codes.unit}};
    QJsonArray quality;
    QJsonObject measured;
    if (lot.sorting == u"Stämme") {
        amount.insert(QStringLiteral("amount_value"), rounded(lot.efm, 3));
        quality = logQualities(lot);
        measured = singleLogMeasurement(lot);
    } else if (lot.sorting == u"Pfähle") {
        amount.insert(QStringLiteral("amount_value"), lot.poleCount);
        quality << QJsonObject{{QStringLiteral("qual_type"), QStringLiteral("oa")}, {QStringLiteral("qual_rat"), 100}};
        measured = poleMeasurement(lot);
    } else {
        amount.insert(QStringLiteral("amount_value"), rounded(lot.stackedM3, 3));
        if (lot.stackedM3 > 0)
            amount.insert(QStringLiteral("conversion_factor_qm"), rounded(lot.stackedEfm / lot.stackedM3, 3));
        quality << QJsonObject{{QStringLiteral("qual_type"), QStringLiteral("oa")}, {QStringLiteral("qual_rat"), 100}};
        measured = sectionalMeasurement(lot);
    }

    QJsonObject product{{QStringLiteral("wood_id"), woodId("los", lot.losNr)},
                        {QStringLiteral("quality"), quality},
                        {QStringLiteral("grade"), codes.grade},
                        {QStringLiteral("use"), codes.use},
                        {QStringLiteral("amount"), amount}};
    const double length = rounded(meanLength(lot), 2);
    if (length > 0 && length <= MaxMeanLength)
        product.insert(QStringLiteral("mean_length"), length);
    const QString text = pileText(lot, point.has_value());
    if (!text.isEmpty())
        product.insert(QStringLiteral("all_wood_text"), text);
    // Every pile must carry a point; a lot without a valid one gets the agreed "no position"
    // point 0/0, which no forest in the program's region can have, and says so in its text.
    product.insert(QStringLiteral("coordinate"),
                   point.value_or(QJsonObject{{QStringLiteral("latitude"), 0}, {QStringLiteral("longitude"), 0},
                                              {QStringLiteral("crs"), QStringLiteral("WGS84")}}));

    return {{QStringLiteral("wood_id"), woodId("los", lot.losNr)},
            {QStringLiteral("business_transaction"), QStringLiteral("VWa")},
            {QStringLiteral("forest_measured"), measured},
            {QStringLiteral("product_data"), QJsonArray{product}}};
}

QJsonObject supplier(const Sender& s)
{
    QJsonObject contact{{QStringLiteral("role_contact"), QStringLiteral("Verkauf")},
                        {QStringLiteral("contact_surname"), s.surname},
                        {QStringLiteral("contact_telephone"), QJsonArray{s.phone}},
                        {QStringLiteral("contact_email"), s.email}};
    if (!s.firstName.isEmpty())
        contact.insert(QStringLiteral("contact_name"), s.firstName);
    return {{QStringLiteral("business"),
             QJsonObject{{QStringLiteral("business_data"),
                          QJsonObject{{QStringLiteral("name"), s.name},
                                      {QStringLiteral("street"), s.street},
                                      {QStringLiteral("postcode"), s.postcode},
                                      {QStringLiteral("city"), s.city},
                                      {QStringLiteral("state"), s.state}}}}},
            {QStringLiteral("contact"), QJsonArray{contact}}};
}

QString lotList(const QList<qint32>& numbers)
{
    QStringList parts;
    for (qint32 n : numbers)
        parts << QString::number(n);
    return parts.join(QStringLiteral(", "));
}

} // namespace

bool isDocType(const QString& code) { return code == u"ang" || code == u"hba" || code == u"abf"; }

QList<qint32> lotNumbersOf(const QSqlDatabase& db, const QList<qint32>& lotIds)
{
    QList<qint32> numbers;
    for (qint32 id : lotIds) {
        const QVariant n = scalar(db, QStringLiteral("SELECT Los_Nr FROM Lose WHERE ID = ?"), {id});
        if (n.isValid() && !numbers.contains(n.toInt()))
            numbers << n.toInt();
    }
    return numbers;
}

QString proposedFileName(const QSqlDatabase& db, qint32 harvestId, const QList<qint32>& lotNumbers)
{
    const qint32 hiebNr = scalar(db, QStringLiteral("SELECT Hieb_Nr FROM Hiebe WHERE ID = ?"), {harvestId}).toInt();
    QStringList lots;
    for (qint32 n : lotNumbers)
        lots << QString::number(n);
    return QStringLiteral("Hieb_%1_%2_%3%4")
        .arg(hiebNr)
        .arg(lotNumbers.size() == 1 ? QStringLiteral("Los") : QStringLiteral("Lose"), lots.join(u'_'),
             QString::fromLatin1(FileSuffix));
}

std::optional<OfferOutcome> writeOffer(const AppContext& context, const OfferRequest& request)
{
    const QSqlDatabase& db = context.db;
    QStringList reasons;
    const std::optional<Harvest> harvest = readHarvest(db, request.harvestId);
    if (!harvest)
        reasons << QStringLiteral("...der Hieb nicht (mehr) existiert.");
    else if (!harvest->felled.isValid())
        reasons << QStringLiteral("...im Hieb %1 kein Hiebdatum eingetragen ist.").arg(harvest->hiebNr);
    if (request.lotNumbers.isEmpty())
        reasons << QStringLiteral("...kein Los markiert ist.");
    if (request.filePath.trimmed().isEmpty() && !request.chooseFilePath)
        reasons << QStringLiteral("...kein Dateiname angegeben ist.");
    if (!isDocType(request.docType))
        reasons << QStringLiteral("...die Dokumentart \"%1\" unbekannt ist (ang, hba oder abf).").arg(request.docType);

    QList<Lot> lots;
    QStringList unknownSpecies;
    QList<qint32> seen;
    for (qint32 losNr : request.lotNumbers) {
        if (!harvest)
            break;
        if (seen.contains(losNr)) // a lot is one pile, however often it is named
            continue;
        seen << losNr;
        const std::optional<Lot> lot = readLot(db, request.harvestId, losNr);
        if (!lot) {
            reasons << QStringLiteral("...das Los %1 im Hieb %2 nicht existiert.").arg(losNr).arg(harvest->hiebNr);
            continue;
        }
        if (!assortmentCodes(lot->sorting, false)) {
            reasons << QStringLiteral("...das Los %1 keine Sortierung (Stämme, Pfähle, Schichtholz) hat.").arg(losNr);
            continue;
        }
        if (lot->empty()) {
            reasons << QStringLiteral("...das Los %1 weder Stämme noch Pfähle noch Schichtholz enthält.").arg(losNr);
            continue;
        }
        QStringList species;
        bool tooLarge = false;
        for (const LogRow& r : lot->logs) {
            species << r.species;
            tooLarge = tooLarge || r.diameter > MaxMeasure || r.length > MaxMeasure;
        }
        for (const PoleRow& r : lot->poles) {
            species << r.species;
            tooLarge = tooLarge || r.diameter > MaxMeasure || r.length > MaxMeasure;
        }
        for (const SectionRow& r : lot->sections)
            species << r.species;
        for (const QString& s : species)
            if (!speciesCode(s) && !unknownSpecies.contains(s))
                unknownSpecies << s;
        if (tooLarge)
            reasons << QStringLiteral("...im Los %1 ein Durchmesser über 255 cm oder eine Länge über 255 m steht.").arg(losNr);
        lots << *lot;
    }
    for (const QString& s : unknownSpecies)
        reasons << (s.isEmpty() ? QStringLiteral("...ein Eintrag keine Baumart hat.")
                                : QStringLiteral("...die Baumart %1 keine Entsprechung im ELDATsmart-Standard hat.").arg(s));

    const SenderResult sender = offerSender(context.db, context.dataFolder);
    reasons << sender.reasons;
    if (!sender.reasons.isEmpty())
        reasons << QString() << QStringLiteral("Die Absenderanschrift wird im Rechnungsfenster unter \"Ihre Anschrift\" "
                                               "eingetragen und mit der nächsten Rechnung gemerkt.");
    if (!reasons.isEmpty()) {
        context.prompter.inform(QStringLiteral("Das .eldat-Angebot kann nicht geschrieben werden, weil...\n\n") +
                                reasons.join(u'\n'));
        return std::nullopt;
    }
    OfferRequest named = request;
    if (named.filePath.trimmed().isEmpty()) {
        named.filePath = request.chooseFilePath();
        if (named.filePath.trimmed().isEmpty())
            return std::nullopt;
    }

    OfferOutcome outcome;
    QJsonArray piles;
    for (const Lot& lot : lots) {
        const std::optional<QJsonObject> point = lotPoint(lot);
        if (!point)
            outcome.lotsWithoutPoint << lot.losNr;
        piles << pile(lot, *assortmentCodes(lot.sorting, lot.fixedLength > 0), point);
        outcome.logs += int(lot.logs.size());
        outcome.poles += lot.poleCount;
        outcome.sections += int(lot.sections.size());
    }
    outcome.lots = int(lots.size());

    const QDateTime now = QDateTime(context.clock.today(), QDateTime::currentDateTime().time());
    const QJsonObject meta{
        {QStringLiteral("version"), QJsonObject{{QStringLiteral("code"), QString::fromLatin1(FormatVersion)}}},
        {QStringLiteral("transaction_id"), uuid()},
        {QStringLiteral("process_id"), uuid()},
        {QStringLiteral("module_id"), uuid()},
        {QStringLiteral("status_tech"), QJsonObject{{QStringLiteral("code"), 100}}},
        {QStringLiteral("created_by"), QJsonObject{{QStringLiteral("application"), QStringLiteral("TARVIK 3.0 - Die Holzliste")},
                                                   {QStringLiteral("application_version"), QStringLiteral("3.0")}}}};
    const QJsonObject allocation{
        {QStringLiteral("doc_type"), request.docType},
        {QStringLiteral("address"), QJsonObject{{QStringLiteral("supplier"), supplier(sender.sender)}}},
        {QStringLiteral("wood_data"),
         QJsonObject{{QStringLiteral("wood_id"), woodId("hab", harvest->hiebNr)},
                     {QStringLiteral("felling_date"), dateTimeText(QDateTime(harvest->felled, QTime(0, 0)))},
                     {QStringLiteral("allocated_pile"), piles}}},
        {QStringLiteral("status_arr"), QJsonArray{QJsonObject{{QStringLiteral("creation_datetime"), dateTimeText(now)},
                                                              {QStringLiteral("statusid"), QStringLiteral("10")}}}}};
    const QJsonObject document{
        {QStringLiteral("document"),
         QJsonObject{{QStringLiteral("meta"), meta},
                     {QStringLiteral("eldat"), QJsonObject{{QStringLiteral("wood_allocation"), allocation}}}}}};
    const QByteArray bytes = QJsonDocument(document).toJson(QJsonDocument::Indented);

    // QSaveFile writes beside the target under a temporary name and renames on commit: a
    // receiver polling the folder never picks up half a file.
    QSaveFile file(named.filePath);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        context.prompter.inform(QStringLiteral("Die Datei \"%1\" kann nicht geschrieben werden: %2")
                                    .arg(named.filePath, germanFileError(file)),
                                Prompter::Icon::Critical);
        return std::nullopt;
    }

    outcome.filePath = named.filePath;
    QStringList message{QStringLiteral("Das .eldat-Angebot wurde geschrieben:"), named.filePath, QString(),
                        QStringLiteral("Lose: %1").arg(outcome.lots)};
    if (outcome.logs > 0)
        message << QStringLiteral("Stämme: %1").arg(outcome.logs);
    if (outcome.poles > 0)
        message << QStringLiteral("Pfähle: %1").arg(outcome.poles);
    if (outcome.sections > 0)
        message << QStringLiteral("Schichtholz-Sektionen: %1").arg(outcome.sections);
    if (!outcome.lotsWithoutPoint.isEmpty())
        message << QString()
                << QStringLiteral("Ohne GPS-Position (Koordinaten fehlen oder liegen außerhalb des gültigen Bereichs) "
                                  "wurden geschrieben: %1 %2")
                       .arg(outcome.lotsWithoutPoint.size() == 1 ? QStringLiteral("Los") : QStringLiteral("Lose"),
                            lotList(outcome.lotsWithoutPoint));
    outcome.message = message.join(u'\n');
    context.prompter.inform(outcome.message);
    return outcome;
}

} // namespace tarvik::eldat
