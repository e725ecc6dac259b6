#include "entry/lotentry.h"

#include "common/numbers.h"
#include "common/text.h"
#include "entry/lotcheck.h"
#include "common/textfile.h"
#include "store/records.h"
#include "store/rows.h"
#include "store/sql.h"
#include "store/textwidth.h"
#include "store/totals.h"

#include <QDir>
#include <QFile>
#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik {
namespace {

const QString Done = QStringLiteral("Änderung wurde durchgeführt!");

QString pricesPath(const QString& dataFolder) { return QDir(dataFolder).filePath(QLatin1String(LotPriceDefaultsFile)); }

// Columns written, in the order of the lot's data, with the form's value for each.
QList<std::pair<QString, QVariant>> lotColumns(const LotForm& f, qint32 harvestId)
{
    auto n = [](const QString& t) { return readNumber(t); };
    const PriceSettings& p = f.prices;
    return {
        {QStringLiteral("Preis_Art"), p.preisArt},
        {QStringLiteral("Los_Nr"), toLong(n(f.losNr))},
        {QStringLiteral("Sortierung"), f.sortierung.trimmed()},
        {QStringLiteral("Anzahl_Stämme"), toLong(n(f.anzahlStaemme))},
        {QStringLiteral("Efm_oR"), n(f.efmOR)},
        {QStringLiteral("Efm_je_Stamm"), n(f.efmJeStamm)},
        {QStringLiteral("Anzahl_Pfähle"), toLong(n(f.anzahlPfaehle))},
        {QStringLiteral("Efm_Schichtholz"), n(f.efmSchichtholz)},
        {QStringLiteral("m3_Schichtholz"), n(f.m3Schichtholz)},
        {QStringLiteral("Preis_berechnet"), currencyValue(n(f.preisBerechnet))},
        {QStringLiteral("Preis_erhalten"), currencyValue(n(f.preisErhalten))},
        {QStringLiteral("Pauschalpreis_efm"), currencyValue(p.pauschalpreisEfm)},
        {QStringLiteral("Pauschalpreis_G"), currencyValue(p.pauschalpreisG)},
        {QStringLiteral("Kosten_Einschlag"), currencyValue(p.kostenEinschlag)},
        {QStringLiteral("Kosten_Rücken"), currencyValue(p.kostenRuecken)},
        {QStringLiteral("Erschwerniszuschlag"), p.erschwerniszuschlag},
        {QStringLiteral("Holzpreis"), currencyValue(n(f.holzpreis))},
        {QStringLiteral("Überlänge"), n(f.ueberlaenge)},
        {QStringLiteral("Käferholzabschlag"), p.kaeferholzabschlag},
        {QStringLiteral("Fixlänge"), n(f.fixlaenge)},
        {QStringLiteral("Abgerechnet"), f.abgerechnet ? QStringLiteral("J") : QStringLiteral("N")},
        {QStringLiteral("Lagerort"), f.lagerort.trimmed()},
        {QStringLiteral("Abnehmer"), f.abnehmer.trimmed()},
        {QStringLiteral("Bemerkung"), f.bemerkung.trimmed()},
        {QStringLiteral("Vermessungsart"), f.vermessungsart.trimmed()},
        {QStringLiteral("Qualität"), f.qualitaet.trimmed()},
        {QStringLiteral("Los_Bezeichnung"), f.losBezeichnung.trimmed()},
        {QStringLiteral("Anfahrt"), f.anfahrt.trimmed()},
        {QStringLiteral("GPS_B"), f.gpsB.trimmed()},
        {QStringLiteral("GPS_L"), f.gpsL.trimmed()},
        {QStringLiteral("ReNr"), toLong(n(f.reNr))},
        {QStringLiteral("Kennung"), harvestId},
    };
}

bool validRange(const AppContext& ctx, const LogRange& r)
{
    if (readNumber(r.lot) <= 0) {
        ctx.prompter.inform(QStringLiteral("Es ist keine Losnummer angegeben worden, auf die sich die Änderung bezieht."));
        return false;
    }
    if (readNumber(r.from) <= 0 || readNumber(r.to) <= 0) {
        ctx.prompter.inform(QStringLiteral("Die Stämme von... bis... müssen größer als 0 sein."));
        return false;
    }
    if (readNumber(r.from) > readNumber(r.to)) {
        ctx.prompter.inform(QStringLiteral("Die Stammnummer von... darf nicht höher sein als die Stammnummer bis..."));
        return false;
    }
    return true;
}

QString rangeText(const LogRange& r)
{
    return QStringLiteral("das Los %1 und die Stämme %2 bis %3").arg(r.lot.trimmed(), r.from.trimmed(), r.to.trimmed());
}

QVariantList rangeValues(qint32 harvestId, const LogRange& r)
{
    return {toLong(readNumber(r.lot)), harvestId, toLong(readNumber(r.from)), toLong(readNumber(r.to))};
}

const QString RangeFilter = QStringLiteral(" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ? AND (\"Laufende_Nr\" >= ? AND \"Laufende_Nr\" <= ?)");

bool changeRangeColumn(const AppContext& ctx, qint32 harvestId, const LogRange& r, const QString& column,
                       const QString& value, const QString& missing, const QString& what, const QString& notice)
{
    if (!validRange(ctx, r))
        return false;
    if (value.trimmed().isEmpty()) {
        ctx.prompter.inform(missing);
        return false;
    }
    if (!ctx.prompter.askYesNo(QStringLiteral("Soll die %1 für %2 geändert werden in die %1 %3").arg(what, rangeText(r), value)))
        return false;
    execSql(ctx.db, QStringLiteral("UPDATE \"Stämme\" SET %1 = ?").arg(quoted(column)) + RangeFilter,
            QVariantList{value} + rangeValues(harvestId, r));
    ctx.prompter.inform(Done);
    ctx.prompter.inform(notice);
    return true;
}

} // namespace

