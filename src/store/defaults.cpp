#include "store/defaults.h"

#include "store/rows.h"
#include "store/schema.h"
#include "store/sql.h"

#include <QHash>
#include <functional>
#include <QVariantList>
#include <vector>

namespace tarvik {
namespace {

struct Species {
    const char* name;
    bool broadleaf;
};

const std::vector<Species>& speciesList()
{
    static const std::vector<Species> list{
        {"EI (Eiche)", true},      {"BU (Rotbuche)", true},   {"HB (Hainbuche)", true},
        {"ES (Esche)", true},      {"AH (Ahorn)", true},      {"UL (Ulme)", true},
        {"LI (Linde)", true},      {"NB (Nußbaum)", true},    {"EK (Edelkastanie)", true},
        {"KR (Kirsche)", true},    {"WO (Wildobst)", true},   {"RE (Roteiche)", true},
        {"BI (Birke)", true},      {"ER (Erle)", true},       {"AK (Akazie)", true},
        {"WE (Weide)", true},      {"EB (Eberesche)", true},  {"RK (Roßkastianie)", true},
        {"PA (Pappel)", true},     {"AL (Anderes Laubholz)", true},
        {"KI (Kiefer)", false},    {"LA (Lärche)", false},    {"WK (Weymouthskiefer)", false},
        {"FI (Fichte)", false},    {"DO (Douglasie)", false}, {"TA (Tanne)", false},
        {"AN (Anderes Nadelholz)", false},
    };
    return list;
}

QString code(const QString& species) { return species.section(u' ', 0, 0); }

// Per-class values (L0 ... L6) by the species' code; each list names the codes it serves.
using ClassValues = std::vector<int>;
ClassValues lookup(const std::vector<std::pair<QStringList, ClassValues>>& table, const QString& speciesCode)
{
    for (const auto& [codes, values] : table)
        if (codes.contains(speciesCode))
            return values;
    return {};
}

QStringList codes(const char* list) { return QString::fromLatin1(list).split(u' '); }

ClassValues barkDeduction(const QString& c)
{
    static const std::vector<std::pair<QStringList, ClassValues>> table{
        {codes("EI"), {1, 1, 1, 1, 2, 3, 3, 4, 5, 5}},
        {codes("PA"), {2, 2, 2, 2, 3, 3, 3, 4, 5, 5}},
        {codes("ES UL LI RE"), {1, 1, 1, 1, 2, 3, 3, 3, 3, 3}},
        {codes("BU HB AH NB EK KR WO BI ER AK WE EB RK AL"), {1, 1, 1, 1, 1, 1, 1, 2, 2, 2}},
        {codes("KI LA WK DO"), {1, 1, 2, 2, 2, 2, 3, 3, 3, 4}},
        {codes("FI TA AN"), {1, 1, 1, 1, 1, 2, 2, 2, 2, 3}},
    };
    return lookup(table, c);
}

ClassValues baseAmounts(const QString& c)
{
    static const std::vector<std::pair<QStringList, ClassValues>> table{
        {codes("EI NB RE AK"), {13, 16, 18, 20, 31, 41, 51, 74, 92, 102}},
        {codes("BU"), {13, 13, 14, 14, 16, 19, 22, 25, 31, 36}},
        {codes("HB BI"), {13, 16, 18, 20, 31, 36, 41, 46, 56, 66}},
        {codes("ES"), {13, 17, 23, 31, 41, 48, 56, 66, 82, 97}},
        {codes("AH"), {13, 16, 18, 20, 31, 38, 46, 56, 72, 87}},
        {codes("UL EK KR WO EB"), {13, 16, 18, 20, 31, 36, 41, 51, 66, 82}},
        {codes("LI"), {13, 14, 17, 23, 28, 36, 41, 46, 56, 66}},
        {codes("ER"), {13, 17, 22, 25, 36, 43, 51, 61, 77, 92}},
        {codes("WE RK PA"), {13, 14, 17, 20, 25, 31, 36, 46, 56, 66}},
        {codes("AL"), {13, 16, 18, 20, 31, 46, 72, 74, 92, 102}},
        {codes("KI LA WK"), {13, 13, 16, 17, 20, 24, 28, 33, 38, 43}},
        // The fourth value lower than the third is kept as the tables have it.
        {codes("FI DO TA AN"), {13, 15, 17, 14, 20, 23, 24, 25, 26, 27}},
    };
    return lookup(table, c);
}

ClassValues indexNumbers(const QString& c, bool broadleaf)
{
    if (c == u"EI" || c == u"RE")
        return {140, 120, 100, 80, 60, 40, 15};
    if (broadleaf)
        return {140, 120, 100, 85, 70, 55, 40};
    if (c == u"FI" || c == u"DO" || c == u"TA")
        return {160, 130, 100, 90, 85, 75, 50};
    return {140, 120, 100, 90, 85, 75, 50};
}

void insertRows(const QSqlDatabase& db, const QString& table, const QStringList& columns,
                const QList<QVariantList>& rows)
{
    RowInserter insert(db, table, columns);
    for (const QVariantList& row : rows)
        insert.insert(row);
}

QStringList prefixed(const QString& prefix, const QStringList& classes)
{
    QStringList out;
    for (const QString& c : classes)
        out << prefix + c;
    return out;
}

void insertPerSpecies(const QSqlDatabase& db, const QString& table, const QStringList& leading,
                      const QStringList& valueColumns,
                      const std::function<QVariantList(const Species&)>& values)
{
    QList<QVariantList> rows;
    for (const Species& s : speciesList())
        rows << values(s);
    insertRows(db, table, leading + valueColumns, rows);
}

QVariantList withValues(QVariantList row, const ClassValues& values)
{
    for (const int v : values)
        row << v;
    return row;
}

} // namespace

QStringList defaultSpecies()
{
    QStringList out;
    for (const Species& s : speciesList())
        out << QString::fromUtf8(s.name);
    return out;
}

QList<BarkRange> defaultBarkRanges(const QString& species)
{
    static const QHash<QString, QList<BarkRange>> groups = [] {
        QHash<QString, QList<BarkRange>> h;
        const QList<BarkRange> beechLike{{1, 41, 1}, {42, 999, 2}};
        const QList<BarkRange> oakLike{{1, 18, 1}, {19, 29, 2}, {30, 44, 3}, {45, 999, 4}};
        const QList<BarkRange> spruceLike{{1, 26, 1}, {27, 50, 2}, {51, 999, 3}};
        const QList<BarkRange> fir{{1, 22, 1}, {23, 38, 2}, {39, 55, 3}, {56, 999, 4}};
        const QList<BarkRange> larchLike{{1, 20, 1}, {21, 37, 2}, {38, 53, 3}, {54, 70, 4}, {71, 999, 5}};
        for (const char* s : {"AK (Akazie)", "AH (Ahorn)", "AL (Anderes Laubholz)", "BI (Birke)", "BU (Rotbuche)",
                              "EK (Edelkastanie)", "ER (Erle)", "HB (Hainbuche)", "KR (Kirsche)", "LI (Linde)",
                              "NB (Nußbaum)"})
            h.insert(QString::fromUtf8(s), beechLike);
        for (const char* s : {"EI (Eiche)", "EB (Eberesche)", "ES (Esche)", "PA (Pappel)", "RE (Roteiche)", "UL (Ulme)"})
            h.insert(QString::fromUtf8(s), oakLike);
        for (const char* s : {"FI (Fichte)", "KI (Kiefer)", "AN (Anderes Nadelholz)"})
            h.insert(QString::fromUtf8(s), spruceLike);
        h.insert(QStringLiteral("TA (Tanne)"), fir);
        for (const char* s : {"LA (Lärche)", "DO (Douglasie)"})
            h.insert(QString::fromUtf8(s), larchLike);
        return h;
    }();
    return groups.value(species);
}

bool insertDefaultRows(const QSqlDatabase& db, const QString& table)
{
    if (table == u"Stärkeklassen_Stämme") {
        insertRows(db, table, {QStringLiteral("Klasse"), QStringLiteral("Durchm_oR_von"), QStringLiteral("Durchm_oR_bis")},
                   {{"L0", 0, 9}, {"L1a", 10, 14}, {"L1b", 15, 19}, {"L2a", 20, 24}, {"L2b", 25, 29},
                    {"L3a", 30, 34}, {"L3b", 35, 39}, {"L4", 40, 49}, {"L5", 50, 59}, {"L6", 60, 999}});
    } else if (table == u"Stärkeklassen_Stämme_Heilbronn") {
        insertRows(db, table, {QStringLiteral("Klasse"), QStringLiteral("Zopfdurchmesser_cm"), QStringLiteral("Länge_m")},
                   {{"H1", 10, 8}, {"H2", 12, 10}, {"H3", 14, 14}, {"H4", 17, 16}, {"H5", 22, 18}, {"H6", 30, 18}});
    } else if (table == u"Stärkeklassen_Pfähle") {
        // The pole classes overlap on purpose: a general class beside its finer sub-classes.
        insertRows(db, table,
                   {QStringLiteral("Klasse"), QStringLiteral("Durchm_oR_von"), QStringLiteral("Durchm_oR_bis"),
                    QStringLiteral("Mindestlänge_von_m"), QStringLiteral("Mindestlänge_bis_m"),
                    QStringLiteral("Schätzpreis_je_St")},
                   {{"P1", 0, 6, 1, 99, 0}, {"P2", 7, 13, 1, 99, 0}, {"P2.1", 7, 9, 7, 99, 0},
                    {"P2.11", 7, 9, 7, 9, 0}, {"P2.12", 7, 9, 10, 99, 0}, {"P2.2", 10, 11, 10, 99, 0},
                    {"P2.3", 12, 13, 10, 99, 0}, {"P2.31", 12, 13, 10, 12, 0}, {"P2.32", 12, 13, 13, 15, 0},
                    {"P2.33", 12, 13, 16, 99, 0}, {"P3", 14, 99, 16, 99, 0}});
    } else if (table == u"Stärkeklassen_Schichtholz") {
        insertRows(db, table,
                   {QStringLiteral("Klasse"), QStringLiteral("Durchm_von"), QStringLiteral("Durchm_bis"),
                    QStringLiteral("Schätzpreis_je_m3")},
                   {{"S1", 3, 6, 0}, {"S2", 7, 13, 0}, {"S2.1", 7, 9, 0}, {"S2.2", 10, 13, 0},
                    {"S3", 14, 99, 0}, {"S3.1", 14, 19, 0}, {"S3.2", 20, 99, 0}});
    } else if (table == u"Güteklassen") {
        QList<QVariantList> qualities;
        for (const QString& q : schema::defaultQualityClasses())
            qualities << QVariantList{q};
        insertRows(db, table, {QStringLiteral("Güteklasse")}, qualities);
    } else {
        return false;
    }
    return true;
}

void insertDefaultMasterData(const QSqlDatabase& db)
{
    const QStringList logClasses = schema::defaultLogClasses();
    for (const char* table : {"Stärkeklassen_Stämme", "Stärkeklassen_Stämme_Heilbronn", "Stärkeklassen_Pfähle",
                              "Stärkeklassen_Schichtholz"})
        insertDefaultRows(db, QString::fromUtf8(table));

    insertPerSpecies(db, QStringLiteral("Baumarten"), {QStringLiteral("Baumart"), QStringLiteral("Laubwald")}, {},
                     [](const Species& s) {
                         return QVariantList{QString::fromUtf8(s.name),
                                             s.broadleaf ? QStringLiteral("J") : QStringLiteral("N")};
                     });

    const QStringList sk = prefixed(QStringLiteral("SK_"), logClasses);
    insertPerSpecies(db, QStringLiteral("Rindenabzug"), {QStringLiteral("Baumart")}, sk, [](const Species& s) {
        const QString name = QString::fromUtf8(s.name);
        return withValues({name}, barkDeduction(code(name)));
    });

    // A new file seeds five species; the upgrade at first start adds the other groups.
    QList<QVariantList> ranges;
    for (const char* species : {"FI (Fichte)", "TA (Tanne)", "DO (Douglasie)", "BU (Rotbuche)", "EI (Eiche)"}) {
        for (const BarkRange& r : defaultBarkRanges(QString::fromUtf8(species)))
            ranges << QVariantList{QString::fromUtf8(species), r.from, r.to, r.deductionCm};
    }
    insertRows(db, QStringLiteral("Rindenabzug2"),
               {QStringLiteral("Baumart"), QStringLiteral("Stärke_von"), QStringLiteral("Stärke_bis"),
                QStringLiteral("Abzug_cm")},
               ranges);

    insertDefaultRows(db, QStringLiteral("Güteklassen"));

    insertPerSpecies(db, QStringLiteral("Messbeträge"), {QStringLiteral("Baumart")}, sk, [](const Species& s) {
        const QString name = QString::fromUtf8(s.name);
        return withValues({name}, baseAmounts(code(name)));
    });

    insertPerSpecies(db, QStringLiteral("Tagespreise"), {QStringLiteral("Baumart"), QStringLiteral("Güte")}, sk,
                     [&logClasses](const Species& s) {
                         return withValues({QString::fromUtf8(s.name), QStringLiteral("B")},
                                           ClassValues(static_cast<size_t>(logClasses.size()), 0));
                     });

    insertPerSpecies(db, QStringLiteral("Messzahlen"), {QStringLiteral("Baumart")},
                     prefixed(QStringLiteral("GK_"), schema::defaultQualityClasses()), [](const Species& s) {
                         const QString name = QString::fromUtf8(s.name);
                         return withValues({name}, indexNumbers(code(name), s.broadleaf));
                     });
}

} // namespace tarvik
