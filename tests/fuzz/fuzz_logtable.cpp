// The online service's export file (and the table inside the app's archive): any bytes give
// logs, counted unreadable lines, or an error.
#include "devices/logtable.h"
#include "fuzz/fuzzinput.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes = fuzz::bytes(data, size);
    looksLikeHtml(bytes);
    parseLogTable(bytes);
    return 0;
}
