// The settings file: whatever it holds, reading gives repaired arrays; a save and a read give
// the same values back, except that characters Windows-1252 lacks (in a file an editor saved as
// UTF-8) become "?" and factors keep two decimals; from then on a save leaves the file's bytes
// as they are.
#include "common/textfile.h"
#include "fuzz/fuzzinput.h"
#include "settings/settings.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace tarvik;

namespace {

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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

    const QString again = fuzz::scratchFolder() + QStringLiteral("wieder.tk3");
    TARVIK_FUZZ_EXPECT(EinstellungenSpeichern(read, again));
    const QByteArray saved = fileBytes(again);
    const Einstellungen reread = EinstellungenLaden(again);
    TARVIK_FUZZ_EXPECT(reread.zahl == read.zahl);
    for (size_t i = 0; i < read.text.size(); ++i)
        TARVIK_FUZZ_EXPECT(sameOrConverted(read.text[i], reread.text[i]));

    // What was read back saves as the very bytes it was read from (factors included).
    TARVIK_FUZZ_EXPECT(EinstellungenSpeichern(reread, again));
    TARVIK_FUZZ_EXPECT(fileBytes(again) == saved);
    return 0;
}
