#include "entry/logentry.h"

#include "common/numbers.h"
#include "common/text.h"
#include "entry/lotcheck.h"
#include "rules/masterdatalookup.h"
#include "store/records.h"
#include "store/gridquery.h"
#include "store/rows.h"
#include "store/sql.h"
#include "store/totals.h"
#include "store/textwidth.h"

#include <QSqlQuery>
#include <QSqlRecord>
#include <cmath>

namespace tarvik {
namespace {


bool runningNumberTaken(const QSqlDatabase& db, const Einstellungen& settings, qint32 harvestId, qint32 lotNr,
                        qint32 number, std::optional<qint32> editedId)
{
    QString sql = QStringLiteral("SELECT 1 FROM \"Stämme\" WHERE \"Kennung\" = ? AND \"Laufende_Nr\" = ?");
    QVariantList values{harvestId, number};
    if (editedId) {
        sql += QStringLiteral(" AND \"ID\" <> ?");
        values << *editedId;
    }
    if (settings.runningNumbersPerLot()) {
        sql += QStringLiteral(" AND \"Los_Nr\" = ?");
        values << lotNr;
    }
    return scalar(db, sql + QStringLiteral(" LIMIT 1"), values).isValid();
}

QVariantList rowValues(const LogForm& f, qint32 runningNumber, const QString& remark, qint32 harvestId)
{
    return {toLong(readNumber(f.losNr)), runningNumber, f.species, toShort(readNumber(f.measuredDiameter)),
            barkModeLetter(f.mode), toShort(readNumber(f.deduction)), toShort(readNumber(f.underBark)),
            readNumber(f.length), readNumber(f.volume), f.diameterClass, f.quality, toShort(readNumber(f.topDiameter)),
            f.heilbronnClass, currencyValue(f.net), currencyValue(f.gross), remark, f.kaeferholz ? 1 : 0, harvestId};
}

const QStringList LogColumns = QString::fromUtf8(
    "Los_Nr Laufende_Nr Baumart Stärke_gemessen Rindenabzugsart Rindenabzug Stärke_oR Länge_m Efm_oR Stärkeklasse "
    "Güteklasse Zopfdurchm_cm Klasse_Heilbronn Preis_berechnet Holzpreis Bemerkung Käferholz Kennung").split(u' ');

} // namespace

void recomputeLog(LogForm& f, MasterDataLookup& masterData)
{
    const LogDerived d = measureLog({f.species, f.measuredDiameter, f.length, f.topDiameter, f.deduction, f.mode}, masterData);
    f.deduction = d.deduction;
    f.underBark = d.diameterUnderBark;
    f.volume = d.volume;
    if (!d.diameterClass.isEmpty())
        f.diameterClass = d.diameterClass;
    if (!d.heilbronnClass.isEmpty()) {
        f.heilbronnClass = d.heilbronnClass;
        f.heilbronnComputed = true;
    } else if (f.heilbronnComputed && readNumber(f.topDiameter) <= 0) {
        f.heilbronnClass.clear();
        f.heilbronnComputed = false;
    }
    const LogPrice p = priceLog(f.prices,
                                {f.diameterClass, f.quality, static_cast<float>(readNumber(f.volume)), f.species, f.kaeferholz ? 1 : 0},
                                masterData);
    f.gross = p.gross;
    f.net = p.net;
    f.price = formatDecimal(p.net, 2);
    f.logPrice = formatDecimal(p.gross, 2);
}

std::optional<QString> checkLog(const QSqlDatabase& db, qint32 harvestId, const LogForm& f)
{
    if (readNumber(f.losNr) <= 0)
        return inputRefusal(QStringLiteral("...die Los-Nummer fehlt."));
    if (readNumber(f.laufendeNr) <= 0)
        return inputRefusal(QStringLiteral("...die Laufende Nummer fehlt."));
    if (readNumber(f.laufendeNr) > 999999)
        return inputRefusal(QStringLiteral("...die Laufende Nummer höchstens 999999 sein darf."));
    if (f.species.trimmed().isEmpty())
        return inputRefusal(QStringLiteral("...die Baumart fehlt."));
    // A species without master data has no bark table and no prices: its log would be worth 0.
    if (!scalar(db, QStringLiteral("SELECT 1 FROM \"Baumarten\" WHERE \"Baumart\" = ? LIMIT 1"), {f.species.trimmed()}).isValid())
        return inputRefusal(QStringLiteral("...die Baumart %1 in den Stammdaten fehlt.").arg(f.species.trimmed()));
    if (readNumber(f.underBark) <= 0)
        return inputRefusal(QStringLiteral("...die Stärke ohne Rinde (Stamm-Mitte) größer als 0 sein muß."));
    if (readNumber(f.length) <= 0)
        return inputRefusal(QStringLiteral("...die Länge fehlt."));
    if (f.diameterClass.trimmed().isEmpty())
        return inputRefusal(QStringLiteral("...die Stärkeklasse fehlt."));
    if (readNumber(f.topDiameter) > 0 && readNumber(f.topDiameter) >= readNumber(f.measuredDiameter))
        return inputRefusal(QStringLiteral("...der Zopfdurchmesser kleiner als die Stärke sein muß."));
    if (!f.girthCount.trimmed().isEmpty() && readNumber(f.girthCount) <= 1)
        return inputRefusal(QStringLiteral("...für die Mantelmessung mehr als 1 Stamm eingetragen werden muß."));
    if (const QStringList tooLong = widthReasons(QStringLiteral("Stämme"), {
         {QStringLiteral("Baumart"), f.species.trimmed(), QStringLiteral("die Baumart")},
         {QStringLiteral("Güteklasse"), f.quality.trimmed(), QStringLiteral("die Güteklasse")},
         {QStringLiteral("Stärkeklasse"), f.diameterClass.trimmed(), QStringLiteral("die Stärkeklasse")},
         {QStringLiteral("Klasse_Heilbronn"), f.heilbronnClass.trimmed(), QStringLiteral("die Heilbronner Klasse")},
         {QStringLiteral("Bemerkung"), f.remark.trimmed(), QStringLiteral("die Bemerkung")}});
        !tooLong.isEmpty())
        return inputRefusal(tooLong.join(u'\n'));
    if (const auto other = otherAssortment(db, harvestId, toLong(readNumber(f.losNr)), QStringLiteral("Stämme")))
        return inputRefusal(*other);
    return std::nullopt;
}

QStringList logDoubts(const LogForm& f)
{
    QStringList doubts;
    if (const double diameter = readNumber(f.measuredDiameter); diameter > PlausibleDiameterCm)
        doubts << QStringLiteral("...die Stärke von %1 cm größer als %2 cm ist.").arg(numberText(diameter), numberText(PlausibleDiameterCm));
    if (const double length = readNumber(f.length); length > PlausibleLengthM)
        doubts << QStringLiteral("...die Länge von %1 m größer als %2 m ist.").arg(numberText(length), numberText(PlausibleLengthM));
    if (f.quality.trimmed().isEmpty() && formatDecimal(f.gross, 2) == QStringLiteral("0,00"))
        doubts << QStringLiteral("...der Stamm keine Güteklasse hat und 0,00 € kostet.");
    return doubts;
}

std::optional<LogStoreResult> storeLog(const AppContext& ctx, MasterDataLookup& masterData, qint32 harvestId, LogForm& f,
                                       std::optional<qint32> editedId)
{
    // What is stored follows from what was typed; a changed log left as loaded keeps its values,
    // unless the row lacks figures a log must have (one typed in elsewhere), which are computed.
    if (!f.asStored || checkLog(ctx.db, harvestId, f))
        recomputeLog(f, masterData);
    if (const auto refusal = checkLog(ctx.db, harvestId, f)) {
        ctx.prompter.inform(*refusal);
        return std::nullopt;
    }
    const qint32 lot = toLong(readNumber(f.losNr));
    const bool girth = !f.girthCount.trimmed().isEmpty();
    const qint32 girthCount = toLong(readNumber(f.girthCount));

    // Every question is asked before anything is written.
    const bool joinsLot = girth || !editedId
                          || toLong(readNumber(scalar(ctx.db, QStringLiteral("SELECT \"Los_Nr\" FROM \"Stämme\" WHERE \"ID\" = ?"),
                                                      {*editedId}))) != lot;
    if (const auto invoice = joinsLot ? invoiceOfLot(ctx.db, harvestId, lot) : std::nullopt) {
        const QString added = girth ? QStringLiteral("Sollen die %1 Stämme trotzdem hinzugefügt werden?").arg(girthCount)
                                    : QStringLiteral("Soll der Stamm trotzdem hinzugefügt werden?");
        if (!ctx.prompter.askYesNo(QStringLiteral("Das Los %1 ist bereits in Rechnung %2 abgerechnet. %3").arg(lot).arg(*invoice).arg(added)))
            return std::nullopt;
    }
    if (const QStringList doubts = logDoubts(f); !doubts.isEmpty()) {
        const QString question = QStringLiteral("Bitte prüfen Sie die Eingabe, weil...\n\n%1\n\nSoll der Stamm trotzdem so gespeichert werden?")
                                     .arg(doubts.join(QStringLiteral("\n")));
        if (!ctx.prompter.askYesNo(question))
            return std::nullopt;
    }
    qint32 number = toLong(readNumber(f.laufendeNr));
    if (!girth && runningNumberTaken(ctx.db, ctx.settings, harvestId, lot, number, editedId)) {
        const QString question = QStringLiteral("Die Laufende Nummer %1 existiert beim aktuellen Hieb (ggf. Los) bereits.\n\n"
                                                "Soll die Nummer automatisch vergeben werden?\n\n"
                                                "[Ja] sucht die nächste freie Stammnummer, mit [Nein] wird der Stamm nochmals "
                                                "gebucht (z.B. bei Klammerstämmen sinnvoll).").arg(number);
        if (ctx.prompter.askYesNo(question)) {
            number = nextRunningNumber(ctx.db, ctx.settings, harvestId, lot, f.laufendeNr);
            if (number > 999999) {
                ctx.prompter.inform(QStringLiteral("Die automatische Vergabe ist nicht möglich, weil die höchste mögliche laufende Nr. 999999 bereits vergeben ist."));
                return std::nullopt;
            }
            f.laufendeNr = QString::number(number);
        }
    }
    const LotAnswer lotAnswer = lotExistsOrAsk(ctx, harvestId, lot);
    if (lotAnswer == LotAnswer::Refused)
        return std::nullopt;
    QString remark = f.remark.trimmed();
    if (girth) {
        const QString question = QStringLiteral("Soll die Mantelmessung wirklich eingetragen werden?\n\n"
                                                "Durch die Eintragung werden %1 Stämme mit der eingetragenen Länge/Stärke gebucht. "
                                                "Die Laufende Nummer wird dabei automatisch (unabhängig von Ihrer Eingabe) vergeben. "
                                                "In den Bemerkungen wird 'Mantelmessung (%1 Stück)' eingetragen.").arg(girthCount);
        if (!ctx.prompter.askYesNo(question))
            return std::nullopt;
        remark = QStringLiteral("Mantelmessung (%1 Stück)").arg(girthCount);
    }

    LogStoreResult result;
    {
        TransactionGuard guard(ctx.db);
        if (lotAnswer == LotAnswer::Create)
            createLot(ctx.db, harvestId, lot, QStringLiteral("Stämme"));
        LogInserter inserter(ctx.db);
        if (girth) {
            for (qint32 i = 0; i < girthCount; ++i) {
                const qint32 next = nextRunningNumber(ctx.db, ctx.settings, harvestId, lot, QString());
                if (next > 999999)
                    throw StoreError(QStringLiteral("Die automatische Vergabe ist nicht möglich, weil die höchste mögliche laufende Nr. 999999 bereits vergeben ist."));
                inserter.insert(harvestId, f, next, remark);
                result.lastNumber = next;
            }
            result.rows = girthCount;
        } else if (editedId) {
            writeRow(ctx.db, QStringLiteral("Stämme"), LogColumns, rowValues(f, number, remark, harvestId), editedId);
            result = {1, number};
        } else {
            inserter.insert(harvestId, f, number, remark);
            result = {1, number};
        }
        // The girth remark is generated, not the user's: it stays out of the remark list.
        afterEntryStore(ctx.db, harvestId, girth ? QString() : remark);
        guard.commit();
    }
    if (girth)
        ctx.prompter.inform(QStringLiteral("Die %1 Stämme wurden gebucht!").arg(girthCount));
    return result;
}

LogInserter::LogInserter(const QSqlDatabase& db)
    : m_insert(db, QStringLiteral("Stämme"), LogColumns)
{
}

void LogInserter::insert(qint32 harvestId, const LogForm& f, qint32 runningNumber, const QString& remark)
{
    m_insert.insert(rowValues(f, runningNumber, remark, harvestId));
}

LogForm loadLog(const QSqlDatabase& db, qint32 id)
{
    LogForm f;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM \"Stämme\" WHERE \"ID\" = ?"), {id});
    if (!q.next())
        return f;
    const QSqlRecord r = q.record();
    auto text = [&r](const char* c) { return readText(r.value(QString::fromUtf8(c))); };
    auto number = [&r](const char* c) { return numberText(readNumber(r.value(QString::fromUtf8(c)))); };
    f.losNr = text("Los_Nr");
    f.laufendeNr = text("Laufende_Nr");
    f.species = text("Baumart");
    f.quality = text("Güteklasse");
    f.measuredDiameter = number("Stärke_gemessen");
    f.length = number("Länge_m");
    const double top = readNumber(r.value(QStringLiteral("Zopfdurchm_cm")));
    f.topDiameter = top > 0 ? numberText(top) : QString();
    f.deduction = number("Rindenabzug");
    f.underBark = number("Stärke_oR");
    f.volume = formatDecimal(readNumber(r.value(QStringLiteral("Efm_oR"))), 3);
    f.diameterClass = text("Stärkeklasse");
    f.heilbronnClass = text("Klasse_Heilbronn");
    f.price = formatDecimal(readNumber(r.value(QStringLiteral("Preis_berechnet"))), 2);
    f.logPrice = formatDecimal(readNumber(r.value(QStringLiteral("Holzpreis"))), 2);
    f.gross = float(readNumber(r.value(QStringLiteral("Holzpreis"))));
    f.net = float(readNumber(r.value(QStringLiteral("Preis_berechnet"))));
    f.asStored = true;
    f.remark = text("Bemerkung");
    f.mode = barkModeFromLetter(text("Rindenabzugsart")).value_or(BarkMode::Ohne);
    f.kaeferholz = toShort(readNumber(r.value(QStringLiteral("Käferholz")))) == 1;
    return f;
}

