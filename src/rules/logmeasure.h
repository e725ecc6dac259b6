#pragma once
// Bark deduction, diameter under bark, volume and classes of one measured log. Inputs and
// results are the texts of the log window's fields, so the window and every batch recompute
// derive exactly the same values.
#include <QString>
#include <optional>

namespace tarvik {

class MasterDataLookup;

enum class BarkMode { Ohne, Fest, Tabelle }; // stored as "O", "F", "T"

QString barkModeLetter(BarkMode mode);
std::optional<BarkMode> barkModeFromLetter(const QString& letter);

struct LogMeasurement {
    QString species;
    QString measuredDiameter; // cm with bark, tz(1)
    QString length;           // m, tz(2)
    QString topDiameter;      // cm, tz(3); 0 or empty: not measured
    QString fixedDeduction;   // cm, tz(4), used in mode "F"
    BarkMode mode = BarkMode::Ohne;
};

struct LogDerived {
    QString deduction;         // tz(4)
    QString diameterUnderBark; // tz(5), never below 0
    QString volume;            // tz(6), m³ with 3 decimals
    QString diameterClass;     // "" when no class matches
    QString heilbronnClass;    // "" when none matches or no top diameter was measured
};

LogDerived measureLog(const LogMeasurement& log, MasterDataLookup& masterData);

// The class of a diameter text (empty counts as 0).
QString diameterClassOf(MasterDataLookup& masterData, const QString& diameter);
// The Heilbronn class: the length is cut to whole metres (4,9 m counts as 4).
QString heilbronnClassOf(MasterDataLookup& masterData, const QString& length, const QString& topDiameter);

// D × D × 3.14159 ÷ 4 × L in single precision, D in metres: the volume of one log.
float logVolume(float diameterCm, float lengthM);

} // namespace tarvik
