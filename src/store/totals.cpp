#include "store/totals.h"

#include "common/numbers.h"
#include "common/text.h"
#include "store/rows.h"
#include "store/sql.h"

#include <QSqlQuery>
#include <QHash>
#include <QSet>
#include <QSqlRecord>
#include <functional>

namespace tarvik {
namespace {

// Every stored total passes through the formatter and is read back, as the lists show it.
double rounded(const QVariant& sum, int decimals) { return readNumber(formatDecimal(readNumber(sum), decimals)); }

// Per-lot sums of one detail table, keyed by `Los_Nr`.
QHash<qint32, QSqlRecord> lotSums(const QSqlDatabase& db, const QString& sql, qint32 harvestId)
{
    QHash<qint32, QSqlRecord> sums;
    QSqlQuery q = execSql(db, sql, {harvestId});
    while (q.next())
        sums.insert(q.value(0).toInt(), q.record());
    return sums;
}

struct Lot {
    QVariant id;
    qint32 number = 0;
    QString sorting;
    qint16 priceKind = 0;
    QVariant flatPrice;
    QSqlRecord stored; // the totals as they stand
};

// True when the row already holds these values, so writing them would only dirty its page.
bool holds(const QSqlRecord& stored, const QStringList& columns, const QVariantList& values)
{
    for (qsizetype i = 0; i < columns.size(); ++i) {
        const QVariant now = stored.value(columns[i]);
        if (now.isNull() || readNumber(now) != readNumber(values[i]))
            return false;
    }
    return true;
}

// One assortment: the per-lot sums of its rows and the lot columns they set.
struct Assortment {
    QString sorting;
    QString sumsSql;
    QStringList lotColumns;
    std::function<QVariantList(const QSqlRecord& sums, const Lot& lot)> values;
};

const QList<Assortment>& assortments()
{
    static const QList<Assortment> all{
        {QStringLiteral("Stämme"), logLotSumsSql(),
         {QStringLiteral("Anzahl_Stämme"), QStringLiteral("Efm_oR"), QStringLiteral("Efm_je_Stamm"), QStringLiteral("Holzpreis"),
          QStringLiteral("Preis_berechnet")},
         [](const QSqlRecord& s, const Lot& lot) {
             // The mean as the engine's avg() gives it: the sum divided by the count.
             const double count = readNumber(s.value(1));
             const double mean = count != 0 ? readNumber(s.value(2)) / count : 0.0;
             const double net = lot.priceKind == 3 ? currencyValue(readNumber(lot.flatPrice)) : rounded(s.value(4), 2);
             return QVariantList{toLong(count), rounded(s.value(2), 3), rounded(mean, 2), rounded(s.value(3), 2), net};
         }},
        {QStringLiteral("Pfähle"),
         QStringLiteral("SELECT \"Los_Nr\", sum(\"Anzahl\"), sum(\"Preis_berechnet\") FROM \"Pfähle\" WHERE \"Kennung\" = ? "
                        "GROUP BY \"Los_Nr\""),
         {QStringLiteral("Anzahl_Pfähle"), QStringLiteral("Preis_berechnet"), QStringLiteral("Holzpreis")},
         [](const QSqlRecord& s, const Lot&) {
             const double price = rounded(s.value(2), 2);
             return QVariantList{toLong(readNumber(s.value(1))), price, price};
         }},
        {QStringLiteral("Schichtholz"),
         QStringLiteral("SELECT \"Los_Nr\", sum(\"Efm\"), sum(\"m3\"), sum(\"Preis_berechnet\") FROM \"Schichtholz\" "
                        "WHERE \"Kennung\" = ? GROUP BY \"Los_Nr\""),
         {QStringLiteral("Efm_Schichtholz"), QStringLiteral("m3_Schichtholz"), QStringLiteral("Preis_berechnet"), QStringLiteral("Holzpreis")},
         [](const QSqlRecord& s, const Lot&) {
             const double price = rounded(s.value(3), 2);
             return QVariantList{rounded(s.value(1), 2), rounded(s.value(2), 2), price, price};
         }},
    };
    return all;
}

// The lots of a harvest with every total column an assortment sets, to compare before writing.
// Built once: every store runs it.
const QString& lotRowsSql()
{
    static const QString sql = [] {
        QStringList columns;
        for (const Assortment& a : assortments())
            for (const QString& c : a.lotColumns)
                if (!columns.contains(quoted(c)))
                    columns << quoted(c);
        return QStringLiteral("SELECT \"ID\", \"Los_Nr\", \"Sortierung\", \"Preis_Art\", \"Pauschalpreis_G\", %1 "
                              "FROM \"Lose\" WHERE \"Kennung\" = ?").arg(columns.join(QStringLiteral(", ")));
    }();
    return sql;
}

} // namespace

QString logLotSumsSql()
{
    // total() rather than sum(): the same figures for these decimal columns, without sum()'s
    // integer bookkeeping on each of the harvest's rows, which every store reads.
    return QStringLiteral("SELECT \"Los_Nr\", count(*), total(\"Efm_oR\"), total(\"Holzpreis\"), total(\"Preis_berechnet\") "
                          "FROM \"Stämme\" WHERE \"Kennung\" = ? GROUP BY \"Los_Nr\"");
}

void recomputeTotals(const QSqlDatabase& db, qint32 harvestId)
{
    TransactionGuard guard(db);
    QList<Lot> lots;
    QSet<QString> sortings;
    QSqlQuery lotRows = execSql(db, lotRowsSql(), {harvestId});
    while (lotRows.next()) {
        Lot lot{lotRows.value(0), lotRows.value(1).toInt(), readText(lotRows.value(2)),
                toShort(readNumber(lotRows.value(3))), lotRows.value(4), lotRows.record()};
        sortings.insert(lot.sorting);
        lots << lot;
    }
    lotRows.finish();

    // Only the assortments the harvest has are summed.
    for (const Assortment& a : assortments()) {
        if (!sortings.contains(a.sorting))
            continue;
        const QHash<qint32, QSqlRecord> sums = lotSums(db, a.sumsSql, harvestId);
        std::optional<QSqlQuery> update;
        for (const Lot& lot : lots) {
            if (lot.sorting != a.sorting)
                continue;
            // A lot without rows has no group: its sums are those of no rows, 0.
            const QVariantList values = a.values(sums.value(lot.number), lot);
            if (holds(lot.stored, a.lotColumns, values))
                continue;
            if (!update)
                update = prepareSql(db, updateSql(QStringLiteral("Lose"), a.lotColumns));
            execPrepared(*update, values + QVariantList{lot.id});
        }
    }

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

namespace tarvik {

void refreshHarvest(const QSqlDatabase& db, qint32 harvestId)
{
    TransactionGuard guard(db);
    recomputeTotals(db, harvestId);
    recomputeSaleState(db, harvestId);
    guard.commit();
}

} // namespace tarvik
