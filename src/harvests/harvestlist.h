#pragma once
// The harvest list of the main window: its source, its statistics line, and the text form
// the command line prints.
#include <QSqlDatabase>
#include <QSqlQueryModel>
#include <QString>
#include <QStringList>

namespace tarvik {

// The columns in the order the list shows them; `ID` last.
const QStringList& harvestListColumns();
QString harvestListSql();

struct HarvestStatistics {
    double lots = 0, area = 0, logs = 0, logEfm = 0, poles = 0, stackedM3 = 0, stackedEfm = 0;
    double meanEfmPerLog() const { return logs != 0 ? logEfm / logs : 0.0; }
    QString text() const; // the line `bezstati` shows
};

// Sums over the rows the list has fetched: no second query over the harvests.
HarvestStatistics harvestStatistics(const QSqlQueryModel& list);

// How the list shows a column's value: dates as "dd.mm.yyyy", area and volumes with fixed
// decimals and a decimal comma, texts as they stand.
QString harvestListCell(const QString& column, const QVariant& value);

// The whole list as tab-separated lines with a header line.
QStringList harvestListLines(const QSqlDatabase& db);

} // namespace tarvik
