#include "rules/pricing.h"

#include "rules/masterdatalookup.h"

namespace tarvik {
namespace {

float grossValue(const PriceSettings& s, const LogPriceInput& log, MasterDataLookup& masterData)
{
    const QString classColumn = QStringLiteral("SK_") + log.diameterClass;
    switch (s.preisArt) {
    case IndexNumberPrice: {
        if (log.quality.isEmpty() || log.diameterClass.isEmpty() || log.species.isEmpty() || !(log.efm > 0))
            return 0;
        const auto base = masterData.speciesValue(QStringLiteral("Messbeträge"), log.species, classColumn);
        if (!base)
            return 0;
        float g = static_cast<float>(*base) * log.efm;
        // A quality without its own column leaves the base amount unscaled.
        if (g != 0) {
            const auto index = masterData.speciesValue(QStringLiteral("Messzahlen"), log.species, QStringLiteral("GK_") + log.quality);
            if (index)
                g = g * static_cast<float>(*index) / 100.0f;
        }
        return g;
    }
    case DayPrice: {
        if (log.diameterClass.isEmpty() || log.species.isEmpty() || !(log.efm > 0))
            return 0;
        const auto price = masterData.dayPrice(log.species, log.quality, classColumn);
        return price ? static_cast<float>(*price) * log.efm : 0.0f;
    }
    case FlatPerEfm:
        return log.efm * s.pauschalpreisEfm;
    default:
        return 0; // the flat price of the lot is booked to the lot, not its logs
    }
}

} // namespace

LogPrice priceLog(const PriceSettings& s, const LogPriceInput& log, MasterDataLookup& masterData)
{
    LogPrice p;
    p.gross = grossValue(s, log, masterData);
    if (p.gross == 0)
        return p; // no costs are charged against a log without value
    float beetle = 0;
    if (log.kaeferholz == 1)
        beetle = static_cast<float>(s.kaeferholzabschlag) * p.gross / 100.0f;
    // The surcharge is taken on the wages per Efm, not multiplied by the volume.
    p.net = p.gross - beetle - log.efm * s.kostenEinschlag - log.efm * s.kostenRuecken
            - (s.kostenEinschlag + s.kostenRuecken) * static_cast<float>(s.erschwerniszuschlag) / 100.0f;
    return p;
}

} // namespace tarvik
