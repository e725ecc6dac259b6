#include "devices/ui/harvesterrun.h"

#include "devices/ui/harvestermapping.h"
#include "devices/ui/importgrid.h"
#include "store/records.h"

namespace tarvik {

std::optional<HarvesterOutcome> runHarvesterImport(QWidget* parent, const AppContext& ctx, qint32 harvestId, std::optional<qint32> lot,
                                                   const QString& givenPath)
{
    if (!harvesterLotAccepted(ctx, harvestId, lot))
        return std::nullopt;
    const QString path = givenPath.isEmpty() ? ctx.prompter.chooseOpenFile(QStringLiteral("Datei eines Harvesters öffnen"), ctx.dataFolder,
                                                                           QStringLiteral("Produktionsdatei eines Harvesters (*.hpr)"))
                                             : givenPath;
    if (path.isEmpty())
        return std::nullopt;
    const HarvesterRead read = readHarvesterFile(path);
    if (!read.file) {
        ctx.prompter.inform(read.error, Prompter::Icon::Critical);
        return std::nullopt;
    }
    const HarvesterFile& file = *read.file;
    HarvesterMappingDialog mapping(file, proposedHarvesterMapping(ctx.db, ctx.dataFolder, file.speciesNames, file.productNames),
                                   listValues(ctx.db, QStringLiteral("Baumarten"), QStringLiteral("Baumart")),
                                   listValues(ctx.db, QStringLiteral("Güteklassen"), QStringLiteral("Güteklasse")), parent);
    if (mapping.exec() != QDialog::Accepted)
        return std::nullopt;
    const HarvesterMapping chosen = mapping.mapping();
    // The found logs and the question in one window, as the other imports show them.
    return importHarvesterLogs(ctx, harvestId, lot, file, chosen, gridTransferQuestion(parent, lot));
}

} // namespace tarvik
