// Invoices: number proposal, amount, the text of each lot kind against golden files, the checks
// with their exact reasons, and the store as one transaction.
// Set TARVIK_UPDATE_GOLDEN=1 to write the golden files anew after a deliberate change.
#include "common/numbers.h"
#include "common/textfile.h"
#include "invoices/invoice.h"
#include "invoices/invoicedata.h"
#include "settings/settings.h"
#include "support/entryfixture.h"

#include <QFile>

using namespace tarvik;

namespace {

InvoiceInput typedInput(QList<qint32> lots)
{
    InvoiceInput in;
    in.buyer = QStringLiteral("Sägewerk O'Neill \"Nord\"");
    in.name = QStringLiteral("Jörg O'Neill");
    in.street = QStringLiteral("Am Bühl 3");
    in.town = QStringLiteral("88662 Überlingen");
    in.customerInfo = QStringLiteral("K-4711");
    in.number = QStringLiteral("20260001");
    in.levy = QStringLiteral("2");
    in.vat = QStringLiteral("10,7");
    in.discount = QStringLiteral("0");
    in.date = QStringLiteral("15.11.2026");
    in.sender = {QStringLiteral("Forstbetrieb Anna Müller"), QStringLiteral("Waldweg 1"), QStringLiteral("78333 Stockach"),
                 QString(), QStringLiteral("Tel. 07771 1234"), QString()};
    in.discountNote = QStringLiteral("2% Skonto bis 21 Tage");
    in.closing = QStringLiteral("Bank: Sparkasse, IBAN DE00 1234");
    in.lotIds = std::move(lots);
    return in;
}

void compareWithGolden(const QStringList& lines, const QString& name)
{
    const QString golden = QStringLiteral(TARVIK_TEST_DATA "/") + name;
    if (qEnvironmentVariableIsSet("TARVIK_UPDATE_GOLDEN")) {
        QVERIFY(writeTextFile(golden, lines).ok);
        return;
    }
    const TextFileResult want = readTextFile(golden);
    QVERIFY2(want.ok, qPrintable(golden));
    for (int i = 0; i < std::max(want.lines.size(), lines.size()); ++i)
        if (want.lines.value(i) != lines.value(i))
            QFAIL(qPrintable(QStringLiteral("%1, first difference in line %2:\n- %3\n+ %4")
                                 .arg(name).arg(i + 1).arg(want.lines.value(i), lines.value(i))));
}

QString lotField(const QSqlDatabase& db, qint32 lotId, const char* column)
{
    return scalar(db, QStringLiteral("SELECT %1 FROM Lose WHERE ID = ?").arg(QString::fromUtf8(column)), {lotId}).toString();
}

} // namespace

class TestInvoice : public QObject, protected test::EntryFixture {
    Q_OBJECT
    test::InvoiceLots m_lots;

    void reset()
    {
        resetDatabase(std::nullopt, {QString::fromUtf8(RememberedInvoiceFile)});
        m_lots = test::invoiceLots(db());
    }

private slots:
    void proposedNumber_data()
    {
        QTest::addColumn<QList<qint32>>("stored");
        QTest::addColumn<QDate>("today");
        QTest::addColumn<qint32>("proposal");
        QTest::newRow("empty table seeds with the year") << QList<qint32>{} << QDate(2026, 11, 15) << 20260001;
        QTest::newRow("highest plus one") << QList<qint32>{20260003, 20260007, 20260005} << QDate(2026, 11, 15) << 20260008;
        QTest::newRow("runs on into the next year") << QList<qint32>{20260007} << QDate(2027, 1, 10) << 20260008;
        QTest::newRow("numbers 0 do not count") << QList<qint32>{0, -4} << QDate(2027, 1, 10) << 20270001;
    }
    void proposedNumber()
    {
        QFETCH(QList<qint32>, stored);
        QFETCH(QDate, today);
        QFETCH(qint32, proposal);
        resetDatabase(std::nullopt);
        for (qint32 n : stored)
            execSql(db(), QStringLiteral("INSERT INTO Rechnungen(ReNr, Abnehmer) VALUES (?, 'X')"), {n});
        QCOMPARE(proposedInvoiceNumber(db(), today), proposal);
    }

