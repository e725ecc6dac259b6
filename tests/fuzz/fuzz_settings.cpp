// The settings file: whatever it holds, reading gives repaired arrays, and those survive a
// write and a read unchanged.
#include "fuzz/fuzzinput.h"
#include "settings/settings.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString path = fuzz::inputFile(data, size, QLatin1String(SettingsFileName));
    const Einstellungen read = EinstellungenLaden(path);
    for (float f : read.dezimal)
        TARVIK_FUZZ_EXPECT(std::isfinite(f));
    const QString again = fuzz::scratchFolder() + QStringLiteral("wieder.tk3");
    TARVIK_FUZZ_EXPECT(EinstellungenSpeichern(read, again));
    const Einstellungen reread = EinstellungenLaden(again);
    TARVIK_FUZZ_EXPECT(reread.zahl == read.zahl);
    TARVIK_FUZZ_EXPECT(reread.text == read.text);
    return 0;
}
