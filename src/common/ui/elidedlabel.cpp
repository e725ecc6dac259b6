#include "common/ui/elidedlabel.h"

#include <QPainter>
#include <QStyle>

namespace tarvik {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void ElidedLabel::setFullText(const QString& text)
{
    setText(text);
    setToolTip(text);
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 10, QLabel::minimumSizeHint().height()};
}

QSize ElidedLabel::sizeHint() const { return {minimumSizeHint().width(), QLabel::sizeHint().height()}; }

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), int(alignment() | Qt::TextSingleLine), palette(), isEnabled(), shownText(),
                          foregroundRole());
}

} // namespace tarvik
