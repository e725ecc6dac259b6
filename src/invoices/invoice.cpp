#include "invoices/invoice.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/text.h"
#include "common/textfile.h"
#include "parties/parties.h"
#include "reports/columns.h"
#include "store/sql.h"
#include "store/textwidth.h"
#include "store/totals.h"

#include <QDir>
#include <QRegularExpression>
#include <QSet>
#include <QSqlQuery>
#include <QSqlRecord>
#include <functional>
#include <limits>

namespace tarvik {
namespace {

using namespace columns;

constexpr int LineWidth = 61;

QString field(const QSqlRecord& r, const char* name) { return readText(r.value(QString::fromUtf8(name))); }
float floatField(const QSqlRecord& r, const char* name) { return float(readNumber(r.value(QString::fromUtf8(name)))); }

// A label on the left, the amount in euros flush with the right edge of the lot tables.
QString amountLine(const QString& label, Cents value)
{
    return label.leftJustified(LineWidth - 17, u' ') + right(centsText(value) + QStringLiteral(" €"), 17);
}

QString percentText(PercentHundredths value) { return centsText(value) + QStringLiteral(" %"); }

StoredInvoice storedFrom(const QSqlRecord& r)
{
    StoredInvoice s;
    s.buyer = field(r, "Abnehmer");
    s.name = field(r, "Vor_Nachname");
    s.street = field(r, "Strasse");
    s.town = field(r, "Wohnort");
    s.customerInfo = field(r, "Kundeninfo");
    s.date = germanDateFromSql(r.value(QStringLiteral("Datum")));
    s.text = r.value(QStringLiteral("Inhalt")).toString();
    s.number = toLong(readNumber(r.value(QStringLiteral("ReNr"))));
    s.levy = floatField(r, "CMA_Abgabe_Proz");
    s.vat = floatField(r, "MwSt_Proz");
    s.discount = floatField(r, "Skonto_Proz");
    s.amount = centsOf(r.value(QStringLiteral("Betrag")));
    return s;
}

// The date of supply and the discount days kept beside the invoice's row.
void readDetails(const QSqlDatabase& db, StoredInvoice& s)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT Leistungsdatum, Skonto_Tage FROM Rechnungsangaben WHERE ReNr = ? ORDER BY ID LIMIT 1"),
                          {s.number});
    if (q.next()) {
        s.deliveryDate = germanDateFromSql(q.value(0));
        s.discountDays = q.value(1).isNull() ? QString() : QString::number(toLong(readNumber(q.value(1))));
    }
    if (s.deliveryDate.isEmpty())
        s.deliveryDate = s.date;
}

std::optional<StoredInvoice> firstInvoice(const QSqlDatabase& db, QSqlQuery q)
{
    if (!q.next())
        return std::nullopt;
    StoredInvoice s = storedFrom(q.record());
    readDetails(db, s);
    return s;
}

// "Hieb 7, Los 1 / Fichte lang": where a line's wood lies, for the e-invoice's line description.
QString lotPlace(const QSqlDatabase& db, const QSqlRecord& lot)
{
    const QString hiebNr = text(scalar(db, QStringLiteral("SELECT Hieb_Nr FROM Hiebe WHERE ID = ?"), {lot.value(QStringLiteral("Kennung"))}));
    QString place = QStringLiteral("Hieb %1, Los %2").arg(hiebNr, field(lot, "Los_Nr"));
    if (!field(lot, "Los_Bezeichnung").isEmpty())
        place += QStringLiteral(" / ") + field(lot, "Los_Bezeichnung");
    return place;
}

// The quantity of a value as it is printed with the given decimals: 2,921 Efm is {2921, 3}.
einvoice::Quantity quantityOf(double value, int decimals)
{
    einvoice::Quantity q{0, decimals};
    const QString printed = formatDecimal(value, decimals);
    for (QChar c : printed)
        if (c.isDigit())
            q.value = q.value * 10 + c.digitValue();
    if (printed.startsWith(u'-'))
        q.value = -q.value;
    return q;
}

