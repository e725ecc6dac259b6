// A scripted invoice leaves the program as an e-invoice: own data and buyer set through the
// command line, the invoice stored with "rechnung neu", written with --xrechnung or --en16931,
// accepted by the official rules, and read back with the printed invoice's amount.
#include "common/money.h"
#include "invoices/einvoice/pdfreader.h"
#include "invoices/einvoicecheck.h"
#include "invoices/invoice.h"
#include "invoices/invoicedata.h"
#include "support/clirun.h"
#include "support/tempdatafolder.h"

#include <QFile>

using namespace tarvik;

namespace {

const QStringList Seller{"eigene-angaben", "name=Forstbetrieb Anna Müller & Söhne", "strasse=Waldweg 1", "plz=78333", "ort=Stockach",
                         "kontakt=Anna Müller", "telefon=07771 1234", "email=anna@example.de", "ustid=DE123456789",
                         "iban=DE89 3704 0044 0532 0130 00", "bic=COBADEFFXXX"};
const QStringList Buyer{"abnehmer", "Säge O'Neill", "name=Sägewerk O'Neill <Nord> GmbH", "strasse=Am Bühl 3", "plz=88662",
                        "ort=Überlingen", "referenz=K-4711", "email=einkauf@oneill.example", "ustid=DE987654321"};

} // namespace

class TestERechnungCli : public QObject {
    Q_OBJECT

private slots:
    void writtenCheckedAndReadBack_data()
    {
        QTest::addColumn<QString>("regime");
        QTest::addColumn<QString>("lots");
        QTest::addColumn<QStringList>("percentages");
        QTest::addColumn<bool>("xrechnung");
        QTest::newRow("logs per group at 19 %") << "regel" << "1" << QStringList{"--mwst", "19"} << true;
        QTest::newRow("every kind of lot, levy and discount") << "regel" << "1,2,3,4"
                                                           << QStringList{"--abgabe", "2", "--mwst", "19", "--skonto", "3", "--skonto-tage", "14"}
                                                           << true;
        QTest::newRow("flat rate § 24 at 5,5 %") << "pauschal24" << "3,4" << QStringList{"--mwst", "5,5", "--abgabe", "0,4"} << true;
        QTest::newRow("small business § 19") << "klein19" << "1,2" << QStringList{"--mwst", "0", "--abgabe", "2"} << true;
        QTest::newRow("plain EN 16931") << "regel" << "2,4" << QStringList{"--mwst", "10,7", "--abgabe", "2"} << false;
    }
    void writtenCheckedAndReadBack()
    {
        QFETCH(QString, regime);
        QFETCH(QString, lots);
        QFETCH(QStringList, percentages);
        QFETCH(bool, xrechnung);
        test::TempDataFolder folder;
        test::invoiceLots(folder.openDatabase()->shared());
        const QStringList data{QStringLiteral("--daten"), folder.path()};
        auto run = [&](const QStringList& args) { return test::runCli(data + args); };
        QCOMPARE(run(Seller + QStringList{"besteuerung=" + regime}).code, 0);
        QCOMPARE(run(Buyer).code, 0);
        const test::CliOutput stored =
            run(QStringList{"rechnung", "neu", "7", lots, "--abnehmer", "Säge O'Neill", "--datum", "20.11.2026"} + percentages);
        QVERIFY2(stored.code == 0, qPrintable(stored.err));

        const QString path = folder.filePath(QStringLiteral("Rechnung.xml"));
        const test::CliOutput written = run({"rechnung", "20260001", xrechnung ? "--xrechnung" : "--en16931", path});
        QVERIFY2(written.code == 0, qPrintable(written.err));
        const auto check = test::checkEInvoice(path, xrechnung);
        QVERIFY2(check, "the e-invoice rule files are not beside the repository");
        QVERIFY2(check->clean(), qPrintable(check->report));

        // The file's amounts are the printed invoice's, to the cent.
        const test::PrintedInvoice printed = test::readPrintedInvoice(invoiceLines(run({"rechnung", "20260001"}).out));
        const einvoice::ReadResult read = einvoice::readInvoiceFile(path);
        QVERIFY2(read.invoice, qPrintable(read.error));
        const einvoice::Invoice& e = *read.invoice;
        QCOMPARE(e.lineTotal, *printed.net);
        QCOMPARE(e.vatTotal, *printed.vat);
        QCOMPARE(e.allowanceTotal, *printed.levy);
        // A cash discount is a term: taken off the amount due, it gives the printed amount.
        QCOMPARE(e.duePayable - percentOf(e.duePayable, e.discountPercent), *printed.total);
        QCOMPARE(e.seller.name, QStringLiteral("Forstbetrieb Anna Müller & Söhne"));
        QCOMPARE(e.buyer.name, QStringLiteral("Sägewerk O'Neill <Nord> GmbH"));

        // The reader shows the file with the same figures.
        const test::CliOutput shown = run({"erechnung", path});
        QCOMPARE(shown.code, 0);
        QVERIFY2(shown.out.contains(einvoice::euroText(e.duePayable)), qPrintable(shown.out));
    }

    void refusedWithoutSellerIdentifier()
    {
        test::TempDataFolder folder;
        test::invoiceLots(folder.openDatabase()->shared());
        const QStringList data{QStringLiteral("--daten"), folder.path()};
        auto run = [&](const QStringList& args) { return test::runCli(data + args); };
        QStringList seller = Seller;
        seller.replace(seller.indexOf(QStringLiteral("ustid=DE123456789")), QStringLiteral("steuernummer=12/345/67890"));
        QCOMPARE(run(seller).code, 0);
        QCOMPARE(run(Buyer).code, 0);
        QCOMPARE(run({"rechnung", "neu", "7", "1", "--abnehmer", "Säge O'Neill", "--mwst", "19"}).code, 0);
        const QString path = folder.filePath(QStringLiteral("Rechnung.xml"));
        const test::CliOutput written = run({"rechnung", "20260001", "--xrechnung", path});
        QCOMPARE(written.code, 1);
        QVERIFY2(written.err.contains(QStringLiteral("Für die E-Rechnung fehlen: ")), qPrintable(written.err));
        QVERIFY2(written.err.contains(QStringLiteral("USt-IdNr.")), qPrintable(written.err));
        QVERIFY(!QFile::exists(path));
    }

    void changedLotsAreNotWrittenAsTheStoredInvoice()
    {
        test::TempDataFolder folder;
        auto db = folder.openDatabase();
        test::invoiceLots(db->shared());
        db.reset();
        const QStringList data{QStringLiteral("--daten"), folder.path()};
        auto run = [&](const QStringList& args) { return test::runCli(data + args); };
        QCOMPARE(run(Seller).code, 0);
        QCOMPARE(run(Buyer).code, 0);
        QCOMPARE(run({"rechnung", "neu", "7", "3", "--abnehmer", "Säge O'Neill", "--mwst", "19"}).code, 0);
        db = folder.openDatabase();
        execSql(db->shared(), QStringLiteral("UPDATE Pfähle SET Preis_berechnet = Preis_berechnet + 1"));
        db.reset();
        const QString path = folder.filePath(QStringLiteral("Rechnung.xml"));
        const test::CliOutput written = run({"rechnung", "20260001", "--xrechnung", path});
        QCOMPARE(written.code, 1);
        QVERIFY2(written.err.contains(QStringLiteral("seit dem Speichern geändert")), qPrintable(written.err));
        QVERIFY(!QFile::exists(path));
    }
};

TARVIK_TEST_CORE_MAIN(TestERechnungCli)
#include "tst_erechnungcli.moc"
