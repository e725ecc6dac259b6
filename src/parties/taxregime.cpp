#include "parties/taxregime.h"

namespace tarvik::parties {

QString regimeWord(TaxRegime regime)
{
    switch (regime) {
    case TaxRegime::Flat24:
        return QStringLiteral("pauschal24");
    case TaxRegime::Small19:
        return QStringLiteral("klein19");
    case TaxRegime::Regular:
        break;
    }
    return QStringLiteral("regel");
}

std::optional<TaxRegime> regimeFromWord(const QString& word)
{
    for (TaxRegime r : {TaxRegime::Regular, TaxRegime::Flat24, TaxRegime::Small19})
        if (word.trimmed().compare(regimeWord(r), Qt::CaseInsensitive) == 0)
            return r;
    return std::nullopt;
}

QString regimeCaption(TaxRegime regime)
{
    switch (regime) {
    case TaxRegime::Flat24:
        return QStringLiteral("Durchschnittssatz nach § 24 UStG (5,5 % für forstwirtschaftliche Erzeugnisse)");
    case TaxRegime::Small19:
        return QStringLiteral("Kleinunternehmer nach § 19 UStG (ohne Umsatzsteuer)");
    case TaxRegime::Regular:
        break;
    }
    return QStringLiteral("Regelbesteuerung");
}

QString regimeNote(TaxRegime regime)
{
    switch (regime) {
    case TaxRegime::Flat24:
        return QStringLiteral("Umsatzsteuer nach Durchschnittssatz für forstwirtschaftliche Erzeugnisse gemäß § 24 Abs. 1 Satz 1 Nr. 1 UStG");
    case TaxRegime::Small19:
        return QStringLiteral("Kein Ausweis von Umsatzsteuer, da Kleinunternehmer gemäß § 19 UStG");
    case TaxRegime::Regular:
        break;
    }
    return {};
}

} // namespace tarvik::parties
