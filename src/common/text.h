#pragma once
#include <QString>
#include <QVariant>

namespace tarvik {

// Null-safe text reader: a null field reads as "", anything else as its trimmed text.
QString readText(const QVariant& value);

// A text for one line of a fixed-width report or a tab-separated row: every line break (a
// CR LF pair counts once), tab and other control character becomes one blank, so a value can
// neither break a line nor cut it short.
QString singleLine(const QString& text);

} // namespace tarvik
