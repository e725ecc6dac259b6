#pragma once
// The rules the settings dialog applies to its text fields when the user leaves one.
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik::settingsrules {

QString separator(const QString& text);        // empty becomes " | "
QString backupDays(const QString& text);       // below 3 becomes "3"
QString linesPerPage(const QString& text);     // below 30 becomes "30"
QString topMargin(const QString& text);        // above 80 becomes "80"
QString firstFactor(const QString& text);      // kept within 0,500 ... 0,900

// The handheld folder must be another folder than the data folder (links and spellings
// resolved): copying the exchange files onto themselves would empty them. nullopt when fine.
std::optional<QString> handheldFolderRefusal(const QString& folder, const QString& dataFolder);

// The separator list of the dialog, and what each entry writes (nullopt: "Keine Änderung").
const QStringList& separatorChoices();
std::optional<QString> separatorOfChoice(int index);

} // namespace tarvik::settingsrules
