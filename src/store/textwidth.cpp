#include "store/textwidth.h"

#include "store/schema.h"

namespace tarvik {

std::optional<QString> widthReason(const QString& text, int width, const QString& subject)
{
    if (text.size() <= width)
        return std::nullopt;
    return QStringLiteral("...%1 höchstens %2 Zeichen lang sein darf.").arg(subject).arg(width);
}

QStringList widthReasons(const QString& table, const QList<TextField>& fields)
{
    const schema::Table& t = schema::table(table);
    QStringList reasons;
    for (const TextField& f : fields) {
        const schema::Column* c = t.column(f.column);
        Q_ASSERT_X(c, "widthReasons", qPrintable(f.column)); // a column the layout lacks is a typo here
        if (c && c->type == schema::ColumnType::Text)
            if (auto r = widthReason(f.text, c->width, f.subject))
                reasons << *r;
    }
    return reasons;
}

} // namespace tarvik