einvoice::Line item(const QString& name, const QString& description, einvoice::Quantity quantity, QString unit, Cents net)
{
    if (quantity.value == 0) {
        // Nothing measured to count by: the line is one flat amount.
        quantity = {1, 0};
        unit = QStringLiteral("C62");
    }
    return {QString(), name.simplified(), description, quantity, unit, einvoice::unitPriceText(net, quantity), net};
}

void logBlock(const QSqlDatabase& db, const QSqlRecord& lot, LotBlock& block)
{
    const QString place = lotPlace(db, lot);
    const QVariant harvest = lot.value(QStringLiteral("Kennung"));
    const QVariant lotNr = lot.value(QStringLiteral("Los_Nr"));
    block.lines << QStringLiteral("Stammholz  Los: ") + field(lot, "Los_Nr") + QStringLiteral(" / ") + field(lot, "Los_Bezeichnung");
    block.lines << QStringLiteral("BAUMART               GÜTE KLASSE ANZ  EFM_OR  PR/EFM    PREIS");
    QSqlQuery q = execSql(db, QStringLiteral("SELECT COUNT(*), Baumart, Güteklasse, Stärkeklasse, sum(Efm_oR), sum(Preis_berechnet) "
                                             "FROM Stämme WHERE Kennung = ? AND Los_Nr = ? "
                                             "GROUP BY Baumart, Güteklasse, Stärkeklasse ORDER BY Baumart, Güteklasse, Stärkeklasse"),
                          {harvest, lotNr});
    while (q.next()) {
        const double efm = readNumber(q.value(4));
        const Cents price = centsOf(q.value(5));
        const QString perEfm = efm != 0 ? formatDecimal(centsValue(price) / efm, 2) : QStringLiteral("0,00");
        block.lines << left(text(q.value(1)), 21) + u' ' + left(text(q.value(2)), 4) + u' ' + left(text(q.value(3)), 6) +
                           right(text(q.value(0)), 4) + right(formatDecimal(efm, 3), 8) + right(perEfm, 8) + right(centsText(price), 9);
        block.amount += price;
        block.items << item(QStringLiteral("Stammholz %1 %2 %3").arg(text(q.value(1)), text(q.value(2)), text(q.value(3))),
                            QStringLiteral("%1, %2 Stämme").arg(place, text(q.value(0))), quantityOf(efm, 3),
                            QStringLiteral("MTQ"), price);
    }
}

// A pole or stacked-wood lot: its heading, the column caption, then one line per row, each
// ending in the row's price (the statement's sixth column), which the block's amount sums.
// What a row of a pole or stacked-wood lot is as an e-invoice line: its name, quantity and unit.
struct RowItem {
    QString name;
    einvoice::Quantity quantity;
    QString unit;
};

void rowsBlock(const QSqlDatabase& db, const QSqlRecord& lot, LotBlock& block, const QString& kind, const QString& caption,
               const QString& sql, const std::function<QString(const QSqlQuery&)>& line,
               const std::function<RowItem(const QSqlQuery&)>& rowItem)
{
    const QString place = lotPlace(db, lot);
    block.lines << kind + QStringLiteral("  Los: ") + field(lot, "Los_Nr") + QStringLiteral(" / ") + field(lot, "Los_Bezeichnung");
    block.lines << caption;
    QSqlQuery q = execSql(db, sql, {lot.value(QStringLiteral("Kennung")), lot.value(QStringLiteral("Los_Nr"))});
    while (q.next()) {
        const Cents price = centsOf(q.value(5));
        block.lines << line(q) + right(centsText(price), 9);
        block.amount += price;
        const RowItem r = rowItem(q);
        block.items << item(r.name, place, r.quantity, r.unit, price);
    }
}