LotForm proposeNewLot(const QSqlDatabase& db, qint32 harvestId, const QString& dataFolder)
{
    LotForm f;
    const QVariant max = scalar(db, QStringLiteral("SELECT max(\"Los_Nr\") FROM \"Lose\" WHERE \"Kennung\" = ?"), {harvestId});
    f.losNr = QString::number(toLong(readNumber(max)) + 1);
    f.sortierung = QStringLiteral("Stämme");
    if (const auto remembered = rememberedPrices(dataFolder))
        f.prices = *remembered;
    return f;
}

LotForm loadLot(const QSqlDatabase& db, qint32 id)
{
    LotForm f;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM \"Lose\" WHERE \"ID\" = ?"), {id});
    if (!q.next())
        return f;
    const QSqlRecord r = q.record();
    auto text = [&r](const char* c) { return readText(r.value(QString::fromUtf8(c))); };
    auto number = [&r](const char* c, int decimals) { return formatDecimal(readNumber(r.value(QString::fromUtf8(c))), decimals); };
    auto value = [&r](const char* c) { return static_cast<float>(readNumber(r.value(QString::fromUtf8(c)))); };
    f.losNr = text("Los_Nr");
    f.sortierung = text("Sortierung");
    f.losBezeichnung = text("Los_Bezeichnung");
    f.lagerort = text("Lagerort");
    f.anfahrt = text("Anfahrt");
    f.gpsL = text("GPS_L");
    f.gpsB = text("GPS_B");
    f.abnehmer = text("Abnehmer");
    f.bemerkung = text("Bemerkung");
    f.vermessungsart = text("Vermessungsart");
    f.qualitaet = text("Qualität");
    f.fixlaenge = number("Fixlänge", 2);
    f.ueberlaenge = number("Überlänge", 2);
    f.preisErhalten = number("Preis_erhalten", 2);
    f.reNr = text("ReNr");
    f.abgerechnet = text("Abgerechnet") == u"J";
    f.prices = {toShort(readNumber(r.value(QStringLiteral("Preis_Art")))), value("Pauschalpreis_efm"), value("Pauschalpreis_G"),
                toShort(readNumber(r.value(QStringLiteral("Käferholzabschlag")))), value("Kosten_Einschlag"),
                value("Kosten_Rücken"), toShort(readNumber(r.value(QStringLiteral("Erschwerniszuschlag"))))};
    f.anzahlStaemme = number("Anzahl_Stämme", 0);
    f.efmOR = number("Efm_oR", 3);
    f.efmJeStamm = number("Efm_je_Stamm", 2);
    f.anzahlPfaehle = number("Anzahl_Pfähle", 0);
    f.efmSchichtholz = number("Efm_Schichtholz", 2);
    f.m3Schichtholz = number("m3_Schichtholz", 2);
    f.holzpreis = number("Holzpreis", 2);
    f.preisBerechnet = number("Preis_berechnet", 2);
    return f;
}

