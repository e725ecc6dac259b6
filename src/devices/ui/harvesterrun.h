#pragma once
// The log window's harvester import: pick a production file, map its species and products,
// show its logs in the import grid, then store them after the transfer question.
#include "devices/harvesterimport.h"

#include <optional>

class QWidget;

namespace tarvik {

std::optional<HarvesterOutcome> runHarvesterImport(QWidget* parent, const AppContext& context, qint32 harvestId,
                                                   std::optional<qint32> lot, const QString& path = QString());

} // namespace tarvik
