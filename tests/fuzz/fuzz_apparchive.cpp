// The app's ZIP file: any bytes give a log table or an error, and nothing is written outside
// the unpack folder.
#include "devices/apparchive.h"
#include "fuzz/fuzzinput.h"

#include <QDir>
#include <cstdio>
#include <cstdlib>

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString zip = fuzz::inputFile(data, size, QStringLiteral("holzliste_1.zip"));
    const QString folder = fuzz::scratchFolder() + QStringLiteral("daten/");
    QDir().mkpath(folder);
    readAppArchive(zip, folder);
    TARVIK_FUZZ_EXPECT(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden) ==
                           QStringList{QStringLiteral("tmp")} ||
                       QDir(folder).isEmpty());
    return 0;
}