void poleBlock(const QSqlDatabase& db, const QSqlRecord& lot, LotBlock& block)
{
    rowsBlock(db, lot, block, QStringLiteral("Pfähle"), QStringLiteral("BAUMART               ANZAHL  LÄNGE  KLASSE  PR/STÜCK    PREIS"),
              QStringLiteral("SELECT Baumart, Anzahl, Länge_m, Stärkeklasse, Preis_je_Stück, Preis_berechnet FROM Pfähle "
                             "WHERE Kennung = ? AND Los_Nr = ? ORDER BY Stärkeklasse ASC, Anzahl DESC, ID"),
              [](const QSqlQuery& q) {
                  return left(text(q.value(0)), 21) + u' ' + right(text(q.value(1)), 6) + right(decimals(q.value(2), 2), 7) +
                         QStringLiteral("  ") + left(text(q.value(3)), 6) + right(decimals(q.value(4), 2), 10);
              },
              [](const QSqlQuery& q) {
                  return RowItem{QStringLiteral("Pfähle %1 %2, %3 m").arg(text(q.value(0)), text(q.value(3)), decimals(q.value(2), 2)),
                                 {qint64(readNumber(q.value(1))), 0}, QStringLiteral("H87")};
              });
}

void stackBlock(const QSqlDatabase& db, const QSqlRecord& lot, LotBlock& block)
{
    rowsBlock(db, lot, block, QStringLiteral("Schichtholz"), QStringLiteral("BAUMART               SEK-NR  KLASSE    STER  PR/STER    PREIS"),
              QStringLiteral("SELECT Baumart, Sektions_Nr, Stärkeklasse, m3, Preis_je_Ster, Preis_berechnet FROM Schichtholz "
                             "WHERE Kennung = ? AND Los_Nr = ? ORDER BY Stärkeklasse ASC, m3 DESC, ID"),
              [](const QSqlQuery& q) {
                  return left(text(q.value(0)), 21) + u' ' + right(text(q.value(1)), 6) + QStringLiteral("  ") + left(text(q.value(2)), 6) +
                         right(decimals(q.value(3), 2), 8) + right(decimals(q.value(4), 2), 9);
              },
              [](const QSqlQuery& q) {
                  return RowItem{QStringLiteral("Schichtholz %1 %2, Sektion %3").arg(text(q.value(0)), text(q.value(2)), text(q.value(1))),
                                 quantityOf(readNumber(q.value(3)), 2), QStringLiteral("MTQ")};
              });
}

} // namespace

InvoiceCaptions InvoiceCaptions::from(const Einstellungen& settings)
{
    InvoiceCaptions c;
    QString* wording[] = {&c.customer, &c.date, &c.number};
    for (int i = 0; i < 3; ++i) {
        const QString chosen = settings.text[size_t(FirstCaptionSlot + i)].trimmed();
        if (!chosen.isEmpty())
            *wording[i] = chosen;
    }
    return c;
}

PercentHundredths invoicePercent(const QString& text) { return std::max<PercentHundredths>(0, percentHundredths(readNumber(text))); }

InvoiceAmount invoiceAmount(Cents net, PercentHundredths levy, PercentHundredths vat, PercentHundredths discount)
{
    InvoiceAmount a;
    a.net = net;
    a.levy = percentOf(net, std::max<PercentHundredths>(0, levy));
    // The VAT is taken from the net before the levy.
    a.vat = percentOf(net, std::max<PercentHundredths>(0, vat));
    a.gross = net - a.levy + a.vat;
    a.discount = percentOf(a.gross, std::max<PercentHundredths>(0, discount));
    a.total = a.gross - a.discount;
    return a;
}

std::optional<int> discountDays(const InvoiceInput& input)
{
    const QString typed = input.discountDays.trimmed();
    bool ok = false;
    const int days = typed.toInt(&ok);
    if (!ok || days < 0 || days > 365)
        return std::nullopt;
    return days;
}

std::optional<std::array<QString, 6>> ownSenderLines(const QSqlDatabase& db)
{
    const parties::OwnData own = parties::loadOwnData(db);
    if (own.name.trimmed().isEmpty())
        return std::nullopt;
    return std::array<QString, 6>{own.name.trimmed(), own.street.trimmed(), (own.postCode.trimmed() + u' ' + own.city.trimmed()).trimmed(),
                                  own.phone.trimmed().isEmpty() ? QString() : QStringLiteral("Tel. ") + own.phone.trimmed(),
                                  own.email.trimmed(), QString()};
}

