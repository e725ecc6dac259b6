#pragma once
// Collecting logs from a source, before the grid shows them and the import stores them:
// the calliper over a serial port, the app's archive, the service's export file or download.
// Each asks its questions through the prompter; nullopt means stopped (its message shown).
#include "devices/importedlog.h"
#include "store/context.h"

#include <QByteArray>
#include <QUrl>
#include <functional>
#include <optional>

namespace tarvik {

inline constexpr int ComPortSlot = 46;     // Einst_Zahl: n means COM(n+1)
inline constexpr char Fmr1FileName[] = "FMR1.TXT";
inline constexpr char OnlineDownloadName[] = "Import_OTARVIK.DAT";

// The port to open: the chosen device name, else "COM" + (n + 1).
QString serialPortName(const Einstellungen& settings);

// What reading the calliper needs from a port: opened, read until confirmed, closed.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    // "" when open; else the reason in German.
    virtual QString open(const QString& portName) = 0;
    // Everything received, including what still arrives after the user confirmed; closes.
    virtual QByteArray finish() = 0;
};

// Steps 3 to 5 of the device import: connect, transfer, "FMR1.TXT" in the data folder, logs.
std::optional<QList<ImportedLog>> collectFromDevice(const AppContext& context, ByteSource& port);
// The same from bytes captured earlier (the command line replays a transfer).
std::optional<QList<ImportedLog>> collectFromTransfer(const AppContext& context, const QByteArray& received);

// The app's archive, picked by the user when path is empty.
std::optional<QList<ImportedLog>> collectFromApp(const AppContext& context, const QString& path = QString());
// The service's export file, picked by the user when path is empty.
std::optional<QList<ImportedLog>> collectFromOnlineFile(const AppContext& context, const QString& path = QString());
// The bytes of an export file, however they came.
std::optional<QList<ImportedLog>> logsOfOnlineExport(const AppContext& context, const QByteArray& bytes);

// The service's addresses; a host without a scheme is reached over https.
QUrl onlineBaseUrl(const QString& host);
QUrl onlinePrepareUrl(const QUrl& base, const QString& user);
QUrl onlineExportUrl(const QUrl& base, const QString& user);

// A file fetched from the service: the body, the HTTP status, or a German error.
struct Download {
    QByteArray body;
    int status = 0;
    QString error; // "" when the server answered
};
using Downloader = std::function<Download(const QUrl&)>;
using BrowserOpener = std::function<void(const QUrl&)>;

// The online import's choice: [Ja] prepares the export in the browser and downloads it,
// [Nein] picks a downloaded file.
std::optional<QList<ImportedLog>> collectFromOnline(const AppContext& context, const BrowserOpener& openBrowser,
                                                    const Downloader& download);

} // namespace tarvik
