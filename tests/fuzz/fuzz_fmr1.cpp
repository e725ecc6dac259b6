// The calliper's transfer: any bytes received decode to lines, and the lines to logs.
#include "devices/fmr1.h"
#include "fuzz/fuzzinput.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Fmr1Conversion conversion = convertFmr1Transfer(fuzz::bytes(data, size));
    parseFmr1Lines(conversion.lines);
    return 0;
}
