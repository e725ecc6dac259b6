// BF_Lose_Luftbild driven through its grids and buttons.
#include "common/clock.h"
#include "reports/ui/lotmapdialog.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

using namespace tarvik;

class TestLotMapDialog : public QObject {
    Q_OBJECT

private slots:
    void gridsCaptionsAndTheRangeMessage()
    {
        test::TempDataFolder dir;
        auto db = dir.openDatabase();
        test::addHarvest(db->shared(), 3);
        const qint32 harvest = test::addHarvest(db->shared(), 5);
        test::addLot(db->shared(), harvest, 1);
        test::addLot(db->shared(), harvest, 2);
        execSql(db->shared(), QStringLiteral("UPDATE Lose SET GPS_B = '39.999999', GPS_L = '10' WHERE Los_Nr = 1"));
        execSql(db->shared(), QStringLiteral("UPDATE Lose SET GPS_B = '50.1', GPS_L = '9.2', Lagerort = 'Hohe Eiche' WHERE Los_Nr = 2"));
        Einstellungen settings = EinstellungenLaden(QString());
        test::ScriptedPrompter prompter;
        SystemClock clock;
        LotMapDialog dialog(AppContext{db->shared(), settings, dir.path(), prompter, clock}, harvest);

        auto* harvests = test::child<QTableView>(dialog, "gridlihieb");
        auto* lots = test::child<QTableView>(dialog, "gridlilos");
        QCOMPARE(harvests->model()->rowCount(), 2);
        QCOMPARE(harvests->currentIndex().row(), 1); // the main list's current harvest
        QStringList captions;
        for (int c = 0; c < lots->model()->columnCount(); ++c)
            captions << lots->model()->headerData(c, Qt::Horizontal).toString();
        QCOMPARE(captions, (QStringList{"Los_Nr", "Los_Bezeichnung", "Lagerort", "GPS_N", "GPS_O", "Anfahrt"}));
        QCOMPARE(lots->model()->rowCount(), 2);
        // The latitude stands under GPS_N, the longitude under GPS_O.
        QCOMPARE(lots->model()->index(1, 3).data().toString(), QStringLiteral("50.1"));
        QCOMPARE(lots->model()->index(1, 4).data().toString(), QStringLiteral("9.2"));

        lots->setCurrentIndex(lots->model()->index(0, 0));
        test::child<QPushButton>(dialog, "ok")->click();
        QCOMPARE(prompter.messages().size(), 1);
        QVERIFY(prompter.messages().first().startsWith(QStringLiteral("Im aktuellen Los müssen die Breidegrade")));

        // Choosing the other harvest shows its (no) lots.
        harvests->setCurrentIndex(harvests->model()->index(0, 0));
        QCOMPARE(lots->model()->rowCount(), 0);
    }

    // Without a browser the address is offered for copying; the files' name is asked for only
    // when some lot has coordinates.
    void noBrowserAndNoCoordinates()
    {
        test::TempDataFolder dir;
        auto db = dir.openDatabase();
        const qint32 bare = test::addHarvest(db->shared(), 3);
        test::addLot(db->shared(), bare, 1);
        const qint32 harvest = test::addHarvest(db->shared(), 5);
        test::addLot(db->shared(), harvest, 2);
        execSql(db->shared(), QStringLiteral("UPDATE Lose SET GPS_B = '50.1', GPS_L = '9.2' WHERE Kennung = ?"), {harvest});
        Einstellungen settings = EinstellungenLaden(QString());
        test::ScriptedPrompter prompter;
        SystemClock clock;

        LotMapDialog withoutPlaces(AppContext{db->shared(), settings, dir.path(), prompter, clock}, bare);
        test::child<QPushButton>(withoutPlaces, "geodatei")->click(); // no file name is queued: asking would fail
        QCOMPARE(prompter.messages(), QStringList{"Keines der Lose dieses Hiebs hat gültige Koordinaten; es wurde keine Datei geschrieben."});

        // The headless platform starts no browser.
        prompter.clear();
        LotMapDialog dialog(AppContext{db->shared(), settings, dir.path(), prompter, clock}, harvest);
        prompter.answerYes();
        QGuiApplication::clipboard()->clear();
        test::child<QPushButton>(dialog, "ok")->click();
        QCOMPARE(prompter.questions().size(), 1);
        const QString question = prompter.questions().first();
        QVERIFY2(question.startsWith(QStringLiteral("Es konnte kein Browser gestartet werden")), qPrintable(question));
        const QString address = QGuiApplication::clipboard()->text();
        QVERIFY2(address.startsWith(QStringLiteral("https://")) && address.contains(QStringLiteral("50.1")), qPrintable(address));
        QVERIFY(question.contains(address));
    }
};

TARVIK_TEST_MAIN(TestLotMapDialog)
#include "tst_lotmapdialog.moc"