InvoiceInput newInvoiceInput(const AppContext& context)
{
    InvoiceInput input;
    loadRemembered(context.dataFolder, input);
    if (const auto sender = ownSenderLines(context.db))
        input.sender = *sender;
    input.number = QString::number(proposedInvoiceNumber(context.db, context.clock.today()));
    input.date = formatGermanDate(context.clock.today());
    return input;
}

bool applyBuyerDetails(const QSqlDatabase& db, const QString& buyer, InvoiceInput& input)
{
    const auto details = buyerDetails(db, buyer.trimmed());
    if (!details) {
        // No invoice yet: the register's address, as far as it is known.
        const auto known = parties::loadBuyer(db, buyer);
        if (!known)
            return false;
        input.name = known->name;
        input.street = known->street;
        input.town = (known->postCode + u' ' + known->city).trimmed();
        return true;
    }
    input.name = details->name;
    input.street = details->street;
    input.town = details->town;
    input.customerInfo = details->customerInfo;
    input.levy = formatDecimal(details->levy, 2);
    input.vat = formatDecimal(details->vat, 2);
    input.discount = formatDecimal(details->discount, 2);
    input.discountDays = details->discountDays;
    return true;
}

LotChoice lotsForInvoice(const QSqlDatabase& db, qint32 harvestId, const QList<qint32>& lotNumbers)
{
    LotChoice choice;
    const QString hiebNr = text(scalar(db, QStringLiteral("SELECT Hieb_Nr FROM Hiebe WHERE ID = ?"), {harvestId}));
    for (qint32 lotNr : lotNumbers) {
        QSqlQuery q = execSql(db, QStringLiteral("SELECT ID, ReNr FROM Lose WHERE Kennung = ? AND Los_Nr = ?"), {harvestId, lotNr});
        if (!q.next())
            choice.reasons << QStringLiteral("...es das Los %1 beim Hieb %2 nicht gibt.").arg(lotNr).arg(hiebNr);
        else if (readNumber(q.value(1)) >= 1)
            choice.reasons << QStringLiteral("...das Los %1 des Hiebs %2 bereits in Rechnung %3 abgerechnet ist.")
                                  .arg(lotNr).arg(hiebNr).arg(toLong(readNumber(q.value(1))));
    }
    if (!choice.reasons.isEmpty())
        return choice;
    // In the order the window's lot list shows them, whatever order they were named in.
    for (const OpenLot& lot : openLots(db))
        if (lot.harvestId == harvestId && lotNumbers.contains(qint32(readNumber(lot.losNr))))
            choice.lotIds << lot.lotId;
    return choice;
}

std::optional<qint32> invoiceNumber(const QString& typed)
{
    const QString digits = typed.trimmed();
    if (digits.isEmpty() || digits.size() > 10)
        return std::nullopt;
    for (QChar c : digits)
        if (c < u'0' || c > u'9')
            return std::nullopt;
    const qint64 number = digits.toLongLong();
    if (number > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return qint32(number);
}

qint32 proposedInvoiceNumber(const QSqlDatabase& db, const QDate& today)
{
    const QVariant highest = scalar(db, QStringLiteral("SELECT ReNr FROM Rechnungen WHERE ReNr > 0 ORDER BY ReNr DESC LIMIT 1"));
    if (highest.isValid())
        return toLong(readNumber(highest) + 1);
    return today.year() * 10000 + 1;
}

std::optional<BuyerDetails> buyerDetails(const QSqlDatabase& db, const QString& buyer)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM Rechnungen WHERE Abnehmer = ? ORDER BY Datum DESC, ID DESC LIMIT 1"), {buyer});
    if (!q.next())
        return std::nullopt;
    const QSqlRecord r = q.record();
    const QVariant days = scalar(db, QStringLiteral("SELECT Skonto_Tage FROM Rechnungsangaben WHERE ReNr = ? ORDER BY ID LIMIT 1"),
                                 {r.value(QStringLiteral("ReNr"))});
    return BuyerDetails{field(r, "Vor_Nachname"), field(r, "Strasse"), field(r, "Wohnort"), field(r, "Kundeninfo"),
                        days.isNull() || !days.isValid() ? QString() : QString::number(toLong(readNumber(days))),
                        floatField(r, "CMA_Abgabe_Proz"), floatField(r, "MwSt_Proz"), floatField(r, "Skonto_Proz")};
}

