// FH_Datensicherung_neu walked through its controls: a backup over every page on the stick
// that is due, and a restore picked from the list of a stick's archives.
#include "backup/stagedrestore.h"
#include "backup/ui/backupwizard.h"
#include "common/folders.h"
#include "support/records.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"
#include "backupfixtures.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTimer>

using namespace tarvik;
using test::child;

namespace {

const QDate Today(2026, 11, 23);

QString page(const BackupWizard& w) { return child<QTabWidget>(w, "tabsicherung")->currentWidget()->objectName(); }

void click(const BackupWizard& w, const char* name) { child<QPushButton>(w, name)->click(); }

} // namespace

class TestBackupWizard : public QObject {
    Q_OBJECT

    test::TempDataFolder m_folder;
    test::ScriptedPrompter m_prompter;
    std::unique_ptr<Session> m_session;
    FixedClock m_clock{Today};

    AppContext context() { return {m_session->database->shared(), m_session->settings, m_session->dataFolder, m_prompter, m_clock}; }

private slots:
    void init()
    {
        test::ScriptedPrompter quiet;
        m_session = m_folder.start(quiet);
        test::addHarvest(m_session->database->shared(), 1);
        m_prompter.clear();
    }
    void cleanup() { m_session.reset(); }

    void backupOverEveryPage()
    {
        BackupChoices choices;
        choices.rotation = true;
        choices.lastMonthly = Today.addDays(-61);
        choices.lastYearly = Today.addDays(-100);
        QVERIFY(saveBackupChoices(m_folder.path(), choices));
        // Something to pack for a while, so the window can be seen to stay alive.
        QByteArray noise(12 << 20, Qt::Uninitialized);
        QRandomGenerator(5).fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
        test::writeBytes(m_folder.filePath(QStringLiteral("Luftbild.bmp")), noise);
        test::FakeDrives drives;
        drives.addStick(QStringLiteral("KELMO_GRUEN"));
        const Drive blue = drives.addStick(QStringLiteral("KELMO_BLAU"));
        QTemporaryDir cloud;

        BackupWizard w(context(), drives, shareFolder() + QStringLiteral("backup"));
        w.show();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        QCOMPARE(page(w), QStringLiteral("startseite"));
        QVERIFY(child<QCheckBox>(w, "kon_backupkonzept")->isChecked());
        QCOMPARE(child<QLabel>(w, "letztmonatsbackup")->text(), QStringLiteral("23.09.2026"));
        QCOMPARE(child<QLabel>(w, "letztjahresbackup")->text(), QStringLiteral("15.08.2026"));
        click(w, "cominfo");
        QCOMPARE(m_prompter.messages().last(), rotationInfoText());

        m_prompter.answerYes();
        click(w, "start_sicherung");
        QCOMPARE(m_prompter.questions().last(), insertStickMessage(Stick::Blau));
        QCOMPARE(page(w), QStringLiteral("laufwerkwahl"));
        QVERIFY(!child<QLabel>(w, "bildstick")->pixmap().isNull());
        QVERIFY(child<QListWidget>(w, "laufwerke")->currentItem()->text().contains(QStringLiteral("KELMO_BLAU")));
        click(w, "comzurueck(1)");
        QCOMPARE(page(w), QStringLiteral("startseite"));
        m_prompter.answerYes();
        click(w, "start_sicherung");

        // While the archive is written the window stays alive, and Enter on [Abbrechen] (where
        // the focus lands when the pages are locked) goes to no button that cancels the work.
        int ticks = 0;
        int presses = 0;
        QTimer typist;
        connect(&typist, &QTimer::timeout, [&] {
            ++ticks;
            if (!w.busy())
                return;
            auto* cancel = child<QPushButton>(w, "abbv");
            cancel->setFocus();
            QTest::keyClick(cancel, Qt::Key_Return);
            ++presses;
        });
        typist.start(5);
        QSignalSpy progress(child<QProgressBar>(w, "fortschritt"), &QProgressBar::valueChanged);
        click(w, "comweiter(1)");
        QCOMPARE(page(w), QStringLiteral("cloud")); // every choice comes before the work
        child<QLineEdit>(w, "tcloud")->setText(cloud.path());
        click(w, "comweiter(3)");
        QTRY_COMPARE_WITH_TIMEOUT(m_prompter.messages().size(), 3, 60000);
        typist.stop();
        QVERIFY(!w.busy());
        QVERIFY2(ticks > 2, "the window froze while the archive was written");
        QVERIFY2(presses > 0, "the work ended before Enter could be pressed");
        QVERIFY(w.isVisible());
        QVERIFY(progress.count() > 3);
        QCOMPARE(page(w), QStringLiteral("backuperstellen"));
        QVERIFY(QFile::exists(blue.rootPath + archiveName(Today)));
        QVERIFY(QFile::exists(QDir(cloud.path()).filePath(archiveName(Today))));
        click(w, "comweiter(2)");
        QCOMPARE(page(w), QStringLiteral("endebackup"));
        // The steps' summary, shown as it is.
        QVERIFY(!child<QPlainTextEdit>(w, "zusammenfassung")->toPlainText().contains(QStringLiteral("NICHT")));
        click(w, "comweiter(4)");
        QVERIFY(!w.isVisible());
        QCOMPARE(w.result(), int(QDialog::Accepted));
        QCOMPARE(m_session->settings.text[12], QStringLiteral("23.11.2026"));
    }

    void restoreFromTheListOfAStick()
    {
        test::FakeDrives drives;
        const Drive stick = drives.addStick(QStringLiteral("KELMO_ROT"));
        QVERIFY(writeArchive(m_folder.path(), stick.rootPath + archiveName(Today.addDays(-30))).ok);
        QVERIFY(writeArchive(m_folder.path(), stick.rootPath + archiveName(Today.addDays(-3))).ok);

        BackupWizard w(context(), drives, shareFolder() + QStringLiteral("backup"));
        w.show();
        click(w, "start_rettung");
        QVERIFY(m_prompter.messages().last().startsWith(QStringLiteral("Bitte stecken Sie den USB-Stick ein, auf den Sie die letzte Datensicherung gemacht haben.")));
        QCOMPARE(page(w), QStringLiteral("backuprettung"));
        QVERIFY(child<QComboBox>(w, "laufwerkrettung")->currentText().contains(QStringLiteral("KELMO_ROT")));
        auto* list = child<QListWidget>(w, "backups");
        QCOMPARE(list->count(), 2);
        QVERIFY(list->item(0)->text().startsWith(archiveName(Today.addDays(-3))));

        click(w, "comweiter(5)");
        QCOMPARE(m_prompter.messages().last(), QStringLiteral("Sie haben kein Backup ausgewählt. Bitte markieren Sie zuerst das Backup, welches eingelesen werden soll."));
        list->setCurrentRow(0);
        m_prompter.answerNo();
        click(w, "comweiter(5)");
        QCOMPARE(m_prompter.questions().last(), restoreQuestion());
        QVERIFY(!hasStagedRestore(m_folder.path()));
        m_prompter.answerYes();
        click(w, "comweiter(5)");
        QTRY_VERIFY(w.restoreStaged());
        QCOMPARE(m_prompter.messages().last(), restoredMessage());
        QVERIFY(!w.isVisible());
        QVERIFY(hasStagedRestore(m_folder.path()));
    }
};

TARVIK_TEST_MAIN(TestBackupWizard)
#include "tst_backupwizard.moc"
