#pragma once
// The timber list of one harvest: its data, its log lots with the timber list by species,
// quality and class, the distribution in per cent and the single logs, then its pole and its
// stacked-wood lots. Fixed-width lines; writing them is the caller's.
#include <QSqlDatabase>
#include <QStringList>

namespace tarvik {

QStringList timberList(const QSqlDatabase& db, qint32 harvestId);

inline constexpr char ReportFileName[] = "Daten.txt";

} // namespace tarvik
