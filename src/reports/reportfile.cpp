#include "reports/reportfile.h"

#include "common/textfile.h"
#include "reports/timberlist.h"

#include <QDir>
#include <QRegularExpression>
#include <algorithm>
#include <functional>
#include <optional>

namespace tarvik {
namespace {

// Slots of the settings record that keep the window's print settings.
constexpr int BoldSlot = 18;
constexpr int ItalicSlot = 19;
constexpr int FontSizeSlot = 20;
constexpr int MarginSlot = 22;
constexpr int LandscapeSlot = 23;

// Lines of the timber list's tables stay within this width; longer ones carry free texts.
constexpr int TimberListTableWidth = 80;

// Stands for "Seite x von y" until the number of pages is known.
const QString PageToken = QStringLiteral("\uE000");

QString withoutTrailingBlanks(QString line)
{
    qsizetype end = line.size();
    while (end > 0 && line[end - 1] == u' ')
        --end;
    line.truncate(end);
    return line;
}

bool isPageMark(const QString& line) { return line.trimmed() == u"#"; }

// A line longer than the page goes on in the next lines, indented, broken at a blank where one
// stands in the second half of the line.
QStringList wrapped(const QString& line, int width)
{
    width = std::max(width, 8);
    if (line.size() <= width)
        return {line};
    const QString indent(std::min(4, width / 4), u' ');
    QStringList parts;
    QString rest = line;
    for (bool first = true;; first = false) {
        const qsizetype room = first ? width : width - indent.size();
        const QString lead = first ? QString() : indent;
        if (rest.size() <= room) {
            parts << lead + rest;
            return parts;
        }
        const qsizetype blank = rest.lastIndexOf(u' ', room);
        if (blank >= room / 2) {
            parts << withoutTrailingBlanks(lead + rest.left(blank));
            rest = rest.mid(blank + 1);
            while (rest.startsWith(u' '))
                rest.remove(0, 1);
        } else {
            parts << lead + rest.left(room);
            rest = rest.mid(room);
        }
    }
}

// Fills pages line by line; a new page starts with the head the caller gives it.
class Pager {
public:
    Pager(int rows, std::function<QStringList()> head) : m_rows(rows), m_head(std::move(head)) {}

