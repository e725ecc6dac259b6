#include "entry/lotcheck.h"

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

LotAnswer lotExistsOrAsk(const AppContext& ctx, qint32 harvestId, qint32 lotNr)
{
    if (scalar(ctx.db, QStringLiteral("SELECT 1 FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ? LIMIT 1"), {lotNr, harvestId}).isValid())
        return LotAnswer::Exists;
    if (ctx.prompter.askYesNo(QStringLiteral("Die Los_Nr %1 existiert noch nicht. Soll diese jetzt angelegt werden?").arg(lotNr)))
        return LotAnswer::Create;
    ctx.prompter.inform(QStringLiteral("Die Eingabe wurde nicht gespeichert!"));
    return LotAnswer::Refused;
}

std::optional<qint32> writeEntryRow(const QSqlDatabase& db, const QString& table, const QStringList& columns,
                                    const QVariantList& values, std::optional<qint32> editedId)
{
    QStringList names, marks, assignments;
    for (const QString& c : columns) {
        names << quoted(c);
        marks << QStringLiteral("?");
        assignments << quoted(c) + QStringLiteral(" = ?");
    }
    if (!editedId) {
        execSql(db, QStringLiteral("INSERT INTO %1(%2) VALUES (%3)").arg(quoted(table), names.join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))),
                values);
        return std::nullopt;
    }
    const QVariant before = scalar(db, QStringLiteral("SELECT \"Los_Nr\" FROM %1 WHERE \"ID\" = ?").arg(quoted(table)), {*editedId});
    execSql(db, QStringLiteral("UPDATE %1 SET %2 WHERE \"ID\" = ?").arg(quoted(table), assignments.join(QStringLiteral(", "))),
            values + QVariantList{*editedId});
    return before.isValid() ? std::optional<qint32>(before.toInt()) : std::nullopt;
}

void afterEntryStore(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, std::optional<qint32> leftLot, const QString& remark)
{
    insertIntoLookupList(db, QStringLiteral("Liste_Bemerkungen"), remark);
    recomputeTotals(db, harvestId, lotNr);
    if (leftLot && *leftLot != lotNr)
        recomputeTotals(db, harvestId, *leftLot);
    recomputeSaleState(db, harvestId);
}

} // namespace tarvik
