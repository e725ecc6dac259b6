#pragma once
// The log table of the online service's export file and of the app's archive: one header
// line, then one log per line, fields separated by semicolons (layout in docs/device-formats.md).
#include "devices/importedlog.h"

#include <QByteArray>
#include <optional>

namespace tarvik {

inline constexpr char LogTableHeader[] = "Los;Nr;Baumart;Guete;Laenge;Staerke;Zopf;Kaefer;Bemerkung";

struct LogTable {
    QList<ImportedLog> logs;
    int unreadableLines = 0; // lines with too few fields or no number: counted as not imported
    QString error;           // German; set when the bytes are no log table at all
};

// UTF-8 when the bytes are valid UTF-8, else Windows-1252; CR LF or LF line ends.
LogTable parseLogTable(const QByteArray& bytes);

// Whether the bytes are a web page rather than a file (a server's error page).
bool looksLikeHtml(const QByteArray& bytes);

} // namespace tarvik
