// The master data hub, its editors and the lookup-list editor, driven through their controls.
#include "common/textfile.h"
#include "common/ui/messageboxprompter.h"
#include "masterdata/ui/editors.h"
#include "masterdata/ui/lookuplistdialog.h"
#include "masterdata/ui/masterdatahub.h"
#include "reports/reportfile.h"
#include "support/masterdatafixture.h"
#include "support/widgets.h"

#include <QAbstractProxyModel>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSqlQueryModel>
#include <QSqlRecord>
#include <QStandardPaths>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>
#include <functional>

using namespace tarvik;
using test::child;

namespace {

// Runs the step on the modal window that the next click opens.
void onNextModal(const std::function<void(QWidget&)>& step)
{
    QTimer::singleShot(0, [step] {
        QWidget* w = QApplication::activeModalWidget();
        QVERIFY(w);
        step(*w);
    });
}

// The grid's rows as the hub's query delivered them, behind the grid's formatting.
QSqlQueryModel* sqlModel(const QTableView& grid)
{
    return static_cast<QSqlQueryModel*>(qobject_cast<QAbstractProxyModel*>(grid.model())->sourceModel());
}

int rowOf(const QTableView& grid, const QString& column, const QString& value)
{
    auto* model = sqlModel(grid);
    for (int r = 0; r < model->rowCount(); ++r)
        if (model->record(r).value(column).toString() == value)
            return r;
    return -1;
}

} // namespace

