// The log window's app import, headless: the file picked, the logs shown in fmrgrid with the
// transfer question below them, then stored into the lot with their classes, prices and totals.
#include "support/hookedprompter.h"
#include "devices/logimport.h"
#include "devices/ui/logwindowimports.h"
#include "entry/ui/logdialog.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>
#include <QSqlQuery>
#include <QTableView>
#include <zip.h>

using namespace tarvik;
using test::child;
using test::whenShown;

namespace {

// Waits for the modal window with the given name and lets the action look at it and answer.
QStringList column(const QAbstractItemModel& m, int c)
{
    QStringList cells;
    for (int r = 0; r < m.rowCount(); ++r)
        cells << m.data(m.index(r, c)).toString();
    return cells;
}

} // namespace

class TestImportWindow : public QObject, protected test::HookedEntryFixture {
    Q_OBJECT

    QVariant value(const QString& sql) const { return scalar(db(), sql); }

    QString writeAppFile(const QByteArray& table)
    {
        const QString path = m_folder.filePath(QStringLiteral("holzliste_wald.zip"));
        int error = 0;
        zip_t* z = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
        const QByteArray manifest("Holzliste-Export: 1\r\n");
        zip_file_add(z, "META-INF/MANIFEST.MF", zip_source_buffer(z, manifest.constData(), zip_uint64_t(manifest.size()), 0), 0);
        zip_file_add(z, "holzliste.csv", zip_source_buffer(z, table.constData(), zip_uint64_t(table.size()), 0), 0);
        zip_close(z);
        return path;
    }

private slots:
    // The log window offers the device imports the desktop program hands it.
    void initTestCase() { offerLogImports(deviceLogImports()); }

    void init()
    {
        resetHooked(std::nullopt);
    }

    void appFileIsImportedIntoTheLot()
    {
        const qint32 harvest = test::addHarvest(db(), 1);
        createLot(db(), harvest, 1, QStringLiteral("Stämme"));
        execSql(db(), QStringLiteral("UPDATE Lose SET Preis_Art = 2, Pauschalpreis_efm = 50, Kosten_Einschlag = 10 WHERE Los_Nr = 1"));
        const QString path = writeAppFile("Los;Nr;Baumart;Guete;Laenge;Staerke;Zopf;Kaefer;Bemerkung\r\n"
                                          "1;1;Fi;B;4;35;;N;\r\n"
                                          "1;2;Ta;C;5;42;30;N;Rotfäule\r\n"
                                          "1;3;Hb;B;4;30;;N;\r\n");

        LogDialog d(context(), harvest, std::nullopt, 1);
        d.show();
        QStringList numbers, reasons;
        QString question;
        bool scrolled = false;
        whenShown(QStringLiteral("FMR_Import"), [&](QWidget* w) {
            auto* grid = child<QTableView>(*w, "fmrgrid");
            numbers = column(*grid->model(), 1);
            reasons = column(*grid->model(), grid->model()->columnCount() - 1);
            question = child<QLabel>(*w, "bezfrage")->text();
            // Nothing covers the grid while the question waits: it takes the scroll itself.
            grid->horizontalScrollBar()->setValue(grid->horizontalScrollBar()->maximum());
            scrolled = grid->isVisible() && grid->isEnabled() && QApplication::activeModalWidget() == w;
            child<QPushButton>(*w, "comja")->click();
        });
        m_prompter.answerText(path).answerYes();
        child<QPushButton>(d, "import_app_holzliste")->click();

        QCOMPARE(numbers, (QStringList{"1", "2", "3"}));
        QCOMPARE(reasons, (QStringList{"", "", "Baumart Hb unbekannt"}));
        QCOMPARE(question, QStringLiteral("Es wurden 3 Stämme gefunden. Sollen diese jetzt übertragen werden?"));
        QVERIFY(scrolled);
        QVERIFY(m_prompter.messages().contains(QStringLiteral("Der Import wurde erforgreich abgeschlossen!")));

        // Table bark: spruce 35 → 33 cm, fir 42 → 39 cm; classes and flat prices follow.
        QSqlQuery q = execSql(db(), QStringLiteral("SELECT Laufende_Nr, Baumart, Stärke_oR, Efm_oR, Stärkeklasse, Klasse_Heilbronn, "
                                                   "Holzpreis, Preis_berechnet, Bemerkung FROM Stämme ORDER BY Laufende_Nr"));
        QVERIFY(q.next());
        QCOMPARE(q.value(1).toString(), QStringLiteral("FI (Fichte)"));
        QCOMPARE(q.value(2).toInt(), 33);
        QCOMPARE(q.value(3).toFloat(), 0.342f);
        QCOMPARE(q.value(4).toString(), QStringLiteral("L3a"));
        QCOMPARE(q.value(6).toDouble(), 17.1);  // 0,342 × 50
        QCOMPARE(q.value(7).toDouble(), 13.68); // less 0,342 × 10 felling wage
        QVERIFY(q.next());
        QCOMPARE(q.value(1).toString(), QStringLiteral("TA (Tanne)"));
        QCOMPARE(q.value(2).toInt(), 39);
        QCOMPARE(q.value(3).toFloat(), 0.597f); // 0,39 × 0,39 × 3.14159 ÷ 4 × 5
        QCOMPARE(q.value(4).toString(), QStringLiteral("L3b"));
        QVERIFY(!q.value(5).toString().isEmpty()); // a top diameter gives a Heilbronn class
        QCOMPARE(q.value(6).toDouble(), 29.85);
        QCOMPARE(q.value(8).toString(), QStringLiteral("Rotfäule"));
        QVERIFY(!q.next()); // hornbeam is none of the devices' species

        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Los_Nr = 1")).toInt(), 2);
        QCOMPARE(value(QStringLiteral("SELECT Efm_oR FROM Lose WHERE Los_Nr = 1")).toFloat(), 0.939f);
        QCOMPARE(value(QStringLiteral("SELECT Holzpreis FROM Lose WHERE Los_Nr = 1")).toDouble(), 46.95);
        QCOMPARE(value(QStringLiteral("SELECT Stämme_Anzahl FROM Hiebe")).toInt(), 2);
        // The window's grid and summary show the imported logs at once.
        QCOMPARE(child<QTableView>(d, "gridli")->model()->rowCount(), 2);
        QVERIFY(child<QLabel>(d, "bezsumme")->text().startsWith(QStringLiteral("Gesamt: 2 Stämme mit 0,939 Efm oR")));
    }

