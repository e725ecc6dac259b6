#pragma once
// The program's own codes turned into the codes of the ELDATsmart standard (1.0.3): species,
// quality classes, diameter classes, and grade, use and unit of a lot's assortment. Every
// translation lives here, so a receiver's complaint about a code is fixed in one place.
#include <QString>
#include <optional>

namespace tarvik::eldat {

// A species as stored ("FI (Fichte)"). The name in parentheses decides when it names one
// species of the standard ("EI (Traubeneiche)" → tei); otherwise the code does (FI → fi,
// KI → ki, LA → ela, EI → ei); a collective name comes last ("XY (Lärche)" → la).
// Nothing when the standard has no counterpart.
std::optional<QString> speciesCode(const QString& species);

// A quality class (`Güteklasse`: A, A_B, B, B_C, C, C_D, D) as the standard's quality type;
// nothing for a class the standard does not know.
std::optional<QString> qualityCode(const QString& qualityClass);

// A log diameter class (`Stärkeklasse`: L0, L1a … L6) as the standard's mid-diameter class
// (d0, d1a … d6); nothing for a class without counterpart.
std::optional<QString> diameterClassCode(const QString& diameterClass);

// What the standard says about a lot of an assortment ("Stämme", "Pfähle", "Schichtholz").
struct AssortmentCodes {
    QString grade; // Sorte
    QString use;   // Verwendungssorte
    QString unit;  // the unit of the lot's amount
};
// A log lot cut to a fixed length is sold in sections ("fl"), else as long logs ("st").
std::optional<AssortmentCodes> assortmentCodes(const QString& sorting, bool fixedLength);

} // namespace tarvik::eldat
