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

    void refusals_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
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
    }
};

TARVIK_TEST_CORE_MAIN(TestRechnungCli)
#include "tst_rechnungcli.moc"
