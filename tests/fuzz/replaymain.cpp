// Runs a fuzz target's entry point once on every file of the given folders or files, without
// libFuzzer: the corpora are replayed by every build, the sanitizer build included.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv)
{
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        QStringList files;
        const QString arg = QString::fromLocal8Bit(argv[i]);
        if (QFileInfo(arg).isDir()) {
            QDirIterator it(arg, QDir::Files);
            while (it.hasNext())
                files << it.next();
            files.sort();
        } else {
            files << arg;
        }
        for (const QString& path : files) {
            QFile f(path);
            if (!f.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "%s kann nicht gelesen werden\n", qPrintable(path));
                return 1;
            }
            const QByteArray bytes = f.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()), size_t(bytes.size()));
            ++inputs;
        }
    }
    std::printf("%d Eingaben ohne Befund\n", inputs);
    return inputs > 0 ? 0 : 1;
}
