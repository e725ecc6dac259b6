#include "common/systemerror.h"

#include <QFileDevice>
#include <QList>
#include <QRegularExpression>
#include <cerrno>
#include <cstdio>
#include <cstring>
#ifndef Q_OS_WIN
#include <fcntl.h>
#include <unistd.h>
#endif
#include <utility>

namespace tarvik {

namespace {

const QString Unknown = QStringLiteral("Das System meldet einen Fehler, der sich nicht näher bestimmen lässt.");

struct ErrnoSentence {
    int value;
    const char* sentence;
};

const ErrnoSentence ErrnoSentences[] = {
    {ENOENT, "Die Datei oder der Ordner existiert nicht."},
    {EACCES, "Sie haben keine Berechtigung für diese Datei oder diesen Ordner."},
    {EPERM, "Das Betriebssystem erlaubt diesen Zugriff nicht."},
    {ENOSPC, "Der Datenträger ist voll."},
    {EDQUOT, "Ihr Speicherplatz auf dem Datenträger ist aufgebraucht."},
    {EROFS, "Der Datenträger ist schreibgeschützt."},
    {EISDIR, "Der Name bezeichnet einen Ordner, keine Datei."},
    {ENOTDIR, "Ein Teil des Pfades ist kein Ordner."},
    {EEXIST, "Die Datei existiert bereits."},
    {ENAMETOOLONG, "Der Dateiname ist zu lang."},
    {EIO, "Der Datenträger meldet einen Lese- oder Schreibfehler."},
    {EBUSY, "Die Datei wird gerade von einem anderen Programm benutzt."},
    {ETXTBSY, "Die Datei wird gerade von einem anderen Programm benutzt."},
    {EMFILE, "Es sind zu viele Dateien gleichzeitig geöffnet."},
    {ENFILE, "Es sind zu viele Dateien gleichzeitig geöffnet."},
    {ENOMEM, "Es ist nicht genug Arbeitsspeicher frei."},
    {EFBIG, "Die Datei ist zu groß für diesen Datenträger."},
    {ENODEV, "Das Gerät ist nicht vorhanden."},
    {ENXIO, "Das Gerät ist nicht vorhanden."},
    {EXDEV, "Die Datei kann nicht auf einen anderen Datenträger verschoben werden."},
    {ENOTEMPTY, "Der Ordner ist nicht leer."},
    {EINVAL, "Das Betriebssystem weist die Anfrage als ungültig zurück."},
    {EAGAIN, "Die Datei ist vorübergehend gesperrt; bitte versuchen Sie es gleich noch einmal."},
    {ETIMEDOUT, "Die Gegenstelle antwortet nicht rechtzeitig."},
    {ECONNREFUSED, "Die Gegenstelle nimmt keine Verbindung an."},
    {EHOSTUNREACH, "Die Gegenstelle ist nicht erreichbar."},
    {ENETUNREACH, "Das Netzwerk ist nicht erreichbar."},
};

// English texts of Qt, SQLite, the network and the spreadsheet library, matched in lower case as
// a part of the text ("…" stands for any words between); the first match wins, so the narrower
// texts stand first.
const std::pair<const char*, const char*> KnownTexts[] = {
    // SQLite
    {"database is locked", "Die Datenbank wird gerade von einem anderen Programm benutzt."},
    {"database table is locked", "Die Datenbank wird gerade von einem anderen Programm benutzt."},
    {"database or disk is full", "Der Datenträger ist voll."},
    {"attempt to write a readonly database", "Die Datenbank ist schreibgeschützt."},
    {"unable to open database file", "Die Datenbankdatei kann nicht geöffnet werden."},
    {"file is not a database", "Die Datei ist keine Datenbank dieses Programms."},
    {"database disk image is malformed", "Die Datenbankdatei ist beschädigt."},
    {"disk i/o error", "Der Datenträger meldet einen Lese- oder Schreibfehler."},
    {"out of memory", "Es ist nicht genug Arbeitsspeicher frei."},
    {"no such table", "Der Datenbank fehlt eine Tabelle."},
    {"no such column", "Der Datenbank fehlt eine Spalte."},
    {"unable to fetch row", "Die Datenbank kann die Zeilen nicht liefern."},
    {"driver not loaded", "Der Datenbanktreiber ist nicht geladen."},
    // the spreadsheet library
    {"creating output xlsx file", "Die Tabellendatei kann nicht angelegt werden; meist fehlt die Schreibberechtigung."},
    {"creating a tmpfile", "Eine Zwischendatei kann nicht angelegt werden; der Datenträger ist voll oder nicht beschreibbar."},
    {"reading a tmpfile", "Eine Zwischendatei kann nicht gelesen werden."},
    {"failed to malloc", "Es ist nicht genug Arbeitsspeicher frei."},
    {"zip_badzipfile", "Die Tabellendatei wird zu groß."},
    {"zip", "Die Tabellendatei kann nicht zusammengestellt werden."},
    {"exceeds excel's limit", "Ein Text ist länger, als eine Tabelle ihn aufnimmt."},
    {"exceeded", "Ein Wert überschreitet die Grenzen einer Tabelle."},
    {"parameter validation", "Die Tabellenbibliothek weist einen Wert zurück."},
    // the network
    {"host … not found", "Der Server ist nicht bekannt; bitte prüfen Sie die Internetverbindung."},
    {"connection refused", "Der Server nimmt keine Verbindung an."},
    {"connection timed out", "Der Server antwortet nicht rechtzeitig."},
    {"operation canceled", "Die Übertragung wurde abgebrochen."},
    {"ssl handshake failed", "Die sichere Verbindung zum Server kommt nicht zustande."},
    {"network unreachable", "Das Netzwerk ist nicht erreichbar."},
    {"network access is disabled", "Das Netzwerk ist nicht verfügbar."},
    {"temporary failure in name resolution", "Der Server ist nicht bekannt; bitte prüfen Sie die Internetverbindung."},
    {"remote host closed", "Der Server hat die Verbindung beendet."},
    {"server replied", "Der Server weist die Anfrage zurück."},
    {"not found", "Die Datei oder der Ordner existiert nicht."},
    // the serial port
    {"permission denied", "Sie haben keine Berechtigung für diese Datei oder dieses Gerät."},
    {"device or resource busy", "Das Gerät wird gerade von einem anderen Programm benutzt."},
    {"no such file or directory", "Die Datei, der Ordner oder das Gerät existiert nicht."},
    // Qt's file engine
    {"filename empty", "Es wurde kein Dateiname angegeben."},
    {"file name empty", "Es wurde kein Dateiname angegeben."},
    {"destination file exists", "Die Zieldatei existiert bereits."},
    {"source file does not exist", "Die Quelldatei existiert nicht."},
    {"cannot open", "Die Datei kann nicht geöffnet werden."},
    {"cannot create", "Die Datei kann nicht angelegt werden."},
    {"unknown error", "Das System meldet einen Fehler, der sich nicht näher bestimmen lässt."},
};

// A German text is kept: one of our own, or one of Qt's German catalogue.
bool looksGerman(const QString& text)
{
    static const QRegularExpression german(
        QStringLiteral("[äöüÄÖÜß]|\\b(nicht|kann|Datei|Fehler|der|die|das|ist|keine?|wurde|werden)\\b"));
    return german.match(text).hasMatch();
}

} // namespace

QString germanSystemError(int errnoValue)
{
    for (const ErrnoSentence& e : ErrnoSentences)
        if (e.value == errnoValue)
            return QString::fromUtf8(e.sentence);
    return Unknown;
}

QString germanErrorText(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return Unknown;
    // The C library's own texts first, as this machine writes them.
    for (const ErrnoSentence& e : ErrnoSentences)
        if (trimmed.compare(QString::fromLocal8Bit(std::strerror(e.value)), Qt::CaseInsensitive) == 0)
            return QString::fromUtf8(e.sentence);
    const QString lower = trimmed.toLower();
    for (const auto& [english, german] : KnownTexts) {
        const QStringList pieces = QString::fromUtf8(english).split(QStringLiteral(" … "));
        qsizetype from = 0;
        bool found = true;
        for (const QString& piece : pieces) {
            from = lower.indexOf(piece, from);
            if (from < 0) {
                found = false;
                break;
            }
            from += piece.size();
        }
        if (found)
            return QString::fromUtf8(german);
    }
    for (const ErrnoSentence& e : ErrnoSentences)
        if (lower.contains(QString::fromLocal8Bit(std::strerror(e.value)).toLower()))
            return QString::fromUtf8(e.sentence);
    return looksGerman(trimmed) ? trimmed : Unknown;
}

QString germanFileError(const QFileDevice& file)
{
    const QString told = germanErrorText(file.errorString());
    if (told != Unknown)
        return told;
    switch (file.error()) {
    case QFileDevice::OpenError:
        return QStringLiteral("Die Datei kann nicht geöffnet werden.");
    case QFileDevice::ReadError:
        return QStringLiteral("Die Datei kann nicht gelesen werden.");
    case QFileDevice::WriteError:
        return QStringLiteral("Die Datei kann nicht geschrieben werden.");
    case QFileDevice::ResourceError:
        return QStringLiteral("Der Datenträger ist voll oder es ist nicht genug Arbeitsspeicher frei.");
    case QFileDevice::PermissionsError:
        return QStringLiteral("Sie haben keine Berechtigung für diese Datei.");
    case QFileDevice::RenameError:
        return QStringLiteral("Die Datei kann nicht umbenannt werden.");
    case QFileDevice::RemoveError:
        return QStringLiteral("Die Datei kann nicht gelöscht werden.");
    case QFileDevice::CopyError:
        return QStringLiteral("Die Datei kann nicht kopiert werden.");
    default:
        return Unknown;
    }
}

// A program started from the desktop on Windows writes to no terminal: nothing to quiet there.
QuietStandardError::QuietStandardError()
{
#ifndef Q_OS_WIN
    std::fflush(stderr);
    const int sink = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (sink < 0)
        return;
    m_saved = ::dup(STDERR_FILENO);
    if (m_saved >= 0)
        ::dup2(sink, STDERR_FILENO);
    ::close(sink);
#endif
}

QuietStandardError::~QuietStandardError()
{
#ifndef Q_OS_WIN
    if (m_saved < 0)
        return;
    std::fflush(stderr);
    ::dup2(m_saved, STDERR_FILENO);
    ::close(m_saved);
#endif
}

} // namespace tarvik
