#include "common/clock.h"

namespace tarvik {

QDate SystemClock::today() const { return QDate::currentDate(); }

} // namespace tarvik
