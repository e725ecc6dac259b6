#pragma once
// Freely defined bark deductions (`Rindenabzug2`): ranges of measured diameter per species.
#include "masterdata/editmode.h"

namespace tarvik {

struct BarkRangeForm {
    QString baumart;
    QString staerkeVon; // tz(0)
    QString staerkeBis; // tz(1)
    QString abzugCm;    // tz(2)
};

// The species a range can be given, in name order.
QStringList speciesNames(const QSqlDatabase& db);

BarkRangeForm loadBarkRange(const QSqlDatabase& db, qint32 id);
// False when refused (the gathered reasons shown); nothing stored then.
bool storeBarkRange(const AppContext& context, EditMode mode, std::optional<qint32> id, const BarkRangeForm& form);
// The next range of the same species starts where the stored one ended; to is left open and
// the deduction is offered again.
BarkRangeForm nextBarkRange(const BarkRangeForm& stored);

} // namespace tarvik
