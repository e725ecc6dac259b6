#include "common/numbers.h"

#include <charconv>
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

// Rounds a decimal in scientific form ("3.8486e-01") to a fixed number of decimals,
// halves away from zero, and writes it with a decimal comma.
QString roundScientific(const std::string& sci, bool negative, int decimals)
{
    const auto ePos = sci.find('e');
    std::string digits;
    for (size_t k = 0; k < ePos; ++k)
        if (sci[k] != '.')
            digits += sci[k];
    const int exponent = std::stoi(sci.substr(ePos + 1));
    int point = exponent + 1; // digits before the decimal point
    if (point <= 0) {
        digits.insert(0, static_cast<size_t>(1 - point), '0');
        point = 1;
    }
    const size_t keep = static_cast<size_t>(point + decimals);
    if (digits.size() < keep + 1)
        digits.append(keep + 1 - digits.size(), '0');
    const bool roundUp = digits[keep] >= '5';
    digits.resize(keep);
    if (roundUp) {
        int k = static_cast<int>(keep) - 1;
        while (k >= 0 && digits[static_cast<size_t>(k)] == '9')
            digits[static_cast<size_t>(k--)] = '0';
        if (k >= 0)
            ++digits[static_cast<size_t>(k)];
        else {
            digits.insert(0, 1, '1');
            ++point;
        }
    }
    std::string intPart = digits.substr(0, static_cast<size_t>(point));
    const auto firstNonZero = intPart.find_first_not_of('0');
    intPart = firstNonZero == std::string::npos ? "0" : intPart.substr(firstNonZero);
    std::string result = intPart;
    if (decimals > 0)
        result += "," + digits.substr(static_cast<size_t>(point));
    const bool allZero = digits.find_first_not_of('0') == std::string::npos;
    if (negative && !allZero)
        result.insert(0, 1, '-');
    return QString::fromLatin1(result.c_str());
}

template <typename T>
QString formatShortest(T value, int decimals)
{
    decimals = std::max(0, decimals);
    if (!std::isfinite(value))
        value = 0;
    char buffer[64];
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value),
                                         std::chars_format::scientific);
    if (ec != std::errc())
        return formatShortest<T>(0, decimals);
    return roundScientific(std::string(buffer, end), value < 0, decimals);
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
    return value < 0 ? QString::number(value) : u' ' + QString::number(value);
}

} // namespace tarvik
