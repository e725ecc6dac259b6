#pragma once
// Every window's help button ("hilfe" or "comhilfe") opens the help topic named after the
// window, without each window wiring it: the filter connects a button when its window shows.
#include "common/prompter.h"

#include <QObject>

namespace tarvik {

class HelpButtons : public QObject {
    Q_OBJECT
public:
    explicit HelpButtons(Prompter& prompter, QObject* parent = nullptr);
    bool eventFilter(QObject* watched, QEvent* event) override;

    // Connects the window's help button, once; false when it has none.
    bool wire(QWidget* window);

private:
    Prompter& m_prompter;
};

// The topic key of a window: its objectName, umlauts written out ("EF_Eingabe_Stämme" and
// "EF_Eingabe_Staemme" find the same topic).
QString helpTopicOfWindow(const QString& objectName);

} // namespace tarvik
