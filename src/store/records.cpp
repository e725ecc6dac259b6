#include "store/records.h"

#include "store/collation.h"

#include "common/numbers.h"
#include "common/text.h"
#include "settings/settings.h"
#include "store/sql.h"

#include <QSqlQuery>

namespace tarvik {

std::optional<qint32> harvestIdByNumber(const QSqlDatabase& db, qint32 hiebNr)
{
    const QVariant id = scalar(db, QStringLiteral("SELECT \"ID\" FROM \"Hiebe\" WHERE \"Hieb_Nr\" = ? ORDER BY \"ID\" LIMIT 1"), {hiebNr});
    if (!id.isValid())
        return std::nullopt;
    return id.toInt();
}

qint32 nextRunningNumber(const QSqlDatabase& db, const Einstellungen& settings, qint32 harvestId, qint32 lotNr,
                         const QString& proposal)
{
    const bool perLot = settings.runningNumbersPerLot();
    const QString lotFilter = perLot ? QStringLiteral(" AND \"Los_Nr\" = ?") : QString();
    auto withLot = [&](QVariantList values) {
        if (perLot)
            values << lotNr;
        return values;
    };
    const QString used = QStringLiteral("SELECT 1 FROM \"Stämme\" WHERE \"Kennung\" = ? AND \"Laufende_Nr\" = ?") + lotFilter
                         + QStringLiteral(" LIMIT 1");
    // A user who types numbers in order gets the next one without a search for the maximum.
    const qint32 n = toLong(readNumber(proposal));
    if (n != 0) {
        if (!scalar(db, used, withLot({harvestId, n})).isValid())
            return n;
        if (!scalar(db, used, withLot({harvestId, n + 1})).isValid())
            return n + 1;
    }
    const QVariant max = scalar(db, QStringLiteral("SELECT max(\"Laufende_Nr\") FROM \"Stämme\" WHERE \"Kennung\" = ?") + lotFilter,
                                withLot({harvestId}));
    return toLong(readNumber(max)) + 1;
}

qint32 nextSectionNumber(const QSqlDatabase& db, qint32 harvestId)
{
    const QVariant max = scalar(db, QStringLiteral("SELECT max(\"Sektions_Nr\") FROM \"Schichtholz\" WHERE \"Kennung\" = ?"), {harvestId});
    return toLong(readNumber(max)) + 1;
}

void createLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, const QString& sorting)
{
    execSql(db, QStringLiteral(
        "INSERT INTO \"Lose\"(\"Los_Nr\", \"Sortierung\", \"Anzahl_Stämme\", \"Efm_oR\", \"Efm_je_Stamm\", \"Anzahl_Pfähle\", "
        "\"Efm_Schichtholz\", \"m3_Schichtholz\", \"Lagerort\", \"Preis_Art\", \"Erschwerniszuschlag\", \"Los_Bezeichnung\", "
        "\"Anfahrt\", \"GPS_L\", \"GPS_B\", \"Kosten_Einschlag\", \"Kosten_Rücken\", \"Pauschalpreis_efm\", \"Pauschalpreis_G\", "
        "\"Vermessungsart\", \"Überlänge\", \"Fixlänge\", \"Qualität\", \"Holzpreis\", \"Preis_berechnet\", \"Preis_erhalten\", "
        "\"Abgerechnet\", \"ReNr\", \"Abnehmer\", \"Bemerkung\", \"Kennung\") "
        "VALUES (?, ?, 0, 0, 0, 0, 0, 0, '', 0, 0, '', '', '', '', 0, 0, 0, 0, '', 0, 0, '', 0, 0, 0, 'N', 0, '', '', ?)"),
            {lotNr, sorting, harvestId});
}

void insertIntoLookupList(const QSqlDatabase& db, const QString& table, const QString& text)
{
    if (!isSafeIdentifier(table) || text.isEmpty())
        return;
    // The engine folds ASCII only; "Ä" and "ä" are the same entry to a user.
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Inhalt\" FROM %1").arg(quoted(table)));
    while (q.next())
        if (readText(q.value(0)).compare(text, Qt::CaseInsensitive) == 0)
            return;
    q.finish();
    execSql(db, QStringLiteral("INSERT INTO %1(\"Inhalt\") VALUES (?)").arg(quoted(table)), {text});
}

QStringList listValues(const QSqlDatabase& db, const QString& table, const QString& column)
{
    QStringList values;
    if (!isSafeIdentifier(table) || !isSafeIdentifier(column))
        return values;
    // Names in German order; class tables keep the order their ranges were entered in.
    const bool classes = table.contains(QLatin1String("klassen"), Qt::CaseInsensitive);
    QSqlQuery q = execSql(db, QStringLiteral("SELECT %1 FROM %2 ORDER BY %3")
                                  .arg(quoted(column), quoted(table), classes ? QStringLiteral("rowid")
                                                                               : inGermanOrder(quoted(column)) + QStringLiteral(", rowid")));
    while (q.next()) {
        const QString v = readText(q.value(0));
        if (!v.isEmpty() && !values.contains(v))
            values << v;
    }
    return values;
}

QStringList distinctLotValues(const QSqlDatabase& db, const QString& column)
{
    QStringList values;
    if (!isSafeIdentifier(column))
        return values;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT DISTINCT %1 FROM \"Lose\" ORDER BY %2").arg(quoted(column), inGermanOrder(QStringLiteral("1"))));
    while (q.next())
        if (const QString v = readText(q.value(0)); !v.isEmpty())
            values << v;
    return values;
}

QStringList lotNumbers(const QSqlDatabase& db, qint32 harvestId, const QString& sorting)
{
    QStringList values;
    QSqlQuery q = sorting.isEmpty()
                      ? execSql(db, QStringLiteral("SELECT DISTINCT \"Los_Nr\" FROM \"Lose\" WHERE \"Kennung\" = ? ORDER BY 1"), {harvestId})
                      : execSql(db, QStringLiteral("SELECT DISTINCT \"Los_Nr\" FROM \"Lose\" WHERE \"Kennung\" = ? AND \"Sortierung\" = ? ORDER BY 1"),
                                {harvestId, sorting});
    while (q.next())
        values << readText(q.value(0));
    return values;
}

void deleteHarvestContents(const QSqlDatabase& db, qint32 harvestId)
{
    for (const char* table : {"Lose", "Stämme", "Pfähle", "Schichtholz"})
        execSql(db, QStringLiteral("DELETE FROM %1 WHERE \"Kennung\" = ?").arg(quoted(QString::fromUtf8(table))), {harvestId});
}

void deleteHarvest(const QSqlDatabase& db, qint32 harvestId)
{
    TransactionGuard guard(db);
    deleteHarvestContents(db, harvestId);
    execSql(db, QStringLiteral("DELETE FROM \"Hiebe\" WHERE \"ID\" = ?"), {harvestId});
    guard.commit();
}

} // namespace tarvik
