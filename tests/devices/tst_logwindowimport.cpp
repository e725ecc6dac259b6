// The log window's device imports, headless: the app's file and a harvester's production file
// picked, the harvester mapping dialog filled from the built-in table and changed by the user,
// the logs shown in fmrgrid with the transfer question below them, and the answer obeyed. What
// becomes of each log is proven in the import's own tests.
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

    int logCount() const { return scalar(db(), QStringLiteral("SELECT count(*) FROM Stämme")).toInt(); }

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

    // A harvest with a log lot 1, its log window open on lot 1.
    std::unique_ptr<LogDialog> openLogWindow()
    {
        m_harvest = test::addHarvest(db(), 1);
        createLot(db(), m_harvest, 1, QStringLiteral("Stämme"));
        auto d = std::make_unique<LogDialog>(context(), m_harvest, std::nullopt, 1);
        d->show();
        return d;
    }

private slots:
    // The log window offers the device imports the desktop program hands it.
    void initTestCase() { offerLogImports(deviceLogImports()); }

    void init() { resetHooked(std::nullopt); }

    // The found logs with their reasons and the question; [Ja] stores the good ones into the
    // window's lot and its grid shows them at once, [Nein] stores nothing.
    void appFileAnsweredUnderTheGrid_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::addColumn<int>("stored");
        QTest::newRow("Ja") << true << 2;
        QTest::newRow("Nein") << false << 0;
    }
    void appFileAnsweredUnderTheGrid()
    {
        QFETCH(bool, yes);
        QFETCH(int, stored);
        const auto d = openLogWindow();
        const QString path = writeAppFile("Los;Nr;Baumart;Guete;Laenge;Staerke;Zopf;Kaefer;Bemerkung\r\n"
                                          "1;1;Fi;B;4;35;;N;\r\n1;2;Ta;C;5;42;30;N;Rotfäule\r\n1;3;Hb;B;4;30;;N;\r\n");
        QStringList numbers, reasons;
        QString question;
        bool modal = false;
        whenShown(QStringLiteral("FMR_Import"), [&](QWidget* w) {
            auto* grid = child<QTableView>(*w, "fmrgrid");
            numbers = column(*grid->model(), 1);
            reasons = column(*grid->model(), grid->model()->columnCount() - 1);
            question = child<QLabel>(*w, "bezfrage")->text();
            // Nothing covers the grid while the question waits.
            modal = grid->isVisible() && grid->isEnabled() && QApplication::activeModalWidget() == w;
            child<QPushButton>(*w, yes ? "comja" : "comnein")->click();
        });
        m_prompter.answerText(path).answerYes();
        child<QPushButton>(*d, "import_app_holzliste")->click();

        QCOMPARE(numbers, (QStringList{"1", "2", "3"}));
        QCOMPARE(reasons, (QStringList{"", "", "Baumart Hb unbekannt"}));
        QCOMPARE(question, QStringLiteral("Es wurden 3 Stämme gefunden. Sollen diese jetzt übertragen werden?"));
        QVERIFY(modal);
        QCOMPARE(logCount(), stored);
        QCOMPARE(child<QTableView>(*d, "gridli")->model()->rowCount(), stored);
    }

    void refusalsLeaveTheWindowUsable()
    {
        const auto d = openLogWindow();
        m_prompter.answerText(writeAppFile("<html><body>Fehler</body></html>"));
        child<QPushButton>(*d, "import_app_holzliste")->click();
        QVERIFY(m_prompter.messages().last().contains(QStringLiteral("Internetseite")));
        QCOMPARE(logCount(), 0);
        QVERIFY(child<QPushButton>(*d, "import_app_holzliste")->isEnabled());
        // Without a lot the device import stops before it asks anything.
        LogDialog noLot(context(), m_harvest, std::nullopt);
        noLot.show();
        child<QComboBox>(noLot, "kom(0)")->setEditText(QString()); // the only log lot is chosen on opening
        child<QPushButton>(noLot, "comimport")->click();
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Der Datenimport ist nur möglich, wenn die LOS-Nummer angegeben wird!"));
    }

    void harvesterFileIsMappedShownAndStored()
    {
        const auto d = openLogWindow();
        QStringList proposed;
        QTimer::singleShot(0, this, [&] {
            HarvesterMappingDialog* m = openMappingDialog();
            if (!m)
                return;
            const auto& species = *child<QTableWidget>(*m, "gridbaumarten");
            for (int row = 0; row < species.rowCount(); ++row)
                proposed << species.item(row, 0)->text() + u'=' + static_cast<QComboBox*>(species.cellWidget(row, 2))->currentText();
            // Broadleaf is not taken this time; the spruce saw logs get quality A; "Vrak" is left out.
            child<QComboBox>(*m, qPrintable(QStringLiteral("kombaumart(%1)").arg(rowOf(species, QStringLiteral("LAUV")))))->setCurrentIndex(0);
            const auto& products = *child<QTableWidget>(*m, "gridprodukte");
            child<QComboBox>(*m, qPrintable(QStringLiteral("komguete(%1)").arg(rowOf(products, QStringLiteral("Sagt BHV D12+")))))
                ->setCurrentText(QStringLiteral("A"));
            child<QCheckBox>(*m, qPrintable(QStringLiteral("konprodukt(%1)").arg(rowOf(products, QStringLiteral("Vrak")))))->setChecked(false);
            child<QPushButton>(*m, "comok")->click();
        });
        QStringList reasons;
        whenShown(QStringLiteral("FMR_Import"), [&](QWidget* w) {
            const QAbstractItemModel& grid = *child<QTableView>(*w, "fmrgrid")->model();
            reasons = column(grid, grid.columnCount() - 1);
            child<QPushButton>(*w, "comja")->click();
        });
        m_prompter.answerText(V300);
        child<QPushButton>(*d, "importharvester")->click();

        QCOMPARE(proposed, (QStringList{"FURU=KI (Kiefer)", "GRAN=FI (Fichte)", "LAUV=AL (Anderes Laubholz)", "TØRRGRAN=FI (Fichte)"}));
        // 57 logs: 15 broadleaf not mapped, 2 of "Vrak" excluded, both marked in the grid.
        QCOMPARE(reasons.size(), 57);
        QCOMPARE(reasons.count(QString()), 40);
        QCOMPARE(logCount(), 40);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Stämme WHERE Güteklasse = 'A'")).toInt(), 4);
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
        QCOMPARE(logCount(), 0);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Lose")).toInt(), 0);
        QCOMPARE(m_prompter.questions().filter(QStringLiteral("Sollen diese jetzt übertragen werden?")), QStringList());
    }
};

TARVIK_TEST_MAIN(TestLogWindowImport)
#include "tst_logwindowimport.moc"
