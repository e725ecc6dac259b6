#include "common/text.h"

namespace tarvik {

QString readText(const QVariant& value)
{
    if (value.isNull() || !value.isValid())
        return {};
    return value.toString().trimmed();
}

QString singleLine(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            continue; // the LF that follows stands for the pair
        const bool control = c < 0x20 || c == 0x7F || (c >= 0x80 && c < 0xA0) || c == 0x2028 || c == 0x2029;
        out.append(control ? QChar(u' ') : text[i]);
    }
    return out;
}

} // namespace tarvik