QList<OpenLot> openLots(const QSqlDatabase& db)
{
    QList<OpenLot> lots;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT Hieb_Nr, Los_Nr, ReNr, Los_Bezeichnung, Sortierung, Abgerechnet, Abnehmer, Preis_Art, "
                                             "Hiebe.ID, Lose.ID FROM Hiebe, Lose WHERE Kennung = Hiebe.ID AND (ReNr < 1 OR ReNr IS NULL) "
                                             "ORDER BY Hieb_Nr, Los_Nr, Lose.ID"));
    while (q.next())
        lots << OpenLot{text(q.value(0)), text(q.value(1)), text(q.value(2)), text(q.value(3)), text(q.value(4)),
                        text(q.value(5)), text(q.value(6)), text(q.value(7)), q.value(8).toInt(), q.value(9).toInt()};
    return lots;
}

QStringList invoiceBuyers(const QSqlDatabase& db) { return parties::buyerNames(db); }

QList<qint32> invoiceNumbers(const QSqlDatabase& db)
{
    QList<qint32> numbers;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT DISTINCT ReNr FROM Rechnungen ORDER BY ReNr DESC"));
    while (q.next())
        numbers << q.value(0).toInt();
    return numbers;
}

std::optional<StoredInvoice> loadInvoice(const QSqlDatabase& db, qint32 number)
{
    return firstInvoice(db, execSql(db, QStringLiteral("SELECT * FROM Rechnungen WHERE ReNr = ? ORDER BY ID LIMIT 1"), {number}));
}

std::optional<StoredInvoice> loadInvoiceById(const QSqlDatabase& db, qint32 id)
{
    return firstInvoice(db, execSql(db, QStringLiteral("SELECT * FROM Rechnungen WHERE ID = ?"), {id}));
}

LotBlock lotBlock(const QSqlDatabase& db, qint32 lotId)
{
    LotBlock block;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM Lose WHERE ID = ?"), {lotId});
    if (!q.next())
        return block;
    const QSqlRecord lot = q.record();
    const QString sorting = field(lot, "Sortierung");
    if (sorting == u"Stämme" && toLong(readNumber(lot.value(QStringLiteral("Preis_Art")))) == 3) {
        block.lines << QStringLiteral("Los: ") + field(lot, "Los_Nr") + QStringLiteral(" / ") + field(lot, "Los_Bezeichnung") +
                           QStringLiteral("   Efm(oR): ") + decimals(lot.value(QStringLiteral("Efm_oR")), 3);
        block.lines << QStringLiteral("Dieses Los wird per vereinbartem Pauschalpreis abgerechnet.");
        block.amount = centsOf(lot.value(QStringLiteral("Pauschalpreis_G")));
        block.items << item(QStringLiteral("Stammholz zum vereinbarten Pauschalpreis"),
                            lotPlace(db, lot) + QStringLiteral(", Efm(oR): ") + decimals(lot.value(QStringLiteral("Efm_oR")), 3), {1, 0},
                            QStringLiteral("C62"), block.amount);
        block.lines << amountLine(QStringLiteral("Pauschalpreis:"), block.amount);
    } else if (sorting == u"Stämme") {
        logBlock(db, lot, block);
    } else if (sorting == u"Pfähle") {
        poleBlock(db, lot, block);
    } else if (sorting == u"Schichtholz") {
        stackBlock(db, lot, block);
    } else {
        block.lines << QStringLiteral("Los: ") + field(lot, "Los_Nr") + QStringLiteral(" / ") + field(lot, "Los_Bezeichnung");
    }
    return block;
}

