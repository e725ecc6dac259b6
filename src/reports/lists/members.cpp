#include "reports/lists/members.h"

namespace tarvik::lists {
namespace {

QStringList words(const char* text) { return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts); }

// Group columns named as they stand; "Jahr" of an invoice is derived from its date.
Grouping group(const char* caption, const char* columns)
{
    const QStringList c = words(columns);
    return {QString::fromUtf8(caption), c, c};
}

Filter filter(const char* column, const char* label)
{
    return {QString::fromUtf8(column), QString::fromUtf8(column), QString::fromUtf8(label)};
}

// What every member names alike: key, window, caption, table, the no-rows word, its columns,
// the figures of a group and the default order. A member beside the harvests lists its rows
// joined to their harvest; the harvests and the invoices stand alone.
MemberDef define(Member m, const char* key, const char* table, const char* windowPart, const char* columns,
                 const char* aggregates, const char* defaultSort, bool joinsHarvests = true)
{
    MemberDef d;
    d.member = m;
    d.key = QString::fromUtf8(key);
    d.table = QString::fromUtf8(table);
    d.windowName = QStringLiteral("BF_%1_listen").arg(QString::fromUtf8(windowPart));
    d.title = d.table + QStringLiteral(" auswerten");
    d.word = d.table;
    d.columns = words(columns);
    d.joinsHarvests = joinsHarvests;
    d.from = !joinsHarvests || d.table == u"Hiebe" ? QStringLiteral(" from %1 where 1 = 1").arg(d.table)
                                                   : QStringLiteral(" from Hiebe, %1 where Hiebe.ID = %1.Kennung").arg(d.table);
    d.aggregates = QString::fromUtf8(aggregates);
    d.defaultSort = QString::fromUtf8(defaultSort);
    return d;
}

QList<MemberDef> build()
{
    QList<MemberDef> all;

    MemberDef hiebe = define(
        Member::Hiebe, "hiebe", "Hiebe", "Hiebe",
        "Hieb_Nr Jahr Waldname Waldort Hiebgrund Hiebfläche Hiebart Hiebdatum_von Hiebdatum_bis Anzahl_Lose Stämme_Anzahl Stämme_Efm "
        "Stämme_Efm_je_Stück Pfähle_Anzahl Schichtholz_Efm Schichtholz_m3 Teilverkauft Verkauft Waldbesitzer_Name "
        "Waldbesitzer_Straße Waldbesitzer_Wohnort Waldbesitzer_Tel Bemerkung",
        "COUNT(*) as Anzahl_Hiebe, SUM(Hiebfläche) as Fläche, SUM(Anzahl_Lose) as Lose, SUM(Stämme_Anzahl) as Stämme, "
        "SUM(Stämme_Efm) as Efm_Stämme, SUM(Pfähle_Anzahl) as Pfähle, SUM(Schichtholz_Efm) as Schichtholz_Efm, "
        "SUM(Schichtholz_m3) as Schichtholz_m3",
        "Hieb_Nr");
    hiebe.groupings = {group("Nach den Waldbesitzern", "Waldbesitzer_Name"), group("Nach den Waldnamen", "Waldname"),
                       group("Nach den Hiebarten", "Hiebart"), group("Nach den Hiebgründen", "Hiebgrund"),
                       group("Nach den Hieb-Jahren", "Jahr")};
    all << hiebe;

    MemberDef lose = define(
        Member::Lose, "lose", "Lose", "Lose",
        "Hieb_Nr Jahr Waldname Hiebart Hiebgrund Los_Nr Sortierung Anzahl_Stämme Efm_oR Efm_je_Stamm Anzahl_Pfähle "
        "Efm_Schichtholz m3_Schichtholz Lagerort Anfahrt GPS_L GPS_B Vermessungsart Qualität Fixlänge Überlänge "
        "Preis_Art Holzpreis Erschwerniszuschlag Kosten_Einschlag Kosten_Rücken Pauschalpreis_efm Pauschalpreis_G "
        "Preis_berechnet Preis_erhalten Abgerechnet Abnehmer Bemerkung",
        "COUNT(*) as Anzahl_Lose, SUM(Anzahl_Stämme) as Stämme, SUM(Efm_oR) as Efm_Stämme, AVG(Efm_je_Stamm) as Efm_pro_Stamm, "
        "SUM(Anzahl_Pfähle) as Pfähle, SUM(Efm_Schichtholz) as Schichtholz_Efm, SUM(m3_Schichtholz) as Schichtholz_m3, "
        "SUM(Preis_berechnet) as Geldwert_berechnet, SUM(Preis_erhalten) as Geldwert_erhalten",
        "Hieb_Nr");
    lose.filters = {filter("Los_Nr", "Los-Nr. ="), filter("Sortierung", "Sortierung ="), filter("Lagerort", "Lagerort ="),
                    filter("Abgerechnet", "Abgerechnet ="), filter("Abnehmer", "Abnehmer =")};
    lose.groupings = {group("Nach dem Abnehmer", "Abnehmer"), group("Nach dem Lagerort", "Lagerort"),
                      group("Nach der Sortierung", "Sortierung"), group("Nach den Hieb-Jahren", "Jahr")};
    all << lose;

    MemberDef staemme = define(
        Member::Staemme, "staemme", "Stämme", "Staemme",
        "Hieb_Nr Jahr Waldname Hiebart Hiebgrund Los_Nr Laufende_Nr Baumart Rindenabzugsart Rindenabzug Länge_m "
        "Stärke_gemessen Stärke_oR Efm_oR Stärkeklasse Güteklasse Zopfdurchm_cm Klasse_Heilbronn Holzpreis "
        "Preis_berechnet Bemerkung",
        "COUNT(*) as Anzahl_Stämme, SUM(Efm_oR) as Efm_Stämme, AVG(Efm_oR) as Efm_pro_Stamm, AVG(Länge_m) as Länge_Mittel, "
        "AVG(Stärke_oR) as Stärke_oR_Mittel, SUM(Preis_berechnet) as Geldwert_berechnet",
        "Laufende_Nr");
    staemme.filters = {filter("Los_Nr", "Los-Nr. ="), filter("Baumart", "Baumart ="), filter("Güteklasse", "Güteklasse ="),
                       filter("Stärkeklasse", "Stärkeklasse ="), filter("Klasse_Heilbronn", "Heilbronner Klasse =")};
    staemme.groupings = {
        group("Nach Güte- und Stärkeklassen", "Güteklasse Stärkeklasse"),
        group("Nach Baumart, Güte- und Stärkeklasse", "Baumart Güteklasse Stärkeklasse"),
        group("Nach Baumart und Güteklasse", "Baumart Güteklasse"),
        group("Nach Los-Nummer, Baumart, Güte- und Stärkeklasse", "Los_Nr Baumart Güteklasse Stärkeklasse"),
        group("Nach Los-Nummer, Baumart und Güteklasse", "Los_Nr Baumart Güteklasse"),
        group("Nach Los-Nummer und Baumart", "Los_Nr Baumart"),
        group("Nach den Heilbronner Sortierung", "Klasse_Heilbronn"),
        group("Nach den Güteklassen", "Güteklasse"),
        group("Nach den Stärkeklassen", "Stärkeklasse"),
        group("Nach der Baumart", "Baumart"),
        group("Nach der Los-Nummer", "Los_Nr"),
        group("Nach den Hieb-Jahren", "Jahr")};
    all << staemme;

    MemberDef pfaehle = define(
        Member::Pfaehle, "pfaehle", "Pfähle", "Pfaehle",
        "Hieb_Nr Jahr Waldname Hiebart Hiebgrund Los_Nr Baumart Stärke_mR Länge_m Stärkeklasse Anzahl Preis_je_Stück "
        "Preis_berechnet Bemerkung",
        "COUNT(*) as Datensätze, SUM(Anzahl) as Anzahl_Pfähle, SUM(Preis_berechnet) as Geldwert_berechnet", "Los_Nr");
    pfaehle.filters = {filter("Stärkeklasse", "Stärkeklasse =")};
    pfaehle.groupings = {
        group("Nach Stärkeklasse und Länge", "Stärkeklasse Länge_m"),
        group("Nach Baumart, Stärkeklasse und Länge", "Baumart Stärkeklasse Länge_m"),
        group("Nach Baumart und Stärkeklasse", "Baumart Stärkeklasse"),
        group("Nach Los-Nummer, Baumart, Stärkeklasse und Länge", "Los_Nr Baumart Stärkeklasse Länge_m"),
        group("Nach Los-Nummer, Baumart und Stärkeklasse", "Los_Nr Baumart Stärkeklasse"),
        group("Nach Los-Nummer und Baumart", "Los_Nr Baumart"),
        group("Nach den Längen", "Länge_m"),
        group("Nach den Stärkeklassen", "Stärkeklasse"),
        group("Nach der Baumart", "Baumart"),
        group("Nach der Los-Nummer", "Los_Nr"),
        group("Nach den Hieb-Jahren", "Jahr")};
    all << pfaehle;

    MemberDef schicht = define(
        Member::Schichtholz, "schichtholz", "Schichtholz", "Schichtholz",
        "Hieb_Nr Jahr Waldname Hiebart Hiebgrund Los_Nr Sektions_Nr Baumart Stärke Sektionslänge_m Sektionstiefe_m "
        "Sektionshöhe_m Stärkeklasse m3 Efm Preis_je_Ster Preis_berechnet Bemerkung",
        "COUNT(*) as Sektionen, SUM(m3) as Schichtholz_m3, SUM(Efm) as Schichtholz_Efm, SUM(Preis_berechnet) as Geldwert_berechnet",
        "Los_Nr");
    schicht.groupings = {group("Nach Baumart und Stärkeklassen", "Baumart Stärkeklasse"),
                         group("Nach den Stärkeklassen", "Stärkeklasse"), group("Nach der Baumart", "Baumart"),
                         group("Nach der Los-Nummer", "Los_Nr"), group("Nach den Hieb-Jahren", "Jahr")};
    all << schicht;

    MemberDef rechnungen = define(Member::Rechnungen, "rechnungen", "Rechnungen", "Rechnungen",
                                  "Abnehmer Vor_Nachname Strasse Wohnort Datum ReNr CMA_Abgabe_Proz Kundeninfo MwSt_Proz Skonto_Proz Betrag",
                                  "COUNT(*) as Anzahl_Rechnungen, SUM(Betrag) as Geldwert", "ReNr", false);
    // The year of an invoice from its stored ISO date.
    const QString year = QStringLiteral("strftime('%Y', Datum)");
    rechnungen.filters = {filter("Abnehmer", "Abnehmer ="), {QStringLiteral("Jahr"), year, QStringLiteral("Jahr =")}};
    rechnungen.groupings = {group("Nach Abnehmer", "Abnehmer"),
                            {QStringLiteral("Nach Rechnungsjahren"), {QStringLiteral("Jahr")}, {year}}};
    all << rechnungen;
    return all;
}

} // namespace

