#pragma once
// A one-line label that never widens its window: a text longer than the room it gets is cut
// with "…" and shown whole in its tooltip.
#include <QLabel>

namespace tarvik {

class ElidedLabel : public QLabel {
    Q_OBJECT
public:
    explicit ElidedLabel(QWidget* parent = nullptr);
    void setFullText(const QString& text); // the text and its tooltip
    QString shownText() const;              // what fits the label's width now
    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace tarvik
