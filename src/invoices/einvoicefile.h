#pragma once
// A stored invoice as an e-invoice file: the seller from the own data, the buyer from the buyer
// register (or the invoice's address), one line per priced line of its lots' blocks, levy,
// VAT and cash discount as the printed invoice computed them.
#include "invoices/einvoice/ciiwriter.h"
#include "store/context.h"

#include <QStringList>
#include <variant>

namespace tarvik {

// The e-invoice of a stored invoice, or the reasons it cannot be made (each "...reason").
// The lots' lines must still add up to the stored amount: a lot changed since the invoice was
// stored would make the file disagree with the paper.
std::variant<einvoice::Invoice, QStringList> eInvoiceOf(const QSqlDatabase& db, qint32 number);

// Writes the stored invoice as an XRechnung or EN 16931 file under a temporary name, renamed
// when complete. Every reason and missing field is shown through the prompter in one message,
// and nothing is written then.
bool writeEInvoice(const AppContext& context, qint32 number, const QString& path, einvoice::Profile profile);

// The proposed file name: "Rechnung_20260001.xml" in the data folder.
QString eInvoiceProposal(const QString& dataFolder, qint32 number);

} // namespace tarvik
