#pragma once
// The master data hub's work: what each of its lists shows, direct edits of the per-class
// tables, the copy of a day-price row, deletion with its use tests, and the printed list.
#include "masterdata/classtables.h"
#include "masterdata/editmode.h"

namespace tarvik {

enum class MasterList {
    Baumarten = 0,
    Staemme = 1,
    Heilbronn = 2,
    Pfaehle = 3,
    Schichtholz = 4,
    Gueteklassen = 5,
    Rindenabzug = 6,
    Messbetraege = 7,
    Messzahlen = 8,
    Rindenabzug2 = 9,
    Tagespreise = 10,
};
inline constexpr int MasterListCount = 11;

QString masterListCaption(MasterList list);
QString masterListTable(MasterList list);
// The statement that fills the grid. The per-class tables list `Baumart` (and `Güte`), their
// class columns in the table's order and `ID` last; the others all their columns.
QString masterListSql(const QSqlDatabase& db, MasterList list);
std::optional<ClassTable> classTableOf(MasterList list);

// Money columns (base amounts, day prices, estimated prices) are shown with two decimals.
bool isMoneyColumn(MasterList list, const QString& column);
// A value as the grid and the printed list show it.
QString shownValue(MasterList list, const QString& column, const QVariant& value);

// The per-class tables are edited in their cells: the class columns, and the `Güte` of a day price.
bool isCellEditable(MasterList list, const QString& column);
// Why the day-price row cannot take that quality (too long, no quality class, the species has a
// row of that quality already); nullopt when it can.
std::optional<QString> dayPriceQualityRefusal(const QSqlDatabase& db, qint32 id, const QString& quality);
// Stores the typed value; for a class column asks whether it goes into every class column of the
// row. False when nothing was stored (answer or refusal shown).
bool editMasterCell(const AppContext& context, MasterList list, qint32 id, const QString& column, const QString& typed);

// A new `Tagespreise` row with every field of the given one; returns its ID.
qint32 copyDayPriceRow(const AppContext& context, qint32 id);

// Refuses a species' own row of the per-species tables; asks, tests whether bookings use the
// row, deletes it with its follow-ups in one transaction. False when nothing was deleted (answer
// No or a refusal shown).
bool deleteMasterRow(const AppContext& context, MasterList list, qint32 id);

// The list as the text output window prints it: the header text (and today's date when the
// settings ask for it), columns as the grid shows them joined by the settings' separator,
// "Anzahl Datensätze: " and "Seite n von m" on every page (one page when page breaks are off).
QStringList masterListReport(const QSqlDatabase& db, const Einstellungen& settings, MasterList list, QDate today);

} // namespace tarvik
