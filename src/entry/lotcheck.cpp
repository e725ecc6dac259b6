#include "entry/lotcheck.h"

#include "common/numbers.h"
#include "common/text.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"

namespace tarvik {

QString inputRefusal(const QString& reason)
{
    return QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n\n") + reason;
}

std::optional<QString> otherAssortment(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, const QString& sorting)
{
    const QVariant stored = scalar(db, QStringLiteral("SELECT \"Sortierung\" FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ? LIMIT 1"),
                                   {lotNr, harvestId});
    if (!stored.isValid() || readText(stored) == sorting)
        return std::nullopt;
    return QStringLiteral("...das Los %1 bereits mit der Sortierung %2 eingetragen ist.").arg(lotNr).arg(readText(stored));
}

std::optional<qint32> invoiceOfLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr)
{
    const qint32 number = toLong(readNumber(scalar(
        db, QStringLiteral("SELECT max(\"ReNr\") FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ?"), {lotNr, harvestId})));
    if (number < 1)
        return std::nullopt;
    return number;
}

LotAnswer lotExistsOrAsk(const AppContext& ctx, qint32 harvestId, qint32 lotNr)
{
    if (scalar(ctx.db, QStringLiteral("SELECT 1 FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ? LIMIT 1"), {lotNr, harvestId}).isValid())
        return LotAnswer::Exists;
    if (ctx.prompter.askYesNo(QStringLiteral("Die Los_Nr %1 existiert noch nicht. Soll diese jetzt angelegt werden?").arg(lotNr)))
        return LotAnswer::Create;
    ctx.prompter.inform(QStringLiteral("Die Eingabe wurde nicht gespeichert!"));
    return LotAnswer::Refused;
}

void afterEntryStore(const QSqlDatabase& db, qint32 harvestId, const QString& remark)
{
    insertIntoLookupList(db, QStringLiteral("Liste_Bemerkungen"), remark);
    refreshHarvest(db, harvestId);
}

} // namespace tarvik
