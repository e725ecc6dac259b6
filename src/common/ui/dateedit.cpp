#include "common/ui/dateedit.h"

#include "common/sqldate.h"

#include <QCalendarWidget>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QWidgetAction>

namespace tarvik {

DateEdit::DateEdit(const QString& name, QWidget* parent) : QWidget(parent), m_edit(new QLineEdit)
{
    m_edit->setObjectName(name);
    m_edit->setMaxLength(10);
    m_edit->setPlaceholderText(QStringLiteral("TT.MM.JJJJ"));
    auto* button = new QToolButton;
    button->setObjectName(name + QStringLiteral("_kalender"));
    button->setText(QStringLiteral("…"));
    button->setToolTip(QStringLiteral("Kalender"));
    button->setFocusPolicy(Qt::NoFocus); // Tab goes from field to field, not to the calendar
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_edit);
    layout->addWidget(button);
    setFocusProxy(m_edit);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(button, &QToolButton::clicked, this, &DateEdit::showCalendar);
}

QString DateEdit::text() const { return m_edit->text().trimmed(); }

void DateEdit::setText(const QString& text) { m_edit->setText(text); }

void DateEdit::showCalendar()
{
    QMenu popup(this);
    auto* calendar = new QCalendarWidget;
    calendar->setGridVisible(true);
    const QDate current = parseGermanDate(text());
    if (current.isValid())
        calendar->setSelectedDate(current);
    auto* action = new QWidgetAction(&popup);
    action->setDefaultWidget(calendar);
    popup.addAction(action);
    connect(calendar, &QCalendarWidget::clicked, &popup, [this, &popup](QDate date) {
        m_edit->setText(formatGermanDate(date));
        popup.close();
    });
    popup.exec(mapToGlobal(QPoint(0, height())));
}

} // namespace tarvik
