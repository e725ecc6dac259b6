#pragma once
// Record helpers every entry window uses: numbering, new lots, lookup lists, and the removal
// of a harvest with everything booked to it.
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {

struct Einstellungen;

// The `ID` of the harvest with that `Hieb_Nr` (the oldest, should two share it).
std::optional<qint32> harvestIdByNumber(const QSqlDatabase& db, qint32 hiebNr);

// The running number for a new log: the proposal when it is free, else the next one when that
// is free, else the highest plus one. With per-lot numbering (Einst_Zahl(57) = 1) only the
// lot's logs count.
qint32 nextRunningNumber(const QSqlDatabase& db, const Einstellungen& settings, qint32 harvestId, qint32 lotNr,
                         const QString& proposal);

// The section number for new stacked wood: highest of the harvest plus one.
qint32 nextSectionNumber(const QSqlDatabase& db, qint32 harvestId);

// A new, empty lot of the harvest with the given assortment ("Stämme", "Pfähle", "Schichtholz").
void createLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, const QString& sorting);

// Adds the text to a one-column list (`Liste_*`) unless it is there already, whatever its case.
void insertIntoLookupList(const QSqlDatabase& db, const QString& table, const QString& text);

// The texts of a list column in stored order, without empties and repeats, for the drop-downs.
QStringList listValues(const QSqlDatabase& db, const QString& table, const QString& column);
// Distinct values of a lot column over all lots, for the lists of the lot window.
QStringList distinctLotValues(const QSqlDatabase& db, const QString& column);
// The lot numbers of the harvest, of one assortment when given.
QStringList lotNumbers(const QSqlDatabase& db, qint32 harvestId, const QString& sorting = QString());

// Removes the harvest's lots, logs, poles and stacked wood; the caller removes the harvest.
void deleteHarvestContents(const QSqlDatabase& db, qint32 harvestId);
// Removes the harvest with everything booked to it, in one transaction.
void deleteHarvest(const QSqlDatabase& db, qint32 harvestId);

} // namespace tarvik
