#include "reports/lists/choices.h"

#include <QUrl>

namespace tarvik::lists {
namespace {

// The number slot: bit 0 "kept", bits 1–3 the scope, bit 4 descending, bits 5–9 the grouping
// option + 1. The text slot: "key=value" parts joined by ';', values percent-encoded so that
// neither separators nor line breaks reach the settings file.
constexpr int Kept = 1;
constexpr int DescendingBit = 1 << 4;

QString encoded(const QString& value) { return QString::fromLatin1(QUrl::toPercentEncoding(value)); }
QString decoded(const QString& value) { return QUrl::fromPercentEncoding(value.toLatin1()); }

constexpr char SortKey[] = "sortierung";
constexpr char LeftOutKey[] = "ohne";
constexpr char FilterPrefix[] = "filter.";

} // namespace

std::optional<ListChoices> loadListChoices(const Einstellungen& settings, Member member)
{
    const int number = settings.listChoiceNumber(int(member));
    if (!(number & Kept))
        return std::nullopt;
    ListChoices c;
    c.scope = (number >> 1) & 0x7;
    c.descending = number & DescendingBit;
    c.groupingOption = ((number >> 5) & 0x1f) - 1;
    for (const QString& part : settings.listChoiceText(int(member)).split(u';', Qt::SkipEmptyParts)) {
        const QString key = decoded(part.section(u'=', 0, 0));
        const QString value = decoded(part.section(u'=', 1));
        if (key == QLatin1String(SortKey))
            c.sortColumn = value;
        else if (key == QLatin1String(LeftOutKey))
            c.columnsLeftOut = value.split(u',', Qt::SkipEmptyParts);
        else if (key.startsWith(QLatin1String(FilterPrefix)))
            c.filters.insert(key.mid(int(qstrlen(FilterPrefix))), value);
    }
    return c;
}

void storeListChoices(Einstellungen& settings, Member member, const ListChoices& c)
{
    const int number = Kept | (std::clamp(c.scope, 0, 7) << 1) | (c.descending ? DescendingBit : 0) |
                       (std::clamp(c.groupingOption + 1, 0, 31) << 5);
    settings.setListChoiceNumber(int(member), qint16(number));
    QStringList parts;
    if (!c.sortColumn.isEmpty())
        parts << QLatin1String(SortKey) + u'=' + encoded(c.sortColumn);
    if (!c.columnsLeftOut.isEmpty())
        parts << QLatin1String(LeftOutKey) + u'=' + encoded(c.columnsLeftOut.join(u','));
    QStringList columns = c.filters.keys();
    columns.sort();
    for (const QString& column : columns)
        parts << encoded(QLatin1String(FilterPrefix) + column) + u'=' + encoded(c.filters.value(column));
    settings.setListChoiceText(int(member), parts.join(u';'));
}

} // namespace tarvik::lists