    // [Nein] under the grid stores nothing, and a transfer of only refused logs says that
    // nothing was stored.
    void answerUnderTheGrid_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("last");
        const QByteArray head = "Los;Nr;Baumart;Guete;Laenge;Staerke;Zopf;Kaefer;Bemerkung\r\n";
        QTest::newRow("declined") << head + "1;1;Fi;B;4;35;;N;\r\n" << false << QString();
        QTest::newRow("only refused logs") << head + "1;1;Hb;B;4;35;;N;\r\n7;2;Fi;B;4;35;;N;\r\n" << true
                                           << QString::fromUtf8(NothingStoredMessage);
    }
    void answerUnderTheGrid()
    {
        QFETCH(QByteArray, table);
        QFETCH(bool, yes);
        QFETCH(QString, last);
        const qint32 harvest = test::addHarvest(db(), 1);
        createLot(db(), harvest, 1, QStringLiteral("Stämme"));
        createLot(db(), harvest, 7, QStringLiteral("Schichtholz"));
        LogDialog d(context(), harvest, std::nullopt, 1);
        d.show();
        QStringList reasons;
        whenShown(QStringLiteral("FMR_Import"), [&](QWidget* w) {
            auto* grid = child<QTableView>(*w, "fmrgrid");
            reasons = column(*grid->model(), grid->model()->columnCount() - 1);
            child<QPushButton>(*w, yes ? "comja" : "comnein")->click();
        });
        m_prompter.answerText(writeAppFile(table)).answerYes();
        child<QPushButton>(d, "import_app_holzliste")->click();
        QVERIFY(!reasons.isEmpty());
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme")).toInt(), 0);
        QCOMPARE(m_prompter.messages().isEmpty() ? QString() : m_prompter.messages().last(), last);
        if (yes)
            QCOMPARE(reasons, (QStringList{"Baumart Hb unbekannt", "Los 7 ist ein Los der Sortierung Schichtholz"}));
    }

    void refusedFileLeavesTheWindowUsable()
    {
        const qint32 harvest = test::addHarvest(db(), 1);
        createLot(db(), harvest, 1, QStringLiteral("Stämme"));
        const QString path = writeAppFile("<html><body>Fehler</body></html>");
        LogDialog d(context(), harvest, std::nullopt, 1);
        d.show();
        m_prompter.answerText(path);
        child<QPushButton>(d, "import_app_holzliste")->click();
        QVERIFY(m_prompter.messages().last().contains(QStringLiteral("Internetseite")));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme")).toInt(), 0);
        QVERIFY(child<QPushButton>(d, "import_app_holzliste")->isEnabled());
        // Without a lot the device import stops before it asks anything.
        LogDialog noLot(context(), harvest, std::nullopt);
        noLot.show();
        child<QComboBox>(noLot, "kom(0)")->setEditText(QString()); // the only log lot is chosen on opening
        child<QPushButton>(noLot, "comimport")->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Der Datenimport ist nur möglich, wenn die LOS-Nummer angegeben wird!"));
    }
};

TARVIK_TEST_MAIN(TestImportWindow)
#include "tst_importwindow.moc"
