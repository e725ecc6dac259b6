// eldat: lots of a harvest as an ELDATsmart offer file for buyers' systems.
#include "cli/commands/all.h"
#include "eldat/offer.h"
#include "store/startup.h"

#include <QDir>

namespace tarvik::cli {
namespace {

const QCommandLineOption FileOption(QStringLiteral("datei"), QStringLiteral("die .eldat-Datei, die geschrieben wird"),
                                    QStringLiteral("DATEI.eldat"));
const QCommandLineOption KindOption(QStringLiteral("art"),
                                    QStringLiteral("ang Angebot (Vorgabe), hba Holzbereitstellungsanzeige, abf Abfuhrfreigabe"),
                                    QStringLiteral("ang|hba|abf"), QStringLiteral("ang"));

// "3,4, 7" → 3, 4, 7; nothing when a part is not a whole number.
std::optional<QList<qint32>> lotNumbers(const QStringList& arguments)
{
    QList<qint32> numbers;
    for (const QString& argument : arguments)
        for (const QString& part : argument.split(u',', Qt::SkipEmptyParts)) {
            const auto n = wholeNumber(part);
            if (!n)
                return std::nullopt;
            numbers << *n;
        }
    if (numbers.isEmpty())
        return std::nullopt;
    return numbers;
}

class EldatCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("eldat"); }
    QString synopsis() const override { return QStringLiteral("HIEB_NR LOS_NR[,LOS_NR...] --datei DATEI.eldat [--art ang|hba|abf]"); }
    QString summary() const override
    {
        return QStringLiteral("Lose eines Hiebs als ELDATsmart-Datei (.eldat, Angebot an Käufer)\nschreiben; gibt den Pfad aus");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("HIEB_NR"), QStringLiteral("Nummer des Hiebs"));
        parser.addPositionalArgument(QStringLiteral("LOS_NR"), QStringLiteral("Nummern der Lose, durch Kommas getrennt"));
        parser.addOption(FileOption);
        parser.addOption(KindOption);
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        const QStringList positional = parser.positionalArguments();
        if (positional.size() < 2 || !wholeNumber(positional[0]) || !lotNumbers(positional.mid(1)))
            return QStringLiteral("eldat erwartet die Hieb-Nummer und die Los-Nummern (z.B. 12 3,4).");
        if (parser.value(FileOption).trimmed().isEmpty())
            return QStringLiteral("eldat erwartet --datei mit dem Namen der .eldat-Datei.");
        if (!eldat::isDocType(parser.value(KindOption)))
            return QStringLiteral("--art erwartet ang, hba oder abf.");
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const QStringList positional = parser.positionalArguments();
        const auto harvestId = harvestByNumber(context, *wholeNumber(positional[0]));
        if (!harvestId)
            return Refused;
        const SessionContext core(context);
        const AppContext& app = core.app();
        eldat::OfferRequest request;
        request.harvestId = *harvestId;
        const QList<qint32> numbers = lotNumbers(positional.mid(1)).value_or(QList<qint32>());
        for (qint32 n : numbers)
            if (!request.lotNumbers.contains(n))
                request.lotNumbers << n;
        request.filePath = QDir(parser.value(FileOption).trimmed()).absolutePath();
        request.docType = parser.value(KindOption);
        const auto outcome = eldat::writeOffer(app, request);
        if (!outcome)
            return Refused;
        context.io.print(QDir::toNativeSeparators(outcome->filePath));
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeEldatCommand() { return std::make_unique<EldatCommand>(); }

} // namespace tarvik::cli
