#include "common/text.h"

namespace tarvik {

QString readText(const QVariant& value)
{
    if (value.isNull() || !value.isValid())
        return {};
    return value.toString().trimmed();
}

} // namespace tarvik
