#pragma once
// The main window's commands that act on the installation as a whole. Each returns true when
// the program must end now (the database file was replaced or its handles are closed).
#include "common/prompter.h"

#include <QWidget>
#include <functional>

namespace tarvik {

struct Session;

// releaseHandles closes every handle the windows keep on the file.
bool compactDatabase(QWidget* parent, Session& session, Prompter& prompter, const std::function<void()>& releaseHandles);
bool takeOverVersion2Data(QWidget* parent, Session& session, Prompter& prompter, const std::function<void()>& releaseHandles);

// The topic keys of the help menu, by the menu item's objectName.
QString helpTopicOfMenuItem(const QString& itemName);

} // namespace tarvik
