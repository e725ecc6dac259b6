#include "common/ui/guarded.h"

namespace tarvik {

void showStoreError(Prompter& prompter, const StoreError& error) { prompter.inform(error.message(), Prompter::Icon::Critical); }

} // namespace tarvik
