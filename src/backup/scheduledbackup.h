#pragma once
// A backup without the wizard, for scheduled runs: today's archive on the hard disk, checked,
// and a checked copy in a folder when one is given.
#include "store/context.h"

#include <QString>

namespace tarvik {

struct ScheduledBackup {
    bool ok = false;
    QString archive; // on the hard disk
    QString copy;    // in the target folder, when one was given
};

// Asks before replacing today's archive; stores the date of the backup in Einst_Text(12).
ScheduledBackup backupNow(const AppContext& context, const QString& targetFolder);

} // namespace tarvik