QString amountCaption(Cents amount) { return QStringLiteral("Rechnungsbetrag: ") + centsText(amount); }

InvoicePreview invoicePreview(const QSqlDatabase& db, const InvoiceInput& input, const InvoiceCaptions& captions)
{
    InvoicePreview preview;
    QStringList blocks;
    Cents net = 0;
    bool anyLot = false;
    for (qint32 id : input.lotIds) {
        const LotBlock block = lotBlock(db, id);
        if (block.lines.isEmpty())
            continue;
        anyLot = true;
        blocks << QString() << block.lines;
        net += block.amount;
    }
    const PercentHundredths levyPercent = invoicePercent(input.levy);
    const PercentHundredths vatPercent = invoicePercent(input.vat);
    const PercentHundredths discountPercent = invoicePercent(input.discount);
    preview.amount = invoiceAmount(net, levyPercent, vatPercent, discountPercent);
    if (!anyLot)
        return preview;

    // What a complete invoice names besides the address: the seller's tax number or VAT id,
    // the buyer's VAT id where known, the date of supply and the seller's tax regime.
    const parties::OwnData own = parties::loadOwnData(db);
    const std::optional<parties::BuyerData> buyer = parties::loadBuyer(db, input.buyer);
    QStringList lines;
    for (const QString& line : input.sender)
        if (!line.trimmed().isEmpty())
            lines << line.trimmed();
    if (!own.taxNumber.trimmed().isEmpty())
        lines << QStringLiteral("Steuernummer: ") + own.taxNumber.trimmed();
    if (!own.vatId.trimmed().isEmpty())
        lines << QStringLiteral("USt-IdNr.: ") + own.vatId.trimmed();
    lines << QString();
    for (const QString& line : {input.name, input.street, input.town})
        if (!line.trimmed().isEmpty())
            lines << line.trimmed();
    if (buyer && !buyer->vatId.isEmpty())
        lines << QStringLiteral("USt-IdNr.: ") + buyer->vatId;
    lines << QString();
    const QString deliveryCaption = QStringLiteral("Leistungsdatum");
    const int labelWidth = std::max({captions.customer.size(), captions.date.size(), captions.number.size(), deliveryCaption.size()}) + 2;
    if (!input.customerInfo.trimmed().isEmpty())
        lines << (captions.customer + u':').leftJustified(labelWidth, u' ') + input.customerInfo.trimmed();
    lines << (captions.date + u':').leftJustified(labelWidth, u' ') + input.date.trimmed();
    const QString delivery = input.deliveryDate.trimmed().isEmpty() ? input.date.trimmed() : input.deliveryDate.trimmed();
    lines << (deliveryCaption + u':').leftJustified(labelWidth, u' ') + delivery;
    // The number as it is stored: typed digits with leading zeros or blanks print without them.
    const std::optional<qint32> number = invoiceNumber(input.number);
    lines << (captions.number + u':').leftJustified(labelWidth, u' ') + (number ? QString::number(*number) : input.number.trimmed());
    lines << QString() << QStringLiteral("RECHNUNG") << QStringLiteral("========");
    lines << blocks;

    const InvoiceAmount& a = preview.amount;
    lines << QString() << QString(LineWidth, u'-');
    lines << amountLine(QStringLiteral("Summe netto:"), a.net);
    lines << amountLine(QStringLiteral("CMA-Abgabe  - ") + percentText(levyPercent), a.levy);
    lines << amountLine(QStringLiteral("Umsatzsteuer  + ") + percentText(vatPercent), a.vat);
    if (discountPercent > 0) {
        lines << amountLine(QStringLiteral("Bruttobetrag:"), a.gross);
        lines << amountLine(QStringLiteral("Skonto  - ") + percentText(discountPercent), a.discount);
    }
    lines << QString(LineWidth, u'=');
    lines << amountLine(QStringLiteral("Rechnungsbetrag:"), a.total);
    if (!parties::regimeNote(own.regime).isEmpty())
        lines << QString() << parties::regimeNote(own.regime);
    if (discountPercent > 0 && !input.discountNote.trimmed().isEmpty())
        lines << QString() << input.discountNote.trimmed();
    if (!input.closing.trimmed().isEmpty())
        lines << QString() << input.closing.trimmed();
    preview.text = lines.join(u'\n');
    return preview;
}

