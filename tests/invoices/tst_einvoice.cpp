// E-invoices written and read: files the official XRechnung and EN 16931 rules accept, totals
// by the worked examples, the unit price, refusals that name what is missing; the official
// examples in CII and UBL, the writer's own files read back field by field, a hybrid PDF made
// with qpdf, the messages for files that hold no invoice, and the text for the output window.
#include "invoices/einvoice/ciiwriter.h"
#include "invoices/einvoice/pdfreader.h"
#include "invoices/einvoicecases.h"
#include "invoices/einvoicecheck.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarvik;
using namespace tarvik::einvoice;

Q_DECLARE_METATYPE(tarvik::einvoice::Invoice)
using Change = std::function<void(tarvik::einvoice::Invoice&)>;
Q_DECLARE_METATYPE(Change)

namespace {

QString example(const char* name) { return QStringLiteral(EINVOICE_CHECKS "/examples/") + QString::fromLatin1(name); }

void writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// qpdf makes a PDF (no pages needed) with the given attachments.
bool makePdf(const QString& path, const QList<QPair<QString, QString>>& attachments)
{
    QStringList args{QStringLiteral("--empty")};
    for (const auto& [file, key] : attachments)
        args << QStringLiteral("--add-attachment") << file << QStringLiteral("--key=") + key << QStringLiteral("--mimetype=text/xml") << QStringLiteral("--");
    args << path;
    QProcess qpdf;
    qpdf.start(QStringLiteral("qpdf"), args);
    return qpdf.waitForFinished(30000) && qpdf.exitCode() == 0;
}

// Every field an own invoice carries, as text, so that a comparison names the first that differs.
QStringList fieldsOf(const Invoice& i)
{
    const Seller& s = i.seller;
    const Buyer& b = i.buyer;
    QStringList f{i.number, i.issueDate.toString(Qt::ISODate), i.deliveryDate.toString(Qt::ISODate), i.currency, i.note,
                  s.name, s.address.street, s.address.postCode, s.address.city, s.address.country, s.contactName, s.phone, s.email,
                  s.taxNumber, s.vatId, s.sellerId, s.iban, s.bic, QString::number(int(s.regime)),
                  b.name, b.address.street, b.address.postCode, b.address.city, b.vatId, b.reference, b.email,
                  QString::number(i.vatPercent), QString::number(i.discountPercent), QString::number(i.discountDays), i.paymentNote,
                  i.paymentMeansCode};
    if (i.levy)
        f << QStringLiteral("Abgabe %1 %2 %3 %4").arg(i.levy->amount).arg(i.levy->base).arg(i.levy->percent).arg(i.levy->reason);
    for (const Line& l : i.lines)
        f << QStringList{l.id, l.name, l.description, QString::number(l.quantity.value), QString::number(l.quantity.decimals),
                         l.unitCode, l.netPrice, QString::number(l.net), l.vatCategory}
                 .join(u'|');
    return f;
}

QList<Cents> totalsOf(const Invoice& i) { return {i.lineTotal, i.allowanceTotal, i.taxBasis, i.vatTotal, i.grandTotal, i.duePayable}; }

} // namespace

class TestEInvoice : public QObject {
    Q_OBJECT

private slots:
    // Each file passes the official check and reads back field by field.
    void validatorAcceptsTheFiles_data()
    {
        QTest::addColumn<Invoice>("invoice");
        QTest::addColumn<bool>("xrechnung");
        QTest::addColumn<Cents>("vat");
        QTest::addColumn<Cents>("due");
        QTest::addColumn<QString>("agreed"); // a text the file must carry as agreed
        QTest::newRow("§ 24 at 5,5 %") << test::flatRate24() << true << Cents(5500) << Cents(105500) << "§ 24";
        QTest::newRow("§ 19 with levy") << test::smallBusiness19() << true << Cents(0) << Cents(49000) << "§ 19";
        QTest::newRow("flat, poles, stacked wood") << test::mixedLots() << true << Cents(40803) << Cents(255553) << "";
        QTest::newRow("levy and cash discount") << test::levyAndDiscount() << true << Cents(19000) << Cents(117000)
                                                << "<ram:Description>#SKONTO#TAGE=14#PROZENT=2.00#\n2 % Skonto bei Zahlung bis 29.11.2026.";
        QTest::newRow("half a cent") << test::halfCent() << true << Cents(1948) << Cents(12198) << "";
        QTest::newRow("plain EN 16931") << test::halfCent() << false << Cents(1948) << Cents(12198) << "";
    }
    void validatorAcceptsTheFiles()
    {
        QFETCH(Invoice, invoice);
        QFETCH(bool, xrechnung);
        QFETCH(Cents, vat);
        QFETCH(Cents, due);
        const Profile profile = xrechnung ? Profile::XRechnung : Profile::EN16931;
        if (!xrechnung) { // what only XRechnung asks for is left out
            invoice.buyer.reference.clear();
            invoice.buyer.email.clear();
            invoice.seller.contactName.clear();
        }
        const Invoice totals = withTotals(invoice);
        QCOMPARE(totals.vatTotal, vat);
        QCOMPARE(totals.duePayable, due);

        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("rechnung.xml"));
        QCOMPARE(writeCiiFile(invoice, profile, path), QString());
        const auto check = test::checkEInvoice(path, xrechnung);
        QVERIFY2(check, "the e-invoice rule files are not beside the repository");
        QVERIFY2(check->clean(), qPrintable(check->report));
        QFETCH(QString, agreed);
        QFile written(path);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QVERIFY2(QString::fromUtf8(written.readAll()).contains(agreed), qPrintable(agreed));

