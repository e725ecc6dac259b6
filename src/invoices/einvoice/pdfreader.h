#pragma once
// Reading an e-invoice file of any kind: CII or UBL XML as it stands, or a hybrid PDF
// (ZUGFeRD / Factur-X) by the XML embedded in it. Links Poppler, so only what opens such
// files links this library (einvoice_pdf).
#include "invoices/einvoice/reader.h"

namespace tarvik::einvoice {

// The invoice in the XML attached to a PDF; an error when none of its attachments is one.
ReadResult readInvoicePdf(const QByteArray& pdf);

// By the file's content: a PDF through its attachment, anything else as XML.
ReadResult readInvoiceFile(const QString& path);

} // namespace tarvik::einvoice
