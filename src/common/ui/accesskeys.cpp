#include "common/ui/accesskeys.h"

#include <QAbstractButton>
#include <QShortcutEvent>

namespace tarvik {
namespace {

class ImmediateAccessKey : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Shortcut || static_cast<QShortcutEvent*>(event)->isAmbiguous())
            return false;
        auto* button = static_cast<QAbstractButton*>(watched);
        if (button->isEnabled())
            button->click();
        return true;
    }
};

} // namespace

void actAtOnceOnAccessKey(QAbstractButton* button)
{
    button->installEventFilter(new ImmediateAccessKey(button));
}

} // namespace tarvik
