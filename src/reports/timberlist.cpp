#include "reports/timberlist.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/text.h"
#include "reports/columns.h"
#include "rules/poles.h"
#include "store/sql.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik {
namespace {

using namespace columns;

const QString Gap = QStringLiteral("  ");

// The column headings of the tables; printing repeats them on every page a table runs onto.
namespace Heading {
constexpr char LogLots[] = "LOS_NR  ANZAHL   EFM_OR    PREIS  LOS-BEZEICHNUNG  LAGERORT";
constexpr char TimberList[] = "BAUMART                GÜTE  KLASSE   EFM_OR ANZAHL LÄNGE PROZENT    PREIS";
constexpr char Distribution[] = "GÜTE  KLASSE   EFM_OR PROZENT";
constexpr char SingleLogs[] = "   LNR  BAUMART                 LÄNGE STÄRKE_MR EFM_OR  KLASSE GÜTE";
constexpr char PoleLots[] = "LOS_NR  ANZAHL  LOS-BEZEICHNUNG  LAGERORT";
constexpr char SinglePoles[] = "ANZAHL  BAUMART                 LÄNGE STÄRKE  KLASSE     EFM";
constexpr char StackLots[] = "LOS_NR     EFM      RM  LOS-BEZEICHNUNG  LAGERORT";
constexpr char Sections[] = "SEKT-NR  BAUMART                STÄRKE    EFM     RM  KLASSE LÄNGE TIEFE  HÖHE";
constexpr const char* All[] = {LogLots, TimberList, Distribution, SingleLogs, PoleLots, SinglePoles, StackLots, Sections};
} // namespace Heading

struct Report {
    const QSqlDatabase& db;
    qint32 harvestId;
    QStringList lines;

