#pragma once
// The device imports as the log window offers them: the calliper, the app's file, the online
// service and a harvester's production file. The desktop program hands them to the window.
#include "entry/ui/logimports.h"

namespace tarvik {

QList<LogImportAction> deviceLogImports();

} // namespace tarvik
