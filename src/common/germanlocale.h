#pragma once
// The program works with decimal commas and "dd.mm.yyyy" dates whatever the system says.
#include <QLocale>
#include <QString>
#include <optional>

namespace tarvik {

void useGermanLocale(); // QLocale::setDefault(de_DE)

// The message that ends the program when the locale cannot read German numbers and dates;
// nullopt when it can.
std::optional<QString> regionalSettingsProblem(const QLocale& locale);
// The warning for a machine still set to DM; nullopt otherwise.
std::optional<QString> currencyProblem(const QLocale& locale);

} // namespace tarvik
