#include "invoices/einvoice/ciiwriter.h"
#include "common/systemerror.h"
#include "invoices/einvoice/namespaces.h"

#include <QRegularExpression>
#include <QSaveFile>
#include <QXmlStreamWriter>

namespace tarvik::einvoice {
namespace {

using xmlns::Qdt;
using xmlns::Ram;
using xmlns::Rsm;
using xmlns::Udt;
const QString PeppolProcess = QStringLiteral("urn:fdc:peppol.eu:2017:poacc:billing:01:1.0");

// "1234.56": the amount with a point and two decimals, as CII wants it.
QString amount(Cents cents)
{
    const qint64 magnitude = qAbs(cents);
    return (cents < 0 ? QStringLiteral("-") : QString()) + QString::number(magnitude / 100) + u'.'
        + QString::number(magnitude % 100).rightJustified(2, u'0');
}

QString quantityText(const Quantity& q)
{
    const qint64 magnitude = qAbs(q.value);
    QString digits = QString::number(magnitude);
    if (q.decimals > 0) {
        digits = digits.rightJustified(q.decimals + 1, u'0');
        digits.insert(digits.size() - q.decimals, u'.');
    }
    return q.value < 0 ? u'-' + digits : digits;
}

// Characters XML 1.0 cannot carry (control characters other than tab and line ends) are left out.
QString xmlSafe(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text)
        if (c.unicode() >= 0x20 || c == u'\t' || c == u'\n' || c == u'\r')
            out += c;
    return out;
}

QString dateText(const QDate& date) { return date.toString(QStringLiteral("yyyyMMdd")); }

bool blank(const QString& text) { return text.trimmed().isEmpty(); }

class Writer {
public:
    explicit Writer(QByteArray* out) : xml(out) { xml.setAutoFormatting(true); }

