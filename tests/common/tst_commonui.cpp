// The shared window plumbing: the desktop's questions (Enter answers No), Qt's own dialogs in
// German, the grid look (what a cell shows and how it is aligned, the proxy a grid gets, the
// first-start widths), the read-only look and the label that never widens its window.
#include "common/germanlocale.h"
#include "common/ui/elidedlabel.h"
#include "common/ui/gridformat.h"
#include "common/ui/messageboxprompter.h"
#include "support/tempdatafolder.h"

#include <QApplication>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTimer>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <QVBoxLayout>

using namespace tarvik;

Q_DECLARE_METATYPE(Qt::Alignment)

namespace {
constexpr Qt::Alignment Right = Qt::AlignRight | Qt::AlignVCenter;
constexpr Qt::Alignment Left = Qt::AlignLeft | Qt::AlignVCenter;
const QVariant Null = QVariant(QMetaType(QMetaType::Double));
} // namespace

class TestCommonUi : public QObject {
    Q_OBJECT

private slots:
    // Runs before Qt's catalogue is loaded: the prompter's buttons are German by themselves.
    void enterAnswersNo()
    {
        MessageBoxPrompter prompter;
        QStringList buttons;
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            for (QAbstractButton* b : box->buttons())
                buttons << b->text();
            QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
            QTest::keyClick(box, Qt::Key_Return);
        });
        QVERIFY(!prompter.askYesNo(QStringLiteral("Soll der markierte Datensatz wirklich gelöscht werden?")));
        buttons.sort();
        QCOMPARE(buttons, (QStringList{QStringLiteral("&Ja"), QStringLiteral("&Nein")}));
    }

    void qtDialogsSpeakGerman()
    {
        QVERIFY(installGermanQtTranslations());
        QMessageBox box;
        box.setStandardButtons(QMessageBox::Cancel | QMessageBox::Yes | QMessageBox::Save);
        QCOMPARE(box.button(QMessageBox::Cancel)->text(), QStringLiteral("Abbrechen"));
        QCOMPARE(box.button(QMessageBox::Yes)->text(), QStringLiteral("&Ja"));
        QCOMPARE(box.button(QMessageBox::Save)->text(), QStringLiteral("Speichern"));
        QFileDialog dialog;
        dialog.setOption(QFileDialog::DontUseNativeDialog);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.show();
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Speichern unter"));
        QCOMPARE(dialog.labelText(QFileDialog::Accept), QStringLiteral("S&peichern"));
    }

    void cells_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<QVariantList>("others"); // further values of the same column
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QVariant>("shown"); // what the grid's own model shows, if anything
        QTest::addColumn<QString>("text");
        QTest::addColumn<Qt::Alignment>("alignment");

        const QVariant none;
        QTest::newRow("price two decimals") << "Preis_berechnet" << QVariantList{} << QVariant(2.5) << none << "2,50" << Right;
        QTest::newRow("amount typed as text") << "Betrag" << QVariantList{} << QVariant(QStringLiteral("2,5")) << none << "2,50" << Right;
        QTest::newRow("money shown by its model with four decimals") << "Preis_je_Stück" << QVariantList{} << QVariant(1.25)
                                                                   << QVariant(QStringLiteral("1,2500")) << "1,25" << Right;
        QTest::newRow("price kind is a figure, not money") << "Preis_Art" << QVariantList{} << QVariant(qlonglong(2)) << none << "2" << Right;
        QTest::newRow("empty price") << "Preis_berechnet" << QVariantList{QVariant(1.0)} << Null << none << "" << Right;
        QTest::newRow("volume three decimals") << "Efm_oR" << QVariantList{} << QVariant(0.41234) << none << "0,412" << Right;
        QTest::newRow("other real: as few decimals as it needs") << "Faktor" << QVariantList{} << QVariant(double(0.7f)) << none << "0,7" << Right;
        QTest::newRow("figure formatted by its model stays") << "Hiebfläche" << QVariantList{} << QVariant(1.5)
                                                             << QVariant(QStringLiteral("1,5")) << "1,5" << Right;
        QTest::newRow("figure as text") << "Los_Nr" << QVariantList{QStringLiteral("12")} << QVariant(QStringLiteral("3")) << none << "3" << Right;
        QTest::newRow("name") << "Baumart" << QVariantList{} << QVariant(QStringLiteral("Fichte")) << none << "Fichte" << Left;
        QTest::newRow("digits among names stay left") << "Güteklasse" << QVariantList{QStringLiteral("B")} << QVariant(QStringLiteral("2"))
                                                      << none << "2" << Left;
        QTest::newRow("stored date") << "Hiebdatum_von" << QVariantList{} << QVariant(QStringLiteral("2026-11-21")) << none << "21.11.2026" << Left;
    }

    void cells()
    {
        QFETCH(QString, column);
        QFETCH(QVariantList, others);
        QFETCH(QVariant, value);
        QFETCH(QVariant, shown);
        QVector<QVariant> values(others.begin(), others.end());
        values << value;
        const GridCell cell = gridCell(columnKind(column, values), column, value, shown);
        QTEST(cell.text, "text");
        QTEST(cell.alignment, "alignment");
    }

    // A grid fed from a plain model reads back formatted cells through its own model.
    void proxyFormatsEveryCell()
    {
        QStandardItemModel source(2, 3);
        source.setHorizontalHeaderLabels({QStringLiteral("Baumart"), QStringLiteral("Holzpreis"), QStringLiteral("Efm_oR")});
        const QVariant rows[2][3] = {{QStringLiteral("Fichte"), 2.5, 0.5}, {QStringLiteral("Buche"), 110.0, 1.25}};
        for (int r = 0; r < 2; ++r)
            for (int c = 0; c < 3; ++c)
                source.setData(source.index(r, c), rows[r][c], Qt::EditRole);
        QTableView grid;
        grid.setModel(&source);
        grid.setEditTriggers(QAbstractItemView::NoEditTriggers);
        GridFormatProxy* proxy = formatGrid(&grid);
        QCOMPARE(grid.model(), proxy);
        QCOMPARE(formatGrid(&grid), proxy); // a second call changes nothing
        const QAbstractItemModel* m = grid.model();
        QCOMPARE(m->index(0, 1).data().toString(), QStringLiteral("2,50"));
        QCOMPARE(m->index(1, 2).data().toString(), QStringLiteral("1,250"));
        QCOMPARE(m->index(0, 1).data(Qt::TextAlignmentRole).toInt(), int(Right));
        QCOMPARE(m->index(0, 0).data(Qt::TextAlignmentRole).toInt(), int(Left));
        QCOMPARE(m->index(0, 1).data(Qt::EditRole).toDouble(), 2.5); // editing sees the stored value

        // A changed model is judged again: a name in the price column makes it text.
        source.setData(source.index(1, 1), QStringLiteral("auf Anfrage"), Qt::EditRole);
        QCOMPARE(m->index(0, 1).data(Qt::TextAlignmentRole).toInt(), int(Left));
        QCOMPARE(m->index(1, 1).data().toString(), QStringLiteral("auf Anfrage"));
    }

    void readOnlyCellsShadedWhereOthersCanBeTyped()
    {
        QStandardItemModel source(1, 2);
        source.setHorizontalHeaderLabels({QStringLiteral("Baumart"), QStringLiteral("SK_L1a")});
        source.setItem(0, 0, new QStandardItem(QStringLiteral("Fichte")));
        source.item(0, 0)->setEditable(false);
        source.setItem(0, 1, new QStandardItem(QStringLiteral("3")));
        QTableView editable;
        editable.setModel(&source);
        formatGrid(&editable);
        QVERIFY(editable.model()->index(0, 0).data(Qt::BackgroundRole).isValid());
        QVERIFY(!editable.model()->index(0, 1).data(Qt::BackgroundRole).isValid());
        QTableView fixed;
        fixed.setModel(&source);
        fixed.setEditTriggers(QAbstractItemView::NoEditTriggers);
        formatGrid(&fixed);
        QVERIFY(!fixed.model()->index(0, 0).data(Qt::BackgroundRole).isValid()); // a list nobody types into stays plain
        source.item(0, 1)->setEditable(false);
        QVERIFY(!editable.model()->index(0, 0).data(Qt::BackgroundRole).isValid()); // nor one without a cell to type into
    }

    void tableWidgetItems()
    {
        QTableWidget table(2, 2);
        table.setHorizontalHeaderLabels({QStringLiteral("Waldname"), QStringLiteral("Fläche")});
        table.setItem(0, 0, new QTableWidgetItem(QStringLiteral("Hoher Wald")));
        table.setItem(0, 1, new QTableWidgetItem(QStringLiteral("2,5")));
        table.setItem(1, 1, new QTableWidgetItem(QStringLiteral("12")));
        formatTableItems(&table);
        QCOMPARE(table.model()->index(0, 1).data(Qt::TextAlignmentRole).toInt(), int(Right));
        QCOMPARE(table.model()->index(0, 0).data(Qt::TextAlignmentRole).toInt(), int(Left));
    }

    // A short column stays short, a long remark is capped, and a name is not cut even far down a
    // grid not yet shown (the hub's Lagerort): widths come from the rows, not from the view.
    void firstStartWidthsFitContent()
    {
        QStandardItemModel source(60, 3);
        source.setHorizontalHeaderLabels({QStringLiteral("Nr"), QStringLiteral("Lagerort"), QStringLiteral("Bemerkung")});
        for (int r = 0; r < 60; ++r) {
            source.setItem(r, 0, new QStandardItem(QString::number(r + 1)));
            source.setItem(r, 1, new QStandardItem(QStringLiteral("Weg")));
        }
        const QString longPlace = QStringLiteral("Polter am Forstweg Eichelberg, Abzweig Hohe Buche");
        source.setItem(45, 1, new QStandardItem(longPlace));
        source.setItem(0, 2, new QStandardItem(QString(400, u'x')));
        QTableView grid;
        grid.setModel(&source);
        formatGrid(&grid);
        grid.resize(400, 120);
        fitColumnsToContent(&grid);
        QVERIFY(grid.columnWidth(0) < 80);
        QVERIFY2(grid.columnWidth(1) > grid.fontMetrics().horizontalAdvance(longPlace), qPrintable(QString::number(grid.columnWidth(1))));
        QVERIFY(grid.columnWidth(2) <= 320);
        QVERIFY(grid.columnWidth(2) > grid.columnWidth(0));
    }

    void readOnlyLook()
    {
        QLineEdit edit;
        QPlainTextEdit info;
        QVERIFY(!looksReadOnly(&edit));
        showReadOnly(&edit);
        showReadOnly(&info);
        QVERIFY(looksReadOnly(&edit));
        QVERIFY(looksReadOnly(&info));
        QCOMPARE(edit.palette().color(QPalette::Base), edit.palette().color(QPalette::Window));
    }

    void longLabelDoesNotWidenItsWindow()
    {
        QWidget window;
        auto* layout = new QVBoxLayout(&window);
        auto* label = new ElidedLabel;
        layout->addWidget(label);
        window.resize(300, 60);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QString text = QStringLiteral("Statistik:   Lose=12   Fläche=1234,5678   Stämme_Anz=99999   Stämme_Efm=12345,678");
        label->setFullText(text);
        QApplication::processEvents();
        QCOMPARE(window.width(), 300);
        QCOMPARE(label->text(), text);
        QCOMPARE(label->toolTip(), text);
        QVERIFY(label->shownText().endsWith(QChar(0x2026)));
        window.resize(1200, 60);
        QApplication::processEvents();
        QCOMPARE(label->shownText(), text);
    }
};

TARVIK_TEST_MAIN(TestCommonUi)
#include "tst_commonui.moc"
