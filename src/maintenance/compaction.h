#pragma once
// "Datenbank komprimieren": a compacted copy beside the database, checked, then put in place of
// the original with one rename. The caller has closed every handle of its own on the file.
#include "common/prompter.h"

#include <QString>
#include <functional>

namespace tarvik {

QString compactionQuestion();
QString compactionFailedMessage();
QString compactionDoneMessage();

// "…/TARVIK3.db" → "…/TARVIK3.$$$"
QString compactionTarget(const QString& databasePath);

struct CompactionResult {
    bool ok = false;
    qint64 sizeBefore = 0, sizeAfter = 0;
    QString message; // the success or the failure message
};

// How far the compaction is (0 to 100) and what it does now, in German; called on the thread
// that runs the compaction, a few times a second at most.
using CompactionProgress = std::function<void(int percent, const QString& stage)>;

// Refuses, leaving both files as they were, when another program has the file open or the copy
// does not pass the integrity check or lacks rows.
CompactionResult compactDatabaseFile(const QString& databasePath, const CompactionProgress& progress = {});

} // namespace tarvik
