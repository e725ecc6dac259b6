#include "cli/cli.h"

#include "common/consoleprompter.h"
#include "common/folders.h"
#include "common/germanlocale.h"
#include "store/sql.h"
#include "store/startup.h"

#include <QDir>
#include <functional>
#include <map>

namespace tarvik::cli {
namespace {

const char* const UsageText =
    "Aufruf: tarvik-cli [--daten ORDNER] [--ja | --nein] BEFEHL [ARGUMENTE]\n"
    "\n"
    "Globale Optionen:\n"
    "  --daten ORDNER  Datenordner (sonst TARVIK_DATEN oder der Standardordner)\n"
    "  --ja            Rückfragen mit Ja beantworten\n"
    "  --nein          Rückfragen mit Nein beantworten (Voreinstellung)\n"
    "  --help          diese Hilfe\n"
    "\n"
    "Befehle:\n"
    "  init            Datenbank anlegen oder öffnen und auf den aktuellen Stand bringen\n"
    "\n"
    "Rückgabewert: 0 erfolgreich, 1 abgelehnt oder fehlgeschlagen, 2 falscher Aufruf.\n";

struct Invocation {
    QString dataFolder;
    bool answerYes = false;
    QString command;
    QStringList arguments;
};

struct Io {
    std::FILE* out;
    std::FILE* err;
    void print(const QString& text) const
    {
        std::fputs(text.toUtf8().constData(), out);
        std::fputc('\n', out);
    }
    void usageError(const QString& text) const
    {
        std::fputs((text + u'\n').toUtf8().constData(), err);
        std::fputs(UsageText, err);
    }
};

using Command = std::function<int(Session&, const QStringList&, const Io&, Prompter&)>;

int initCommand(Session& session, const QStringList& args, const Io& io, Prompter& prompter)
{
    if (!args.isEmpty()) {
        io.usageError(QStringLiteral("init erwartet keine Argumente."));
        return Usage;
    }
    const QString path = QDir::toNativeSeparators(session.database->path());
    io.print(session.database->newlyCreated() ? QStringLiteral("Datenbank angelegt: %1").arg(path)
                                              : QStringLiteral("Datenbank geöffnet: %1").arg(path));
    const UpgradeReport report = upgradeDatabase(session.database->shared(), prompter);
    for (const QString& change : report.changes)
        io.print(change);
    if (report.changes.isEmpty())
        io.print(QStringLiteral("Der Aufbau der Datenbank ist aktuell; nichts geändert."));
    return Success;
}

const std::map<QString, Command>& commands()
{
    static const std::map<QString, Command> all{
        {QStringLiteral("init"), initCommand},
    };
    return all;
}

// Global options come before the command; false on wrong usage.
bool parse(const QStringList& args, Invocation& inv, const Io& io, bool& helpOnly)
{
    helpOnly = false;
    bool yes = false, no = false;
    int i = 0;
    for (; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == u"--help" || a == u"-h") {
            helpOnly = true;
            return true;
        } else if (a == u"--ja") {
            yes = true;
        } else if (a == u"--nein") {
            no = true;
        } else if (a == u"--daten") {
            if (i + 1 >= args.size()) {
                io.usageError(QStringLiteral("--daten erwartet einen Ordner."));
                return false;
            }
            inv.dataFolder = args[++i];
        } else if (a.startsWith(QLatin1String("--daten="))) {
            inv.dataFolder = a.mid(8);
        } else if (a.startsWith(u'-')) {
            io.usageError(QStringLiteral("Unbekannte Option: %1").arg(a));
            return false;
        } else {
            break;
        }
    }
    if (yes && no) {
        io.usageError(QStringLiteral("--ja und --nein schließen einander aus."));
        return false;
    }
    if (i >= args.size()) {
        io.usageError(QStringLiteral("Es fehlt der Befehl."));
        return false;
    }
    inv.answerYes = yes;
    inv.command = args[i];
    inv.arguments = args.mid(i + 1);
    return true;
}

} // namespace

int run(const QStringList& args, std::FILE* out, std::FILE* err)
{
    const Io io{out, err};
    Invocation inv;
    bool helpOnly = false;
    if (!parse(args, inv, io, helpOnly))
        return Usage;
    if (helpOnly) {
        std::fputs(UsageText, out);
        return Success;
    }
    const auto command = commands().find(inv.command);
    if (command == commands().end()) {
        io.usageError(QStringLiteral("Unbekannter Befehl: %1").arg(inv.command));
        return Usage;
    }

    ConsolePrompter prompter(inv.answerYes, err);
    StartupOptions options;
    options.dataFolder = resolveDataFolder(inv.dataFolder);
    options.shareFolder = shareFolder();
    options.locale = QLocale();
    options.singleInstance = false; // scripts may run beside the desktop program; the engine serialises writes
    std::unique_ptr<Session> session = startSession(options, prompter);
    if (!session)
        return Refused;
    try {
        return command->second(*session, inv.arguments, io, prompter);
    } catch (const StoreError& e) {
        prompter.inform(e.message(), Prompter::Icon::Critical);
        return Refused;
    }
}

} // namespace tarvik::cli
