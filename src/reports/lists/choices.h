#pragma once
// The choices an evaluation list window remembers between runs, kept in the settings slots of
// its list (see Einstellungen::ListNumberSlots).
#include "reports/lists/members.h"
#include "settings/settings.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik::lists {

struct ListChoices {
    int scope = 0;
    int groupingOption = -1; // the option button's index; the last is "Ohne Gruppierung"
    QString sortColumn;
    bool descending = false;
    QStringList columnsLeftOut;          // unticked columns of the check list
    QHash<QString, QString> filters;     // filter column → the value as its list shows it
};

// What the list's slots hold; nothing when the window has never been closed.
std::optional<ListChoices> loadListChoices(const Einstellungen& settings, Member member);
void storeListChoices(Einstellungen& settings, Member member, const ListChoices& choices);

} // namespace tarvik::lists
