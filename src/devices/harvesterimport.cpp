#include "devices/harvesterimport.h"

#include "common/numbers.h"
#include "common/text.h"
#include "entry/logentry.h"
#include "entry/lotcheck.h"
#include "rules/lotrecompute.h"
#include "rules/masterdatalookup.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"

#include <QSet>
#include <cmath>

namespace tarvik {
namespace {

constexpr int RemarkLength = 30; // `Stämme.Bemerkung` is TEXT (30)
constexpr int GpsLength = 10;    // `Lose.GPS_B`, `GPS_L` are TEXT (10)
const QString Logs = QStringLiteral("Stämme");

// Whole units below the measured value: a harvester's 218 mm is 21 cm, as a calliper reads it.
int wholeCm(double mm) { return int(std::floor(mm / 10.0 + 1e-9)); }
// Lengths go in whole decimetres below the measured one (373 cm is 3,7 m).
int wholeDm(double cm) { return int(std::floor(cm / 10.0 + 1e-9)); }

// As many decimals as the column holds, at most six (about 10 cm on the ground).
QString gpsText(double degrees)
{
    const int whole = int(QString::number(qint64(std::trunc(std::abs(degrees)))).size()) + (degrees < 0 ? 1 : 0);
    return formatDecimal(degrees, std::clamp(GpsLength - whole - 1, 0, 6));
}

struct LogValues {
    QString diameter, length, deduction;
    BarkMode mode;
};

LogValues valuesOf(const HarvesterLog& log)
{
    LogValues v;
    const int withBark = wholeCm(log.midOverBarkMm);
    v.diameter = QString::number(withBark);
    v.length = numberText(wholeDm(log.lengthCm) / 10.0);
    if (log.midUnderBarkMm >= 0) {
        // The machine measured the bark: its deduction is taken as a fixed one.
        v.mode = BarkMode::Fest;
        v.deduction = QString::number(std::max(0, withBark - wholeCm(log.midUnderBarkMm)));
    } else {
        v.mode = BarkMode::Tabelle;
    }
    return v;
}

QString summary(const HarvesterFile& file, qint32 lot, const HarvesterOutcome& o)
{
    QStringList lines{QStringLiteral("Aus der Datei \"%1\" wurden%2 von%3 Stämmen in das Los %4 übernommen.")
                          .arg(file.fileName, signedText(o.stored), signedText(o.found))
                          .arg(lot),
                      QString(),
                      QStringLiteral("Volumen der übernommenen Stämme: %1 Efm oR nach den Regeln von Tarvik, %2 m³ oR laut Harvester "
                                     "(nur zum Vergleich, nicht gespeichert).")
                          .arg(formatDecimal(o.volume, 3), formatDecimal(o.machineVolume, 3))};
    QStringList skipped;
    auto add = [&skipped](int n, const QString& text) {
        if (n > 0)
            skipped << QStringLiteral("...%1 %2").arg(n).arg(text);
    };
    add(o.unmapped, QStringLiteral("Stämme einer Baumart ohne Zuordnung"));
    add(o.excluded, QStringLiteral("Stämme ausgeschlossener Produkte"));
    add(o.duplicates, QStringLiteral("Stämme, deren laufende Nummer im Hieb bereits vergeben ist"));
    add(o.unnumbered, QStringLiteral("Stämme ohne laufende Nummer (mehr als 9 Stämme je Baum oder Baum-Nr. über 99999)"));
    add(o.refused, QStringLiteral("Stämme, die auch die Stammeingabe nicht annimmt (z.B. ohne Länge oder Stärkeklasse)"));
    add(file.felledOnly, QStringLiteral("nur gefällte Bäume (ohne Stämme)"));
    if (file.multiTreeLogs > 0)
        skipped << QStringLiteral("...%1 Stämme aus %2 Bäumen der Mehrbaumaufarbeitung mit zusammen %3 m³ oR (nur geschätzt, nicht "
                                  "einzeln übernommen)")
                       .arg(file.multiTreeLogs)
                       .arg(file.multiTreeStems)
                       .arg(formatDecimal(file.multiTreeVolume, 3));
    if (!skipped.isEmpty())
        lines << QString() << QStringLiteral("Nicht übernommen:") << skipped;
    if (o.positionSet)
        lines << QString() << QStringLiteral("Die GPS-Position des Loses wurde aus den Koordinaten der Bäume gesetzt.");
    return lines.join(u'\n');
}

} // namespace

bool harvesterLotAccepted(const AppContext& ctx, qint32 harvestId, std::optional<qint32> lot)
{
    if (!lot || *lot <= 0) {
        ctx.prompter.inform(QStringLiteral("Der Datenimport ist nur möglich, wenn die LOS-Nummer angegeben wird!"));
        return false;
    }
    if (const auto other = otherAssortment(ctx.db, harvestId, *lot, Logs)) {
        ctx.prompter.inform(inputRefusal(*other));
        return false;
    }
    return true;
}

QList<ImportedLog> harvesterGridRows(const HarvesterFile& file, qint32 lot, const HarvesterMapping& mapping)
{
    QList<ImportedLog> rows;
    rows.reserve(qsizetype(file.logs.size()));
    for (const HarvesterLog& log : file.logs) {
        const LogValues v = valuesOf(log);
        const QString product = file.productNames.value(log.product);
        ImportedLog row;
        row.lot = lot;
        row.number = harvesterRunningNumber(log);
        row.species = file.speciesNames.value(log.species);
        row.quality = mapping.productQuality.value(product);
        row.diameter = v.diameter;
        row.length = v.length;
        row.remark = product;
        rows << row;
    }
    return rows;
}

QStringList harvesterRefusalReasons(const QSqlDatabase& db, qint32 harvestId, const HarvesterFile& file, const HarvesterMapping& mapping)
{
    QSet<qint32> taken;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Laufende_Nr\" FROM \"Stämme\" WHERE \"Kennung\" = ?"), {harvestId});
    while (q.next())
        taken.insert(q.value(0).toInt());
    QStringList reasons;
    reasons.reserve(qsizetype(file.logs.size()));
    for (const HarvesterLog& log : file.logs) {
        const QString species = file.speciesNames.value(log.species);
        const qint32 number = harvesterRunningNumber(log);
        if (mapping.species.value(species).trimmed().isEmpty())
            reasons << QStringLiteral("Baumart \"%1\" nicht zugeordnet").arg(species);
        else if (mapping.excludedProducts.contains(file.productNames.value(log.product)))
            reasons << QStringLiteral("Produkt ausgeschlossen");
        else if (number <= 0)
            reasons << QStringLiteral("keine Stammnummer (mehr als 9 Stücke oder Baum-Nr. über 99999)");
        else if (taken.contains(number))
            reasons << QStringLiteral("Stammnummer %1 im Hieb bereits vergeben").arg(number);
        else
            reasons << QString();
        if (number > 0 && reasons.constLast().isEmpty())
            taken.insert(number);
    }
    return reasons;
}

