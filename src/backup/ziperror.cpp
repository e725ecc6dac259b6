#include "backup/ziperror.h"

#include <cstring>
#include <zip.h>

namespace tarvik {
namespace {

const char* zipText(int code)
{
    switch (code) {
    case ZIP_ER_OK: return "kein Fehler";
    case ZIP_ER_MULTIDISK: return "auf mehrere Datenträger verteilte Archive werden nicht unterstützt";
    case ZIP_ER_RENAME: return "die temporäre Datei kann nicht umbenannt werden";
    case ZIP_ER_CLOSE: return "das Archiv kann nicht geschlossen werden";
    case ZIP_ER_SEEK: return "Fehler beim Positionieren in der Datei";
    case ZIP_ER_READ: return "Lesefehler";
    case ZIP_ER_WRITE: return "Schreibfehler";
    case ZIP_ER_CRC: return "Prüfsummenfehler";
    case ZIP_ER_ZIPCLOSED: return "das Archiv wurde schon geschlossen";
    case ZIP_ER_NOENT: return "Datei nicht vorhanden";
    case ZIP_ER_EXISTS: return "die Datei ist schon vorhanden";
    case ZIP_ER_OPEN: return "die Datei kann nicht geöffnet werden";
    case ZIP_ER_TMPOPEN: return "eine temporäre Datei kann nicht angelegt werden";
    case ZIP_ER_ZLIB: return "Fehler beim Entpacken";
    case ZIP_ER_MEMORY: return "zu wenig Arbeitsspeicher";
    case ZIP_ER_CHANGED: return "der Eintrag wurde verändert";
    case ZIP_ER_COMPNOTSUPP: return "das Packverfahren wird nicht unterstützt";
    case ZIP_ER_EOF: return "die Datei endet zu früh";
    case ZIP_ER_INVAL: return "ungültige Angabe";
    case ZIP_ER_NOZIP: return "kein ZIP-Archiv";
    case ZIP_ER_INTERNAL: return "interner Fehler";
    case ZIP_ER_INCONS: return "das Archiv ist in sich widersprüchlich";
    case ZIP_ER_REMOVE: return "die Datei kann nicht gelöscht werden";
    case ZIP_ER_DELETED: return "der Eintrag wurde gelöscht";
    case ZIP_ER_ENCRNOTSUPP: return "das Verschlüsselungsverfahren wird nicht unterstützt";
    case ZIP_ER_RDONLY: return "das Archiv ist schreibgeschützt";
    case ZIP_ER_NOPASSWD: return "das Archiv ist verschlüsselt";
    case ZIP_ER_WRONGPASSWD: return "falsches Kennwort";
    case ZIP_ER_OPNOTSUPP: return "der Vorgang wird nicht unterstützt";
    case ZIP_ER_INUSE: return "das Archiv ist noch in Gebrauch";
    case ZIP_ER_TELL: return "Fehler beim Bestimmen der Position in der Datei";
    case ZIP_ER_COMPRESSED_DATA: return "die gepackten Daten sind ungültig";
    case ZIP_ER_CANCELLED: return "abgebrochen";
    default: return "unbekannter Fehler";
    }
}

// Only file errors carry a system reason worth showing.
bool hasSystemReason(int code)
{
    return code == ZIP_ER_RENAME || code == ZIP_ER_CLOSE || code == ZIP_ER_SEEK || code == ZIP_ER_READ || code == ZIP_ER_WRITE ||
           code == ZIP_ER_OPEN || code == ZIP_ER_TMPOPEN || code == ZIP_ER_REMOVE || code == ZIP_ER_TELL;
}

} // namespace

QString germanZipError(int zipCode, int systemCode)
{
    QString text = QString::fromUtf8(zipText(zipCode));
    if (systemCode != 0 && hasSystemReason(zipCode))
        text += QStringLiteral(" (Systemfehler %1)").arg(systemCode);
    return text;
}

QString germanZipError(zip_t* archive)
{
    zip_error_t* error = zip_get_error(archive);
    return germanZipError(zip_error_code_zip(error), zip_error_code_system(error));
}

QString germanZipError(zip_file_t* entry)
{
    zip_error_t* error = zip_file_get_error(entry);
    return germanZipError(zip_error_code_zip(error), zip_error_code_system(error));
}

} // namespace tarvik
