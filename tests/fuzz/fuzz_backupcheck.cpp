// The backup archive check: any bytes give a verdict, and a refusal says why.
#include "backup/archive.h"
#include "fuzz/fuzzinput.h"

#include <cstdio>
#include <cstdlib>

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const ArchiveCheck check = checkArchive(fuzz::inputFile(data, size, QStringLiteral("TARVIK30_backup_2026_11_23.zip")));
    TARVIK_FUZZ_EXPECT(check.ok || !check.error.isEmpty());
    return 0;
}
