#pragma once
// A harvest with one lot of every kind an invoice knows, priced as the entry windows leave them.
#include "store/sql.h"
#include "store/totals.h"

#include <QLocale>
#include <QSqlQuery>
#include <QStringList>
#include <optional>

namespace tarvik::test {

struct InvoiceLots {
    qint32 harvestId = 0;
    qint32 logLot = 0;   // Los 1: logs, priced per log
    qint32 flatLot = 0;  // Los 2: logs, flat price for the lot
    qint32 poleLot = 0;  // Los 3
    qint32 stackLot = 0; // Los 4
};

inline qint32 lotId(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr)
{
    return scalar(db, QStringLiteral("SELECT ID FROM Lose WHERE Kennung = ? AND Los_Nr = ?"), {harvestId, lotNr}).toInt();
}

inline InvoiceLots invoiceLots(const QSqlDatabase& db, qint32 hiebNr = 7)
{
    InvoiceLots l;
    l.harvestId = execSql(db, QStringLiteral("INSERT INTO Hiebe(Hieb_Nr, Jahr, Waldname, Teilverkauft, Verkauft) "
                                             "VALUES (?, '2026', 'Eichwald', 'N', 'N')"), {hiebNr}).lastInsertId().toInt();
    const QVariant h = l.harvestId;
    execSql(db, QStringLiteral("INSERT INTO Lose(Los_Nr, Sortierung, Los_Bezeichnung, Preis_Art, Pauschalpreis_G, Abgerechnet, ReNr, Abnehmer, Kennung) "
                               "VALUES (1, 'Stämme', 'Fichte lang', 0, 0, 'N', 0, '', ?), (2, 'Stämme', 'Käferholz', 3, 1250.5, 'N', 0, '', ?), "
                               "(3, 'Pfähle', 'Zaun', 0, 0, 'N', NULL, '', ?), (4, 'Schichtholz', 'Brennholz', 0, 0, 'N', 0, '', ?)"),
            {h, h, h, h});
    execSql(db, QStringLiteral(
        "INSERT INTO Stämme(Los_Nr, Laufende_Nr, Baumart, Efm_oR, Stärkeklasse, Güteklasse, Preis_berechnet, Kennung) VALUES "
        "(1, 1, 'FI (Fichte)', 0.385, 'L3a', 'B', 31.19, ?1), (1, 2, 'FI (Fichte)', 0.412, 'L3a', 'B', 33.37, ?1), "
        "(1, 3, 'FI (Fichte)', 2.124, 'L5', 'B', 199.66, ?1), (1, 4, 'BU (Rotbuche)', 0.871, 'L4', 'A', 113.23, ?1), "
        "(1, 5, 'KI (Kiefer)', 0, 'L0', 'D', 0, ?1), "
        "(2, 1, 'FI (Fichte)', 1.5, 'L2b', 'C', 90, ?1), (2, 2, 'FI (Fichte)', 2.25, 'L3a', 'C', 140, ?1)")
                    .replace(QStringLiteral("?1"), QString::number(l.harvestId)));
    execSql(db, QStringLiteral(
        "INSERT INTO Pfähle(Los_Nr, Baumart, Länge_m, Stärkeklasse, Anzahl, Preis_je_Stück, Preis_berechnet, Kennung) VALUES "
        "(3, 'FI (Fichte)', 8, 'P2.11', 10, 2.5, 25, ?1), (3, 'LA (Lärche)', 8, 'P2.11', 25, 2.5, 62.5, ?1), "
        "(3, 'FI (Fichte)', 14, 'P2.32', 4, 6, 24, ?1)").replace(QStringLiteral("?1"), QString::number(l.harvestId)));
    execSql(db, QStringLiteral(
        "INSERT INTO Schichtholz(Los_Nr, Baumart, Sektions_Nr, Stärkeklasse, m3, Efm, Preis_je_Ster, Preis_berechnet, Kennung) VALUES "
        "(4, 'BU (Rotbuche)', 2, 'S3.1', 4.8, 3.36, 0, 0, ?1), (4, 'BU (Rotbuche)', 1, 'S2.1', 30, 19.5, 12.5, 375, ?1), "
        "(4, 'EI (Eiche)', 3, 'S2.1', 6.25, 4.06, 14, 87.5, ?1)").replace(QStringLiteral("?1"), QString::number(l.harvestId)));
    recomputeTotals(db, l.harvestId);
    l.logLot = lotId(db, l.harvestId, 1);
    l.flatLot = lotId(db, l.harvestId, 2);
    l.poleLot = lotId(db, l.harvestId, 3);
    l.stackLot = lotId(db, l.harvestId, 4);
    return l;
}

// The figures of a printed invoice as the buyer reads them, in cents: the prices of the lot
// tables (the last figure of each table line, flat prices included) and the amount lines.
struct PrintedInvoice {
    qint64 prices = 0;
    std::optional<qint64> net, levy, vat, discount, total;
};

inline qint64 lastFigure(const QString& line)
{
    QStringList words = line.split(u' ', Qt::SkipEmptyParts);
    if (words.constLast() == u"€")
        words.removeLast();
    return qRound64(QLocale(QLocale::German).toDouble(words.constLast()) * 100);
}

inline PrintedInvoice readPrintedInvoice(const QStringList& lines)
{
    PrintedInvoice p;
    bool inTable = false;
    const std::pair<const char*, std::optional<qint64>*> labels[] = {
        {"Summe netto:", &p.net}, {"CMA-Abgabe  -", &p.levy}, {"Umsatzsteuer  +", &p.vat}, {"Skonto  -", &p.discount}, {"Rechnungsbetrag:", &p.total}};
    for (const QString& line : lines) {
        for (const auto& [label, value] : labels)
            if (line.startsWith(QString::fromUtf8(label)))
                *value = lastFigure(line);
        if (line.startsWith(u"BAUMART") || line.startsWith(u"Dieses Los")) {
            inTable = true;
        } else if (line.isEmpty() || line.startsWith(u'-')) {
            inTable = false;
        } else if (inTable) {
            p.prices += lastFigure(line);
        }
    }
    return p;
}

} // namespace tarvik::test
