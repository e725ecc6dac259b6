#include "help/ui/helpbuttons.h"

#include "help/ui/helpwindow.h"

#include <QDialog>
#include <QEvent>
#include <QPushButton>
#include <QVariant>

namespace tarvik {

namespace {
const char* const WiredProperty = "tarvikHilfeVerbunden";
}

QString helpTopicOfWindow(const QString& objectName)
{
    QString key = objectName;
    key.replace(QStringLiteral("ä"), QStringLiteral("ae")).replace(QStringLiteral("ö"), QStringLiteral("oe"));
    key.replace(QStringLiteral("ü"), QStringLiteral("ue")).replace(QStringLiteral("ß"), QStringLiteral("ss"));
    key.replace(QStringLiteral("Ä"), QStringLiteral("Ae")).replace(QStringLiteral("Ö"), QStringLiteral("Oe"));
    key.replace(QStringLiteral("Ü"), QStringLiteral("Ue"));
    return key;
}

HelpButtons::HelpButtons(Prompter& prompter, QObject* parent) : QObject(parent), m_prompter(prompter) {}

bool HelpButtons::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show)
        if (auto* dialog = qobject_cast<QDialog*>(watched))
            wire(dialog);
    return QObject::eventFilter(watched, event);
}

bool HelpButtons::wire(QWidget* window)
{
    for (const char* name : {"hilfe", "comhilfe"}) {
        QPushButton* button = window->findChild<QPushButton*>(QString::fromLatin1(name));
        if (!button)
            continue;
        // A window that connects its own help enables its button itself and keeps it.
        if (button->property(WiredProperty).toBool() || button->isEnabled())
            return true;
        button->setProperty(WiredProperty, true);
        button->setEnabled(true);
        QWidget* owner = window;
        connect(button, &QPushButton::clicked, owner,
                [this, owner] { showHelp(owner, m_prompter, helpTopicOfWindow(owner->objectName())); });
        return true;
    }
    return false;
}

} // namespace tarvik
