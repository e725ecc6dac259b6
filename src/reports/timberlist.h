#pragma once
// The timber list of one harvest: its data, its log lots with the timber list by species,
// quality and class, the distribution in per cent and the single logs, then its pole and its
// stacked-wood lots. Fixed-width lines; writing them is the caller's.
#include <QSqlDatabase>
#include <QStringList>
#include <optional>

namespace tarvik {

QStringList timberList(const QSqlDatabase& db, qint32 harvestId);

// The timber list of chosen log lots of a harvest: the harvest's data, the logs' means and
// species, the lot table, then for each chosen lot its timber list, distribution and single logs.
QStringList timberListOfLots(const QSqlDatabase& db, qint32 harvestId, const QList<qint32>& lots);

// The harvest's log lots to choose from: "Los 3  Eiche am Weg  (40 Stämme)", in number order.
struct TimberListLot {
    qint32 number = 0;
    QString label;
};
QList<TimberListLot> timberListLots(const QSqlDatabase& db, qint32 harvestId);
inline constexpr char NoLotsMarked[] = "Die Liste kann nicht erstellt werden, weil keine Lose markiert sind.";

// What printing needs to know of a timber list: its harvest number (nullopt: the lines are not a
// timber list) and which lines head a table.
std::optional<QString> timberListHarvestNumber(const QStringList& lines);
bool isTimberListHeading(const QString& line);

inline constexpr char ReportFileName[] = "Daten.txt";

} // namespace tarvik
