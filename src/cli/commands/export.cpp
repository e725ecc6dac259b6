// export: exchange files of the named or the selected harvests and the master data file.
#include "cli/commands/all.h"
#include "exchange/exportfiles.h"
#include "store/startup.h"

#include <QDir>

namespace tarvik::cli {
namespace {

class ExportCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("export"); }
    QString synopsis() const override { return QStringLiteral("[HIEB_NR...]"); }
    QString summary() const override
    {
        return QStringLiteral("Exportdateien *_Tarvik_Export.f10 der genannten Hiebe (ohne Nummern:\n"
                              "der selektierten) und die Stammdaten in den Datenordner schreiben");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("HIEB_NR"), QStringLiteral("Nummern der Hiebe"), QStringLiteral("[HIEB_NR...]"));
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        for (const QString& number : parser.positionalArguments())
            if (!wholeNumber(number))
                return QStringLiteral("export erwartet Hieb-Nummern, nicht \"%1\".").arg(number);
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const QSqlDatabase db = context.session->database->shared();
        QList<qint32> ids;
        if (parser.positionalArguments().isEmpty()) {
            ids = exchange::selectedHarvestIds(db);
        } else {
            for (const QString& number : parser.positionalArguments()) {
                const auto id = harvestByNumber(context, *wholeNumber(number));
                if (!id)
                    return Refused;
                ids << *id;
            }
        }
        const exchange::ExportOutcome outcome =
            exchange::exportToInstallation(db, context.session->dataFolder, context.prompter, ids);
        for (const QString& file : outcome.files)
            context.io.print(QDir(context.session->dataFolder).filePath(file));
        return outcome.written ? Success : Refused;
    }
};

} // namespace

std::unique_ptr<Command> makeExportCommand() { return std::make_unique<ExportCommand>(); }

} // namespace tarvik::cli