    QSqlQuery query(const QString& sql, QVariantList values = {})
    {
        values.prepend(harvestId);
        return execSql(db, sql, values);
    }
    void add(const QString& line) { lines << line; }
    void blank() { lines << QString(); }
};

QString share(double part, double total)
{
    return right(total != 0 ? formatDecimal(part * 100 / total, 1) : QStringLiteral("0,0"), 8);
}

void harvestBlock(Report& r)
{
    QSqlQuery q = r.query(QStringLiteral("SELECT * FROM Hiebe WHERE ID = ?"));
    if (!q.next())
        return;
    const QSqlRecord h = q.record();
    auto v = [&h](const char* c) { return h.value(QString::fromUtf8(c)); };
    r.add(QStringLiteral("HIEBDATEN"));
    const std::pair<const char*, QString> rows[] = {
        {"Hieb-Nr:         ", text(v("Hieb_Nr"))},
        {"Jahr:            ", text(v("Jahr"))},
        {"Waldname:        ", text(v("Waldname"))},
        {"Waldort:         ", text(v("Waldort"))},
        {"Hiebfläche:      ", decimals(v("Hiebfläche"), 2)},
        {"Hiebgrund:       ", text(v("Hiebgrund"))},
        {"Hiebart:         ", text(v("Hiebart"))},
        {"Hiebdatum:       ", germanDateFromSql(v("Hiebdatum_von")) + QStringLiteral(" bis ") + germanDateFromSql(v("Hiebdatum_bis"))},
        {"Anz. Lose:       ", text(v("Anzahl_Lose"))},
        {"Anz. Stämme:     ", text(v("Stämme_Anzahl"))},
        {"Efm Stämme:      ", decimals(v("Stämme_Efm"), 3)},
        {"Anz. Pfähle:     ", text(v("Pfähle_Anzahl"))},
        {"Efm Schichtholz: ", text(v("Schichtholz_Efm"))},
        {"m3 Schichtholz:  ", text(v("Schichtholz_m3"))},
        {"Teilverkauft:    ", text(v("Teilverkauft"))},
        {"Verkauft:        ", text(v("Verkauft"))},
        {"Waldbesitzer:    ", text(v("Waldbesitzer_Name"))},
    };
    for (const auto& [label, value] : rows)
        r.add(QString::fromUtf8(label) + value);
    for (const char* c : {"Bemerkung", "Harvester"})
        if (!text(v(c)).isEmpty())
            r.add(text(v(c)));
}

QList<QVariant> logLots(Report& r)
{
    r.blank();
    r.add(QStringLiteral("LOSE (Stämme)"));
    r.add(QStringLiteral("============="));
    r.add(QString::fromUtf8(Heading::LogLots));
    QList<QVariant> lots;
    QSqlQuery q = r.query(QStringLiteral("SELECT Los_Nr, Anzahl_Stämme, Efm_oR, Preis_berechnet, Los_Bezeichnung, Lagerort FROM Lose "
                                         "WHERE Kennung = ? AND Sortierung = 'Stämme' ORDER BY Los_Nr"));
    while (q.next()) {
        lots << q.value(0);
        r.add(right(text(q.value(0)), 6) + right(text(q.value(1)), 8) + right(decimals(q.value(2), 3), 9) +
              right(decimals(q.value(3), 2), 9) + Gap + left(text(q.value(4)), 17) + text(q.value(5)));
    }
    QSqlQuery sum = r.query(QStringLiteral("SELECT sum(Anzahl_Stämme), sum(Efm_oR), sum(Preis_berechnet) FROM Lose "
                                           "WHERE Kennung = ? AND Sortierung = 'Stämme'"));
    sum.next();
    r.add(QStringLiteral("SUMME ") + right(text(sum.value(0).isNull() ? QVariant(0) : sum.value(0)), 8) +
          right(decimals(sum.value(1), 3), 9) + right(decimals(sum.value(2), 2), 9));
    return lots;
}

// Runs the figures over the lot's logs grouped by the given columns (none: the lot as a whole)
// and hands each row to `line`, with the number of grouping columns before the figures.
void forEachGroup(Report& r, const QVariant& lot, const QString& grouping, const QString& figures,
                  const std::function<void(const QSqlQuery&, int)>& line)
{
    const int keys = grouping.isEmpty() ? 0 : int(grouping.count(u',')) + 1;
    QString sql = QStringLiteral("SELECT %1%2 FROM Stämme WHERE Kennung = ? AND Los_Nr = ?")
                      .arg(grouping.isEmpty() ? QString() : grouping + QStringLiteral(", "), figures);
    if (!grouping.isEmpty())
        sql += QStringLiteral(" GROUP BY %1 ORDER BY %1").arg(grouping);
    QSqlQuery q = r.query(sql, {lot});
    while (q.next())
        line(q, keys);
}

void timberListOfLot(Report& r, const QVariant& lot, double lotEfm)
{
    r.blank();
    r.add(QStringLiteral("Holzliste nach Baumarten, Güte- und Stärkelassen für Los ") + text(lot));
    r.add(QString::fromUtf8(Heading::TimberList));
    const QString figures = QStringLiteral("count(*), sum(Efm_oR), avg(Länge_m), sum(Preis_berechnet)");
    // Grouping columns and how each group's leading columns are laid out.
    const std::pair<QString, std::function<QString(const QSqlQuery&)>> groups[] = {
        {QStringLiteral("Baumart, Güteklasse, Stärkeklasse"),
         [](const QSqlQuery& q) { return left(text(q.value(0)), 23) + left(text(q.value(1)), 6) + left(text(q.value(2)), 7); }},
        {QStringLiteral("Baumart, Güteklasse"), [](const QSqlQuery& q) { return left(text(q.value(0)), 23) + left(text(q.value(1)), 13); }},
        {QStringLiteral("Baumart, Stärkeklasse"), [](const QSqlQuery& q) { return left(text(q.value(0)), 29) + left(text(q.value(1)), 7); }},
        {QStringLiteral("Baumart"), [](const QSqlQuery& q) { return left(text(q.value(0)), 36); }},
        {QString(), [](const QSqlQuery&) { return left(QStringLiteral("Gesamt"), 36); }},
    };
    for (const auto& [grouping, lead] : groups) {
        forEachGroup(r, lot, grouping, figures, [&, lead = lead](const QSqlQuery& q, int keys) {
            const double efm = readNumber(q.value(keys + 1));
            r.add(lead(q) + right(decimals(q.value(keys + 1), 3), 8) + right(text(q.value(keys)), 7) +
                  right(decimals(q.value(keys + 2), 1), 6) + share(efm, lotEfm) + right(decimals(q.value(keys + 3), 2), 9));
        });
    }
}

void distributionOfLot(Report& r, const QVariant& lot, double lotEfm)
{
    r.blank();
    r.add(QStringLiteral("Prozentuale Verteilung nach Güte- und Stärkeklassen Los ") + text(lot));
    r.add(QString::fromUtf8(Heading::Distribution));
    const std::tuple<QString, std::function<QString(const QSqlQuery&)>, int> groups[] = {
        {QStringLiteral("Güteklasse, Stärkeklasse"), [](const QSqlQuery& q) { return left(text(q.value(0)), 6) + left(text(q.value(1)), 7); }, 8},
        {QStringLiteral("Güteklasse"), [](const QSqlQuery& q) { return left(text(q.value(0)), 13); }, 8},
        {QStringLiteral("Stärkeklasse"), [](const QSqlQuery& q) { return QStringLiteral("      ") + left(text(q.value(0)), 7); }, 8},
        {QString(), [](const QSqlQuery&) { return left(QStringLiteral("Gesamt"), 12); }, 9},
    };
    for (const auto& [grouping, lead, width] : groups) {
        forEachGroup(r, lot, grouping, QStringLiteral("sum(Efm_oR)"), [&, lead = lead, width = width](const QSqlQuery& q, int keys) {
            r.add(lead(q) + right(decimals(q.value(keys), 3), width) + share(readNumber(q.value(keys)), lotEfm));
        });
    }
}

void singleLogsOfLot(Report& r, const QVariant& lot)
{
    r.blank();
    r.add(QStringLiteral("Einzelauswertung Stämme Los ") + text(lot));
    r.add(QString::fromUtf8(Heading::SingleLogs));
    QSqlQuery q = r.query(QStringLiteral("SELECT Laufende_Nr, Baumart, Stärke_gemessen, Länge_m, Efm_oR, Stärkeklasse, Güteklasse FROM Stämme "
                                         "WHERE Kennung = ? AND Los_Nr = ? ORDER BY Laufende_Nr, ID"), {lot});
    while (q.next())
        r.add(right(text(q.value(0)), 6) + Gap + left(text(q.value(1)), 22) + right(decimals(q.value(3), 1), 7) +
              right(text(q.value(2)), 10) + right(decimals(q.value(4), 3), 7) + Gap + left(text(q.value(5)), 7) + text(q.value(6)));
}

void poleLots(Report& r)
{
    r.blank();
    r.add(QStringLiteral("LOSE (Pfähle)"));
    r.add(QStringLiteral("============="));
    r.add(QString::fromUtf8(Heading::PoleLots));
    QList<QVariant> lots;
    QSqlQuery q = r.query(QStringLiteral("SELECT Los_Nr, Anzahl_Pfähle, Los_Bezeichnung, Lagerort FROM Lose "
                                         "WHERE Kennung = ? AND Sortierung = 'Pfähle' ORDER BY Los_Nr"));
    while (q.next()) {
        lots << q.value(0);
        r.add(right(text(q.value(0)), 6) + right(text(q.value(1)), 8) + Gap + left(text(q.value(2)), 17) + text(q.value(3)));
    }
    for (const QVariant& lot : lots) {
        r.blank();
        r.add(QStringLiteral("Einzelauswertung Pfähle Los ") + text(lot));
        r.add(QString::fromUtf8(Heading::SinglePoles));
        QSqlQuery poles = r.query(QStringLiteral("SELECT Anzahl, Baumart, Stärke_mR, Länge_m, Stärkeklasse FROM Pfähle "
                                                 "WHERE Kennung = ? AND Los_Nr = ? ORDER BY Stärkeklasse ASC, Anzahl DESC, ID"), {lot});
        while (poles.next()) {
            const float volume = poleVolume(toLong(readNumber(poles.value(0))), float(readNumber(poles.value(2))),
                                            float(readNumber(poles.value(3))));
            r.add(right(text(poles.value(0)), 6) + Gap + left(text(poles.value(1)), 22) + right(decimals(poles.value(3), 1), 7) +
                  right(text(poles.value(2)), 7) + Gap + left(text(poles.value(4)), 7) + right(formatDecimal(volume, 2), 7));
        }
    }
}

void stackedLots(Report& r)
{
    r.blank();
    r.add(QStringLiteral("LOSE (Schichtholz)"));
    r.add(QStringLiteral("=================="));
    r.add(QString::fromUtf8(Heading::StackLots));
    QList<QVariant> lots;
    QSqlQuery q = r.query(QStringLiteral("SELECT Los_Nr, Efm_Schichtholz, m3_Schichtholz, Los_Bezeichnung, Lagerort FROM Lose "
                                         "WHERE Kennung = ? AND Sortierung = 'Schichtholz' ORDER BY Los_Nr"));
    while (q.next()) {
        lots << q.value(0);
        r.add(right(text(q.value(0)), 6) + right(decimals(q.value(1), 2), 8) + right(decimals(q.value(2), 2), 8) + Gap +
              left(text(q.value(3)), 17) + text(q.value(4)));
    }
    for (const QVariant& lot : lots) {
        r.blank();
        r.add(QStringLiteral("Einzelauswertung Schichtholz Los ") + text(lot));
        r.add(QString::fromUtf8(Heading::Sections));
        QSqlQuery s = r.query(QStringLiteral("SELECT Sektions_Nr, Baumart, Stärke, Efm, m3, Stärkeklasse, Sektionslänge_m, Sektionstiefe_m, "
                                             "Sektionshöhe_m FROM Schichtholz WHERE Kennung = ? AND Los_Nr = ? ORDER BY Sektions_Nr"), {lot});
        while (s.next())
            r.add(right(text(s.value(0)), 7) + Gap + left(text(s.value(1)), 22) + right(text(s.value(2)), 7) +
                  right(decimals(s.value(3), 2), 7) + right(decimals(s.value(4), 2), 7) + Gap + left(text(s.value(5)), 6) +
                  right(decimals(s.value(6), 1), 6) + right(decimals(s.value(7), 1), 6) + right(decimals(s.value(8), 1), 6));
    }
}

} // namespace

