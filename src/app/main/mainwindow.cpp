#include "app/main/mainwindow.h"

#include "common/prompter.h"
#include "settings/ui/settingsdialog.h"
#include "store/sql.h"

#include <QCloseEvent>
#include <QEvent>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace tarvik {

QString MainWindow::caption() { return QStringLiteral("TARVIK 3.0.28 - Die Holzliste"); }

MainWindow::MainWindow(Session& session, Prompter& prompter, QWidget* parent)
    : QMainWindow(parent), m_session(session), m_prompter(prompter)
{
    setObjectName(QStringLiteral("AF_Tarvik"));
    setWindowTitle(QStringLiteral("TARVIK"));
    resize(1024, 700);

    QMenu* harvests = menuBar()->addMenu(QStringLiteral("&Hiebe"));
    harvests->setObjectName(QStringLiteral("H_hiebe"));
    QAction* quit = harvests->addAction(QStringLiteral(" Beenden"), this, &QWidget::close);
    quit->setObjectName(QStringLiteral("S_ZEPbeenden"));

    QMenu* options = menuBar()->addMenu(QStringLiteral("&Optionen"));
    options->setObjectName(QStringLiteral("O_Optionen"));
    QAction* settings = options->addAction(QStringLiteral("&Einstellungen"), this, &MainWindow::openSettings);
    settings->setObjectName(QStringLiteral("allgemeines"));

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    auto* settingsButton = new QPushButton(QStringLiteral("Einstellungen"));
    settingsButton->setObjectName(QStringLiteral("bt_einstellungen"));
    connect(settingsButton, &QPushButton::clicked, this, &MainWindow::openSettings);
    layout->addWidget(settingsButton, 0, Qt::AlignLeft);
    layout->addStretch();
    setCentralWidget(central);
}

bool MainWindow::event(QEvent* e)
{
    if (e->type() == QEvent::WindowActivate && !m_activatedOnce) {
        m_activatedOnce = true;
        // Messages wait until the window is on screen.
        QTimer::singleShot(0, this, &MainWindow::onFirstActivation);
    }
    return QMainWindow::event(e);
}

void MainWindow::onFirstActivation()
{
    setWindowTitle(caption());
    try {
        firstActivation(m_session, m_prompter);
    } catch (const StoreError& error) {
        m_prompter.inform(error.message(), Prompter::Icon::Critical);
    }
}

void MainWindow::openSettings()
{
    SettingsDialog dialog(m_session.settings, m_session.settingsPath(), m_prompter, this);
    dialog.exec();
}

void MainWindow::closeEvent(QCloseEvent* e)
{
    m_session.saveSettings(m_prompter);
    e->accept();
}

} // namespace tarvik
