#pragma once
// Stacked wood: stacked volume, solid volume by the depth's factor and the flat deduction,
// class and price.
#include "settings/settings.h"

#include <QString>

namespace tarvik {

class MasterDataLookup;

// The factors and the deduction the settings hold.
struct StackedFactors {
    float upToOneMetre = 0.7f;  // Einst_Dezimal(0)
    float upToTwoMetres = 0.65f; // Einst_Dezimal(1)
    float longer = 0.6f;        // Einst_Dezimal(2)
    qint16 deductionPercent = 0; // Einst_Zahl(54)

    static StackedFactors from(const Einstellungen& settings);
    float forDepth(float depthM) const; // depth = length of the stacked pieces
};

struct StackedMeasurement {
    QString length; // Sektionslänge_m
    QString depth;  // Sektionstiefe_m
    QString height; // Sektionshöhe_m
};

struct StackedVolumes {
    QString m3;  // 3 decimals
    QString efm; // 3 decimals
};

StackedVolumes measureStack(const StackedMeasurement& stack, const StackedFactors& factors);

QString stackedClassOf(MasterDataLookup& masterData, const QString& diameter);
float stackedEstimatedPrice(MasterDataLookup& masterData, const QString& stackedClass);
// `Preis_berechnet`: the price per Ster times the stacked, not the solid, volume.
float stackedPrice(float pricePerSter, float m3);

} // namespace tarvik
