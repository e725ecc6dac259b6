#pragma once
// Fixed-width columns of the text reports: right- and left-aligned fields, fixed decimals.
#include <QString>
#include <QVariant>

namespace tarvik::columns {

// The value's text on one line, trimmed, cut to n characters, padded on the left (R) or right (L).
QString right(const QString& text, int n);
QString left(const QString& text, int n);
// A number with exactly k decimals and a decimal comma; null reads as 0.
QString decimals(const QVariant& value, int k);
// A column's value as text on one line: null reads as empty.
QString text(const QVariant& value);

} // namespace tarvik::columns
