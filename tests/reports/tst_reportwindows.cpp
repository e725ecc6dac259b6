// The report windows through their controls, headless: the evaluation list dialogs (the choices
// reach the list core and are kept, the grid, the text window and the chart show its answer),
// the timber list's lots, BF_Lose_Luftbild's grids and buttons, AF_Textausgabe.
#include "common/numbers.h"
#include "harvests/filter.h"
#include "reports/lists/members.h"
#include "reports/ui/lists/chartwindow.h"
#include "reports/timberlist.h"
#include "reports/ui/lists/listdialog.h"
#include "reports/ui/lists/timberlistdialog.h"
#include "reports/ui/lotmapdialog.h"
#include "reports/ui/textoutputwindow.h"
#include "common/textfile.h"
#include "store/sql.h"
#include "support/reportsfixture.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChartView>
#include <QGraphicsSimpleTextItem>
#include <QGraphicsTextItem>
#include <QValueAxis>
#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
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

} // namespace

class TestReportWindows : public QObject {
    Q_OBJECT

    test::TempDataFolder m_folder;
    std::unique_ptr<Database> m_database;
    Einstellungen m_settings;
    test::ScriptedPrompter m_prompter;
    FixedClock m_clock{QDate(2026, 11, 23)};
    qint32 m_h1 = 0, m_h2 = 0, m_h3 = 0;

    QSqlDatabase db() const { return m_database->shared(); }
    AppContext context() { return {db(), m_settings, m_folder.path(), m_prompter, m_clock}; }

private slots:
    void initTestCase()
    {
        m_database = m_folder.openDatabase();
        m_settings.repair();
        const test::Forest forest = test::plantForest(db());
        m_h1 = forest.unsold2025;
        m_h2 = forest.partlySold2026;
        m_h3 = forest.sold2026;
        execSql(db(), QStringLiteral("UPDATE Lose SET GPS_B = '39.999999', GPS_L = '10' WHERE Los_Nr = 1 AND Kennung = ?"), {m_h1});
        execSql(db(), QStringLiteral("UPDATE Lose SET GPS_B = '50.1', GPS_L = '9.2' WHERE Los_Nr = 2 AND Kennung = ?"), {m_h1});
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
        QFile::remove(reportFilePath(m_folder.path()));
    }

