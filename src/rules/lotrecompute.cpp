#include "rules/lotrecompute.h"

#include "common/numbers.h"
#include "common/prompter.h"
#include "common/text.h"
#include "rules/masterdatalookup.h"
#include "store/sql.h"
#include "store/totals.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik {
namespace {

// The derived values of a log as stored, compared before and after a recompute.
struct StoredLog {
    QString mode;
    qint16 deduction = 0;
    qint16 underBark = 0;
    double efm = 0;
    QString diameterClass;
    QString heilbronnClass;
    double gross = 0;
    double net = 0;

    bool operator==(const StoredLog&) const = default;
};

StoredLog storedLog(const QSqlRecord& r)
{
    return {readText(r.value(QStringLiteral("Rindenabzugsart"))),
            toShort(readNumber(r.value(QStringLiteral("Rindenabzug")))),
            toShort(readNumber(r.value(QStringLiteral("Stärke_oR")))),
            readNumber(formatDecimal(readNumber(r.value(QStringLiteral("Efm_oR"))), 3)),
            readText(r.value(QStringLiteral("Stärkeklasse"))),
            readText(r.value(QStringLiteral("Klasse_Heilbronn"))),
            currencyValue(readNumber(r.value(QStringLiteral("Holzpreis")))),
            currencyValue(readNumber(r.value(QStringLiteral("Preis_berechnet"))))};
}

QString text(const QSqlRecord& r, const char* column) { return readText(r.value(QString::fromUtf8(column))); }
QString numeric(const QSqlRecord& r, const char* column) { return numberText(readNumber(r.value(QString::fromUtf8(column)))); }

QString lotText(qint32 lotNr) { return QString::number(lotNr); }

const QString LogsOfLot = QStringLiteral("SELECT * FROM \"Stämme\" WHERE \"Kennung\" = ? AND \"Los_Nr\" = ? ORDER BY \"ID\"");

} // namespace

std::optional<PriceSettings> loadLotPriceSettings(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Preis_Art\", \"Pauschalpreis_efm\", \"Pauschalpreis_G\", "
                                             "\"Käferholzabschlag\", \"Kosten_Einschlag\", \"Kosten_Rücken\", "
                                             "\"Erschwerniszuschlag\" FROM \"Lose\" WHERE \"Kennung\" = ? AND \"Los_Nr\" = ? "
                                             "ORDER BY \"ID\" LIMIT 1"),
                          {harvestId, lotNr});
    if (!q.next())
        return std::nullopt;
    auto f = [&q](int i) { return static_cast<float>(readNumber(q.value(i))); };
    auto s = [&q](int i) { return toShort(readNumber(q.value(i))); };
    return PriceSettings{s(0), f(1), f(2), s(3), f(4), f(5), s(6)};
}

std::optional<LotRecomputeResult> recomputeLotBark(const QSqlDatabase& db, MasterDataLookup& masterData,
                                                   qint32 harvestId, std::optional<qint32> lotNr,
                                                   std::optional<BarkMode> mode, const PriceSettings& prices,
                                                   Prompter& prompter)
{
    if (!lotNr) {
        prompter.inform(QStringLiteral("Bitte wählen Sie links bei den Stammdaten die Los-Nr aus, bei der die Rindenabzüge neu berechnet werden sollen."));
        return std::nullopt;
    }
    if (!prompter.askYesNo(QStringLiteral("Möchten Sie wirklich alle Stämme vom Los %1 nochmals neu berechnen?").arg(lotText(*lotNr))))
        return std::nullopt;

    LotRecomputeResult result;
    {
        TransactionGuard guard(db);
        QSqlQuery logs = execSql(db, LogsOfLot, {harvestId, *lotNr});
        QSqlQuery update = prepareSql(db, QStringLiteral(
            "UPDATE \"Stämme\" SET \"Rindenabzugsart\" = ?, \"Rindenabzug\" = ?, \"Stärke_oR\" = ?, \"Efm_oR\" = ?, "
            "\"Stärkeklasse\" = ?, \"Klasse_Heilbronn\" = ?, \"Preis_berechnet\" = ?, \"Holzpreis\" = ? WHERE \"ID\" = ?"));
        while (logs.next()) {
            const QSqlRecord row = logs.record();
            const StoredLog before = storedLog(row);

            LogMeasurement m;
            m.species = text(row, "Baumart");
            m.measuredDiameter = numeric(row, "Stärke_gemessen");
            m.length = numeric(row, "Länge_m");
            m.topDiameter = numeric(row, "Zopfdurchm_cm");
            m.fixedDeduction = numeric(row, "Rindenabzug");
            m.mode = mode.value_or(barkModeFromLetter(before.mode).value_or(BarkMode::Ohne));
            const LogDerived d = measureLog(m, masterData);

            StoredLog after;
            after.mode = barkModeLetter(m.mode);
            after.deduction = toShort(readNumber(d.deduction));
            after.underBark = toShort(readNumber(d.diameterUnderBark));
            after.efm = readNumber(d.volume);
            // A log whose values match no class keeps the class it had, as the window's lists do.
            after.diameterClass = d.diameterClass.isEmpty() ? before.diameterClass : d.diameterClass;
            after.heilbronnClass = d.heilbronnClass.isEmpty() ? before.heilbronnClass : d.heilbronnClass;
            const LogPrice price = priceLog(prices,
                                            {after.diameterClass, text(row, "Güteklasse"), static_cast<float>(after.efm),
                                             m.species, toShort(readNumber(row.value(QStringLiteral("Käferholz"))))},
                                            masterData);
            after.gross = currencyValue(price.gross);
            after.net = currencyValue(price.net);

            execPrepared(update, {after.mode, after.deduction, after.underBark, after.efm, after.diameterClass,
                                  after.heilbronnClass, after.net, after.gross, row.value(QStringLiteral("ID"))});
            ++result.logs;
            if (!(after == before))
                ++result.changed;
        }
        logs.finish();
        guard.commit();
    }
    prompter.inform(QStringLiteral("Es wurden") + signedText(result.logs) + QStringLiteral(" Stämme geändert."));
    return result;
}

