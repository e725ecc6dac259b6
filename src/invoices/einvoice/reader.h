#pragma once
// Reading an e-invoice (CII or UBL XML) into an Invoice, and the invoice as German text lines.
// Hybrid PDFs are opened by einvoice_pdf (pdfreader.h), which hands their XML to this reader.
#include "invoices/einvoice/einvoice.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik::einvoice {

struct ReadResult {
    std::optional<Invoice> invoice;
    QString error;     // German, when nothing could be read
    QString syntax;    // "CII" or "UBL"
    QString guideline; // BT-24, e.g. the XRechnung 3.0 identifier
};

// The XML of a CII (CrossIndustryInvoice) or UBL (Invoice, CreditNote) e-invoice. Foreign or
// broken XML gives an error and no invoice.
ReadResult readInvoiceXml(const QByteArray& xml);

// A #SKONTO# line of payment terms and the free text after it, as the reader splits BT-20.
struct PaymentTermsParts {
    int days = 0;
    PercentHundredths percent = 0;
    QString rest;
};
PaymentTermsParts splitPaymentTerms(const QString& terms);

// Seller, buyer, lines, VAT breakdown, totals and payment terms as lines for the text window.
QStringList readableText(const Invoice& invoice);

} // namespace tarvik::einvoice
