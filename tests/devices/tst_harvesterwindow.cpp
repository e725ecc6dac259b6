// The log window's harvester import, headless: the file picked, the mapping dialog filled from
// the built-in table and changed by the user, the logs in fmrgrid while the transfer question
// is put, then stored into the lot; the choices are there again for the next file.
#include "devices/speciesmapping.h"
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

using namespace tarvik;
using test::child;
using test::whenShown;

namespace {

const QString V300 = QStringLiteral(TARVIK_STANFORD "/HPR_V0300_TimberMaticH_020125_20210211.hpr");

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

class TestHarvesterWindow : public QObject, protected test::HookedEntryFixture {
    Q_OBJECT

    QVariant value(const QString& sql) const { return scalar(db(), sql); }

private slots:
    // The log window offers the device imports the desktop program hands it.
    void initTestCase() { offerLogImports(deviceLogImports()); }

    void init() { resetHooked(std::nullopt); }

    void fileIsMappedShownAndStored()
    {
        const qint32 harvest = test::addHarvest(db(), 1);
        createLot(db(), harvest, 1, QStringLiteral("Stämme"));
        LogDialog d(context(), harvest, std::nullopt, 1);
        d.show();

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
        child<QPushButton>(d, "importharvester")->click();

        QVERIFY(answered);
        QCOMPARE(proposed, (QStringList{"FURU=KI (Kiefer)", "GRAN=FI (Fichte)", "LAUV=AL (Anderes Laubholz)", "TØRRGRAN=FI (Fichte)"}));
        QCOMPARE(gridRows, 57);
        QCOMPARE(refused, 57 - 40); // the unmapped broadleaf and the excluded "Vrak" logs are marked
        QCOMPARE(question, QStringLiteral("Es wurden 57 Stämme gefunden. Sollen diese jetzt übertragen werden?"));
        // 42 spruce logs less the 2 of "Vrak"; 15 broadleaf logs not mapped.
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme")).toInt(), 40);
        QCOMPARE(value(QStringLiteral("SELECT count(*) FROM Stämme WHERE Güteklasse = 'A'")).toInt(), 4);
        QCOMPARE(child<QTableView>(d, "gridli")->model()->rowCount(), 40);

        // The choices come back with the next file of the same names.
        const HarvesterMapping kept = rememberedHarvesterMapping(m_folder.path());
        QCOMPARE(kept.species.value(QStringLiteral("LAUV")), QString());
        QCOMPARE(kept.species.value(QStringLiteral("GRAN")), QStringLiteral("FI (Fichte)"));
        QVERIFY(kept.excludedProducts.contains(QStringLiteral("Vrak")));
        QCOMPARE(kept.productQuality.value(QStringLiteral("Sagt BHV D12+")), QStringLiteral("A"));
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

QTEST_MAIN(TestHarvesterWindow)
#include "tst_harvesterwindow.moc"
