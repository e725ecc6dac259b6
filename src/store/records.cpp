#include "store/records.h"

#include "store/sql.h"

namespace tarvik {

std::optional<qint32> harvestIdByNumber(const QSqlDatabase& db, qint32 hiebNr)
{
    const QVariant id = scalar(db, QStringLiteral("SELECT \"ID\" FROM \"Hiebe\" WHERE \"Hieb_Nr\" = ? ORDER BY \"ID\" LIMIT 1"), {hiebNr});
    if (!id.isValid())
        return std::nullopt;
    return id.toInt();
}

} // namespace tarvik