    void amount_data()
    {
        QTest::addColumn<Cents>("net");
        QTest::addColumn<QString>("levy");
        QTest::addColumn<QString>("vat");
        QTest::addColumn<QString>("discount");
        QTest::addColumn<QString>("levyAmount");
        QTest::addColumn<QString>("vatAmount");
        QTest::addColumn<QString>("total");
        QTest::newRow("VAT on the net before the levy") << Cents(100000) << "2" << "10,7" << "0" << "20,00" << "107,00" << "1087,00";
        QTest::newRow("negative percentages count as 0") << Cents(100000) << "-2" << "-19" << "-3" << "0,00" << "0,00" << "1000,00";
        QTest::newRow("empty and junk count as 0") << Cents(50000) << "" << "abc" << "" << "0,00" << "0,00" << "500,00";
        // 1087.00 gross, 2 % of it off: 21.74.
        QTest::newRow("discount on the gross") << Cents(100000) << "2" << "10,7" << "2" << "20,00" << "107,00" << "1065,26";
        // 102.50 × 19 % = 19.475: the half cent goes up.
        QTest::newRow("half a cent goes up") << Cents(10250) << "0" << "19" << "0" << "0,00" << "19,48" << "121,98";
        // Levy 2.3484 and VAT 12.56394 are rounded first: 117.42 − 2.35 + 12.56 = 127.63, not 127.64.
        QTest::newRow("total of the rounded lines") << Cents(11742) << "2" << "10,7" << "0" << "2,35" << "12,56" << "127,63";
        // 50 % of a gross of 1.01 is 0.505: 0.51 off.
        QTest::newRow("half-cent discount") << Cents(101) << "0" << "0" << "50" << "0,00" << "0,00" << "0,50";
        QTest::newRow("three-decimal percent counts with two") << Cents(100000) << "0" << "7,005" << "0" << "0,00" << "70,10" << "1070,10";
    }
    void amount()
    {
        QFETCH(Cents, net);
        QFETCH(QString, levy);
        QFETCH(QString, vat);
        QFETCH(QString, discount);
        const InvoiceAmount a = invoiceAmount(net, invoicePercent(levy), invoicePercent(vat), invoicePercent(discount));
        QTEST(centsText(a.levy), "levyAmount");
        QTEST(centsText(a.vat), "vatAmount");
        QTEST(centsText(a.total), "total");
        QCOMPARE(a.total, a.gross - a.discount);
        QCOMPARE(a.gross, a.net - a.levy + a.vat);
    }

    // The lots as numbered in invoiceLots(); the last row with a discount and reworded captions.
    void lotText_data()
    {
        QTest::addColumn<QList<int>>("lots");
        QTest::addColumn<QString>("discount");
        QTest::addColumn<QString>("golden");
        QTest::addColumn<QString>("net");
        QTest::newRow("log lot, one line per group") << QList<int>{1} << "0" << "rechnung_stammholz.txt" << "377,45";
        QTest::newRow("log lot at a flat price") << QList<int>{2} << "0" << "rechnung_pauschal.txt" << "1250,50";
        QTest::newRow("pole lot") << QList<int>{3} << "0" << "rechnung_pfaehle.txt" << "111,50";
        QTest::newRow("stacked-wood lot") << QList<int>{4} << "0" << "rechnung_schichtholz.txt" << "462,50";
        QTest::newRow("three lots, discount, own captions") << QList<int>{4, 1, 3} << "3" << "rechnung_skonto.txt" << "951,45";
    }
    void lotText()
    {
        QFETCH(QList<int>, lots);
        QFETCH(QString, golden);
        reset();
        const qint32 ids[] = {0, m_lots.logLot, m_lots.flatLot, m_lots.poleLot, m_lots.stackLot};
        QList<qint32> chosen;
        for (int lot : lots)
            chosen << ids[lot];
        InvoiceInput in = typedInput(chosen);
        QFETCH(QString, discount);
        in.discount = discount;
        if (lots.size() > 1) {
            m_settings.text[15] = QStringLiteral("Ihre Kundennummer");
            m_settings.text[17] = QStringLiteral("Beleg-Nr.");
        }
        const InvoicePreview preview = invoicePreview(db(), in, InvoiceCaptions::from(m_settings));
        QTEST(centsText(preview.amount.net), "net");
        compareWithGolden(invoiceLines(preview.text), golden);
    }

    // What the buyer checks with a pocket calculator: every printed price adds up to the net, the
    // amount lines to the total, and the stored Betrag is the printed total.
    void printedLinesAddUp()
    {
        reset();
        InvoiceInput in = typedInput({m_lots.logLot, m_lots.flatLot, m_lots.poleLot, m_lots.stackLot});
        in.levy = QStringLiteral("0,4");
        in.vat = QStringLiteral("5,5");
        in.discount = QStringLiteral("2,5");
        QVERIFY(storeInvoice(context(), in));
        const test::PrintedInvoice p = test::readPrintedInvoice(invoiceLines(loadInvoice(db(), 20260001)->text));
        QVERIFY(p.net && p.levy && p.vat && p.total);
        QCOMPARE(p.prices, *p.net);
        QCOMPARE(*p.net - *p.levy + *p.vat - p.discount.value_or(0), *p.total);
        const qint64 total = *p.total;
        QCOMPARE(qRound64(scalar(db(), QStringLiteral("SELECT Betrag FROM Rechnungen")).toDouble() * 100), total);
        QCOMPARE(loadInvoice(db(), 20260001)->amount, total);
    }

