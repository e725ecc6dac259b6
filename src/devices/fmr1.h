#pragma once
// The calliper's transfer: raw bytes as they came over the serial line become the lines of
// "FMR1.TXT", and those lines become logs. Pure functions, so every byte layout is testable.
#include "devices/importedlog.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <array>

namespace tarvik {

inline constexpr int Fmr1HeaderBytes = 29;
inline constexpr int Fmr1RecordBytes = 5;

// One 5-byte record of the binary route, its fields as the bit table reads them.
struct Fmr1Record {
    QString species;  // "Fi", "Ta", … or "" for a code without species
    QString quality;  // "A" to "D", or " "
    int first = 0;    // running number, 14 bits
    int second = 0;   // measured diameter with bark in cm, 7 bits
    int third = 0;    // length in whole metres, 4 bits
    int lot = 0;      // the fifth byte: lot number kept in the device, 0 = none
};

// The 32 characters '0'/'1' of a record's first four bytes, highest bit first.
QString fmr1BitString(const QByteArray& fourBytes);
Fmr1Record decodeFmr1Record(const QByteArray& fiveBytes);
// The line "FMR1.TXT" holds for a record (TAB-separated; the lot only when one is kept).
QString fmr1Line(const Fmr1Record& record);

struct Fmr1Conversion {
    QStringList lines;     // "FMR 1", "Baumart", then one line per log
    bool binary = false;   // the transfer began with "4"
    int cutOffBytes = 0;   // bytes of a last record that did not arrive in full
    int paddingRecords = 0; // all-zero records (empty memory), not logs
};

// The text route copies every character but CR and LF, each of which ends a line; the
// binary route (first character "4") skips the header and decodes 5 bytes per log.
Fmr1Conversion convertFmr1Transfer(const QByteArray& received);

// Logs of the lines of "FMR1.TXT": header lines and lines without the five fields are passed
// over; a log line keeps its device words (mapping and checks come with the import).
QList<ImportedLog> parseFmr1Lines(const QStringList& lines);

} // namespace tarvik
