#include "entry/poleentry.h"

#include "common/numbers.h"
#include "common/text.h"
#include "entry/lotcheck.h"
#include "rules/masterdatalookup.h"
#include "rules/poles.h"
#include "store/gridquery.h"
#include "store/records.h"
#include "store/rows.h"
#include "store/sql.h"
#include "store/textwidth.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik {
namespace {


float rowPrice(const PoleForm& f)
{
    return polePrice(static_cast<float>(readNumber(f.pricePerPiece)), toLong(readNumber(f.count)));
}

} // namespace

void poleMeasureChanged(PoleForm& f, MasterDataLookup& masterData)
{
    const QString cls = poleClassOf(masterData, f.diameter, f.length);
    if (cls != f.poleClass) {
        f.poleClass = cls;
        if (!cls.isEmpty())
            f.pricePerPiece = formatDecimal(poleEstimatedPrice(masterData, cls), 2);
    }
    polePriceChanged(f);
}

void polePriceChanged(PoleForm& f) { f.price = formatDecimal(rowPrice(f), 2); }

std::optional<QString> checkPole(const QSqlDatabase& db, qint32 harvestId, const PoleForm& f)
{
    if (readNumber(f.losNr) <= 0)
        return inputRefusal(QStringLiteral("...die Los-Nummer fehlt."));
    if (f.species.trimmed().isEmpty())
        return inputRefusal(QStringLiteral("...die Baumart fehlt."));
    if (readNumber(f.diameter) <= 0)
        return inputRefusal(QStringLiteral("...die Stärke inkl. Rinde größer als 0 sein muß."));
    if (readNumber(f.length) <= 0)
        return inputRefusal(QStringLiteral("...die Länge fehlt."));
    if (readNumber(f.count) <= 0)
        return inputRefusal(QStringLiteral("...die Anzahl Pfähle fehlt."));
    if (f.poleClass.trimmed().isEmpty())
        return inputRefusal(QStringLiteral("...die Stärkeklasse fehlt."));
    if (const QStringList tooLong = widthReasons(QStringLiteral("Pfähle"), {
         {QStringLiteral("Baumart"), f.species.trimmed(), QStringLiteral("die Baumart")},
         {QStringLiteral("Stärkeklasse"), f.poleClass.trimmed(), QStringLiteral("die Stärkeklasse")},
         {QStringLiteral("Bemerkung"), f.remark.trimmed(), QStringLiteral("die Bemerkung")}});
        !tooLong.isEmpty())
        return inputRefusal(tooLong.join(u'\n'));
    if (const auto other = otherAssortment(db, harvestId, toLong(readNumber(f.losNr)), QStringLiteral("Pfähle")))
        return inputRefusal(*other);
    return std::nullopt;
}

bool storePole(const AppContext& ctx, qint32 harvestId, PoleForm& f, std::optional<qint32> editedId)
{
    polePriceChanged(f);
    if (const auto refusal = checkPole(ctx.db, harvestId, f)) {
        ctx.prompter.inform(*refusal);
        return false;
    }
    const qint32 lot = toLong(readNumber(f.losNr));
    const LotAnswer answer = lotExistsOrAsk(ctx, harvestId, lot);
    if (answer == LotAnswer::Refused)
        return false;
    TransactionGuard guard(ctx.db);
    if (answer == LotAnswer::Create)
        createLot(ctx.db, harvestId, lot, QStringLiteral("Pfähle"));
    const QVariantList values{lot, f.species.trimmed(), toShort(readNumber(f.diameter)), readNumber(f.length),
                              toLong(readNumber(f.count)), f.poleClass, currencyValue(readNumber(f.pricePerPiece)),
                              currencyValue(rowPrice(f)), f.remark.trimmed(), harvestId};
    writeRow(
        ctx.db, QStringLiteral("Pfähle"),
        QString::fromUtf8("Los_Nr Baumart Stärke_mR Länge_m Anzahl Stärkeklasse Preis_je_Stück Preis_berechnet Bemerkung Kennung").split(u' '),
        values, editedId);
    afterEntryStore(ctx.db, harvestId, f.remark.trimmed());
    guard.commit();
    return true;
}

PoleForm loadPole(const QSqlDatabase& db, qint32 id)
{
    PoleForm f;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM \"Pfähle\" WHERE \"ID\" = ?"), {id});
    if (!q.next())
        return f;
    const QSqlRecord r = q.record();
    auto text = [&r](const char* c) { return readText(r.value(QString::fromUtf8(c))); };
    auto number = [&r](const char* c) { return numberText(readNumber(r.value(QString::fromUtf8(c)))); };
    f = {text("Los_Nr"), text("Baumart"), number("Stärke_mR"), number("Länge_m"), number("Anzahl"), text("Stärkeklasse"),
         formatDecimal(readNumber(r.value(QStringLiteral("Preis_je_Stück"))), 2),
         formatDecimal(readNumber(r.value(QStringLiteral("Preis_berechnet"))), 2), text("Bemerkung")};
    return f;
}

HarvestRows poleGridRows(qint32 harvestId)
{
    return {QStringLiteral("Pfähle"), QString::fromUtf8("Los_Nr Baumart Stärke_mR Länge_m Anzahl Stärkeklasse Preis_je_Stück Preis_berechnet Bemerkung").split(u' '), harvestId};
}

} // namespace tarvik