std::optional<LotRecomputeResult> recomputeLotPrices(const QSqlDatabase& db, MasterDataLookup& masterData,
                                                     qint32 harvestId, std::optional<qint32> lotNr,
                                                     const PriceSettings& prices, Prompter& prompter)
{
    if (!lotNr) {
        prompter.inform(QStringLiteral("Bitte legen Sie zuerst fest, welches Los neu berechnet werden soll!"));
        return std::nullopt;
    }
    if (!prompter.askYesNo(QStringLiteral("Sollen die Preise (alle Stämme) für das Los %1 wirklich lt. den Preiseinstellungen neu berechent werden?")
                               .arg(lotText(*lotNr))))
        return std::nullopt;

    LotRecomputeResult result;
    {
        TransactionGuard guard(db);
        QSqlQuery logs = execSql(db, LogsOfLot, {harvestId, *lotNr});
        QSqlQuery update = prepareSql(db, QStringLiteral("UPDATE \"Stämme\" SET \"Holzpreis\" = ?, \"Preis_berechnet\" = ? WHERE \"ID\" = ?"));
        while (logs.next()) {
            const QSqlRecord row = logs.record();
            const LogPrice price = priceLog(prices,
                                            {text(row, "Stärkeklasse"), text(row, "Güteklasse"),
                                             static_cast<float>(readNumber(row.value(QStringLiteral("Efm_oR")))),
                                             text(row, "Baumart"), toShort(readNumber(row.value(QStringLiteral("Käferholz"))))},
                                            masterData);
            const double gross = currencyValue(price.gross);
            const double net = currencyValue(price.net);
            execPrepared(update, {gross, net, row.value(QStringLiteral("ID"))});
            ++result.logs;
            if (gross != currencyValue(readNumber(row.value(QStringLiteral("Holzpreis"))))
                || net != currencyValue(readNumber(row.value(QStringLiteral("Preis_berechnet")))))
                ++result.changed;
        }
        logs.finish();

        QSqlQuery sums = execSql(db, QStringLiteral("SELECT sum(\"Preis_berechnet\"), sum(\"Holzpreis\") FROM \"Stämme\" "
                                                    "WHERE \"Kennung\" = ? AND \"Los_Nr\" = ?"),
                                 {harvestId, *lotNr});
        sums.next();
        double net = currencyValue(readNumber(sums.value(0)));
        double gross = currencyValue(readNumber(sums.value(1)));
        sums.finish();
        if (prices.preisArt == FlatForLot)
            net = gross = currencyValue(prices.pauschalpreisG);
        execSql(db, QStringLiteral("UPDATE \"Lose\" SET \"Holzpreis\" = ?, \"Preis_berechnet\" = ?, \"Preis_Art\" = ?, "
                                   "\"Erschwerniszuschlag\" = ?, \"Käferholzabschlag\" = ?, \"Kosten_Einschlag\" = ?, "
                                   "\"Kosten_Rücken\" = ?, \"Pauschalpreis_efm\" = ?, \"Pauschalpreis_G\" = ? "
                                   "WHERE \"Kennung\" = ? AND \"Los_Nr\" = ?"),
                {gross, net, prices.preisArt, prices.erschwerniszuschlag, prices.kaeferholzabschlag,
                 currencyValue(prices.kostenEinschlag), currencyValue(prices.kostenRuecken),
                 currencyValue(prices.pauschalpreisEfm), currencyValue(prices.pauschalpreisG), harvestId, *lotNr});
        guard.commit();
    }
    prompter.inform(QStringLiteral("Die Preise wurden lt. den aktuellen Vorgaben neu berechnet. Ggf. müssen Sie das aktuelle Modul schließen, um die neuen Preise zu sehen!"));
    return result;
}

std::optional<LotRecomputeResult> recomputeLot(const QSqlDatabase& db, MasterDataLookup& masterData, qint32 harvestId,
                                               std::optional<qint32> lotNr, const LotRecomputeRequest& request,
                                               Prompter& prompter)
{
    TransactionGuard guard(db);
    std::optional<LotRecomputeResult> result;
    if (request.bark) {
        result = recomputeLotBark(db, masterData, harvestId, lotNr, request.mode, request.priceSettings, prompter);
        if (!result)
            return std::nullopt;
    }
    if (request.prices) {
        const auto priced = recomputeLotPrices(db, masterData, harvestId, lotNr, request.priceSettings, prompter);
        if (!priced)
            return std::nullopt;
        if (!result)
            result = priced;
    }
    if (!result)
        return std::nullopt;
    refreshHarvest(db, harvestId);
    guard.commit();
    return result;
}

} // namespace tarvik
