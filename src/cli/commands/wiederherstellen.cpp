// wiederherstellen: checks a backup archive and stages it; it is put in place at once when no
// other program has the data open, else at the next start. --ja confirms the question.
#include "backup/drives.h"
#include "backup/restoreatstart.h"
#include "backup/restore.h"
#include "backup/wizardsteps.h"
#include "cli/commands/all.h"
#include "store/startup.h"

#include <QDir>

namespace tarvik::cli {
namespace {

class WiederherstellenCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("wiederherstellen"); }
    QString synopsis() const override { return QStringLiteral("ARCHIV"); }
    QString summary() const override
    {
        return QStringLiteral("eine Datensicherung prüfen und übernehmen; hat ein anderes Programm die\n"
                              "Daten geöffnet, übernimmt sie dessen nächster Start (--ja bestätigt)");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("ARCHIV"), QStringLiteral("ZIP-Datei der Datensicherung"));
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        if (parser.positionalArguments().size() != 1 || parser.positionalArguments()[0].trimmed().isEmpty())
            return QStringLiteral("wiederherstellen erwartet die ZIP-Datei der Datensicherung.");
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const QString archive = QDir(parser.positionalArguments()[0]).absolutePath();
        if (!context.prompter.askYesNo(restoreQuestion())) {
            context.prompter.inform(QStringLiteral("Die Datensicherung wurde nicht eingelesen."));
            return Refused;
        }
        const std::optional<Drive> data = SystemDrives().driveOf(context.session->dataFolder);
        const StageResult staged = stageRestore(archive, context.session->dataFolder, data ? data->bytesAvailable : std::nullopt);
        if (!staged.ok) {
            context.prompter.inform(staged.error, Prompter::Icon::Critical);
            return Refused;
        }
        context.session->database.reset(); // the swap needs the file to itself
        switch (takeOverStagedRestore(context.session->dataFolder, context.session->instanceLock.get(), context.prompter)) {
        case StagedRestore::Swapped:
            context.io.print(QStringLiteral("Die Datensicherung ist übernommen."));
            return Success;
        case StagedRestore::Waiting:
            context.io.print(QStringLiteral("Die Datensicherung ist geprüft und bereitgelegt. Beim nächsten Start von TARVIK werden die "
                                            "Daten endgültig übernommen."));
            return Success;
        case StagedRestore::None:
        case StagedRestore::Failed:
            break;
        }
        return Refused;
    }
};

} // namespace

std::unique_ptr<Command> makeWiederherstellenCommand() { return std::make_unique<WiederherstellenCommand>(); }

} // namespace tarvik::cli
