// AF_Tarvik, headless: menus, the list and its statistics, deleting, column widths, exit.
#include "app/main/mainwindow.h"
#include "app/main/exitchores.h"
#include "harvests/harvestlist.h"
#include "entry/harvestentry.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "common/ui/elidedlabel.h"
#include "common/ui/gridformat.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QRadioButton>
#include <QTimer>
#include <QStandardPaths>
#include <QTableView>
#include <QTimer>

using namespace tarvik;

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

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true); // column widths go to a test settings store
        m_session = m_folder.start(m_prompter);
        m_prompter.clear();
    }

    void menusAndButtons()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        QCOMPARE(w.objectName(), QStringLiteral("AF_Tarvik"));
        const std::tuple<const char*, const char*, bool> items[] = {
            {"H_Neuerhieb", "Neuer &Hieb", true},       {"H_Hieblöschen", "Aktuellen Hieb &löschen", true},
            {"S_ZEPbeenden", " Beenden", true},          {"allgemeines", "&Einstellungen", true},
            {"E_EingabeStämme", "&Stämme", true},       {"A_Statistikholzliste", "&Holzliste", true},
            {"A_StatistikHiebe", "&Hiebe", true},
            {"S_Stammdaten_Rindenabzug2", "Rindenabzug &frei definiert", true},
            {"xeinstellstichworte", "&Stichworte", true},
            {"S_xdatensicherung", "&Datensicherung", true}, {"popzeile(1)", "&Ändern", true}};
        for (const auto& [name, caption, enabled] : items) {
            QAction* a = w.findChild<QAction*>(QString::fromUtf8(name));
            QVERIFY2(a, name);
            QCOMPARE(a->text(), QString::fromUtf8(caption));
            QCOMPARE(a->isEnabled(), enabled);
        }
        QCOMPARE(w.findChildren<QMenu*>().size(), 7); // six menus and the list's pop-up
        QCOMPARE(w.findChild<QPushButton*>(QStringLiteral("abwaerts(1)"))->text(), QStringLiteral("Nächster Hieb"));
        QVERIFY(w.findChild<QPushButton*>(QStringLiteral("bt_rechnung"))->isEnabled());
        QVERIFY(w.findChild<QAction*>(QStringLiteral("E_Eingaberechnungen"))->isEnabled());
        QVERIFY(w.findChild<QPushButton*>(QStringLiteral("bt_rechnunglisten"))->isEnabled());
        // Every window of the program exists now: no button waits any more.
        for (QPushButton* b : w.findChildren<QPushButton*>())
            QVERIFY2(b->isEnabled(), qPrintable(b->objectName()));
    }

    void masterDataOpensOnItsList()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        QStringList opened;
        auto expectModal = [&opened] {
            QTimer::singleShot(0, [&opened] {
                QWidget* modal = QApplication::activeModalWidget();
                QVERIFY(modal);
                QString shown = modal->objectName();
                for (int i = 0; i < 11; ++i)
                    if (auto* b = modal->findChild<QRadioButton*>(QStringLiteral("opti(%1)").arg(i)); b && b->isChecked())
                        shown += QStringLiteral(":%1").arg(i);
                opened << shown;
                modal->close();
            });
        };
        expectModal();
        w.findChild<QAction*>(QStringLiteral("S_Stammdaten_Rindenabzug2"))->trigger();
        expectModal();
        w.findChild<QAction*>(QStringLiteral("S_Stammdatenstärkepfähle"))->trigger();
        expectModal();
        w.findChild<QPushButton*>(QStringLiteral("bt_stammdaten"))->click(); // the list chosen last
        expectModal();
        w.findChild<QAction*>(QStringLiteral("xeinstellstichworte"))->trigger();
        QCOMPARE(opened, (QStringList{"SF_Stammdaten:9", "SF_Stammdaten:3", "SF_Stammdaten:3", "OF_Stichworte"}));
    }

    void emptyListShowsZeros()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        QCOMPARE(w.findChild<QLabel*>(QStringLiteral("bezstati"))->text(),
                 QStringLiteral("Statistik:   Lose=0   Fläche=0,0000   Stämme_Anz=0   Stämme_Efm=0,000   Efm_je_Stamm=0,000   "
                                "Pfähle_Anz=0   Schichtholz_m3=0,000   Schichtholz_Efm=0,000"));
        QVERIFY(!w.currentHarvestId());
        w.findChild<QAction*>(QStringLiteral("popzeile(2)"))->trigger();
        w.findChild<QPushButton*>(QStringLiteral("comdrucken"))->click();
        w.findChild<QAction*>(QStringLiteral("A_Statistikholzliste"))->trigger();
        QCOMPARE(m_prompter.messages(),
                 (QStringList{QStringLiteral("Bitte markieren Sie zuerst den Hieb, den Sie ändern oder löschen möchten!"),
                              QStringLiteral("Sie müssen zuerst einen Hieb auswählen, bevor Sie die Daten listen/drucken können."),
                              QStringLiteral("Bitte markieren Sie erst den Hieb, von dem Sie die verschiedenen Daten anzeigen möchten "
                                             "oder machen Sie auf den entsprechenden Hieb einen Doppelklick")}));
        m_prompter.clear();
    }

    void listAndStatisticsFollowTheHarvests()
    {
        const qint32 a = addHarvest(1, 1.5, 10, 4.25);
        addHarvest(2, 0.25, 0, 0);
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        auto* list = w.findChild<QTableView*>(QStringLiteral("datali"));
        QCOMPARE(list->model()->rowCount(), 2);
        QCOMPARE(list->model()->columnCount(), harvestListColumns().size());
        QCOMPARE(list->model()->headerData(26, Qt::Horizontal).toString(), QStringLiteral("ID"));
        QCOMPARE(list->model()->index(0, 5).data().toString(), QStringLiteral("1,5000"));
        QCOMPARE(w.currentHarvestId(), a);
        QCOMPARE(w.findChild<QLabel*>(QStringLiteral("bezstati"))->text(),
                 QStringLiteral("Statistik:   Lose=2   Fläche=1,7500   Stämme_Anz=10   Stämme_Efm=4,250   Efm_je_Stamm=0,425   "
                                "Pfähle_Anz=0   Schichtholz_m3=0,000   Schichtholz_Efm=0,000"));
        w.findChild<QPushButton*>(QStringLiteral("abwaerts(1)"))->click();
        QVERIFY(w.currentHarvestId() != a);
        w.findChild<QPushButton*>(QStringLiteral("abwaerts(0)"))->click();
        QCOMPARE(w.currentHarvestId(), a);
    }

    void soldHarvestsAreColoured()
    {
        execSql(db(), QStringLiteral("DELETE FROM Hiebe"));
        const qint32 full = addHarvest(1, 0, 0, 0);
        const qint32 odd = addHarvest(2, 0, 0, 0);
        const qint32 partly = addHarvest(3, 0, 0, 0);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Teilverkauft = 'J', Verkauft = 'J' WHERE ID = ?"), {full});
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Teilverkauft = 'N', Verkauft = 'J' WHERE ID = ?"), {odd});
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Teilverkauft = 'J', Verkauft = 'N' WHERE ID = ?"), {partly});
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        const QAbstractItemModel* m = w.findChild<QTableView*>(QStringLiteral("datali"))->model();
        QCOMPARE(m->index(0, 3).data(Qt::ForegroundRole).value<QBrush>().color(), QColor(0, 0, 255));
        QCOMPARE(m->index(1, 3).data(Qt::ForegroundRole).value<QBrush>().color(), QColor(255, 0, 0));
        QVERIFY(!m->index(2, 3).data(Qt::ForegroundRole).isValid());
    }

    void deleteAsksAndRemovesTheCurrentHarvestOnly()
    {
        execSql(db(), QStringLiteral("DELETE FROM Hiebe"));
        const qint32 doomed = addHarvest(1, 0, 0, 0);
        const qint32 kept = addHarvest(2, 0, 0, 0);
        for (qint32 h : {doomed, kept}) {
            test::addLot(db(), h, 1);
            test::addTypedLog(db(), h, 1, 1, QStringLiteral("FI (Fichte)"), 30, 4, QStringLiteral("O"));
        }
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        QCOMPARE(w.currentHarvestId(), doomed);
        m_prompter.answerNo();
        w.findChild<QAction*>(QStringLiteral("H_Hieblöschen"))->trigger();
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Hiebe")).toInt(), 2);
        QVERIFY(m_prompter.questions().first().endsWith(QStringLiteral("\nSoll der markierte Hieb wirklich gelöscht werden?")));

        m_prompter.answerYes();
        w.findChild<QAction*>(QStringLiteral("H_Hieblöschen"))->trigger();
        QCOMPARE(scalar(db(), QStringLiteral("SELECT group_concat(ID) FROM Hiebe")).toInt(), kept);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Stämme WHERE Kennung = ?"), {doomed}).toInt(), 0);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Lose WHERE Kennung = ?"), {kept}).toInt(), 1);
        QCOMPARE(w.findChild<QTableView*>(QStringLiteral("datali"))->model()->rowCount(), 1);
        QCOMPARE(w.currentHarvestId(), kept);
        m_prompter.clear();
    }

    // "Ändern" steps through the harvests in the list's order; the list then stands on the
    // harvest shown last and shows what was stored.
    void changeStepsThroughTheListAndTheListFollows()
    {
        execSql(db(), QStringLiteral("DELETE FROM Hiebe"));
        const qint32 first = addHarvest(1, 0, 0, 0);
        addHarvest(2, 0, 0, 0);
        addHarvest(3, 0, 0, 0);
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        auto* list = w.findChild<QTableView*>(QStringLiteral("datali"));
        list->setCurrentIndex(list->model()->index(1, 0));
        QStringList shown;
        QTimer::singleShot(0, [&shown] {
            QWidget* d = QApplication::activeModalWidget();
            QVERIFY(d);
            for (int round = 0; round < 2; ++round) {
                d->findChild<QLineEdit*>(QStringLiteral("t(1)"))->setText(QStringLiteral("geändert"));
                d->findChild<QPushButton*>(QStringLiteral("ok"))->click();
                shown << d->findChild<QLineEdit*>(QStringLiteral("tz(0)"))->text();
            }
            d->findChild<QPushButton*>(QStringLiteral("cmdabbrechen"))->click();
        });
        w.findChild<QAction*>(QStringLiteral("H_Hiebändern"))->trigger();
        QCOMPARE(shown, (QStringList{"3", "1"}));
        QCOMPARE(w.currentHarvestId(), first);
        QCOMPARE(scalar(db(), QStringLiteral("SELECT count(*) FROM Hiebe WHERE Bemerkung = 'geändert' AND ID <> ?"), {first}).toInt(), 2);
        const int remark = int(harvestListColumns().indexOf(QStringLiteral("Bemerkung")));
        QCOMPARE(list->model()->index(2, remark).data().toString(), QStringLiteral("geändert")); // refilled
        QCOMPARE(w.currentHarvestId(), list->model()->index(0, 26).data().toInt());
        QVERIFY(m_prompter.messages().isEmpty());
    }

    void columnWidthsSurviveARestart()
    {
        {
            MainWindow w(*m_session, m_prompter, m_clock);
            w.refill();
            w.findChild<QTableView*>(QStringLiteral("datali"))->setColumnWidth(3, 217);
            m_session->settings.text[12] = QStringLiteral("20.11.2026"); // a recent backup: no reminder
            w.close();
        }
        MainWindow again(*m_session, m_prompter, m_clock);
        again.refill();
        QCOMPARE(again.findChild<QTableView*>(QStringLiteral("datali"))->columnWidth(3), 217);
    }

    // The list reads as a paper list does: figures right with a decimal comma, names left,
    // dates as "dd.mm.yyyy".
    void listCellsReadLikeAPaperList_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("alignment");
        const int right = int(Qt::AlignRight | Qt::AlignVCenter), left = int(Qt::AlignLeft | Qt::AlignVCenter);
        QTest::newRow("Hieb_Nr") << 0 << "4" << right;
        QTest::newRow("Waldname") << 3 << "Hoher Wald" << left;
        QTest::newRow("Hiebfläche") << 5 << "2,5000" << right;
        QTest::newRow("Hiebdatum_von") << 8 << "02.11.2026" << left;
        QTest::newRow("Stämme_Efm") << 11 << "1,200" << right;
        QTest::newRow("Stämme_Anzahl") << 12 << "3" << right;
    }
    void listCellsReadLikeAPaperList()
    {
        QFETCH(int, column);
        execSql(db(), QStringLiteral("DELETE FROM Hiebe"));
        const qint32 id = addHarvest(4, 2.5, 3, 1.2);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Waldname = 'Hoher Wald', Hiebdatum_von = '2026-11-02' WHERE ID = ?"), {id});
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        const QAbstractItemModel* m = w.findChild<QTableView*>(QStringLiteral("datali"))->model();
        QTEST(m->index(0, column).data(Qt::DisplayRole).toString(), "text");
        QTEST(m->index(0, column).data(Qt::TextAlignmentRole).toInt(), "alignment");
    }

    // Without remembered widths a column fits its content: a long owner name is not cut, a
    // long remark does not push the other columns out of sight.
    void firstStartWidthsFitTheContent()
    {
        execSql(db(), QStringLiteral("DELETE FROM Hiebe"));
        const qint32 id = addHarvest(5, 1, 0, 0);
        const QString owner = QStringLiteral("FBG Oberes Murrtal Hinterwald");
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Waldbesitzer_Name = ?, Bemerkung = ? WHERE ID = ?"),
                {owner, QString(200, u'x'), id});
        QSettings(QStringLiteral("TARVIK"), QStringLiteral("TARVIK")).remove(QStringLiteral("datali"));
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        const QTableView* list = w.findChild<QTableView*>(QStringLiteral("datali"));
        const int ownerColumn = int(harvestListColumns().indexOf(QStringLiteral("Waldbesitzer_Name")));
        const int remarkColumn = int(harvestListColumns().indexOf(QStringLiteral("Bemerkung")));
        QVERIFY(list->columnWidth(ownerColumn) >= list->fontMetrics().horizontalAdvance(owner));
        QVERIFY(list->columnWidth(remarkColumn) <= 320);
        QVERIFY(list->columnWidth(2) < list->columnWidth(ownerColumn)); // "Selektiert" holds one letter
    }

    // A long statistics line is cut, not allowed to push the window wider than the user made it.
    void longStatisticsDoNotWidenTheWindow()
    {
        execSql(db(), QStringLiteral("DELETE FROM Hiebe"));
        addHarvest(6, 123456.789, 999999, 9999999.5);
        MainWindow w(*m_session, m_prompter, m_clock);
        w.resize(900, 600);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QTest::qWait(50); // the first activation fills the list and its statistics
        const int width = w.width();
        QCOMPARE(width, 900);
        w.refill();
        QApplication::processEvents();
        QCOMPARE(w.width(), width);
        const auto* statistics = w.findChild<QLabel*>(QStringLiteral("bezstati"));
        QVERIFY(statistics->text().endsWith(QStringLiteral("Schichtholz_Efm=0,000")));
        QCOMPARE(statistics->toolTip(), statistics->text()); // the whole line on hovering
        m_prompter.clear();
        m_session->settings.text[12] = QStringLiteral("20.11.2026");
    }

    // At its first size the main window shows the whole statistics line of a large owner's list.
    void statisticsFitAtTheDefaultSize()
    {
        execSql(db(), QStringLiteral("DELETE FROM Hiebe"));
        for (int n = 1; n <= 3; ++n)
            addHarvest(n, 123.456, 12340, 12345.67);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Anzahl_Lose = 120, Pfähle_Anzahl = 450, Schichtholz_m3 = 123.5, Schichtholz_Efm = 86.4"));
        MainWindow w(*m_session, m_prompter, m_clock);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QTest::qWait(50);
        w.refill();
        QApplication::processEvents();
        const auto* statistics = w.findChild<ElidedLabel*>(QStringLiteral("bezstati"));
        QVERIFY(statistics->text().contains(QStringLiteral("Stämme_Anz=37020")));
        QCOMPARE(statistics->shownText(), statistics->text());
        m_prompter.clear();
    }

    // The info field shows the harvest of the current row, whether the row changes by key or by mouse.
    void infoFollowsTheCurrentRow()
    {
        execSql(db(), QStringLiteral("DELETE FROM Hiebe"));
        const qint32 first = addHarvest(7, 1.25, 0, 0);
        const qint32 second = addHarvest(8, 0, 0, 0);
        execSql(db(), QStringLiteral("UPDATE Hiebe SET Waldname = 'Birkenhain', Waldbesitzer_Name = 'Anna O''Brien' WHERE ID = ?"),
                {second});
        MainWindow w(*m_session, m_prompter, m_clock);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QTest::qWait(50);
        w.refill();
        auto* list = w.findChild<QTableView*>(QStringLiteral("datali"));
        const auto* info = w.findChild<QPlainTextEdit*>(QStringLiteral("text1"));
        QCOMPARE(w.currentHarvestId(), first);
        QVERIFY2(info->toPlainText().contains(QStringLiteral("Eichwald")), qPrintable(info->toPlainText()));
        QVERIFY(info->toPlainText().contains(QStringLiteral("1,2500")));

        list->setFocus();
        QTest::keyClick(list, Qt::Key_Down);
        QCOMPARE(w.currentHarvestId(), second);
        QVERIFY2(info->toPlainText().contains(QStringLiteral("Birkenhain")), qPrintable(info->toPlainText()));
        QVERIFY(info->toPlainText().contains(QStringLiteral("Anna O'Brien")));
        QVERIFY(!info->toPlainText().contains(QStringLiteral("Eichwald")));

        const QRect firstRow = list->visualRect(list->model()->index(0, 3));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, firstRow.center());
        QCOMPARE(w.currentHarvestId(), first);
        QVERIFY(info->toPlainText().contains(QStringLiteral("Eichwald")));
        QVERIFY(looksReadOnly(info));
        m_prompter.clear();
        m_session->settings.text[12] = QStringLiteral("20.11.2026");
    }

    // The button, the menu entry and a Yes to the exit reminder each open the backup wizard.
    void backupWizardOpens()
    {
        QStringList opened;
        auto closeWizardSoon = [&opened] {
            QTimer::singleShot(0, [&opened] {
                if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
                    opened << dialog->objectName();
                    dialog->reject();
                }
            });
        };
        m_session->settings.text[12].clear();
        MainWindow w(*m_session, m_prompter, m_clock);
        closeWizardSoon();
        w.findChild<QPushButton*>(QStringLiteral("bt_datensicherung"))->click();
        closeWizardSoon();
        w.findChild<QAction*>(QStringLiteral("S_xdatensicherung"))->trigger();
        m_prompter.answerYes();
        closeWizardSoon();
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
        QFETCH(bool, due);
        Einstellungen s = EinstellungenLaden(QString());
        s.text[12] = last;
        s.zahl[17] = qint16(days);
        const auto reminder = tarvik::backupReminder(s, m_clock.today());
        QCOMPARE(bool(reminder), due);
        if (last.isEmpty())
            QVERIFY(reminder->startsWith(QStringLiteral("Sie haben noch nie ein Backup (Datensicherung) gemacht.")));
    }
};

TARVIK_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
