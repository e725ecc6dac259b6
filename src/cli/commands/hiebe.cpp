// hiebe: the harvest list as tab-separated lines.
#include "cli/commands/all.h"
#include "harvests/harvestlist.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

class HiebeCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("hiebe"); }
    QString summary() const override { return QStringLiteral("die Hiebliste ausgeben (Tabulator-getrennt, mit Kopfzeile)"); }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        return parser.positionalArguments().isEmpty() ? QString() : QStringLiteral("hiebe erwartet keine Argumente.");
    }
    int run(const QCommandLineParser&, CommandContext& context) const override
    {
        for (const QString& line : harvestListLines(context.session->database->shared()))
            context.io.print(line);
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeHiebeCommand() { return std::make_unique<HiebeCommand>(); }

} // namespace tarvik::cli
