#pragma once
#include <QString>
#include <QVariant>

namespace tarvik {

// Null-safe text reader: a null field reads as "", anything else as its trimmed text.
QString readText(const QVariant& value);

} // namespace tarvik
