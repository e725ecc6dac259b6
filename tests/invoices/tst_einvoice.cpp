// The CII writer: files the official XRechnung and EN 16931 rules accept, totals by the
// worked examples, the unit price, and refusals that name what is missing.
#include "invoices/einvoicecheck.h"
#include "invoices/einvoice/ciiwriter.h"
#include "invoices/einvoicecases.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarvik;
using namespace tarvik::einvoice;

class TestEInvoice : public QObject {
    Q_OBJECT

private slots:
    void validatorAcceptsTheFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("xrechnung");
        QTest::addColumn<Cents>("vat");
        QTest::addColumn<Cents>("due");
        QTest::newRow("logs per group, 19 %") << "logsAt19" << true << Cents(23983) << Cents(150209);
        QTest::newRow("§ 24 at 5,5 %") << "flatRate24" << true << Cents(5500) << Cents(105500);
        QTest::newRow("§ 19 with levy") << "smallBusiness19" << true << Cents(0) << Cents(49000);
        QTest::newRow("flat, poles, stacked wood") << "mixedLots" << true << Cents(40803) << Cents(255553);
        QTest::newRow("levy and cash discount") << "levyAndDiscount" << true << Cents(19000) << Cents(117000);
        QTest::newRow("half a cent") << "halfCent" << true << Cents(1948) << Cents(12198);
        QTest::newRow("plain EN 16931") << "halfCent" << false << Cents(1948) << Cents(12198);
    }
    void validatorAcceptsTheFiles()
    {
        QFETCH(QString, name);
        QFETCH(bool, xrechnung);
        QFETCH(Cents, vat);
        QFETCH(Cents, due);
        Invoice invoice = test::invoiceCase(name);
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
    }

    // The levy leaves the VAT base alone: S keeps the full net, E carries the levy negatively.
    void levyStaysOutsideTheVatBase_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QList<VatSubtotal>>("expected");
        const QString levyReason = QStringLiteral("Abzug ohne Minderung der Bemessungsgrundlage der Umsatzsteuer");
        QTest::newRow("regular") << "levyAndDiscount"
                                 << QList<VatSubtotal>{{QStringLiteral("S"), 1900, 100000, 19000, {}},
                                                       {QStringLiteral("E"), 0, -2000, 0, levyReason}};
        QTest::newRow("§ 19") << "smallBusiness19"
                              << QList<VatSubtotal>{{QStringLiteral("E"), 0, 49000, 0,
                                                     QStringLiteral("Kein Ausweis von Umsatzsteuer, da Kleinunternehmer gemäß § 19 UStG")}};
        QTest::newRow("§ 24") << "flatRate24" << QList<VatSubtotal>{{QStringLiteral("S"), 550, 100000, 5500, {}}};
    }
    void levyStaysOutsideTheVatBase()
    {
        QFETCH(QString, name);
        QFETCH(QList<VatSubtotal>, expected);
        QCOMPARE(vatBreakdown(test::invoiceCase(name)), expected);
    }

    void fileCarriesTheAgreedTexts()
    {
        const QString discount = QString::fromUtf8(writeCii(test::levyAndDiscount(), Profile::XRechnung));
        QVERIFY(discount.contains(QStringLiteral("<ram:Description>#SKONTO#TAGE=14#PROZENT=2.00#\n2 % Skonto bei Zahlung bis 29.11.2026.")));
        QVERIFY(discount.contains(QStringLiteral("urn:cen.eu:en16931:2017#compliant#urn:xeinkauf.de:kosit:xrechnung_3.0")));
        const QString flat = QString::fromUtf8(writeCii(test::flatRate24(), Profile::EN16931));
        QVERIFY(flat.contains(QStringLiteral("§ 24")));
        QVERIFY(flat.contains(QStringLiteral("<ram:ID>urn:cen.eu:en16931:2017</ram:ID>")));
    }

    void unitPrice_data()
    {
        QTest::addColumn<Cents>("net");
        QTest::addColumn<qint64>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("price");
        // 2,921 × 35,07 = 102,439 is a cent off; 2,921 × 35,074 = 102,451 is within half a cent.
        QTest::newRow("three decimals") << Cents(10245) << qint64(2921) << 3 << "35.074";
        QTest::newRow("exact") << Cents(8500) << qint64(25) << 0 << "3.40";
        QTest::newRow("a third") << Cents(10000) << qint64(3) << 0 << "33.333";
        QTest::newRow("one piece") << Cents(10250) << qint64(1) << 0 << "102.50";
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
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("xrechnung");
        QTest::addColumn<QString>("message");
        QTest::newRow("tax number only")
            << "taxNumberOnly" << true
            << "Für die E-Rechnung fehlen: die USt-IdNr. des Verkäufers oder seine Kennung beim Käufer (eine Steuernummer allein genügt nicht).";
        QTest::newRow("no identifier at all")
            << "noIdentifier" << false
            << "Für die E-Rechnung fehlen: die USt-IdNr. oder die Steuernummer des Verkäufers; die USt-IdNr. des Verkäufers oder seine Kennung beim Käufer (eine Steuernummer allein genügt nicht).";
        QTest::newRow("buyer without post code and reference")
            << "buyerIncomplete" << true
            << "Für die E-Rechnung fehlen: die Postleitzahl des Käufers; die Käuferreferenz (Leitweg-ID, Bestell- oder Kundennummer).";
        QTest::newRow("seller contact and bank")
            << "sellerIncomplete" << true
            << "Für die E-Rechnung fehlen: der Ansprechpartner des Verkäufers; die Telefonnummer des Verkäufers; die IBAN des Verkäufers.";
        QTest::newRow("no terms, no lines")
            << "noTerms" << true
            << "Für die E-Rechnung fehlen: mindestens eine Rechnungsposition.";
    }
    void refusalNamesWhatIsMissing()
    {
        QFETCH(QString, change);
        QFETCH(bool, xrechnung);
        QFETCH(QString, message);
        Invoice invoice = test::halfCent();
        if (change == u"taxNumberOnly") {
            invoice.seller.vatId.clear();
        } else if (change == u"noIdentifier") {
            invoice.seller.vatId.clear();
            invoice.seller.taxNumber.clear();
        } else if (change == u"buyerIncomplete") {
            invoice.buyer.address.postCode.clear();
            invoice.buyer.reference = QStringLiteral("  ");
        } else if (change == u"sellerIncomplete") {
            invoice.seller.contactName.clear();
            invoice.seller.phone.clear();
            invoice.seller.iban.clear();
        } else if (change == u"noTerms") {
            invoice.lines.clear();
            invoice.paymentNote.clear(); // nothing is due, so no terms are needed
        }
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("rechnung.xml"));
        QCOMPARE(writeCiiFile(invoice, xrechnung ? Profile::XRechnung : Profile::EN16931, path), message);
        QVERIFY(!QFile::exists(path));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList());
    }

    void dueAmountNeedsTerms()
    {
        Invoice invoice = test::halfCent();
        invoice.paymentNote.clear();
        QCOMPARE(missingFields(invoice, Profile::EN16931), QStringList{QStringLiteral("die Zahlungsbedingungen oder das Fälligkeitsdatum")});
        invoice.dueDate = QDate(2026, 12, 15);
        QCOMPARE(missingFields(invoice, Profile::EN16931), QStringList());
    }

    void totalsThatDisagreeAreRefused()
    {
        Invoice invoice = test::halfCent();
        invoice.vatTotal = 1947; // 19,475 rounded down
        invoice.grandTotal = 12197;
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("rechnung.xml"));
        const QString error = writeCiiFile(invoice, Profile::XRechnung, path);
        QVERIFY2(error.contains(QStringLiteral("19,48 €")) && error.contains(QStringLiteral("121,98 €")), qPrintable(error));
        QVERIFY(!QFile::exists(path));
    }

    void unwritableFolderGivesAMessage()
    {
        const QString error = writeCiiFile(test::halfCent(), Profile::XRechnung, QStringLiteral("/gibt/es/nicht/rechnung.xml"));
        QVERIFY2(error.startsWith(QStringLiteral("Die Datei \"/gibt/es/nicht/rechnung.xml\" kann nicht")), qPrintable(error));
    }
};

QTEST_GUILESS_MAIN(TestEInvoice)
#include "tst_einvoice.moc"
