#pragma once
// The note beside the main list's statistics while the lists' year or date range also limits
// the main list, with a button that shows every harvest again.
#include "settings/settings.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace tarvik {

class RangeNote : public QWidget {
    Q_OBJECT
public:
    explicit RangeNote(Einstellungen& settings, QWidget* parent = nullptr);
    // Shows the note for the range as it stands, or hides itself when nothing limits the list.
    void refresh();

signals:
    // The range was switched off; the list is to be filled again.
    void cleared();

private:
    Einstellungen& m_settings;
    QLabel* m_text;       // bezzeitraum
    QPushButton* m_clear; // comzeitraum
};

} // namespace tarvik
