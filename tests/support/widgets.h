#pragma once
// Reaching a window's controls by their object names, and typing as a user types.
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <functional>

namespace tarvik::test {

// Runs action on the modal window of that objectName as soon as it is the active one, so a
// test can answer a window that blocks in exec().
inline void whenShown(const QString& name, std::function<void(QWidget*)> action)
{
    auto* timer = new QTimer;
    timer->setInterval(20);
    QObject::connect(timer, &QTimer::timeout, [timer, name, action] {
        QWidget* w = QApplication::activeModalWidget();
        if (!w || w->objectName() != name)
            return;
        timer->stop();
        timer->deleteLater();
        action(w);
    });
    timer->start();
}

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

// The field shows the whole text; a number field is not stretched far beyond its digits.
inline void checkFieldWidth(QWidget* w, const QString& text, bool number)
{
    QVERIFY2(w, qPrintable(text));
    auto* box = qobject_cast<QComboBox*>(w);
    QWidget* shown = box && box->isEditable() ? box->lineEdit() : w;
    const int room = shown->width() - (box && !box->isEditable() ? 28 : 8); // frame, margins, arrow
    const int needed = w->fontMetrics().horizontalAdvance(text);
    QVERIFY2(room >= needed, qPrintable(QStringLiteral("%1: %2 px for %3 px").arg(w->objectName()).arg(room).arg(needed)));
    if (number)
        QVERIFY2(w->width() <= needed + 80, qPrintable(QStringLiteral("%1 stretched to %2 px").arg(w->objectName()).arg(w->width())));
}

} // namespace tarvik::test