QString lotSummary(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT count(*), sum(\"Efm_oR\"), avg(\"Länge_m\") FROM \"Stämme\" "
                                             "WHERE \"Los_Nr\" = ? AND \"Kennung\" = ?"), {lotNr, harvestId});
    q.next();
    const double count = readNumber(q.value(0));
    const double efm = readNumber(q.value(1));
    const double length = readNumber(q.value(2));
    // The back-calculation uses 3.14, not the volume rule's 3.14159; the list has always shown it so.
    const double diameter = count > 0 && length > 0 ? std::trunc(2 * 100 * std::sqrt(efm / length / count / 3.14)) : 0.0;
    const QString place = readText(scalar(db, QStringLiteral("SELECT \"Lagerort\" FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ? LIMIT 1"),
                                          {lotNr, harvestId}));
    return QStringLiteral("Gesamt: %1 Stämme mit %2 Efm oR\nDurchschnittsstamm: Länge =%3m   Stärke(oR) =%4  Lagerort: %5")
        .arg(formatDecimal(count, 0), formatDecimal(efm, 3), formatDecimal(length, 2), formatDecimal(diameter, 0), place);
}

QString decimetreLength(const QString& text)
{
    if (text.size() == 3 && !text.contains(u'.') && !text.contains(u','))
        return formatDecimal(readNumber(text) / 10, 1);
    return text;
}