    void open(const QString& ns, const QString& name) { xml.writeStartElement(ns, name); }
    void close() { xml.writeEndElement(); }
    void text(const QString& name, const QString& value) { xml.writeTextElement(Ram, name, xmlSafe(value)); }
    void textIf(const QString& name, const QString& value)
    {
        if (!blank(value))
            text(name, value);
    }
    void withAttribute(const QString& name, const QString& attribute, const QString& attributeValue, const QString& value)
    {
        open(Ram, name);
        xml.writeAttribute(attribute, attributeValue);
        xml.writeCharacters(xmlSafe(value));
        close();
    }
    void date(const QString& name, const QDate& value)
    {
        open(Ram, name);
        open(Udt, QStringLiteral("DateTimeString"));
        xml.writeAttribute(QStringLiteral("format"), QStringLiteral("102"));
        xml.writeCharacters(dateText(value));
        close();
        close();
    }
    QXmlStreamWriter xml;
};

void writeAddress(Writer& w, const Address& address)
{
    w.open(Ram, QStringLiteral("PostalTradeAddress"));
    w.textIf(QStringLiteral("PostcodeCode"), address.postCode);
    w.textIf(QStringLiteral("LineOne"), address.street);
    w.textIf(QStringLiteral("CityName"), address.city);
    w.text(QStringLiteral("CountryID"), address.country.isEmpty() ? QStringLiteral("DE") : address.country);
    w.close();
}

void writeElectronicAddress(Writer& w, const QString& email)
{
    if (blank(email))
        return;
    w.open(Ram, QStringLiteral("URIUniversalCommunication"));
    w.withAttribute(QStringLiteral("URIID"), QStringLiteral("schemeID"), QStringLiteral("EM"), email.trimmed());
    w.close();
}

void writeTaxRegistration(Writer& w, const QString& scheme, const QString& id)
{
    if (blank(id))
        return;
    w.open(Ram, QStringLiteral("SpecifiedTaxRegistration"));
    w.withAttribute(QStringLiteral("ID"), QStringLiteral("schemeID"), scheme, id.trimmed());
    w.close();
}

void writeSeller(Writer& w, const Seller& seller)
{
    w.open(Ram, QStringLiteral("SellerTradeParty"));
    w.textIf(QStringLiteral("ID"), seller.sellerId);
    w.text(QStringLiteral("Name"), seller.name);
    if (!blank(seller.contactName) || !blank(seller.phone) || !blank(seller.email)) {
        w.open(Ram, QStringLiteral("DefinedTradeContact"));
        w.textIf(QStringLiteral("PersonName"), seller.contactName);
        if (!blank(seller.phone)) {
            w.open(Ram, QStringLiteral("TelephoneUniversalCommunication"));
            w.text(QStringLiteral("CompleteNumber"), seller.phone);
            w.close();
        }
        if (!blank(seller.email)) {
            w.open(Ram, QStringLiteral("EmailURIUniversalCommunication"));
            w.text(QStringLiteral("URIID"), seller.email.trimmed());
            w.close();
        }
        w.close();
    }
    writeAddress(w, seller.address);
    writeElectronicAddress(w, seller.email);
    writeTaxRegistration(w, QStringLiteral("FC"), seller.taxNumber);
    writeTaxRegistration(w, QStringLiteral("VA"), seller.vatId);
    w.close();
}

void writeBuyer(Writer& w, const Buyer& buyer)
{
    w.open(Ram, QStringLiteral("BuyerTradeParty"));
    w.text(QStringLiteral("Name"), buyer.name);
    writeAddress(w, buyer.address);
    writeElectronicAddress(w, buyer.email);
    writeTaxRegistration(w, QStringLiteral("VA"), buyer.vatId);
    w.close();
}

void writeLine(Writer& w, const Invoice& invoice, const Line& line, qsizetype index)
{
    w.open(Ram, QStringLiteral("IncludedSupplyChainTradeLineItem"));
    w.open(Ram, QStringLiteral("AssociatedDocumentLineDocument"));
    w.text(QStringLiteral("LineID"), blank(line.id) ? QString::number(index + 1) : line.id);
    w.close();
    w.open(Ram, QStringLiteral("SpecifiedTradeProduct"));
    w.text(QStringLiteral("Name"), line.name);
    w.textIf(QStringLiteral("Description"), line.description);
    w.close();
    w.open(Ram, QStringLiteral("SpecifiedLineTradeAgreement"));
    w.open(Ram, QStringLiteral("NetPriceProductTradePrice"));
    w.text(QStringLiteral("ChargeAmount"), line.netPrice.isEmpty() ? unitPriceText(line.net, line.quantity) : line.netPrice);
    w.close();
    w.close();
    w.open(Ram, QStringLiteral("SpecifiedLineTradeDelivery"));
    w.withAttribute(QStringLiteral("BilledQuantity"), QStringLiteral("unitCode"), line.unitCode, quantityText(line.quantity));
    w.close();
    w.open(Ram, QStringLiteral("SpecifiedLineTradeSettlement"));
    w.open(Ram, QStringLiteral("ApplicableTradeTax"));
    w.text(QStringLiteral("TypeCode"), QStringLiteral("VAT"));
    w.text(QStringLiteral("CategoryCode"), lineCategory(invoice, line));
    w.text(QStringLiteral("RateApplicablePercent"), amount(linePercent(invoice, line)));
    w.close();
    w.open(Ram, QStringLiteral("SpecifiedTradeSettlementLineMonetarySummation"));
    w.text(QStringLiteral("LineTotalAmount"), amount(line.net));
    w.close();
    w.close();
    w.close();
}

void writeAllowance(Writer& w, const Allowance& allowance, const QString& category, PercentHundredths rate)
{
    w.open(Ram, QStringLiteral("SpecifiedTradeAllowanceCharge"));
    w.open(Ram, QStringLiteral("ChargeIndicator"));
    w.xml.writeTextElement(Udt, QStringLiteral("Indicator"), allowance.charge ? QStringLiteral("true") : QStringLiteral("false"));
    w.close();
    if (allowance.percent != 0) {
        w.text(QStringLiteral("CalculationPercent"), amount(allowance.percent));
        w.text(QStringLiteral("BasisAmount"), amount(allowance.base));
    }
    w.text(QStringLiteral("ActualAmount"), amount(allowance.amount));
    w.text(QStringLiteral("Reason"), allowance.reason);
    w.open(Ram, QStringLiteral("CategoryTradeTax"));
    w.text(QStringLiteral("TypeCode"), QStringLiteral("VAT"));
    w.text(QStringLiteral("CategoryCode"), category);
    w.text(QStringLiteral("RateApplicablePercent"), amount(rate));
    w.close();
    w.close();
}

// BT-20: the discount line in the agreed form and its line break, then the free text.
QString paymentTerms(const Invoice& invoice)
{
    QString terms;
    if (invoice.discountPercent > 0)
        terms = QStringLiteral("#SKONTO#TAGE=%1#PROZENT=%2#\n").arg(invoice.discountDays).arg(amount(invoice.discountPercent));
    return terms + invoice.paymentNote;
}

} // namespace

