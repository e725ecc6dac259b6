#include "devices/ui/importrun.h"

#include "devices/collect.h"
#include "devices/download.h"
#include "devices/serialsource.h"
#include "devices/ui/importgrid.h"

#include <QDesktopServices>

namespace tarvik {

std::optional<ImportOutcome> runLogImport(QWidget* parent, const AppContext& ctx, qint32 harvestId, std::optional<qint32> lot,
                                          ImportSource source, const ImportBark& bark)
{
    std::optional<QList<ImportedLog>> logs;
    switch (source) {
    case ImportSource::Fmr1: {
        if (!confirmFmr1Import(ctx, lot))
            return std::nullopt;
        SerialByteSource port; // collects while the message box waits for [OK]
        logs = collectFromDevice(ctx, port);
        break;
    }
    case ImportSource::App:
        logs = collectFromApp(ctx);
        break;
    case ImportSource::Online:
        logs = collectFromOnline(ctx, [](const QUrl& url) { QDesktopServices::openUrl(url); },
                                 [](const QUrl& url) { return httpDownload(url); });
        break;
    }
    if (!logs)
        return std::nullopt;
    // The transfer question is put below the grid of the found logs, in one window.
    const auto outcome = importLogs(ctx, harvestId, lot, source, *logs, bark, gridTransferQuestion(parent, lot));
    return outcome;
}

} // namespace tarvik
