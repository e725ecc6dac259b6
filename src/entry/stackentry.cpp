#include "entry/stackentry.h"

#include "common/numbers.h"
#include "common/text.h"
#include "entry/lotcheck.h"
#include "rules/masterdatalookup.h"
#include "store/gridquery.h"
#include "store/records.h"
#include "store/rows.h"
#include "store/sql.h"
#include "store/textwidth.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik {
namespace {


float rowPrice(const StackForm& f)
{
    return stackedPrice(static_cast<float>(readNumber(f.pricePerSter)), static_cast<float>(readNumber(f.m3)));
}

bool sectionTaken(const QSqlDatabase& db, qint32 harvestId, qint32 number, std::optional<qint32> editedId)
{
    if (editedId)
        return scalar(db, QStringLiteral("SELECT 1 FROM \"Schichtholz\" WHERE \"Kennung\" = ? AND \"Sektions_Nr\" = ? AND \"ID\" <> ? LIMIT 1"),
                      {harvestId, number, *editedId}).isValid();
    return scalar(db, QStringLiteral("SELECT 1 FROM \"Schichtholz\" WHERE \"Kennung\" = ? AND \"Sektions_Nr\" = ? LIMIT 1"),
                  {harvestId, number}).isValid();
}

} // namespace

void stackDimensionsChanged(StackForm& f, const StackedFactors& factors)
{
    const StackedVolumes v = measureStack({f.length, f.depth, f.height}, factors);
    f.m3 = v.m3;
    f.efm = v.efm;
    stackPriceChanged(f);
}

void stackDiameterChanged(StackForm& f, MasterDataLookup& masterData)
{
    const QString cls = stackedClassOf(masterData, f.diameter);
    if (cls != f.stackClass) {
        f.stackClass = cls;
        if (!cls.isEmpty())
            f.pricePerSter = formatDecimal(stackedEstimatedPrice(masterData, cls), 2);
    }
    stackPriceChanged(f);
}

void stackPriceChanged(StackForm& f) { f.price = formatDecimal(rowPrice(f), 2); }

std::optional<QString> checkStack(const QSqlDatabase& db, qint32 harvestId, const StackForm& f)
{
    if (readNumber(f.losNr) <= 0)
        return inputRefusal(QStringLiteral("...die Los-Nummer fehlt."));
    if (readNumber(f.sectionNr) <= 0)
        return inputRefusal(QStringLiteral("...die Sektions-Nummer fehlt."));
    if (f.species.trimmed().isEmpty())
        return inputRefusal(QStringLiteral("...die Baumart fehlt."));
    if (readNumber(f.diameter) <= 0)
        return inputRefusal(QStringLiteral("...die durchschnittliche Stärke fehlt."));
    if (readNumber(f.length) <= 0 || readNumber(f.depth) <= 0 || readNumber(f.height) <= 0)
        return inputRefusal(QStringLiteral("...die Sektionslänge, Sektionstiefe und Sektionshöhe angegeben werden muß."));
    if (f.stackClass.trimmed().isEmpty())
        return inputRefusal(QStringLiteral("...die Stärkeklasse fehlt."));
    if (const QStringList tooLong = widthReasons(QStringLiteral("Schichtholz"), {
         {QStringLiteral("Baumart"), f.species.trimmed(), QStringLiteral("die Baumart")},
         {QStringLiteral("Stärkeklasse"), f.stackClass.trimmed(), QStringLiteral("die Stärkeklasse")},
         {QStringLiteral("Bemerkung"), f.remark.trimmed(), QStringLiteral("die Bemerkung")}});
        !tooLong.isEmpty())
        return inputRefusal(tooLong.join(u'\n'));
    if (const auto other = otherAssortment(db, harvestId, toLong(readNumber(f.losNr)), QStringLiteral("Schichtholz")))
        return inputRefusal(*other);
    return std::nullopt;
}