    void noLotNoText()
    {
        reset();
        QVERIFY(invoicePreview(db(), typedInput({}), InvoiceCaptions{}).text.isEmpty());
        QVERIFY(invoicePreview(db(), typedInput({999999}), InvoiceCaptions{}).text.isEmpty());
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("date");
        QTest::addColumn<QString>("reason");
        QTest::newRow("number exists") << "20269999" << "15.11.2026" << "...die Rechnungsnummer bereits vergeben ist.";
        QTest::newRow("number 0") << "0" << "15.11.2026" << "...die Rechnungsnummer größer 0 sein muss.";
        QTest::newRow("number not a number") << "abc" << "15.11.2026" << "...die Rechnungsnummer nur aus Ziffern bestehen darf (höchstens 2147483647).";
        QTest::newRow("number beyond the column") << "2147483648" << "15.11.2026" << "...die Rechnungsnummer nur aus Ziffern bestehen darf (höchstens 2147483647).";
        QTest::newRow("date that does not exist") << "20260001" << "31.02.2026" << "...das Datum nicht korrekt ist.";
    }
    void refusals()
    {
        QFETCH(QString, number);
        QFETCH(QString, date);
        QFETCH(QString, reason);
        reset();
        execSql(db(), QStringLiteral("INSERT INTO Rechnungen(ReNr, Abnehmer) VALUES (20269999, 'X')"));
        InvoiceInput in = typedInput({m_lots.logLot});
        in.number = number;
        in.date = date;
        QVERIFY(!storeInvoice(context(), in));
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n") + reason});
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Rechnungen")).toInt(), 1);
        QCOMPARE(lotField(db(), m_lots.logLot, "ReNr"), QStringLiteral("0"));
        QVERIFY(!QFile::exists(m_folder.filePath(QString::fromUtf8(RememberedInvoiceFile))));
    }

    void storeWritesInvoiceLotsAndRememberedTexts()
    {
        reset();
        const qint32 vanished = m_lots.flatLot;
        InvoiceInput in = typedInput({m_lots.logLot, vanished, m_lots.poleLot});
        const InvoicePreview preview = invoicePreview(db(), in, InvoiceCaptions{});
        execSql(db(), QStringLiteral("DELETE FROM Lose WHERE ID = ?"), {vanished}); // removed after it was chosen
        QCOMPARE(storeInvoice(context(), in), std::optional<qint32>(20260001));
        QVERIFY(m_prompter.messages().isEmpty());

        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(printf('%s|%s|%s|%s|%s|%d|%.2f|%.2f|%.2f|%s', Abnehmer, Vor_Nachname, "
                                             "Strasse, Wohnort, Kundeninfo, ReNr, CMA_Abgabe_Proz, MwSt_Proz, Skonto_Proz, Datum)) "
                                             "FROM Rechnungen")).toString(),
                 QStringLiteral("Sägewerk O'Neill \"Nord\"|Jörg O'Neill|Am Bühl 3|88662 Überlingen|K-4711|20260001|2.00|10.70|0.00|2026-11-15"));
        const QString stored = scalar(db(), QStringLiteral("SELECT Inhalt FROM Rechnungen")).toString();
        QCOMPARE(stored, invoicePreview(db(), in, InvoiceCaptions{}).text); // without the vanished lot
        QVERIFY(stored != preview.text);
        // Net 377.45 + 111.50 = 488.95; levy 9.779, VAT 52.31765: 531.48865.
        QCOMPARE(formatDecimal(scalar(db(), QStringLiteral("SELECT Betrag FROM Rechnungen")).toDouble(), 2), QStringLiteral("531,49"));

        for (qint32 lot : {m_lots.logLot, m_lots.poleLot}) {
            QCOMPARE(lotField(db(), lot, "ReNr"), QStringLiteral("20260001"));
            QCOMPARE(lotField(db(), lot, "Abnehmer"), in.buyer);
            QCOMPARE(lotField(db(), lot, "Abgerechnet"), QStringLiteral("N"));
        }
        QCOMPARE(lotField(db(), m_lots.stackLot, "ReNr"), QStringLiteral("0"));
        QCOMPARE(openLots(db()).size(), 1);
        QCOMPARE(openLots(db()).value(0).lotId, m_lots.stackLot);