std::optional<QString> checkLot(const QSqlDatabase& db, qint32 harvestId, const LotForm& f, std::optional<qint32> editedId)
{
    QStringList reasons;
    const qint32 lot = toLong(readNumber(f.losNr));
    if (lot <= 0)
        reasons << QStringLiteral("...die Los-Nummer fehlt.");
    if (f.sortierung.trimmed().isEmpty())
        reasons << QStringLiteral("...die Sortierung fehlt.");
    // A number taken by another lot would merge two lots' rows under one number.
    const QString taken = QStringLiteral("SELECT 1 FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ?")
                          + (editedId ? QStringLiteral(" AND \"ID\" <> ?") : QString()) + QStringLiteral(" LIMIT 1");
    if (lot > 0 && scalar(db, taken, editedId ? QVariantList{lot, harvestId, *editedId} : QVariantList{lot, harvestId}).isValid())
        reasons << QStringLiteral("...die Los-Nummer %1 bereits existiert.").arg(lot);
    // The texts as saveLot stores them.
    reasons << widthReasons(QStringLiteral("Lose"),
                            {{QStringLiteral("Sortierung"), f.sortierung.trimmed(), QStringLiteral("die Sortierung")},
                             {QStringLiteral("Los_Bezeichnung"), f.losBezeichnung.trimmed(), QStringLiteral("die Los-Bezeichnung")},
                             {QStringLiteral("Lagerort"), f.lagerort.trimmed(), QStringLiteral("der Lagerort")},
                             {QStringLiteral("Anfahrt"), f.anfahrt.trimmed(), QStringLiteral("die Anfahrt")},
                             {QStringLiteral("GPS_L"), f.gpsL.trimmed(), QStringLiteral("die GPS-Länge")},
                             {QStringLiteral("GPS_B"), f.gpsB.trimmed(), QStringLiteral("die GPS-Breite")},
                             {QStringLiteral("Vermessungsart"), f.vermessungsart.trimmed(), QStringLiteral("die Vermessungsart")},
                             {QStringLiteral("Qualität"), f.qualitaet.trimmed(), QStringLiteral("die Qualität")},
                             {QStringLiteral("Abnehmer"), f.abnehmer.trimmed(), QStringLiteral("der Abnehmer")},
                             {QStringLiteral("Bemerkung"), f.bemerkung.trimmed(), QStringLiteral("die Bemerkung")}});
    if (reasons.isEmpty())
        return std::nullopt;
    return inputRefusal(reasons.join(u'\n'));
}

qint32 saveLot(const QSqlDatabase& db, qint32 harvestId, const LotForm& f, std::optional<qint32> editedId)
{
    TransactionGuard guard(db);
    std::optional<qint32> before;
    if (editedId)
        before = lotOfRow(db, QStringLiteral("Lose"), *editedId);
    const qint32 id = writeRow(db, QStringLiteral("Lose"), lotColumns(f, harvestId), editedId);
    const qint32 lot = toLong(readNumber(f.losNr));
    if (before.value_or(lot) != lot) {
        // A renumbered lot takes its logs, poles and sections along.
        for (const char* table : {"Stämme", "Pfähle", "Schichtholz"})
            execSql(db, QStringLiteral("UPDATE %1 SET \"Los_Nr\" = ? WHERE \"Kennung\" = ? AND \"Los_Nr\" = ?").arg(quoted(QString::fromUtf8(table))),
                    {lot, harvestId, before.value_or(lot)});
    }
    insertIntoLookupList(db, QStringLiteral("Liste_Lagerort"), f.lagerort.trimmed());
    insertIntoLookupList(db, QStringLiteral("Liste_Abnehmer"), f.abnehmer.trimmed());
    insertIntoLookupList(db, QStringLiteral("Liste_Bemerkungen"), f.bemerkung.trimmed());
    refreshHarvest(db, harvestId);
    guard.commit();
    return id;
}

