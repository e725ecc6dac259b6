#include "common/money.h"

#include "common/numbers.h"

#include <array>

namespace tarvik {
namespace {

// Reads "-1234,56" as written by formatDecimalTo with two decimals.
Cents centsFromText(const char* text, qsizetype length)
{
    Cents cents = 0;
    bool negative = false;
    for (qsizetype i = 0; i < length; ++i) {
        const char c = text[i];
        if (c == '-')
            negative = true;
        else if (c >= '0' && c <= '9')
            cents = cents * 10 + (c - '0');
    }
    return negative ? -cents : cents;
}

Cents roundedCents(double value)
{
    if (!(value > -9.0e15 && value < 9.0e15))
        return 0; // not a sum of money: nan, inf or beyond any invoice
    std::array<char, size_t(decimalTextCapacity(2))> buffer{};
    return centsFromText(buffer.data(), formatDecimalTo(value, 2, buffer.data()));
}

} // namespace

Cents centsOf(double value) { return roundedCents(value); }

Cents centsOf(float value)
{
    // The float's own shortest form, as the float overload of formatDecimal prints it.
    const QString text = formatDecimal(value, 2);
    const QByteArray latin = text.toLatin1();
    return centsFromText(latin.constData(), latin.size());
}

Cents centsOf(const QVariant& value) { return roundedCents(readNumber(value)); }

PercentHundredths percentHundredths(double percent) { return roundedCents(percent); }

Cents percentOf(Cents amount, PercentHundredths percent)
{
    // amount × percent / 10000 with the half going away from zero.
    const qint64 product = amount * percent;
    const qint64 whole = product / 10000;
    const qint64 rest = product % 10000;
    if (rest >= 5000)
        return whole + 1;
    if (rest <= -5000)
        return whole - 1;
    return whole;
}

QString centsText(Cents cents)
{
    const bool negative = cents < 0;
    const qint64 magnitude = negative ? -cents : cents;
    QString text = QString::number(magnitude / 100) + u',' + QString::number(magnitude % 100).rightJustified(2, u'0');
    if (negative)
        text.prepend(u'-');
    return text;
}

double centsValue(Cents cents) { return double(cents) / 100.0; }

} // namespace tarvik
