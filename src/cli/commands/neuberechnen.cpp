// neuberechnen: bark, prices and totals of one lot again, as one transaction.
#include "cli/commands/all.h"
#include "rules/lotrecompute.h"
#include "rules/masterdatalookup.h"
#include "store/sql.h"
#include "store/startup.h"
#include "store/totals.h"

namespace tarvik::cli {
namespace {

const QCommandLineOption BarkOption(QStringLiteral("rinde"), QStringLiteral("Rindenabzug aller Stämme: O, F oder T"), QStringLiteral("O|F|T"));

class NeuberechnenCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("neuberechnen"); }
    QString synopsis() const override { return QStringLiteral("HIEB_NR LOS_NR [--rinde O|F|T]"); }
    QString summary() const override
    {
        return QStringLiteral("Rindenabzüge und Preise aller Stämme des Loses neu berechnen,\ndanach die Summen des Loses und des Hiebs");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("HIEB_NR"), QStringLiteral("Nummer des Hiebs"));
        parser.addPositionalArgument(QStringLiteral("LOS_NR"), QStringLiteral("Nummer des Loses"));
        parser.addOption(BarkOption);
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        if (parser.isSet(BarkOption) && !barkModeFromLetter(parser.value(BarkOption)))
            return QStringLiteral("--rinde erwartet O, F oder T.");
        const QStringList positional = parser.positionalArguments();
        if (positional.size() != 2 || !wholeNumber(positional[0]) || !wholeNumber(positional[1]))
            return QStringLiteral("neuberechnen erwartet die Hieb-Nr und die Los-Nr.");
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        std::optional<BarkMode> mode;
        if (parser.isSet(BarkOption))
            mode = barkModeFromLetter(parser.value(BarkOption));
        const QStringList positional = parser.positionalArguments();
        const auto hiebNr = wholeNumber(positional[0]);
        const auto losNr = wholeNumber(positional[1]);

        const QSqlDatabase db = context.session->database->shared();
        const auto harvestId = harvestByNumber(context, *hiebNr);
        if (!harvestId)
            return Refused;
        const auto prices = loadLotPriceSettings(db, *harvestId, *losNr);
        if (!prices) {
            context.prompter.inform(QStringLiteral("Das Los %1 gibt es beim Hieb %2 nicht.").arg(*losNr).arg(*hiebNr));
            return Refused;
        }

        // Bark, prices and totals land together or not at all.
        TransactionGuard guard(db);
        MasterDataLookup masterData(db);
        const auto bark = recomputeLotBark(db, masterData, *harvestId, *losNr, mode, *prices, context.prompter);
        if (!bark)
            return Refused;
        if (!recomputeLotPrices(db, masterData, *harvestId, *losNr, *prices, context.prompter))
            return Refused;
        recomputeTotals(db, *harvestId, *losNr); // only this lot's logs changed
        recomputeSaleState(db, *harvestId);
        guard.commit();
        context.io.print(QStringLiteral("%1 von %2 Stämmen geändert.").arg(bark->changed).arg(bark->logs));
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeNeuberechnenCommand() { return std::make_unique<NeuberechnenCommand>(); }

} // namespace tarvik::cli
