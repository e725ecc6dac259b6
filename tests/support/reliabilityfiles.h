#pragma once
// Files as bytes for the tests of readers: written whole, read whole, or filled with noise.
#include "support/storefixture.h"

#include <QRandomGenerator>

namespace tarvik::test {

// The same noise on every run.
inline QByteArray garbage(int size)
{
    QByteArray b(size, Qt::Uninitialized);
    QRandomGenerator random(4711);
    for (char& c : b)
        c = static_cast<char>(random.bounded(256));
    return b;
}

} // namespace tarvik::test
