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

    // The slots the program acts on, by name (the dialog edits them by slot).
    bool confirmationBeep() const { return zahl[24] != 1; }           // konbeep off
    bool okNextIsDefault() const { return zahl[28] == 1; }            // kondefaultok
    bool zeroMeasuresAfterNext() const { return zahl[29] == 1; }      // koneingabe0
    bool focusRunningNumberAfterNext() const { return zahl[42] == 1; } // konruecklnr
    bool twoDigitAdvance() const { return zahl[45] == 1; }            // konzweistellig(0)
    bool focusDiameterAfterNext() const { return zahl[49] == 1; }     // konstaerke
    bool decimetreLengths() const { return zahl[51] == 1; }           // konzweistellig(1)
    qint16 stackedExtraDeductionPercent() const { return zahl[54]; }
    bool runningNumbersPerLot() const { return zahl[57] == 1; }       // konlnrlos
    int backupIntervalDays() const { return zahl[17]; }
    int printTopMarginMm() const { return zahl[59]; }
    QString lastBackupDate() const { return text[12].trimmed(); }

    // The evaluation lists keep their last choices, one pair of slots per list, in the order
    // Hiebe, Lose, Stämme, Pfähle, Schichtholz, Rechnungen:
    //   Einst_Zahl 10 to 15: scope, grouping and sort direction (packed by the lists);
    //   Einst_Text 6, 7, 8, 9, 14 and 0: sort column, columns left out and filter values.
    // The range they share with the main list is the harvest filter's: Einst_Zahl 2, Einst_Text 2 to 5.
    // Einst_Zahl 0, 3, 5 to 7, 16, 60 and 61 stay free for the lists.
    static constexpr int ListCount = 6;
    static constexpr std::array<int, ListCount> ListNumberSlots{10, 11, 12, 13, 14, 15};
    static constexpr std::array<int, ListCount> ListTextSlots{6, 7, 8, 9, 14, 0};
    qint16 listChoiceNumber(int list) const { return zahl[ListNumberSlots[list]]; }
    void setListChoiceNumber(int list, qint16 value) { zahl[ListNumberSlots[list]] = value; }
    QString listChoiceText(int list) const { return text[ListTextSlots[list]]; }
    void setListChoiceText(int list, const QString& value) { text[ListTextSlots[list]] = value; }
};

// Reads the file into fresh arrays and repairs them. A missing, short or garbled file is no
// error: what could be read is kept, the rest stays 0 or empty.
Einstellungen EinstellungenLaden(const QString& path);
// Writes all 173 lines; false with a German message in error when the file cannot be written.
bool EinstellungenSpeichern(const Einstellungen& settings, const QString& path, QString* error = nullptr);

// One line of the file for a factor: two decimals with a point, at most 10 characters.
QString factorLine(float value);

} // namespace tarvik
