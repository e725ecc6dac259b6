#pragma once
// Puts a finished file in place of another in one step, so a reader sees the old file or the
// new one, never neither (rename over the target; on Windows MoveFileEx with replace).
#include <QString>

namespace tarvik {

// False when the rename failed; the reason (system text, for a detail) in error when given.
bool replaceFile(const QString& from, const QString& to, QString* error = nullptr);

} // namespace tarvik