QString guidelineId(Profile profile)
{
    return profile == Profile::XRechnung ? QStringLiteral("urn:cen.eu:en16931:2017#compliant#urn:xeinkauf.de:kosit:xrechnung_3.0")
                                         : QStringLiteral("urn:cen.eu:en16931:2017");
}

QStringList missingFields(const Invoice& invoice, Profile profile)
{
    const bool xr = profile == Profile::XRechnung;
    const Seller& s = invoice.seller;
    const Buyer& b = invoice.buyer;
    QStringList missing;
    auto need = [&](bool present, const char* phrase) {
        if (!present)
            missing << QString::fromUtf8(phrase);
    };
    need(!blank(invoice.number), "die Rechnungsnummer");
    need(invoice.issueDate.isValid(), "das Rechnungsdatum");
    need(!blank(s.name), "der Name des Verkäufers");
    need(!blank(s.vatId) || !blank(s.taxNumber), "die USt-IdNr. oder die Steuernummer des Verkäufers");
    // A tax number alone does not identify the seller: a VAT ID or an identifier at the buyer must be there.
    need(!blank(s.vatId) || !blank(s.sellerId), "die USt-IdNr. des Verkäufers oder seine Kennung beim Käufer (eine Steuernummer allein genügt nicht)");
    if (!blank(s.vatId))
        need(QRegularExpression(QStringLiteral("^[A-Z]{2}")).match(s.vatId.trimmed()).hasMatch(),
             "die Länderkennung am Anfang der USt-IdNr. des Verkäufers (z. B. DE123456789)");
    need(!blank(b.name), "der Name des Käufers");
    if (xr) {
        need(!blank(s.address.postCode), "die Postleitzahl des Verkäufers");
        need(!blank(s.address.city), "der Ort des Verkäufers");
        need(!blank(s.contactName), "der Ansprechpartner des Verkäufers");
        need(!blank(s.phone), "die Telefonnummer des Verkäufers");
        need(!blank(s.email), "die E-Mail-Adresse des Verkäufers");
        need(!blank(s.iban), "die IBAN des Verkäufers");
        need(!blank(b.address.postCode), "die Postleitzahl des Käufers");
        need(!blank(b.address.city), "der Ort des Käufers");
        need(!blank(b.email), "die E-Mail-Adresse des Käufers");
        need(!blank(b.reference), "die Käuferreferenz (Leitweg-ID, Bestell- oder Kundennummer)");
    }
    if (s.regime != TaxRegime::Small19)
        need(invoice.vatPercent > 0, "der Umsatzsteuersatz");
    need(!invoice.lines.isEmpty(), "mindestens eine Rechnungsposition");
    for (qsizetype i = 0; i < invoice.lines.size(); ++i) {
        const Line& line = invoice.lines[i];
        if (blank(line.name))
            missing << QStringLiteral("die Bezeichnung der Position %1").arg(i + 1);
        if (blank(line.unitCode))
            missing << QStringLiteral("die Mengeneinheit der Position %1").arg(i + 1);
    }
    if (invoice.levy && blank(invoice.levy->reason))
        missing << QStringLiteral("der Grund der Abgabe");
    // Something due needs a due date or payment terms.
    if (withTotals(invoice).duePayable > 0)
        need(invoice.discountPercent > 0 || !blank(invoice.paymentNote) || invoice.dueDate.isValid(),
             "die Zahlungsbedingungen oder das Fälligkeitsdatum");
    return missing;
}

