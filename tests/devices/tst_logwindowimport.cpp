// The log window's device imports, headless: the app's file and a harvester's production file
// picked, the harvester mapping dialog filled from the built-in table and changed by the user,
// the logs shown in fmrgrid with the transfer question below them, then stored into the lot
// with their classes, prices and totals.
#include "devices/logimport.h"
#include "devices/ui/harvestermapping.h"
#include "devices/ui/logwindowimports.h"
#include "entry/ui/logdialog.h"
#include "store/records.h"
#include "store/sql.h"
#include "support/hookedprompter.h"
#include "support/records.h"
#include "support/widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSqlQuery>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>
#include <zip.h>

using namespace tarvik;
using test::child;
using test::whenShown;

namespace {

const QString V300 = QStringLiteral(TARVIK_STANFORD "/HPR_V0300_TimberMaticH_020125_20210211.hpr");

QStringList column(const QAbstractItemModel& m, int c)
{
    QStringList cells;
    for (int r = 0; r < m.rowCount(); ++r)
        cells << m.data(m.index(r, c)).toString();
    return cells;
}

HarvesterMappingDialog* openMappingDialog()
{
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* d = qobject_cast<HarvesterMappingDialog*>(w); d && d->isVisible())
            return d;
    return nullptr;
}

// The row of a name in the first column of a table.
int rowOf(const QTableWidget& table, const QString& name)
{
    for (int row = 0; row < table.rowCount(); ++row)
        if (table.item(row, 0)->text() == name)
            return row;
    return -1;
}

} // namespace

class TestLogWindowImport : public QObject, protected test::HookedEntryFixture {
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

    // A harvest with a log lot 1 (and a stacked-wood lot 7), its log window open on lot 1.
    std::unique_ptr<LogDialog> openLogWindow()
    {
        m_harvest = test::addHarvest(db(), 1);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        createLot(db(), m_harvest, 7, QStringLiteral("Schichtholz"));
        auto d = std::make_unique<LogDialog>(context(), m_harvest, std::nullopt, 1);
        d->show();
        return d;
    }

private slots:
    // The log window offers the device imports the desktop program hands it.
    void initTestCase() { offerLogImports(deviceLogImports()); }

    void init() { resetHooked(std::nullopt); }

    void appFileIsImportedIntoTheLot()
    {
        const auto d = openLogWindow();
        execSql(db(), QStringLiteral("UPDATE Lose SET Preis_Art = 2, Pauschalpreis_efm = 50, Kosten_Einschlag = 10 WHERE Los_Nr = 1"));
        const QString path = writeAppFile("Los;Nr;Baumart;Guete;Laenge;Staerke;Zopf;Kaefer;Bemerkung\r\n"
                                          "1;1;Fi;B;4;35;;N;\r\n"
                                          "1;2;Ta;C;5;42;30;N;Rotfäule\r\n"
                                          "1;3;Hb;B;4;30;;N;\r\n");
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
        child<QPushButton>(*d, "import_app_holzliste")->click();

        QCOMPARE(numbers, (QStringList{"1", "2", "3"}));
        QCOMPARE(reasons, (QStringList{"", "", "Baumart Hb unbekannt"}));
        QCOMPARE(question, QStringLiteral("Es wurden 3 Stämme gefunden. Sollen diese jetzt übertragen werden?"));
        QVERIFY(scrolled);
        QVERIFY(m_prompter.messages().contains(QStringLiteral("Der Import wurde erforgreich abgeschlossen!")));

        // Table bark: spruce 35 → 33 cm, fir 42 → 39 cm; 0,33² × 3.14159 ÷ 4 × 4 = 0,342 and 0,39² × 3.14159 ÷ 4 × 5
        // = 0,597 Efm; flat 50 per Efm less 10 felling wage. A top diameter gives a Heilbronn class; hornbeam is
        // none of the devices' species.
        QSqlQuery q = execSql(db(), QStringLiteral("SELECT Baumart, Stärke_oR, printf('%.3f', Efm_oR), Stärkeklasse, ifnull(Klasse_Heilbronn, '') <> '', "
                                                   "printf('%.2f', Holzpreis), printf('%.2f', Preis_berechnet), Bemerkung FROM Stämme "
                                                   "ORDER BY Laufende_Nr"));
        QStringList logs;
        while (q.next())
            logs << QStringList{q.value(0).toString(), q.value(1).toString(), q.value(2).toString(), q.value(3).toString(),
                                q.value(4).toString(), q.value(5).toString(), q.value(6).toString(), q.value(7).toString()}.join(u'|');
        QCOMPARE(logs, (QStringList{"FI (Fichte)|33|0.342|L3a|0|17.10|13.68|", "TA (Tanne)|39|0.597|L3b|1|29.85|23.88|Rotfäule"}));
        QCOMPARE(value(QStringLiteral("SELECT Anzahl_Stämme FROM Lose WHERE Los_Nr = 1")).toInt(), 2);
        QCOMPARE(value(QStringLiteral("SELECT Efm_oR FROM Lose WHERE Los_Nr = 1")).toFloat(), 0.939f);
        QCOMPARE(value(QStringLiteral("SELECT Holzpreis FROM Lose WHERE Los_Nr = 1")).toDouble(), 46.95);
        QCOMPARE(value(QStringLiteral("SELECT Stämme_Anzahl FROM Hiebe")).toInt(), 2);
        // The window's grid and summary show the imported logs at once.
        QCOMPARE(child<QTableView>(*d, "gridli")->model()->rowCount(), 2);
        QVERIFY(child<QLabel>(*d, "bezsumme")->text().startsWith(QStringLiteral("Gesamt: 2 Stämme mit 0,939 Efm oR")));
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
        const auto d = openLogWindow();
        QStringList reasons;
        whenShown(QStringLiteral("FMR_Import"), [&](QWidget* w) {
            auto* grid = child<QTableView>(*w, "fmrgrid");
            reasons = column(*grid->model(), grid->model()->columnCount() - 1);
            child<QPushButton>(*w, yes ? "comja" : "comnein")->click();
        });
        m_prompter.answerText(writeAppFile(table)).answerYes();
        child<QPushButton>(*d, "import_app_holzliste")->click();
        QVERIFY(!reasons.isEmpty());
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme")).toInt(), 0);
        QCOMPARE(m_prompter.messages().isEmpty() ? QString() : m_prompter.messages().last(), last);
        if (yes)
            QCOMPARE(reasons, (QStringList{"Baumart Hb unbekannt", "Los 7 ist ein Los der Sortierung Schichtholz"}));
    }

