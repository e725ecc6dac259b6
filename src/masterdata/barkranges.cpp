#include "masterdata/barkranges.h"

#include "common/numbers.h"
#include "common/text.h"
#include "store/collation.h"
#include "store/sql.h"

namespace tarvik {

QStringList speciesNames(const QSqlDatabase& db)
{
    QStringList names;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Baumart\" FROM \"Baumarten\" ORDER BY ") + inGermanOrder(QStringLiteral("\"Baumart\"")));
    while (q.next())
        names << readText(q.value(0));
    return names;
}

BarkRangeForm loadBarkRange(const QSqlDatabase& db, qint32 id)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Baumart\", \"Stärke_von\", \"Stärke_bis\", \"Abzug_cm\" FROM "
                                             "\"Rindenabzug2\" WHERE \"ID\" = ?"),
                          {id});
    BarkRangeForm form;
    if (q.next())
        form = {readText(q.value(0)), numberText(readNumber(q.value(1))), numberText(readNumber(q.value(2))),
                numberText(readNumber(q.value(3)))};
    return form;
}

bool storeBarkRange(const AppContext& context, EditMode mode, std::optional<qint32> id, const BarkRangeForm& form)
{
    const QString species = form.baumart.trimmed();
    QStringList reasons;
    if (species.isEmpty())
        reasons << QStringLiteral("...die Baumart angegeben werden muß.");
    if (readNumber(form.staerkeVon) > readNumber(form.staerkeBis))
        reasons << QStringLiteral("...die 'Stärke von' nicht größen sein darf als die 'Stärke bis'.");
    if (readNumber(form.abzugCm) < 0)
        reasons << QStringLiteral("...der Abzug darf nicht unter 0 cm sein.");
    if (!reasons.isEmpty()) {
        context.prompter.inform(gatheredRefusal(reasons));
        return false;
    }
    const QVariantList values{species, toShort(readNumber(form.staerkeVon)), toShort(readNumber(form.staerkeBis)),
                              toShort(readNumber(form.abzugCm))};
    TransactionGuard guard(context.db);
    if (mode == EditMode::Aendern && id)
        execSql(context.db,
                QStringLiteral("UPDATE \"Rindenabzug2\" SET \"Baumart\" = ?, \"Stärke_von\" = ?, \"Stärke_bis\" = ?, "
                               "\"Abzug_cm\" = ? WHERE \"ID\" = ?"),
                values + QVariantList{*id});
    else
        execSql(context.db,
                QStringLiteral("INSERT INTO \"Rindenabzug2\"(\"Baumart\", \"Stärke_von\", \"Stärke_bis\", \"Abzug_cm\") "
                               "VALUES (?, ?, ?, ?)"),
                values);
    guard.commit();
    masterDataChanged();
    return true;
}

BarkRangeForm nextBarkRange(const BarkRangeForm& stored)
{
    return {stored.baumart.trimmed(), numberText(double(toShort(readNumber(stored.staerkeBis))) + 1), QString(),
            numberText(double(toShort(readNumber(stored.abzugCm))))};
}

} // namespace tarvik
