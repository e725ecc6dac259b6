#pragma once
// One file fetched over HTTP(S) with Qt Network; the window stays responsive while it waits.
#include "devices/collect.h"

namespace tarvik {

Download httpDownload(const QUrl& url, int timeoutMs = 30000);

} // namespace tarvik
