// The evaluation list dialogs through their controls, headless: scope, filters, grouping, the
// grid's counts and sums, the hand-on to the text window and the chart of a grouped list.
#include "common/numbers.h"
#include "harvests/filter.h"
#include "reports/lists/members.h"
#include "reports/ui/lists/chartwindow.h"
#include "reports/timberlist.h"
#include "reports/ui/lists/listdialog.h"
#include "reports/ui/lists/timberlistdialog.h"
#include "reports/lists/listmodel.h"
#include "store/sql.h"
#include "support/reportsfixture.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChartView>
#include <QGraphicsSimpleTextItem>
#include <QGraphicsTextItem>
#include <QValueAxis>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

using namespace tarvik;
using test::child;

Q_DECLARE_METATYPE(std::function<void(tarvik::ListDialog&)>)

namespace {

// Lets the check look at the modal window of that name, then closes it.
void whenShown(const QString& name, std::function<void(QWidget*)> check)
{
    test::whenShown(name, [check](QWidget* w) {
        check(w);
        w->close();
    });
}

QStringList row(const QAbstractItemModel& m, int r)
{
    QStringList cells;
    for (int c = 0; c < m.columnCount(); ++c)
        cells << m.data(m.index(r, c)).toString();
    return cells;
}

} // namespace

class TestListDialog : public QObject {
    Q_OBJECT

    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_database;
    Einstellungen m_settings;
    test::ScriptedPrompter m_prompter;
    FixedClock m_clock{QDate(2026, 11, 23)};
    qint32 m_h1 = 0, m_h2 = 0;

    QSqlDatabase db() const { return m_database->shared(); }
    AppContext context() { return {db(), m_settings, m_folder.path(), m_prompter, m_clock}; }

    void log(qint32 id, int lot, int nr, const char* species, const char* quality, const char* cls, double efm, double price)
    {
        execSql(db(), QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Länge_m, Efm_oR, Stärkeklasse, Güteklasse, "
                                     "Preis_berechnet, Kennung) VALUES (?, ?, ?, 5, ?, ?, ?, ?, ?)"),
                {lot, nr, QString::fromUtf8(species), efm, QString::fromUtf8(cls), QString::fromUtf8(quality), price, id});
    }

