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

QList<MemberDef> build()
{
    QList<MemberDef> all;

    MemberDef hiebe;
    hiebe.member = Member::Hiebe;
    hiebe.key = QStringLiteral("hiebe");
    hiebe.windowName = QStringLiteral("BF_Hiebe_listen");
    hiebe.title = QStringLiteral("Hiebe auswerten");
    hiebe.table = QStringLiteral("Hiebe");
    hiebe.word = QStringLiteral("Hiebe");
    hiebe.columns = words("Hieb_Nr Jahr Waldname Waldort Hiebgrund Hiebfläche Hiebart Hiebdatum_von Hiebdatum_bis Anzahl_Lose "
                          "Stämme_Anzahl Stämme_Efm Stämme_Efm_je_Stück Pfähle_Anzahl Schichtholz_Efm Schichtholz_m3 Teilverkauft "
                          "Verkauft Waldbesitzer_Name Waldbesitzer_Straße Waldbesitzer_Wohnort Waldbesitzer_Tel Bemerkung");
    hiebe.from = QStringLiteral(" from Hiebe where 1 = 1");
    hiebe.groupings = {group("Nach den Waldbesitzern", "Waldbesitzer_Name"), group("Nach den Waldnamen", "Waldname"),
                       group("Nach den Hiebarten", "Hiebart"), group("Nach den Hiebgründen", "Hiebgrund"),
                       group("Nach den Hieb-Jahren", "Jahr")};
    hiebe.aggregates = QStringLiteral(
        "COUNT(*) as Anzahl_Hiebe, SUM(Hiebfläche) as Fläche, SUM(Anzahl_Lose) as Lose, SUM(Stämme_Anzahl) as Stämme, "
        "SUM(Stämme_Efm) as Efm_Stämme, SUM(Pfähle_Anzahl) as Pfähle, SUM(Schichtholz_Efm) as Schichtholz_Efm, "
        "SUM(Schichtholz_m3) as Schichtholz_m3");
    hiebe.defaultSort = QStringLiteral("Hieb_Nr");
    all << hiebe;

    MemberDef lose;
    lose.member = Member::Lose;
    lose.key = QStringLiteral("lose");
    lose.windowName = QStringLiteral("BF_Lose_listen");
    lose.title = QStringLiteral("Lose auswerten");
    lose.table = QStringLiteral("Lose");
    lose.word = QStringLiteral("Lose");
    lose.columns = words("Hieb_Nr Jahr Waldname Hiebart Hiebgrund Los_Nr Sortierung Anzahl_Stämme Efm_oR Efm_je_Stamm Anzahl_Pfähle "
                         "Efm_Schichtholz m3_Schichtholz Lagerort Anfahrt GPS_L GPS_B Vermessungsart Qualität Fixlänge Überlänge "
                         "Preis_Art Holzpreis Erschwerniszuschlag Kosten_Einschlag Kosten_Rücken Pauschalpreis_efm Pauschalpreis_G "
                         "Preis_berechnet Preis_erhalten Abgerechnet Abnehmer Bemerkung");
    lose.from = QStringLiteral(" from Hiebe, Lose where Hiebe.ID = Lose.Kennung");
    lose.filters = {filter("Los_Nr", "Los-Nr. ="), filter("Sortierung", "Sortierung ="), filter("Lagerort", "Lagerort ="),
                    filter("Abgerechnet", "Abgerechnet ="), filter("Abnehmer", "Abnehmer =")};
    lose.groupings = {group("Nach dem Abnehmer", "Abnehmer"), group("Nach dem Lagerort", "Lagerort"),
                      group("Nach der Sortierung", "Sortierung"), group("Nach den Hieb-Jahren", "Jahr")};
    lose.aggregates = QStringLiteral(
        "COUNT(*) as Anzahl_Lose, SUM(Anzahl_Stämme) as Stämme, SUM(Efm_oR) as Efm_Stämme, AVG(Efm_je_Stamm) as Efm_pro_Stamm, "
        "SUM(Anzahl_Pfähle) as Pfähle, SUM(Efm_Schichtholz) as Schichtholz_Efm, SUM(m3_Schichtholz) as Schichtholz_m3, "
        "SUM(Preis_berechnet) as Geldwert_berechnet, SUM(Preis_erhalten) as Geldwert_erhalten");
    lose.defaultSort = QStringLiteral("Hieb_Nr");
    all << lose;

    MemberDef staemme;
    staemme.member = Member::Staemme;
    staemme.key = QStringLiteral("staemme");
    staemme.windowName = QStringLiteral("BF_Staemme_listen");
    staemme.title = QStringLiteral("Stämme auswerten");
    staemme.table = QStringLiteral("Stämme");
    staemme.word = QStringLiteral("Stämme");
    staemme.columns = words("Hieb_Nr Jahr Waldname Hiebart Hiebgrund Los_Nr Laufende_Nr Baumart Rindenabzugsart Rindenabzug Länge_m "
                            "Stärke_gemessen Stärke_oR Efm_oR Stärkeklasse Güteklasse Zopfdurchm_cm Klasse_Heilbronn Holzpreis "
                            "Preis_berechnet Bemerkung");
    staemme.from = QStringLiteral(" from Hiebe, Stämme where Hiebe.ID = Stämme.Kennung");
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
    staemme.aggregates = QStringLiteral(
        "COUNT(*) as Anzahl_Stämme, SUM(Efm_oR) as Efm_Stämme, AVG(Efm_oR) as Efm_pro_Stamm, AVG(Länge_m) as Länge_Mittel, "
        "AVG(Stärke_oR) as Stärke_oR_Mittel, SUM(Preis_berechnet) as Geldwert_berechnet");
    staemme.defaultSort = QStringLiteral("Laufende_Nr");
    all << staemme;

    MemberDef pfaehle;
    pfaehle.member = Member::Pfaehle;
    pfaehle.key = QStringLiteral("pfaehle");
    pfaehle.windowName = QStringLiteral("BF_Pfaehle_listen");
    pfaehle.title = QStringLiteral("Pfähle auswerten");
    pfaehle.table = QStringLiteral("Pfähle");
    pfaehle.word = QStringLiteral("Pfähle");
    pfaehle.columns = words("Hieb_Nr Jahr Waldname Hiebart Hiebgrund Los_Nr Baumart Stärke_mR Länge_m Stärkeklasse Anzahl "
                            "Preis_je_Stück Preis_berechnet Bemerkung");
    pfaehle.from = QStringLiteral(" from Hiebe, Pfähle where Hiebe.ID = Pfähle.Kennung");
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
    pfaehle.aggregates = QStringLiteral(
        "COUNT(*) as Datensätze, SUM(Anzahl) as Anzahl_Pfähle, SUM(Preis_berechnet) as Geldwert_berechnet");
    pfaehle.defaultSort = QStringLiteral("Los_Nr");
    all << pfaehle;

    MemberDef schicht;
    schicht.member = Member::Schichtholz;
    schicht.key = QStringLiteral("schichtholz");
    schicht.windowName = QStringLiteral("BF_Schichtholz_listen");
    schicht.title = QStringLiteral("Schichtholz auswerten");
    schicht.table = QStringLiteral("Schichtholz");
    schicht.word = QStringLiteral("Schichtholz");
    schicht.columns = words("Hieb_Nr Jahr Waldname Hiebart Hiebgrund Los_Nr Sektions_Nr Baumart Stärke Sektionslänge_m "
                            "Sektionstiefe_m Sektionshöhe_m Stärkeklasse m3 Efm Preis_je_Ster Preis_berechnet Bemerkung");
    schicht.from = QStringLiteral(" from Hiebe, Schichtholz where Hiebe.ID = Schichtholz.Kennung");
    schicht.groupings = {group("Nach Baumart und Stärkeklassen", "Baumart Stärkeklasse"),
                         group("Nach den Stärkeklassen", "Stärkeklasse"), group("Nach der Baumart", "Baumart"),
                         group("Nach der Los-Nummer", "Los_Nr"), group("Nach den Hieb-Jahren", "Jahr")};
    schicht.aggregates = QStringLiteral(
        "COUNT(*) as Sektionen, SUM(m3) as Schichtholz_m3, SUM(Efm) as Schichtholz_Efm, SUM(Preis_berechnet) as Geldwert_berechnet");
    schicht.defaultSort = QStringLiteral("Los_Nr");
    all << schicht;

    MemberDef rechnungen;
    rechnungen.member = Member::Rechnungen;
    rechnungen.key = QStringLiteral("rechnungen");
    rechnungen.windowName = QStringLiteral("BF_Rechnungen_listen");
    rechnungen.title = QStringLiteral("Rechnungen auswerten");
    rechnungen.table = QStringLiteral("Rechnungen");
    rechnungen.word = QStringLiteral("Rechnungen");
    rechnungen.columns = words("Abnehmer Vor_Nachname Strasse Wohnort Datum ReNr CMA_Abgabe_Proz Kundeninfo MwSt_Proz Skonto_Proz Betrag");
    rechnungen.from = QStringLiteral(" from Rechnungen where 1 = 1");
    rechnungen.joinsHarvests = false;
    // The year of an invoice from its stored ISO date.
    const QString year = QStringLiteral("strftime('%Y', Datum)");
    rechnungen.filters = {filter("Abnehmer", "Abnehmer ="), {QStringLiteral("Jahr"), year, QStringLiteral("Jahr =")}};
    rechnungen.groupings = {group("Nach Abnehmer", "Abnehmer"),
                            {QStringLiteral("Nach Rechnungsjahren"), {QStringLiteral("Jahr")}, {year}}};
    rechnungen.aggregates = QStringLiteral("COUNT(*) as Anzahl_Rechnungen, SUM(Betrag) as Geldwert");
    rechnungen.defaultSort = QStringLiteral("ReNr");
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