qint32 proposedRunningNumber(const QSqlDatabase& db, const Einstellungen& settings, qint32 harvestId, qint32 lotNr)
{
    const bool perLot = settings.runningNumbersPerLot();
    const QVariant last = perLot ? scalar(db, QStringLiteral("SELECT max(\"Laufende_Nr\") FROM \"Stämme\" WHERE \"Kennung\" = ? AND \"Los_Nr\" = ?"),
                                          {harvestId, lotNr})
                                 : scalar(db, QStringLiteral("SELECT max(\"Laufende_Nr\") FROM \"Stämme\" WHERE \"Kennung\" = ?"), {harvestId});
    return nextRunningNumber(db, settings, harvestId, lotNr, QString::number(toLong(readNumber(last)) + 1));
}

HarvestRows logGridRows(qint32 harvestId)
{
    return {QStringLiteral("Stämme"),
            QString::fromUtf8("Los_Nr Laufende_Nr Baumart Stärke_gemessen Rindenabzugsart Rindenabzug Stärke_oR Länge_m Efm_oR "
                              "Stärkeklasse Güteklasse Zopfdurchm_cm Klasse_Heilbronn Holzpreis Preis_berechnet Bemerkung").split(u' '),
            harvestId};
}

QString lastSpeciesOfLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr)
{
    return lastValueOfLot(db, QStringLiteral("Stämme"), QStringLiteral("Baumart"), harvestId, lotNr);
}

QString lastQualityOfLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr)
{
    return lastValueOfLot(db, QStringLiteral("Stämme"), QStringLiteral("Güteklasse"), harvestId, lotNr);
}

} // namespace tarvik
