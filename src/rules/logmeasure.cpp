#include "rules/logmeasure.h"

#include "common/numbers.h"
#include "rules/masterdatalookup.h"

#include <cmath>

namespace tarvik {

QString barkModeLetter(BarkMode mode)
{
    switch (mode) {
    case BarkMode::Fest: return QStringLiteral("F");
    case BarkMode::Tabelle: return QStringLiteral("T");
    case BarkMode::Ohne: break;
    }
    return QStringLiteral("O");
}

std::optional<BarkMode> barkModeFromLetter(const QString& letter)
{
    const QString l = letter.trimmed().toUpper();
    if (l == u"O")
        return BarkMode::Ohne;
    if (l == u"F")
        return BarkMode::Fest;
    if (l == u"T")
        return BarkMode::Tabelle;
    return std::nullopt;
}

float logVolume(float diameterCm, float lengthM)
{
    // The constant and the order of the product are part of the measuring rule.
    const float d = diameterCm / 100.0f;
    return d * d * 3.14159f / 4.0f * lengthM;
}

QString diameterClassOf(MasterDataLookup& masterData, const QString& diameter)
{
    return masterData.logClass(readNumber(diameter));
}

QString heilbronnClassOf(MasterDataLookup& masterData, const QString& length, const QString& topDiameter)
{
    const int wholeMetres = static_cast<int>(std::trunc(readNumber(length)));
    return masterData.heilbronnClass(wholeMetres, readNumber(topDiameter));
}

LogDerived measureLog(const LogMeasurement& log, MasterDataLookup& masterData)
{
    LogDerived out;
    const double measured = readNumber(log.measuredDiameter);

    qint16 deduction = 0;
    if (log.mode == BarkMode::Fest)
        deduction = toShort(readNumber(log.fixedDeduction));
    if (log.mode == BarkMode::Tabelle) {
        // The diameter with bark is looked up in the under-bark class ranges, as the tables expect.
        const QString cls = diameterClassOf(masterData, log.measuredDiameter);
        if (!cls.isEmpty()) {
            if (const auto v = masterData.speciesValue(QStringLiteral("Rindenabzug"), log.species, QStringLiteral("SK_") + cls))
                deduction = toShort(*v);
        }
        // A matching freely defined range always wins over the standard table.
        if (const auto v = masterData.barkRangeDeduction(log.species, measured))
            deduction = toShort(*v);
    }
    out.deduction = QString::number(deduction);

    const double underBark = std::max(0.0, measured - deduction);
    out.diameterUnderBark = numberText(underBark);

    const float volume = logVolume(static_cast<float>(underBark), static_cast<float>(readNumber(log.length)));
    out.volume = formatDecimal(volume, 3);
    if (readNumber(out.volume) < 0)
        out.volume = QStringLiteral("0,000");

    out.diameterClass = diameterClassOf(masterData, out.diameterUnderBark);
    if (readNumber(log.topDiameter) > 0) {
        const QString lengthText = formatDecimal(static_cast<float>(readNumber(log.length)), 1);
        out.heilbronnClass = heilbronnClassOf(masterData, lengthText, log.topDiameter);
    }
    return out;
}

} // namespace tarvik
