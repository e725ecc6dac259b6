// The text file reader and the Windows-1252 code page: any bytes read as lines, and those lines
// written and read again come back the same.
#include "common/textfile.h"
#include "fuzz/fuzzinput.h"

#include <cstdio>
#include <cstdlib>

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const TextFileResult read = readTextFile(fuzz::inputFile(data, size, QStringLiteral("eingabe.txt")));
    TARVIK_FUZZ_EXPECT(read.ok);
    const QString decoded = decodeCp1252(fuzz::bytes(data, size));
    TARVIK_FUZZ_EXPECT(decodeCp1252(encodeCp1252(decoded)) == decoded);
    return 0;
}
