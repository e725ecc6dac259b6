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
#include <memory>

namespace tarvik {

struct StartupOptions {
    QString dataFolder;        // resolved, ending in "/"
    QString shareFolder;       // files seeded into a new data folder
    QLocale locale;            // the locale the program formats with
    bool singleInstance = true; // the desktop program runs once per data folder
};

// What one run of a program holds.
struct Session {
    QString dataFolder;
    std::unique_ptr<QLockFile> instanceLock;
    std::unique_ptr<Database> database;
    Einstellungen settings;

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

// What the main window does on its first activation: the first-steps note when there is no
// harvest yet, then the upgrade.
UpgradeReport firstActivation(Session& session, Prompter& prompter);

QString firstStepsNote();

} // namespace tarvik
