// tarvik-cli rechnung: a stored invoice's text on stdout (UTF-8) and as a Windows-1252 file.
#include "cli/cli.h"
#include "support/clirun.h"
#include "common/textfile.h"
#include "invoices/invoice.h"
#include "invoices/invoicedata.h"
#include "support/tempdatafolder.h"

#include <QFile>
#include <cstdio>

using namespace tarvik;

namespace {

using Output = test::CliOutput;
using test::runCli;

} // namespace

class TestRechnungCli : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    QString m_text;

private slots:
    void initTestCase()
    {
        auto db = m_folder.openDatabase();
        const test::InvoiceLots lots = test::invoiceLots(db->shared());
        Einstellungen settings;
        test::ScriptedPrompter prompter;
        FixedClock clock{QDate(2026, 11, 15)};
        const AppContext context{db->shared(), settings, m_folder.path(), prompter, clock};
        InvoiceInput in;
        in.buyer = QStringLiteral("Säge O'Neill");
        in.name = QStringLiteral("Jörg O'Neill");
        in.number = QStringLiteral("20260001");
        in.date = QStringLiteral("15.11.2026");
        in.vat = QStringLiteral("19");
        in.lotIds = {lots.poleLot, lots.flatLot};
        QCOMPARE(storeInvoice(context, in), std::optional<qint32>(20260001));
        m_text = scalar(db->shared(), QStringLiteral("SELECT Inhalt FROM Rechnungen")).toString();
        QVERIFY(m_text.contains(QStringLiteral("Pfähle  Los: 3")));
    }

    void printsTheStoredText()
    {
        const Output o = runCli({QStringLiteral("--daten"), m_folder.path(), QStringLiteral("rechnung"), QStringLiteral("20260001")});
        QCOMPARE(o.code, 0);
        QCOMPARE(o.out, m_text + u'\n');
    }

    void writesTheFileInWindows1252()
    {
        const QString path = m_folder.filePath(QStringLiteral("rechnung.txt"));
        const Output o = runCli({QStringLiteral("--daten"), m_folder.path(), QStringLiteral("rechnung"), QStringLiteral("20260001"),
                                 QStringLiteral("--datei"), path});
        QCOMPARE(o.code, 0);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), encodeCp1252(QString(m_text).replace(u'\n', QStringLiteral("\r\n")) + QStringLiteral("\r\n")));
    }

    // Refusals of both forms: nothing printed, nothing stored.
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
        QTest::newRow("number with a letter") << neu + QStringList{"7", "1", "--abnehmer", "X", "--renr", "12a"} << 1
                                              << "...die Rechnungsnummer nur aus Ziffern bestehen darf";
        QTest::newRow("number taken") << neu + QStringList{"7", "1", "--abnehmer", "X", "--renr", "20260001"} << 1
                                      << "...die Rechnungsnummer bereits vergeben ist.";
        QTest::newRow("date that does not exist") << neu + QStringList{"7", "1", "--abnehmer", "X", "--datum", "30.02.2026"} << 1
                                                  << "...das Datum nicht korrekt ist.";
        QTest::newRow("no address for a new buyer") << neu + QStringList{"7", "1", "--abnehmer", "Neukunde"} << 1
                                                    << "...Bei der Anschrift (Name, Straße, Wohnort) mindestens in einem Feld";
        QTest::newRow("no buyer") << neu + QStringList{"7", "1"} << 2 << "--abnehmer KURZNAME";
        QTest::newRow("no lot") << neu + QStringList{"7", "--abnehmer", "X"} << 2 << "rechnung neu erwartet";
        QTest::newRow("lot list with junk") << neu + QStringList{"7", "1,x", "--abnehmer", "X"} << 2 << "rechnung neu erwartet";
        QTest::newRow("option of neu on a stored one") << QStringList{"rechnung", "20260001", "--mwst", "19"} << 2 << "--mwst";
        QTest::newRow("unknown number") << QStringList{"rechnung", "20269999"} << 1 << "Die Rechnung mit der Nummer 20269999 wurde nicht gefunden.";
        QTest::newRow("not a number") << QStringList{"rechnung", "abc"} << 2 << "rechnung erwartet die Rechnungsnummer.";
        QTest::newRow("no number") << QStringList{"rechnung"} << 2 << "rechnung erwartet die Rechnungsnummer.";
    }
    void refusals()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QFETCH(QString, message);
        const Output o = runCli(QStringList{QStringLiteral("--daten"), m_folder.path()} + args);
        QCOMPARE(o.code, code);
        QVERIFY2(o.err.contains(message), qPrintable(o.err));
        QVERIFY(o.out.isEmpty());
        auto db = m_folder.openDatabase();
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Rechnungen")).toInt(), 1);
    }

    // A scripted invoice: the buyer's last details fill what is not given, the lots come in the
    // lot list's order, and the printed text adds up to the stored amount.
    void newInvoiceAddsUpToItsStoredAmount()
    {
        const Output stored = runCli({QStringLiteral("--daten"), m_folder.path(), QStringLiteral("rechnung"), QStringLiteral("neu"),
                                      QStringLiteral("7"), QStringLiteral("4,1"), QStringLiteral("--abnehmer"), QStringLiteral("Säge O'Neill"),
                                      QStringLiteral("--abgabe"), QStringLiteral("2"), QStringLiteral("--mwst"), QStringLiteral("10,7"),
                                      QStringLiteral("--skonto"), QStringLiteral("3"), QStringLiteral("--datum"), QStringLiteral("01.12.2026")});
        QCOMPARE(stored.code, 0);
        QVERIFY2(stored.out.startsWith(QStringLiteral("Rechnung 20260002 gespeichert")), qPrintable(stored.out + stored.err));

        const Output o = runCli({QStringLiteral("--daten"), m_folder.path(), QStringLiteral("rechnung"), QStringLiteral("20260002")});
        QCOMPARE(o.code, 0);
        const QStringList lines = invoiceLines(o.out);
        QVERIFY(lines.contains(QStringLiteral("Jörg O'Neill")));
        QVERIFY(o.out.indexOf(QStringLiteral("Stammholz  Los: 1")) < o.out.indexOf(QStringLiteral("Schichtholz  Los: 4")));
        QVERIFY(o.out.contains(QStringLiteral("01.12.2026")));
        const test::PrintedInvoice p = test::readPrintedInvoice(lines);
        QVERIFY(p.net && p.levy && p.vat && p.discount && p.total);
        QCOMPARE(p.prices, *p.net);
        QCOMPARE(*p.net - *p.levy + *p.vat - *p.discount, *p.total);
        QVERIFY(stored.out.trimmed().endsWith(QStringLiteral("Rechnungsbetrag: ") + centsText(*p.total)));

        auto db = m_folder.openDatabase();
        QCOMPARE(qRound64(scalar(db->shared(), QStringLiteral("SELECT Betrag FROM Rechnungen WHERE ReNr = 20260002")).toDouble() * 100), *p.total);
        QCOMPARE(scalar(db->shared(), QStringLiteral("SELECT count(*) FROM Lose WHERE ReNr = 20260002")).toInt(), 2);
    }

};

TARVIK_TEST_CORE_MAIN(TestRechnungCli)
#include "tst_rechnungcli.moc"
