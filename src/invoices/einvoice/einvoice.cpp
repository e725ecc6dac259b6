#include "invoices/einvoice/einvoice.h"

namespace tarvik::einvoice {
namespace {

__extension__ typedef __int128 Wide; // quantity × price × 100 outgrows 64 bits at six decimals

Wide powerOfTen(int exponent)
{
    Wide p = 1;
    for (int i = 0; i < exponent; ++i)
        p *= 10;
    return p;
}

// numerator / denominator rounded half away from zero (denominator > 0).
Wide roundedQuotient(Wide numerator, Wide denominator)
{
    const bool negative = numerator < 0;
    const Wide magnitude = negative ? -numerator : numerator;
    const Wide q = (2 * magnitude + denominator) / (2 * denominator);
    return negative ? -q : q;
}

QString wideText(Wide value)
{
    if (value == 0)
        return QStringLiteral("0");
    const bool negative = value < 0;
    if (negative)
        value = -value;
    QString digits;
    while (value > 0) {
        digits.prepend(QChar(u'0' + int(value % 10)));
        value /= 10;
    }
    return negative ? u'-' + digits : digits;
}

} // namespace

QString exemptionReason(TaxRegime regime)
{
    if (regime == TaxRegime::Small19)
        return QString::fromUtf8(SmallBusinessReason);
    return QStringLiteral("Abzug ohne Minderung der Bemessungsgrundlage der Umsatzsteuer");
}

QString lineCategory(const Invoice& invoice, const Line& line)
{
    if (!line.vatCategory.isEmpty())
        return line.vatCategory;
    return invoice.seller.regime == TaxRegime::Small19 ? QStringLiteral("E") : QStringLiteral("S");
}

PercentHundredths linePercent(const Invoice& invoice, const Line& line)
{
    if (!line.vatCategory.isEmpty())
        return line.vatPercent;
    return invoice.seller.regime == TaxRegime::Small19 ? 0 : invoice.vatPercent;
}

QList<VatSubtotal> vatBreakdown(const Invoice& invoice)
{
    QList<VatSubtotal> rows;
    auto add = [&](const QString& category, PercentHundredths percent, Cents amount) {
        for (VatSubtotal& row : rows)
            if (row.category == category && row.percent == percent) {
                row.basis += amount;
                return;
            }
        rows.append({category, percent, amount, 0, {}});
    };
    for (const Line& line : invoice.lines)
        add(lineCategory(invoice, line), linePercent(invoice, line), line.net);
    // The levy is taken off what is paid but not off the VAT base, so it sits in category E.
    if (invoice.levy)
        add(QStringLiteral("E"), 0, -invoice.levy->amount);
    for (const Allowance& other : invoice.otherAllowances) {
        const bool own = other.vatCategory.isEmpty();
        add(own ? QStringLiteral("E") : other.vatCategory, own ? 0 : other.vatPercent,
            other.charge ? other.amount : -other.amount);
    }
    for (VatSubtotal& row : rows) {
        row.tax = percentOf(row.basis, row.percent);
        if (row.category == u"E")
            row.exemptionReason = exemptionReason(invoice.seller.regime);
    }
    return rows;
}

Invoice withTotals(Invoice invoice)
{
    invoice.lineTotal = 0;
    for (const Line& line : invoice.lines)
        invoice.lineTotal += line.net;
    invoice.allowanceTotal = invoice.levy ? invoice.levy->amount : 0;
    invoice.chargeTotal = 0;
    for (const Allowance& other : invoice.otherAllowances)
        (other.charge ? invoice.chargeTotal : invoice.allowanceTotal) += other.amount;
    invoice.taxBasis = invoice.lineTotal - invoice.allowanceTotal + invoice.chargeTotal;
    invoice.vatTotal = 0;
    for (const VatSubtotal& row : vatBreakdown(invoice))
        invoice.vatTotal += row.tax;
    invoice.grandTotal = invoice.taxBasis + invoice.vatTotal;
    invoice.duePayable = invoice.grandTotal - invoice.prepaid;
    return invoice;
}

QString unitPriceText(Cents net, Quantity quantity)
{
    if (quantity.value == 0)
        return wideText(net / 100) + u'.' + QString::number(qAbs(net % 100)).rightJustified(2, u'0');
    // price = net / 100 / (value / 10^decimals); with k decimals the price's integer is
    // net × 10^(decimals + k) / (100 × value).
    const Wide value = quantity.value;
    Wide price = 0;
    int k = 2;
    for (; k <= 6; ++k) {
        const Wide scale = powerOfTen(quantity.decimals + k);
        price = roundedQuotient(Wide(net) * scale, 100 * value);
        // |value × price × 100 − net × scale| ≤ scale / 2: within half a cent
        const Wide error = value * price * 100 - Wide(net) * scale;
        if (2 * (error < 0 ? -error : error) <= scale)
            break;
    }
    k = qMin(k, 6);
    const bool negative = price < 0;
    QString digits = wideText(negative ? -price : price).rightJustified(k + 1, u'0');
    digits.insert(digits.size() - k, u'.');
    return negative ? u'-' + digits : digits;
}

QString euroText(Cents cents)
{
    const bool negative = cents < 0;
    const qint64 magnitude = negative ? -cents : cents;
    QString whole = QString::number(magnitude / 100);
    for (qsizetype i = whole.size() - 3; i > 0; i -= 3)
        whole.insert(i, u'.');
    return (negative ? QStringLiteral("-") : QString()) + whole + u',' + QString::number(magnitude % 100).rightJustified(2, u'0') + QStringLiteral(" €");
}

} // namespace tarvik::einvoice
