#pragma once
// The start of both programs, in order: single instance, regional settings, currency, data
// folder, database, settings. Each refusal is shown through the prompter and ends the start.
#include "common/prompter.h"
#include "settings/settings.h"
#include "store/database.h"
#include "store/upgrade.h"

#include <QLocale>
#include <QLockFile>
#include <QString>
#include <functional>
#include <memory>

namespace tarvik {

struct StartupOptions {
    QString dataFolder;        // resolved, ending in "/"
    QString shareFolder;       // files seeded into a new data folder
    QLocale locale;            // the locale the program formats with
    bool singleInstance = true; // the desktop program runs once per data folder
    // Runs once the data folder is ready, before the database opens: the programs take over a
    // staged restore here (backup/restoreatstart.h), so the store need not know backups.
    std::function<void(const QString& dataFolder, QLockFile* instanceLock, Prompter& prompter)> beforeOpening;
};

// What one run of a program holds.
struct Session {
    QString dataFolder;
    std::unique_ptr<QLockFile> instanceLock;
    std::unique_ptr<Database> database;
    Einstellungen settings;
    UpgradeReport upgrade; // what the upgrade at the start did

    std::unique_ptr<PageCheck> pageCheck;

    QString settingsPath() const;
    bool saveSettings(Prompter& prompter) const; // shows the message when the file cannot be written
    // Opening does not wait for the check of every page: the desktop program starts it once its
    // main list shows (onDamage is called on the check's thread) and stops it before it ends.
    void checkPagesInBackground(PageCheck::Report onDamage);
    void stopPageCheck() { pageCheck.reset(); }
};

inline constexpr char AlreadyRunningMessage[] =
    "Die Anwendung wurde bereits gestartet!  Mit der Tastenkombination CTRL+ESC können Sie alle aktiven Programme auflisten und auswählen.";

// nullptr when the program must end; the reason has then been shown.
std::unique_ptr<Session> startSession(const StartupOptions& options, Prompter& prompter);

// The upgrade of the start, with its message when the layout changed; kept in the session.
// The command-line tool runs it right after the start.
UpgradeReport upgradeAtStart(Session& session, Prompter& prompter);

// What the main window does on its first activation: the first-steps note when there is no
// harvest yet, then the upgrade of the start.
UpgradeReport firstActivation(Session& session, Prompter& prompter);

// The desktop program's lock on a data folder; nullptr while another program holds it.
std::unique_ptr<QLockFile> instanceLockFor(const QString& dataFolder);


QString firstStepsNote();

} // namespace tarvik