    // Every bar of a grouped list's chart stands for one row of the grid, under that row's keys
    // and with that row's figures; an empty key is a group of its own, shown as "(leer)"; more
    // groups than fit side by side lie across, the first on top. Figures are written as a German
    // reader expects them, a count's axis in whole steps; the chart is saved as PNG and PDF.
    void chartBarsMatchTheRows()
    {
        execSql(db(), QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr, Teilverkauft, Verkauft) VALUES (77, '2026', 'N', 'N')"));
        const qint32 harvest = scalar(db(), QStringLiteral("SELECT ID FROM Hiebe WHERE Hieb_Nr = 77")).toInt();
        const QString insert = QStringLiteral("INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Länge_m, Efm_oR, Güteklasse, "
                                              "Preis_berechnet, Kennung) VALUES (1, ?, 'FI (Fichte)', 4, ?, ?, ?, ?)");
        execSql(db(), insert, {100, 0.25, QVariant(QMetaType(QMetaType::QString)), 5, harvest});
        QStringList labels{"(leer)"};
        for (int i = 1; i <= 11; ++i) {
            labels << QStringLiteral("Q%1").arg(i, 2, 10, QChar(u'0'));
            execSql(db(), insert, {i, i == 10 ? 1234.5 : 0.125 * i, labels.last(), i == 11 ? 12345.678 : i * 3, harvest});
        }
        const auto cleanUp = qScopeGuard([&] {
            execSql(db(), QStringLiteral("DELETE FROM Stämme WHERE Kennung = ?"), {harvest});
            execSql(db(), QStringLiteral("DELETE FROM Hiebe WHERE ID = ?"), {harvest});
        });

        ListDialog dialog(context(), lists::Member::Staemme, harvest, false);
        for (QRadioButton* b : dialog.findChildren<QRadioButton*>())
            if (b->text() == QStringLiteral("Nach den Güteklassen"))
                b->click();
        QString shownReport;
        whenShown(QStringLiteral("AF_Textausgabe"), [&](QWidget* w) { shownReport = child<QPlainTextEdit>(*w, "t")->toPlainText(); });
        QTest::mouseClick(child<QPushButton>(dialog, "ok"), Qt::LeftButton);
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'\n')));
        // The current harvest's groups only, in the grid and in the text window.
        const QAbstractItemModel& grid = *child<QTableView>(dialog, "gridli")->model();
        QCOMPARE(grid.rowCount(), labels.size());
        QCOMPARE(child<QLabel>(dialog, "bezanzahl")->text(), QStringLiteral("Anzahl Datensätze: 12"));
        QVERIFY(shownReport.contains(QStringLiteral("Anzahl_Stämme")) && shownReport.contains(QStringLiteral("Q11")));

        int figuresSeen = 0;
        QStringList texts;
        const QString png = m_folder.filePath(QStringLiteral("diagramm.png"));
        const QString pdf = m_folder.filePath(QStringLiteral("diagramm.pdf"));
        bool saved = false;
        whenShown(QStringLiteral("BF_Diagramm"), [&](QWidget* w) {
            auto* figure = child<QComboBox>(*w, "komwert");
            auto* view = child<QChartView>(*w, "diagramm");
            const int keys = grid.columnCount() - figure->count();
            for (int f = 0; f < figure->count(); ++f, ++figuresSeen) {
                figure->setCurrentIndex(f);
                auto* series = static_cast<QAbstractBarSeries*>(view->chart()->series().first());
                const auto axes = series->attachedAxes();
                const bool categoriesFirst = axes.first()->type() == QAbstractAxis::AxisTypeBarCategory;
                auto* axis = qobject_cast<QBarCategoryAxis*>(categoriesFirst ? axes.first() : axes.last());
                auto* amount = qobject_cast<QValueAxis*>(categoriesFirst ? axes.last() : axes.first());
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
                bool count = true;
                for (int r = 0; r < grid.rowCount(); ++r) {
                    QCOMPARE(QString(shown[r]).remove(QChar(0x200B)), labels[r]);
                    const QString cell = grid.data(grid.index(r, keys + f)).toString();
                    const int decimals = cell.contains(u',') ? int(cell.size() - cell.indexOf(u',') - 1) : 0;
                    count = count && decimals == 0;
                    QVERIFY2(std::abs(values[r] - readNumber(cell)) <= 0.5 * std::pow(10.0, -decimals) + 1e-9,
                             qPrintable(figure->currentText() + QStringLiteral(": ") + cell));
                }
                if (count) { // whole steps only
                    QCOMPARE(amount->tickType(), QValueAxis::TicksDynamic);
                    QVERIFY(amount->tickInterval() >= 1 && amount->tickInterval() == std::floor(amount->tickInterval()));
                }
                for (QGraphicsItem* item : view->scene()->items())
                    if (auto* text = dynamic_cast<QGraphicsTextItem*>(item))
                        texts << text->toPlainText();
                    else if (auto* simple = dynamic_cast<QGraphicsSimpleTextItem*>(item))
                        texts << simple->text();
            }
            saved = static_cast<ChartWindow*>(w)->savePng(png) && static_cast<ChartWindow*>(w)->savePdf(pdf);
        });
        QTest::mouseClick(child<QPushButton>(dialog, "comdiagramm"), Qt::LeftButton);
        QVERIFY(figuresSeen > 0);
        // Money to the cent with thousands points; a volume without its trailing zeros.
        for (const char* label : {"12.345,68", "1.234,5"})
            QVERIFY2(texts.contains(QString::fromUtf8(label)), qPrintable(texts.join(u'|')));
        QVERIFY(saved && QImage(png).width() > 100);
        QVERIFY(test::toolOutput(QStringLiteral("pdfinfo"), {pdf}).contains(QRegularExpression(QStringLiteral("Pages:\\s+1\\n"))));
    }

    // What OK does with a choice that lists nothing: the message, and an empty grid.
    void refusedOrEmpty_data()
    {
        using Act = std::function<void(ListDialog&)>;
        QTest::addColumn<int>("member");
        QTest::addColumn<Act>("act");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("rows");
        QTest::newRow("no column ticked") << int(lists::Member::Lose)
                                          << Act([](ListDialog& d) { child<QPushButton>(d, "alle(1)")->click(); })
                                          << "Die Liste kann nicht erstellt werden, weil kein Datenfeld zum Listen ausgewählt ist." << 0;
        QTest::newRow("two-digit year") << int(lists::Member::Lose) << Act([](ListDialog& d) {
            child<QRadioButton>(d, "optizeitraum(1)")->click();
            test::typeInto(child<QLineEdit>(d, "tzeitraum(0)"), QStringLiteral("05"));
            test::typeInto(child<QLineEdit>(d, "tzeitraum(1)"), QStringLiteral("2007"));
        }) << "Die Liste kann nicht erstellt werden, weil die Jahre von... bis... 4-stellig sein müssen." << 0;
        QTest::newRow("sold harvests: no poles") << int(lists::Member::Pfaehle)
                                                 << Act([](ListDialog& d) { child<QComboBox>(d, "komhieb")->setCurrentIndex(5); })
                                                 << "Es wurden lt. den aktuellen Einstellungen keine Pfähle gefunden!" << 0;
        QTest::newRow("place with an apostrophe") << int(lists::Member::Lose) << Act([](ListDialog& d) {
            auto* place = child<QComboBox>(d, "komlagerort");
            QCOMPARE(place->count(), 4); // all, "Hof", "O'Brien's Weg", "Weg 7"
            place->setCurrentIndex(place->findText(QStringLiteral("O'Brien's Weg")));
        }) << QString() << 1;
    }
    void refusedOrEmpty()
    {
        QFETCH(int, member);
        QFETCH(std::function<void(ListDialog&)>, act);
        QFETCH(QString, message);
        ListDialog dialog(context(), lists::Member(member), m_h1, false);
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
        QCOMPARE(lots->item(0)->text(), QStringLiteral("Los 1  (3 Stämme)"));
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
                test::addListLog(db(), m_h2, 5, 100 + i, "KI (Kiefer)", "C", "L1b", 0.125, 2);
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

    void gridsCaptionsAndTheRangeMessage()
    {
        LotMapDialog dialog(context(), m_h1);
        auto* harvests = child<QTableView>(dialog, "gridlihieb");
        auto* lots = child<QTableView>(dialog, "gridlilos");
        QCOMPARE(harvests->model()->rowCount(), 3);
        QCOMPARE(harvests->currentIndex().row(), 0); // the main list's current harvest
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

        // Choosing another harvest shows its lot.
        harvests->setCurrentIndex(harvests->model()->index(2, 0));
        QCOMPARE(lots->model()->rowCount(), 1);
    }

    // Without a browser the address is offered for copying; the files' name is asked for only
    // when some lot has coordinates.
    void noBrowserAndNoCoordinates()
    {
        LotMapDialog withoutPlaces(context(), m_h3);
        child<QPushButton>(withoutPlaces, "geodatei")->click(); // no file name is queued: asking would fail
        QCOMPARE(m_prompter.messages(), QStringList{"Keines der Lose dieses Hiebs hat gültige Koordinaten; es wurde keine Datei geschrieben."});

        // The headless platform starts no browser.
        LotMapDialog dialog(context(), m_h1);
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
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Die Datei %1Daten.txt existiert nicht").arg(m_folder.path()));
        QVERIFY(child<QPlainTextEdit>(w, "t")->toPlainText().isEmpty());
    }

    void showsTheReportAndKeepsItsSettings()
    {
        QVERIFY(writeTextFile(reportFilePath(m_folder.path()), {QStringLiteral("HIEBDATEN"), QStringLiteral("Hieb-Nr:         41")}).ok);
        m_settings.zahl[20] = 49; // out of range: shown as 10
        TextOutputWindow w(context());
        QVERIFY(m_prompter.messages().isEmpty()); // Liberation Mono or Courier: no font hint
        QCOMPARE(w.windowTitle(), QStringLiteral("Listen-Ausgabe ") + reportFilePath(m_folder.path()));
        QCOMPARE(child<QPlainTextEdit>(w, "t")->toPlainText(), QStringLiteral("HIEBDATEN\nHieb-Nr:         41\n"));
        QCOMPARE(child<QLineEdit>(w, "gr_e")->text(), QStringLiteral("10"));
        QVERIFY(isFixedPitchName(child<QComboBox>(w, "kom")->currentText()));

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
        QCOMPARE(EinstellungenLaden(m_folder.filePath(QLatin1String(SettingsFileName))).zahl[20], qint16(29));
    }

    void printFileIntoPdfAndSaveACopy()
    {
        QVERIFY(writeTextFile(reportFilePath(m_folder.path()), {QStringLiteral("Zeile 1"), QStringLiteral("#"), QStringLiteral("Zeile 2")}).ok);
        TextOutputWindow w(context());
        child<QComboBox>(w, "komdrucker")->setCurrentText(TextOutputWindow::pdfPrinterEntry());
        const QString pdf = m_folder.filePath(QStringLiteral("ausgabe.pdf"));
        m_prompter.answerText(pdf);
        child<QPushButton>(w, "dateidrucken")->click();
        QVERIFY(test::toolOutput(QStringLiteral("pdfinfo"), {pdf}).contains(QRegularExpression(QStringLiteral("Pages:\\s+2\\n")))); // "#" breaks the page

        const QString copy = m_folder.filePath(QStringLiteral("kopie.txt"));
        m_prompter.answerText(copy);
        child<QPushButton>(w, "comspeichern")->click();
        QCOMPARE(readTextFile(copy).lines, (QStringList{QStringLiteral("Zeile 1"), QStringLiteral("#"), QStringLiteral("Zeile 2")}));

        // "Text drucken" takes the box, edits included.
        child<QPlainTextEdit>(w, "t")->setPlainText(QStringLiteral("geändert"));
        m_prompter.answerText(m_folder.filePath(QStringLiteral("text.pdf")));
        child<QPushButton>(w, "drucken")->click();
        QCOMPARE(readTextFile(m_folder.filePath(QStringLiteral("DRUCKAUF.TXT"))).lines, QStringList{QStringLiteral("geändert")});
    }
};

TARVIK_TEST_MAIN(TestReportWindows)
#include "tst_reportwindows.moc"
