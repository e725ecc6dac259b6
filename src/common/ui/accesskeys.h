#pragma once
// A button's access key (Alt+N) acts at once instead of through the button's delayed animated
// click, so keys typed right after it reach the next entry, not the one being stored.
class QAbstractButton;

namespace tarvik {

void actAtOnceOnAccessKey(QAbstractButton* button);

} // namespace tarvik
