// The exchange file reader: any bytes give either every record or the first fault with its
// line, and a refusal names the file.
#include "exchange/exchangefile.h"
#include "fuzz/fuzzinput.h"

#include <cstdio>
#include <cstdlib>

using namespace tarvik;
using namespace tarvik::exchange;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString name = harvestFileName(3);
    const ParseResult result = parseHarvestBytes(name, fuzz::bytes(data, size));
    if (!result.file) {
        TARVIK_FUZZ_EXPECT(!result.error.reason.isEmpty());
        TARVIK_FUZZ_EXPECT(refusalMessage(name, result.error).contains(name));
    }
    return 0;
}
