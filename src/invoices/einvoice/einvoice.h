#pragma once
// An electronic invoice as data: what the CII writer puts into the file and what the reader
// takes out of any e-invoice (CII, UBL, hybrid PDF). No XML here and no database: the invoice
// core fills it from a stored invoice, the writer and reader only translate.
#include "common/money.h"
#include "parties/taxregime.h"

#include <QDate>
#include <QList>
#include <QString>
#include <optional>

namespace tarvik::einvoice {

// How the seller is taxed: regular VAT (category S at the invoice's rate), the flat rate of
// § 24 UStG (category S at 5.5 % with its note) or § 19 UStG (category E, no VAT, its note).
using TaxRegime = parties::TaxRegime;

struct Address {
    QString street;
    QString postCode;
    QString city;
    QString country = QStringLiteral("DE"); // ISO 3166-1 alpha-2
};

struct Seller {
    QString name;
    Address address;
    QString contactName; // BG-6
    QString phone;
    QString email;       // also the electronic address (BT-34, scheme EM)
    QString taxNumber;   // Steuernummer, BT-32
    QString vatId;       // USt-IdNr., BT-31
    QString sellerId;    // the seller's identifier at the buyer, BT-29
    QString iban;        // BG-17
    QString bic;
    QString bankName;
    TaxRegime regime = TaxRegime::Regular;
};

struct Buyer {
    QString name;
    Address address;
    QString vatId;     // BT-48
    QString reference; // BT-10: order or customer number, or a public buyer's Leitweg-ID
    QString email;     // electronic address (BT-49, scheme EM)
};

// A quantity with a fixed number of decimals: 2,921 Efm is {2921, 3}, 25 pieces {25, 0}.
struct Quantity {
    qint64 value = 0;
    int decimals = 0;
};

struct Line {
    QString id;          // "1", "2", …
    QString name;        // BT-153, e.g. "Stammholz FI (Fichte) B L3a"
    QString description; // BT-154, e.g. "Hieb 7, Los 1 Fichte lang"
    Quantity quantity;   // BT-129
    QString unitCode;    // BT-130: MTQ (Efm, Rm), H87 (pieces), LM (running metres), C62 (one flat price)
    QString netPrice;    // BT-146 as decimal text with a point ("90.455000"), so quantity × price is the net within half a cent
    Cents net = 0;       // BT-131
    // BT-151/BT-152 as read from a file; empty when the seller's regime decides (own invoices).
    QString vatCategory{};
    PercentHundredths vatPercent = 0;
};

// The levy: a document-level allowance (BG-20) with its percentage and base.
struct Allowance {
    Cents amount = 0;
    Cents base = 0;
    PercentHundredths percent = 0;
    QString reason; // BT-97, e.g. "CMA-Abgabe"
    // Only for what a read file holds beyond the levy: a charge (BG-21) and its VAT category.
    bool charge = false;
    QString vatCategory{};
    PercentHundredths vatPercent = 0;
};

// One row of the VAT breakdown (BG-23).
struct VatSubtotal {
    QString category; // BT-118: S, E, …
    PercentHundredths percent = 0;
    Cents basis = 0; // BT-116
    Cents tax = 0;   // BT-117
    QString exemptionReason; // BT-120
    friend bool operator==(const VatSubtotal&, const VatSubtotal&) = default;
};

struct Invoice {
    QString number;           // BT-1
    QDate issueDate;          // BT-2
    QDate deliveryDate;       // BT-72, the date of supply
    QString currency = QStringLiteral("EUR");
    QString note;             // BT-22: free text; the writer adds the tax regime's note unless it is in here
    Seller seller;
    Buyer buyer;
    QList<Line> lines;
    PercentHundredths vatPercent = 0; // the rate of category S (0 for § 19)
    std::optional<Allowance> levy;
    // Payment: cash discount as a term (BT-20 "#SKONTO#TAGE=n#PROZENT=p.pp#"), due in days.
    PercentHundredths discountPercent = 0;
    int discountDays = 0;
    QString paymentNote; // the discount note and the closing text, for BT-20 after the discount line
    QDate dueDate;       // BT-9, optional
    QString paymentMeansCode = QStringLiteral("58"); // BT-81: 58 SEPA credit transfer to the seller's IBAN

    // What a read file holds beyond an own invoice: further allowances and charges, its own
    // VAT breakdown (the writer always derives it with vatBreakdown()) and its charge and
    // prepaid totals.
    QList<Allowance> otherAllowances;
    QList<VatSubtotal> readBreakdown;
    Cents chargeTotal = 0; // BT-108
    Cents prepaid = 0;     // BT-113

    // Totals (BG-22), all in cents, following the rounding of the lines.
    Cents lineTotal = 0;      // BT-106: sum of line nets
    Cents allowanceTotal = 0; // BT-107: the levy
    Cents taxBasis = 0;       // BT-109
    Cents vatTotal = 0;       // BT-110
    Cents grandTotal = 0;     // BT-112
    Cents duePayable = 0;     // BT-115 (the discount is a term, so the gross is due)
};

// BT-22 carries parties::regimeNote of the seller's regime (empty for regular VAT).
// BT-120 of the E breakdown: the § 19 reason, or why the levy stays outside the VAT base.
QString exemptionReason(TaxRegime regime);
inline constexpr char SmallBusinessReason[] = "Kein Ausweis von Umsatzsteuer, da Kleinunternehmer gemäß § 19 UStG";

// A line's VAT category and rate: its own when read from a file, else the seller's regime's.
QString lineCategory(const Invoice& invoice, const Line& line);
PercentHundredths linePercent(const Invoice& invoice, const Line& line);

// The VAT breakdown (BG-23) by EN 16931: per category and rate the lines' nets less the
// allowances, the tax rounded once per row (BR-CO-17).
QList<VatSubtotal> vatBreakdown(const Invoice& invoice);
// The invoice with its totals (BG-22) computed from its lines, levy and breakdown.
Invoice withTotals(Invoice invoice);

// The net price text for a line: the fewest decimals (2 to 6) with which quantity × price
// is the net within half a cent.
QString unitPriceText(Cents net, Quantity quantity);

// "1.234,56 €"
QString euroText(Cents cents);

} // namespace tarvik::einvoice
