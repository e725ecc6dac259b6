// AF_Tarvik, headless: the list and its statistics, deleting, column widths, the windows it
// opens, exit; and the typical event from a new harvest to the sold harvest in the list.
#include "app/main/exitchores.h"
#include "app/main/mainwindow.h"
#include "common/ui/elidedlabel.h"
#include "common/ui/gridformat.h"
#include "entry/harvestentry.h"
#include "entry/ui/harvestdialog.h"
#include "entry/ui/logdialog.h"
#include "entry/ui/lotdialog.h"
#include "harvests/harvestlist.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QStandardPaths>
#include <QTableView>
#include <QTimer>

using namespace tarvik;
using test::child;
using test::typeInto;

class TestMainWindow : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    test::ScriptedPrompter m_prompter;
    std::unique_ptr<Session> m_session;
    FixedClock m_clock{QDate(2026, 11, 21)};

    QSqlDatabase db() const { return m_session->database->shared(); }

    qint32 addHarvest(int number, double area, int logs, double efm)
    {
        const qint32 id = test::addHarvest(db(), number);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Hiebfläche = ?, Stämme_Anzahl = ?, Stämme_Efm = ?, Anzahl_Lose = 1 WHERE ID = ?"),
                {area, logs, efm, id});
        return id;
    }
    static QTableView* list(const MainWindow& w) { return child<QTableView>(w, "datali"); }
    static QString statistics(const MainWindow& w) { return child<QLabel>(w, "bezstati")->text(); }
    static void trigger(const MainWindow& w, const char* action) { w.findChild<QAction*>(QString::fromUtf8(action))->trigger(); }
    // Records the objectName of the modal window the next action opens (with the list checked in
    // it: "name:n"), then closes it.
    static void recordNextModal(QStringList& opened, bool withList = false)
    {
        QTimer::singleShot(0, [&opened, withList] {
            QWidget* modal = QApplication::activeModalWidget();
            QVERIFY(modal);
            QString seen = modal->objectName();
            for (int i = 0; withList && i < 11; ++i)
                if (auto* b = modal->findChild<QRadioButton*>(QStringLiteral("opti(%1)").arg(i)); b && b->isChecked())
                    seen += u':' + QString::number(i);
            opened << seen;
            modal->close();
        });
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true); // column widths go to a test settings store
        m_session = m_folder.start(m_prompter);
    }
    void init()
    {
        execSql(db(), QStringLiteral("DELETE FROM Hiebe"));
        m_session->settings.text[12] = QStringLiteral("20.11.2026"); // a recent backup: no reminder on closing
        m_prompter.clear();
    }

    void masterDataOpensOnItsList()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        QStringList opened;
        recordNextModal(opened, true);
        trigger(w, "S_Stammdaten_Rindenabzug2");
        recordNextModal(opened, true);
        trigger(w, "S_Stammdatenstärkepfähle");
        recordNextModal(opened, true);
        child<QPushButton>(w, "bt_stammdaten")->click(); // the list chosen last
        recordNextModal(opened);
        trigger(w, "xeinstellstichworte");
        QCOMPARE(opened, (QStringList{"SF_Stammdaten:9", "SF_Stammdaten:3", "SF_Stammdaten:3", "OF_Stichworte"}));
    }

    // Empty, the list shows zeros and asks for a harvest first; filled, it follows the harvests.
    void listAndStatisticsFollowTheHarvests()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        QCOMPARE(statistics(w), QStringLiteral("Statistik:   Lose=0   Fläche=0,0000   Stämme_Anz=0   Stämme_Efm=0,000   Efm_je_Stamm=0,000   "
                                               "Pfähle_Anz=0   Schichtholz_m3=0,000   Schichtholz_Efm=0,000"));
        QVERIFY(!w.currentHarvestId());
        trigger(w, "popzeile(2)");
        child<QPushButton>(w, "comdrucken")->click();
        trigger(w, "A_Statistikholzliste");
        QCOMPARE(m_prompter.messages(),
                 (QStringList{QStringLiteral("Bitte markieren Sie zuerst den Hieb, den Sie ändern oder löschen möchten!"),
                              QStringLiteral("Sie müssen zuerst einen Hieb auswählen, bevor Sie die Daten listen/drucken können."),
                              QStringLiteral("Bitte markieren Sie erst den Hieb, von dem Sie die verschiedenen Daten anzeigen möchten "
                                             "oder machen Sie auf den entsprechenden Hieb einen Doppelklick")}));

        const qint32 a = addHarvest(1, 1.5, 10, 4.25);
        addHarvest(2, 0.25, 0, 0);
        w.refill();
        QCOMPARE(list(w)->model()->rowCount(), 2);
        QCOMPARE(list(w)->model()->index(0, 5).data().toString(), QStringLiteral("1,5000"));
        QCOMPARE(list(w)->model()->index(0, 5).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
        QCOMPARE(w.currentHarvestId(), a);
        QCOMPARE(statistics(w), QStringLiteral("Statistik:   Lose=2   Fläche=1,7500   Stämme_Anz=10   Stämme_Efm=4,250   Efm_je_Stamm=0,425   "
                                               "Pfähle_Anz=0   Schichtholz_m3=0,000   Schichtholz_Efm=0,000"));
        child<QPushButton>(w, "abwaerts(1)")->click();
        QVERIFY(w.currentHarvestId() != a);
        child<QPushButton>(w, "abwaerts(0)")->click();
        QCOMPARE(w.currentHarvestId(), a);
    }

    void soldHarvestsAreColoured()
    {
        const char* states[][2] = {{"J", "J"}, {"N", "J"}, {"J", "N"}};
        for (int n = 0; n < 3; ++n)
            execSql(db(), QStringLiteral("UPDATE Hiebe SET Teilverkauft = ?, Verkauft = ? WHERE ID = ?"),
                    {QString::fromUtf8(states[n][0]), QString::fromUtf8(states[n][1]), addHarvest(n + 1, 0, 0, 0)});
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        const QAbstractItemModel* m = list(w)->model();
        QCOMPARE(m->index(0, 3).data(Qt::ForegroundRole).value<QBrush>().color(), QColor(0, 0, 255));
        QCOMPARE(m->index(1, 3).data(Qt::ForegroundRole).value<QBrush>().color(), QColor(255, 0, 0));
        QVERIFY(!m->index(2, 3).data(Qt::ForegroundRole).isValid());
    }

    // What a harvest takes along when deleted is the store's; the window asks first and deletes
    // the current one only.
    void deleteAsksAndRemovesTheCurrentHarvestOnly()
    {
        const qint32 doomed = addHarvest(1, 0, 0, 0);
        const qint32 kept = addHarvest(2, 0, 0, 0);
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        QCOMPARE(w.currentHarvestId(), doomed);
        m_prompter.answerNo();
        trigger(w, "H_Hieblöschen");
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 2);
        QVERIFY(m_prompter.questions().first().endsWith(QStringLiteral("\nSoll der markierte Hieb wirklich gelöscht werden?")));

        m_prompter.answerYes();
        trigger(w, "H_Hieblöschen");
        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(ID) FROM Hiebe")).toInt(), kept);
        QCOMPARE(list(w)->model()->rowCount(), 1);
        QCOMPARE(w.currentHarvestId(), kept);
    }

    // "Ändern" steps through the harvests in the list's order; the list then stands on the
    // harvest shown last and shows what was stored.
    void changeStepsThroughTheListAndTheListFollows()
    {
        const qint32 first = addHarvest(1, 0, 0, 0);
        addHarvest(2, 0, 0, 0);
        addHarvest(3, 0, 0, 0);
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        list(w)->setCurrentIndex(list(w)->model()->index(1, 0));
        QStringList shown;
        QTimer::singleShot(0, [&shown] {
            QWidget* d = QApplication::activeModalWidget();
            QVERIFY(d);
            for (int round = 0; round < 2; ++round) {
                child<QLineEdit>(*d, "t(1)")->setText(QStringLiteral("geändert"));
                child<QPushButton>(*d, "ok")->click();
                shown << child<QLineEdit>(*d, "tz(0)")->text();
            }
            child<QPushButton>(*d, "cmdabbrechen")->click();
        });
        trigger(w, "H_Hiebändern");
        QCOMPARE(shown, (QStringList{"3", "1"}));
        QCOMPARE(w.currentHarvestId(), first);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Hiebe WHERE Bemerkung = 'geändert' AND ID <> ?"), {first}).toInt(), 2);
        const int remark = int(harvestListColumns().indexOf(QStringLiteral("Bemerkung")));
        QCOMPARE(list(w)->model()->index(2, remark).data().toString(), QStringLiteral("geändert")); // refilled
        QVERIFY(m_prompter.messages().isEmpty());
    }

    // The list's columns fit their content the first time (a long owner name is not cut), and a
    // width the user gave survives a restart; the statistics line of a large owner's list shows
    // whole at the window's first size and never widens it.
    void columnWidthsAndTheStatisticsLine()
    {
        const QString owner = QStringLiteral("FBG Oberes Murrtal Hinterwald");
        for (int n = 1; n <= 3; ++n)
            addHarvest(n, 123.456, 12340, 12345.67);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Waldbesitzer_Name = ?, Anzahl_Lose = 120, Pfähle_Anzahl = 450, "
                                     "Schichtholz_m3 = 123.5, Schichtholz_Efm = 86.4"), {owner});
        QSettings(QStringLiteral("TARVIK"), QStringLiteral("TARVIK")).remove(QStringLiteral("datali"));
        {
            MainWindow w(*m_session, m_prompter, m_clock);
            w.show();
            QVERIFY(QTest::qWaitForWindowExposed(&w));
            QTest::qWait(50); // the first activation fills the list and its statistics
            w.refill();
            QApplication::processEvents();
            const auto* line = child<ElidedLabel>(w, "bezstati");
            QVERIFY(line->text().contains(QStringLiteral("Stämme_Anz=37020")));
            QCOMPARE(line->shownText(), line->text());
            const int ownerColumn = int(harvestListColumns().indexOf(QStringLiteral("Waldbesitzer_Name")));
            QVERIFY(list(w)->columnWidth(ownerColumn) >= list(w)->fontMetrics().horizontalAdvance(owner));
            list(w)->setColumnWidth(3, 217);
            w.close();
        }
        MainWindow again(*m_session, m_prompter, m_clock);
        again.refill();
        QCOMPARE(list(again)->columnWidth(3), 217);
        m_prompter.clear();
    }

    // The info field shows the harvest of the current row as the row changes.
    void infoFollowsTheCurrentRow()
    {
        const qint32 first = addHarvest(7, 1.25, 0, 0);
        const qint32 second = addHarvest(8, 0, 0, 0);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Waldname = 'Birkenhain', Waldbesitzer_Name = 'Anna O''Brien' WHERE ID = ?"),
                {second});
        MainWindow w(*m_session, m_prompter, m_clock);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QTest::qWait(50);
        w.refill();
        QTableView* grid = list(w);
        const auto* info = child<QPlainTextEdit>(w, "text1");
        QVERIFY(looksReadOnly(info));
        QCOMPARE(w.currentHarvestId(), first);
        QVERIFY2(info->toPlainText().contains(QStringLiteral("Eichwald")) && info->toPlainText().contains(QStringLiteral("1,2500")),
                 qPrintable(info->toPlainText()));

        grid->setFocus();
        QTest::keyClick(grid, Qt::Key_Down);
        QCOMPARE(w.currentHarvestId(), second);
        QVERIFY2(info->toPlainText().contains(QStringLiteral("Birkenhain")) && info->toPlainText().contains(QStringLiteral("Anna O'Brien")),
                 qPrintable(info->toPlainText()));
        QVERIFY(!info->toPlainText().contains(QStringLiteral("Eichwald")));
        m_prompter.clear();
    }

    // The button, the menu entry and a Yes to the exit reminder each open the backup wizard.
    void backupWizardOpens()
    {
        QStringList opened;
        m_session->settings.text[12].clear();
        MainWindow w(*m_session, m_prompter, m_clock);
        recordNextModal(opened);
        child<QPushButton>(w, "bt_datensicherung")->click();
        recordNextModal(opened);
        trigger(w, "S_xdatensicherung");
        m_prompter.answerYes();
        recordNextModal(opened);
        w.close();
        QCOMPARE(opened, QStringList(3, QStringLiteral("FH_Datensicherung_neu")));
        QCOMPARE(m_prompter.questions().last(),
                 QStringLiteral("Sie haben noch nie ein Backup (Datensicherung) gemacht.\nSoll jetzt eine Datensicherung gemacht werden?"));
    }

    void exitRemovesReportPagesAndReminds()
    {
        QFile page(m_folder.filePath(QStringLiteral("report-1.htm")));
        QVERIFY(page.open(QIODevice::WriteOnly));
        page.close();
        m_session->settings.text[12] = QStringLiteral("01.11.2026");
        MainWindow w(*m_session, m_prompter, m_clock);
        m_prompter.answerNo();
        w.close();
        QVERIFY(!QFile::exists(m_folder.filePath(QStringLiteral("report-1.htm"))));
        QCOMPARE(m_prompter.questions().last(),
                 QStringLiteral("Sie haben seit dem 01.11.2026 keine Datensicherung mehr gemacht.\nSoll jetzt eine Datensicherung gemacht werden?"));
    }

    void backupReminder_data()
    {
        QTest::addColumn<QString>("last");
        QTest::addColumn<int>("days");
        QTest::addColumn<bool>("due");
        QTest::newRow("never") << "" << 14 << true;
        QTest::newRow("14 days ago, interval 14") << "07.11.2026" << 14 << false;
        QTest::newRow("15 days ago, interval 14") << "06.11.2026" << 14 << true;
        QTest::newRow("yesterday") << "20.11.2026" << 3 << false;
    }
    void backupReminder()
    {
        QFETCH(QString, last);
        QFETCH(int, days);
        Einstellungen s = EinstellungenLaden(QString());
        s.text[12] = last;
        s.zahl[17] = qint16(days);
        QTEST(bool(tarvik::backupReminder(s, m_clock.today())), "due");
    }

    // The typical event through the windows' controls: new harvest, new lot at 50 per Efm, ten
    // logs (a duplicate running number answered No, a girth measurement of 5), then the lot's
    // totals and the main list.
    void typicalEvent()
    {
        firstActivation(*m_session, m_prompter);
        m_prompter.clear();
        const AppContext ctx{db(), m_session->settings, m_session->dataFolder, m_prompter, m_clock};

        HarvestDialog harvestWindow(ctx, std::nullopt);
        child<QComboBox>(harvestWindow, "komwaldname")->setEditText(QStringLiteral("Eichwald"));
        child<QPushButton>(harvestWindow, "ok")->click();
        const qint32 harvest = *harvestWindow.storedId();

        LotDialog lotWindow(ctx, harvest, std::nullopt);
        QCOMPARE(child<QComboBox>(lotWindow, "kom(0)")->currentText(), QStringLiteral("1"));
        child<QRadioButton>(lotWindow, "optipreis(2)")->click();
        child<QLineEdit>(lotWindow, "tp(0)")->setText(QStringLiteral("50"));
        child<QPushButton>(lotWindow, "ok")->click();
        QVERIFY2(m_prompter.messages().isEmpty(), qPrintable(m_prompter.messages().join(u'|')));

        LogDialog logWindow(ctx, harvest, std::nullopt, 1);
        logWindow.show();
        child<QComboBox>(logWindow, "kom(1)")->setEditText(QStringLiteral("FI (Fichte)"));
        child<QComboBox>(logWindow, "kom(2)")->setEditText(QStringLiteral("B"));
        auto* next = child<QPushButton>(logWindow, "okn_chster");
        auto typeLog = [&logWindow](const char* length, const char* diameter) {
            typeInto(logWindow.field(2), QString::fromUtf8(length));
            typeInto(logWindow.field(1), QString::fromUtf8(diameter));
        };
        for (const auto& [length, diameter] : {std::pair{"4,5", "35"}, {"10", "55"}, {"5", "28"}, {"4", "22"}}) {
            typeLog(length, diameter);
            next->click();
        }
        QCOMPARE(logWindow.field(0)->text(), QStringLiteral("5"));
        typeInto(logWindow.field(0), QStringLiteral("2"));
        typeLog("6", "30");
        m_prompter.answerNo(); // number 2 again: booked twice
        next->click();
        QVERIFY(m_prompter.questions().last().startsWith(QStringLiteral("Die Laufende Nummer 2 existiert beim aktuellen Hieb (ggf. Los) bereits.")));
        typeLog("3", "18");
        typeInto(logWindow.field(8), QStringLiteral("5"));
        m_prompter.answerYes();
        next->click();
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die 5 Stämme wurden gebucht!")});
        QCOMPARE(logWindow.field(8)->text(), QString());
        QCOMPARE(logWindow.storedRows(), 10);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(Laufende_Nr) FROM (SELECT Laufende_Nr FROM Stämme WHERE Kennung = ? "
                                           "ORDER BY Laufende_Nr)"), {harvest}).toString(),
                 QStringLiteral("1,2,2,3,4,5,6,7,8,9"));
        QCOMPARE(child<QTableView>(logWindow, "gridli")->model()->rowCount(), 10);
        QVERIFY(child<QLabel>(logWindow, "bezsumme")->text().startsWith(QStringLiteral("Gesamt: 10 Stämme mit 3,622")));

        // Under bark 33, 52, 26, 21 cm, the duplicate 28 cm, the girth logs 17 cm:
        // 0,385 + 2,124 + 0,265 + 0,139 + 0,369 + 5 × 0,068 = 3,622 Efm, at 50 per Efm.
        QCOMPARE(scalar(db(), QStringLiteral("SELECT Anzahl_Stämme || '/' || Efm_oR || '/' || Holzpreis FROM Lose WHERE Kennung = ?"), {harvest}).toString(),
                 QStringLiteral("10/3.622/181.1"));
        MainWindow main(*m_session, m_prompter, m_clock);
        main.refill();
        QCOMPARE(statistics(main), QStringLiteral("Statistik:   Lose=1   Fläche=0,0000   Stämme_Anz=10   Stämme_Efm=3,622   Efm_je_Stamm=0,362   "
                                                  "Pfähle_Anz=0   Schichtholz_m3=0,000   Schichtholz_Efm=0,000"));

    }
};

TARVIK_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
