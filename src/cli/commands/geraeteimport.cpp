// geraeteimport: logs from a captured calliper transfer, an app file or an online export file
// into a harvest, as the log window's import buttons store them.
#include "cli/commands/all.h"
#include "cli/commands/harvester.h"
#include "devices/collect.h"
#include "devices/logimport.h"
#include "store/startup.h"

#include <QFile>

namespace tarvik::cli {
namespace {

const QCommandLineOption BarkOption(QStringLiteral("rinde"), QStringLiteral("Rindenabzug der eingelesenen Stämme: O, F oder T (Vorgabe T)"),
                                    QStringLiteral("O|F|T"));
const QCommandLineOption DeductionOption(QStringLiteral("abzug"), QStringLiteral("fester Rindenabzug in cm bei --rinde F"), QStringLiteral("CM"));

std::optional<ImportSource> sourceOf(const QString& word)
{
    if (word == QStringLiteral("fmr1"))
        return ImportSource::Fmr1;
    if (word == QStringLiteral("app"))
        return ImportSource::App;
    if (word == QStringLiteral("online"))
        return ImportSource::Online;
    return std::nullopt;
}

class GeraeteimportCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("geraeteimport"); }
    QString synopsis() const override
    {
        return QStringLiteral("fmr1|app|online|harvester DATEI HIEB_NR LOS_NR [--rinde O|F|T] [--abzug CM] "
                              "[--baumart NAME=CODE …] [--ohne-produkt NAME …] [--guete PRODUKT=KLASSE …]");
    }
    QString summary() const override
    {
        return QStringLiteral("Stämme einlesen: eine aufgezeichnete FMR1-Übertragung, eine Datei der\n"
                              "App Holzliste (holzliste_*.zip) oder eine Exportdatei von Online-TARVIK;\n"
                              "LOS_NR gilt für Stämme ohne eigene Los-Nummer; harvester: Produktionsdatei\n"
                              "eines Harvesters (StanForD 2010, .hpr), alle Stämme in das Los LOS_NR");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("QUELLE"), QStringLiteral("fmr1, app, online oder harvester"));
        parser.addPositionalArgument(QStringLiteral("DATEI"), QStringLiteral("die einzulesende Datei"));
        parser.addPositionalArgument(QStringLiteral("HIEB_NR"), QStringLiteral("Nummer des Hiebs"));
        parser.addPositionalArgument(QStringLiteral("LOS_NR"), QStringLiteral("Nummer des Loses"));
        parser.addOption(BarkOption);
        parser.addOption(DeductionOption);
        parser.addOptions({HarvesterSpeciesOption, HarvesterWithoutOption, HarvesterQualityOption});
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        if (parser.isSet(BarkOption) && !barkModeFromLetter(parser.value(BarkOption)))
            return QStringLiteral("--rinde erwartet O, F oder T.");
        const QStringList p = parser.positionalArguments();
        if (p.size() == 4 && p[0] == u"harvester" && !p[1].isEmpty() && wholeNumber(p[2]) && wholeNumber(p[3]))
            return harvesterUsageProblem(parser);
        if (p.size() != 4 || !sourceOf(p[0]) || p[1].isEmpty() || !wholeNumber(p[2]) || !wholeNumber(p[3]))
            return QStringLiteral("geraeteimport erwartet fmr1, app, online oder harvester, die Datei, die Hieb-Nr und die Los-Nr.");
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const QStringList p = parser.positionalArguments();
        if (p[0] == u"harvester")
            return runHarvesterImport(parser, context, p[1], *wholeNumber(p[2]), *wholeNumber(p[3]));
        const ImportSource source = *sourceOf(p[0]);
        const QString path = p[1];
        const qint32 lot = *wholeNumber(p[3]);
        const auto harvestId = harvestByNumber(context, *wholeNumber(p[2]));
        if (!harvestId)
            return Refused;
        const ImportBark bark{parser.isSet(BarkOption) ? *barkModeFromLetter(parser.value(BarkOption)) : BarkMode::Tabelle,
                              parser.value(DeductionOption)};

        const SessionContext core(context);
        const AppContext& app = core.app();
        std::optional<QList<ImportedLog>> logs;
        if (source == ImportSource::Fmr1) {
            if (!confirmFmr1Import(app, lot))
                return Refused;
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly)) {
                context.prompter.inform(QStringLiteral("Die Datei \"%1\" kann nicht gelesen werden.").arg(path));
                return Refused;
            }
            logs = collectFromTransfer(app, file.readAll());
        } else if (!QFile::exists(path)) {
            context.prompter.inform(QStringLiteral("Die Datei \"%1\" gibt es nicht.").arg(path));
            return Refused;
        } else {
            logs = source == ImportSource::App ? collectFromApp(app, path) : collectFromOnlineFile(app, path);
        }
        if (!logs)
            return Refused;
        const auto outcome = importLogs(app, *harvestId, lot, source, *logs, bark);
        if (!outcome)
            return Refused;
        context.io.print(QStringLiteral("%1 von %2 Stämmen eingelesen, %3 übersprungen.").arg(outcome->stored).arg(outcome->found).arg(outcome->skipped));
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeGeraeteimportCommand() { return std::make_unique<GeraeteimportCommand>(); }

} // namespace tarvik::cli
