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
};

// The levy: a document-level allowance (BG-20) with its percentage and base.
struct Allowance {
    Cents amount = 0;
    Cents base = 0;
    PercentHundredths percent = 0;
    QString reason; // BT-97, e.g. "CMA-Abgabe"
};

struct Invoice {
    QString number;           // BT-1
    QDate issueDate;          // BT-2
    QDate deliveryDate;       // BT-72, the date of supply
    QString currency = QStringLiteral("EUR");
    QString note;             // BT-22: the tax regime's note and free text
    Seller seller;
    Buyer buyer;
    QList<Line> lines;
    PercentHundredths vatPercent = 0; // the rate of category S (0 for § 19)
    std::optional<Allowance> levy;
    // Payment: cash discount as a term (BT-20 "#SKONTO#TAGE=n#PROZENT=p.pp#"), due in days.
    PercentHundredths discountPercent = 0;
    int discountDays = 0;
    QString paymentNote; // the discount note and the closing text, for BT-20 after the discount line

    // Totals (BG-22), all in cents, following the rounding of the lines.
    Cents lineTotal = 0;      // BT-106: sum of line nets
    Cents allowanceTotal = 0; // BT-107: the levy
    Cents taxBasis = 0;       // BT-109
    Cents vatTotal = 0;       // BT-110
    Cents grandTotal = 0;     // BT-112
    Cents duePayable = 0;     // BT-115 (the discount is a term, so the gross is due)
};

} // namespace tarvik::einvoice
