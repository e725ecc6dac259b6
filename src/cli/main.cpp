#include "cli/cli.h"
#include "common/germanlocale.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <memory>

int main(int argc, char* argv[])
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    std::unique_ptr<QCoreApplication> app;
    if (tarvik::cli::needsGui(args)) {
        // No window is shown: the offscreen platform serves where there is no display.
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCoreApplication::setApplicationName(QStringLiteral("TARVIK"));
    tarvik::useGermanLocale();
    return tarvik::cli::run(QCoreApplication::arguments().mid(1));
}
