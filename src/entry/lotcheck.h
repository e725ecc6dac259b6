#pragma once
// What every entry window checks about the lot it books to.
#include "store/context.h"

#include <QStringList>
#include <optional>

namespace tarvik {

// "Die Eingabe kann nicht übernommen werden, weil..." with two line breaks, then the reason.
QString inputRefusal(const QString& reason);

// "...das Los N bereits mit der Sortierung X eingetragen ist." when the lot holds another
// assortment; nullopt when it holds this one or does not exist.
std::optional<QString> otherAssortment(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, const QString& sorting);

// The number of the invoice that billed the lot (`ReNr` 1 or more); nullopt when none did.
std::optional<qint32> invoiceOfLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr);

enum class LotAnswer { Exists, Create, Refused };
// Whether the lot exists; when not, asks to create it ("Refused" has shown its message).
LotAnswer lotExistsOrAsk(const AppContext& context, qint32 harvestId, qint32 lotNr);

// After a store: a new remark joins its list; the lots and the harvest are summed again and
// the sale state follows. Runs inside the caller's transaction.
void afterEntryStore(const QSqlDatabase& db, qint32 harvestId, const QString& remark);

} // namespace tarvik
