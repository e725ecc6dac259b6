#pragma once
// Which harvests a report counts: the selection kind of the report plus the year or date range
// of the settings, turned into a WHERE condition with bound values.
#include "common/prompter.h"
#include "settings/settings.h"

#include <QSqlDatabase>
#include <QString>
#include <QVariantList>
#include <optional>

namespace tarvik {

// The selection kinds, in the order the reports' scope lists offer them.
enum class HarvestScope : int {
    Alle = 0,
    Selektiert = 1,   // `Selektiert` = 'X'
    Aktuell = 2,      // the current harvest only
    Unverkauft = 3,
    Teilverkauft = 4,
    Verkauft = 5,
};

// Settings slots of the range.
inline constexpr int RangeModeSlot = 2;    // Einst_Zahl: 0 none, 1 years, 2 dates
inline constexpr int YearFromSlot = 2;     // Einst_Text
inline constexpr int YearToSlot = 3;
inline constexpr int DateFromSlot = 4;
inline constexpr int DateToSlot = 5;

struct HarvestFilter {
    // The condition without "where"; empty when every harvest counts. Its "and" and "or" bind
    // as written: the date range's second half is not tied to the selection kind.
    QString condition;
    QVariantList values;

    bool isEmpty() const { return condition.isEmpty(); }
    // " where <condition>" for a statement over `Hiebe` alone; empty when nothing filters.
    QString whereClause() const;
    // " and (<condition>)" behind a join's own condition, so the join holds for every row.
    QString andClause() const;
};

// The kind's condition followed by the range of the settings. A kind outside 1 … 5 counts
// every harvest; kind 2 without a current harvest matches none.
HarvestFilter harvestFilter(int kind, std::optional<qint32> currentHarvest, const Einstellungen& settings);

// Why the range settings cannot be used, as the refusal shows it; nothing when they can.
std::optional<QString> rangeRefusal(const Einstellungen& settings);
// Shows the refusal and returns false when the range cannot be used.
bool checkRange(const Einstellungen& settings, Prompter& prompter);

// What the main list says while the lists' range also limits it ("Nur Hiebe 2020–2021");
// nothing while it shows every harvest.
std::optional<QString> rangeNote(const Einstellungen& settings);
// Every harvest shows again: the range is switched off, its years and dates are kept.
void clearRange(Einstellungen& settings);

// Selection commands of the main window; each is one transaction.
// Afterwards exactly the given harvests carry `Selektiert` = 'X'.
void selectOnly(const QSqlDatabase& db, const QList<qint32>& harvestIds);
// Every harvest selected (true) or none (false).
void selectAll(const QSqlDatabase& db, bool selected);
QList<qint32> selectedHarvests(const QSqlDatabase& db);
QString markSelectedQuestion(int count);

} // namespace tarvik