QString missingFieldsMessage(const QStringList& missing)
{
    return QStringLiteral("Für die E-Rechnung fehlen: %1.").arg(missing.join(QStringLiteral("; ")));
}

QByteArray writeCii(const Invoice& given, Profile profile)
{
    const Invoice invoice = withTotals(given);
    QByteArray out;
    Writer w(&out);
    w.xml.writeStartDocument();
    w.xml.writeNamespace(Rsm, QStringLiteral("rsm"));
    w.xml.writeNamespace(Qdt, QStringLiteral("qdt"));
    w.xml.writeNamespace(Ram, QStringLiteral("ram"));
    w.xml.writeNamespace(Udt, QStringLiteral("udt"));
    w.open(Rsm, QStringLiteral("CrossIndustryInvoice"));

    w.open(Rsm, QStringLiteral("ExchangedDocumentContext"));
    w.open(Ram, QStringLiteral("BusinessProcessSpecifiedDocumentContextParameter"));
    w.text(QStringLiteral("ID"), PeppolProcess);
    w.close();
    w.open(Ram, QStringLiteral("GuidelineSpecifiedDocumentContextParameter"));
    w.text(QStringLiteral("ID"), guidelineId(profile));
    w.close();
    w.close();

    w.open(Rsm, QStringLiteral("ExchangedDocument"));
    w.text(QStringLiteral("ID"), invoice.number);
    w.text(QStringLiteral("TypeCode"), QStringLiteral("380"));
    w.date(QStringLiteral("IssueDateTime"), invoice.issueDate);
    const QString regime = parties::regimeNote(invoice.seller.regime);
    for (const QString& note : {invoice.note.contains(regime) ? QString() : regime, invoice.note}) {
        if (blank(note))
            continue;
        w.open(Ram, QStringLiteral("IncludedNote"));
        w.text(QStringLiteral("Content"), note);
        w.close();
    }
    w.close();

    w.open(Rsm, QStringLiteral("SupplyChainTradeTransaction"));
    for (qsizetype i = 0; i < invoice.lines.size(); ++i)
        writeLine(w, invoice, invoice.lines[i], i);

    w.open(Ram, QStringLiteral("ApplicableHeaderTradeAgreement"));
    w.textIf(QStringLiteral("BuyerReference"), invoice.buyer.reference);
    writeSeller(w, invoice.seller);
    writeBuyer(w, invoice.buyer);
    w.close();

    w.open(Ram, QStringLiteral("ApplicableHeaderTradeDelivery"));
    if (invoice.deliveryDate.isValid()) {
        w.open(Ram, QStringLiteral("ActualDeliverySupplyChainEvent"));
        w.date(QStringLiteral("OccurrenceDateTime"), invoice.deliveryDate);
        w.close();
    }
    w.close();

    w.open(Ram, QStringLiteral("ApplicableHeaderTradeSettlement"));
    w.text(QStringLiteral("InvoiceCurrencyCode"), invoice.currency);
    if (!blank(invoice.seller.iban)) {
        w.open(Ram, QStringLiteral("SpecifiedTradeSettlementPaymentMeans"));
        w.text(QStringLiteral("TypeCode"), invoice.paymentMeansCode.isEmpty() ? QStringLiteral("58") : invoice.paymentMeansCode);
        w.open(Ram, QStringLiteral("PayeePartyCreditorFinancialAccount"));
        w.text(QStringLiteral("IBANID"), QString(invoice.seller.iban).remove(u' '));
        w.close();
        if (!blank(invoice.seller.bic)) {
            w.open(Ram, QStringLiteral("PayeeSpecifiedCreditorFinancialInstitution"));
            w.text(QStringLiteral("BICID"), invoice.seller.bic.trimmed());
            w.close();
        }
        w.close();
    }
    for (const VatSubtotal& row : vatBreakdown(invoice)) {
        w.open(Ram, QStringLiteral("ApplicableTradeTax"));
        w.text(QStringLiteral("CalculatedAmount"), amount(row.tax));
        w.text(QStringLiteral("TypeCode"), QStringLiteral("VAT"));
        w.textIf(QStringLiteral("ExemptionReason"), row.exemptionReason);
        w.text(QStringLiteral("BasisAmount"), amount(row.basis));
        w.text(QStringLiteral("CategoryCode"), row.category);
        w.text(QStringLiteral("RateApplicablePercent"), amount(row.percent));
        w.close();
    }
    if (invoice.levy)
        writeAllowance(w, *invoice.levy, QStringLiteral("E"), 0);
    for (const Allowance& other : invoice.otherAllowances)
        writeAllowance(w, other, other.vatCategory.isEmpty() ? QStringLiteral("E") : other.vatCategory, other.vatPercent);
    const QString terms = paymentTerms(invoice);
    if (!terms.isEmpty() || invoice.dueDate.isValid()) {
        w.open(Ram, QStringLiteral("SpecifiedTradePaymentTerms"));
        w.textIf(QStringLiteral("Description"), terms);
        if (invoice.dueDate.isValid())
            w.date(QStringLiteral("DueDateDateTime"), invoice.dueDate);
        w.close();
    }
    w.open(Ram, QStringLiteral("SpecifiedTradeSettlementHeaderMonetarySummation"));
    w.text(QStringLiteral("LineTotalAmount"), amount(invoice.lineTotal));
    if (invoice.chargeTotal != 0)
        w.text(QStringLiteral("ChargeTotalAmount"), amount(invoice.chargeTotal));
    if (invoice.allowanceTotal != 0)
        w.text(QStringLiteral("AllowanceTotalAmount"), amount(invoice.allowanceTotal));
    w.text(QStringLiteral("TaxBasisTotalAmount"), amount(invoice.taxBasis));
    w.withAttribute(QStringLiteral("TaxTotalAmount"), QStringLiteral("currencyID"), invoice.currency, amount(invoice.vatTotal));
    w.text(QStringLiteral("GrandTotalAmount"), amount(invoice.grandTotal));
    if (invoice.prepaid != 0)
        w.text(QStringLiteral("TotalPrepaidAmount"), amount(invoice.prepaid));
    w.text(QStringLiteral("DuePayableAmount"), amount(invoice.duePayable));
    w.close();
    w.close(); // ApplicableHeaderTradeSettlement
    w.close(); // SupplyChainTradeTransaction
    w.close(); // CrossIndustryInvoice
    w.xml.writeEndDocument();
    return out;
}

