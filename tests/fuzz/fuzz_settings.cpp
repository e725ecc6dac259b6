// The settings file: whatever it holds, reading gives repaired arrays; a save and a read give
// the same values back, except that characters Windows-1252 lacks (in a file an editor saved as
// UTF-8) become "?" and factors keep two decimals; from then on a save and a read change nothing.
#include "common/textfile.h"
#include "fuzz/fuzzinput.h"
#include "settings/settings.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace tarvik;

namespace {

Einstellungen savedAndRead(const Einstellungen& settings)
{
    const QString again = fuzz::scratchFolder() + QStringLiteral("wieder.tk3");
    TARVIK_FUZZ_EXPECT(EinstellungenSpeichern(settings, again));
    return EinstellungenLaden(again);
}

bool sameOrConverted(const QString& before, const QString& after)
{
    return after == before || after == decodeCp1252(encodeCp1252(before));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString path = fuzz::inputFile(data, size, QLatin1String(SettingsFileName));
    const Einstellungen read = EinstellungenLaden(path);
    for (float f : read.dezimal)
        TARVIK_FUZZ_EXPECT(std::isfinite(f));
    const Einstellungen reread = savedAndRead(read);
    TARVIK_FUZZ_EXPECT(reread.zahl == read.zahl);
    for (size_t i = 0; i < read.text.size(); ++i)
        TARVIK_FUZZ_EXPECT(sameOrConverted(read.text[i], reread.text[i]));
    const Einstellungen third = savedAndRead(reread);
    TARVIK_FUZZ_EXPECT(third.zahl == reread.zahl);
    TARVIK_FUZZ_EXPECT(third.dezimal == reread.dezimal); // factors are kept to two decimals
    TARVIK_FUZZ_EXPECT(third.text == reread.text);
    return 0;
}
