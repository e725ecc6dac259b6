// EF_Eingabe_Rechnungen through its controls: choosing lots of two kinds and storing, a refused
// store with every reason, the buyer's details, stepping through the hub's invoices, captions,
// and printing through the output window.
#include "common/textfile.h"
#include "common/ui/gridformat.h"
#include "entry/ui/hubdialog.h"
#include "invoices/invoicedata.h"
#include "invoices/einvoice/pdfreader.h"
#include "invoices/ui/invoicedialog.h"
#include "parties/parties.h"
#include "reports/ui/textoutputwindow.h"
#include "support/entryfixture.h"
#include "support/widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>

using namespace tarvik;
using test::child;

namespace {
// Key clicks carry only Latin-1 keys; umlauts arrive as an edit would deliver them.
void typeInto(QLineEdit* edit, const QString& text)
{
    edit->setText(text);
    emit edit->textEdited(text);
}
} // namespace

class TestInvoiceDialog : public QObject, protected test::EntryFixture {
    Q_OBJECT
    test::InvoiceLots m_lots;

    static void mark(QTableWidget* li, qint32 lotId)
    {
        for (int r = 0; r < li->rowCount(); ++r)
            if (li->item(r, 0)->data(Qt::UserRole).toInt() == lotId)
                return li->selectionModel()->select(li->model()->index(r, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QFAIL("lot not in the list");
    }
    static void typeAddress(QDialog& d)
    {
        child<QComboBox>(d, "kom(0)")->setEditText(QStringLiteral("Sägewerk O'Neill \"Nord\""));
        typeInto(child<QLineEdit>(d, "t(0)"), QStringLiteral("Jörg O'Neill"));
        typeInto(child<QLineEdit>(d, "t(1)"), QStringLiteral("Am Bühl 3"));
        typeInto(child<QLineEdit>(d, "t(2)"), QStringLiteral("88662 Überlingen"));
    }
    void storeThroughCore(const QString& number, const QString& buyer, qint32 lot)
    {
        InvoiceInput in;
        in.buyer = buyer;
        in.name = buyer;
        in.number = number;
        in.date = QStringLiteral("01.10.2026");
        in.vat = QStringLiteral("19");
        in.lotIds = {lot};
        const AppContext ctx = context();
        QVERIFY(storeInvoice(ctx, in));
    }

private slots:
    void init()
    {
        resetDatabase(std::nullopt, {QString::fromUtf8(RememberedInvoiceFile)});
        m_lots = test::invoiceLots(db());
    }

    void twoLotsOfDifferentKindsAreStored()
    {
        QVERIFY(writeTextFile(m_folder.filePath(QString::fromUtf8(RememberedInvoiceFile)),
                              {QStringLiteral("2"), QStringLiteral("10,7"), QStringLiteral("0"), QStringLiteral("Forstbetrieb Müller"),
                               QString(), QString(), QString(), QString(), QString(), QStringLiteral("Skontohinweis"),
                               QStringLiteral("IBAN DE00")}).ok);
        InvoiceDialog d(context(), InvoiceDialog::Mode::Neu);
        d.show();
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), QStringLiteral("20260001"));
        QCOMPARE(child<QLineEdit>(d, "t(4)")->text(), QStringLiteral("Forstbetrieb Müller"));
        QCOMPARE(child<QLineEdit>(d, "tdat(0)")->text(), QStringLiteral("21.11.2026"));
        auto* li = child<QTableWidget>(d, "li");
        QCOMPARE(li->rowCount(), 4);
        QVERIFY(looksReadOnly(child<QPlainTextEdit>(d, "t(3)")));

        typeAddress(d);
        mark(li, m_lots.stackLot);
        mark(li, m_lots.logLot);
        const QString preview = child<QPlainTextEdit>(d, "t(3)")->toPlainText();
        QVERIFY(preview.indexOf(QStringLiteral("Stammholz  Los: 1")) < preview.indexOf(QStringLiteral("Schichtholz  Los: 4")));
        // 377.45 + 462.50 = 839.95; levy 16.799 is 16.80, VAT 89.87465 is 89.87: 913.02
        QCOMPARE(child<QLabel>(d, "bezbetrag")->text(), QStringLiteral("Rechnungsbetrag: 913,02"));

        QVERIFY(!child<QPushButton>(d, "ok(1)")->isEnabled());
        QVERIFY(!child<QPushButton>(d, "ok(2)")->isEnabled());
        child<QPushButton>(d, "ok(0)")->click();
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Rechnung 20260001 ist gespeichert.")});
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Inhalt FROM Rechnungen WHERE ReNr = 20260001")).toString(), preview);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Betrag FROM Rechnungen WHERE ReNr = 20260001")).toDouble(), 913.02);
        QCOMPARE(child<QPlainTextEdit>(d, "t(3)")->toPlainText(), preview); // still on show, for "Drucken"
        // The invoiced lots leave the list; marking another one starts the next invoice.
        QCOMPARE(li->rowCount(), 2);
        mark(li, m_lots.poleLot);
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), QStringLiteral("20260002"));
        QVERIFY(child<QPlainTextEdit>(d, "t(3)")->toPlainText().contains(QStringLiteral("Pfähle  Los: 3")));
    }

    // The own data fill the sender frame; the invoice just stored is what "E-Rechnung speichern"
    // writes, with the date of supply and discount days typed in the window.
    void storedInvoiceBecomesAnEInvoice()
    {
        parties::OwnData own;
        own.name = QStringLiteral("Forstbetrieb Anna Müller");
        own.street = QStringLiteral("Waldweg 1");
        own.postCode = QStringLiteral("78333");
        own.city = QStringLiteral("Stockach");
        own.phone = QStringLiteral("07771 1234");
        own.email = QStringLiteral("anna@example.de");
        own.vatId = QStringLiteral("DE123456789");
        own.iban = QStringLiteral("DE89370400440532013000");
        QVERIFY(parties::storeOwnData(context(), own));
        parties::BuyerData buyer;
        buyer.shortName = QStringLiteral("Sägewerk O'Neill \"Nord\"");
        buyer.name = QStringLiteral("Sägewerk O'Neill & Co. KG");
        buyer.street = QStringLiteral("Am Bühl 3");
        buyer.postCode = QStringLiteral("88662");
        buyer.city = QStringLiteral("Überlingen");
        buyer.reference = QStringLiteral("K-4711");
        buyer.email = QStringLiteral("einkauf@oneill.example");
        QVERIFY(parties::storeBuyer(context(), buyer));
        InvoiceDialog d(context(), InvoiceDialog::Mode::Neu);
        d.show();
        QCOMPARE(child<QLineEdit>(d, "t(4)")->text(), own.name);
        auto* write = child<QPushButton>(d, "comerechnung");
        QVERIFY(!write->isEnabled()); // nothing stored yet

        typeAddress(d);
        typeInto(child<QLineEdit>(d, "tz(2)"), QStringLiteral("19"));
        typeInto(child<QLineEdit>(d, "tz(3)"), QStringLiteral("2"));
        typeInto(child<QLineEdit>(d, "tz(4)"), QStringLiteral("14"));
        typeInto(child<QLineEdit>(d, "tdat(1)"), QStringLiteral("30.10.2026"));
        mark(child<QTableWidget>(d, "li"), m_lots.poleLot);
        child<QPushButton>(d, "ok(0)")->click();
        QVERIFY(write->isEnabled());

        const QString path = m_folder.filePath(QStringLiteral("E-Rechnung.xml"));
        m_prompter.clear();
        m_prompter.answerText(path);
        write->click();
        QVERIFY2(QFile::exists(path), qPrintable(m_prompter.messages().join(u'\n')));
        const einvoice::ReadResult read = einvoice::readInvoiceFile(path);
        QVERIFY2(read.invoice, qPrintable(read.error));
        QCOMPARE(read.invoice->deliveryDate, QDate(2026, 10, 30));
        QCOMPARE(read.invoice->discountDays, 14);
        QCOMPARE(read.invoice->buyer.reference, buyer.reference);

        // Marking the next lot starts a new invoice, which is no e-invoice until stored.
        mark(child<QTableWidget>(d, "li"), m_lots.stackLot);
        QVERIFY(!write->isEnabled());
    }

    void refusedStoreShowsEveryReasonAndKeepsTheInput()
    {
        InvoiceDialog d(context(), InvoiceDialog::Mode::Neu);
        d.show();
        typeInto(child<QLineEdit>(d, "tdat(0)"), QStringLiteral("31.02.2026"));
        // The number field takes digits only: typed letters never reach it.
        child<QLineEdit>(d, "tz(0)")->selectAll();
        QTest::keyClick(child<QLineEdit>(d, "tz(0)"), Qt::Key_Backspace);
        QTest::keyClicks(child<QLineEdit>(d, "tz(0)"), QStringLiteral("abc"));
        typeInto(child<QLineEdit>(d, "tz(2)"), QStringLiteral("19"));
        child<QPushButton>(d, "ok(0)")->click();
        QCOMPARE(m_prompter.messages(),
                 QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n"
                                            "...Bei der Anschrift (Name, Straße, Wohnort) mindestens in einem Feld etwas eingetragen werden muss.\n"
                                            "...das Datum nicht korrekt ist.\n"
                                            "...die Rechnungsnummer größer 0 sein muss.\n"
                                            "...mindestens ein Los für die Rechnung ausgewählt werden muss.")});
        QCOMPARE(child<QLineEdit>(d, "tdat(0)")->text(), QStringLiteral("31.02.2026"));
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), QString());
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Rechnungen")).toInt(), 0);
        QVERIFY(!d.stored());
    }

    void choosingABuyerFillsHisLastDetails()
    {
        storeThroughCore(QStringLiteral("100"), QStringLiteral("Holz O'Brien"), m_lots.poleLot);
        InvoiceDialog d(context(), InvoiceDialog::Mode::Neu);
        d.show();
        QCOMPARE(child<QLineEdit>(d, "tz(0)")->text(), QStringLiteral("101"));
        auto* buyer = child<QComboBox>(d, "kom(0)");
        buyer->setCurrentIndex(buyer->findText(QStringLiteral("Holz O'Brien")));
        emit buyer->activated(buyer->currentIndex());
        QCOMPARE(child<QLineEdit>(d, "t(0)")->text(), QStringLiteral("Holz O'Brien"));
        QCOMPARE(child<QLineEdit>(d, "tz(2)")->text(), QStringLiteral("19,00"));

        // A stored invoice is shown by its number.
        auto* numbers = child<QComboBox>(d, "kom(1)");
        numbers->setCurrentIndex(numbers->findText(QStringLiteral("100")));
        emit numbers->activated(numbers->currentIndex());
        QCOMPARE(child<QLineEdit>(d, "tdat(0)")->text(), QStringLiteral("01.10.2026"));
        QVERIFY(child<QPlainTextEdit>(d, "t(3)")->toPlainText().contains(QStringLiteral("Pfähle  Los: 3")));
        QCOMPARE(child<QLabel>(d, "bezbetrag")->text(), QStringLiteral("Rechnungsbetrag: 132,69"));
    }

    void captionsAreReworded()
    {
        InvoiceDialog d(context(), InvoiceDialog::Mode::Neu);
        d.show();
        typeAddress(d);
        mark(child<QTableWidget>(d, "li"), m_lots.poleLot);
        auto* caption = child<QPushButton>(d, "roCommand1(2)");
        QCOMPARE(caption->text(), QStringLiteral("Rechnungsnummer"));
        m_prompter.answerText(QStringLiteral("Beleg-Nr."));
        caption->click();
        QCOMPARE(caption->text(), QStringLiteral("Beleg-Nr."));
        QCOMPARE(m_settings.text[17], QStringLiteral("Beleg-Nr."));
        QVERIFY(child<QPlainTextEdit>(d, "t(3)")->toPlainText().contains(QStringLiteral("Beleg-Nr.:")));
    }

    // Tab walks the fields; the caption buttons beside them are for the mouse.
    void tabSkipsTheCaptionButtons()
    {
        InvoiceDialog d(context(), InvoiceDialog::Mode::Neu);
        d.show();
        QVERIFY(QTest::qWaitForWindowActive(&d));
        child<QLineEdit>(d, "t(0)")->setFocus();
        QStringList reached;
        for (int i = 0; i < 80; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            reached << QApplication::focusWidget()->objectName();
        }
        for (const char* field : {"t(12)", "tdat(0)", "tz(0)"})
            QVERIFY2(reached.contains(QString::fromLatin1(field)), field);
        QVERIFY2(reached.filter(QStringLiteral("roCommand1")).isEmpty(), qPrintable(reached.join(u' ')));
    }

    // "Drucken" needs a lot, then hands the invoice on show to the output window.
    void printOpensTheOutputWindow()
    {
        InvoiceDialog d(context(), InvoiceDialog::Mode::Neu);
        d.show();
        child<QPushButton>(d, "comdrucken")->click();
        QCOMPARE(m_prompter.messages(),
                 QStringList{QStringLiteral("Die Liste kann nicht erstellt werden, weil noch kein Los für die Rechnung ausgewählt ist.")});
        typeAddress(d);
        mark(child<QTableWidget>(d, "li"), m_lots.flatLot);
        QString shown;
        QTimer::singleShot(0, this, [&] {
            auto* window = qobject_cast<TextOutputWindow*>(QApplication::activeModalWidget());
            QVERIFY(window);
            shown = child<QPlainTextEdit>(*window, "t")->toPlainText();
            child<QPushButton>(*window, "abbv")->click();
        });
        child<QPushButton>(d, "comdrucken")->click();
        QVERIFY2(shown.contains(QStringLiteral("Dieses Los wird per vereinbartem Pauschalpreis abgerechnet.")), qPrintable(shown));
        QVERIFY(shown.contains(QStringLiteral("Jörg O'Neill")));
    }

    void openedFromTheHubsInvoiceList()
    {
        storeThroughCore(QStringLiteral("21"), QStringLiteral("A"), m_lots.logLot);
        storeThroughCore(QStringLiteral("22"), QStringLiteral("B"), m_lots.poleLot);
        storeThroughCore(QStringLiteral("23"), QStringLiteral("C"), m_lots.stackLot);
        HubDialog hub(context(), m_lots.harvestId, HubList::Rechnungen);
        hub.show();
        auto* grid = child<QTableView>(hub, "gridli");
        QCOMPARE(grid->model()->rowCount(), 3);

        // "Ändern" on the first row shows, not changes: back wraps to the last, forward to the
        // first, and the hub follows the invoice shown last. Nothing is written.
        const QString before = scalar(db(), QStringLiteral("SELECT group_concat(ReNr || Abnehmer || Betrag) FROM Rechnungen")).toString();
        grid->selectRow(0);
        QCOMPARE(grid->model()->index(0, 5).data().toInt(), 21);
        QStringList shown;
        QTimer::singleShot(0, this, [&] {
            auto* w = QApplication::activeModalWidget();
            QVERIFY(w);
            auto* number = child<QLineEdit>(*w, "tz(0)");
            QVERIFY(looksReadOnly(number) && looksReadOnly(child<QLineEdit>(*w, "t(0)")));
            QVERIFY(!child<QPushButton>(*w, "ok(0)")->isEnabled());
            for (const char* button : {"ok(1)", "ok(1)", "ok(2)", "ok(2)", "ok(1)"}) {
                shown << number->text();
                child<QPushButton>(*w, button)->click();
            }
            shown << number->text() + u' ' + child<QLineEdit>(*w, "t(0)")->text();
            child<QPushButton>(*w, "abbrechen")->click();
        });
        child<QPushButton>(hub, "ändern")->click();
        QCOMPARE(shown.join(u' '), QStringLiteral("21 23 22 23 21 23 C"));
        QCOMPARE(grid->currentIndex().row(), 2);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(ReNr || Abnehmer || Betrag) FROM Rechnungen")).toString(), before);
    }
};

TARVIK_TEST_MAIN(TestInvoiceDialog)
#include "tst_invoicedialog.moc"
