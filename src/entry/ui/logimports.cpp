#include "entry/ui/logimports.h"

namespace tarvik {
namespace {
QList<LogImportAction>& offered()
{
    static QList<LogImportAction> actions;
    return actions;
}
} // namespace

void offerLogImports(QList<LogImportAction> actions) { offered() = std::move(actions); }

const QList<LogImportAction>& offeredLogImports() { return offered(); }

} // namespace tarvik
