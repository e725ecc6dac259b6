// sicherung: today's backup archive, checked, optionally copied into a folder; for scheduled runs.
#include "backup/scheduledbackup.h"
#include "cli/commands/all.h"
#include "store/startup.h"

#include <QDir>

namespace tarvik::cli {
namespace {

const QCommandLineOption TargetOption(QStringLiteral("ziel"), QStringLiteral("die Datensicherung zusätzlich in diesen Ordner kopieren"),
                                      QStringLiteral("ORDNER"));

class SicherungCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("sicherung"); }
    QString synopsis() const override { return QStringLiteral("[--ziel ORDNER]"); }
    QString summary() const override
    {
        return QStringLiteral("die Datensicherung des Tages erstellen und prüfen, mit --ziel auch\nin den Ordner kopieren; gibt den Pfad aus");
    }
    void declare(QCommandLineParser& parser) const override { parser.addOption(TargetOption); }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        if (!parser.positionalArguments().isEmpty())
            return QStringLiteral("sicherung erwartet keine weiteren Angaben.");
        if (parser.isSet(TargetOption) && parser.value(TargetOption).trimmed().isEmpty())
            return QStringLiteral("--ziel erwartet einen Ordner.");
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const SessionContext core(context);
        const AppContext& app = core.app();
        const QString target = parser.isSet(TargetOption) ? QDir(parser.value(TargetOption).trimmed()).absolutePath() : QString();
        const ScheduledBackup done = backupNow(app, target);
        if (!done.ok)
            return Refused;
        context.io.print(QDir::toNativeSeparators(done.copy.isEmpty() ? done.archive : done.copy));
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeSicherungCommand() { return std::make_unique<SicherungCommand>(); }

} // namespace tarvik::cli