        // Read back, the file is the invoice it was written from.
        const ReadResult read = readInvoiceFile(path);
        QVERIFY2(read.invoice, qPrintable(read.error));
        QCOMPARE(read.syntax, QStringLiteral("CII"));
        QCOMPARE(fieldsOf(*read.invoice), fieldsOf(invoice));
        QVERIFY(read.invoice->otherAllowances.isEmpty());
        QCOMPARE(read.invoice->readBreakdown, vatBreakdown(invoice));
        QCOMPARE(totalsOf(*read.invoice), totalsOf(totals));
    }

    void unitPrice_data()
    {
        QTest::addColumn<Cents>("net");
        QTest::addColumn<qint64>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("price");
        // 2,921 × 35,07 = 102,439 is a cent off; 2,921 × 35,074 = 102,451 is within half a cent.
        QTest::newRow("three decimals") << Cents(10245) << qint64(2921) << 3 << "35.074";
        QTest::newRow("a third") << Cents(10000) << qint64(3) << 0 << "33.333";
        QTest::newRow("tiny price") << Cents(1) << qint64(999999) << 3 << "0.00001";
        // 1,00 € for 7,777: 0,13 gives 1,01 and 0,129 gives 1,0032.
        QTest::newRow("rounding") << Cents(100) << qint64(7777) << 3 << "0.129";
    }
    void unitPrice()
    {
        QFETCH(Cents, net);
        QFETCH(qint64, value);
        QFETCH(int, decimals);
        QFETCH(QString, price);
        QCOMPARE(unitPriceText(net, {value, decimals}), price);
    }

    void refusalNamesWhatIsMissing_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<bool>("xrechnung");
        QTest::addColumn<QString>("message");
        QTest::newRow("tax number only")
            << Change([](Invoice& i) { i.seller.vatId.clear(); }) << true
            << "Für die E-Rechnung fehlen: die USt-IdNr. des Verkäufers oder seine Kennung beim Käufer (eine Steuernummer allein genügt nicht).";
        QTest::newRow("no identifier at all")
            << Change([](Invoice& i) { i.seller.vatId.clear(); i.seller.taxNumber.clear(); }) << false
            << "Für die E-Rechnung fehlen: die USt-IdNr. oder die Steuernummer des Verkäufers; die USt-IdNr. des Verkäufers oder seine Kennung beim Käufer (eine Steuernummer allein genügt nicht).";
        QTest::newRow("buyer without post code and reference")
            << Change([](Invoice& i) { i.buyer.address.postCode.clear(); i.buyer.reference = QStringLiteral("  "); }) << true
            << "Für die E-Rechnung fehlen: die Postleitzahl des Käufers; die Käuferreferenz (Leitweg-ID, Bestell- oder Kundennummer).";
        QTest::newRow("seller contact and bank")
            << Change([](Invoice& i) { i.seller.contactName.clear(); i.seller.phone.clear(); i.seller.iban.clear(); }) << true
            << "Für die E-Rechnung fehlen: der Ansprechpartner des Verkäufers; die Telefonnummer des Verkäufers; die IBAN des Verkäufers.";
        // Nothing is due, so no terms are needed.
        QTest::newRow("no terms, no lines") << Change([](Invoice& i) { i.lines.clear(); i.paymentNote.clear(); }) << true
                                            << "Für die E-Rechnung fehlen: mindestens eine Rechnungsposition.";
        QTest::newRow("amount due without terms") << Change([](Invoice& i) { i.paymentNote.clear(); }) << false
                                                  << "Für die E-Rechnung fehlen: die Zahlungsbedingungen oder das Fälligkeitsdatum.";
        QTest::newRow("a due date is enough")
            << Change([](Invoice& i) { i.paymentNote.clear(); i.dueDate = QDate(2026, 12, 15); }) << false << "";
        // 19,475 rounded down to 19,47.
        QTest::newRow("totals that disagree")
            << Change([](Invoice& i) { i.vatTotal = 1947; i.grandTotal = 12197; }) << true
            << "Die E-Rechnung kann nicht geschrieben werden, weil die Summen (Umsatzsteuer 19,47 €, Bruttobetrag 121,97 €) nicht zu den "
               "Positionen passen (Umsatzsteuer 19,48 €, Bruttobetrag 121,98 €).";
    }
    void refusalNamesWhatIsMissing()
    {
        QFETCH(Change, change);
        QFETCH(bool, xrechnung);
        QFETCH(QString, message);
        Invoice invoice = test::halfCent();
        change(invoice);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("rechnung.xml"));
        QCOMPARE(writeCiiFile(invoice, xrechnung ? Profile::XRechnung : Profile::EN16931, path), message);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), message.isEmpty() ? QStringList{QStringLiteral("rechnung.xml")} : QStringList());
    }

    void unwritableFolderGivesAMessage()
    {
        const QString error = writeCiiFile(test::halfCent(), Profile::XRechnung, QStringLiteral("/gibt/es/nicht/rechnung.xml"));
        QVERIFY2(error.startsWith(QStringLiteral("Die Datei \"/gibt/es/nicht/rechnung.xml\" kann nicht")), qPrintable(error));
    }

    // Figures read off the example files by hand.
    void officialExamples_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("syntax");
        // number|issued|buyer reference|lines|first line's net|line total|VAT|grand total|due|first rate|its category, in cents
        QTest::addColumn<QString>("figures");
        QTest::newRow("01.01a CII") << "01.01a-INVOICE_uncefact.xml" << "CII" << "123456XX|2016-04-04|04011000-12345-03|2|28879|31486|2204|33690|33690|700|S";
        QTest::newRow("01.01a UBL") << "01.01a-INVOICE_ubl.xml" << "UBL" << "123456XX|2016-04-04|04011000-12345-03|2|28879|31486|2204|33690|33690|700|S";
        QTest::newRow("02.01a UBL") << "02.01a-INVOICE_ubl.xml" << "UBL"
                                    << "1234567|2018-04-13|90000000-03083-72|2|474375|1078125|204844|1282969|1282969|1900|S";
    }
    void officialExamples()
    {
        QFETCH(QString, file);
        QFETCH(QString, syntax);
        QFETCH(QString, figures);
        const ReadResult read = readInvoiceFile(example(qPrintable(file)));
        QVERIFY2(read.invoice, qPrintable(read.error));
        const Invoice& inv = *read.invoice;
        QCOMPARE(read.syntax, syntax);
        QCOMPARE(read.guideline, QStringLiteral("urn:cen.eu:en16931:2017#compliant#urn:xeinkauf.de:kosit:xrechnung_3.0"));
        const QStringList got{inv.number, inv.issueDate.toString(Qt::ISODate), inv.buyer.reference, QString::number(inv.lines.size()),
                               QString::number(inv.lines.first().net), QString::number(inv.lineTotal), QString::number(inv.vatTotal),
                               QString::number(inv.grandTotal), QString::number(inv.duePayable),
                               QString::number(linePercent(inv, inv.lines.first())), lineCategory(inv, inv.lines.first())};
        QCOMPARE(got.join(u'|'), figures);
        QVERIFY(!inv.seller.name.isEmpty() && !inv.buyer.name.isEmpty());
        QCOMPARE(inv.seller.iban, QStringLiteral("DE79000000001234567890"));
    }

    // A hybrid PDF is read by its invoice attachment; PDFs without one are refused with the reason.
    void pdfsAreReadByTheirAttachment()
    {
        QTemporaryDir dir;
        const QString xml = dir.filePath(QStringLiteral("factur-x.xml"));
        writeBytes(xml, writeCii(test::mixedLots(), Profile::EN16931));
        const QString other = dir.filePath(QStringLiteral("lieferschein.txt"));
        writeBytes(other, "Lieferschein 12");
        const QString pdf = dir.filePath(QStringLiteral("rechnung.pdf"));
        QVERIFY(makePdf(pdf, {{other, QStringLiteral("lieferschein.txt")}, {xml, QStringLiteral("factur-x.xml")}}));
        const ReadResult read = readInvoiceFile(pdf);
        QVERIFY2(read.invoice, qPrintable(read.error));
        QCOMPARE(read.guideline, QStringLiteral("urn:cen.eu:en16931:2017"));
        QCOMPARE(read.invoice->seller.name, test::mixedLots().seller.name);
        QCOMPARE(read.invoice->grandTotal, Cents(255553));

        const QString plain = dir.filePath(QStringLiteral("ohne.pdf"));
        QVERIFY(makePdf(plain, {}));
        QCOMPARE(readInvoiceFile(plain).error, QStringLiteral("Die PDF-Datei enthält keine E-Rechnung: sie hat keinen Dateianhang."));

        const QString note = dir.filePath(QStringLiteral("notiz.xml"));
        writeBytes(note, "<notiz>Holz abgefahren</notiz>");
        const QString foreign = dir.filePath(QStringLiteral("fremd.pdf"));
        QVERIFY(makePdf(foreign, {{note, QStringLiteral("notiz.xml")}}));
        QCOMPARE(readInvoiceFile(foreign).error,
                 QStringLiteral("Die PDF-Datei enthält keine E-Rechnung: ihr Dateianhang ist keine Rechnung im Format CII oder UBL."));

        const QString broken = dir.filePath(QStringLiteral("kaputt.pdf"));
        writeBytes(broken, "%PDF-1.7\nnichts weiter");
        QCOMPARE(readInvoiceFile(broken).error, QStringLiteral("Die PDF-Datei kann nicht gelesen werden."));
        QCOMPARE(readInvoiceFile(dir.filePath(QStringLiteral("fehlt.xml"))).error,
                 QStringLiteral("Die Datei \"%1\" gibt es nicht.").arg(dir.filePath(QStringLiteral("fehlt.xml"))));
    }

    void filesWithoutAnInvoiceAreRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty") << QByteArray() << "Die Datei ist leer.";
        QTest::newRow("cut off") << writeCii(test::halfCent(), Profile::XRechnung).left(900)
                                 << "Die Datei ist kein gültiges XML (Fehler in Zeile";
        QTest::newRow("CII name, wrong namespace")
            << QByteArray("<CrossIndustryInvoice xmlns=\"urn:example:invoice\"/>")
            << "Die Datei enthält keine E-Rechnung im Format CII oder UBL (das Wurzelelement ist \"CrossIndustryInvoice\" im Namensraum \"urn:example:invoice\").";
        QTest::newRow("entities") << QByteArray("<!DOCTYPE x [<!ENTITY a \"aaaa\">]><x>&a;</x>")
                                  << "Die Datei enthält eine Dokumenttypdefinition (DTD); eine E-Rechnung hat keine.";
        QTest::newRow("CII without content")
            << QByteArray("<rsm:CrossIndustryInvoice xmlns:rsm=\"urn:un:unece:uncefact:data:standard:CrossIndustryInvoice:100\"/>")
            << "Die CII-Datei ist unvollständig: es fehlt der Rechnungskopf oder der Rechnungsinhalt.";
        QTest::newRow("deep") << QByteArray("<a>").repeated(100000) << "Die XML-Datei ist zu tief verschachtelt";
    }
    void filesWithoutAnInvoiceAreRefused()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("rechnung.xml"));
        writeBytes(path, content);
        const ReadResult read = readInvoiceFile(path);
        QVERIFY(!read.invoice);
        QVERIFY2(read.error.startsWith(message), qPrintable(read.error));
    }


    // The text window's lines, with the worked figures of levy 2 %, VAT 19 % and discount 2 %.
    void readableTextShowsTheFigures()
    {
        const ReadResult read = readInvoiceXml(writeCii(test::levyAndDiscount(), Profile::XRechnung));
        QVERIFY(read.invoice);
        const QStringList lines = readableText(*read.invoice);
        for (const char* expected : {
                 "Rechnung 20260007 vom 15.11.2026",
                 "      12,500 m³ × 80,00 € = 1.000,00 €, USt Normalsatz (S) 19 %",
                 "  Abzug CMA-Abgabe (2 % von 1.000,00 €): -20,00 €",
                 "  Normalsatz (S) 19 %: Bemessungsgrundlage 1.000,00 €, Steuer 190,00 €",
                 "  steuerbefreit (E) 0 %: Bemessungsgrundlage -20,00 €, Steuer 0,00 €",
                 "Summe netto: 980,00 €",
                 "Rechnungsbetrag: 1.170,00 €",
                 "  2 % Skonto bei Zahlung innerhalb von 14 Tagen: 23,40 € weniger, also 1.146,60 €",
                 "  Überweisung auf IBAN DE02120300000000202051, BIC BYLADEM1001",
             })
            QVERIFY2(lines.contains(QString::fromUtf8(expected)), expected);
    }
};

QTEST_GUILESS_MAIN(TestEInvoice)
#include "tst_einvoice.moc"