    void newPage() { m_pages.append(m_head()); }
    int room() const { return m_pages.isEmpty() ? 0 : m_rows - int(m_pages.last().size()); }
    void add(const QString& line, int width)
    {
        for (const QString& part : wrapped(line, width)) {
            if (room() <= 0)
                newPage();
            m_pages.last() << part;
        }
    }
    // The pages with their numbers put in.
    QList<QStringList> pages() const
    {
        QList<QStringList> numbered = m_pages;
        for (qsizetype i = 0; i < numbered.size(); ++i)
            for (QString& line : numbered[i])
                line.replace(PageToken, QStringLiteral("Seite %1 von %2").arg(i + 1).arg(numbered.size()));
        return numbered;
    }

private:
    int m_rows;
    std::function<QStringList()> m_head;
    QList<QStringList> m_pages;
};

// What the printer needs of an evaluation list's text form.
struct ListText {
    QStringList head;       // header text and title, without the writer's own page numbers
    QString heading;
    QString rule;
    QList<std::pair<int, int>> columns; // start and end of each column's dash run
    QList<QStringList> rows;            // per marked page
    QStringList trailer;                // the count line at the end
};

bool isRule(const QString& line)
{
    if (!line.startsWith(u'-'))
        return false;
    return std::all_of(line.cbegin(), line.cend(), [](QChar c) { return c == u'-' || c == u' '; });
}

// The rule's index on a page of a list: below a heading, within the page's first lines.
qsizetype ruleIndex(const QStringList& page)
{
    for (qsizetype i = 1; i < std::min<qsizetype>(page.size(), 8); ++i)
        if (isRule(page[i]) && !page[i - 1].trimmed().isEmpty())
            return i;
    return -1;
}

std::optional<ListText> asList(const QStringList& lines)
{
    const QList<QStringList> marked = splitPages(lines);
    const qsizetype rule = ruleIndex(marked.first());
    if (rule < 0)
        return std::nullopt;
    ListText list;
    list.heading = marked.first()[rule - 1];
    list.rule = marked.first()[rule];
    for (qsizetype i = 0; i < list.rule.size();) {
        if (list.rule[i] != u'-') {
            ++i;
            continue;
        }
        qsizetype end = i;
        while (end < list.rule.size() && list.rule[end] == u'-')
            ++end;
        list.columns.append({int(i), int(end)});
        i = end;
    }
    static const QRegularExpression writerPageNumber(QStringLiteral("\\s+Seite \\d+ von \\d+\\s*$"));
    for (qsizetype i = 0; i < rule - 1; ++i)
        list.head << QString(marked.first()[i]).remove(writerPageNumber);
    while (!list.head.isEmpty() && list.head.last().trimmed().isEmpty())
        list.head.removeLast();
    for (const QStringList& page : marked) {
        const qsizetype own = ruleIndex(page);
        list.rows << (own > 0 && page[own - 1] == list.heading ? page.mid(own + 1) : page);
    }
    static const QRegularExpression countLine(QStringLiteral("^Anzahl Datenzeilen: \\d+$"));
    QStringList& last = list.rows.last();
    if (!last.isEmpty() && countLine.match(last.last()).hasMatch()) {
        list.trailer.prepend(last.takeLast());
        while (!last.isEmpty() && last.last().trimmed().isEmpty())
            list.trailer.prepend(last.takeLast());
    }
    return list;
}

QString slice(const QString& line, const std::pair<int, int>& span) { return withoutTrailingBlanks(line.mid(span.first, span.second - span.first)); }

PrintLayout listLayout(const ListText& list, const PageGrid& grid)
{
    // Bands: as many columns after each other as fit on the page; a column wider than the page
    // stands alone and its lines wrap.
    QList<std::pair<int, int>> bands;
    for (qsizetype first = 0; first < list.columns.size();) {
        qsizetype last = first;
        while (last + 1 < list.columns.size() && list.columns[last + 1].second - list.columns[first].first <= grid.columns)
            ++last;
        bands.append({list.columns[first].first, list.columns[last].second});
        first = last + 1;
    }
    PrintLayout layout;
    layout.bands = int(bands.size());
    QString bandName;
    std::pair<int, int> band;
    const auto head = [&] {
        QStringList lines;
        for (const QString& line : list.head)
            lines << wrapped(line, grid.columns);
        lines << (bandName.isEmpty() ? PageToken : bandName + QStringLiteral("   ") + PageToken) << QString();
        lines << wrapped(slice(list.heading, band), grid.columns) << wrapped(slice(list.rule, band), grid.columns);
        return lines;
    };
    Pager pager(grid.rows, head);
    qsizetype firstColumn = 0;
    for (const auto& current : bands) {
        band = current;
        qsizetype lastColumn = firstColumn;
        while (lastColumn + 1 < list.columns.size() && list.columns[lastColumn + 1].second <= current.second)
            ++lastColumn;
        if (bands.size() > 1)
            bandName = firstColumn == lastColumn ? QStringLiteral("Spalte %1 von %2").arg(firstColumn + 1).arg(list.columns.size())
                                                 : QStringLiteral("Spalten %1–%2 von %3").arg(firstColumn + 1).arg(lastColumn + 1).arg(list.columns.size());
        for (const QStringList& page : list.rows) {
            pager.newPage();
            for (const QString& row : page)
                pager.add(slice(row, band), grid.columns);
        }
        for (const QString& line : list.trailer)
            pager.add(line, grid.columns);
        firstColumn = lastColumn + 1;
    }
    layout.pages = pager.pages();
    return layout;
}

PrintLayout timberListLayout(const QStringList& lines, const QString& harvestNumber, const PageGrid& grid)
{
    QString heading; // of the table the page goes on with
    const auto head = [&] {
        QStringList lines{QStringLiteral("Holzliste Hieb-Nr: %1   %2").arg(harvestNumber, PageToken), QString()};
        if (!heading.isEmpty())
            lines << heading;
        return lines;
    };
    Pager pager(grid.rows, head);
    for (const QStringList& page : splitPages(lines)) {
        heading.clear();
        pager.newPage();
        for (const QString& line : page) {
            if (line.trimmed().isEmpty())
                heading.clear();
            if (isTimberListHeading(line)) {
                heading.clear();
                // A heading never stands alone at the foot of a page.
                if (pager.room() < 2)
                    pager.newPage();
                pager.add(line, grid.columns);
                heading = line;
                continue;
            }
            pager.add(line, grid.columns);
        }
    }
    return {pager.pages(), 1};
}

PrintLayout plainLayout(const QStringList& lines, const PageGrid& grid)
{
    Pager pager(grid.rows, [] { return QStringList(); });
    for (const QStringList& page : splitPages(lines)) {
        pager.newPage();
        for (const QString& line : page)
            pager.add(line, grid.columns);
    }
    return {pager.pages(), 1};
}

} // namespace

PrintLayout layoutForPrint(const QStringList& lines, const PageGrid& grid)
{
    PageGrid g = grid;
    g.columns = std::max(g.columns, 8);
    g.rows = std::max(g.rows, 12); // room for a page's head and at least a few lines
    if (const auto number = timberListHarvestNumber(lines))
        return timberListLayout(lines, *number, g);
    if (const auto list = asList(lines))
        return listLayout(*list, g);
    return plainLayout(lines, g);
}

int printWidth(const QStringList& lines)
{
    const bool timberList = timberListHarvestNumber(lines).has_value();
    if (!timberList)
        if (const auto list = asList(lines))
            return int(std::max(list->rule.size(), list->heading.size()));
    qsizetype widest = 0;
    for (const QString& line : lines)
        if (!isPageMark(line) && (!timberList || line.size() <= TimberListTableWidth))
            widest = std::max(widest, line.size());
    return int(widest);
}

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
        if (isPageMark(line))
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
