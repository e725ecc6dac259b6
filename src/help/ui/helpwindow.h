#pragma once
// FH_Hilfe: one topic of the help file, title above its text.
#include "common/prompter.h"

#include <QDialog>

namespace tarvik {

class HelpWindow : public QDialog {
    Q_OBJECT
public:
    HelpWindow(const QString& title, const QString& text, QWidget* parent = nullptr);
};

// Shows the topic of the shipped help file; a missing file is said through the prompter.
void showHelp(QWidget* parent, Prompter& prompter, const QString& key);

} // namespace tarvik
