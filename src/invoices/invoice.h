#pragma once
// An invoice to one buyer for one or more lots: the proposed number, the buyer's last details,
// the amount with levy, VAT and cash discount, the invoice text, the checks and the store.
#include "common/money.h"
#include "invoices/einvoice/einvoice.h"
#include "store/context.h"

#include <QDate>
#include <QList>
#include <QStringList>
#include <array>
#include <optional>

namespace tarvik {

inline constexpr char RememberedInvoiceFile[] = "Rechnungsinhalte.tk3";

// What the window holds, as typed.
struct InvoiceInput {
    QString buyer;        // kom(0)
    QString name;         // t(0)
    QString street;       // t(1)
    QString town;         // t(2)
    QString customerInfo; // t(12)
    QString number;       // tz(0)
    QString levy;         // tz(1), per cent
    QString vat;          // tz(2), per cent
    QString discount;     // tz(3), per cent
    QString date;         // tdat(0), "dd.mm.yyyy"
    QString deliveryDate; // date of supply, "dd.mm.yyyy"; empty: the invoice date
    QString discountDays; // days the cash discount holds
    std::array<QString, 6> sender; // t(4) ... t(9)
    QString discountNote; // t(10)
    QString closing;      // t(11)
    QList<qint32> lotIds; // the chosen lots' Lose.ID in the order of the lot list
};

// The captions that the user may reword; empty slots keep the usual wording.
struct InvoiceCaptions {
    QString customer = QStringLiteral("Kunden-Nr.");
    QString date = QStringLiteral("Rechnungsdatum");
    QString number = QStringLiteral("Rechnungsnummer");
    static InvoiceCaptions from(const Einstellungen& settings);
};
inline constexpr int FirstCaptionSlot = 15; // Einst_Text 15 ... 17

// The amount in cents, in the order the invoice shows it. Levy, VAT and discount are each
// rounded to the cent once, so the printed lines add up to the total.
struct InvoiceAmount {
    Cents net = 0;
    Cents levy = 0;
    Cents vat = 0;
    Cents gross = 0;
    Cents discount = 0;
    Cents total = 0; // the invoice's Betrag
};
// A percentage with two decimals; negative, empty or not a number counts as 0.
PercentHundredths invoicePercent(const QString& text);
InvoiceAmount invoiceAmount(Cents net, PercentHundredths levy, PercentHundredths vat, PercentHundredths discount);

// The year of today followed by 0001 while there is no invoice, else the highest number + 1.
qint32 proposedInvoiceNumber(const QSqlDatabase& db, const QDate& today);

// From the buyer's latest invoice.
struct BuyerDetails {
    QString name, street, town, customerInfo, discountDays;
    float levy = 0, vat = 0, discount = 0;
};
std::optional<BuyerDetails> buyerDetails(const QSqlDatabase& db, const QString& buyer);

// A lot that has no invoice yet, as the lot list shows it.
struct OpenLot {
    QString hiebNr, losNr, reNr, designation, sorting, settled, buyer, priceKind;
    qint32 harvestId = 0;
    qint32 lotId = 0;
};
QList<OpenLot> openLots(const QSqlDatabase& db);
QStringList invoiceBuyers(const QSqlDatabase& db); // the buyer register and earlier invoices, in German order
QList<qint32> invoiceNumbers(const QSqlDatabase& db); // highest first

// A stored invoice, as the window shows it.
struct StoredInvoice {
    QString buyer, name, street, town, customerInfo, date, text;
    QString deliveryDate, discountDays; // "dd.mm.yyyy" (the invoice date when none was kept), days or empty
    qint32 number = 0;
    float levy = 0, vat = 0, discount = 0;
    Cents amount = 0;
};
std::optional<StoredInvoice> loadInvoice(const QSqlDatabase& db, qint32 number);
std::optional<StoredInvoice> loadInvoiceById(const QSqlDatabase& db, qint32 id);

// One lot's block of the invoice text and its amount. A lot that does not exist gives nothing.
struct LotBlock {
    QStringList lines;
    Cents amount = 0; // the sum of the prices its lines print
    QList<einvoice::Line> items; // the priced lines as an e-invoice carries them, ids left empty
};
LotBlock lotBlock(const QSqlDatabase& db, qint32 lotId);

// The whole text: sender, buyer, invoice data, the lots' blocks and the amount lines. Empty
// when no lot is chosen. The amount is returned beside it.
struct InvoicePreview {
    QString text;
    InvoiceAmount amount;
};
InvoicePreview invoicePreview(const QSqlDatabase& db, const InvoiceInput& input, const InvoiceCaptions& captions);
// "Rechnungsbetrag:" with the amount, as the window shows it under the preview.
QString amountCaption(Cents amount);

// The sender frame's six lines from the own data (name, street, post code and town, phone,
// e-mail); nothing when no own data are kept.
std::optional<std::array<QString, 6>> ownSenderLines(const QSqlDatabase& db);

// A new invoice as the window starts it: the remembered texts (the sender from the own data
// where kept), the proposed number, today.
InvoiceInput newInvoiceInput(const AppContext& context);
// The buyer's latest invoice's name, address, customer information and percentages over the
// input's fields; false (input unchanged) when the buyer has no invoice yet.
bool applyBuyerDetails(const QSqlDatabase& db, const QString& buyer, InvoiceInput& input);

// The lots of one harvest by their numbers, in the order of the lot list, for an invoice made
// without the window; a lot that does not exist or is invoiced already gives a reason instead.
struct LotChoice {
    QList<qint32> lotIds;
    QStringList reasons;
};
LotChoice lotsForInvoice(const QSqlDatabase& db, qint32 harvestId, const QList<qint32>& lotNumbers);

// The discount days as typed: a whole number from 0 to 365; nothing otherwise.
std::optional<int> discountDays(const InvoiceInput& input);

// The invoice number as typed: digits only and within the column's range; nothing otherwise.
std::optional<qint32> invoiceNumber(const QString& typed);

// The reasons a store is refused, in their order; empty when it may go ahead.
QStringList invoiceRefusals(const QSqlDatabase& db, const InvoiceInput& input, const QString& previewText);

// Stores the invoice and marks its lots, in one transaction; the remembered texts are written
// after the commit. Refusals are shown through the prompter. Returns the stored number.
std::optional<qint32> storeInvoice(const AppContext& context, const InvoiceInput& input);

// The eleven remembered lines: tz(1) ... tz(3), t(4) ... t(11).
QStringList rememberedLines(const InvoiceInput& input);
// Fills the remembered fields of input from the data folder's file; false when there is none.
bool loadRemembered(const QString& dataFolder, InvoiceInput& input);

// A stored invoice's text as lines, for printing and the command line.
QStringList invoiceLines(const QString& text);

} // namespace tarvik
