#pragma once
// Shared look-ups of records by what users see of them.
#include <QSqlDatabase>
#include <optional>

namespace tarvik {

// The `ID` of the harvest with that `Hieb_Nr` (the oldest, should two share it).
std::optional<qint32> harvestIdByNumber(const QSqlDatabase& db, qint32 hiebNr);

} // namespace tarvik