        QFile remembered(m_folder.filePath(QString::fromUtf8(RememberedInvoiceFile)));
        QVERIFY(remembered.open(QIODevice::ReadOnly));
        QCOMPARE(remembered.readAll(), encodeCp1252(QStringLiteral("2\r\n10,7\r\n0\r\nForstbetrieb Anna Müller\r\nWaldweg 1\r\n"
                                                                   "78333 Stockach\r\n\r\nTel. 07771 1234\r\n\r\n"
                                                                   "2% Skonto bis 21 Tage\r\nBank: Sparkasse, IBAN DE00 1234\r\n")));
        InvoiceInput next;
        QVERIFY(loadRemembered(m_folder.path(), next));
        QCOMPARE(rememberedLines(next), rememberedLines(in));
    }

    void withoutBuyerTheLotsKeepTheirBuyer()
    {
        reset();
        execSql(db(), QStringLiteral("UPDATE Lose SET Abnehmer = 'Holz Meier' WHERE ID = ?"), {m_lots.poleLot});
        InvoiceInput in = typedInput({m_lots.poleLot});
        in.buyer = QStringLiteral("  ");
        QVERIFY(storeInvoice(context(), in));
        QCOMPARE(lotField(db(), m_lots.poleLot, "Abnehmer"), QStringLiteral("Holz Meier"));
        QCOMPARE(lotField(db(), m_lots.poleLot, "ReNr"), QStringLiteral("20260001"));
    }

    void failureHalfWayLeavesNothing()
    {
        reset();
        // The second lot's update fails, as a full disk would make it.
        execSql(db(), QStringLiteral("CREATE TRIGGER fail_second BEFORE UPDATE ON Lose WHEN OLD.ID = %1 "
                                     "BEGIN SELECT RAISE(ABORT, 'disk full'); END").arg(m_lots.poleLot));
        InvoiceInput in = typedInput({m_lots.logLot, m_lots.poleLot});
        QVERIFY_THROWS_EXCEPTION(StoreError, storeInvoice(context(), in));
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Rechnungen")).toInt(), 0);
        QCOMPARE(lotField(db(), m_lots.logLot, "ReNr"), QStringLiteral("0"));
        QCOMPARE(lotField(db(), m_lots.logLot, "Abnehmer"), QString());
        QVERIFY(!QFile::exists(m_folder.filePath(QString::fromUtf8(RememberedInvoiceFile))));
        QCOMPARE(openLots(db()).size(), 4);
    }

    void buyerDetailsFromTheLatestInvoice()
    {
        reset();
        execSql(db(), QStringLiteral("INSERT INTO Rechnungen(Abnehmer, Vor_Nachname, Strasse, Wohnort, Kundeninfo, ReNr, CMA_Abgabe_Proz, "
                                     "MwSt_Proz, Skonto_Proz, Datum) VALUES "
                                     "('O''Neill', 'alt', 'alte Straße', 'Ort', 'K1', 1, 1, 7, 0, '2025-05-01'), "
                                     "('O''Neill', 'Jörg O''Neill', 'Am Bühl 3', 'Überlingen', 'K2', 2, 2, 10.7, 3, '2026-02-01'), "
                                     "('Meier', 'Meier', '', '', '', 3, 0, 0, 0, '2026-03-01')"));
        const auto d = buyerDetails(db(), QStringLiteral("O'Neill"));
        QVERIFY(d);
        QCOMPARE(QStringList({d->name, d->street, d->customerInfo, formatDecimal(d->vat, 2), formatDecimal(d->discount, 2)}),
                 (QStringList{QStringLiteral("Jörg O'Neill"), QStringLiteral("Am Bühl 3"), QStringLiteral("K2"), QStringLiteral("10,70"),
                              QStringLiteral("3,00")}));
        QVERIFY(!buyerDetails(db(), QStringLiteral("Niemand")));
        QCOMPARE(invoiceBuyers(db()), (QStringList{QStringLiteral("Meier"), QStringLiteral("O'Neill")}));
        QCOMPARE(invoiceNumbers(db()), (QList<qint32>{3, 2, 1}));
        QCOMPARE(loadInvoice(db(), 2)->town, QStringLiteral("Überlingen"));
        QCOMPARE(loadInvoice(db(), 2)->date, QStringLiteral("01.02.2026"));
    }
};

TARVIK_TEST_CORE_MAIN(TestInvoice)
#include "tst_invoice.moc"
