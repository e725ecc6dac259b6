#pragma once
// One command of tarvik-cli: its name, what it takes, and its run on a shared context.
#include "common/clock.h"
#include "common/prompter.h"
#include "store/context.h"

#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <cstdio>
#include <optional>

namespace tarvik {
struct Session;
}

namespace tarvik::cli {

enum ExitCode { Success = 0, Refused = 1, Usage = 2 };

// Results go to out; messages, questions and usage errors to err.
struct Io {
    std::FILE* out = stdout;
    std::FILE* err = stderr;
    void print(const QString& text) const;
    void printError(const QString& text) const;
};

struct CommandContext {
    Session* session = nullptr; // null for a command that needs no database
    Prompter& prompter;
    const Io& io;
    // Prints the reason and the command's own usage line; returns Usage.
    int usageError(const QString& reason) const;
    QString usageLine; // "Aufruf: tarvik-cli [--daten ORDNER] [--ja | --nein] NAME SYNOPSIS"
};

class Command {
public:
    virtual ~Command() = default;
    virtual QString name() const = 0;
    virtual QString synopsis() const { return {}; } // "HIEB_NR [--datei PFAD]"
    virtual QString summary() const = 0;            // what it does, German, may span lines
    // Options and positional arguments of the command.
    virtual void declare(QCommandLineParser& parser) const { Q_UNUSED(parser) }
    // Why the arguments do not fit, checked before the data folder is touched; empty when they do.
    virtual QString usageProblem(const QCommandLineParser& parser) const
    {
        Q_UNUSED(parser)
        return {};
    }
    virtual bool needsDatabase() const { return true; }
    // Printing needs fonts: such a command runs under a QGuiApplication.
    virtual bool needsGui() const { return false; }
    virtual int run(const QCommandLineParser& parser, CommandContext& context) const = 0;
};

// What a core call of the windows takes (database, settings, data folder, prompter, clock),
// built from the command's session with the system clock.
class SessionContext {
public:
    explicit SessionContext(const CommandContext& context);
    const AppContext& app() const { return m_app; }

private:
    SystemClock m_clock;
    AppContext m_app;
};

// A whole number given on the command line; nothing when the text is not one.
std::optional<qint32> wholeNumber(const QString& text);

// The lines on stdout, or with a file path as a Windows-1252 text file (CR LF); a file that
// cannot be written is said through the prompter.
int printOrWriteLines(const CommandContext& context, const QStringList& lines, const QString& filePath);

// The harvest's ID; says so through the prompter when there is no harvest of that number.
std::optional<qint32> harvestByNumber(const CommandContext& context, qint32 hiebNr);

} // namespace tarvik::cli
