#pragma once
// Reaching a window's controls by their object names, and typing as a user types.
#include <QLineEdit>
#include <QTest>
#include <QWidget>

namespace tarvik::test {

// The named control; the test stops at once when the window has none.
template <typename T>
T* child(const QWidget& window, const char* name)
{
    T* w = window.findChild<T*>(QString::fromUtf8(name));
    if (!w)
        qFatal("no control %s in %s", name, qPrintable(window.objectName()));
    return w;
}

// Replaces the field's text key by key, so the window's edit handlers run.
inline void typeInto(QLineEdit* edit, const QString& text)
{
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

} // namespace tarvik::test
