#include "cli/cli.h"

#include "backup/restoreatstart.h"
#include "cli/commands/all.h"
#include "common/consoleprompter.h"
#include "common/folders.h"
#include "store/sql.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

const char* const GlobalUsage = "[--daten ORDNER] [--ja | --nein]";

QString usageText()
{
    QString text = QStringLiteral("Aufruf: tarvik-cli %1 BEFEHL [ARGUMENTE]\n"
                                  "\n"
                                  "Globale Optionen:\n"
                                  "  --daten ORDNER  Datenordner (sonst TARVIK_DATEN oder der Standardordner)\n"
                                  "  --ja            Rückfragen mit Ja beantworten\n"
                                  "  --nein          Rückfragen mit Nein beantworten (Voreinstellung)\n"
                                  "  --help          diese Hilfe\n"
                                  "\n"
                                  "Befehle:\n")
                       .arg(QLatin1String(GlobalUsage));
    for (const auto& command : allCommands()) {
        const QString head = (command->name() + u' ' + command->synopsis()).trimmed();
        const QStringList summary = command->summary().split(u'\n');
        if (head.size() <= 14) {
            text += QStringLiteral("  %1%2\n").arg(head, -16).arg(summary.first());
        } else {
            text += QStringLiteral("  %1\n").arg(head);
            text += QStringLiteral("                  %1\n").arg(summary.first());
        }
        for (const QString& line : summary.mid(1))
            text += QStringLiteral("                  %1\n").arg(line);
    }
    text += QStringLiteral("\nRückgabewert: 0 erfolgreich, 1 abgelehnt oder fehlgeschlagen, 2 falscher Aufruf.\n");
    return text;
}

struct Invocation {
    QString dataFolder;
    bool answerYes = false;
    QString command;
    QStringList arguments;
    bool helpOnly = false;
};

void usageError(const Io& io, const QString& text)
{
    io.printError(text);
    std::fputs(usageText().toUtf8().constData(), io.err);
}

// Global options come before the command; false on wrong usage.
bool parseGlobal(const QStringList& args, Invocation& inv, const Io& io)
{
    bool yes = false, no = false;
    int i = 0;
    for (; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == u"--help" || a == u"-h") {
            inv.helpOnly = true;
            return true;
        } else if (a == u"--ja") {
            yes = true;
        } else if (a == u"--nein") {
            no = true;
        } else if (a == u"--daten" || a.startsWith(QLatin1String("--daten="))) {
            if (a == u"--daten") {
                if (i + 1 >= args.size()) {
                    usageError(io, QStringLiteral("--daten erwartet einen Ordner."));
                    return false;
                }
                inv.dataFolder = args[++i];
            } else {
                inv.dataFolder = a.mid(8);
            }
            // An empty name would quietly fall back to the standard folder: the wrong data.
            if (inv.dataFolder.trimmed().isEmpty()) {
                usageError(io, QStringLiteral("--daten erwartet einen Ordner; ein leerer Ordnername gilt nicht."));
                return false;
            }
        } else if (a.startsWith(u'-')) {
            usageError(io, QStringLiteral("Unbekannte Option: %1").arg(a));
            return false;
        } else {
            break;
        }
    }
    if (yes && no) {
        usageError(io, QStringLiteral("--ja und --nein schließen einander aus."));
        return false;
    }
    if (i >= args.size()) {
        usageError(io, QStringLiteral("Es fehlt der Befehl."));
        return false;
    }
    inv.answerYes = yes;
    inv.command = args[i];
    inv.arguments = args.mid(i + 1);
    return true;
}

// The command's own options; a German reason instead of the parser's English one.
std::optional<QString> parseCommand(const Command& command, const QStringList& arguments, QCommandLineParser& parser)
{
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    command.declare(parser);
    if (parser.parse(QStringList{QStringLiteral("tarvik-cli")} + arguments))
        return std::nullopt;
    const QStringList unknown = parser.unknownOptionNames();
    if (!unknown.isEmpty())
        return QStringLiteral("%1: unbekannte Option %2").arg(command.name(), u'-' + unknown.first());
    return QStringLiteral("%1: einer Option fehlt ihr Wert.").arg(command.name());
}

} // namespace

bool needsGui(const QStringList& args)
{
    for (const QString& a : args)
        if (const Command* command = findCommand(a))
            return command->needsGui();
    return false;
}

int run(const QStringList& args, std::FILE* out, std::FILE* err)
{
    const Io io{out, err};
    Invocation inv;
    if (!parseGlobal(args, inv, io))
        return Usage;
    if (inv.helpOnly) {
        std::fputs(usageText().toUtf8().constData(), out);
        return Success;
    }
    const Command* command = findCommand(inv.command);
    if (!command) {
        usageError(io, QStringLiteral("Unbekannter Befehl: %1").arg(inv.command));
        return Usage;
    }

    ConsolePrompter prompter(inv.answerYes, err);
    CommandContext context{nullptr, prompter, io,
                           QStringLiteral("Aufruf: tarvik-cli %1 %2 %3").arg(QLatin1String(GlobalUsage), command->name(), command->synopsis()).trimmed()};
    QCommandLineParser parser;
    if (const auto reason = parseCommand(*command, inv.arguments, parser))
        return context.usageError(*reason);
    if (const QString problem = command->usageProblem(parser); !problem.isEmpty())
        return context.usageError(problem);

    std::unique_ptr<Session> session;
    if (command->needsDatabase()) {
        StartupOptions options;
        options.dataFolder = resolveDataFolder(inv.dataFolder);
        options.shareFolder = shareFolder();
        options.locale = QLocale();
        options.beforeOpening = takeOverStagedRestore;
        options.singleInstance = false; // scripts may run beside the desktop program; the engine serialises writes
        session = startSession(options, prompter);
        if (!session)
            return Refused;
        context.session = session.get();
    }
    try {
        // The same start as the desktop program's, so a file is the same whichever program made it.
        if (session)
            upgradeAtStart(*session, prompter);
        return command->run(parser, context);
    } catch (const StoreError& e) {
        prompter.inform(e.message(), Prompter::Icon::Critical);
        return Refused;
    }
}

} // namespace tarvik::cli
