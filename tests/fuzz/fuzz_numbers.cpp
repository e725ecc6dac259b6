// The tolerant number reader: any text, read as UTF-8 or as Windows-1252, gives a number that
// the formatter and the integer conversions take.
#include "common/numbers.h"
#include "common/textfile.h"
#include "fuzz/fuzzinput.h"

#include <cstdio>
#include <cstdlib>

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray raw = fuzz::bytes(data, size);
    for (const QString& text : {QString::fromUtf8(raw), decodeCp1252(raw)}) {
        const double value = readNumber(text);
        readNumber(QVariant(text));
        formatDecimal(value, 2);
        formatDecimal(static_cast<float>(value), 3);
        formatDecimalText(text, 1);
        numberText(value);
        toShort(value);
        toLong(value);
        currencyValue(value);
    }
    return 0;
}
