// komprimieren: the database compacted into a checked copy that replaces it.
#include "cli/commands/all.h"
#include "maintenance/compaction.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

class KomprimierenCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("komprimieren"); }
    QString summary() const override
    {
        return QStringLiteral("die Datenbank komprimieren (gelöschte Datensätze endgültig entfernen);\nmit --ja ohne Rückfrage");
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        return parser.positionalArguments().isEmpty() ? QString() : QStringLiteral("komprimieren erwartet keine Argumente.");
    }
    int run(const QCommandLineParser&, CommandContext& context) const override
    {
        if (!context.prompter.askYesNo(compactionQuestion()))
            return Refused;
        const QString path = context.session->database->path();
        context.session->database.reset(); // the compaction needs the file to itself
        const CompactionResult result = compactDatabaseFile(path);
        if (!result.ok) {
            context.io.printError(result.message);
            return Refused;
        }
        context.io.print(QStringLiteral("Datenbank komprimiert: %1 -> %2 Bytes").arg(result.sizeBefore).arg(result.sizeAfter));
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeKomprimierenCommand() { return std::make_unique<KomprimierenCommand>(); }

} // namespace tarvik::cli
