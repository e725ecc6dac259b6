#include "cli/commands/harvester.h"

#include "devices/harvesterimport.h"
#include "store/sql.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

// "NAME=VALUE" split at its last '=' (names of the file may hold one), both trimmed.
std::optional<std::pair<QString, QString>> pair(const QString& text)
{
    const qsizetype at = text.lastIndexOf(u'=');
    if (at <= 0)
        return std::nullopt;
    return std::pair{text.left(at).trimmed(), text.mid(at + 1).trimmed()};
}

} // namespace

const QCommandLineOption HarvesterSpeciesOption(QStringLiteral("baumart"),
                                                QStringLiteral("harvester: Baumartengruppe der Datei einer Baumart zuordnen (leer: nicht übernehmen)"),
                                                QStringLiteral("NAME=CODE"));
const QCommandLineOption HarvesterWithoutOption(QStringLiteral("ohne-produkt"),
                                                QStringLiteral("harvester: Stämme dieses Produkts nicht übernehmen"), QStringLiteral("NAME"));
const QCommandLineOption HarvesterQualityOption(QStringLiteral("guete"),
                                                QStringLiteral("harvester: Stämme dieses Produkts mit der Güteklasse übernehmen"),
                                                QStringLiteral("PRODUKT=KLASSE"));

QString harvesterUsageProblem(const QCommandLineParser& parser)
{
    for (const QString& v : parser.values(HarvesterSpeciesOption))
        if (!pair(v))
            return QStringLiteral("--baumart erwartet NAME=CODE, z.B. --baumart Gran=FI.");
    for (const QString& v : parser.values(HarvesterQualityOption))
        if (!pair(v) || pair(v)->second.isEmpty())
            return QStringLiteral("--guete erwartet PRODUKT=KLASSE, z.B. --guete SAGT=B.");
    for (const QString& v : parser.values(HarvesterWithoutOption))
        if (v.trimmed().isEmpty())
            return QStringLiteral("--ohne-produkt erwartet den Namen eines Produkts.");
    return {};
}

int runHarvesterImport(const QCommandLineParser& parser, CommandContext& context, const QString& path, qint32 hiebNr, qint32 lot)
{
    const auto harvestId = harvestByNumber(context, hiebNr);
    if (!harvestId)
        return Refused;
    const SessionContext core(context);
    const AppContext& app = core.app();
    if (!harvesterLotAccepted(app, *harvestId, lot))
        return Refused;
    const HarvesterRead read = readHarvesterFile(path);
    if (!read.file) {
        context.prompter.inform(read.error, Prompter::Icon::Critical);
        return Refused;
    }
    const HarvesterFile& file = *read.file;
    HarvesterMapping mapping = proposedHarvesterMapping(app.db, app.dataFolder, file.speciesNames, file.productNames);
    for (const QString& v : parser.values(HarvesterSpeciesOption)) {
        const auto [name, code] = *pair(v);
        const QString species = masterSpeciesOf(app.db, code);
        if (!code.isEmpty() && species.isEmpty()) {
            context.prompter.inform(QStringLiteral("Die Baumart \"%1\" gibt es in den Stammdaten nicht.").arg(code));
            return Refused;
        }
        mapping.species.insert(name, species);
    }
    for (const QString& v : parser.values(HarvesterWithoutOption))
        mapping.excludedProducts.insert(v.trimmed());
    for (const QString& v : parser.values(HarvesterQualityOption)) {
        const auto [name, quality] = *pair(v);
        if (!scalar(app.db, QStringLiteral("SELECT 1 FROM \"Güteklassen\" WHERE \"Güteklasse\" = ?"), {quality}).isValid()) {
            context.prompter.inform(QStringLiteral("Die Güteklasse \"%1\" gibt es in den Stammdaten nicht.").arg(quality));
            return Refused;
        }
        mapping.productQuality.insert(name, quality);
    }
    for (const QString& name : file.speciesNames)
        context.io.print(QStringLiteral("Baumart %1: %2").arg(name, mapping.species.value(name).isEmpty()
                                                                       ? QStringLiteral("(keine Zuordnung, nicht übernommen)")
                                                                       : mapping.species.value(name)));
    const auto outcome = importHarvesterLogs(app, *harvestId, lot, file, mapping);
    if (!outcome)
        return Refused;
    context.io.print(QStringLiteral("%1 von %2 Stämmen eingelesen, %3 übersprungen.")
                         .arg(outcome->stored)
                         .arg(outcome->found)
                         .arg(outcome->found - outcome->stored));
    return Success;
}

} // namespace tarvik::cli
