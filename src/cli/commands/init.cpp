// init: creates or opens the database and brings it up to date.
#include "cli/commands/all.h"
#include "store/startup.h"
#include "store/upgrade.h"

#include <QDir>

namespace tarvik::cli {
namespace {

class InitCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("init"); }
    QString summary() const override
    {
        return QStringLiteral("Datenbank anlegen oder öffnen und auf den aktuellen Stand bringen");
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        return parser.positionalArguments().isEmpty() ? QString() : QStringLiteral("init erwartet keine Argumente.");
    }
    int run(const QCommandLineParser&, CommandContext& context) const override
    {
        const Database& database = *context.session->database;
        const QString path = QDir::toNativeSeparators(database.path());
        context.io.print(database.newlyCreated() ? QStringLiteral("Datenbank angelegt: %1").arg(path)
                                                 : QStringLiteral("Datenbank geöffnet: %1").arg(path));
        const UpgradeReport& report = context.session->upgrade; // done at the start of every command
        for (const QString& change : report.changes)
            context.io.print(change);
        if (!report.failures.isEmpty())
            return Refused; // the prompter has shown every failed step
        if (report.changes.isEmpty())
            context.io.print(QStringLiteral("Der Aufbau der Datenbank ist aktuell; nichts geändert."));
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeInitCommand() { return std::make_unique<InitCommand>(); }

} // namespace tarvik::cli
