// The e-invoice reader: the official examples in CII and UBL, the writer's own files field by
// field, a hybrid PDF made with qpdf, the messages for files that hold no invoice, the text
// for the output window and tarvik-cli erechnung.
#include "invoices/einvoice/ciiwriter.h"
#include "invoices/einvoice/pdfreader.h"
#include "invoices/einvoicecases.h"
#include "support/clirun.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarvik;
using namespace tarvik::einvoice;

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

} // namespace

class TestEInvoiceReader : public QObject {
    Q_OBJECT

private slots:
    // Figures read off the example files by hand.
    void officialExamples_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("syntax");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QDate>("issued");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<int>("lines");
        QTest::addColumn<Cents>("firstNet");
        QTest::addColumn<Cents>("lineTotal");
        QTest::addColumn<Cents>("vat");
        QTest::addColumn<Cents>("grand");
        QTest::addColumn<PercentHundredths>("rate");
        QTest::newRow("01.01a CII") << example("01.01a-INVOICE_uncefact.xml") << "CII" << "123456XX" << QDate(2016, 4, 4)
                                    << "04011000-12345-03" << 2 << Cents(28879) << Cents(31486) << Cents(2204) << Cents(33690) << PercentHundredths(700);
        QTest::newRow("01.01a UBL") << example("01.01a-INVOICE_ubl.xml") << "UBL" << "123456XX" << QDate(2016, 4, 4)
                                    << "04011000-12345-03" << 2 << Cents(28879) << Cents(31486) << Cents(2204) << Cents(33690) << PercentHundredths(700);
        QTest::newRow("01.05a CII") << example("01.05a-INVOICE_uncefact.xml") << "CII" << "PRG1502112" << QDate(2015, 4, 24)
                                    << "99000000-18188-18" << 4 << Cents(670000) << Cents(887000) << Cents(168530) << Cents(1055530) << PercentHundredths(1900);
        QTest::newRow("02.01a CII") << example("02.01a-INVOICE_uncefact.xml") << "CII" << "1234567" << QDate(2018, 4, 13)
                                    << "90000000-03083-72" << 2 << Cents(474375) << Cents(1078125) << Cents(204844) << Cents(1282969) << PercentHundredths(1900);
        QTest::newRow("02.01a UBL") << example("02.01a-INVOICE_ubl.xml") << "UBL" << "1234567" << QDate(2018, 4, 13)
                                    << "90000000-03083-72" << 2 << Cents(474375) << Cents(1078125) << Cents(204844) << Cents(1282969) << PercentHundredths(1900);
    }
    void officialExamples()
    {
        QFETCH(QString, file);
        QFETCH(QString, syntax);
        QFETCH(QString, number);
        QFETCH(QDate, issued);
        QFETCH(QString, reference);
        QFETCH(int, lines);
        QFETCH(Cents, firstNet);
        QFETCH(Cents, lineTotal);
        QFETCH(Cents, vat);
        QFETCH(Cents, grand);
        QFETCH(PercentHundredths, rate);
        if (!QFile::exists(file))
            QSKIP("the official examples are not beside the repository");
        const ReadResult read = readInvoiceFile(file);
        QVERIFY2(read.invoice, qPrintable(read.error));
        const Invoice& inv = *read.invoice;
        QCOMPARE(read.syntax, syntax);
        QCOMPARE(read.guideline, QStringLiteral("urn:cen.eu:en16931:2017#compliant#urn:xeinkauf.de:kosit:xrechnung_3.0"));
        QCOMPARE(inv.number, number);
        QCOMPARE(inv.issueDate, issued);
        QCOMPARE(inv.buyer.reference, reference);
        QCOMPARE(inv.lines.size(), lines);
        QCOMPARE(inv.lines.first().net, firstNet);
        QCOMPARE(inv.lineTotal, lineTotal);
        QCOMPARE(inv.vatTotal, vat);
        QCOMPARE(inv.grandTotal, grand);
        QCOMPARE(inv.duePayable, grand);
        QCOMPARE(linePercent(inv, inv.lines.first()), rate);
        QCOMPARE(lineCategory(inv, inv.lines.first()), QStringLiteral("S"));
        QVERIFY(!inv.seller.name.isEmpty() && !inv.buyer.name.isEmpty());
        QCOMPARE(inv.seller.iban, QStringLiteral("DE79000000001234567890"));
    }

    void ownFilesReadBackUnchanged_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"logsAt19", "flatRate24", "smallBusiness19", "mixedLots", "levyAndDiscount", "halfCent"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void ownFilesReadBackUnchanged()
    {
        QFETCH(QString, name);
        const Invoice original = test::invoiceCase(name);
        const ReadResult read = readInvoiceXml(writeCii(original, Profile::XRechnung));
        QVERIFY2(read.invoice, qPrintable(read.error));
        const Invoice& back = *read.invoice;
        QCOMPARE(read.syntax, QStringLiteral("CII"));
        QCOMPARE(back.number, original.number);
        QCOMPARE(back.issueDate, original.issueDate);
        QCOMPARE(back.deliveryDate, original.deliveryDate);
        QCOMPARE(back.currency, original.currency);
        QCOMPARE(back.note, original.note);
        QCOMPARE(back.seller.name, original.seller.name);
        QCOMPARE(back.seller.address.street, original.seller.address.street);
        QCOMPARE(back.seller.address.postCode, original.seller.address.postCode);
        QCOMPARE(back.seller.address.city, original.seller.address.city);
        QCOMPARE(back.seller.address.country, original.seller.address.country);
        QCOMPARE(back.seller.contactName, original.seller.contactName);
        QCOMPARE(back.seller.phone, original.seller.phone);
        QCOMPARE(back.seller.email, original.seller.email);
        QCOMPARE(back.seller.taxNumber, original.seller.taxNumber);
        QCOMPARE(back.seller.vatId, original.seller.vatId);
        QCOMPARE(back.seller.sellerId, original.seller.sellerId);
        QCOMPARE(back.seller.iban, original.seller.iban);
        QCOMPARE(back.seller.bic, original.seller.bic);
        QCOMPARE(back.seller.regime, original.seller.regime);
        QCOMPARE(back.buyer.name, original.buyer.name);
        QCOMPARE(back.buyer.address.street, original.buyer.address.street);
        QCOMPARE(back.buyer.address.postCode, original.buyer.address.postCode);
        QCOMPARE(back.buyer.address.city, original.buyer.address.city);
        QCOMPARE(back.buyer.vatId, original.buyer.vatId);
        QCOMPARE(back.buyer.reference, original.buyer.reference);
        QCOMPARE(back.buyer.email, original.buyer.email);
        QCOMPARE(back.lines.size(), original.lines.size());
        for (qsizetype i = 0; i < back.lines.size(); ++i) {
            const Line& b = back.lines[i];
            const Line& o = original.lines[i];
            QCOMPARE(b.id, o.id);
            QCOMPARE(b.name, o.name);
            QCOMPARE(b.description, o.description);
            QCOMPARE(b.quantity.value, o.quantity.value);
            QCOMPARE(b.quantity.decimals, o.quantity.decimals);
            QCOMPARE(b.unitCode, o.unitCode);
            QCOMPARE(b.netPrice, o.netPrice);
            QCOMPARE(b.net, o.net);
            QCOMPARE(b.vatCategory, o.vatCategory);
        }
        QCOMPARE(back.vatPercent, original.vatPercent);
        QCOMPARE(bool(back.levy), bool(original.levy));
        if (original.levy) {
            QCOMPARE(back.levy->amount, original.levy->amount);
            QCOMPARE(back.levy->base, original.levy->base);
            QCOMPARE(back.levy->percent, original.levy->percent);
            QCOMPARE(back.levy->reason, original.levy->reason);
        }
        QVERIFY(back.otherAllowances.isEmpty());
        QCOMPARE(back.discountPercent, original.discountPercent);
        QCOMPARE(back.discountDays, original.discountDays);
        QCOMPARE(back.paymentNote, original.paymentNote);
        QCOMPARE(back.paymentMeansCode, QStringLiteral("58"));
        QCOMPARE(back.readBreakdown, vatBreakdown(original));
        const Invoice totals = withTotals(original);
        QCOMPARE(back.lineTotal, totals.lineTotal);
        QCOMPARE(back.allowanceTotal, totals.allowanceTotal);
        QCOMPARE(back.taxBasis, totals.taxBasis);
        QCOMPARE(back.vatTotal, totals.vatTotal);
        QCOMPARE(back.grandTotal, totals.grandTotal);
        QCOMPARE(back.duePayable, totals.duePayable);
    }

    void hybridPdfIsReadByItsAttachment()
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
    }

    void filesWithoutAnInvoiceAreRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty") << QByteArray() << "Die Datei ist leer.";
        QTest::newRow("cut off") << writeCii(test::halfCent(), Profile::XRechnung).left(900)
                                 << "Die Datei ist kein gültiges XML (Fehler in Zeile";
        QTest::newRow("not XML") << QByteArray("Rechnung 4711\n") << "Die Datei ist kein gültiges XML";
        QTest::newRow("web page") << QByteArray("<html xmlns=\"http://www.w3.org/1999/xhtml\"><body/></html>")
                                  << "Die Datei enthält keine E-Rechnung im Format CII oder UBL (das Wurzelelement ist \"html\" im Namensraum \"http://www.w3.org/1999/xhtml\").";
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

    void pdfsWithoutAnInvoiceAreRefused()
    {
        QTemporaryDir dir;
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

    void paymentTermsSplit_data()
    {
        QTest::addColumn<QString>("terms");
        QTest::addColumn<int>("days");
        QTest::addColumn<PercentHundredths>("percent");
        QTest::addColumn<QString>("rest");
        QTest::newRow("discount and text") << "#SKONTO#TAGE=14#PROZENT=2.00#\nZahlbar in 30 Tagen." << 14 << PercentHundredths(200) << "Zahlbar in 30 Tagen.";
        QTest::newRow("two steps") << "#SKONTO#TAGE=7#PROZENT=3.00#\n#SKONTO#TAGE=14#PROZENT=2.00#\n" << 7 << PercentHundredths(300) << "";
        QTest::newRow("with base") << "#SKONTO#TAGE=10#PROZENT=1.50#BASISBETRAG=100.00#\n" << 10 << PercentHundredths(150) << "";
        QTest::newRow("text only") << "14 Tage" << 0 << PercentHundredths(0) << "14 Tage";
    }
    void paymentTermsSplit()
    {
        QFETCH(QString, terms);
        QFETCH(int, days);
        QFETCH(PercentHundredths, percent);
        QFETCH(QString, rest);
        const PaymentTermsParts parts = splitPaymentTerms(terms);
        QCOMPARE(parts.days, days);
        QCOMPARE(parts.percent, percent);
        QCOMPARE(parts.rest, rest);
    }

    // The text window's lines, with the worked figures of levy 2 %, VAT 19 % and discount 2 %.
    void readableTextShowsTheFigures()
    {
        const ReadResult read = readInvoiceXml(writeCii(test::levyAndDiscount(), Profile::XRechnung));
        QVERIFY(read.invoice);
        const QStringList lines = readableText(*read.invoice);
        for (const char* expected : {
                 "Rechnung 20260007 vom 15.11.2026",
                 "Verkäufer: Forstbetrieb Müller",
                 "  79100 Freiburg im Breisgau",
                 "Käufer: Sägewerk Groß GmbH",
                 "  Käuferreferenz: 04011000-12345-03",
                 "      12,500 m³ × 80,00 € = 1.000,00 €, USt Normalsatz (S) 19 %",
                 "  Abzug CMA-Abgabe (2 % von 1.000,00 €): -20,00 €",
                 "  Normalsatz (S) 19 %: Bemessungsgrundlage 1.000,00 €, Steuer 190,00 €",
                 "  steuerbefreit (E) 0 %: Bemessungsgrundlage -20,00 €, Steuer 0,00 €",
                 "Summe netto: 980,00 €",
                 "Rechnungsbetrag: 1.170,00 €",
                 "Zahlbetrag: 1.170,00 €",
                 "  2 % Skonto bei Zahlung innerhalb von 14 Tagen: 23,40 € weniger, also 1.146,60 €",
                 "  Bankverbindung siehe unten.",
                 "  Überweisung auf IBAN DE02120300000000202051, BIC BYLADEM1001",
             })
            QVERIFY2(lines.contains(QString::fromUtf8(expected)), expected);
    }

    void commandLinePrintsTheInvoice()
    {
        const QString file = example("01.01a-INVOICE_uncefact.xml");
        if (!QFile::exists(file))
            QSKIP("the official examples are not beside the repository");
        const test::CliOutput shown = test::runCli({QStringLiteral("erechnung"), file});
        QCOMPARE(shown.code, 0);
        QVERIFY2(shown.out.contains(QStringLiteral("Rechnungsbetrag: 336,90 €\n")), qPrintable(shown.out));
        QVERIFY(shown.out.contains(QStringLiteral("Käufer: [Buyer name]\n")));

        QTemporaryDir dir;
        const QString pdf = dir.filePath(QStringLiteral("ohne.pdf"));
        QVERIFY(makePdf(pdf, {}));
        const test::CliOutput refused = test::runCli({QStringLiteral("erechnung"), pdf});
        QCOMPARE(refused.code, 1);
        QVERIFY(refused.err.contains(QStringLiteral("Die PDF-Datei enthält keine E-Rechnung")));
        QCOMPARE(test::runCli({QStringLiteral("erechnung")}).code, 2);
    }
};

QTEST_GUILESS_MAIN(TestEInvoiceReader)
#include "tst_einvoicereader.moc"