QString writeCiiFile(const Invoice& invoice, Profile profile, const QString& path)
{
    const QStringList missing = missingFields(invoice, profile);
    if (!missing.isEmpty())
        return missingFieldsMessage(missing);
    const Invoice computed = withTotals(invoice);
    // Totals the caller filled must be the ones the lines give, else the file would contradict its print.
    if (invoice.grandTotal != 0 && (invoice.grandTotal != computed.grandTotal || invoice.vatTotal != computed.vatTotal))
        return QStringLiteral("Die E-Rechnung kann nicht geschrieben werden, weil die Summen (Umsatzsteuer %1, Bruttobetrag %2) "
                              "nicht zu den Positionen passen (Umsatzsteuer %3, Bruttobetrag %4).")
            .arg(euroText(invoice.vatTotal), euroText(invoice.grandTotal), euroText(computed.vatTotal), euroText(computed.grandTotal));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QStringLiteral("Die Datei \"%1\" kann nicht angelegt werden: %2").arg(path, germanFileError(file));
    const QByteArray xml = writeCii(invoice, profile);
    if (file.write(xml) != xml.size() || !file.commit())
        return QStringLiteral("Die Datei \"%1\" kann nicht geschrieben werden: %2").arg(path, germanFileError(file));
    return {};
}

} // namespace tarvik::einvoice