QStringList invoiceRefusals(const QSqlDatabase& db, const InvoiceInput& input, const QString& previewText)
{
    QStringList reasons;
    if (input.name.trimmed().isEmpty() && input.street.trimmed().isEmpty() && input.town.trimmed().isEmpty())
        reasons << QStringLiteral("...Bei der Anschrift (Name, Straße, Wohnort) mindestens in einem Feld etwas eingetragen werden muss.");
    if (!parseGermanDate(input.date.trimmed()).isValid())
        reasons << QStringLiteral("...das Datum nicht korrekt ist.");
    const std::optional<qint32> number = invoiceNumber(input.number);
    const QString typedNumber = input.number.trimmed();
    if (!number && !typedNumber.isEmpty() && typedNumber != u"0" && !typedNumber.startsWith(u'-'))
        reasons << QStringLiteral("...die Rechnungsnummer nur aus Ziffern bestehen darf (höchstens 2147483647).");
    else if (!number || *number <= 0)
        reasons << QStringLiteral("...die Rechnungsnummer größer 0 sein muss.");
    else if (scalar(db, QStringLiteral("SELECT ReNr FROM Rechnungen WHERE ReNr = ?"), {*number}).isValid())
        reasons << QStringLiteral("...die Rechnungsnummer bereits vergeben ist.");
    if (previewText.trimmed().isEmpty())
        reasons << QStringLiteral("...mindestens ein Los für die Rechnung ausgewählt werden muss.");
    if (!input.deliveryDate.trimmed().isEmpty() && !parseGermanDate(input.deliveryDate.trimmed()).isValid())
        reasons << QStringLiteral("...das Leistungsdatum nicht korrekt ist.");
    if (!input.discountDays.trimmed().isEmpty() && !discountDays(input))
        reasons << QStringLiteral("...die Skonto-Tage eine ganze Zahl von 0 bis 365 sein müssen.");
    if (parties::loadOwnData(db).regime == parties::TaxRegime::Small19 && invoicePercent(input.vat) > 0)
        reasons << QStringLiteral("...als Kleinunternehmer (§ 19 UStG) keine Umsatzsteuer berechnet werden darf.");
    // The texts as storeInvoice stores them; the buyer goes into the lots too, as wide there.
    reasons << widthReasons(QStringLiteral("Rechnungen"),
                            {{QStringLiteral("Abnehmer"), input.buyer.trimmed(), QStringLiteral("der Abnehmer")},
                             {QStringLiteral("Vor_Nachname"), input.name.trimmed(), QStringLiteral("der Name")},
                             {QStringLiteral("Strasse"), input.street.trimmed(), QStringLiteral("die Straße")},
                             {QStringLiteral("Wohnort"), input.town.trimmed(), QStringLiteral("der Wohnort")},
                             {QStringLiteral("Kundeninfo"), input.customerInfo.trimmed(), QStringLiteral("die Kunden-Nr.")}});
    return reasons;
}

