#include "app/main/maintenanceactions.h"

#include "maintenance/compaction.h"
#include "maintenance/takeover.h"
#include "maintenance/ui/takeoverdialog.h"
#include "store/sql.h"
#include "store/startup.h"

#include <QApplication>
#include <QEventLoop>
#include <QHash>
#include <QProgressDialog>
#include <QThread>

namespace tarvik {

bool compactDatabase(QWidget* parent, Session& session, Prompter& prompter, const std::function<void()>& releaseHandles)
{
    if (!prompter.askYesNo(compactionQuestion()))
        return false;
    const QString path = session.database->path();
    releaseHandles();
    // The copy runs on a thread of its own so the window can show how far it is.
    QProgressDialog shown(QStringLiteral("Die Datenbank wird komprimiert ..."), QString(), 0, 100, parent);
    shown.setObjectName(QStringLiteral("komprimierung"));
    shown.setWindowTitle(QStringLiteral("Datenbank komprimieren"));
    shown.setWindowModality(Qt::ApplicationModal);
    shown.setMinimumDuration(0);
    shown.setAutoClose(false);
    shown.setMinimumWidth(420);
    shown.setValue(0);
    CompactionResult result;
    QEventLoop waiting;
    QThread* worker = QThread::create([&] {
        result = compactDatabaseFile(path, [&shown](int percent, const QString& stage) {
            QMetaObject::invokeMethod(&shown, [&shown, percent, stage] {
                shown.setLabelText(stage);
                shown.setValue(percent);
            }, Qt::QueuedConnection);
        });
    });
    QObject::connect(worker, &QThread::finished, &waiting, &QEventLoop::quit);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    worker->start();
    waiting.exec(QEventLoop::ExcludeUserInputEvents);
    worker->wait();
    delete worker;
    QCoreApplication::sendPostedEvents(&shown);
    QApplication::restoreOverrideCursor();
    shown.close();
    // Either way the handles are closed: the program ends and the next start opens the file.
    prompter.inform(result.message, result.ok ? Prompter::Icon::Information : Prompter::Icon::Critical);
    return true;
}

bool takeOverVersion2Data(QWidget* parent, Session& session, Prompter& prompter, const std::function<void()>& releaseHandles)
{
    const QString dataFolder = session.dataFolder;
    const QString path = session.database->path();
    const bool hasHarvests = scalar(session.database->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toLongLong() > 0;
    bool released = false;
    TakeoverDialog dialog(
        prompter,
        [&](const QString& folder) {
            // The window's handles go only once everything is staged; a refusal keeps them.
            return takeOverVersion2(folder, dataFolder, path, hasHarvests, prompter, [&] {
                releaseHandles();
                released = true;
            });
        },
        parent);
    dialog.exec();
    if (released && !dialog.tookOver())
        prompter.inform(QStringLiteral("Die Datenübernahme wurde nicht ausgeführt. TARVIK 3.0 wird nun beendet; bitte starten Sie "
                                       "das Programm neu, damit die Datenbasis wieder geladen wird."));
    return released;
}

QString helpTopicOfMenuItem(const QString& itemName)
{
    static const QHash<QString, QString> topics{
        {QStringLiteral("hilfestartmenue"), QStringLiteral("Hilfe_Startmenue")},
        {QStringLiteral("hilfewiemacheich"), QStringLiteral("Hilfe_Wiemacheich")},
        {QStringLiteral("hilfewieanfangen"), QStringLiteral("Hilfe_Wieanfangen")},
        {QStringLiteral("H_Hilfehiebe"), QStringLiteral("Hilfe_Hiebe")},
        {QStringLiteral("H_Hilfeeingabe"), QStringLiteral("Hilfe_Eingabe")},
        {QStringLiteral("H_Hilfeauswertungen"), QStringLiteral("Hilfe_Auswertungen")},
        {QStringLiteral("H_Hilfestammdaten"), QStringLiteral("Hilfe_Stammdaten")},
        {QStringLiteral("H_Hilfeoptionen"), QStringLiteral("Hilfe_Optionen")},
    };
    return topics.value(itemName);
}

} // namespace tarvik
