// erechnung: an e-invoice file (CII, UBL or hybrid PDF) as readable text.
#include "cli/commands/all.h"
#include "invoices/einvoice/pdfreader.h"

namespace tarvik::cli {
namespace {

class ErechnungCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("erechnung"); }
    QString synopsis() const override { return QStringLiteral("DATEI"); }
    QString summary() const override
    {
        return QStringLiteral("eine E-Rechnung (XRechnung/CII, UBL oder PDF mit eingebetteter Rechnung) als Text ausgeben");
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        return parser.positionalArguments().size() == 1 ? QString()
                                                        : QStringLiteral("erechnung erwartet genau eine Datei.");
    }
    bool needsDatabase() const override { return false; }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const einvoice::ReadResult read = einvoice::readInvoiceFile(parser.positionalArguments().constFirst());
        if (!read.invoice) {
            context.io.printError(read.error);
            return Refused;
        }
        for (const QString& line : einvoice::readableText(*read.invoice))
            context.io.print(line);
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeErechnungCommand() { return std::make_unique<ErechnungCommand>(); }

} // namespace tarvik::cli
