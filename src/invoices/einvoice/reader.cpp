#include "invoices/einvoice/reader.h"

#include "invoices/einvoice/namespaces.h"
#include "invoices/einvoice/xmltree.h"

#include <optional>

namespace tarvik::einvoice {
namespace {

using xmlns::Ram;
using xmlns::Rsm;
using xmlns::Udt;

// The UBL component namespaces of the document being read, from its root's prefix.
thread_local QString Cac;
thread_local QString Cbc;

// The prefix of a UBL root namespace for that schema ("…:ubl:schema:xsd:"); nothing for any other.
std::optional<QString> ublPrefix(const QString& rootNamespace, const QString& schema)
{
    const QString tail = xmlns::UblSchemas + schema;
    if (!rootNamespace.startsWith(xmlns::UblStart) || !rootNamespace.endsWith(tail))
        return std::nullopt;
    const QString category = rootNamespace.mid(xmlns::UblStart.size(), rootNamespace.size() - xmlns::UblStart.size() - tail.size());
    if (category.isEmpty() || category.contains(u':'))
        return std::nullopt;
    return rootNamespace.left(rootNamespace.size() - schema.size());
}

// "1234.5" → 123450; the third decimal rounds half away from zero. Nothing when not a number.
std::optional<qint64> hundredths(const QString& raw)
{
    const QString text = raw.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    qsizetype i = 0;
    bool negative = false;
    if (text[0] == u'-' || text[0] == u'+') {
        negative = text[0] == u'-';
        ++i;
    }
    qint64 whole = 0;
    int fractionDigits = 0;
    qint64 fraction = 0;
    bool roundUp = false;
    bool seenDigit = false;
    bool seenPoint = false;
    for (; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'.' && !seenPoint) {
            seenPoint = true;
        } else if (c.isDigit() && c.unicode() < 128) {
            seenDigit = true;
            const int d = c.unicode() - '0';
            if (!seenPoint) {
                if (whole > 90'000'000'000'000LL)
                    return std::nullopt;
                whole = whole * 10 + d;
            } else if (fractionDigits < 2) {
                fraction = fraction * 10 + d;
                ++fractionDigits;
            } else if (fractionDigits == 2) {
                roundUp = d >= 5;
                ++fractionDigits;
            }
        } else {
            return std::nullopt;
        }
    }
    if (!seenDigit)
        return std::nullopt;
    for (; fractionDigits < 2; ++fractionDigits)
        fraction *= 10;
    const qint64 value = whole * 100 + fraction + (roundUp ? 1 : 0);
    return negative ? -value : value;
}

qint64 hundredthsOr0(const QString& text) { return hundredths(text).value_or(0); }

Quantity quantityOf(const QString& raw)
{
    Quantity q;
    QString text = raw.trimmed();
    const bool negative = text.startsWith(u'-');
    if (negative || text.startsWith(u'+'))
        text.remove(0, 1);
    const qsizetype point = text.indexOf(u'.');
    QString digits = text;
    if (point >= 0) {
        q.decimals = int(text.size() - point - 1);
        digits.remove(point, 1);
    }
    bool ok = false;
    q.value = digits.toLongLong(&ok);
    if (!ok || q.decimals > 9)
        return {};
    if (negative)
        q.value = -q.value;
    return q;
}

QDate ciiDate(const Node* node)
{
    const Node* string = node ? node->child(Udt, QStringLiteral("DateTimeString")) : nullptr;
    return string ? QDate::fromString(string->text.trimmed(), QStringLiteral("yyyyMMdd")) : QDate();
}

QDate ublDate(const QString& text) { return QDate::fromString(text.trimmed(), QStringLiteral("yyyy-MM-dd")); }

// Regime, rate of S, and the own-invoice form of lines, levy and note, from what a file holds.
void settleRegime(Invoice& invoice, const QStringList& notes)
{
    QList<PercentHundredths> rates;
    bool anyS = false;
    for (const Line& line : invoice.lines)
        if (line.vatCategory == u"S") {
            anyS = true;
            if (!rates.contains(line.vatPercent))
                rates << line.vatPercent;
        }
    bool smallBusiness = false;
    for (const VatSubtotal& row : invoice.readBreakdown)
        if (row.category == u"E" && row.exemptionReason.contains(QStringLiteral("§ 19")))
            smallBusiness = true;
    bool flat = false;
    for (const QString& note : notes)
        if (note.contains(QStringLiteral("§ 24")))
            flat = true;
    TaxRegime regime = TaxRegime::Regular;
    if (!anyS && smallBusiness)
        regime = TaxRegime::Small19;
    else if (anyS && flat)
        regime = TaxRegime::Flat24;
    invoice.seller.regime = regime;
    invoice.vatPercent = rates.size() == 1 ? rates.first() : 0;

    // Lines that say what the regime says anyway keep no category of their own.
    for (Line& line : invoice.lines) {
        const QString category = line.vatCategory;
        const PercentHundredths percent = line.vatPercent;
        Line plain = line;
        plain.vatCategory.clear();
        if (lineCategory(invoice, plain) == category && linePercent(invoice, plain) == percent) {
            line.vatCategory.clear();
            line.vatPercent = 0;
        }
    }

    const QString own = parties::regimeNote(regime);
    QStringList rest;
    bool dropped = false;
    for (const QString& note : notes) {
        if (!dropped && !own.isEmpty() && note == own) {
            dropped = true;
            continue;
        }
        rest << note;
    }
    invoice.note = rest.join(u'\n');

    // The levy is the first allowance outside the VAT base (category E), the way the writer puts it.
    for (qsizetype i = 0; i < invoice.otherAllowances.size(); ++i) {
        const Allowance& a = invoice.otherAllowances[i];
        if (!a.charge && a.vatCategory == u"E" && a.vatPercent == 0) {
            Allowance levy = a;
            levy.vatCategory.clear();
            invoice.levy = levy;
            invoice.otherAllowances.removeAt(i);
            break;
        }
    }
}

void applyPaymentTerms(Invoice& invoice, const QString& terms)
{
    const PaymentTermsParts parts = splitPaymentTerms(terms);
    invoice.discountDays = parts.days;
    invoice.discountPercent = parts.percent;
    invoice.paymentNote = parts.rest;
}

// ---- CII ----

void readCiiParty(const Node* party, QString& name, Address& address, QString& email, QString& vatId)
{
    if (!party)
        return;
    name = textAt(party, Ram, {"Name"});
    const Node* postal = party->child(Ram, QStringLiteral("PostalTradeAddress"));
    address.postCode = textAt(postal, Ram, {"PostcodeCode"});
    address.street = textAt(postal, Ram, {"LineOne"});
    address.city = textAt(postal, Ram, {"CityName"});
    address.country = textAt(postal, Ram, {"CountryID"});
    email = textAt(party, Ram, {"URIUniversalCommunication", "URIID"});
    for (const Node* reg : party->all(Ram, QStringLiteral("SpecifiedTaxRegistration"))) {
        const Node* id = reg->child(Ram, QStringLiteral("ID"));
        if (id && id->attribute(QStringLiteral("schemeID")) == u"VA")
            vatId = id->text;
    }
}

ReadResult readCii(const Node& root)
{
    ReadResult result;
    result.syntax = QStringLiteral("CII");
    result.guideline = textAt(at(&root, Rsm, {"ExchangedDocumentContext"}), Ram, {"GuidelineSpecifiedDocumentContextParameter", "ID"});
    const Node* document = root.child(Rsm, QStringLiteral("ExchangedDocument"));
    const Node* transaction = root.child(Rsm, QStringLiteral("SupplyChainTradeTransaction"));
    if (!document || !transaction) {
        result.error = QStringLiteral("Die CII-Datei ist unvollständig: es fehlt der Rechnungskopf oder der Rechnungsinhalt.");
        return result;
    }
    Invoice invoice;
    invoice.number = textAt(document, Ram, {"ID"});
    invoice.issueDate = ciiDate(document->child(Ram, QStringLiteral("IssueDateTime")));
    QStringList notes;
    for (const Node* note : document->all(Ram, QStringLiteral("IncludedNote")))
        notes << textAt(note, Ram, {"Content"});

    for (const Node* item : transaction->all(Ram, QStringLiteral("IncludedSupplyChainTradeLineItem"))) {
        Line line;
        line.id = textAt(item, Ram, {"AssociatedDocumentLineDocument", "LineID"});
        line.name = textAt(item, Ram, {"SpecifiedTradeProduct", "Name"});
        line.description = textAt(item, Ram, {"SpecifiedTradeProduct", "Description"});
        line.netPrice = textAt(item, Ram, {"SpecifiedLineTradeAgreement", "NetPriceProductTradePrice", "ChargeAmount"}).trimmed();
        if (const Node* q = at(item, Ram, {"SpecifiedLineTradeDelivery", "BilledQuantity"})) {
            line.quantity = quantityOf(q->text);
            line.unitCode = q->attribute(QStringLiteral("unitCode"));
        }
        const Node* settlement = item->child(Ram, QStringLiteral("SpecifiedLineTradeSettlement"));
        line.vatCategory = textAt(settlement, Ram, {"ApplicableTradeTax", "CategoryCode"}).trimmed();
        line.vatPercent = hundredthsOr0(textAt(settlement, Ram, {"ApplicableTradeTax", "RateApplicablePercent"}));
        line.net = hundredthsOr0(textAt(settlement, Ram, {"SpecifiedTradeSettlementLineMonetarySummation", "LineTotalAmount"}));
        invoice.lines << line;
    }

    const Node* agreement = transaction->child(Ram, QStringLiteral("ApplicableHeaderTradeAgreement"));
    invoice.buyer.reference = textAt(agreement, Ram, {"BuyerReference"});
    if (const Node* seller = at(agreement, Ram, {"SellerTradeParty"})) {
        Seller& s = invoice.seller;
        QString electronic;
        readCiiParty(seller, s.name, s.address, electronic, s.vatId);
        s.sellerId = textAt(seller, Ram, {"ID"});
        const Node* contact = seller->child(Ram, QStringLiteral("DefinedTradeContact"));
        s.contactName = textAt(contact, Ram, {"PersonName"});
        s.phone = textAt(contact, Ram, {"TelephoneUniversalCommunication", "CompleteNumber"});
        s.email = textAt(contact, Ram, {"EmailURIUniversalCommunication", "URIID"});
        if (s.email.isEmpty())
            s.email = electronic;
        for (const Node* reg : seller->all(Ram, QStringLiteral("SpecifiedTaxRegistration"))) {
            const Node* id = reg->child(Ram, QStringLiteral("ID"));
            if (id && id->attribute(QStringLiteral("schemeID")) == u"FC")
                s.taxNumber = id->text;
        }
    }
    if (const Node* buyer = at(agreement, Ram, {"BuyerTradeParty"}))
        readCiiParty(buyer, invoice.buyer.name, invoice.buyer.address, invoice.buyer.email, invoice.buyer.vatId);

    invoice.deliveryDate = ciiDate(at(transaction, Ram, {"ApplicableHeaderTradeDelivery", "ActualDeliverySupplyChainEvent", "OccurrenceDateTime"}));

    const Node* settlement = transaction->child(Ram, QStringLiteral("ApplicableHeaderTradeSettlement"));
    invoice.currency = textAt(settlement, Ram, {"InvoiceCurrencyCode"});
    if (const Node* means = at(settlement, Ram, {"SpecifiedTradeSettlementPaymentMeans"})) {
        invoice.paymentMeansCode = textAt(means, Ram, {"TypeCode"});
        invoice.seller.iban = textAt(means, Ram, {"PayeePartyCreditorFinancialAccount", "IBANID"});
        invoice.seller.bic = textAt(means, Ram, {"PayeeSpecifiedCreditorFinancialInstitution", "BICID"});
    } else {
        invoice.paymentMeansCode.clear();
    }
    if (settlement) {
        for (const Node* tax : settlement->all(Ram, QStringLiteral("ApplicableTradeTax"))) {
            VatSubtotal row;
            row.category = textAt(tax, Ram, {"CategoryCode"}).trimmed();
            row.percent = hundredthsOr0(textAt(tax, Ram, {"RateApplicablePercent"}));
            row.basis = hundredthsOr0(textAt(tax, Ram, {"BasisAmount"}));
            row.tax = hundredthsOr0(textAt(tax, Ram, {"CalculatedAmount"}));
            row.exemptionReason = textAt(tax, Ram, {"ExemptionReason"});
            invoice.readBreakdown << row;
        }
        for (const Node* ac : settlement->all(Ram, QStringLiteral("SpecifiedTradeAllowanceCharge"))) {
            Allowance a;
            a.charge = textAt(at(ac, Ram, {"ChargeIndicator"}), Udt, {"Indicator"}).trimmed() == u"true";
            a.percent = hundredthsOr0(textAt(ac, Ram, {"CalculationPercent"}));
            a.base = hundredthsOr0(textAt(ac, Ram, {"BasisAmount"}));
            a.amount = hundredthsOr0(textAt(ac, Ram, {"ActualAmount"}));
            a.reason = textAt(ac, Ram, {"Reason"});
            a.vatCategory = textAt(ac, Ram, {"CategoryTradeTax", "CategoryCode"}).trimmed();
            a.vatPercent = hundredthsOr0(textAt(ac, Ram, {"CategoryTradeTax", "RateApplicablePercent"}));
            invoice.otherAllowances << a;
        }
        QStringList terms;
        for (const Node* term : settlement->all(Ram, QStringLiteral("SpecifiedTradePaymentTerms"))) {
            if (const Node* description = term->child(Ram, QStringLiteral("Description")))
                terms << description->text;
            if (!invoice.dueDate.isValid())
                invoice.dueDate = ciiDate(term->child(Ram, QStringLiteral("DueDateDateTime")));
        }
        applyPaymentTerms(invoice, terms.join(u'\n'));
        const Node* sums = settlement->child(Ram, QStringLiteral("SpecifiedTradeSettlementHeaderMonetarySummation"));
        invoice.lineTotal = hundredthsOr0(textAt(sums, Ram, {"LineTotalAmount"}));
        invoice.chargeTotal = hundredthsOr0(textAt(sums, Ram, {"ChargeTotalAmount"}));
        invoice.allowanceTotal = hundredthsOr0(textAt(sums, Ram, {"AllowanceTotalAmount"}));
        invoice.taxBasis = hundredthsOr0(textAt(sums, Ram, {"TaxBasisTotalAmount"}));
        // BT-110 is the total in the invoice's currency; a second one would be in the tax currency.
        if (sums)
            for (const Node* tax : sums->all(Ram, QStringLiteral("TaxTotalAmount")))
                if (tax->attribute(QStringLiteral("currencyID")).isEmpty() || tax->attribute(QStringLiteral("currencyID")) == invoice.currency) {
                    invoice.vatTotal = hundredthsOr0(tax->text);
                    break;
                }
        invoice.grandTotal = hundredthsOr0(textAt(sums, Ram, {"GrandTotalAmount"}));
        invoice.prepaid = hundredthsOr0(textAt(sums, Ram, {"TotalPrepaidAmount"}));
        invoice.duePayable = hundredthsOr0(textAt(sums, Ram, {"DuePayableAmount"}));
    }
    settleRegime(invoice, notes);
    result.invoice = invoice;
    return result;
}

// ---- UBL ----

struct UblParty {
    QString name, email, vatId, otherTaxId, id, contactName, phone, contactEmail;
    Address address;
};

UblParty readUblParty(const Node* party)
{
    UblParty p;
    if (!party)
        return p;
    if (const Node* endpoint = party->child(Cbc, QStringLiteral("EndpointID")))
        p.email = endpoint->text;
    p.id = textAt(at(party, Cac, {"PartyIdentification"}), Cbc, {"ID"});
    p.name = textAt(at(party, Cac, {"PartyLegalEntity"}), Cbc, {"RegistrationName"});
    if (p.name.isEmpty())
        p.name = textAt(at(party, Cac, {"PartyName"}), Cbc, {"Name"});
    const Node* postal = party->child(Cac, QStringLiteral("PostalAddress"));
    p.address.street = textAt(postal, Cbc, {"StreetName"});
    p.address.city = textAt(postal, Cbc, {"CityName"});
    p.address.postCode = textAt(postal, Cbc, {"PostalZone"});
    p.address.country = textAt(at(postal, Cac, {"Country"}), Cbc, {"IdentificationCode"});
    for (const Node* scheme : party->all(Cac, QStringLiteral("PartyTaxScheme"))) {
        const QString id = textAt(scheme, Cbc, {"CompanyID"});
        if (textAt(at(scheme, Cac, {"TaxScheme"}), Cbc, {"ID"}).trimmed() == u"VAT")
            p.vatId = id;
        else
            p.otherTaxId = id;
    }
    const Node* contact = party->child(Cac, QStringLiteral("Contact"));
    p.contactName = textAt(contact, Cbc, {"Name"});
    p.phone = textAt(contact, Cbc, {"Telephone"});
    p.contactEmail = textAt(contact, Cbc, {"ElectronicMail"});
    return p;
}

ReadResult readUbl(const Node& root, bool creditNote)
{
    ReadResult result;
    result.syntax = QStringLiteral("UBL");
    result.guideline = textAt(&root, Cbc, {"CustomizationID"});
    Invoice invoice;
    invoice.number = textAt(&root, Cbc, {"ID"});
    invoice.issueDate = ublDate(textAt(&root, Cbc, {"IssueDate"}));
    invoice.dueDate = ublDate(textAt(&root, Cbc, {"DueDate"}));
    invoice.currency = textAt(&root, Cbc, {"DocumentCurrencyCode"});
    invoice.buyer.reference = textAt(&root, Cbc, {"BuyerReference"});
    QStringList notes;
    for (const Node* note : root.all(Cbc, QStringLiteral("Note"))) {
        QString text = note->text;
        // A leading "#ADU#" is the note's subject code, not its text.
        if (text.size() > 5 && text.startsWith(u'#') && text.at(4) == u'#')
            text.remove(0, 5);
        notes << text;
    }

    const UblParty seller = readUblParty(at(&root, Cac, {"AccountingSupplierParty", "Party"}));
    Seller& s = invoice.seller;
    s.name = seller.name;
    s.address = seller.address;
    s.contactName = seller.contactName;
    s.phone = seller.phone;
    s.email = seller.contactEmail.isEmpty() ? seller.email : seller.contactEmail;
    s.vatId = seller.vatId;
    s.taxNumber = seller.otherTaxId;
    s.sellerId = seller.id;
    const UblParty buyer = readUblParty(at(&root, Cac, {"AccountingCustomerParty", "Party"}));
    invoice.buyer.name = buyer.name;
    invoice.buyer.address = buyer.address;
    invoice.buyer.email = buyer.email;
    invoice.buyer.vatId = buyer.vatId;

    invoice.deliveryDate = ublDate(textAt(at(&root, Cac, {"Delivery"}), Cbc, {"ActualDeliveryDate"}));
    if (const Node* means = root.child(Cac, QStringLiteral("PaymentMeans"))) {
        invoice.paymentMeansCode = textAt(means, Cbc, {"PaymentMeansCode"});
        const Node* account = means->child(Cac, QStringLiteral("PayeeFinancialAccount"));
        s.iban = textAt(account, Cbc, {"ID"});
        s.bic = textAt(at(account, Cac, {"FinancialInstitutionBranch"}), Cbc, {"ID"});
    } else {
        invoice.paymentMeansCode.clear();
    }
    QStringList terms;
    for (const Node* term : root.all(Cac, QStringLiteral("PaymentTerms")))
        for (const Node* note : term->all(Cbc, QStringLiteral("Note")))
            terms << note->text;
    applyPaymentTerms(invoice, terms.join(u'\n'));

    for (const Node* ac : root.all(Cac, QStringLiteral("AllowanceCharge"))) {
        Allowance a;
        a.charge = textAt(ac, Cbc, {"ChargeIndicator"}).trimmed() == u"true";
        a.reason = textAt(ac, Cbc, {"AllowanceChargeReason"});
        a.percent = hundredthsOr0(textAt(ac, Cbc, {"MultiplierFactorNumeric"}));
        a.amount = hundredthsOr0(textAt(ac, Cbc, {"Amount"}));
        a.base = hundredthsOr0(textAt(ac, Cbc, {"BaseAmount"}));
        const Node* category = ac->child(Cac, QStringLiteral("TaxCategory"));
        a.vatCategory = textAt(category, Cbc, {"ID"}).trimmed();
        a.vatPercent = hundredthsOr0(textAt(category, Cbc, {"Percent"}));
        invoice.otherAllowances << a;
    }
    // The first tax total carries the breakdown in the invoice's currency.
    if (const Node* taxTotal = root.child(Cac, QStringLiteral("TaxTotal"))) {
        invoice.vatTotal = hundredthsOr0(textAt(taxTotal, Cbc, {"TaxAmount"}));
        for (const Node* sub : taxTotal->all(Cac, QStringLiteral("TaxSubtotal"))) {
            VatSubtotal row;
            row.basis = hundredthsOr0(textAt(sub, Cbc, {"TaxableAmount"}));
            row.tax = hundredthsOr0(textAt(sub, Cbc, {"TaxAmount"}));
            const Node* category = sub->child(Cac, QStringLiteral("TaxCategory"));
            row.category = textAt(category, Cbc, {"ID"}).trimmed();
            row.percent = hundredthsOr0(textAt(category, Cbc, {"Percent"}));
            row.exemptionReason = textAt(category, Cbc, {"TaxExemptionReason"});
            invoice.readBreakdown << row;
        }
    }
    const Node* sums = root.child(Cac, QStringLiteral("LegalMonetaryTotal"));
    invoice.lineTotal = hundredthsOr0(textAt(sums, Cbc, {"LineExtensionAmount"}));
    invoice.allowanceTotal = hundredthsOr0(textAt(sums, Cbc, {"AllowanceTotalAmount"}));
    invoice.chargeTotal = hundredthsOr0(textAt(sums, Cbc, {"ChargeTotalAmount"}));
    invoice.taxBasis = hundredthsOr0(textAt(sums, Cbc, {"TaxExclusiveAmount"}));
    invoice.grandTotal = hundredthsOr0(textAt(sums, Cbc, {"TaxInclusiveAmount"}));
    invoice.prepaid = hundredthsOr0(textAt(sums, Cbc, {"PrepaidAmount"}));
    invoice.duePayable = hundredthsOr0(textAt(sums, Cbc, {"PayableAmount"}));

    const QString lineName = creditNote ? QStringLiteral("CreditNoteLine") : QStringLiteral("InvoiceLine");
    const char* quantityName = creditNote ? "CreditedQuantity" : "InvoicedQuantity";
    for (const Node* item : root.all(Cac, lineName)) {
        Line line;
        line.id = textAt(item, Cbc, {"ID"});
        if (const Node* q = at(item, Cbc, {quantityName})) {
            line.quantity = quantityOf(q->text);
            line.unitCode = q->attribute(QStringLiteral("unitCode"));
        }
        line.net = hundredthsOr0(textAt(item, Cbc, {"LineExtensionAmount"}));
        const Node* product = item->child(Cac, QStringLiteral("Item"));
        line.name = textAt(product, Cbc, {"Name"});
        line.description = textAt(product, Cbc, {"Description"});
        const Node* category = at(product, Cac, {"ClassifiedTaxCategory"});
        line.vatCategory = textAt(category, Cbc, {"ID"}).trimmed();
        line.vatPercent = hundredthsOr0(textAt(category, Cbc, {"Percent"}));
        line.netPrice = textAt(at(item, Cac, {"Price"}), Cbc, {"PriceAmount"}).trimmed();
        invoice.lines << line;
    }
    settleRegime(invoice, notes);
    result.invoice = invoice;
    return result;
}

} // namespace

