// The help file: every key it lists can be read back, whatever else the file holds.
#include "fuzz/fuzzinput.h"
#include "help/helpfile.h"

#include <cstdio>
#include <cstdlib>

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::inputFile(data, size, QLatin1String(HelpFileName));
    const QStringList keys = helpTopicKeys(fuzz::scratchFolder());
    for (const QString& key : keys.mid(0, 8)) {
        const HelpTopic topic = readHelpTopic(fuzz::scratchFolder(), key);
        TARVIK_FUZZ_EXPECT(topic.fileFound);
    }
    readHelpTopic(fuzz::scratchFolder(), QStringLiteral("Hauptfenster"));
    return 0;
}
