#include "store/startup.h"

#include "common/folders.h"
#include "common/germanlocale.h"
#include "store/sql.h"

#include <QCryptographicHash>
#include <QDir>

namespace tarvik {

// The lock lives outside the data folder so that it can be taken before the folder exists.
std::unique_ptr<QLockFile> instanceLockFor(const QString& dataFolder)
{
    const QByteArray hash = QCryptographicHash::hash(QDir::cleanPath(dataFolder).toUtf8(), QCryptographicHash::Sha1).toHex().left(16);
    auto lock = std::make_unique<QLockFile>(QDir::temp().filePath(QStringLiteral("tarvik-%1.lock").arg(QString::fromLatin1(hash))));
    lock->setStaleLockTime(0); // a crashed run leaves a lock whose process is gone: take it over
    if (!lock->tryLock(0))
        return nullptr;
    return lock;
}

QString Session::settingsPath() const { return QDir(dataFolder).filePath(QLatin1String(SettingsFileName)); }

bool Session::saveSettings(Prompter& prompter) const
{
    QString error;
    if (EinstellungenSpeichern(settings, settingsPath(), &error))
        return true;
    prompter.inform(error, Prompter::Icon::Warning);
    return false;
}

void Session::checkPagesInBackground(PageCheck::Report onDamage)
{
    pageCheck = std::make_unique<PageCheck>(database->path(), std::move(onDamage));
}

QString firstStepsNote()
{
    return joinLines({
        QStringLiteral("HINWEIS!!!"),
        QStringLiteral("Die 'ersten Schritte' mit TARVIK sowie eine Kurzbeschreibung aller Hauptmenuepunkte können Sie unter der Hilfe nachlesen."),
        QStringLiteral("Umfangreiche Hilfe erhalten Sie direkt in den verschiedenen Modulen!"),
        QStringLiteral("Sobald ein Hieb eingegeben wurde, wird diese Information nicht mehr angezeigt!"),
    });
}

std::unique_ptr<Session> startSession(const StartupOptions& options, Prompter& prompter)
{
    auto session = std::make_unique<Session>();
    session->dataFolder = options.dataFolder;

    if (options.singleInstance) {
        session->instanceLock = instanceLockFor(options.dataFolder);
        if (!session->instanceLock) {
            prompter.inform(QString::fromUtf8(AlreadyRunningMessage));
            return nullptr;
        }
    }
    if (const auto problem = regionalSettingsProblem(options.locale)) {
        prompter.inform(*problem, Prompter::Icon::Critical);
        return nullptr;
    }
    if (const auto problem = currencyProblem(options.locale))
        prompter.inform(*problem);

    const DataFolderResult folder = prepareDataFolder(options.dataFolder, options.shareFolder);
    if (!folder.ok) {
        prompter.inform(folder.error, Prompter::Icon::Critical);
        return nullptr;
    }
    if (options.beforeOpening)
        options.beforeOpening(options.dataFolder, session->instanceLock.get(), prompter);

    try {
        session->database = Database::openOrCreate(QDir(options.dataFolder).filePath(QLatin1String(DatabaseFileName)));
    } catch (const StoreError& e) {
        prompter.inform(e.message(), Prompter::Icon::Critical);
        return nullptr;
    }
    if (session->database->newlyCreated())
        prompter.inform(masterDataNote());

    session->settings = EinstellungenLaden(session->settingsPath());
    session->saveSettings(prompter);
    return session;
}

UpgradeReport upgradeAtStart(Session& session, Prompter& prompter)
{
    session.upgrade = upgradeDatabase(session.database->shared(), prompter);
    const UpgradeReport& report = session.upgrade;
    // The steps with their table and column names are in the log; the user reads where things are.
    if (report.layoutChanged()) {
        QString text = QStringLiteral("Die Datenbank wurde auf den aktuellen Stand gebracht.\nDer vorherige Stand ist als Kopie "
                                      "erhalten: \"%1\".")
                           .arg(QDir::toNativeSeparators(report.backupPath));
        if (!report.logPath.isEmpty())
            text += QStringLiteral("\nWas geändert wurde, steht in der Datei \"%1\".").arg(QDir::toNativeSeparators(report.logPath));
        prompter.inform(text);
    }
    return session.upgrade;
}

UpgradeReport firstActivation(Session& session, Prompter& prompter)
{
    if (!scalar(session.database->shared(), QStringLiteral("SELECT 1 FROM \"Hiebe\" LIMIT 1")).isValid())
        prompter.inform(firstStepsNote());
    return upgradeAtStart(session, prompter);
}

} // namespace tarvik
