#pragma once
// A log as a device, the app or the online service reports it, before it is checked,
// measured and priced.
#include <QList>
#include <QString>

namespace tarvik {

struct ImportedLog {
    qint32 lot = 0;      // 0: the lot chosen in the log window
    qint32 number = 0;   // running number as reported (bracket logs above 10000)
    QString species;     // the source's word: "Fi", "Kie", "Lä", "DGL", …
    QString quality;     // "A" … "D" or empty
    QString diameter;    // measured diameter with bark, cm
    QString length;      // metres, decimal comma or point
    QString top;         // top diameter, cm; empty: not measured
    bool beetle = false; // bark-beetle wood
    QString remark;
};

// The program's species code for a device or service word ("Kie" → "KI", "Lä" → "LA"), or
// "" for a word that names none of the nine species the devices know.
QString deviceSpeciesCode(const QString& word);

} // namespace tarvik
