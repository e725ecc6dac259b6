// The typical event, through the windows' controls: new harvest, new lot, ten logs (one girth
// measurement of 5, one duplicate running number answered No), then the hub's grid, the totals
// and the main list; paying the invoice sets the sale state.
#include "app/main/mainwindow.h"
#include "entry/hub.h"
#include "entry/ui/harvestdialog.h"
#include "entry/ui/hubdialog.h"
#include "entry/ui/logdialog.h"
#include "entry/ui/lotdialog.h"
#include "store/sql.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStandardPaths>
#include <QTableView>

using namespace tarvik;
using test::child;
using test::typeInto;

class TestTypicalEvent : public QObject {
    Q_OBJECT


private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void fromHarvestToPricedLogs()
    {
        test::TempDataFolder folder;
        test::ScriptedPrompter prompter;
        auto session = folder.start(prompter);
        firstActivation(*session, prompter);
        prompter.clear();
        FixedClock clock(QDate(2026, 11, 21));
        const AppContext ctx{session->database->shared(), session->settings, session->dataFolder, prompter, clock};
        const QSqlDatabase db = ctx.db;

        HarvestDialog harvestWindow(ctx, std::nullopt);
        child<QComboBox>(harvestWindow, "komwaldname")->setEditText(QStringLiteral("Eichwald"));
        child<QPushButton>(harvestWindow, "ok")->click();
        const qint32 harvest = *harvestWindow.storedId();

        LotDialog lotWindow(ctx, harvest, std::nullopt);
        QCOMPARE(child<QComboBox>(lotWindow, "kom(0)")->currentText(), QStringLiteral("1"));
        child<QRadioButton>(lotWindow, "optipreis(2)")->click();
        child<QLineEdit>(lotWindow, "tp(0)")->setText(QStringLiteral("50"));
        child<QPushButton>(lotWindow, "ok")->click();
        QVERIFY2(prompter.messages().isEmpty(), qPrintable(prompter.messages().join(u'|')));

        LogDialog logWindow(ctx, harvest, std::nullopt, 1);
        logWindow.show();
        child<QComboBox>(logWindow, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(logWindow, "kom(2)")->setEditText(QStringLiteral("B"));
        auto* next = child<QPushButton>(logWindow, "okn_chster");
        const std::pair<const char*, const char*> logs[] = {{"4,5", "35"}, {"10", "55"}, {"5", "28"}, {"4", "22"}};
        for (const auto& [length, diameter] : logs) {
            typeInto(logWindow.field(2), QString::fromUtf8(length));
            typeInto(logWindow.field(1), QString::fromUtf8(diameter));
            next->click();
        }
        typeInto(logWindow.field(0), QStringLiteral("2"));
        typeInto(logWindow.field(2), QStringLiteral("6"));
        typeInto(logWindow.field(1), QStringLiteral("30"));
        prompter.answerNo(); // number 2 again: booked twice
        next->click();
        typeInto(logWindow.field(2), QStringLiteral("3"));
        typeInto(logWindow.field(1), QStringLiteral("18"));
        typeInto(logWindow.field(8), QStringLiteral("5"));
        prompter.answerYes();
        next->click();
        QCOMPARE(logWindow.storedRows(), 10);

        // Under bark 33, 52, 26, 21 cm, the duplicate 28 cm, the girth logs 17 cm:
        // 0,385 + 2,124 + 0,265 + 0,139 + 0,369 + 5 × 0,068 = 3,622 Efm, at 50 per Efm.
        const QString expectedEfm = QStringLiteral("3.622");
        QCOMPARE(scalar(db, QStringLiteral("SELECT Anzahl_Stämme || '/' || Efm_oR || '/' || Holzpreis FROM Lose WHERE Kennung = ?"), {harvest}).toString(),
                 QStringLiteral("10/") + expectedEfm + QStringLiteral("/181.1"));

        HubDialog hub(ctx, harvest, HubList::Staemme);
        QCOMPARE(child<QTableView>(hub, "gridli")->model()->rowCount(), 10);

        MainWindow main(*session, prompter, clock);
        main.refill();
        QCOMPARE(child<QLabel>(main, "bezstati")->text(),
                 QStringLiteral("Statistik:   Lose=1   Fläche=0,0000   Stämme_Anz=10   Stämme_Efm=3,622   Efm_je_Stamm=0,362   "
                                "Pfähle_Anz=0   Schichtholz_m3=0,000   Schichtholz_Efm=0,000"));

        // An invoice over the lot, paid in full: the harvest is sold, and the list shows it in blue.
        execSql(db, QStringLiteral("UPDATE Lose SET ReNr = 1 WHERE Kennung = ?"), {harvest});
        execSql(db, QStringLiteral("INSERT INTO Rechnungen(Abnehmer, ReNr, Betrag) VALUES ('Sägewerk', 1, 181.1)"));
        prompter.answerYes();
        QVERIFY(markInvoicePaid(ctx, harvest, scalar(db, QStringLiteral("SELECT ID FROM Rechnungen")).toInt()));
        main.refill();
        const QAbstractItemModel* list = child<QTableView>(main, "datali")->model();
        QCOMPARE(list->index(0, 18).data().toString(), QStringLiteral("J"));
        QCOMPARE(list->index(0, 3).data(Qt::ForegroundRole).value<QBrush>().color(), QColor(0, 0, 255));
    }
};

TARVIK_TEST_MAIN(TestTypicalEvent)
#include "tst_typicalevent.moc"
