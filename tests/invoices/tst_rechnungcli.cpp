// tarvik-cli rechnung and erechnung: a stored invoice's text on stdout (UTF-8) and as a
// Windows-1252 file, a scripted invoice, the refusals of both forms, and the invoice written as
// an e-invoice that the official rules accept and whose amounts are the printed ones.
#include "common/money.h"
#include "common/textfile.h"
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

test::CliOutput runIn(const test::TempDataFolder& folder, const QStringList& args)
{
    return test::runCli(QStringList{QStringLiteral("--daten"), folder.path()} + args);
}

// Harvest 7 with its four lots; the own data and the buyer set through the command line.
bool prepared(const test::TempDataFolder& folder, const QStringList& seller = Seller)
{
    test::invoiceLots(folder.openDatabase()->shared());
    return runIn(folder, seller).code == 0 && runIn(folder, Buyer).code == 0;
}

int invoiceCount(const test::TempDataFolder& folder)
{
    return scalar(folder.openDatabase()->shared(), QStringLiteral("SELECT count(*) FROM Rechnungen")).toInt();
}

} // namespace

class TestRechnungCli : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder; // invoice 20260001 over lots 3 and 2
    QString m_text;

private slots:
    void initTestCase()
    {
        test::invoiceLots(m_folder.openDatabase()->shared());
        const test::CliOutput stored = runIn(m_folder, {"rechnung", "neu", "7", "3,2", "--abnehmer", "Säge O'Neill", "--name",
                                                        "Jörg O'Neill", "--mwst", "19", "--datum", "15.11.2026"});
        QVERIFY2(stored.code == 0, qPrintable(stored.err));
        m_text = scalar(m_folder.openDatabase()->shared(), QStringLiteral("SELECT Inhalt FROM Rechnungen")).toString();
        QVERIFY(m_text.contains(QStringLiteral("Pfähle  Los: 3")));
    }

    void storedTextOnStdoutAndAsFile()
    {
        QCOMPARE(runIn(m_folder, {"rechnung", "20260001"}).out, m_text + u'\n');
        const QString path = m_folder.filePath(QStringLiteral("rechnung.txt"));
        QCOMPARE(runIn(m_folder, {"rechnung", "20260001", "--datei", path}).code, 0);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), encodeCp1252(QString(m_text).replace(u'\n', QStringLiteral("\r\n")) + QStringLiteral("\r\n")));
    }

    // Refusals of both forms and of erechnung: nothing printed, nothing stored.
    void refusals_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        const QStringList neu{"rechnung", "neu"};
        QTest::newRow("lot invoiced already") << neu + QStringList{"7", "1,3", "--abnehmer", "X"} << 1
                                              << "...das Los 3 des Hiebs 7 bereits in Rechnung 20260001 abgerechnet ist.";
        QTest::newRow("no such lot") << neu + QStringList{"7", "9", "--abnehmer", "X"} << 1 << "...es das Los 9 beim Hieb 7 nicht gibt.";
        QTest::newRow("no such harvest") << neu + QStringList{"8", "1", "--abnehmer", "X"} << 1 << "8";
        QTest::newRow("no address for a new buyer") << neu + QStringList{"7", "1", "--abnehmer", "Neukunde"} << 1
                                                    << "...Bei der Anschrift (Name, Straße, Wohnort) mindestens in einem Feld";
        QTest::newRow("no buyer") << neu + QStringList{"7", "1"} << 2 << "--abnehmer KURZNAME";
        QTest::newRow("no lot") << neu + QStringList{"7", "--abnehmer", "X"} << 2 << "rechnung neu erwartet";
        QTest::newRow("option of neu on a stored one") << QStringList{"rechnung", "20260001", "--mwst", "19"} << 2 << "--mwst";
        QTest::newRow("unknown number") << QStringList{"rechnung", "20269999"} << 1 << "Die Rechnung mit der Nummer 20269999 wurde nicht gefunden.";
        QTest::newRow("no number") << QStringList{"rechnung"} << 2 << "rechnung erwartet die Rechnungsnummer.";
        QTest::newRow("e-invoice: a PDF that cannot be read") << QStringList{"erechnung", "%1kaputt.pdf"} << 1
                                                              << "Die PDF-Datei kann nicht gelesen werden.";
        QTest::newRow("e-invoice: no file named") << QStringList{"erechnung"} << 2 << "erechnung";
    }
    void refusals()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QFETCH(QString, message);
        QFile broken(m_folder.filePath(QStringLiteral("kaputt.pdf")));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("%PDF-1.7\nnichts weiter");
        broken.close();
        args.replaceInStrings(QStringLiteral("%1"), m_folder.path());
        const test::CliOutput o = runIn(m_folder, args);
        QCOMPARE(o.code, code);
        QVERIFY2(o.err.contains(message), qPrintable(o.err));
        QVERIFY(o.out.isEmpty());
        QCOMPARE(invoiceCount(m_folder), 1);
    }

    // The buyer's last details fill what is not given, the lots come in the lot list's order, and
    // the total printed on the terminal is the invoice's.
    void scriptedInvoiceTakesTheBuyersLastDetails()
    {
        const test::CliOutput stored = runIn(m_folder, {"rechnung", "neu", "7", "4,1", "--abnehmer", "Säge O'Neill", "--abgabe", "2",
                                                        "--mwst", "10,7", "--skonto", "3", "--datum", "01.12.2026"});
        QVERIFY2(stored.out.startsWith(QStringLiteral("Rechnung 20260002 gespeichert")), qPrintable(stored.out + stored.err));
        const QString text = runIn(m_folder, {"rechnung", "20260002"}).out;
        QVERIFY(invoiceLines(text).contains(QStringLiteral("Jörg O'Neill")));
        QVERIFY(text.indexOf(QStringLiteral("Stammholz  Los: 1")) < text.indexOf(QStringLiteral("Schichtholz  Los: 4")));
        QVERIFY(text.contains(QStringLiteral("01.12.2026")));
        const test::PrintedInvoice p = test::readPrintedInvoice(invoiceLines(text));
        QVERIFY(p.total);
        QVERIFY(stored.out.trimmed().endsWith(QStringLiteral("Rechnungsbetrag: ") + centsText(*p.total)));
    }

    void eInvoiceCheckedAndReadBack_data()
    {
        QTest::addColumn<QString>("regime");
        QTest::addColumn<QString>("lots");
        QTest::addColumn<QStringList>("percentages");
        QTest::addColumn<bool>("xrechnung");
        QTest::newRow("every kind of lot, levy and discount") << "regel" << "1,2,3,4"
                                                           << QStringList{"--abgabe", "2", "--mwst", "19", "--skonto", "3", "--skonto-tage", "14"}
                                                           << true;
        QTest::newRow("flat rate § 24 at 5,5 %") << "pauschal24" << "3,4" << QStringList{"--mwst", "5,5", "--abgabe", "0,4"} << true;
        QTest::newRow("small business § 19") << "klein19" << "1,2" << QStringList{"--mwst", "0", "--abgabe", "2"} << true;
        QTest::newRow("plain EN 16931") << "regel" << "2,4" << QStringList{"--mwst", "10,7", "--abgabe", "2"} << false;
    }
    void eInvoiceCheckedAndReadBack()
    {
        QFETCH(QString, regime);
        QFETCH(QString, lots);
        QFETCH(QStringList, percentages);
        QFETCH(bool, xrechnung);
        test::TempDataFolder folder;
        QVERIFY(prepared(folder, Seller + QStringList{"besteuerung=" + regime}));
        const test::CliOutput stored =
            runIn(folder, QStringList{"rechnung", "neu", "7", lots, "--abnehmer", "Säge O'Neill", "--datum", "20.11.2026"} + percentages);
        QVERIFY2(stored.code == 0, qPrintable(stored.err));

        const QString path = folder.filePath(QStringLiteral("Rechnung.xml"));
        const test::CliOutput written = runIn(folder, {"rechnung", "20260001", xrechnung ? "--xrechnung" : "--en16931", path});
        QVERIFY2(written.code == 0, qPrintable(written.err));
        const auto check = test::checkEInvoice(path, xrechnung);
        QVERIFY2(check, "the e-invoice rule files are not beside the repository");
        QVERIFY2(check->clean(), qPrintable(check->report));

        // The file's amounts are the printed invoice's, to the cent.
        const test::PrintedInvoice printed = test::readPrintedInvoice(invoiceLines(runIn(folder, {"rechnung", "20260001"}).out));
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
        const test::CliOutput shown = runIn(folder, {"erechnung", path});
        QCOMPARE(shown.code, 0);
        QVERIFY2(shown.out.contains(QStringLiteral("Rechnungsbetrag: ") + einvoice::euroText(e.duePayable)), qPrintable(shown.out));
    }

    // Lots whose prices changed after the invoice was stored: refused with the reason, and no file.
    void eInvoiceRefusedWhenThePricesChanged()
    {
        test::TempDataFolder folder;
        QVERIFY(prepared(folder));
        QCOMPARE(runIn(folder, {"rechnung", "neu", "7", "3", "--abnehmer", "Säge O'Neill", "--mwst", "19"}).code, 0);
        execSql(folder.openDatabase()->shared(), QStringLiteral("UPDATE Pfähle SET Preis_berechnet = Preis_berechnet + 1"));
        const QString path = folder.filePath(QStringLiteral("Rechnung.xml"));
        const test::CliOutput written = runIn(folder, {"rechnung", "20260001", "--xrechnung", path});
        QCOMPARE(written.code, 1);
        QVERIFY2(written.err.contains(QStringLiteral("seit dem Speichern geändert")), qPrintable(written.err));
        QVERIFY(!QFile::exists(path));
    }
};

TARVIK_TEST_CORE_MAIN(TestRechnungCli)
#include "tst_rechnungcli.moc"
