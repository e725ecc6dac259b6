#pragma once
// The imports the log window offers below its grid (calliper, app, online service, harvester).
// The application hands them in at its start, so the entry windows need not know the devices;
// a window opened before that (or without any) simply shows no import buttons.
#include "rules/logmeasure.h"
#include "store/context.h"

#include <QList>
#include <QString>
#include <functional>
#include <optional>

class QWidget;

namespace tarvik {

// Where the imported logs go, with the bark mode chosen in the window when the import starts.
struct LogImportTarget {
    qint32 harvestId = 0;
    std::optional<qint32> lot;
    BarkMode barkMode = BarkMode::Tabelle;
    QString fixedDeduction; // cm, bark mode "F"
};

struct LogImportAction {
    // True when logs were stored, so the window shows them.
    using Run = std::function<bool(QWidget* window, const AppContext& context, const LogImportTarget& target)>;
    QString objectName;
    QString caption;
    QString toolTip;
    Run run;
};

void offerLogImports(QList<LogImportAction> actions);
const QList<LogImportAction>& offeredLogImports();

} // namespace tarvik
