#pragma once
// What every entry window checks about the lot it books to.
#include "store/context.h"

#include <optional>

namespace tarvik {

// "...das Los N bereits mit der Sortierung X eingetragen ist." when the lot holds another
// assortment; nullopt when it holds this one or does not exist.
std::optional<QString> otherAssortment(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, const QString& sorting);

enum class LotAnswer { Exists, Create, Refused };
// Whether the lot exists; when not, asks to create it ("Refused" has shown its message).
LotAnswer lotExistsOrAsk(const AppContext& context, qint32 harvestId, qint32 lotNr);

} // namespace tarvik
