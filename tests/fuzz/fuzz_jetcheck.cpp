// The check a version-2 file passes before the Jet library sees it: any bytes give a verdict.
#include "fuzz/fuzzinput.h"
#include "maintenance/jetconvert.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    jetFileProblem(fuzz::inputFile(data, size, QStringLiteral("tarvik2.mdb")));
    return 0;
}
