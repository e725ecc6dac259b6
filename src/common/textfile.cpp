#include "common/textfile.h"
#include "common/systemerror.h"

#include <QFile>
#include <QSaveFile>
#include <QStringDecoder>
#include <algorithm>
#include <optional>

namespace tarvik {
namespace {

// Windows-1252 bytes 0x80..0x9F; 0 marks the five unassigned positions.
constexpr char16_t HighTable[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

char encodeChar(char16_t c)
{
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return static_cast<char>(c);
    if (c < 0xA0 && HighTable[c - 0x80] == 0)
        return static_cast<char>(c); // an unassigned byte read in goes out as it came
    for (int i = 0; i < 32; ++i)
        if (HighTable[i] == c && c != 0)
            return static_cast<char>(0x80 + i);
    return '?';
}

} // namespace

QByteArray encodeCp1252(const QString& text)
{
    QByteArray out;
    out.reserve(text.size());
    for (const QChar ch : text)
        out.append(encodeChar(ch.unicode()));
    return out;
}

QString decodeCp1252(const QByteArray& bytes)
{
    QString out(bytes.size(), Qt::Uninitialized);
    char16_t* to = reinterpret_cast<char16_t*>(out.data());
    for (const char b : bytes) {
        const auto u = static_cast<unsigned char>(b);
        *to++ = u >= 0x80 && u < 0xA0 && HighTable[u - 0x80] ? HighTable[u - 0x80] : char16_t(u);
    }
    return out;
}

namespace {

// The text of bytes that read as UTF-8 (a byte order mark, or valid UTF-8 beyond ASCII); else nullopt.
std::optional<QString> asUtf8(const QByteArray& bytes)
{
    QByteArrayView view(bytes);
    const bool bom = view.startsWith("\xEF\xBB\xBF");
    if (bom)
        view = view.sliced(3);
    const bool beyondAscii = std::any_of(view.begin(), view.end(), [](char b) { return (static_cast<unsigned char>(b) & 0x80) != 0; });
    if (!bom && !beyondAscii)
        return std::nullopt;
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(view);
    if (utf8.hasError())
        return std::nullopt;
    return text;
}

} // namespace

QString decodeTextFile(const QByteArray& bytes)
{
    if (std::optional<QString> text = asUtf8(bytes))
        return *std::move(text);
    return decodeCp1252(bytes);
}

QByteArray encodeTextFile(const QString& text)
{
    QByteArray bytes = encodeCp1252(text);
    // Only bytes that would be read as UTF-8 can come back as another text.
    const std::optional<QString> misread = asUtf8(bytes);
    if (!misread || *misread == decodeCp1252(bytes))
        return bytes;
    return QByteArray("\xEF\xBB\xBF") + text.toUtf8();
}

TextFileResult writeTextFileRaw(const QString& path, const QString& text, TextEncoding encoding)
{
    QString normalised = text;
    normalised.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    normalised.replace(u'\n', QLatin1String("\r\n"));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return {false, {}, QStringLiteral("Die Datei \"%1\" kann nicht geschrieben werden: %2")
                               .arg(path, germanFileError(file))};
    }
    file.write(encoding == TextEncoding::Cp1252Only ? encodeCp1252(normalised) : encodeTextFile(normalised));
    if (!file.commit()) {
        return {false, {}, QStringLiteral("Die Datei \"%1\" kann nicht geschrieben werden: %2")
                               .arg(path, germanFileError(file))};
    }
    return {true, {}, {}};
}

namespace {

QString joinedLines(const QStringList& lines)
{
    qsizetype size = 0;
    for (const QString& line : lines)
        size += line.size() + 2;
    QString text;
    text.reserve(size);
    for (const QString& line : lines) {
        text += line;
        text += QLatin1String("\r\n");
    }
    return text;
}

} // namespace

TextFileResult writeTextFile(const QString& path, const QStringList& lines, TextEncoding encoding)
{
    return writeTextFileRaw(path, joinedLines(lines), encoding);
}

TextFileResult writeTextFileIfChanged(const QString& path, const QStringList& lines, bool* written)
{
    if (written)
        *written = false;
    const QString text = joinedLines(lines);
    const QByteArray bytes = encodeTextFile(text);
    QFile existing(path);
    if (existing.open(QIODevice::ReadOnly) && existing.size() == bytes.size() && existing.readAll() == bytes)
        return {true, {}, {}};
    existing.close();
    TextFileResult result = writeTextFileRaw(path, text);
    if (written)
        *written = result.ok;
    return result;
}

TextFileResult readTextFile(const QString& path)
{
    if (path.isEmpty())
        return {false, {}, QStringLiteral("Es wurde keine Datei angegeben.")};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {false, {}, QStringLiteral("Die Datei \"%1\" kann nicht gelesen werden: %2")
                               .arg(path, germanFileError(file))};
    }
    const QString text = decodeTextFile(file.readAll());
    QStringList lines;
    qsizetype from = 0;
    for (qsizetype end = text.indexOf(u'\n'); end >= 0; from = end + 1, end = text.indexOf(u'\n', from)) {
        // CR LF ends a line; a lone CR is part of it.
        const qsizetype length = end > from && text.at(end - 1) == u'\r' ? end - 1 - from : end - from;
        lines << text.mid(from, length);
    }
    if (from < text.size())
        lines << text.mid(from); // the line end of the last line opens no further line
    return {true, lines, {}};
}

} // namespace tarvik
