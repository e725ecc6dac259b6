// The engine's locks on the open database survive every file window of the program that shows
// the data folder, and another program sees each change committed afterwards.
#include "common/ui/messageboxprompter.h"
#include "maintenance/ui/takeoverdialog.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/tempdatafolder.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTimer>
#include <QTreeView>
#include <QtTest>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

using namespace tarvik;

namespace {

// This process's lines of /proc/locks on the given files, as "kind mode range" per lock.
QStringList locksOn(const QStringList& paths)
{
    QSet<QString> inodes;
    for (const QString& path : paths) {
        struct stat st {};
        if (::stat(QFile::encodeName(path).constData(), &st) == 0)
            inodes.insert(QStringLiteral("%1:%2:%3").arg(major(st.st_dev), 2, 16, QLatin1Char('0')).arg(minor(st.st_dev), 2, 16, QLatin1Char('0')).arg(st.st_ino));
    }
    QFile file(QStringLiteral("/proc/locks"));
    if (!file.open(QIODevice::ReadOnly))
        return {QStringLiteral("/proc/locks nicht lesbar")};
    QStringList held;
    const QString pid = QString::number(::getpid());
    for (const QByteArray& raw : file.readAll().split('\n')) {
        // "1: POSIX  ADVISORY  READ 4711 08:01:123456 128 128"
        const QStringList f = QString::fromLatin1(raw).split(u' ', Qt::SkipEmptyParts);
        if (f.size() >= 8 && f[4] == pid && inodes.contains(f[5]))
            held << QStringLiteral("%1 %2 %3 %4-%5").arg(f[1], f[3], f[5], f[6], f[7]);
    }
    held.sort();
    return held;
}

// What another program finds in the file.
QStringList harvestsSeenByAnotherProgram(const QString& database)
{
    QProcess sqlite;
    sqlite.start(QStandardPaths::findExecutable(QStringLiteral("sqlite3")),
                 {database, QStringLiteral("SELECT Hieb_Nr FROM Hiebe ORDER BY Hieb_Nr;")});
    if (!sqlite.waitForFinished(30000) || sqlite.exitCode() != 0)
        return {QStringLiteral("sqlite3 gescheitert: ") + QString::fromLocal8Bit(sqlite.readAllStandardError())};
    return QString::fromLocal8Bit(sqlite.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

// Waits until the model has listed the folder: by then it has asked for every file's icon and
// type. A listing that ended before the wait began shows in the rows.
bool listed(QFileSystemModel* model, QSignalSpy& loaded, const QString& folder)
{
    const QModelIndex root = model->index(folder);
    for (int i = 0; i < 200; ++i) {
        for (const QList<QVariant>& args : loaded)
            if (QDir::cleanPath(args.value(0).toString()) == folder)
                return true;
        if (i > 5 && model->rowCount(root) > 0)
            return true;
        QTest::qWait(50);
    }
    return false;
}

// The locks held before, each still held: the background copy of the write-ahead log may hold
// one more for a moment, but none may have been dropped.
bool keepsEveryLock(const QStringList& before, const QStringList& now)
{
    return std::all_of(before.begin(), before.end(), [&now](const QString& lock) { return now.contains(lock); });
}

} // namespace

class TestDatabaseLocks : public QObject {
    Q_OBJECT

private slots:
    void locksSurviveEveryFileWindow_data()
    {
        QTest::addColumn<QString>("window");
        QTest::newRow("Datei öffnen") << QStringLiteral("open");
        QTest::newRow("Datei speichern") << QStringLiteral("save");
        QTest::newRow("Ordner wählen") << QStringLiteral("folder");
        QTest::newRow("Datenübernahme") << QStringLiteral("takeover");
    }
    void locksSurviveEveryFileWindow()
    {
        QFETCH(QString, window);
        QVERIFY2(!QStandardPaths::findExecutable(QStringLiteral("sqlite3")).isEmpty(), "sqlite3 fehlt (scripts/install-deps.sh)");
        test::TempDataFolder folder;
        test::ScriptedPrompter quiet;
        auto session = folder.start(quiet);
        const QSqlDatabase db = session->database->shared();
        test::addHarvest(db, 1);
        const QString database = folder.databasePath();
        const QStringList files = {database, database + QStringLiteral("-wal"), database + QStringLiteral("-shm")};
        // The locks held throughout a few reads: the engine's own, without a passing one of the
        // background log copy.
        QStringList before = locksOn(files);
        for (int i = 0; i < 3; ++i) {
            QTest::qWait(50);
            const QStringList again = locksOn(files);
            before.removeIf([&](const QString& lock) { return !again.contains(lock); });
        }
        QVERIFY2(!before.isEmpty(), "the engine holds no lock on the open database");

        MessageBoxPrompter prompter;
        bool shown = false;
        const QString path = QDir::cleanPath(folder.path());
        auto look = [&](QWidget* dialog) {
            QFileSystemModel* model = dialog->findChild<QFileSystemModel*>();
            QVERIFY(model);
            QSignalSpy loaded(model, &QFileSystemModel::directoryLoaded);
            if (auto* tree = dialog->findChild<QTreeView*>(QStringLiteral("dir")))
                tree->expand(model->index(path)); // the folder tree lists a folder once it is opened
            shown = listed(model, loaded, path);
            if (auto* files = qobject_cast<QFileDialog*>(dialog))
                files->setViewMode(QFileDialog::Detail); // the type column too
            QTest::qWait(200);
        };
        if (window == QLatin1String("takeover")) {
            TakeoverDialog takeover(prompter, [](const QString&) { return TakeoverResult{}; });
            takeover.show();
            takeover.chooseFolder(folder.path());
            look(&takeover);
        } else {
            QTimer::singleShot(0, [&] {
                QWidget* dialog = QApplication::activeModalWidget();
                QVERIFY(qobject_cast<QFileDialog*>(dialog));
                look(dialog);
                qobject_cast<QDialog*>(dialog)->reject();
            });
            QString chosen;
            if (window == QLatin1String("open"))
                chosen = prompter.chooseOpenFile(QStringLiteral("Datei öffnen"), folder.path(), QString());
            else if (window == QLatin1String("save"))
                chosen = prompter.chooseSaveFile(QStringLiteral("Liste speichern"), folder.filePath(QStringLiteral("Liste.txt")), QString());
            else
                chosen = prompter.chooseFolder(QStringLiteral("Ordner wählen"), folder.path());
            QVERIFY(chosen.isEmpty());
        }
        QVERIFY2(shown, "the window never listed the data folder");
        QVERIFY2(keepsEveryLock(before, locksOn(files)), qPrintable(locksOn(files).join(u'|')));

        // Each change is seen by another program, also after that program has closed the file.
        test::addHarvest(db, 2);
        QCOMPARE(harvestsSeenByAnotherProgram(database), (QStringList{"1", "2"}));
        test::addHarvest(db, 3);
        QCOMPARE(harvestsSeenByAnotherProgram(database), (QStringList{"1", "2", "3"}));
        QVERIFY2(keepsEveryLock(before, locksOn(files)), qPrintable(locksOn(files).join(u'|')));
    }

    // The database itself cannot be chosen as a file to read: it is refused and the window
    // comes again.
    void databaseCannotBeChosen()
    {
        test::TempDataFolder folder;
        test::ScriptedPrompter quiet;
        auto session = folder.start(quiet);
        const QString other = session->settingsPath();
        MessageBoxPrompter prompter;
        QStringList told;
        int dialogs = 0;
        int rounds = 0;
        std::function<void()> answer = [&] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                told << box->text();
                box->accept();
            } else if (auto* dialog = qobject_cast<QFileDialog*>(modal)) {
                // Typed as a user types a name into the window.
                dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(++dialogs == 1 ? folder.databasePath() : other);
                QMetaObject::invokeMethod(dialog, "accept");
            }
            if (dialogs < 2 && ++rounds < 100)
                QTimer::singleShot(20, answer);
        };
        QTimer::singleShot(0, answer);
        QCOMPARE(prompter.chooseOpenFile(QStringLiteral("Datei öffnen"), folder.path(), QString()), other);
        QCOMPARE(dialogs, 2);
        QCOMPARE(told, QStringList{QStringLiteral("Die Datei \"%1\" ist die Datenbank von TARVIK und kann hier nicht gewählt werden. "
                                                  "Bitte wählen Sie eine andere Datei.").arg(folder.databasePath())});
    }
};

TARVIK_TEST_MAIN(TestDatabaseLocks)
#include "tst_databaselocks.moc"
