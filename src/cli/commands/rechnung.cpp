// rechnung: a stored invoice's text on stdout or as a file, to check or archive it.
#include "cli/commands/all.h"
#include "invoices/invoice.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

const QCommandLineOption FileOption(QStringLiteral("datei"), QStringLiteral("als Textdatei schreiben"), QStringLiteral("PFAD"));

class RechnungCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("rechnung"); }
    QString synopsis() const override { return QStringLiteral("RENR [--datei PFAD]"); }
    QString summary() const override
    {
        return QStringLiteral("den Text einer gespeicherten Rechnung ausgeben (mit --datei als\nTextdatei, Windows-1252 mit CR LF)");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("RENR"), QStringLiteral("Rechnungsnummer"));
        parser.addOption(FileOption);
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        const QStringList positional = parser.positionalArguments();
        if (positional.size() != 1 || !wholeNumber(positional[0]))
            return QStringLiteral("rechnung erwartet die Rechnungsnummer.");
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const qint32 number = *wholeNumber(parser.positionalArguments()[0]);
        const auto invoice = loadInvoice(context.session->database->shared(), number);
        if (!invoice) {
            context.prompter.inform(QStringLiteral("Die Rechnung mit der Nummer %1 wurde nicht gefunden.").arg(number),
                                    Prompter::Icon::Warning);
            return Refused;
        }
        return printOrWriteLines(context, invoiceLines(invoice->text), parser.value(FileOption));
    }
};

} // namespace

std::unique_ptr<Command> makeRechnungCommand() { return std::make_unique<RechnungCommand>(); }

} // namespace tarvik::cli
