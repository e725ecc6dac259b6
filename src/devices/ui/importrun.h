#pragma once
// The log window's three imports: collect from the calliper, the app's file or the online
// service, show the logs in the grid `fmrgrid`, then store them after the transfer question.
#include "devices/logimport.h"

#include <optional>

class QWidget;

namespace tarvik {

std::optional<ImportOutcome> runLogImport(QWidget* parent, const AppContext& context, qint32 harvestId,
                                          std::optional<qint32> lot, ImportSource source, const ImportBark& bark);

} // namespace tarvik
