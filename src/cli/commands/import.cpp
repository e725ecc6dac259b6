// import: exchange files into the database, each file on its own; messages on stderr, the
// counts on stdout.
#include "cli/commands/all.h"
#include "exchange/importfiles.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

class ImportCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("import"); }
    QString synopsis() const override { return QStringLiteral("DATEI..."); }
    QString summary() const override
    {
        return QStringLiteral("Exportdateien *_Tarvik_Export.f10 einlesen; eine fehlerhafte Datei wird\n"
                              "ganz abgewiesen, die übrigen werden trotzdem übernommen");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("DATEI"), QStringLiteral("Exportdateien"), QStringLiteral("DATEI..."));
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        if (parser.positionalArguments().isEmpty())
            return QStringLiteral("import erwartet mindestens eine Datei.");
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const exchange::ImportReport report = exchange::importFiles(context.session->database->shared(), context.session->settings,
                                                                    parser.positionalArguments());
        for (const QString& message : report.messages)
            context.prompter.inform(message, Prompter::Icon::Information);
        context.io.print(exchange::closingMessage(report.counts));
        return report.refusedFiles.isEmpty() ? Success : Refused;
    }
};

} // namespace

std::unique_ptr<Command> makeImportCommand() { return std::make_unique<ImportCommand>(); }

} // namespace tarvik::cli
