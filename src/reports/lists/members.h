#pragma once
// The evaluation lists: for each table its dialog, base query, columns, filters, groupings and
// the message when nothing is found.
#include <QList>
#include <QString>
#include <QStringList>

namespace tarvik::lists {

enum class Member { Hiebe, Lose, Staemme, Pfaehle, Schichtholz, Rechnungen };

struct Filter {
    QString column;     // the column compared, as the base query names it
    QString expression; // what is compared and listed; the column itself unless derived
    QString label;      // caption beside the list
    QString objectName() const;
};

struct Grouping {
    QString caption;
    QStringList columns; // the group columns, as they appear in the result
    QStringList expressions; // the SQL of each group column
};

struct MemberDef {
    Member member;
    QString key;        // the command line's word: "staemme"
    QString windowName; // "BF_Staemme_listen"
    QString title;      // window caption
    QString table;      // the listed table
    QString word;       // the no-rows message's word: "Stämme"
    QStringList columns;
    QString from;        // " from Hiebe, Lose where Hiebe.ID = Lose.Kennung"
    bool joinsHarvests = true;
    QList<Filter> filters;
    QList<Grouping> groupings; // without the last option "Ohne Gruppierung"
    QString aggregates;        // the figures of every group
    QString defaultSort;

    // "Lose.Bemerkung" where the name exists in both tables.
    QString qualified(const QString& column) const;
    QString noRowsMessage() const;
    // The base query with a condition no row meets: its column names fill the check list.
    QString emptyQuery() const;
};

const QList<MemberDef>& members();
const MemberDef& member(Member m);
const MemberDef* memberByKey(const QString& key);

inline constexpr char NoGrouping[] = "Ohne Gruppierung (Gruppierung nicht aktiviert)";
inline constexpr char GroupingNote[] =
    "Hinweis: Bei einer aktivierten Gruppierung werden die Daten unabhängig von der ausgewählten Sortierung und den "
    "ausgewählten Datenfeldern gelistet.";
// The scope list, in the order of the selection kinds.
const QStringList& scopeCaptions();
inline constexpr char NoHarvestMarked[] =
    "Es ist kein (aktueller) Hieb markiert. Bitte wählen Sie einen Hieb aus oder listen Sie die Daten von allen Hieben!";

} // namespace tarvik::lists
