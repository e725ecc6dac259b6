#include "settings/settings.h"

#include "common/numbers.h"
#include "common/textfile.h"

#include <QStringList>
#include <cmath>

namespace tarvik {
namespace {

// A reader accepts blanks around the number; anything else that does not parse counts as 0.
qint16 parseZahl(const QString& line)
{
    bool ok = false;
    const int v = QStringView(line).trimmed().toInt(&ok);
    return ok ? toShort(v) : qint16(0);
}

float parseDezimal(const QString& line)
{
    bool ok = false;
    const float v = QStringView(line).trimmed().toFloat(&ok);
    return ok ? v : 0.0f; // repair() turns "nan", "inf" and overlong factors into missing ones
}

// A factor line holds ten characters: two decimals with a point.
constexpr int FactorWidth = 10;

QString factorText(float value)
{
    QString s = formatDecimal(value, 2);
    const int comma = s.indexOf(u',');
    if (comma >= 0)
        s[comma] = u'.';
    return s;
}

} // namespace

void Einstellungen::repair()
{
    if (text[10].trimmed().isEmpty())
        text[10] = QStringLiteral(" | ");
    if (zahl[17] < 3)
        zahl[17] = 14;
    // A factor is what its line holds: two decimals. One that is no number, or too long for its
    // line (it would be cut and come back as another), counts as missing.
    for (float& f : dezimal) {
        const QString line = std::isfinite(f) ? factorText(f) : QString();
        f = line.isEmpty() || line.size() > FactorWidth ? 0.0f : line.toFloat();
    }
    if (dezimal[0] == 0.0f)
        dezimal[0] = 0.7f;
    if (dezimal[1] == 0.0f)
        dezimal[1] = 0.65f;
    if (dezimal[2] == 0.0f)
        dezimal[2] = 0.6f;
}

QString factorLine(float value) { return factorText(value).left(FactorWidth).trimmed(); }

Einstellungen EinstellungenLaden(const QString& path)
{
    Einstellungen s;
    const TextFileResult file = readTextFile(path);
    if (file.ok) {
        const QStringList& lines = file.lines;
        const int n = std::min<int>(lines.size(), Einstellungen::LineCount);
        for (int i = 0; i < n; ++i) {
            if (i < Einstellungen::ZahlCount)
                s.zahl[static_cast<size_t>(i)] = parseZahl(lines[i]);
            else if (i < Einstellungen::ZahlCount + Einstellungen::DezimalCount)
                s.dezimal[static_cast<size_t>(i - Einstellungen::ZahlCount)] = parseDezimal(lines[i]);
            else
                // A lone CR reads as the blank a save makes of it.
                s.text[static_cast<size_t>(i - Einstellungen::ZahlCount - Einstellungen::DezimalCount)] =
                    QString(lines[i]).replace(u'\r', u' ');
        }
    }
    s.repair();
    return s;
}

bool EinstellungenSpeichern(const Einstellungen& settings, const QString& path, QString* error)
{
    QStringList lines;
    lines.reserve(Einstellungen::LineCount);
    for (const qint16 v : settings.zahl)
        lines << signedText(v);
    for (const float v : settings.dezimal)
        lines << factorLine(v);
    for (const QString& t : settings.text) {
        QString line = t;
        line.replace(u'\r', u' ').replace(u'\n', u' '); // one value, one line
        lines << line;
    }
    // Unchanged settings leave the file alone; a change replaces it whole (temporary file, then
    // rename), so a crash leaves the old or the new file.
    const TextFileResult result = writeTextFileIfChanged(path, lines);
    if (!result.ok && error)
        *error = result.error;
    return result.ok;
}

} // namespace tarvik