ReadResult readInvoiceXml(const QByteArray& xml)
{
    const Tree tree = parse(xml);
    if (!tree.root || !tree.error.isEmpty()) {
        ReadResult result;
        result.error = tree.error.isEmpty() ? QStringLiteral("Die Datei ist kein gültiges XML.") : tree.error;
        return result;
    }
    const Node& root = *tree.root;
    if (root.ns == Rsm && root.name == u"CrossIndustryInvoice")
        return readCii(root);
    for (const bool creditNote : {false, true}) {
        const QString name = creditNote ? QStringLiteral("CreditNote") : QStringLiteral("Invoice");
        if (root.name != name)
            continue;
        if (const auto prefix = ublPrefix(root.ns, name + QStringLiteral("-2"))) {
            Cac = *prefix + QStringLiteral("CommonAggregateComponents-2");
            Cbc = *prefix + QStringLiteral("CommonBasicComponents-2");
            return readUbl(root, creditNote);
        }
    }
    ReadResult result;
    result.error = QStringLiteral("Die Datei enthält keine E-Rechnung im Format CII oder UBL (das Wurzelelement ist \"%1\"%2).")
                       .arg(root.name, root.ns.isEmpty() ? QString() : QStringLiteral(" im Namensraum \"%1\"").arg(root.ns));
    return result;
}

PaymentTermsParts splitPaymentTerms(const QString& terms)
{
    PaymentTermsParts parts;
    QString rest = terms;
    while (rest.startsWith(QStringLiteral("#SKONTO#"))) {
        const qsizetype end = rest.indexOf(u'\n');
        const QString line = end < 0 ? rest : rest.left(end);
        rest = end < 0 ? QString() : rest.mid(end + 1);
        if (parts.percent != 0)
            continue; // a further discount step: the first one is the one shown
        for (const QString& field : line.split(u'#', Qt::SkipEmptyParts)) {
            if (field.startsWith(QStringLiteral("TAGE=")))
                parts.days = field.mid(5).toInt();
            else if (field.startsWith(QStringLiteral("PROZENT=")))
                parts.percent = hundredthsOr0(field.mid(8));
        }
    }
    parts.rest = rest;
    return parts;
}

} // namespace tarvik::einvoice
