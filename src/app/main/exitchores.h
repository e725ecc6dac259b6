#pragma once
// What the main window does when the program ends.
#include "settings/settings.h"

#include <QDate>
#include <QString>
#include <optional>

namespace tarvik {

// The reminder question when no backup was ever made or the last one is older than the
// configured number of days; nullopt when none is due.
std::optional<QString> backupReminder(const Einstellungen& settings, const QDate& today);

// Removes the temporary report pages "report-*.htm" of the data folder.
void removeReportPages(const QString& dataFolder);

} // namespace tarvik