std::optional<HarvesterOutcome> importHarvesterLogs(const AppContext& ctx, qint32 harvestId, std::optional<qint32> lotNr,
                                                    const HarvesterFile& file, const HarvesterMapping& mapping,
                                                    const TransferQuestion& askTransfer)
{
    if (!harvesterLotAccepted(ctx, harvestId, lotNr))
        return std::nullopt;
    const qint32 lot = *lotNr;
    if (file.logs.empty()) {
        ctx.prompter.inform(QStringLiteral("Es wurden keine Stämme gefunden."));
        return std::nullopt;
    }
    HarvesterOutcome outcome;
    outcome.found = int(file.logs.size());
    const QString question = QStringLiteral("Es wurden%1 Stämme gefunden. Sollen diese jetzt übertragen werden?").arg(signedText(outcome.found));
    const bool transfer = askTransfer ? askTransfer(question, harvesterGridRows(file, lot, mapping),
                                                    harvesterRefusalReasons(ctx.db, harvestId, file, mapping))
                                      : ctx.prompter.askYesNo(question);
    if (!transfer)
        return std::nullopt;
    const LotAnswer lotAnswer = lotExistsOrAsk(ctx, harvestId, lot);
    if (lotAnswer == LotAnswer::Refused)
        return std::nullopt;

    // Species and products are looked up once each, not once per log.
    QStringList speciesRows;
    for (const QString& name : file.speciesNames)
        speciesRows << masterSpeciesOf(ctx.db, mapping.species.value(name));
    QStringList qualities;
    QList<bool> excluded;
    for (const QString& name : file.productNames) {
        excluded << mapping.excludedProducts.contains(name);
        qualities << mapping.productQuality.value(name).trimmed();
    }

    try {
        TransactionGuard guard(ctx.db);
        if (lotAnswer == LotAnswer::Create)
            createLot(ctx.db, harvestId, lot, Logs);
        QSet<qint32> taken;
        {
            QSqlQuery q = execSql(ctx.db, QStringLiteral("SELECT \"Laufende_Nr\" FROM \"Stämme\" WHERE \"Kennung\" = ?"), {harvestId});
            while (q.next())
                taken.insert(q.value(0).toInt());
        }
        const PriceSettings prices = loadLotPriceSettings(ctx.db, harvestId, lot).value_or(PriceSettings{});
        MasterDataLookup masterData(ctx.db);
        LogInserter inserter(ctx.db);
        const QString lotText = QString::number(lot);
        QHash<QString, LogForm> measured;
        for (const HarvesterLog& log : file.logs) {
            const QString& species = speciesRows.at(log.species);
            if (species.isEmpty()) {
                ++outcome.unmapped;
                continue;
            }
            if (excluded.at(log.product)) {
                ++outcome.excluded;
                continue;
            }
            const qint32 number = harvesterRunningNumber(log);
            if (number <= 0) {
                ++outcome.unnumbered;
                continue;
            }
            if (taken.contains(number)) {
                ++outcome.duplicates;
                continue;
            }
            const LogValues v = valuesOf(log);
            LogForm f;
            f.losNr = lotText;
            f.laufendeNr = QString::number(number);
            f.species = species;
            f.quality = qualities.at(log.product);
            f.measuredDiameter = v.diameter;
            f.length = v.length;
            f.mode = v.mode;
            f.deduction = v.deduction;
            f.prices = prices;
            // Harvester logs repeat the same few diameters and lengths: each combination is
            // measured and priced once, the rules being the same for every log of the lot.
            const QString key = f.species + u'\t' + f.quality + u'\t' + f.measuredDiameter + u'\t' + f.deduction + u'\t'
                                + QString::number(int(f.mode)) + u'\t' + f.length;
            if (const auto known = measured.constFind(key); known != measured.constEnd()) {
                f = *known;
                f.laufendeNr = QString::number(number);
            } else {
                recomputeLog(f, masterData);
                measured.insert(key, f);
            }
            if (readNumber(f.underBark) <= 0 || readNumber(f.length) <= 0 || f.diameterClass.isEmpty()) {
                ++outcome.refused;
                continue;
            }
            inserter.insert(harvestId, f, number, file.productNames.at(log.product).left(RemarkLength));
            taken.insert(number);
            ++outcome.stored;
            outcome.volume += readNumber(f.volume);
            outcome.machineVolume += log.machineVolume;
        }
        if (const auto mean = file.meanPosition(); mean && outcome.stored > 0) {
            QSqlQuery q = execSql(ctx.db, QStringLiteral("SELECT \"GPS_B\", \"GPS_L\" FROM \"Lose\" WHERE \"Kennung\" = ? AND \"Los_Nr\" = ?"),
                                  {harvestId, lot});
            if (q.next() && readText(q.value(0)).isEmpty() && readText(q.value(1)).isEmpty()) {
                execSql(ctx.db, QStringLiteral("UPDATE \"Lose\" SET \"GPS_B\" = ?, \"GPS_L\" = ? WHERE \"Kennung\" = ? AND \"Los_Nr\" = ?"),
                        {gpsText(mean->latitude), gpsText(mean->longitude), harvestId, lot});
                outcome.positionSet = true;
            }
        }
        refreshHarvest(ctx.db, harvestId);
        guard.commit();
    } catch (const StoreError& e) {
        ctx.prompter.inform(QStringLiteral("Der Import konnte nicht gespeichert werden, es wurde nichts übernommen:\n\n") + e.message(),
                            Prompter::Icon::Critical);
        return std::nullopt;
    }

    const QString notKept = rememberHarvesterMapping(ctx.dataFolder, mapping);
    ctx.prompter.inform(summary(file, lot, outcome));
    if (!notKept.isEmpty())
        ctx.prompter.inform(QStringLiteral("Die Zuordnung der Baumarten und Produkte konnte nicht gespeichert werden:\n\n") + notKept,
                            Prompter::Icon::Warning);
    return outcome;
}

} // namespace tarvik
