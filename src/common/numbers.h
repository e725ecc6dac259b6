#pragma once
// Reading and writing numbers the way users type and read them: decimal comma, tolerant of junk.
#include <QString>
#include <QVariant>
#include <QtGlobal>

namespace tarvik {

// Tolerant reader: null or junk gives 0, "1.234,5" gives 1234.5, never throws.
double readNumber(const QString& text);
double readNumber(const QVariant& value);

// Fixed decimals with a decimal comma, halves rounded away from zero, no grouping.
// The float overload rounds the float's own shortest decimal form (0.675f gives "0,68").
QString formatDecimal(double value, int decimals);
QString formatDecimal(float value, int decimals);
QString formatDecimal(int value, int decimals);
// The same text as formatDecimal(double), Latin-1, into a buffer of at least
// decimalTextCapacity(decimals) characters, without allocating; the characters written.
constexpr qsizetype decimalTextCapacity(int decimals) { return 360 + (decimals > 0 ? decimals : 0); }
qsizetype formatDecimalTo(double value, int decimals, char* out);
// Reads the text with readNumber first, so empty or non-numeric text formats as 0.
QString formatDecimalText(const QString& text, int decimals);

// Conversions of a read number to the integer columns: halves go to the even neighbour,
// values beyond the type's range are clamped.
qint16 toShort(double value);
qint32 toLong(double value);

// A number as a field shows it when no decimals are fixed: "33", "33,5"; never grouped.
QString numberText(double value);

// The value a currency column stores: rounded to 4 decimals.
double currencyValue(double value);
double currencyValue(float value);

// A whole number as users see it in messages: a leading blank for non-negative values.
QString signedText(qint64 value);

} // namespace tarvik
