// uebernahme: the data of a version-2 folder taken over into the data folder.
#include "cli/commands/all.h"
#include "maintenance/takeover.h"
#include "store/sql.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

class UebernahmeCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("uebernahme"); }
    QString synopsis() const override { return QStringLiteral("ORDNER"); }
    QString summary() const override
    {
        return QStringLiteral("die Daten von TARVIK 2.0 aus ORDNER übernehmen (ersetzt die Datenbasis;\n"
                              "mit --ja bestätigt, bei vorhandenen Hieben auch die Abfrage \"JA\")");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("ORDNER"), QStringLiteral("Ordner mit tarvik2.mdb"));
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        return parser.positionalArguments().size() == 1 ? QString() : QStringLiteral("uebernahme erwartet den Ordner von TARVIK 2.0.");
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        Session& session = *context.session;
        const bool hasHarvests = scalar(session.database->shared(), QStringLiteral("SELECT count(*) FROM Hiebe")).toLongLong() > 0;
        const QString path = session.database->path();
        const TakeoverResult result = takeOverVersion2(parser.positionalArguments().first(), session.dataFolder, path, hasHarvests,
                                                       context.prompter, [&session] { session.database.reset(); });
        for (const QString& file : result.copied)
            context.io.print(QStringLiteral("übernommen: %1").arg(file));
        return result.done ? Success : Refused;
    }
};

} // namespace

std::unique_ptr<Command> makeUebernahmeCommand() { return std::make_unique<UebernahmeCommand>(); }

} // namespace tarvik::cli
