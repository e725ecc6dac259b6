#pragma once
// The three settings arrays held for the whole run and their file "Einstellungen.tk3".
#include <QString>
#include <array>

namespace tarvik {

inline constexpr char SettingsFileName[] = "Einstellungen.tk3";

// Spare text slots used for what COM numbers cannot say on every system.
inline constexpr int SerialDeviceSlot = 40; // Einst_Text: the calliper's port as the system names it
inline constexpr int OnlineHostSlot = 41;   // Einst_Text: the online service's web server
inline constexpr int MapHostSlot = 42;      // Einst_Text: the web map's server for the lots' aerial view
inline constexpr int HandheldFolderSlot = 43; // Einst_Text: the handheld's exchange folder (mounted or synchronised)

struct Einstellungen {
    static constexpr int ZahlCount = 101;
    static constexpr int DezimalCount = 11;
    static constexpr int TextCount = 61;
    static constexpr int LineCount = ZahlCount + DezimalCount + TextCount; // 173

    std::array<qint16, ZahlCount> zahl{};
    std::array<float, DezimalCount> dezimal{};
    std::array<QString, TextCount> text{};

    // Defaults for values that are missing or out of range after reading.
    void repair();
};

// Reads the file into fresh arrays and repairs them. A missing, short or garbled file is no
// error: what could be read is kept, the rest stays 0 or empty.
Einstellungen EinstellungenLaden(const QString& path);
// Writes all 173 lines; false with a German message in error when the file cannot be written.
bool EinstellungenSpeichern(const Einstellungen& settings, const QString& path, QString* error = nullptr);

// One line of the file for a factor: two decimals with a point, at most 10 characters.
QString factorLine(float value);

} // namespace tarvik