std::optional<qint32> storeInvoice(const AppContext& context, const InvoiceInput& input)
{
    const InvoicePreview preview = invoicePreview(context.db, input, InvoiceCaptions::from(context.settings));
    const QStringList reasons = invoiceRefusals(context.db, input, preview.text);
    if (!reasons.isEmpty()) {
        context.prompter.inform(QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n") + reasons.join(u'\n'));
        return std::nullopt;
    }
    const qint32 number = *invoiceNumber(input.number);
    const QString buyer = input.buyer.trimmed();
    {
        TransactionGuard guard(context.db);
        execSql(context.db,
                QStringLiteral("INSERT INTO Rechnungen(Abnehmer, Vor_Nachname, Strasse, Wohnort, Kundeninfo, ReNr, CMA_Abgabe_Proz, "
                               "MwSt_Proz, Skonto_Proz, Datum, Inhalt, Betrag) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                {buyer, input.name.trimmed(), input.street.trimmed(), input.town.trimmed(), input.customerInfo.trimmed(), number,
                 centsValue(invoicePercent(input.levy)), centsValue(invoicePercent(input.vat)), centsValue(invoicePercent(input.discount)),
                 sqlDateValue(input.date.trimmed()), preview.text, centsValue(preview.amount.total)});
        const QString delivery = input.deliveryDate.trimmed().isEmpty() ? input.date.trimmed() : input.deliveryDate.trimmed();
        execSql(context.db, QStringLiteral("INSERT INTO Rechnungsangaben(ReNr, Leistungsdatum, Skonto_Tage) VALUES (?, ?, ?)"),
                {number, sqlDateValue(delivery), discountDays(input) ? QVariant(*discountDays(input)) : QVariant()});
        // A buyer typed for the first time joins the register with the address as typed.
        if (!buyer.isEmpty() && !parties::loadBuyer(context.db, buyer)) {
            const auto [postCode, town] = parties::splitTown(input.town);
            execSql(context.db, QStringLiteral("INSERT INTO Abnehmerdaten(Kurzname, Name, Strasse, PLZ, Ort, Land) VALUES (?, ?, ?, ?, ?, 'DE')"),
                    {buyer, input.name.trimmed(), input.street.trimmed(), postCode, town});
        }
        QSet<qint32> harvests;
        for (qint32 id : input.lotIds) {
            const QVariant harvest = scalar(context.db, QStringLiteral("SELECT Kennung FROM Lose WHERE ID = ?"), {id});
            if (!harvest.isValid())
                continue; // removed meanwhile: nothing to mark
            if (buyer.isEmpty())
                execSql(context.db, QStringLiteral("UPDATE Lose SET ReNr = ? WHERE ID = ?"), {number, id});
            else
                execSql(context.db, QStringLiteral("UPDATE Lose SET ReNr = ?, Abnehmer = ? WHERE ID = ?"), {number, buyer, id});
            harvests.insert(harvest.toInt());
        }
        for (qint32 harvest : std::as_const(harvests))
            recomputeSaleState(context.db, harvest);
        guard.commit();
    }
    // Only a stored invoice carries its texts over to the next one.
    const TextFileResult written = writeTextFile(QDir(context.dataFolder).filePath(QString::fromUtf8(RememberedInvoiceFile)), rememberedLines(input));
    if (!written.ok)
        context.prompter.inform(written.error, Prompter::Icon::Warning);
    return number;
}

QStringList rememberedLines(const InvoiceInput& input)
{
    QStringList lines{input.levy, input.vat, input.discount};
    for (const QString& line : input.sender)
        lines << line;
    lines << input.discountNote << input.closing;
    // One field per line: a line break typed into a field must not shift the others.
    for (QString& line : lines)
        line.replace(QRegularExpression(QStringLiteral("[\r\n]+")), QStringLiteral(" "));
    return lines;
}

bool loadRemembered(const QString& dataFolder, InvoiceInput& input)
{
    const TextFileResult read = readTextFile(QDir(dataFolder).filePath(QString::fromUtf8(RememberedInvoiceFile)));
    if (!read.ok)
        return false;
    const QStringList& l = read.lines;
    input.levy = l.value(0);
    input.vat = l.value(1);
    input.discount = l.value(2);
    for (int i = 0; i < 6; ++i)
        input.sender[size_t(i)] = l.value(3 + i);
    input.discountNote = l.value(9);
    input.closing = l.value(10);
    return true;
}

QStringList invoiceLines(const QString& text)
{
    QStringList lines = text.split(QRegularExpression(QStringLiteral("\r\n|\n|\r")));
    while (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

} // namespace tarvik
