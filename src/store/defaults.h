#pragma once
// The master data a new database file starts with.
#include <QList>
#include <QSqlDatabase>
#include <QString>

namespace tarvik {

struct BarkRange {
    int from;
    int to;
    int deductionCm;
};

// Inserts every default row in the order a new file receives them. Runs inside the
// caller's transaction.
void insertDefaultMasterData(const QSqlDatabase& db);
// The default rows of one class table (the log, Heilbronn, pole and stacked-wood classes and
// the quality classes); false for any other table.
bool insertDefaultRows(const QSqlDatabase& db, const QString& table);

// The default `Rindenabzug2` ranges of a species' group; empty for a species outside the five
// groups (it gets no default rows).
QList<BarkRange> defaultBarkRanges(const QString& species);

// The 27 species of a new file, in their order.
QStringList defaultSpecies();

} // namespace tarvik
