#pragma once
// Text in German order (DIN 5007, variant 1): letters compare without regard to case, an umlaut
// sorts with its base letter, ß as ss. Every handle of the program knows it as the collation
// DEUTSCH; statements that order, group or compare names use it, the schema does not (other
// tools must still be able to open the file).
#include <QSqlDatabase>
#include <QString>
#include <QStringView>

struct sqlite3;

namespace tarvik {

inline constexpr char GermanCollation[] = "DEUTSCH";

// Registers the collation on the handle; false when the engine refuses it.
bool registerGermanCollation(sqlite3* handle);
bool registerGermanCollation(const QSqlDatabase& db);

// "expression COLLATE DEUTSCH".
QString inGermanOrder(const QString& expression);

// The same order in memory: negative, 0 or positive. Equal means the same letters apart from
// case and the dots of umlauts, ß being ss: "Äbi Holz" and "äbi holz" are one name.
int compareGerman(QStringView a, QStringView b);
inline bool germanLess(const QString& a, const QString& b) { return compareGerman(a, b) < 0; }

} // namespace tarvik
