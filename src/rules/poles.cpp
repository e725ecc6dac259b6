#include "rules/poles.h"

#include "common/numbers.h"
#include "rules/masterdatalookup.h"

namespace tarvik {

QString poleClassOf(MasterDataLookup& masterData, const QString& diameter, const QString& length)
{
    // The diameter with bark is compared with the under-bark columns: the pole tables are kept so.
    return masterData.poleClass(readNumber(diameter), readNumber(length));
}

float poleEstimatedPrice(MasterDataLookup& masterData, const QString& poleClass)
{
    if (poleClass.isEmpty())
        return 0;
    return static_cast<float>(masterData.poleEstimatedPrice(poleClass).value_or(0));
}

float polePrice(float pricePerPiece, qint32 count) { return pricePerPiece * static_cast<float>(count); }

float poleVolume(qint32 count, float diameterCm, float lengthM)
{
    const float d = diameterCm / 100.0f;
    return static_cast<float>(count) * d * d * 3.14159f / 4.0f * lengthM;
}

} // namespace tarvik
