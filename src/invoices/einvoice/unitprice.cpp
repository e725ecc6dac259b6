#include "invoices/einvoice/unitprice.h"

#include "common/numbers.h"

namespace tarvik::einvoice {
namespace {

// Net × 10^(decimals) can pass 64 bits for large invoices with six price decimals.
__extension__ typedef __int128 Wide;

Wide power10(int n)
{
    Wide p = 1;
    while (n-- > 0)
        p *= 10;
    return p;
}

// value / 10^decimals as text with a point.
QString fixedText(Wide value, int decimals)
{
    const bool negative = value < 0;
    if (negative)
        value = -value;
    QString digits;
    do {
        digits.prepend(QChar(u'0' + int(value % 10)));
        value /= 10;
    } while (value > 0);
    if (decimals > 0) {
        digits = digits.rightJustified(decimals + 1, u'0');
        digits.insert(digits.size() - decimals, u'.');
    }
    return negative ? u'-' + digits : digits;
}

// a / b rounded half away from zero; b > 0.
Wide roundedDivision(Wide a, Wide b)
{
    const Wide q = a / b;
    const Wide r = a % b;
    if (2 * (r < 0 ? -r : r) >= b)
        return a < 0 ? q - 1 : q + 1;
    return q;
}

} // namespace

QString unitPriceText(Cents net, const Quantity& quantity)
{
    if (quantity.value == 0)
        return QStringLiteral("0.00");
    const Wide q = quantity.value < 0 ? -Wide(quantity.value) : Wide(quantity.value);
    const Wide n = quantity.value < 0 ? -Wide(net) : Wide(net);
    for (int k = 2;; ++k) {
        // The price in units of 10^-k: net (cents) × 10^(k + decimals) / (100 × quantity).
        const Wide scale = power10(k + quantity.decimals);
        const Wide price = roundedDivision(n * scale, 100 * q);
        const Wide error = price * q * 100 - n * scale; // in units of 10^-(k + decimals) cents
        if (2 * (error < 0 ? -error : error) <= scale || k == 6)
            return fixedText(price, k);
    }
}

QString quantityText(const Quantity& quantity) { return fixedText(quantity.value, quantity.decimals); }

Quantity quantityOf(double value, int decimals)
{
    const QString text = formatDecimal(value, decimals);
    Quantity q{0, decimals};
    bool negative = false;
    for (QChar c : text) {
        if (c == u'-')
            negative = true;
        else if (c.isDigit())
            q.value = q.value * 10 + c.digitValue();
    }
    if (negative)
        q.value = -q.value;
    return q;
}

} // namespace tarvik::einvoice
