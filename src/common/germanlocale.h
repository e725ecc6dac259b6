#pragma once
// The program works with decimal commas and "dd.mm.yyyy" dates whatever the system says.
#include <QLocale>
#include <QString>
#include <optional>

namespace tarvik {

void useGermanLocale(); // QLocale::setDefault(de_DE)

// Qt's own texts (standard buttons "Abbrechen", the file dialog's "Speichern unter") in German:
// loads Qt's German catalogue from Qt's translation folder, else from a "translations" folder
// beside the program. False when none was found; the program then runs with Qt's English.
bool installGermanQtTranslations();

// The message that ends the program when the locale cannot read German numbers and dates;
// nullopt when it can.
std::optional<QString> regionalSettingsProblem(const QLocale& locale);
// The warning for a machine still set to DM; nullopt otherwise.
std::optional<QString> currencyProblem(const QLocale& locale);

} // namespace tarvik