    void refusedFileLeavesTheWindowUsable()
    {
        const auto d = openLogWindow();
        m_prompter.answerText(writeAppFile("<html><body>Fehler</body></html>"));
        child<QPushButton>(*d, "import_app_holzliste")->click();
        QVERIFY(m_prompter.messages().last().contains(QStringLiteral("Internetseite")));
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme")).toInt(), 0);
        QVERIFY(child<QPushButton>(*d, "import_app_holzliste")->isEnabled());
        // Without a lot the device import stops before it asks anything.
        LogDialog noLot(context(), m_harvest, std::nullopt);
        noLot.show();
        child<QComboBox>(noLot, "kom(0)")->setEditText(QString()); // the only log lot is chosen on opening
        child<QPushButton>(noLot, "comimport")->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Der Datenimport ist nur möglich, wenn die LOS-Nummer angegeben wird!"));
    }

    void fileIsMappedShownAndStored()
    {
        const auto d = openLogWindow();

        QStringList proposed;
        bool answered = false;
        QTimer::singleShot(0, this, [&] {
            HarvesterMappingDialog* m = openMappingDialog();
            if (!m)
                return;
            const auto& species = *child<QTableWidget>(*m, "gridbaumarten");
            for (int row = 0; row < species.rowCount(); ++row)
                proposed << species.item(row, 0)->text() + u'=' + static_cast<QComboBox*>(species.cellWidget(row, 2))->currentText();
            // Broadleaf is not taken this time; the spruce saw logs get quality A.
            child<QComboBox>(*m, qPrintable(QStringLiteral("kombaumart(%1)").arg(rowOf(species, QStringLiteral("LAUV")))))->setCurrentIndex(0);
            const auto& products = *child<QTableWidget>(*m, "gridprodukte");
            child<QComboBox>(*m, qPrintable(QStringLiteral("komguete(%1)").arg(rowOf(products, QStringLiteral("Sagt BHV D12+")))))
                ->setCurrentText(QStringLiteral("A"));
            child<QCheckBox>(*m, qPrintable(QStringLiteral("konprodukt(%1)").arg(rowOf(products, QStringLiteral("Vrak")))))->setChecked(false);
            answered = true;
            child<QPushButton>(*m, "comok")->click();
        });
        // The found logs and the question in the import window of every log import.
        int gridRows = -1;
        int refused = 0;
        QString question;
        whenShown(QStringLiteral("FMR_Import"), [&](QWidget* w) {
            const QAbstractItemModel& grid = *child<QTableView>(*w, "fmrgrid")->model();
            gridRows = grid.rowCount();
            for (int row = 0; row < grid.rowCount(); ++row)
                refused += grid.index(row, grid.columnCount() - 1).data().toString().isEmpty() ? 0 : 1;
            question = child<QLabel>(*w, "bezfrage")->text();
            child<QPushButton>(*w, "comja")->click();
        });
        m_prompter.answerText(V300);
        child<QPushButton>(*d, "importharvester")->click();

        QVERIFY(answered);
        QCOMPARE(proposed, (QStringList{"FURU=KI (Kiefer)", "GRAN=FI (Fichte)", "LAUV=AL (Anderes Laubholz)", "TØRRGRAN=FI (Fichte)"}));
        QCOMPARE(gridRows, 57);
        QCOMPARE(refused, 57 - 40); // the unmapped broadleaf and the excluded "Vrak" logs are marked
        QCOMPARE(question, QStringLiteral("Es wurden 57 Stämme gefunden. Sollen diese jetzt übertragen werden?"));
        // 42 spruce logs less the 2 of "Vrak"; 15 broadleaf logs not mapped.
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme")).toInt(), 40);
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Güteklasse = 'A'")).toInt(), 4);
        QCOMPARE(child<QTableView>(*d, "gridli")->model()->rowCount(), 40);
    }

    void cancelledMappingStoresNothing()
    {
        const qint32 harvest = test::addHarvest(db(), 1);
        LogDialog d(context(), harvest, std::nullopt, 2);
        d.show();
        QTimer::singleShot(0, this, [&] {
            if (HarvesterMappingDialog* m = openMappingDialog())
                child<QPushButton>(*m, "comabbrechen")->click();
        });
        m_prompter.answerText(V300);
        child<QPushButton>(d, "importharvester")->click();
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme")).toInt(), 0);
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Lose")).toInt(), 0);
        QCOMPARE(m_prompter.questions().filter(QStringLiteral("Sollen diese jetzt übertragen werden?")), QStringList());
    }
};

TARVIK_TEST_MAIN(TestLogWindowImport)
#include "tst_logwindowimport.moc"