QStringList timberList(const QSqlDatabase& db, qint32 harvestId)
{
    Report r{db, harvestId, {}};
    harvestBlock(r);
    for (const QVariant& lot : logLots(r)) {
        QSqlQuery total = r.query(QStringLiteral("SELECT sum(Efm_oR) FROM Stämme WHERE Kennung = ? AND Los_Nr = ?"), {lot});
        total.next();
        const double lotEfm = readNumber(total.value(0));
        timberListOfLot(r, lot, lotEfm);
        distributionOfLot(r, lot, lotEfm);
        singleLogsOfLot(r, lot);
    }
    poleLots(r);
    stackedLots(r);
    return r.lines;
}

} // namespace tarvik

namespace tarvik {

QStringList timberListOfLots(const QSqlDatabase& db, qint32 harvestId, const QList<qint32>& lots)
{
    Report r{db, harvestId, {}};
    harvestBlock(r);
    QSqlQuery means = r.query(QStringLiteral("SELECT avg(Efm_oR), avg(Länge_m), avg(Stärke_oR), avg(Stärke_gemessen) FROM Stämme "
                                             "WHERE Kennung = ?"));
    means.next();
    r.blank();
    r.add(QStringLiteral("Mittelwerte je Stamm:  EFM_OR ") + decimals(means.value(0), 3) + QStringLiteral("   LÄNGE ") +
          decimals(means.value(1), 1) + QStringLiteral("   STÄRKE_OR ") + decimals(means.value(2), 1) + QStringLiteral("   STÄRKE_MR ") +
          decimals(means.value(3), 1));
    QStringList species;
    QSqlQuery present = r.query(QStringLiteral("SELECT DISTINCT Baumart FROM Stämme WHERE Kennung = ? ORDER BY Baumart"));
    while (present.next())
        species << text(present.value(0));
    r.add(QStringLiteral("Baumarten:             ") + species.join(QStringLiteral(", ")));
    for (const QVariant& lot : logLots(r)) {
        if (!lots.contains(lot.toInt()))
            continue;
        QSqlQuery total = r.query(QStringLiteral("SELECT sum(Efm_oR) FROM Stämme WHERE Kennung = ? AND Los_Nr = ?"), {lot});
        total.next();
        const double lotEfm = readNumber(total.value(0));
        timberListOfLot(r, lot, lotEfm);
        distributionOfLot(r, lot, lotEfm);
        singleLogsOfLot(r, lot);
    }
    return r.lines;
}

bool isTimberListHeading(const QString& line)
{
    static const QStringList headings = [] {
        QStringList all;
        for (const char* h : Heading::All)
            all << QString::fromUtf8(h);
        return all;
    }();
    return headings.contains(line);
}

std::optional<QString> timberListHarvestNumber(const QStringList& lines)
{
    if (lines.size() < 2 || lines[0] != u"HIEBDATEN" || !lines[1].startsWith(QLatin1String("Hieb-Nr:")))
        return std::nullopt;
    return lines[1].mid(8).trimmed();
}

QList<TimberListLot> timberListLots(const QSqlDatabase& db, qint32 harvestId)
{
    QList<TimberListLot> lots;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT Los_Nr, Los_Bezeichnung, Anzahl_Stämme FROM Lose "
                                             "WHERE Kennung = ? AND Sortierung = 'Stämme' ORDER BY Los_Nr"),
                          {harvestId});
    while (q.next()) {
        QString label = QStringLiteral("Los ") + q.value(0).toString();
        if (const QString name = readText(q.value(1)); !name.isEmpty())
            label += QStringLiteral("  ") + name;
        if (!q.value(2).isNull())
            label += QStringLiteral("  (%1 Stämme)").arg(q.value(2).toLongLong());
        lots.append({q.value(0).toInt(), label});
    }
    return lots;
}

} // namespace tarvik
