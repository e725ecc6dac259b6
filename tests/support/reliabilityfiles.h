#pragma once
// Files as bytes for the tests of readers: written whole, read whole, or filled with noise.
#include <QByteArray>
#include <QFile>
#include <QRandomGenerator>
#include <QtTest>

namespace tarvik::test {

inline void writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    QVERIFY2(f.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(f.write(bytes), bytes.size());
}

// Empty when the file cannot be read.
inline QByteArray readBytes(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

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
