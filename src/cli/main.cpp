#include "cli/cli.h"
#include "common/germanlocale.h"

#include <QCoreApplication>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("TARVIK"));
    tarvik::useGermanLocale();
    return tarvik::cli::run(QCoreApplication::arguments().mid(1));
}
