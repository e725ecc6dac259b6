#include "common/numbers.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <cmath>
#include <limits>
#include <string>

namespace tarvik {
namespace {

// Longest leading number of the text: optional sign, digits, one point, an exponent.
double leadingNumber(const QString& s)
{
    int i = 0;
    const int n = s.size();
    if (i < n && (s[i] == u'-' || s[i] == u'+'))
        ++i;
    const int mantissaStart = i;
    while (i < n && s[i].isDigit())
        ++i;
    if (i < n && s[i] == u'.') {
        ++i;
        while (i < n && s[i].isDigit())
            ++i;
    }
    const QString mantissa = s.mid(mantissaStart, i - mantissaStart);
    if (mantissa.isEmpty() || mantissa == u".")
        return 0.0;
    int end = i;
    if (i < n && (s[i] == u'E' || s[i] == u'e')) {
        int j = i + 1;
        if (j < n && (s[j] == u'-' || s[j] == u'+'))
            ++j;
        const int digitsStart = j;
        while (j < n && s[j].isDigit())
            ++j;
        if (j > digitsStart)
            end = j;
    }
    bool ok = false;
    const double v = s.left(end).toDouble(&ok);
    return ok && std::isfinite(v) ? v : 0.0;
}

// Rounds the shortest decimal form of |value| to a fixed number of decimals, halves away from
// zero, and writes it with a decimal comma into `out`; the characters written. Works in the
// buffer alone: long lists format millions of figures.
template <typename T>
qsizetype writeDecimal(T value, int decimals, char* out)
{
    decimals = std::max(0, decimals);
    if (!std::isfinite(value))
        value = 0;
    char sci[64];
    const auto [sciEnd, ec] = std::to_chars(sci, sci + sizeof sci, std::fabs(value), std::chars_format::scientific);
    if (ec != std::errc())
        return writeDecimal<T>(0, decimals, out);
    const char* e = std::find(sci, sciEnd, 'e');
    const char* exponentStart = e + 1 + (e[1] == '+' ? 1 : 0);
    int exponent = 0;
    std::from_chars(exponentStart, sciEnd, exponent);

    // The digits start three places in, leaving room for a carry, a sign and the comma.
    char* const digits = out + 3;
    qsizetype length = 0;
    int point = exponent + 1; // digits before the decimal point
    if (point <= 0) {
        std::fill_n(digits, 1 - point, '0');
        length = 1 - point;
        point = 1;
    }
    for (const char* c = sci; c < e; ++c)
        if (*c != '.')
            digits[length++] = *c;
    const qsizetype keep = point + decimals;
    if (length < keep + 1) {
        std::fill(digits + length, digits + keep + 1, '0');
        length = keep + 1;
    }
    const bool roundUp = digits[keep] >= '5';
    length = keep;
    char* first = digits;
    if (roundUp) {
        qsizetype k = keep - 1;
        while (k >= 0 && digits[k] == '9')
            digits[k--] = '0';
        if (k >= 0) {
            ++digits[k];
        } else {
            *--first = '1';
            ++point;
            ++length;
        }
    }
    const bool allZero = std::all_of(first, first + length, [](char c) { return c == '0'; });
    qsizetype intStart = 0;
    while (intStart < point - 1 && first[intStart] == '0')
        ++intStart;

    char* w = out;
    if (value < 0 && !allZero)
        *w++ = '-';
    const qsizetype intDigits = point - intStart;
    std::memmove(w, first + intStart, size_t(intDigits));
    w += intDigits;
    if (decimals > 0) {
        *w++ = ',';
        std::memmove(w, first + point, size_t(decimals));
        w += decimals;
    }
    return w - out;
}

template <typename T>
QString formatShortest(T value, int decimals)
{
    std::string buffer(size_t(decimalTextCapacity(decimals)), '\0');
    return QString::fromLatin1(buffer.data(), writeDecimal(value, decimals, buffer.data()));
}

} // namespace

double readNumber(const QString& text)
{
    QString s = text;
    if (s.endsWith(u'.'))
        s.chop(1);
    const int comma = s.indexOf(u',');
    if (comma >= 0)
        s[comma] = u'.';
    static const QString allowed = QStringLiteral("0123456789,-E");
    QString kept;
    bool pointKept = false;
    for (int i = s.size() - 1; i >= 0; --i) {
        const QChar c = s[i];
        if (c == u'.') {
            if (!pointKept) {
                pointKept = true;
                kept.prepend(c);
            }
        } else if (allowed.contains(c)) {
            kept.prepend(c);
        }
    }
    return leadingNumber(kept);
}

double readNumber(const QVariant& value)
{
    if (value.isNull() || !value.isValid())
        return 0.0;
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::Short: {
        const double v = value.toDouble();
        return std::isfinite(v) ? v : 0.0;
    }
    default:
        return readNumber(value.toString());
    }
}

QString formatDecimal(double value, int decimals) { return formatShortest(value, decimals); }
qsizetype formatDecimalTo(double value, int decimals, char* out) { return writeDecimal(value, decimals, out); }
QString formatDecimal(float value, int decimals) { return formatShortest(value, decimals); }
QString formatDecimal(int value, int decimals) { return formatShortest(static_cast<double>(value), decimals); }

QString formatDecimalText(const QString& text, int decimals)
{
    return formatDecimal(readNumber(text), decimals);
}

qint16 toShort(double value)
{
    const double r = std::nearbyint(value);
    if (!std::isfinite(r))
        return 0;
    return static_cast<qint16>(std::clamp(r, double(std::numeric_limits<qint16>::min()),
                                          double(std::numeric_limits<qint16>::max())));
}

qint32 toLong(double value)
{
    const double r = std::nearbyint(value);
    if (!std::isfinite(r))
        return 0;
    return static_cast<qint32>(std::clamp(r, double(std::numeric_limits<qint32>::min()),
                                          double(std::numeric_limits<qint32>::max())));
}

QString numberText(double value)
{
    if (!std::isfinite(value))
        value = 0;
    QString text = QString::number(value, 'f', 10);
    while (text.endsWith(u'0'))
        text.chop(1);
    if (text.endsWith(u'.'))
        text.chop(1);
    if (text == u"-0")
        text = QStringLiteral("0");
    return text.replace(u'.', u',');
}

double currencyValue(double value) { return readNumber(formatDecimal(value, 4)); }
double currencyValue(float value) { return readNumber(formatDecimal(value, 4)); }

QString signedText(qint64 value)
{
    QString text = QString::number(value);
    if (value >= 0)
        text.prepend(u' ');
    return text;
}

} // namespace tarvik