bool storeStack(const AppContext& ctx, qint32 harvestId, StackForm& f, std::optional<qint32> editedId)
{
    stackDimensionsChanged(f, StackedFactors::from(ctx.settings));
    if (const auto refusal = checkStack(ctx.db, harvestId, f)) {
        ctx.prompter.inform(*refusal);
        return false;
    }
    qint32 section = toLong(readNumber(f.sectionNr));
    if (sectionTaken(ctx.db, harvestId, section, editedId)) {
        if (!ctx.prompter.askYesNo(QStringLiteral("Die Sektions-Nummer %1 existiert beim aktuellen Hieb bereits.\n\n"
                                                  "Soll die Nummer automatisch vergeben werden?").arg(section))) {
            ctx.prompter.inform(QStringLiteral("Die Eingabe wurde nicht gespeichert!"));
            return false;
        }
        section = nextSectionNumber(ctx.db, harvestId);
        if (section > 999999) {
            ctx.prompter.inform(QStringLiteral("Die automatische Vergabe ist nicht möglich, weil die höchste mögliche Sektionsnummer 999999 bereits vergeben ist."));
            return false;
        }
        f.sectionNr = QString::number(section);
    }
    const qint32 lot = toLong(readNumber(f.losNr));
    const LotAnswer answer = lotExistsOrAsk(ctx, harvestId, lot);
    if (answer == LotAnswer::Refused)
        return false;
    TransactionGuard guard(ctx.db);
    if (answer == LotAnswer::Create)
        createLot(ctx.db, harvestId, lot, QStringLiteral("Schichtholz"));
    // m3 is stored too: the lot totals sum it.
    const QVariantList values{lot, section, f.species.trimmed(), toShort(readNumber(f.diameter)), readNumber(f.length),
                              readNumber(f.depth), readNumber(f.height), f.stackClass, readNumber(f.m3), readNumber(f.efm),
                              currencyValue(readNumber(f.pricePerSter)), currencyValue(rowPrice(f)), f.remark.trimmed(), harvestId};
    writeRow(
        ctx.db, QStringLiteral("Schichtholz"),
        QString::fromUtf8("Los_Nr Sektions_Nr Baumart Stärke Sektionslänge_m Sektionstiefe_m Sektionshöhe_m Stärkeklasse m3 Efm "
                          "Preis_je_Ster Preis_berechnet Bemerkung Kennung").split(u' '),
        values, editedId);
    afterEntryStore(ctx.db, harvestId, f.remark.trimmed());
    guard.commit();
    return true;
}

StackForm loadStack(const QSqlDatabase& db, qint32 id)
{
    StackForm f;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM \"Schichtholz\" WHERE \"ID\" = ?"), {id});
    if (!q.next())
        return f;
    const QSqlRecord r = q.record();
    auto text = [&r](const char* c) { return readText(r.value(QString::fromUtf8(c))); };
    auto number = [&r](const char* c) { return numberText(readNumber(r.value(QString::fromUtf8(c)))); };
    auto fixed = [&r](const char* c, int d) { return formatDecimal(readNumber(r.value(QString::fromUtf8(c))), d); };
    f = {text("Los_Nr"), text("Sektions_Nr"), text("Baumart"), number("Stärke"), number("Sektionslänge_m"),
         number("Sektionstiefe_m"), number("Sektionshöhe_m"), fixed("m3", 3), fixed("Efm", 3), text("Stärkeklasse"),
         fixed("Preis_je_Ster", 2), fixed("Preis_berechnet", 2), text("Bemerkung")};
    return f;
}

HarvestRows stackGridRows(qint32 harvestId)
{
    return {QStringLiteral("Schichtholz"), QString::fromUtf8("Los_Nr Sektions_Nr Baumart Stärke Sektionslänge_m Sektionstiefe_m Sektionshöhe_m Stärkeklasse m3 Efm Preis_je_Ster Preis_berechnet Bemerkung").split(u' '), harvestId};
}

} // namespace tarvik
