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
    test::TempDataFolder m_dir;
    std::unique_ptr<Database> m_db = m_dir.openDatabase();
    Einstellungen m_settings = EinstellungenLaden(QString());
    test::ScriptedPrompter m_prompter;
    SystemClock m_clock;
    qint32 m_bare = 0, m_harvest = 0;

    AppContext context() { return {m_db->shared(), m_settings, m_dir.path(), m_prompter, m_clock}; }

private slots:
    void initTestCase()
    {
        m_bare = test::addHarvest(m_db->shared(), 3);
        test::addLot(m_db->shared(), m_bare, 1);
        m_harvest = test::addHarvest(m_db->shared(), 5);
        test::addLot(m_db->shared(), m_harvest, 1);
        test::addLot(m_db->shared(), m_harvest, 2);
        execSql(m_db->shared(), QStringLiteral("UPDATE Lose SET GPS_B = '39.999999', GPS_L = '10' WHERE Los_Nr = 1 AND Kennung = ?"),
                {m_harvest});
        execSql(m_db->shared(), QStringLiteral("UPDATE Lose SET GPS_B = '50.1', GPS_L = '9.2', Lagerort = 'Hohe Eiche' WHERE Los_Nr = 2"));
    }

    void init() { m_prompter.clear(); }

    void gridsCaptionsAndTheRangeMessage()
    {
        LotMapDialog dialog(context(), m_harvest);
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
        QCOMPARE(m_prompter.messages().size(), 1);
        QVERIFY(m_prompter.messages().first().startsWith(QStringLiteral("Im aktuellen Los müssen die Breidegrade")));

        // Choosing the other harvest shows its lot.
        harvests->setCurrentIndex(harvests->model()->index(0, 0));
        QCOMPARE(lots->model()->rowCount(), 1);
    }

    // Without a browser the address is offered for copying; the files' name is asked for only
    // when some lot has coordinates.
    void noBrowserAndNoCoordinates()
    {
        LotMapDialog withoutPlaces(context(), m_bare);
        test::child<QPushButton>(withoutPlaces, "geodatei")->click(); // no file name is queued: asking would fail
        QCOMPARE(m_prompter.messages(), QStringList{"Keines der Lose dieses Hiebs hat gültige Koordinaten; es wurde keine Datei geschrieben."});

        // The headless platform starts no browser.
        LotMapDialog dialog(context(), m_harvest);
        auto* lots = test::child<QTableView>(dialog, "gridlilos");
        lots->setCurrentIndex(lots->model()->index(1, 0));
        m_prompter.answerYes();
        QGuiApplication::clipboard()->clear();
        test::child<QPushButton>(dialog, "ok")->click();
        QCOMPARE(m_prompter.questions().size(), 1);
        const QString question = m_prompter.questions().first();
        QVERIFY2(question.startsWith(QStringLiteral("Es konnte kein Browser gestartet werden")), qPrintable(question));
        const QString address = QGuiApplication::clipboard()->text();
        QVERIFY2(address.startsWith(QStringLiteral("https://")) && address.contains(QStringLiteral("50.1")), qPrintable(address));
        QVERIFY(question.contains(address));
    }
};

TARVIK_TEST_MAIN(TestLotMapDialog)
#include "tst_lotmapdialog.moc"
