#include "support/records.h"

#include "store/sql.h"

#include <QSqlQuery>

namespace tarvik::test {

qint32 addHarvest(const QSqlDatabase& db, qint32 hiebNr)
{
    QSqlQuery q = execSql(db, QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr, Waldname) VALUES (?, '2026', 'Eichwald')"), {hiebNr});
    return q.lastInsertId().toInt();
}

void addLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, const QString& sorting, const QString& settled)
{
    execSql(db, QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Preis_Art, Abgerechnet, Kennung) VALUES (?, ?, 0, ?, ?)"),
            {lotNr, sorting, settled, harvestId});
}

void addTypedLog(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, qint32 runningNr, const QString& species,
                 int diameter, double length, const QString& barkMode, int deduction, int top, const QString& quality,
                 int beetle)
{
    execSql(db, QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, "
                               "Rindenabzug, Länge_m, Zopfdurchm_cm, Güteklasse, Käferholz, Kennung) "
                               "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
            {lotNr, runningNr, species, diameter, barkMode, deduction, length, top, quality, beetle, harvestId});
}

} // namespace tarvik::test
