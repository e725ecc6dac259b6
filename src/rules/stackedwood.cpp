#include "rules/stackedwood.h"

#include "common/numbers.h"
#include "rules/masterdatalookup.h"

namespace tarvik {

StackedFactors StackedFactors::from(const Einstellungen& s)
{
    return {s.dezimal[0], s.dezimal[1], s.dezimal[2], s.stackedExtraDeductionPercent()};
}

float StackedFactors::forDepth(float depthM) const
{
    if (depthM <= 1.0f)
        return upToOneMetre;
    if (depthM <= 2.0f)
        return upToTwoMetres;
    return longer;
}

StackedVolumes measureStack(const StackedMeasurement& stack, const StackedFactors& factors)
{
    const float length = static_cast<float>(readNumber(stack.length));
    const float depth = static_cast<float>(readNumber(stack.depth));
    const float height = static_cast<float>(readNumber(stack.height));
    StackedVolumes out;
    out.m3 = formatDecimal(length * depth * height, 3);

    float efm = static_cast<float>(readNumber(out.m3)) * factors.forDepth(depth);
    if (factors.deductionPercent != 0)
        efm = efm - static_cast<float>(factors.deductionPercent) * efm / 100.0f;
    out.efm = formatDecimal(efm, 3);
    return out;
}

QString stackedClassOf(MasterDataLookup& masterData, const QString& diameter)
{
    return masterData.stackedClass(readNumber(diameter));
}

float stackedEstimatedPrice(MasterDataLookup& masterData, const QString& stackedClass)
{
    if (stackedClass.isEmpty())
        return 0;
    return static_cast<float>(masterData.stackedEstimatedPrice(stackedClass).value_or(0));
}

float stackedPrice(float pricePerSter, float m3) { return pricePerSter * m3; }

} // namespace tarvik
