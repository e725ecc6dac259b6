// drucken: a report file printed into a PDF, as the text window's "Datei drucken" does.
#include "cli/commands/all.h"
#include "reports/print.h"
#include "reports/reportfile.h"

#include <QDir>
#include <QFileInfo>

namespace tarvik::cli {
namespace {

const QCommandLineOption PdfOption(QStringLiteral("pdf"), QStringLiteral("Ziel-PDF-Datei"), QStringLiteral("AUSGABE.pdf"));
const QCommandLineOption LandscapeOption(QStringLiteral("quer"), QStringLiteral("Querformat"));
const QCommandLineOption MarginOption(QStringLiteral("rand"), QStringLiteral("linker Rand in Zeichen"), QStringLiteral("N"));
const QCommandLineOption FontOption(QStringLiteral("schrift"), QStringLiteral("Schriftgröße in Punkt"), QStringLiteral("N"));

class DruckenCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("drucken"); }
    QString synopsis() const override { return QStringLiteral("DATEI --pdf AUSGABE.pdf [--quer] [--rand N] [--schrift N]"); }
    QString summary() const override { return QStringLiteral("eine Listendatei wie 'Datei drucken' in eine PDF-Datei drucken"); }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("DATEI"), QStringLiteral("Listendatei"));
        parser.addOptions({PdfOption, LandscapeOption, MarginOption, FontOption});
    }
    bool needsDatabase() const override { return false; }
    bool needsGui() const override { return true; }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        if (parser.positionalArguments().size() != 1 || parser.value(PdfOption).isEmpty())
            return QStringLiteral("drucken erwartet eine Listendatei und --pdf AUSGABE.pdf.");
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const QStringList positional = parser.positionalArguments();
        PrintJob job;
        job.fontFamily = QStringLiteral("Courier New");
        job.pdfPath = parser.value(PdfOption);
        job.settings.landscape = parser.isSet(LandscapeOption);
        if (parser.isSet(MarginOption))
            job.settings.marginChars = std::clamp(parser.value(MarginOption).toInt(), 0, 20);
        if (parser.isSet(FontOption))
            job.settings.fontSize = std::clamp(parser.value(FontOption).toInt(), 4, 48);
        if (!QFileInfo::exists(positional[0])) {
            context.io.printError(missingReportMessage(positional[0]));
            return Refused;
        }
        const PrintResult result = printFileToPdf(positional[0], job);
        if (!result.ok) {
            context.io.printError(result.message);
            return Refused;
        }
        if (result.fontReduced)
            context.io.printError(result.statusText());
        context.io.print(QStringLiteral("%1 Seiten gedruckt: %2").arg(result.pages).arg(QDir::toNativeSeparators(job.pdfPath)));
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeDruckenCommand() { return std::make_unique<DruckenCommand>(); }

} // namespace tarvik::cli
