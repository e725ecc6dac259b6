#include "reports/reportfile.h"

#include "common/textfile.h"
#include "reports/timberlist.h"

#include <QDir>
#include <algorithm>

namespace tarvik {
namespace {

// Slots of the settings record that keep the window's print settings.
constexpr int BoldSlot = 18;
constexpr int ItalicSlot = 19;
constexpr int FontSizeSlot = 20;
constexpr int MarginSlot = 22;
constexpr int LandscapeSlot = 23;

} // namespace

QString reportFilePath(const QString& dataFolder) { return QDir(dataFolder).filePath(QLatin1String(ReportFileName)); }

ReportDisplay loadForDisplay(const QString& path)
{
    ReportDisplay display;
    const TextFileResult file = readTextFile(path);
    if (!file.ok)
        return display;
    display.exists = true;
    for (const QString& line : file.lines) {
        if (display.text.size() >= DisplayLimit) {
            display.truncated = true;
            break;
        }
        display.text += line + QStringLiteral("\n");
    }
    display.truncated = display.truncated || display.text.size() > DisplayLimit;
    return display;
}

QString missingReportMessage(const QString& path)
{
    return QStringLiteral("Die Datei ") + QDir::toNativeSeparators(path) + QStringLiteral(" existiert nicht");
}

QString truncatedReportMessage()
{
    return QStringLiteral("ACHTUNG:\nDer Text ist über 62 kB groß. Es ist deshalb u.U. nicht alles im Textfeld enthalten. "
                          "Beim Ausdruck mit 'Datei drucken' werden trotzdem alle Daten ausgedruckt!");
}

QList<QStringList> splitPages(const QStringList& lines)
{
    QList<QStringList> pages{{}};
    for (const QString& line : lines) {
        if (line.trimmed() == u"#")
            pages.append(QStringList());
        else
            pages.last() << line;
    }
    return pages;
}

PrintSettings PrintSettings::from(const Einstellungen& s)
{
    PrintSettings p;
    p.bold = s.zahl[BoldSlot] == 1;
    p.italic = s.zahl[ItalicSlot] == 1;
    p.fontSize = s.zahl[FontSizeSlot] >= 8 && s.zahl[FontSizeSlot] <= 48 ? s.zahl[FontSizeSlot] : 10;
    p.marginChars = std::clamp<int>(s.zahl[MarginSlot], 0, 20);
    p.landscape = s.zahl[LandscapeSlot] == 1;
    return p;
}

void PrintSettings::storeIn(Einstellungen& s) const
{
    s.zahl[BoldSlot] = bold ? 1 : 0;
    s.zahl[ItalicSlot] = italic ? 1 : 0;
    s.zahl[FontSizeSlot] = static_cast<qint16>(fontSize);
    s.zahl[MarginSlot] = static_cast<qint16>(marginChars);
    s.zahl[LandscapeSlot] = landscape ? 1 : 0;
}

int stepFontSize(int current, int step) { return std::clamp(current + step, 4, 30); }

bool isFixedPitchName(const QString& family)
{
    const QString name = family.toUpper();
    return name.contains(QLatin1String("MONO")) || name.contains(QLatin1String("COURIER")) ||
           name.contains(QLatin1String("TYPEWRITER")) || name.contains(QLatin1String("CONSOLE")) || name == u"ORC-A";
}

} // namespace tarvik
