#pragma once
// E-invoices built by hand from worked examples, for the writer's and the reader's tests.
#include "invoices/einvoice/einvoice.h"

#include <QString>

namespace tarvik::test {

inline einvoice::Line line(const char* id, const QString& name, einvoice::Quantity q, const char* unit, const char* price, Cents net)
{
    einvoice::Line l;
    l.id = QString::fromLatin1(id);
    l.name = name;
    l.description = QStringLiteral("Hieb 7, Los %1").arg(l.id);
    l.quantity = q;
    l.unitCode = QString::fromLatin1(unit);
    l.netPrice = QString::fromLatin1(price);
    l.net = net;
    return l;
}

// A seller with a VAT ID and everything XRechnung asks for, and a buyer with a Leitweg-ID.
inline einvoice::Invoice baseInvoice()
{
    einvoice::Invoice inv;
    inv.number = QStringLiteral("20260007");
    inv.issueDate = QDate(2026, 11, 15);
    inv.deliveryDate = QDate(2026, 11, 2);
    inv.seller.name = QStringLiteral("Forstbetrieb Müller");
    inv.seller.address = {QStringLiteral("Waldweg 3"), QStringLiteral("79100"), QStringLiteral("Freiburg im Breisgau"), QStringLiteral("DE")};
    inv.seller.contactName = QStringLiteral("Jörg Müller");
    inv.seller.phone = QStringLiteral("+49 761 123456");
    inv.seller.email = QStringLiteral("rechnung@forst-mueller.de");
    inv.seller.taxNumber = QStringLiteral("06/123/45678");
    inv.seller.vatId = QStringLiteral("DE123456789");
    inv.seller.iban = QStringLiteral("DE02120300000000202051");
    inv.seller.bic = QStringLiteral("BYLADEM1001");
    inv.buyer.name = QStringLiteral("Sägewerk Groß GmbH");
    inv.buyer.address = {QStringLiteral("Am Holzplatz 1"), QStringLiteral("79211"), QStringLiteral("Denzlingen"), QStringLiteral("DE")};
    inv.buyer.reference = QStringLiteral("04011000-12345-03");
    inv.buyer.email = QStringLiteral("eingang@saegewerk-gross.de");
    inv.vatPercent = 1900;
    inv.paymentNote = QStringLiteral("Zahlbar innerhalb von 30 Tagen ohne Abzug.");
    return inv;
}

// A flat-priced lot under § 24 at 5,5 %: 1.000,00 → 55,00.
inline einvoice::Invoice flatRate24()
{
    einvoice::Invoice inv = baseInvoice();
    inv.seller.regime = einvoice::TaxRegime::Flat24;
    inv.vatPercent = 550;
    inv.lines << line("1", QStringLiteral("Stammholz EI (Eiche) Pauschalpreis"), {1, 0}, "C62", "1000.00", 100000);
    return inv;
}

// A small business under § 19 with only a tax number and its number at the buyer; the levy
// of 2 % on 500,00 is 10,00, so 490,00 is due and all of it is category E.
inline einvoice::Invoice smallBusiness19()
{
    einvoice::Invoice inv = baseInvoice();
    inv.seller.regime = einvoice::TaxRegime::Small19;
    inv.seller.vatId.clear();
    inv.seller.sellerId = QStringLiteral("L-4711");
    inv.vatPercent = 0;
    inv.lines << line("1", QStringLiteral("Brennholz BU (Buche) 1 m"), {8, 0}, "MTQ", "62.50", 50000);
    inv.levy = einvoice::Allowance{.amount = 1000, .base = 50000, .percent = 200, .reason = QStringLiteral("CMA-Abgabe")};
    return inv;
}

// A flat-priced lot, a pole lot and a stacked-wood lot: 1.500,00 + 25 × 3,40 + 12,5 × 45,00
// = 2.147,50; VAT 408,025 → 408,03 (the half cent goes up). Names carry & < > " ' and umlauts.
inline einvoice::Invoice mixedLots()
{
    einvoice::Invoice inv = baseInvoice();
    inv.seller.name = QStringLiteral("Forstbetrieb Müller & Söhne \"Am Hang\" <Süd> 's Gut");
    inv.buyer.name = QStringLiteral("Sägewerk Groß & Co. KG 'Nord' <Holz>");
    inv.note = QStringLiteral("Abfuhr bis 31.12. & nur über den \"Forstweg\" <Süd>.");
    inv.lines << line("1", QStringLiteral("Stammholz DG (Douglasie) Pauschalpreis"), {1, 0}, "C62", "1500.00", 150000)
              << line("2", QStringLiteral("Pfähle FI (Fichte) 2,5 m, 8–10 cm"), {25, 0}, "H87", "3.40", 8500)
              << line("3", QStringLiteral("Schichtholz BU (Buche) 1 m"), {125, 1}, "MTQ", "45.00", 56250);
    inv.lines[1].description = QStringLiteral("Los 2 \"Pfähle\" & <Zaun>");
    return inv;
}

// Levy 2 % and cash discount 2 % in 14 days: net 1.000,00, levy 20,00, VAT 190,00 on the
// full net, 1.170,00 due.
inline einvoice::Invoice levyAndDiscount()
{
    einvoice::Invoice inv = baseInvoice();
    inv.lines << line("1", QStringLiteral("Stammholz FI (Fichte) B L2b"), {12500, 3}, "MTQ", "80.00", 100000);
    inv.levy = einvoice::Allowance{.amount = 2000, .base = 100000, .percent = 200, .reason = QStringLiteral("CMA-Abgabe")};
    inv.discountPercent = 200;
    inv.discountDays = 14;
    inv.paymentNote = QStringLiteral("2 % Skonto bei Zahlung bis 29.11.2026.\nBankverbindung siehe unten.");
    return inv;
}

// 102,50 € at 19 % is 19,475 → 19,48 €.
inline einvoice::Invoice halfCent()
{
    einvoice::Invoice inv = baseInvoice();
    inv.lines << line("1", QStringLiteral("Stammholz LA (Lärche) B L3a"), {1, 0}, "C62", "102.50", 10250);
    return inv;
}

} // namespace tarvik::test
