#include "invoices/einvoice/reader.h"

namespace tarvik::einvoice {
namespace {

QString percentText(PercentHundredths percent)
{
    QString text = QString::number(percent / 100);
    if (percent % 100 != 0) {
        QString fraction = QString::number(qAbs(percent % 100)).rightJustified(2, u'0');
        if (fraction.endsWith(u'0'))
            fraction.chop(1);
        text += u',' + fraction;
    }
    return text + QStringLiteral(" %");
}

QString quantityDisplay(const Quantity& q)
{
    QString digits = QString::number(qAbs(q.value));
    if (q.decimals > 0) {
        digits = digits.rightJustified(q.decimals + 1, u'0');
        digits.insert(digits.size() - q.decimals, u',');
    }
    return q.value < 0 ? u'-' + digits : digits;
}

QString unitName(const QString& code)
{
    if (code == u"MTQ")
        return QStringLiteral("m³");
    if (code == u"H87" || code == u"C62" || code == u"XPP")
        return QStringLiteral("Stück");
    if (code == u"LM")
        return QStringLiteral("lfm");
    return code;
}

QString categoryName(const QString& code)
{
    if (code == u"S")
        return QStringLiteral("Normalsatz (S)");
    if (code == u"E")
        return QStringLiteral("steuerbefreit (E)");
    if (code == u"Z")
        return QStringLiteral("Nullsatz (Z)");
    if (code == u"AE")
        return QStringLiteral("Steuerschuldnerschaft des Leistungsempfängers (AE)");
    if (code == u"K")
        return QStringLiteral("innergemeinschaftliche Lieferung (K)");
    if (code == u"G")
        return QStringLiteral("Ausfuhr (G)");
    if (code == u"O")
        return QStringLiteral("nicht steuerbar (O)");
    return code;
}

QString dateDisplay(const QDate& date) { return date.toString(QStringLiteral("dd.MM.yyyy")); }

// The decimal text of a price with a comma; the text stays as the file gives it otherwise.
QString priceDisplay(const QString& price) { return QString(price).replace(u'.', u','); }

void addressLines(QStringList& lines, const Address& address)
{
    if (!address.street.isEmpty())
        lines << QStringLiteral("  ") + address.street;
    const QString town = (address.postCode + u' ' + address.city).trimmed();
    if (!town.isEmpty() || !address.country.isEmpty())
        lines << QStringLiteral("  ") + town + (address.country.isEmpty() || address.country == u"DE" ? QString() : QStringLiteral(" (") + address.country + u')');
}

void labelled(QStringList& lines, const QString& label, const QString& value)
{
    if (!value.trimmed().isEmpty())
        lines << QStringLiteral("  ") + label + QStringLiteral(": ") + value;
}

} // namespace

QStringList readableText(const Invoice& invoice)
{
    QStringList lines;
    lines << QStringLiteral("Rechnung %1 vom %2").arg(invoice.number, dateDisplay(invoice.issueDate));
    if (invoice.deliveryDate.isValid())
        lines << QStringLiteral("Lieferdatum: %1").arg(dateDisplay(invoice.deliveryDate));
    if (!invoice.note.isEmpty())
        lines += invoice.note.split(u'\n');
    const QString regime = parties::regimeNote(invoice.seller.regime);
    if (!regime.isEmpty() && !invoice.note.contains(regime))
        lines << regime;
    lines << QString();

    const Seller& s = invoice.seller;
    lines << QStringLiteral("Verkäufer: %1").arg(s.name);
    addressLines(lines, s.address);
    labelled(lines, QStringLiteral("Ansprechpartner"), s.contactName);
    labelled(lines, QStringLiteral("Telefon"), s.phone);
    labelled(lines, QStringLiteral("E-Mail"), s.email);
    labelled(lines, QStringLiteral("USt-IdNr."), s.vatId);
    labelled(lines, QStringLiteral("Steuernummer"), s.taxNumber);
    labelled(lines, QStringLiteral("Kennung beim Käufer"), s.sellerId);
    lines << QString();

    const Buyer& b = invoice.buyer;
    lines << QStringLiteral("Käufer: %1").arg(b.name);
    addressLines(lines, b.address);
    labelled(lines, QStringLiteral("E-Mail"), b.email);
    labelled(lines, QStringLiteral("USt-IdNr."), b.vatId);
    labelled(lines, QStringLiteral("Käuferreferenz"), b.reference);
    lines << QString();

    lines << QStringLiteral("Positionen:");
    for (const Line& line : invoice.lines) {
        lines << QStringLiteral("  %1  %2").arg(line.id, line.name);
        if (!line.description.isEmpty())
            lines << QStringLiteral("      ") + line.description;
        lines << QStringLiteral("      %1 %2 × %3 %4 = %5, USt %6 %7")
                     .arg(quantityDisplay(line.quantity), unitName(line.unitCode), priceDisplay(line.netPrice), invoice.currency == u"EUR" ? QStringLiteral("€") : invoice.currency,
                          euroText(line.net), categoryName(lineCategory(invoice, line)), percentText(linePercent(invoice, line)));
    }
    lines << QString();

    auto allowanceLine = [&](const Allowance& a) {
        QString text = QStringLiteral("  %1 %2").arg(a.charge ? QStringLiteral("Zuschlag") : QStringLiteral("Abzug"), a.reason);
        if (a.percent != 0)
            text += QStringLiteral(" (%1 von %2)").arg(percentText(a.percent), euroText(a.base));
        text += QStringLiteral(": %1%2").arg(a.charge || a.amount == 0 ? QString() : QStringLiteral("-"), euroText(a.amount));
        lines << text;
    };
    if (invoice.levy || !invoice.otherAllowances.isEmpty()) {
        lines << QStringLiteral("Abzüge und Zuschläge:");
        if (invoice.levy)
            allowanceLine(*invoice.levy);
        for (const Allowance& a : invoice.otherAllowances)
            allowanceLine(a);
        lines << QString();
    }

    lines << QStringLiteral("Umsatzsteuer:");
    const QList<VatSubtotal> breakdown = invoice.readBreakdown.isEmpty() ? vatBreakdown(invoice) : invoice.readBreakdown;
    for (const VatSubtotal& row : breakdown) {
        lines << QStringLiteral("  %1 %2: Bemessungsgrundlage %3, Steuer %4")
                     .arg(categoryName(row.category), percentText(row.percent), euroText(row.basis), euroText(row.tax));
        if (!row.exemptionReason.isEmpty())
            lines << QStringLiteral("    ") + row.exemptionReason;
    }
    lines << QString();

    lines << QStringLiteral("Summe der Positionen: %1").arg(euroText(invoice.lineTotal));
    if (invoice.allowanceTotal != 0)
        lines << QStringLiteral("Abzüge: -%1").arg(euroText(invoice.allowanceTotal));
    if (invoice.chargeTotal != 0)
        lines << QStringLiteral("Zuschläge: %1").arg(euroText(invoice.chargeTotal));
    lines << QStringLiteral("Summe netto: %1").arg(euroText(invoice.taxBasis));
    lines << QStringLiteral("Umsatzsteuer: %1").arg(euroText(invoice.vatTotal));
    lines << QStringLiteral("Rechnungsbetrag: %1").arg(euroText(invoice.grandTotal));
    if (invoice.prepaid != 0)
        lines << QStringLiteral("Bereits gezahlt: %1").arg(euroText(invoice.prepaid));
    lines << QStringLiteral("Zahlbetrag: %1").arg(euroText(invoice.duePayable));
    if (invoice.currency != u"EUR" && !invoice.currency.isEmpty())
        lines << QStringLiteral("Währung der Rechnung: %1").arg(invoice.currency);
    lines << QString();

    lines << QStringLiteral("Zahlung:");
    if (invoice.discountPercent > 0) {
        const Cents discount = percentOf(invoice.duePayable, invoice.discountPercent);
        lines << QStringLiteral("  %1 Skonto bei Zahlung innerhalb von %2 Tagen: %3 weniger, also %4")
                     .arg(percentText(invoice.discountPercent)).arg(invoice.discountDays).arg(euroText(discount), euroText(invoice.duePayable - discount));
    }
    for (const QString& line : invoice.paymentNote.split(u'\n', Qt::SkipEmptyParts))
        lines << QStringLiteral("  ") + line;
    if (invoice.dueDate.isValid())
        lines << QStringLiteral("  Fällig am %1").arg(dateDisplay(invoice.dueDate));
    if (!s.iban.isEmpty())
        lines << QStringLiteral("  Überweisung auf IBAN %1%2").arg(s.iban, s.bic.isEmpty() ? QString() : QStringLiteral(", BIC ") + s.bic);
    return lines;
}

} // namespace tarvik::einvoice
