#include "store/totals.h"

#include "common/numbers.h"
#include "common/text.h"
#include "store/sql.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik {
namespace {

// Every stored total passes through the formatter and is read back, as the lists show it.
double rounded(const QVariant& sum, int decimals) { return readNumber(formatDecimal(readNumber(sum), decimals)); }

void logLotTotals(const QSqlDatabase& db, qint32 harvestId, const QSqlRecord& lot)
{
    const QVariant lotNr = lot.value(QStringLiteral("Los_Nr"));
    QSqlQuery sums = execSql(db, QStringLiteral(
        "SELECT count(*), sum(\"Efm_oR\"), avg(\"Efm_oR\"), sum(\"Holzpreis\"), sum(\"Preis_berechnet\") "
        "FROM \"Stämme\" WHERE \"Kennung\" = ? AND \"Los_Nr\" = ?"), {harvestId, lotNr});
    sums.next();
    double net = rounded(sums.value(4), 2);
    if (toShort(readNumber(lot.value(QStringLiteral("Preis_Art")))) == 3)
        net = currencyValue(readNumber(lot.value(QStringLiteral("Pauschalpreis_G"))));
    execSql(db, QStringLiteral("UPDATE \"Lose\" SET \"Anzahl_Stämme\" = ?, \"Efm_oR\" = ?, \"Efm_je_Stamm\" = ?, "
                               "\"Holzpreis\" = ?, \"Preis_berechnet\" = ? WHERE \"ID\" = ?"),
            {toLong(readNumber(sums.value(0))), rounded(sums.value(1), 3), rounded(sums.value(2), 2),
             rounded(sums.value(3), 2), net, lot.value(QStringLiteral("ID"))});
}

void poleLotTotals(const QSqlDatabase& db, qint32 harvestId, const QSqlRecord& lot)
{
    QSqlQuery sums = execSql(db, QStringLiteral("SELECT sum(\"Anzahl\"), sum(\"Preis_berechnet\") FROM \"Pfähle\" "
                                                "WHERE \"Kennung\" = ? AND \"Los_Nr\" = ?"),
                             {harvestId, lot.value(QStringLiteral("Los_Nr"))});
    sums.next();
    const double price = rounded(sums.value(1), 2);
    execSql(db, QStringLiteral("UPDATE \"Lose\" SET \"Anzahl_Pfähle\" = ?, \"Preis_berechnet\" = ?, \"Holzpreis\" = ? WHERE \"ID\" = ?"),
            {toLong(readNumber(sums.value(0))), price, price, lot.value(QStringLiteral("ID"))});
}

void stackedLotTotals(const QSqlDatabase& db, qint32 harvestId, const QSqlRecord& lot)
{
    QSqlQuery sums = execSql(db, QStringLiteral("SELECT sum(\"Efm\"), sum(\"m3\"), sum(\"Preis_berechnet\") FROM \"Schichtholz\" "
                                                "WHERE \"Kennung\" = ? AND \"Los_Nr\" = ?"),
                             {harvestId, lot.value(QStringLiteral("Los_Nr"))});
    sums.next();
    const double price = rounded(sums.value(2), 2);
    execSql(db, QStringLiteral("UPDATE \"Lose\" SET \"Efm_Schichtholz\" = ?, \"m3_Schichtholz\" = ?, \"Preis_berechnet\" = ?, "
                               "\"Holzpreis\" = ? WHERE \"ID\" = ?"),
            {rounded(sums.value(0), 2), rounded(sums.value(1), 2), price, price, lot.value(QStringLiteral("ID"))});
}

} // namespace

void recomputeTotals(const QSqlDatabase& db, qint32 harvestId, std::optional<qint32> onlyLot)
{
    TransactionGuard guard(db);
    const QString lotsSql = QStringLiteral("SELECT \"ID\", \"Los_Nr\", \"Sortierung\", \"Preis_Art\", \"Pauschalpreis_G\" "
                                           "FROM \"Lose\" WHERE \"Kennung\" = ?");
    QSqlQuery lots = onlyLot ? execSql(db, lotsSql + QStringLiteral(" AND \"Los_Nr\" = ?"), {harvestId, *onlyLot})
                             : execSql(db, lotsSql, {harvestId});
    while (lots.next()) {
        const QSqlRecord lot = lots.record();
        const QString sorting = readText(lot.value(QStringLiteral("Sortierung")));
        if (sorting == u"Stämme")
            logLotTotals(db, harvestId, lot);
        else if (sorting == u"Pfähle")
            poleLotTotals(db, harvestId, lot);
        else if (sorting == u"Schichtholz")
            stackedLotTotals(db, harvestId, lot);
    }
    lots.finish();

    // The harvest sums the lots' stored totals, not the detail rows.
    QSqlQuery sums = execSql(db, QStringLiteral(
        "SELECT count(*), sum(\"Anzahl_Stämme\"), sum(\"Efm_oR\"), sum(\"Anzahl_Pfähle\"), sum(\"Efm_Schichtholz\"), "
        "sum(\"m3_Schichtholz\") FROM \"Lose\" WHERE \"Kennung\" = ?"), {harvestId});
    sums.next();
    const qint32 logs = toLong(readNumber(sums.value(1)));
    const double efm = rounded(sums.value(2), 3);
    const double perLog = logs != 0 ? readNumber(formatDecimal(efm / logs, 3)) : 0.0;
    execSql(db, QStringLiteral("UPDATE \"Hiebe\" SET \"Anzahl_Lose\" = ?, \"Stämme_Anzahl\" = ?, \"Stämme_Efm\" = ?, "
                               "\"Stämme_Efm_je_Stück\" = ?, \"Pfähle_Anzahl\" = ?, \"Schichtholz_Efm\" = ?, "
                               "\"Schichtholz_m3\" = ? WHERE \"ID\" = ?"),
            {toLong(readNumber(sums.value(0))), logs, efm, perLog, toLong(rounded(sums.value(3), 2)),
             rounded(sums.value(4), 2), rounded(sums.value(5), 2), harvestId});
    sums.finish();
    guard.commit();
}

void recomputeSaleState(const QSqlDatabase& db, qint32 harvestId)
{
    TransactionGuard guard(db);
    bool settled = false;
    bool open = false;
    QSqlQuery lots = execSql(db, QStringLiteral("SELECT \"Abgerechnet\" FROM \"Lose\" WHERE \"Kennung\" = ?"), {harvestId});
    while (lots.next())
        (readText(lots.value(0)) == u"J" ? settled : open) = true;
    lots.finish();
    // A fully sold harvest carries both flags; the main list colours rows by the pair.
    const QString partly = settled ? QStringLiteral("J") : QStringLiteral("N");
    const QString sold = settled && !open ? QStringLiteral("J") : QStringLiteral("N");
    execSql(db, QStringLiteral("UPDATE \"Hiebe\" SET \"Teilverkauft\" = ?, \"Verkauft\" = ? WHERE \"ID\" = ?"),
            {partly, sold, harvestId});
    guard.commit();
}

} // namespace tarvik
