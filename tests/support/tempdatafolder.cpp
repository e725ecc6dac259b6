#include "support/tempdatafolder.h"

#include "backup/restoreatstart.h"
#include "common/germanlocale.h"

#include <QDir>

namespace tarvik::test {

TempDataFolder::TempDataFolder() { QVERIFY(m_dir.isValid()); }

QString TempDataFolder::path() const { return m_dir.path() + u'/'; }

QString TempDataFolder::filePath(const QString& name) const { return QDir(m_dir.path()).filePath(name); }

QString TempDataFolder::databasePath() const { return filePath(QLatin1String(DatabaseFileName)); }

std::unique_ptr<Session> TempDataFolder::start(ScriptedPrompter& prompter) const
{
    StartupOptions options;
    options.dataFolder = path();
    options.shareFolder = QString(); // nothing to seed: the folder exists
    options.locale = QLocale();
    options.singleInstance = false;
    options.beforeOpening = takeOverStagedRestore; // as both programs start
    return startSession(options, prompter);
}

std::unique_ptr<Database> TempDataFolder::openDatabase() const
{
    auto db = Database::openOrCreate(databasePath());
    ScriptedPrompter quiet;
    upgradeDatabase(db->shared(), quiet);
    return db;
}

void initTestEnvironment() { useGermanLocale(); }

} // namespace tarvik::test
