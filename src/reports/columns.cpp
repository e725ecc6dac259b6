#include "reports/columns.h"

#include "common/numbers.h"
#include "common/text.h"

namespace tarvik::columns {

QString right(const QString& t, int n) { return singleLine(t).trimmed().left(n).rightJustified(n, u' '); }

QString left(const QString& t, int n) { return singleLine(t).trimmed().left(n).leftJustified(n, u' '); }

QString decimals(const QVariant& value, int k) { return formatDecimal(readNumber(value), k); }

QString text(const QVariant& value)
{
    if (value.isNull())
        return {};
    if (value.typeId() == QMetaType::Double)
        return numberText(value.toDouble());
    return singleLine(readText(value)); // a line break in a remark must not break the report's line
}

} // namespace tarvik::columns
