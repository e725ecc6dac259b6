// The main window's selection commands and the dialog FH_Hiebeselektieren, headless; the list
// follows the year range of the lists; the evaluation buttons open their dialogs.
#include "app/main/mainwindow.h"
#include "harvests/filter.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QAction>
#include <QApplication>
#include <QItemSelectionModel>
#include <QPushButton>
#include <QStandardPaths>
#include <QTableView>

using namespace tarvik;

namespace {

// Lets the step act on the modal window of that name, then closes it.
void whenShown(const QString& name, std::function<void(QWidget*)> step)
{
    test::whenShown(name, [step](QWidget* w) {
        step(w);
        w->close();
    });
}

} // namespace

class TestSelectionCommands : public QObject {
    Q_OBJECT
    test::TempDataFolder m_folder;
    test::ScriptedPrompter m_prompter;
    std::unique_ptr<Session> m_session;
    FixedClock m_clock{QDate(2026, 11, 23)};
    QList<qint32> m_ids;

    QSqlDatabase db() const { return m_session->database->shared(); }

    QList<qint32> marked(MainWindow& w)
    {
        auto* list = w.findChild<QTableView*>(QStringLiteral("datali"));
        QList<qint32> ids;
        for (const QModelIndex& i : list->selectionModel()->selectedRows())
            ids << list->model()->index(i.row(), 26).data().toInt();
        std::sort(ids.begin(), ids.end());
        return ids;
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        m_session = m_folder.start(m_prompter);
        m_prompter.clear();
        for (int nr = 1; nr <= 4; ++nr) {
            m_ids << test::addHarvest(db(), nr);
            execSql(db(), QStringLiteral("UPDATE Hiebe SET Jahr = ? WHERE ID = ?"), {QString::number(2023 + nr), m_ids.last()});
        }
    }

    void markedBecomeSelectedAndBack()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        auto* list = w.findChild<QTableView*>(QStringLiteral("datali"));
        list->clearSelection(); // the current row counts as marked
        list->selectionModel()->select(list->model()->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        list->selectionModel()->select(list->model()->index(3, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        w.findChild<QAction*>(QStringLiteral("H_Markiertehiebeselektieren"))->trigger();
        QCOMPARE(selectedHarvests(db()), (QList<qint32>{m_ids[1], m_ids[3]}));

        list->clearSelection();
        w.findChild<QAction*>(QStringLiteral("H_Selektiertenhiebemarkieren"))->trigger();
        QCOMPARE(marked(w), (QList<qint32>{m_ids[1], m_ids[3]}));
        QCOMPARE(m_prompter.messages(),
                 QStringList{QStringLiteral("Sie können die Hiebe auch mit gedrückter STRG-Taste und der Maus markieren.")});
        m_prompter.clear();

        // Nothing marked: every selection is cleared.
        list->clearSelection();
        w.findChild<QAction*>(QStringLiteral("H_Markiertehiebeselektieren"))->trigger();
        QCOMPARE(selectedHarvests(db()), QList<qint32>{});
    }

    void selectionDialog()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        m_prompter.answerYes();
        whenShown(QStringLiteral("FH_Hiebeselektieren"), [](QWidget* d) {
            QCOMPARE(d->windowTitle(), QStringLiteral("Hiebe selektieren"));
            test::child<QPushButton>(*d, "entselekt(1)")->click();
        });
        w.findChild<QAction*>(QStringLiteral("H_Hiebeselektieren"))->trigger();
        QCOMPARE(m_prompter.questions(),
                 QStringList{QStringLiteral("Es sind 4 Hiebe selektiert. Sollen diese auch gleich markiert werden?")});
        QCOMPARE(marked(w), m_ids);
        m_prompter.clear();

        m_prompter.answerNo();
        whenShown(QStringLiteral("FH_Hiebeselektieren"),
                  [](QWidget* d) { test::child<QPushButton>(*d, "entselekt(0)")->click(); });
        w.findChild<QAction*>(QStringLiteral("H_Hiebeselektieren"))->trigger();
        QCOMPARE(m_prompter.questions(),
                 QStringList{QStringLiteral("Es sind 0 Hiebe selektiert. Sollen diese auch gleich markiert werden?")});
        m_prompter.clear();
    }

    void listFollowsTheRange()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        m_session->settings.zahl[RangeModeSlot] = 1;
        m_session->settings.text[YearFromSlot] = QStringLiteral("2025");
        m_session->settings.text[YearToSlot] = QStringLiteral("2026");
        w.refill();
        auto* list = w.findChild<QTableView*>(QStringLiteral("datali"));
        QCOMPARE(list->model()->rowCount(), 2);
        // An unusable range shows every harvest rather than none.
        m_session->settings.text[YearFromSlot] = QStringLiteral("25");
        w.refill();
        QCOMPARE(list->model()->rowCount(), 4);
        m_session->settings.zahl[RangeModeSlot] = 0;
    }

    void evaluationButtonsOpenTheirDialogs()
    {
        MainWindow w(*m_session, m_prompter, m_clock);
        w.refill();
        const std::pair<const char*, const char*> commands[] = {
            {"bt_hiebelisten", "BF_Hiebe_listen"},         {"bt_loselisten", "BF_Lose_listen"},
            {"bt_staemmelisten", "BF_Staemme_listen"},     {"bt_pfaehlelisten", "BF_Pfaehle_listen"},
            {"bt_schichtholzlisten", "BF_Schichtholz_listen"}, {"bt_rechnunglisten", "BF_Rechnungen_listen"},
            {"A_Statistikstämme", "BF_Staemme_listen"}};
        for (const auto& [command, window] : commands) {
            bool shown = false;
            whenShown(QString::fromUtf8(window), [&shown](QWidget*) { shown = true; });
            if (auto* b = w.findChild<QPushButton*>(QString::fromUtf8(command)))
                b->click();
            else
                w.findChild<QAction*>(QString::fromUtf8(command))->trigger();
            QVERIFY2(shown, command);
        }
    }
};

TARVIK_TEST_MAIN(TestSelectionCommands)
#include "tst_selectioncommands.moc"
