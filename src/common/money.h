#pragma once
// Money in whole cents: amounts that are printed, added and stored agree to the cent because
// every rounding happens once, on integers, and never by widening a float.
#include <QString>
#include <QVariant>
#include <QtGlobal>

namespace tarvik {

using Cents = qint64;

// The cents of a value as it is printed with two decimals (its shortest decimal form rounded,
// halves away from zero), so 0.675f gives 68 and 19.475 gives 1948.
Cents centsOf(double value);
Cents centsOf(float value);
Cents centsOf(const QVariant& value);

// A percentage with two decimals, as hundredths of a per cent (19 % gives 1900, 10,7 % gives 1070).
using PercentHundredths = qint64;
PercentHundredths percentHundredths(double percent);

// percent of amount, rounded commercially to the cent once: a half cent goes up (away from zero).
Cents percentOf(Cents amount, PercentHundredths percent);

// "1234,56", "-0,05": two decimals, decimal comma, no grouping.
QString centsText(Cents cents);
// The value a currency column stores for these cents.
double centsValue(Cents cents);

} // namespace tarvik
