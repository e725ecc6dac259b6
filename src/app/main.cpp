#include "app/main/mainwindow.h"
#include "backup/restoreatstart.h"
#include "common/clock.h"
#include "common/folders.h"
#include "common/germanlocale.h"
#include "common/ui/messageboxprompter.h"
#include "devices/ui/logwindowimports.h"
#include "help/ui/helpbuttons.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDirIterator>
#include <QIcon>
#include <QTimer>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("TARVIK"));
    QApplication::setApplicationVersion(QStringLiteral(TARVIK_VERSION));
    // The menu entry's icon in every size built in; the desktop file lets the shell match windows to it.
    QIcon icon;
    for (QDirIterator it(QStringLiteral(":/icons"), {QStringLiteral("*.png")}, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
        icon.addFile(it.next());
    QApplication::setWindowIcon(icon);
    QApplication::setDesktopFileName(QStringLiteral(TARVIK_APP_ID));
    tarvik::useGermanLocale();
    tarvik::installGermanQtTranslations();

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("TARVIK 3.0 - Die Holzliste"));
    parser.addHelpOption();
    const QCommandLineOption dataOption(QStringLiteral("daten"), QStringLiteral("Datenordner"), QStringLiteral("ORDNER"));
    parser.addOption(dataOption);
    parser.process(app);

    tarvik::MessageBoxPrompter prompter;
    tarvik::StartupOptions options;
    options.dataFolder = tarvik::resolveDataFolder(parser.value(dataOption));
    options.shareFolder = tarvik::shareFolder();
    options.locale = QLocale();
    options.beforeOpening = tarvik::takeOverStagedRestore;
    std::unique_ptr<tarvik::Session> session = tarvik::startSession(options, prompter);
    if (!session)
        return 1;

    tarvik::offerLogImports(tarvik::deviceLogImports());
    tarvik::SystemClock clock;
    tarvik::MainWindow window(*session, prompter, clock);
    prompter.setParent(&window);
    tarvik::HelpButtons helpButtons(prompter);
    app.installEventFilter(&helpButtons);
    window.show();
    // The check of every page of the file runs once the main list shows; damage ends the program.
    QTimer::singleShot(500, &window, [&] {
        session->checkPagesInBackground([&window, &prompter](const tarvik::StoreError& damage) {
            QMetaObject::invokeMethod(&window, [&prompter, message = damage.message()] {
                prompter.inform(message, tarvik::Prompter::Icon::Critical);
                QApplication::exit(1);
            }, Qt::QueuedConnection);
        });
    });
    const int code = app.exec();
    session->stopPageCheck(); // before the window it reports to goes
    return code;
}
