#pragma once
// OF_Einstellungen, "Globale Einstellungen": edits part of the settings and stores them only
// on "Beenden".
#include "settings/settings.h"

#include <QDialog>
#include <QList>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;

namespace tarvik {

class Prompter;

class SettingsDialog : public QDialog {
    Q_OBJECT
public:
    SettingsDialog(Einstellungen& settings, QString settingsPath, Prompter& prompter, QWidget* parent = nullptr);

    QLineEdit* field(int index) const { return m_fields.value(index); }

private:
    void buildGeneralPage(QWidget* page);
    void buildReportsPage(QWidget* page);
    void connectCouplings();
    void connectCorrections();
    void load();
    void store();

    QCheckBox* checkBox(const QString& name, const QString& caption);
    QLineEdit* textField(int index, int maxLength = 0);
    QButtonGroup* optionGroup(const QString& name, const QStringList& captions, QGroupBox* frame);

    Einstellungen& m_settings;
    QString m_settingsPath;
    Prompter& m_prompter;
    QList<QLineEdit*> m_fields; // t(0) ... t(8)
    QButtonGroup* m_comPorts = nullptr;
    QComboBox* m_serialDevice = nullptr; // the system's ports; empty: the COM number
    QLineEdit* m_onlineHost = nullptr;
    QButtonGroup* m_reportTargets = nullptr;
    QComboBox* m_separators = nullptr;
};

} // namespace tarvik
