#pragma once
// Entering one measured log: the recompute on every change, the checks of OK, and the store
// with its questions (running number taken, lot missing, girth measurement).
#include "rules/logmeasure.h"
#include "rules/pricing.h"
#include "store/context.h"

#include "store/gridquery.h"
#include "store/rows.h"

#include <QSqlQuery>

#include <optional>

namespace tarvik {

class MasterDataLookup;

// The log window's fields as text.
struct LogForm {
    QString losNr, laufendeNr, species, quality;
    QString measuredDiameter, length, topDiameter; // tz(1), tz(2), tz(3)
    QString deduction, underBark, volume;           // tz(4), tz(5), tz(6)
    QString diameterClass, heilbronnClass;          // the class lists' selections
    bool heilbronnComputed = false;                 // the class came from the top diameter
    QString price, logPrice;                        // tz(7) net, tz(14) gross
    QString remark;
    QString girthCount; // a count for a girth measurement ("Mantelmessung"); empty: one log
    BarkMode mode = BarkMode::Tabelle;
    bool kaeferholz = false;
    PriceSettings prices; // the price frame, loaded from the lot
    float gross = 0;      // unrounded results of the last recompute (or the stored prices)
    float net = 0;
    // The derived values and prices are the stored row's, nothing typed since: the store keeps
    // them instead of recomputing with today's master data (unless the row lacks some).
    bool asStored = false;
};

// Derives deduction, diameter under bark, volume, classes and prices into the form. A class
// that matches nothing leaves the list's selection as it was; a Heilbronn class computed from
// a top diameter goes when the top diameter is emptied, one picked by hand stays.
void recomputeLog(LogForm& form, MasterDataLookup& masterData);

// The first failed check as the whole message, or nullopt.
std::optional<QString> checkLog(const QSqlDatabase& db, qint32 harvestId, const LogForm& form);

// Values no log has, most likely a slip of the finger: storing them asks first.
inline constexpr double PlausibleDiameterCm = 150;
inline constexpr double PlausibleLengthM = 40;

// The reasons to doubt a recomputed log ("...die Stärke von 337 cm ...", a log without a
// quality that is worth nothing), empty when none.
QStringList logDoubts(const LogForm& form);

struct LogStoreResult {
    int rows = 0;          // 1, or the count of a girth measurement
    qint32 lastNumber = 0; // the running number stored last
};

// Checks, asks (a log joining an invoiced lot among the questions), stores and brings the totals
// up to date, all writes in one transaction.
// nullopt when a check failed or an answer stopped it (the form keeps every value).
std::optional<LogStoreResult> storeLog(const AppContext& context, MasterDataLookup& masterData, qint32 harvestId,
                                       LogForm& form, std::optional<qint32> editedId);

// Inserts log rows with a form's recomputed values (no checks, no totals): the store above and
// the bulk writers use it. The statement is prepared once per inserter.
class LogInserter {
public:
    explicit LogInserter(const QSqlDatabase& db);
    void insert(qint32 harvestId, const LogForm& form, qint32 runningNumber, const QString& remark);

private:
    RowInserter m_insert;
};

// The log of that ID as the window shows it (recomputed values are those stored).
LogForm loadLog(const QSqlDatabase& db, qint32 id);

// "Gesamt: …" summary of a lot with the average log's length and diameter.
QString lotSummary(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr);

// Quick entry of lengths in decimetres: "125" becomes "12,5", "052" "5,2"; other texts stay.
QString decimetreLength(const QString& text);

// The running number proposed for a new log: the next after the highest of the harvest, or of
// the lot with numbering per lot.
qint32 proposedRunningNumber(const QSqlDatabase& db, const Einstellungen& settings, qint32 harvestId, qint32 lotNr);

// The harvest's logs for the window's grid, newest first.
HarvestRows logGridRows(qint32 harvestId);

// The species and the quality of the lot's last entered log, proposed for the next one.
QString lastSpeciesOfLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr);
QString lastQualityOfLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr);

} // namespace tarvik
