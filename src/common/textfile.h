#pragma once
// Every text file the program writes is Windows-1252 with CR LF line ends, written so that
// a power cut leaves either the old or the new file, never half of one. The one exception is a
// text whose Windows-1252 bytes happen to be valid UTF-8 (such as "Ã¤"): the program would read
// it back changed, so such a file is written as UTF-8 with a byte order mark instead.
#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tarvik {

// Every byte round-trips: the five positions Windows-1252 leaves unassigned (0x81, 0x8D,
// 0x8F, 0x90, 0x9D) read as U+0081 ... and are written back as the same byte. Characters
// outside the code page become '?'.
QByteArray encodeCp1252(const QString& text);
QString decodeCp1252(const QByteArray& bytes);
// A file's text: UTF-8 when the bytes are valid UTF-8 and hold at least one character beyond
// ASCII (an editor saved it so), else Windows-1252. A UTF-8 byte order mark is dropped.
QString decodeTextFile(const QByteArray& bytes);

// The bytes a text file gets: Windows-1252, or UTF-8 with a byte order mark when the
// Windows-1252 bytes would read back as another text.
QByteArray encodeTextFile(const QString& text);

// Files another installation reads byte for byte stay Windows-1252 whatever they hold.
enum class TextEncoding { ReadsBackAsWritten, Cp1252Only };

struct TextFileResult {
    bool ok = false;
    QStringList lines; // for reading
    QString error;     // German, names the file
};

// Each line is written followed by CR LF.
TextFileResult writeTextFile(const QString& path, const QStringList& lines, TextEncoding encoding = TextEncoding::ReadsBackAsWritten);
// The same, but a file that already holds exactly these bytes is left alone (written is then
// false): a file read and saved unchanged keeps its date and is never at risk.
TextFileResult writeTextFileIfChanged(const QString& path, const QStringList& lines, bool* written = nullptr);
// Text as it stands: line breaks inside it are normalised to CR LF.
TextFileResult writeTextFileRaw(const QString& path, const QString& text, TextEncoding encoding = TextEncoding::ReadsBackAsWritten);
// Lines split at CR LF or LF; a missing file is ok == false with an error text.
TextFileResult readTextFile(const QString& path);

} // namespace tarvik