class TestMasterDataHub : public QObject, protected test::MasterDataFixture {
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); } // grid widths go to a test store
    void init() { resetDatabase(); }
    void cleanup() { QCOMPARE(m_prompter.pendingAnswers(), 0); }

    void chooseMarkChangeDelete()
    {
        MasterDataHub hub(context(), MasterList::Baumarten);
        auto* grid = child<QTableView>(hub, "li");
        child<QRadioButton>(hub, "opti(3)")->click();
        QCOMPARE(hub.list(), MasterList::Pfaehle);
        QCOMPARE(grid->model()->rowCount(), value(QStringLiteral("SELECT COUNT(*) FROM Stärkeklassen_Pfähle")).toInt());

        child<QPushButton>(hub, "control7")->click();
        child<QPushButton>(hub, "löschen")->click();
        QCOMPARE(m_prompter.messages(),
                 (QStringList{QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie ändern möchten."),
                              QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie löschen möchten.")}));

        // Change P2 to P2x: stored, and ok moves on to the next row.
        const int p2 = rowOf(*grid, QStringLiteral("Klasse"), QStringLiteral("P2"));
        grid->selectRow(p2);
        QString shownAfterOk;
        onNextModal([&shownAfterOk](QWidget& editor) {
            QCOMPARE(editor.objectName(), QStringLiteral("SF_Stammdaten_SKPfaehle"));
            auto* klasse = child<QLineEdit>(editor, "tz(0)");
            QCOMPARE(klasse->text(), QStringLiteral("P2"));
            QCOMPARE(child<QLineEdit>(editor, "tz(2)")->text(), QStringLiteral("13"));
            klasse->setText(QStringLiteral("P2x"));
            child<QPushButton>(editor, "ok")->click();
            shownAfterOk = klasse->text();
            child<QPushButton>(editor, "abbrechen")->click();
        });
        child<QPushButton>(hub, "control7")->click();
        QCOMPARE(shownAfterOk, QStringLiteral("P2.1"));
        QCOMPARE(grid->model()->index(p2, 0).data().toString(), QStringLiteral("P2x"));

        // A free class deleted goes from the grid.
        const int before = grid->model()->rowCount();
        grid->selectRow(rowOf(*grid, QStringLiteral("Klasse"), QStringLiteral("P3")));
        m_prompter.answerYes();
        child<QPushButton>(hub, "löschen")->click();
        QCOMPARE(grid->model()->rowCount(), before - 1);
        QCOMPARE(rowOf(*grid, QStringLiteral("Klasse"), QStringLiteral("P3")), -1);

        // The choice is kept for the next opening.
        MasterDataHub again(context());
        QCOMPARE(again.list(), MasterList::Pfaehle);
        QVERIFY(child<QRadioButton>(again, "opti(3)")->isChecked());
    }

    void newLogClassThroughTheEditor()
    {
        MasterDataHub hub(context(), MasterList::Staemme);
        auto* grid = child<QTableView>(hub, "li");
        const int rows = grid->model()->rowCount();
        QStringList afterStore;
        onNextModal([&afterStore](QWidget& editor) {
            QCOMPARE(editor.objectName(), QStringLiteral("SF_Stammdaten_SKStaemme"));
            child<QLineEdit>(editor, "tz(0)")->setText(QStringLiteral("L 7"));
            child<QLineEdit>(editor, "tz(1)")->setText(QStringLiteral("70"));
            child<QLineEdit>(editor, "tz(2)")->setText(QStringLiteral("79"));
            child<QPushButton>(editor, "ok")->click(); // refused: the input stays
            afterStore << child<QLineEdit>(editor, "tz(0)")->text();
            child<QLineEdit>(editor, "tz(0)")->setText(QStringLiteral("L7"));
            child<QPushButton>(editor, "ok")->click(); // stored: cleared for the next class
            afterStore << child<QLineEdit>(editor, "tz(0)")->text() << child<QLineEdit>(editor, "tz(1)")->text();
            child<QPushButton>(editor, "abbrechen")->click();
        });
        child<QPushButton>(hub, "neu")->click();
        QCOMPARE(afterStore, (QStringList{"L 7", "", ""}));
        QCOMPARE(m_prompter.messages().size(), 2);
        QVERIFY(m_prompter.messages().first().contains(QStringLiteral("nur aus Buchstaben")));
        QCOMPARE(grid->model()->rowCount(), rows + 1);

        // The day prices list shows the new column.
        child<QRadioButton>(hub, "opti(10)")->click();
        auto* model = sqlModel(*grid);
        QCOMPARE(model->record().fieldName(model->columnCount() - 2), QStringLiteral("SK_L7"));
    }

    // Prices read as money, species as names; the cells that cannot be typed into are shaded.
    void gridCellsReadLikeAPaperList()
    {
        execSql(db(), QStringLiteral("UPDATE Tagespreise SET SK_L3a = 88.5 WHERE Baumart = 'FI (Fichte)'"));
        MasterDataHub hub(context(), MasterList::Tagespreise);
        auto* grid = child<QTableView>(hub, "li");
        const QAbstractItemModel* m = grid->model();
        const int row = rowOf(*grid, QStringLiteral("Baumart"), QStringLiteral("FI (Fichte)"));
        const int price = sqlModel(*grid)->record().indexOf(QStringLiteral("SK_L3a"));
        QCOMPARE(m->index(row, price).data().toString(), QStringLiteral("88,50"));
        QCOMPARE(m->index(row, price).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
        QCOMPARE(m->index(row, 0).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignLeft | Qt::AlignVCenter));
        QVERIFY(m->index(row, 0).data(Qt::BackgroundRole).isValid());
        QVERIFY(!m->index(row, price).data(Qt::BackgroundRole).isValid());
    }

    // A field is as wide as the text it takes: a class name of six letters is not stretched
    // over the window, a species name of 22 is not cut.
    void editorFieldsFitTheirText()
    {
        ClassEditor classes(context(), ClassTable::Staemme, EditMode::Neu, {}, std::nullopt);
        SpeciesEditor species(context(), EditMode::Neu, {}, std::nullopt);
        for (QDialog* d : {static_cast<QDialog*>(&classes), static_cast<QDialog*>(&species)}) {
            d->resize(900, 300);
            d->show();
            QVERIFY(QTest::qWaitForWindowExposed(d));
        }
        auto* klasse = child<QLineEdit>(classes, "tz(0)");
        auto* baumart = child<QLineEdit>(species, "tz(0)");
        QVERIFY2(klasse->width() < 200, qPrintable(QString::number(klasse->width())));
        QVERIFY(baumart->width() >= baumart->fontMetrics().horizontalAdvance(QStringLiteral("WK (Weymouthskiefer)")));
        QVERIFY(baumart->width() < 400);
    }

    void dayPriceCellsAndCopies()
    {
        MasterDataHub hub(context(), MasterList::Tagespreise);
        auto* grid = child<QTableView>(hub, "li");
        auto* model = sqlModel(*grid);
        const int row = rowOf(*grid, QStringLiteral("Baumart"), QStringLiteral("FI (Fichte)"));
        const int column = model->record().indexOf(QStringLiteral("SK_L3a"));
        QVERIFY(!(model->flags(model->index(row, 0)) & Qt::ItemIsEditable));
        QVERIFY(model->flags(model->index(row, column)) & Qt::ItemIsEditable);
        m_prompter.answerNo();
        QVERIFY(model->setData(model->index(row, column), QStringLiteral("88,5"), Qt::EditRole));
        QTest::qWait(20); // the grid is read again after the cell's editor closed
        QCOMPARE(model->index(row, column).data().toString(), QStringLiteral("88,50"));

        child<QPushButton>(hub, "kopie")->click();
        QCOMPARE(m_prompter.messages().last(),
                 QStringLiteral("Bitte markieren Sie zuerst den Datensatz, von dem Sie eine Kopie einfügen möchten."));
        const int rows = model->rowCount();
        grid->selectRow(row);
        child<QPushButton>(hub, "kopie")->click();
        QCOMPARE(model->rowCount(), rows + 1);
        QCOMPARE(value(QStringLiteral("SELECT COUNT(*) FROM Tagespreise WHERE Baumart = 'FI (Fichte)' AND SK_L3a = 88.5")),
                 QStringLiteral("2"));

        // The copy's quality is typed next, straight into its cell.
        const int quality = model->record().indexOf(QStringLiteral("Güte"));
        const QModelIndex copyQuality = grid->currentIndex();
        QCOMPARE(copyQuality.column(), quality);
        auto* editor = qobject_cast<QLineEdit*>(grid->indexWidget(copyQuality));
        QVERIFY(editor); // the cell is open for typing
        editor->setText(QStringLiteral("A"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTest::qWait(20);
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Güte, '/') FROM (SELECT Güte FROM Tagespreise WHERE Baumart = 'FI (Fichte)' "
                                      "ORDER BY ID)")),
                 QStringLiteral("B/A"));
    }

    void editorsStepAndPrefill()
    {
        // "Ändern" on the last species steps back to the first.
        MasterDataHub hub(context(), MasterList::Baumarten);
        auto* grid = child<QTableView>(hub, "li");
        const int last = grid->model()->rowCount() - 1;
        grid->selectRow(last);
        QString first;
        onNextModal([&first](QWidget& editor) {
            QCOMPARE(editor.objectName(), QStringLiteral("SF_Stammdaten_Baumarten"));
            child<QPushButton>(editor, "ok")->click();
            first = child<QLineEdit>(editor, "tz(0)")->text();
            child<QPushButton>(editor, "abbrechen")->click();
        });
        child<QPushButton>(hub, "control7")->click();
        QCOMPARE(first, grid->model()->index(0, 0).data().toString());

        // A new bark range: the next one starts after it for the same species.
        child<QRadioButton>(hub, "opti(9)")->click();
        QStringList next;
        onNextModal([&next](QWidget& editor) {
            QCOMPARE(editor.objectName(), QStringLiteral("SF_Stammdaten_Rindenabzug2"));
            child<QComboBox>(editor, "kombaumart")->setCurrentText(QStringLiteral("FI (Fichte)"));
            child<QLineEdit>(editor, "tz(0)")->setText(QStringLiteral("20"));
            child<QLineEdit>(editor, "tz(1)")->setText(QStringLiteral("29"));
            child<QLineEdit>(editor, "tz(2)")->setText(QStringLiteral("2"));
            child<QPushButton>(editor, "ok")->click();
            next << child<QComboBox>(editor, "kombaumart")->currentText() << child<QLineEdit>(editor, "tz(0)")->text()
                 << child<QLineEdit>(editor, "tz(1)")->text() << child<QLineEdit>(editor, "tz(2)")->text();
            child<QPushButton>(editor, "abbrechen")->click();
        });
        child<QPushButton>(hub, "neu")->click();
        QCOMPARE(next, (QStringList{"FI (Fichte)", "30", "", "2"}));
        QCOMPARE(value(QStringLiteral("SELECT COUNT(*) FROM Rindenabzug2 WHERE Baumart = 'FI (Fichte)' AND Stärke_von = 20 AND Stärke_bis = 29")),
                 QStringLiteral("1"));
    }

    void deleteQuestionDefaultsToNo()
    {
        // With the program's own message boxes, Return on the question keeps the row.
        MessageBoxPrompter boxes;
        AppContext withBoxes{db(), m_settings, m_folder.path(), boxes, m_clock};
        MasterDataHub hub(withBoxes, MasterList::Gueteklassen);
        auto* grid = child<QTableView>(hub, "li");
        const int rows = grid->model()->rowCount();
        grid->selectRow(rows - 1);
        QString defaultButton;
        onNextModal([&defaultButton](QWidget& box) {
            auto* question = qobject_cast<QMessageBox*>(&box);
            QVERIFY(question);
            defaultButton = question->defaultButton()->text();
            QTest::keyClick(question, Qt::Key_Return);
        });
        child<QPushButton>(hub, "löschen")->click();
        QCOMPARE(defaultButton, QStringLiteral("&Nein"));
        QCOMPARE(grid->model()->rowCount(), rows);
    }

    void columnWidthsPerList()
    {
        {
            MasterDataHub hub(context(), MasterList::Baumarten);
            child<QTableView>(hub, "li")->setColumnWidth(0, 321);
            child<QRadioButton>(hub, "opti(5)")->click();
            child<QTableView>(hub, "li")->setColumnWidth(0, 123);
            hub.accept();
        }
        MasterDataHub hub(context(), MasterList::Baumarten);
        auto* grid = child<QTableView>(hub, "li");
        QCOMPARE(grid->columnWidth(0), 321);
        child<QRadioButton>(hub, "opti(5)")->click();
        QCOMPARE(grid->columnWidth(0), 123);
    }

    void lookupListEditor()
    {
        execSql(db(), QStringLiteral("INSERT INTO Liste_Hiebart(Inhalt) VALUES ('Durchforstng')"));
        LookupListDialog dialog(context());
        auto* lists = child<QComboBox>(dialog, "kom");
        lists->setCurrentIndex(lists->findData(QStringLiteral("Liste_Hiebart")));
        auto* grid = child<QTableWidget>(dialog, "li");
        QCOMPARE(grid->rowCount(), 1);
        grid->selectRow(0);
        QCOMPARE(child<QLineEdit>(dialog, "tz(0)")->text(), QStringLiteral("Durchforstng"));
        child<QLineEdit>(dialog, "tz(0)")->setText(QStringLiteral("Durchforstung"));
        child<QPushButton>(dialog, "control7")->click();
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Inhalt) FROM Liste_Hiebart")), QStringLiteral("Durchforstung"));
        child<QLineEdit>(dialog, "tz(0)")->setText(QStringLiteral("Kahlschlag"));
        child<QPushButton>(dialog, "neu")->click();
        QCOMPARE(grid->rowCount(), 2);
        grid->selectRow(1);
        m_prompter.answerYes();
        child<QPushButton>(dialog, "löschen")->click();
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Inhalt) FROM Liste_Hiebart")), QStringLiteral("Durchforstung"));

        // Enter adds the typed word and empties the field for the next one.
        grid->clearSelection();
        auto* word = child<QLineEdit>(dialog, "tz(0)");
        word->clear();
        QTest::keyClicks(word, QStringLiteral("Windwurf"));
        QTest::keyClick(word, Qt::Key_Return);
        QCOMPARE(value(QStringLiteral("SELECT group_concat(Inhalt) FROM (SELECT Inhalt FROM Liste_Hiebart ORDER BY Inhalt)")),
                 QStringLiteral("Durchforstung,Windwurf"));
        QCOMPARE(word->text(), QString());

        lists->setCurrentIndex(lists->findData(QStringLiteral("Waldbesitzer")));
        QVERIFY(child<QLineEdit>(dialog, "tz(4)")->isVisibleTo(&dialog));
        lists->setCurrentIndex(lists->findData(QStringLiteral("Liste_Abnehmer")));
        QVERIFY(!child<QLineEdit>(dialog, "tz(1)")->isVisibleTo(&dialog));
    }

    // The hub's button prints the list it stands on.
    void printedList()
    {
        MasterDataHub hub(context(), MasterList::Gueteklassen);
        onNextModal([](QWidget& window) {
            QCOMPARE(window.objectName(), QStringLiteral("AF_Textausgabe"));
            window.close();
        });
        child<QPushButton>(hub, "comlisten")->click();
        const QStringList lines = readTextFile(reportFilePath(m_folder.path())).lines;
        QVERIFY(lines.contains(QStringLiteral("Anzahl Datensätze: 7")));
        QVERIFY(lines.contains(QStringLiteral("Seite 1 von 1")));
    }
};

TARVIK_TEST_MAIN(TestMasterDataHub)
#include "tst_masterdatahub.moc"
