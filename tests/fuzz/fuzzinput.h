#pragma once
// The readers under test take a path, as the program hands them one: each input is written to a
// file of its own in a folder kept in memory where the machine has one.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>

namespace tarvik::fuzz {

inline QTemporaryDir& scratch()
{
    static QTemporaryDir dir(QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm/tarvik-fuzz-XXXXXX")
                                                                       : QDir::tempPath() + QStringLiteral("/tarvik-fuzz-XXXXXX"));
    return dir;
}

inline QString scratchFolder() { return scratch().path() + u'/'; }

// Writes the bytes to name in the scratch folder and returns the path.
inline QString inputFile(const uint8_t* data, size_t size, const QString& name)
{
    const QString path = scratch().filePath(name);
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    return path;
}

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

// A defect the reader let through: reported as a crash, so libFuzzer keeps the input.
#define TARVIK_FUZZ_EXPECT(condition)                                                                             \
    do {                                                                                                          \
        if (!(condition)) {                                                                                       \
            std::fprintf(stderr, "Annahme verletzt: %s (%s:%d)\n", #condition, __FILE__, __LINE__);               \
            std::abort();                                                                                         \
        }                                                                                                         \
    } while (false)

} // namespace tarvik::fuzz
