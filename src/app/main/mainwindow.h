#pragma once
// AF_Tarvik: the main window. It holds the session for the whole run, does the work of its
// first activation and saves the settings when it closes.
#include "store/startup.h"

#include <QMainWindow>

namespace tarvik {

class Prompter;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(Session& session, Prompter& prompter, QWidget* parent = nullptr);

    static QString caption();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void openSettings();
    void onFirstActivation();

    Session& m_session;
    Prompter& m_prompter;
    bool m_activatedOnce = false;
};

} // namespace tarvik
