#pragma once
// Pole class, price and volume.
#include <QString>

namespace tarvik {

class MasterDataLookup;

// The class of a pole by its diameter with bark and its length; "" when none holds both.
QString poleClassOf(MasterDataLookup& masterData, const QString& diameter, const QString& length);
// The class's estimated price per piece, proposed as `Preis_je_Stück` (0 without a class).
float poleEstimatedPrice(MasterDataLookup& masterData, const QString& poleClass);
// `Preis_berechnet` of a pole row.
float polePrice(float pricePerPiece, qint32 count);
// count × D × D × 3.14159 ÷ 4 × L with D the diameter with bark in metres, single precision.
float poleVolume(qint32 count, float diameterCm, float lengthM);

} // namespace tarvik