std::optional<qint32> storeLot(const AppContext& ctx, qint32 harvestId, const LotForm& form, std::optional<qint32> editedId)
{
    if (const auto refusal = checkLot(ctx.db, harvestId, form, editedId)) {
        ctx.prompter.inform(*refusal);
        return std::nullopt;
    }
    return saveLot(ctx.db, harvestId, form, editedId);
}

std::optional<PlaceDetails> placeDetails(const QSqlDatabase& db, const QString& place)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Anfahrt\", \"GPS_L\", \"GPS_B\" FROM \"Lose\" WHERE \"Lagerort\" = ? ORDER BY \"ID\" DESC LIMIT 1"),
                          {place.trimmed()});
    if (!q.next())
        return std::nullopt;
    return PlaceDetails{readText(q.value(0)), readText(q.value(1)), readText(q.value(2))};
}

std::optional<PriceSettings> rememberedPrices(const QString& dataFolder)
{
    const TextFileResult file = readTextFile(pricesPath(dataFolder));
    if (!file.ok || file.lines.isEmpty())
        return std::nullopt;
    auto line = [&file](int i) { return readNumber(file.lines.value(i)); };
    return PriceSettings{toShort(line(0)), float(line(1)), float(line(2)), toShort(line(3)), float(line(4)), float(line(5)), toShort(line(6))};
}

void rememberPrices(const AppContext& ctx, const PriceSettings& p)
{
    if (!ctx.prompter.askYesNo(QStringLiteral("Sollen die Einstellung rechts (für die Preisberechnung bei Stammholz) gemerkt werden, "
                                              "um diese bei künftigen neuen Lose als Startwert vorzugeben?")))
        return;
    // Kind first, then the price fields in the order of the price frame.
    const TextFileResult written = writeTextFile(pricesPath(ctx.dataFolder),
        {QString::number(p.preisArt), formatDecimal(p.pauschalpreisEfm, 2), formatDecimal(p.pauschalpreisG, 2),
         QString::number(p.kaeferholzabschlag), formatDecimal(p.kostenEinschlag, 2), formatDecimal(p.kostenRuecken, 2),
         QString::number(p.erschwerniszuschlag)});
    if (!written.ok)
        ctx.prompter.inform(written.error, Prompter::Icon::Warning);
}

void forgetPrices(const AppContext& ctx)
{
    const QString path = pricesPath(ctx.dataFolder);
    if (!QFile::exists(path)) {
        ctx.prompter.inform(QStringLiteral("Es ist keine Preisberechnung gemerkt!"));
        return;
    }
    if (!ctx.prompter.askYesNo(QStringLiteral("Soll die gemerkte Preisberechnung für Stammholz wirklich gelöscht werden?")))
        return;
    QFile::remove(path);
    ctx.prompter.inform(QStringLiteral("Die gemerkte Preisberechnung wurde gelöscht!"));
}

bool changeQualityOfRange(const AppContext& ctx, qint32 harvestId, const LogRange& r, const QString& quality)
{
    return changeRangeColumn(ctx, harvestId, r, QStringLiteral("Güteklasse"), quality,
                             QStringLiteral("Bitte zuerst die neue Güteklasse auswählen!"), QStringLiteral("Güteklasse"),
                             QStringLiteral("WICHTIG!!! Es wurde nur die Güteklasse geändert. Die Preise bleiben unverändert. Die Preise können im linken Register in der Losänderung gesammelt angepasst werden."));
}

bool changeSpeciesOfRange(const AppContext& ctx, qint32 harvestId, const LogRange& r, const QString& species)
{
    return changeRangeColumn(ctx, harvestId, r, QStringLiteral("Baumart"), species,
                             QStringLiteral("Bitte zuerst die neue Baumart auswählen!"), QStringLiteral("Baumart"),
                             QStringLiteral("WICHTIG!!! Es wurde nur die Baumart geändert. Die Rindenabzüge und Stärkeklassen bleiben unverändert. Wenn Sie auch die Rindenabzüge ändern möchten, dann müssen Sie nach dieser Änderung in die 'Änderung für Stämme' gehen und dort jeden Stamm im Los einmal mit OK+Nächster bestätigen."));
}

