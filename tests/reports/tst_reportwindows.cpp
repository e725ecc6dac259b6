// The report windows through their controls, headless: BF_Lose_Luftbild's grids and buttons,
// AF_Textausgabe.
#include "common/clock.h"
#include "common/textfile.h"
#include "reports/ui/lotmapdialog.h"
#include "reports/ui/textoutputwindow.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/reportsfixture.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

using namespace tarvik;
using test::child;

class TestReportWindows : public QObject {
    Q_OBJECT
    test::TempDataFolder m_dir;
    std::unique_ptr<Database> m_db = m_dir.openDatabase();
    Einstellungen m_settings = EinstellungenLaden(QString());
    test::ScriptedPrompter m_prompter;
    FixedClock m_clock{QDate(2026, 11, 21)};
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

    void init()
    {
        m_prompter.clear();
        QFile::remove(reportFilePath(m_dir.path()));
    }

    void gridsCaptionsAndTheRangeMessage()
    {
        LotMapDialog dialog(context(), m_harvest);
        auto* harvests = child<QTableView>(dialog, "gridlihieb");
        auto* lots = child<QTableView>(dialog, "gridlilos");
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
        child<QPushButton>(dialog, "ok")->click();
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
        child<QPushButton>(withoutPlaces, "geodatei")->click(); // no file name is queued: asking would fail
        QCOMPARE(m_prompter.messages(), QStringList{"Keines der Lose dieses Hiebs hat gültige Koordinaten; es wurde keine Datei geschrieben."});

        // The headless platform starts no browser.
        LotMapDialog dialog(context(), m_harvest);
        auto* lots = child<QTableView>(dialog, "gridlilos");
        lots->setCurrentIndex(lots->model()->index(1, 0));
        m_prompter.answerYes();
        QGuiApplication::clipboard()->clear();
        child<QPushButton>(dialog, "ok")->click();
        QCOMPARE(m_prompter.questions().size(), 1);
        const QString question = m_prompter.questions().first();
        QVERIFY2(question.startsWith(QStringLiteral("Es konnte kein Browser gestartet werden")), qPrintable(question));
        const QString address = QGuiApplication::clipboard()->text();
        QVERIFY2(address.startsWith(QStringLiteral("https://")) && address.contains(QStringLiteral("50.1")), qPrintable(address));
        QVERIFY(question.contains(address));
    }

    void missingReportFile()
    {
        TextOutputWindow w(context());
        QCOMPARE(m_prompter.messages().last(), missingReportMessage(reportFilePath(m_dir.path())));
        QVERIFY(child<QPlainTextEdit>(w, "t")->toPlainText().isEmpty());
    }

    void showsTheReportAndKeepsItsSettings()
    {
        QVERIFY(writeTextFile(reportFilePath(m_dir.path()), {QStringLiteral("HIEBDATEN"), QStringLiteral("Hieb-Nr:         41")}).ok);
        m_settings.zahl[20] = 49; // out of range: shown as 10
        m_settings.zahl[22] = 35; // shown and used as 20
        TextOutputWindow w(context());
        QVERIFY(m_prompter.messages().isEmpty()); // Liberation Mono or Courier: no font hint
        QCOMPARE(w.windowTitle(), QStringLiteral("Listen-Ausgabe ") + reportFilePath(m_dir.path()));
        QCOMPARE(child<QPlainTextEdit>(w, "t")->toPlainText(), QStringLiteral("HIEBDATEN\nHieb-Nr:         41\n"));
        QCOMPARE(child<QLineEdit>(w, "gr_e")->text(), QStringLiteral("10"));
        QCOMPARE(child<QLineEdit>(w, "tz")->text(), QStringLiteral("20"));
        QVERIFY(isFixedPitchName(child<QComboBox>(w, "kom")->currentText()));
        QCOMPARE(child<QComboBox>(w, "komdrucker")->findText(TextOutputWindow::pdfPrinterEntry()) >= 0, true);

        for (int i = 0; i < 5; ++i)
            child<QPushButton>(w, "plus5(0)")->click();
        QCOMPARE(child<QLineEdit>(w, "gr_e")->text(), QStringLiteral("30"));
        child<QPushButton>(w, "plus1(1)")->click();
        QCOMPARE(child<QLineEdit>(w, "gr_e")->text(), QStringLiteral("29"));
        child<QRadioButton>(w, "druckformat(0)")->click();
        child<QCheckBox>(w, "kon(0)")->click();
        child<QPushButton>(w, "abbv")->click();

        QCOMPARE(m_settings.zahl[20], qint16(29));
        QCOMPARE(m_settings.zahl[18], qint16(1));
        QCOMPARE(m_settings.zahl[23], qint16(1));
        QCOMPARE(m_settings.zahl[22], qint16(20));
        QCOMPARE(EinstellungenLaden(m_dir.filePath(QLatin1String(SettingsFileName))).zahl[20], qint16(29));
    }

    void printFileIntoPdfAndSaveACopy()
    {
        QVERIFY(writeTextFile(reportFilePath(m_dir.path()), {QStringLiteral("Zeile 1"), QStringLiteral("#"), QStringLiteral("Zeile 2")}).ok);
        TextOutputWindow w(context());
        child<QComboBox>(w, "komdrucker")->setCurrentText(TextOutputWindow::pdfPrinterEntry());
        const QString pdf = m_dir.filePath(QStringLiteral("ausgabe.pdf"));
        m_prompter.answerText(pdf);
        child<QPushButton>(w, "dateidrucken")->click();
        QVERIFY(test::toolOutput(QStringLiteral("pdfinfo"), {pdf}).contains(QRegularExpression(QStringLiteral("Pages:\\s+2\\n")))); // "#" breaks the page

        const QString copy = m_dir.filePath(QStringLiteral("kopie.txt"));
        m_prompter.answerText(copy);
        child<QPushButton>(w, "comspeichern")->click();
        QCOMPARE(readTextFile(copy).lines, (QStringList{QStringLiteral("Zeile 1"), QStringLiteral("#"), QStringLiteral("Zeile 2")}));

        // "Text drucken" takes the box, edits included.
        child<QPlainTextEdit>(w, "t")->setPlainText(QStringLiteral("geändert"));
        m_prompter.answerText(m_dir.filePath(QStringLiteral("text.pdf")));
        child<QPushButton>(w, "drucken")->click();
        QCOMPARE(readTextFile(m_dir.filePath(QStringLiteral("DRUCKAUF.TXT"))).lines, QStringList{QStringLiteral("geändert")});
    }
};

TARVIK_TEST_MAIN(TestReportWindows)
#include "tst_reportwindows.moc"
