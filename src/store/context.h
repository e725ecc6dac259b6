#pragma once
// What a window needs from the running program, handed to it in one piece.
#include "common/clock.h"
#include "common/prompter.h"
#include "settings/settings.h"

#include <QSqlDatabase>
#include <QString>

namespace tarvik {

struct AppContext {
    QSqlDatabase db;
    Einstellungen& settings;
    QString dataFolder;
    Prompter& prompter;
    const Clock& clock;
};

} // namespace tarvik