bool moveRangeToLot(const AppContext& ctx, qint32 harvestId, const LogRange& r, const QString& targetLot)
{
    if (!validRange(ctx, r))
        return false;
    const qint32 target = toLong(readNumber(targetLot));
    if (target <= 0) {
        ctx.prompter.inform(QStringLiteral("Es ist keine Losnummer angegeben worden, auf die sich die Änderung bezieht."));
        return false;
    }
    if (scalar(ctx.db, QStringLiteral("SELECT 1 FROM \"Lose\" WHERE (\"Sortierung\" = 'Schichtholz' OR \"Sortierung\" = 'Pfähle') "
                                      "AND \"Los_Nr\" = ? AND \"Kennung\" = ? LIMIT 1"), {target, harvestId}).isValid()) {
        ctx.prompter.inform(QStringLiteral("Dieses Los existiert bereits in einer anderen Sortierung (Pfähle/Schichtholz) und kann deshalb nicht verwendet werden."));
        return false;
    }
    if (!ctx.prompter.askYesNo(QStringLiteral("Soll die Losnummer für %1 geändert werden in die Losnummer %2").arg(rangeText(r)).arg(target)))
        return false;
    TransactionGuard guard(ctx.db);
    execSql(ctx.db, QStringLiteral("UPDATE \"Stämme\" SET \"Los_Nr\" = ?") + RangeFilter, QVariantList{target} + rangeValues(harvestId, r));
    if (!scalar(ctx.db, QStringLiteral("SELECT 1 FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ? LIMIT 1"), {target, harvestId}).isValid()) {
        // The new lot starts as a copy of the source lot's row.
        const QVariant source = scalar(ctx.db, QStringLiteral("SELECT \"ID\" FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ? LIMIT 1"),
                                       {toLong(readNumber(r.lot)), harvestId});
        if (source.isValid()) {
            LotForm copy = loadLot(ctx.db, source.toInt());
            copy.losNr = QString::number(target);
            copy.sortierung = QStringLiteral("Stämme");
            saveLot(ctx.db, harvestId, copy, std::nullopt);
        } else {
            createLot(ctx.db, harvestId, target, QStringLiteral("Stämme"));
        }
    }
    refreshHarvest(ctx.db, harvestId);
    guard.commit();
    ctx.prompter.inform(Done);
    return true;
}

bool changeSpeciesOfLot(const AppContext& ctx, qint32 harvestId, const QString& lot, const QString& from, const QString& to)
{
    if (readNumber(lot) <= 0) {
        ctx.prompter.inform(QStringLiteral("Sie müssen auswählen, welche Stämme geändert werden sollen!"));
        return false;
    }
    if (from.trimmed() == to.trimmed()) {
        ctx.prompter.inform(QStringLiteral("Wenn Sie die Baumart ändern möchten, müssen Sie unterschiedliche Baumarten auswählen!"));
        return false;
    }
    if (!ctx.prompter.askYesNo(QStringLiteral("Soll die Baumarten für alle Stämme im Los %1 wirklich von der Baumart %2 auf die Baumart %3 geändert werden?")
                                   .arg(lot.trimmed(), from.trimmed(), to.trimmed())))
        return false;
    ctx.prompter.inform(QStringLiteral("WICHTIG!!! Es wird nur die Baumart geändert. Die Rindenabzüge bleiben unverändert. Wenn Sie auch die Rindenabzüge ändern möchten, dann müssen Sie nach dieser Änderung in die 'Änderung für Stämme' gehen und dort jeden Stamm im Los einmal mit OK+Nächster bestätigen"));
    execSql(ctx.db, QStringLiteral("UPDATE \"Stämme\" SET \"Baumart\" = ? WHERE \"Los_Nr\" = ? AND \"Baumart\" = ? AND \"Kennung\" = ?"),
            {to.trimmed(), toLong(readNumber(lot)), from.trimmed(), harvestId});
    ctx.prompter.inform(Done);
    return true;
}

} // namespace tarvik
