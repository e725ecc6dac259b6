#include "invoices/einvoicefile.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "invoices/invoice.h"
#include "parties/parties.h"
#include "store/sql.h"

#include <QDir>
#include <QSqlQuery>

namespace tarvik {
namespace {

einvoice::Seller sellerOf(const parties::OwnData& own)
{
    einvoice::Seller s;
    s.name = own.name.trimmed();
    s.address = {own.street.trimmed(), own.postCode.trimmed(), own.city.trimmed(), own.country};
    s.contactName = own.contact.trimmed().isEmpty() ? s.name : own.contact.trimmed();
    s.phone = own.phone.trimmed();
    s.email = own.email.trimmed();
    s.taxNumber = own.taxNumber.trimmed();
    s.vatId = own.vatId.trimmed();
    s.sellerId = own.sellerId.trimmed();
    s.iban = own.iban.trimmed();
    s.bic = own.bic.trimmed();
    s.bankName = own.bank.trimmed();
    s.regime = own.regime;
    return s;
}

einvoice::Buyer buyerOf(const QSqlDatabase& db, const StoredInvoice& invoice)
{
    // The register's data where kept, the invoice's own address for what it lacks.
    const parties::BuyerData known = parties::loadBuyer(db, invoice.buyer).value_or(parties::BuyerData{});
    const auto [typedPostCode, typedTown] = parties::splitTown(invoice.town);
    const bool knownTown = !known.postCode.isEmpty() || !known.city.isEmpty();
    einvoice::Buyer b;
    b.name = known.name.isEmpty() ? invoice.name : known.name;
    b.address = {known.street.isEmpty() ? invoice.street : known.street, knownTown ? known.postCode : typedPostCode,
                 knownTown ? known.city : typedTown, known.country};
    b.vatId = known.vatId;
    b.reference = known.reference;
    b.email = known.email;
    if (b.name.trimmed().isEmpty())
        b.name = invoice.buyer;
    // The customer number the invoice carries is the buyer's reference where none is kept.
    if (b.reference.trimmed().isEmpty())
        b.reference = invoice.customerInfo;
    return b;
}

} // namespace

std::variant<einvoice::Invoice, QStringList> eInvoiceOf(const QSqlDatabase& db, qint32 number)
{
    const std::optional<StoredInvoice> stored = loadInvoice(db, number);
    if (!stored)
        return QStringList{QStringLiteral("...es die Rechnung %1 nicht gibt.").arg(number)};

    einvoice::Invoice e;
    e.number = QString::number(number);
    e.issueDate = parseGermanDate(stored->date);
    e.deliveryDate = parseGermanDate(stored->deliveryDate);
    e.seller = sellerOf(parties::loadOwnData(db));
    e.buyer = buyerOf(db, *stored);

    QSqlQuery lots = execSql(db, QStringLiteral("SELECT Lose.ID FROM Hiebe, Lose WHERE Kennung = Hiebe.ID AND Lose.ReNr = ? "
                                                "ORDER BY Hieb_Nr, Los_Nr, Lose.ID"),
                             {number});
    Cents net = 0;
    while (lots.next()) {
        const LotBlock block = lotBlock(db, lots.value(0).toInt());
        for (einvoice::Line line : block.items) {
            line.id = QString::number(e.lines.size() + 1);
            e.lines << line;
        }
        net += block.amount;
    }

    QStringList reasons;
    if (e.lines.isEmpty())
        reasons << QStringLiteral("...zur Rechnung %1 keine Lose mit Preisen mehr gehören.").arg(number);
    const PercentHundredths levy = std::max<PercentHundredths>(0, percentHundredths(stored->levy));
    const PercentHundredths vat = std::max<PercentHundredths>(0, percentHundredths(stored->vat));
    const PercentHundredths discount = std::max<PercentHundredths>(0, percentHundredths(stored->discount));
    const InvoiceAmount amount = invoiceAmount(net, levy, vat, discount);
    if (!e.lines.isEmpty() && amount.total != stored->amount)
        reasons << QStringLiteral("...die Lose der Rechnung %1 seit dem Speichern geändert wurden (gespeichert %2, heute %3).")
                       .arg(number)
                       .arg(einvoice::euroText(stored->amount), einvoice::euroText(amount.total));
    if (e.seller.regime == parties::TaxRegime::Small19 && vat > 0)
        reasons << QStringLiteral("...die Rechnung Umsatzsteuer ausweist, die eigenen Angaben aber Kleinunternehmer (§ 19 UStG) nennen.");
    if (discount > 0 && stored->discountDays.isEmpty())
        reasons << QStringLiteral("...bei Skonto die Tage angegeben sein müssen, für die es gilt.");
    if (!reasons.isEmpty())
        return reasons;

    e.vatPercent = e.seller.regime == parties::TaxRegime::Small19 ? 0 : vat;
    if (amount.levy > 0)
        e.levy = einvoice::Allowance{amount.levy, net, levy, QStringLiteral("CMA-Abgabe")};
    e.discountPercent = discount;
    e.discountDays = discount > 0 ? stored->discountDays.toInt() : 0;
    if (discount == 0)
        e.paymentNote = QStringLiteral("Zahlbar ohne Abzug.");
    return einvoice::withTotals(e);
}

bool writeEInvoice(const AppContext& context, qint32 number, const QString& path, einvoice::Profile profile)
{
    const auto built = eInvoiceOf(context.db, number);
    if (const auto* reasons = std::get_if<QStringList>(&built)) {
        context.prompter.inform(QStringLiteral("Die E-Rechnung kann nicht geschrieben werden, weil...\n") + reasons->join(u'\n'));
        return false;
    }
    const einvoice::Invoice& invoice = std::get<einvoice::Invoice>(built);
    const QStringList missing = einvoice::missingFields(invoice, profile);
    if (!missing.isEmpty()) {
        context.prompter.inform(einvoice::missingFieldsMessage(missing));
        return false;
    }
    const QString error = einvoice::writeCiiFile(invoice, profile, path);
    if (!error.isEmpty()) {
        context.prompter.inform(error, Prompter::Icon::Warning);
        return false;
    }
    return true;
}

QString eInvoiceProposal(const QString& dataFolder, qint32 number)
{
    return QDir(dataFolder).filePath(QStringLiteral("Rechnung_%1.xml").arg(number));
}

} // namespace tarvik
