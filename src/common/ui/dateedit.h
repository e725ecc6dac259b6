#pragma once
// A date typed as "dd.mm.yyyy" or picked from a calendar; empty means no date.
#include <QWidget>

class QLineEdit;

namespace tarvik {

class DateEdit : public QWidget {
    Q_OBJECT
public:
    // name: the objectName of the text field, e.g. "tdat(0)".
    explicit DateEdit(const QString& name, QWidget* parent = nullptr);
    QLineEdit* lineEdit() const { return m_edit; }
    QString text() const;
    void setText(const QString& text);

private:
    void showCalendar();
    QLineEdit* m_edit;
};

} // namespace tarvik
