#include "devices/ui/logwindowimports.h"

#include "devices/ui/harvesterrun.h"
#include "devices/ui/importrun.h"

namespace tarvik {
namespace {

LogImportAction::Run collectFrom(ImportSource source)
{
    return [source](QWidget* window, const AppContext& context, const LogImportTarget& target) {
        return runLogImport(window, context, target.harvestId, target.lot, source, {target.barkMode, target.fixedDeduction})
            .has_value();
    };
}

} // namespace

QList<LogImportAction> deviceLogImports()
{
    return {
        {QStringLiteral("comimport"), QStringLiteral("Import FMR1"), QString(), collectFrom(ImportSource::Fmr1)},
        {QStringLiteral("import_app_holzliste"), QStringLiteral("Import App"), QString(), collectFrom(ImportSource::App)},
        {QStringLiteral("importonlinetarvik"), QStringLiteral("Import Online"), QString(), collectFrom(ImportSource::Online)},
        {QStringLiteral("importharvester"), QStringLiteral("Import Harvester"),
         QStringLiteral("Stämme aus der Produktionsdatei eines Harvesters (StanForD 2010, *.hpr) in das Los einlesen"),
         [](QWidget* window, const AppContext& context, const LogImportTarget& target) {
             return runHarvesterImport(window, context, target.harvestId, target.lot).has_value();
         }},
    };
}

} // namespace tarvik
