// holzliste: the timber list of a harvest on stdout or as a report file.
#include "cli/commands/all.h"
#include "reports/timberlist.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

const QCommandLineOption FileOption(QStringLiteral("datei"), QStringLiteral("als Listendatei schreiben"), QStringLiteral("PFAD"));

class HolzlisteCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("holzliste"); }
    QString synopsis() const override { return QStringLiteral("HIEB_NR [--datei PFAD]"); }
    QString summary() const override
    {
        return QStringLiteral("die Holzliste des Hiebs ausgeben (mit --datei als Listendatei,\nWindows-1252 mit CR LF)");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("HIEB_NR"), QStringLiteral("Nummer des Hiebs"));
        parser.addOption(FileOption);
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        const QStringList positional = parser.positionalArguments();
        if (positional.size() != 1 || !wholeNumber(positional[0]))
            return QStringLiteral("holzliste erwartet die Hieb-Nr.");
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const auto harvestId = harvestByNumber(context, *wholeNumber(parser.positionalArguments()[0]));
        if (!harvestId)
            return Refused;
        return printOrWriteLines(context, timberList(context.session->database->shared(), *harvestId), parser.value(FileOption));
    }
};

} // namespace

std::unique_ptr<Command> makeHolzlisteCommand() { return std::make_unique<HolzlisteCommand>(); }

} // namespace tarvik::cli