QString Filter::objectName() const { return QStringLiteral("kom") + column.toLower(); }

QString MemberDef::qualified(const QString& column) const
{
    // Only `Bemerkung` is a column of both `Hiebe` and the listed table.
    if (joinsHarvests && table != u"Hiebe" && column == u"Bemerkung")
        return table + u'.' + column;
    return column;
}

QString MemberDef::noRowsMessage() const
{
    return QStringLiteral("Es wurden lt. den aktuellen Einstellungen keine %1 gefunden!").arg(word);
}

QString MemberDef::emptyQuery() const
{
    QStringList select;
    for (const QString& c : columns)
        select << qualified(c);
    return QStringLiteral("select ") + select.join(QStringLiteral(", ")) + from +
           (member == Member::Rechnungen ? QStringLiteral(" and ID = 0") : QStringLiteral(" and Hieb_Nr = 9999999"));
}

const QList<MemberDef>& members()
{
    static const QList<MemberDef> all = build();
    return all;
}

const MemberDef& member(Member m) { return members()[int(m)]; }

const MemberDef* memberByKey(const QString& key)
{
    for (const MemberDef& m : members())
        if (m.key == key)
            return &m;
    return nullptr;
}

const QStringList& scopeCaptions()
{
    static const QStringList captions{QStringLiteral("Alle Hiebe"), QStringLiteral("Selektierte Hiebe"),
                                      QStringLiteral("Aktuellen Hieb"), QStringLiteral("Nicht verkaufte Hiebe"),
                                      QStringLiteral("Zum Teil verkaufte Hiebe"), QStringLiteral("Komplett verkaufte Hiebe")};
    return captions;
}

} // namespace tarvik::lists