private slots:
    void initTestCase()
    {
        m_database = m_folder.openDatabase();
        m_settings.repair();
        execSql(db(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr, Teilverkauft, Verkauft) VALUES (1, '2025', 'N', 'N'), (2, '2026', 'N', 'N')"));
        m_h1 = scalar(db(), QStringLiteral("SELECT ID FROM Hiebe WHERE Hieb_Nr = 1")).toInt();
        m_h2 = scalar(db(), QStringLiteral("SELECT ID FROM Hiebe WHERE Hieb_Nr = 2")).toInt();
        execSql(db(), QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Lagerort, Kennung) VALUES (1, 'Stämme', 'O''Brien''s Weg', ?), "
                                     "(2, 'Stämme', 'Hof', ?), (1, 'Stämme', 'Hof', ?)"),
                {m_h1, m_h1, m_h2});
        log(m_h1, 1, 1, "FI (Fichte)", "B", "L2b", 0.5, 20);
        log(m_h1, 1, 2, "FI (Fichte)", "B", "L2b", 0.75, 30);
        log(m_h1, 1, 3, "FI (Fichte)", "C", "L3a", 1.25, 40);
        log(m_h1, 2, 4, "BU (Rotbuche)", "B", "L2b", 0.5, 25);
        log(m_h2, 1, 1, "FI (Fichte)", "B", "L2b", 9, 99); // another harvest: not in "Aktuellen Hieb"
    }

    void init()
    {
        m_prompter.clear();
        // Each case opens its windows as on a first run; what a window keeps is tested apart.
        for (int list = 0; list < Einstellungen::ListCount; ++list) {
            m_settings.setListChoiceNumber(list, 0);
            m_settings.setListChoiceText(list, {});
        }
        m_settings.zahl[RangeModeSlot] = 0;
    }

    void logsOfCurrentHarvestGrouped()
    {
        ListDialog dialog(context(), lists::Member::Staemme, m_h1, true);
        auto* scope = child<QComboBox>(dialog, "komhieb");
        scope->setCurrentIndex(scope->findText(QStringLiteral("Aktuellen Hieb")));
        child<QRadioButton>(dialog, "optigruppe(1)")->click(); // by species, quality and class

        QString shownReport;
        whenShown(QStringLiteral("AF_Textausgabe"),
                  [&](QWidget* w) { shownReport = child<QPlainTextEdit>(*w, "t")->toPlainText(); });
        QTest::mouseClick(child<QPushButton>(dialog, "ok"), Qt::LeftButton);
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'\n')));

        const QAbstractItemModel& grid = *child<QTableView>(dialog, "gridli")->model();
        QCOMPARE(grid.rowCount(), 3);
        // Baumart, Güteklasse, Stärkeklasse, count, Efm, Efm per log, length, diameter, money
        QCOMPARE(row(grid, 0), (QStringList{"BU (Rotbuche)", "B", "L2b", "1", "0,500", "0,500", "5,00", "0,00", "25,00"}));
        QCOMPARE(row(grid, 1).mid(0, 5), (QStringList{"FI (Fichte)", "B", "L2b", "2", "1,250"})); // not the other harvest's
        QCOMPARE(child<QLabel>(dialog, "bezanzahl")->text(), QStringLiteral("Anzahl Datensätze: 3"));
        QVERIFY(shownReport.contains(QStringLiteral("Anzahl_Stämme")) && shownReport.contains(QStringLiteral("FI (Fichte)")));

        // The chart saved as PNG and PDF.
        const QString png = m_folder.filePath(QStringLiteral("diagramm.png"));
        const QString pdf = m_folder.filePath(QStringLiteral("diagramm.pdf"));
        bool saved = false;
        whenShown(QStringLiteral("BF_Diagramm"), [&](QWidget* w) {
            saved = static_cast<ChartWindow*>(w)->savePng(png) && static_cast<ChartWindow*>(w)->savePdf(pdf);
        });
        QTest::mouseClick(child<QPushButton>(dialog, "comdiagramm"), Qt::LeftButton);
        QVERIFY(saved && QImage(png).width() > 100);
        QVERIFY(test::toolOutput(QStringLiteral("pdfinfo"), {pdf}).contains(QRegularExpression(QStringLiteral("Pages:\\s+1\\n"))));
    }

    // What the chart writes on its bars and axes, as a German reader expects it.
    void chartSpeaksGerman_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("barLabel");
        QTest::newRow("money") << 12345.678 << 2 << QStringLiteral("12.345,68");
        QTest::newRow("volume, trailing zeros left off") << 1234.5 << 3 << QStringLiteral("1.234,5");
        QTest::newRow("count") << 7.0 << 0 << QStringLiteral("7");
    }

    void chartSpeaksGerman()
    {
        QFETCH(double, value);
        QFETCH(int, decimals);
        QFETCH(QString, barLabel);
        ChartData data{QStringLiteral("Test"), {QStringLiteral("Fichte"), QStringLiteral("Buche")}, {QStringLiteral("Wert")},
                       {{value, value / 3}}, {decimals}};
        ChartWindow window(data, m_prompter);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto* view = child<QChartView>(window, "diagramm");
        QVERIFY(view->chart()->localizeNumbers());
        QCOMPARE(view->chart()->locale().language(), QLocale::German);
        QStringList texts;
        for (QGraphicsItem* item : view->scene()->items())
            if (auto* text = dynamic_cast<QGraphicsTextItem*>(item))
                texts << text->toPlainText();
            else if (auto* simple = dynamic_cast<QGraphicsSimpleTextItem*>(item))
                texts << simple->text();
        QVERIFY2(texts.contains(barLabel), qPrintable(texts.join(u'|')));
        const auto axes = view->chart()->axes(Qt::Vertical);
        auto* amount = qobject_cast<QValueAxis*>(axes.value(0));
        QVERIFY(amount);
        if (decimals == 0) {
            // A count's axis has whole steps and whole labels only.
            QCOMPARE(amount->tickType(), QValueAxis::TicksDynamic);
            QVERIFY(amount->tickInterval() >= 1 && amount->tickInterval() == std::floor(amount->tickInterval()));
            for (const QString& t : texts)
                QVERIFY2(!t.contains(u','), qPrintable(t));
        }
    }

    // Every bar of a grouped list's chart stands for one row of the grid, under that row's keys
    // and with that row's figures; an empty key is a group of its own, shown as "(leer)".
    void chartBarsMatchTheRows_data()
    {
        QTest::addColumn<int>("member");
        QTest::addColumn<QString>("grouping");
        QTest::addColumn<QStringList>("inserts"); // rows of the chart's own harvest, "?" its ID
        QTest::addColumn<QStringList>("labels");  // the bars' labels, in the grid's order
        const QString lot = QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Anzahl_Stämme, Efm_oR, Preis_berechnet, Lagerort, "
                                           "Abnehmer, Kennung) VALUES ");
        QTest::newRow("empty and missing place")
            << int(lists::Member::Lose) << QStringLiteral("Nach dem Lagerort")
            << QStringList{lot + "(1, 'Stämme', 3, 1.5, 60, NULL, 'Huber', ?)", lot + "(2, 'Stämme', 2, 0.75, 30, '', 'Huber', ?)",
                           lot + "(3, 'Stämme', 4, 2.25, 90, 'Hof', NULL, ?)", lot + "(4, 'Stämme', 1, 0.5, 20, 'Hof', NULL, ?)"}
            << QStringList{"(leer)", "(leer)", "Hof"};
        QTest::newRow("missing buyer first")
            << int(lists::Member::Lose) << QStringLiteral("Nach dem Abnehmer")
            << QStringList{lot + "(1, 'Stämme', 3, 1.5, 60, 'Hof', NULL, ?)", lot + "(2, 'Stämme', 2, 0.75, 30, 'Hof', 'Säge Huber', ?)"}
            << QStringList{"(leer)", "Säge Huber"};
        QStringList qualities;
        QStringList labels{"(leer)"};
        const QString log = QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Länge_m, Efm_oR, Güteklasse, Preis_berechnet, "
                                           "Kennung) VALUES ");
        qualities << log + "(1, 100, 'FI (Fichte)', 4, 0.25, NULL, 5, ?)";
        for (int i = 1; i <= 11; ++i) {
            qualities << log + QStringLiteral("(1, %1, 'FI (Fichte)', 4, %2, 'Q%3', %4, ?)").arg(i).arg(0.125 * i).arg(i, 2, 10, QChar(u'0')).arg(i * 3);
            labels << QStringLiteral("Q%1").arg(i, 2, 10, QChar(u'0'));
        }
        QTest::newRow("many groups lie across") << int(lists::Member::Staemme) << QStringLiteral("Nach den Güteklassen") << qualities
                                                << labels;
        const QString pole = QStringLiteral("INSERT INTO Pfähle(Los_Nr, Baumart, Stärke_mR, Länge_m, Stärkeklasse, Anzahl, Preis_berechnet, "
                                            "Kennung) VALUES ");
        QTest::newRow("lengths shown alike") << int(lists::Member::Pfaehle) << QStringLiteral("Nach den Längen")
                                             << QStringList{pole + "(1, 'FI (Fichte)', 8, 4.001, 'P2', 10, 25, ?)",
                                                            pole + "(1, 'FI (Fichte)', 8, 4.004, 'P2', 4, 10, ?)",
                                                            pole + "(1, 'FI (Fichte)', 8, NULL, 'P2', 2, 6, ?)"}
                                             << QStringList{"(leer)", "4,00", "4,00"};
    }
    void chartBarsMatchTheRows()
    {
        QFETCH(int, member);
        QFETCH(QString, grouping);
        QFETCH(QStringList, inserts);
        QFETCH(QStringList, labels);
        execSql(db(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr, Teilverkauft, Verkauft) VALUES (77, '2026', 'N', 'N')"));
        const qint32 harvest = scalar(db(), QStringLiteral("SELECT ID FROM Hiebe WHERE Hieb_Nr = 77")).toInt();
        for (QString sql : inserts)
            execSql(db(), sql.replace(u'?', QString::number(harvest)));
        const auto cleanUp = qScopeGuard([&] {
            for (const char* table : {"Lose", "Stämme", "Pfähle", "Hiebe"})
                execSql(db(), QStringLiteral("DELETE FROM \"%1\" WHERE %2 = ?").arg(QString::fromUtf8(table),
                                                                                    table[0] == 'H' ? "ID" : "Kennung"),
                        {harvest});
        });

        ListDialog dialog(context(), lists::Member(member), harvest, false);
        QRadioButton* option = nullptr;
        for (QRadioButton* b : dialog.findChildren<QRadioButton*>())
            if (b->text() == grouping)
                option = b;
        QVERIFY(option);
        option->click();
        whenShown(QStringLiteral("AF_Textausgabe"), [](QWidget*) {});
        QTest::mouseClick(child<QPushButton>(dialog, "ok"), Qt::LeftButton);
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'\n')));
        const QAbstractItemModel& grid = *child<QTableView>(dialog, "gridli")->model();
        QCOMPARE(grid.rowCount(), labels.size());

        int figuresSeen = 0;
        whenShown(QStringLiteral("BF_Diagramm"), [&](QWidget* w) {
            auto* figure = child<QComboBox>(*w, "komwert");
            auto* view = child<QChartView>(*w, "diagramm");
            const int keys = grid.columnCount() - figure->count();
            for (int f = 0; f < figure->count(); ++f, ++figuresSeen) {
                figure->setCurrentIndex(f);
                auto* series = static_cast<QAbstractBarSeries*>(view->chart()->series().first());
                const auto axes = series->attachedAxes();
                auto* axis = qobject_cast<QBarCategoryAxis*>(axes.first()->type() == QAbstractAxis::AxisTypeBarCategory ? axes.first()
                                                                                                                       : axes.last());
                QStringList shown = axis->categories();
                QList<double> values;
                for (int i = 0; i < series->barSets().first()->count(); ++i)
                    values << series->barSets().first()->at(i);
                if (series->type() == QAbstractSeries::SeriesTypeHorizontalBar) { // the first group on top
                    std::reverse(shown.begin(), shown.end());
                    std::reverse(values.begin(), values.end());
                }
                QCOMPARE(shown.size(), grid.rowCount());
                QCOMPARE(values.size(), grid.rowCount());
                for (int r = 0; r < grid.rowCount(); ++r) {
                    QCOMPARE(QString(shown[r]).remove(QChar(0x200B)), labels[r]);
                    const QString cell = grid.data(grid.index(r, keys + f)).toString();
                    const int decimals = cell.contains(u',') ? int(cell.size() - cell.indexOf(u',') - 1) : 0;
                    QVERIFY2(std::abs(values[r] - readNumber(cell)) <= 0.5 * std::pow(10.0, -decimals) + 1e-9,
                             qPrintable(QStringLiteral("%1, bar %2: %3, the row shows %4")
                                            .arg(figure->currentText())
                                            .arg(r)
                                            .arg(values[r])
                                            .arg(cell)));
                }
            }
        });
        QTest::mouseClick(child<QPushButton>(dialog, "comdiagramm"), Qt::LeftButton);
        QVERIFY(figuresSeen > 0);
    }

    // What OK does with a choice that lists nothing: the message, and an empty grid.
    void refusedOrEmpty_data()
    {
        using Act = std::function<void(ListDialog&)>;
        QTest::addColumn<int>("member");
        QTest::addColumn<bool>("withHarvest");
        QTest::addColumn<Act>("act");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("rows");
        QTest::newRow("current harvest without one")
            << int(lists::Member::Staemme) << false << Act([](ListDialog& d) { child<QComboBox>(d, "komhieb")->setCurrentIndex(2); })
            << "Es ist kein (aktueller) Hieb markiert. Bitte wählen Sie einen Hieb aus oder listen Sie die Daten von allen Hieben!" << 0;
        QTest::newRow("no column ticked") << int(lists::Member::Lose) << true
                                          << Act([](ListDialog& d) { child<QPushButton>(d, "alle(1)")->click(); })
                                          << "Die Liste kann nicht erstellt werden, weil kein Datenfeld zum Listen ausgewählt ist." << 0;
        QTest::newRow("two-digit year") << int(lists::Member::Lose) << true << Act([](ListDialog& d) {
            child<QRadioButton>(d, "optizeitraum(1)")->click();
            test::typeInto(child<QLineEdit>(d, "tzeitraum(0)"), QStringLiteral("05"));
            test::typeInto(child<QLineEdit>(d, "tzeitraum(1)"), QStringLiteral("2007"));
        }) << "Die Liste kann nicht erstellt werden, weil die Jahre von... bis... 4-stellig sein müssen." << 0;
        QTest::newRow("sold harvests: none") << int(lists::Member::Lose) << true
                                             << Act([](ListDialog& d) { child<QComboBox>(d, "komhieb")->setCurrentIndex(5); })
                                             << "Es wurden lt. den aktuellen Einstellungen keine Lose gefunden!" << 0;
        QTest::newRow("place with an apostrophe") << int(lists::Member::Lose) << true << Act([](ListDialog& d) {
            auto* place = child<QComboBox>(d, "komlagerort");
            QCOMPARE(place->count(), 3); // all, "Hof", "O'Brien's Weg"
            place->setCurrentIndex(place->findText(QStringLiteral("O'Brien's Weg")));
        }) << QString() << 1;
    }
    void refusedOrEmpty()
    {
        QFETCH(int, member);
        QFETCH(bool, withHarvest);
        QFETCH(std::function<void(ListDialog&)>, act);
        QFETCH(QString, message);
        ListDialog dialog(context(), lists::Member(member), withHarvest ? std::optional(m_h1) : std::nullopt, false);
        act(dialog);
        if (message.isEmpty())
            whenShown(QStringLiteral("AF_Textausgabe"), [](QWidget*) {});
        QTest::mouseClick(child<QPushButton>(dialog, "ok"), Qt::LeftButton);
        QCOMPARE(m_prompter.messages(), message.isEmpty() ? QStringList{} : QStringList{message});
        QTEST(int(child<QTableView>(dialog, "gridli")->model()->rowCount()), "rows");
    }

    // Every list window, closed and opened again (the settings file written and read between),
    // shows the choices it was closed with; each list keeps its own.
    void everyListKeepsItsChoices()
    {
        QHash<int, lists::ListRequest> chosen;
        for (const lists::MemberDef& def : lists::members()) {
            ListDialog dialog(context(), def.member, m_h1, false);
            if (def.member == lists::Member::Hiebe) { // one year range for all lists
                child<QRadioButton>(dialog, "optizeitraum(1)")->click();
                test::typeInto(child<QLineEdit>(dialog, "tzeitraum(0)"), QStringLiteral("2020"));
            }
            auto* scope = child<QComboBox>(dialog, "komhieb");
            scope->setCurrentIndex((int(def.member) + 3) % scope->count()); // each list another scope
            if (!def.filters.isEmpty()) {
                auto* filter = child<QComboBox>(dialog, qPrintable(def.filters.last().objectName()));
                filter->setCurrentIndex(filter->count() - 1);
            }
            child<QComboBox>(dialog, "komsort")->setCurrentIndex(2);
            child<QCheckBox>(dialog, "komsortdesc")->setChecked(true);
            for (int i : {1, 3})
                child<QListWidget>(dialog, "liste")->item(i)->setCheckState(Qt::Unchecked);
            child<QRadioButton>(dialog, qPrintable(QStringLiteral("optigruppe(%1)").arg(int(def.member) % def.groupings.size())))->click();
            chosen.insert(int(def.member), dialog.request());
            QTest::mouseClick(child<QPushButton>(dialog, "beenden"), Qt::LeftButton);
            QVERIFY(!dialog.isVisible());
        }

        const QString file = m_folder.filePath(QString::fromLatin1(SettingsFileName));
        QVERIFY(EinstellungenSpeichern(m_settings, file));
        m_settings = EinstellungenLaden(file);

        for (const lists::MemberDef& def : lists::members()) {
            const lists::ListRequest& c = chosen[int(def.member)];
            ListDialog dialog(context(), def.member, m_h1, false);
            const lists::ListRequest r = dialog.request();
            QCOMPARE(r.scope, c.scope);
            QCOMPARE(r.filters, c.filters);
            QCOMPARE(r.sortColumn, c.sortColumn);
            QVERIFY(r.descending);
            QCOMPARE(r.columns.size(), def.columns.size() - 2);
            QCOMPARE(r.columns, c.columns);
            QCOMPARE(r.grouping, c.grouping);
            QVERIFY2(!child<QListWidget>(dialog, "liste")->isEnabled(), "a kept grouping decides the columns again");
            QVERIFY2(child<QRadioButton>(dialog, "optizeitraum(1)")->isChecked(), qPrintable(def.windowName));
            QCOMPARE(child<QLineEdit>(dialog, "tzeitraum(0)")->text(), QStringLiteral("2020"));
            dialog.reject();
        }
    }

    void timberListOfTickedLots()
    {
        TimberListDialog dialog(context(), m_h1);
        auto* lots = child<QListWidget>(dialog, "liste");
        QCOMPARE(lots->count(), 2);
        QCOMPARE(lots->item(0)->text(), QStringLiteral("Los 1"));
        child<QPushButton>(dialog, "alle(1)")->click();
        QTest::mouseClick(child<QPushButton>(dialog, "ok"), Qt::LeftButton);
        QCOMPARE(m_prompter.messages(), QStringList{"Die Liste kann nicht erstellt werden, weil keine Lose markiert sind."});
        m_prompter.clear();

        lots->item(1)->setCheckState(Qt::Checked);
        QString shown;
        whenShown(QStringLiteral("AF_Textausgabe"), [&](QWidget* w) { shown = child<QPlainTextEdit>(*w, "t")->toPlainText(); });
        QTest::mouseClick(child<QPushButton>(dialog, "ok"), Qt::LeftButton);
        QVERIFY(m_prompter.messages().isEmpty());
        QVERIFY(shown.startsWith(QStringLiteral("HIEBDATEN")));
        QVERIFY(shown.contains(QStringLiteral("Einzelauswertung Stämme Los 2")));
        QVERIFY(!shown.contains(QStringLiteral("Einzelauswertung Stämme Los 1")));
    }

    void gridFetchesLazily()
    {
        {
            TransactionGuard guard(db());
            for (int i = 0; i < 3000; ++i)
                log(m_h2, 5, 100 + i, "KI (Kiefer)", "C", "L1b", 0.125, 2);
            guard.commit();
        }
        m_settings.zahl[4] = 2; // the spreadsheet
        ListDialog dialog(context(), lists::Member::Staemme, m_h2, false);
        // Opening the spreadsheet needs a desktop; the file is what counts here.
        QTest::mouseClick(child<QPushButton>(dialog, "ok"), Qt::LeftButton);
        QVERIFY(m_prompter.messages().size() <= 1); // at most: no program to open it with
        m_settings.zahl[4] = 0;
        const QAbstractItemModel& grid = *child<QTableView>(dialog, "gridli")->model();
        QCOMPARE(child<QLabel>(dialog, "bezanzahl")->text(), QStringLiteral("Anzahl Datensätze: 3001"));
        QVERIFY2(grid.rowCount() < 3001, "the grid holds only the rows it has shown");
        QVERIFY(child<QLabel>(dialog, "bezseite")->text().startsWith(QStringLiteral("Seite 1 von ")));
        QVERIFY(QFile::exists(m_folder.filePath(QStringLiteral("Daten.xlsx"))));
        execSql(db(), QStringLiteral("DELETE FROM Stämme WHERE Los_Nr = 5"));
    }
};

TARVIK_TEST_MAIN(TestListDialog)
#include "tst_listdialog.moc"
