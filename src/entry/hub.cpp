#include "entry/hub.h"

#include "common/numbers.h"
#include "common/text.h"
#include "store/records.h"
#include "store/gridquery.h"
#include "store/rows.h"
#include "store/sql.h"
#include "store/totals.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik {

QString hubHeader(const QSqlDatabase& db, qint32 harvestId)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Hieb_Nr\", \"Waldname\", \"Waldort\" FROM \"Hiebe\" WHERE \"ID\" = ?"), {harvestId});
    if (!q.next())
        return {};
    return QStringLiteral("Eingabe für den Hieb:  %1 / %2 / %3").arg(readText(q.value(0)), readText(q.value(1)), readText(q.value(2)));
}

QString hubTable(HubList list)
{
    switch (list) {
    case HubList::Lose: return QStringLiteral("Lose");
    case HubList::Staemme: return QStringLiteral("Stämme");
    case HubList::Pfaehle: return QStringLiteral("Pfähle");
    case HubList::Schichtholz: return QStringLiteral("Schichtholz");
    case HubList::Rechnungen: return QStringLiteral("Rechnungen");
    }
    return {};
}

QString hubListSql(HubList list, bool openInvoicesOnly)
{
    switch (list) {
    case HubList::Lose:
        return QStringLiteral(
            "SELECT Los_Nr, Los_Bezeichnung, Sortierung, Lagerort, Anzahl_Stämme, Efm_oR, Efm_je_Stamm, Anzahl_Pfähle, "
            "Efm_Schichtholz, m3_Schichtholz, Anfahrt, GPS_L, GPS_B, Vermessungsart, Qualität, Fixlänge, Überlänge, Preis_Art, "
            "Holzpreis, Käferholzabschlag, Erschwerniszuschlag, Kosten_Einschlag, Kosten_Rücken, Pauschalpreis_efm, "
            "Pauschalpreis_G, Preis_berechnet, Preis_erhalten, Abgerechnet, ReNr, Abnehmer, Bemerkung, Kennung, ID "
            "FROM Lose WHERE Kennung = ? ORDER BY Los_Nr");
    case HubList::Staemme:
        return QStringLiteral(
            "SELECT Los_Nr, Laufende_Nr, Baumart, Stärke_gemessen, Rindenabzugsart, Rindenabzug, Stärke_oR, Länge_m, Efm_oR, "
            "Stärkeklasse, Güteklasse, Käferholz, Zopfdurchm_cm, Klasse_Heilbronn, Holzpreis, Preis_berechnet, Bemerkung, "
            "Kennung, ID FROM Stämme WHERE Kennung = ? ORDER BY Los_Nr, Laufende_Nr, ID");
    case HubList::Pfaehle:
        return QStringLiteral("SELECT Los_Nr, Baumart, Stärke_mR, Länge_m, Stärkeklasse, Anzahl, Preis_je_Stück, Preis_berechnet, "
                              "Bemerkung, Kennung, ID FROM Pfähle WHERE Kennung = ? ORDER BY Los_Nr, ID");
    case HubList::Schichtholz:
        return QStringLiteral("SELECT Los_Nr, Baumart, Sektions_Nr, Stärke, Sektionslänge_m, Sektionstiefe_m, Sektionshöhe_m, "
                              "Stärkeklasse, m3, Efm, Preis_je_Ster, Preis_berechnet, Bemerkung, Kennung, ID FROM Schichtholz "
                              "WHERE Kennung = ? ORDER BY Los_Nr, Sektions_Nr");
    case HubList::Rechnungen:
        return QStringLiteral("SELECT DISTINCT Rechnungen.Abnehmer, Vor_Nachname, Strasse, Wohnort, Rechnungen.Datum, "
                              "Rechnungen.ReNr, Inhalt, CMA_Abgabe_Proz, Kundeninfo, MwSt_Proz, Skonto_Proz, Betrag, "
                              "Abgerechnet, Rechnungen.ID FROM Rechnungen, Lose WHERE Lose.ReNr = Rechnungen.ReNr "
                              "AND Lose.Kennung = ?")
               + (openInvoicesOnly ? QStringLiteral(" AND Abgerechnet <> 'J'") : QString())
               + QStringLiteral(" ORDER BY Rechnungen.ReNr");
    }
    return {};
}

QSqlQuery hubListQuery(const QSqlDatabase& db, HubList list, bool openInvoicesOnly, qint32 harvestId)
{
    return gridQuery(db, hubListSql(list, openInvoicesOnly), {harvestId});
}

QList<HarvestChoice> harvestChoices(const QSqlDatabase& db)
{
    QList<HarvestChoice> choices;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"ID\", \"Hieb_Nr\", \"Waldname\" FROM \"Hiebe\" ORDER BY \"Hieb_Nr\", \"ID\""));
    while (q.next())
        choices.append({q.value(0).toInt(), QStringLiteral("%1 / %2").arg(readText(q.value(1)), readText(q.value(2)))});
    return choices;
}

bool copyRecord(const AppContext& ctx, HubList list, qint32 harvestId, qint32 id)
{
    TransactionGuard guard(ctx.db);
    if (list == HubList::Staemme) {
        QSqlQuery q = execSql(ctx.db, QStringLiteral("SELECT \"Los_Nr\", \"Laufende_Nr\" FROM \"Stämme\" WHERE \"ID\" = ?"), {id});
        if (!q.next())
            return false;
        const qint32 next = nextRunningNumber(ctx.db, ctx.settings, harvestId, q.value(0).toInt(), q.value(1).toString());
        q.finish();
        if (next > 999999) {
            ctx.prompter.inform(QStringLiteral("Die Suche nach der nächsten freien laufenden Nr ist auf über 999999. Deshalb kann die Kopie nicht ausgeführt werden!"));
            return false;
        }
        copyRow(ctx.db, QStringLiteral("Stämme"), id, {{QStringLiteral("Laufende_Nr"), next}});
    } else if (list == HubList::Schichtholz) {
        const qint32 next = nextSectionNumber(ctx.db, harvestId);
        if (next > 999999) {
            ctx.prompter.inform(QStringLiteral("Die Suche nach der nächsten freien Sektions-Nummer ist auf über 999999. Deshalb kann die Kopie nicht ausgeführt werden!"));
            return false;
        }
        copyRow(ctx.db, QStringLiteral("Schichtholz"), id, {{QStringLiteral("Sektions_Nr"), next}});
    } else if (list == HubList::Pfaehle) {
        copyRow(ctx.db, QStringLiteral("Pfähle"), id, {});
    } else {
        return false;
    }
    refreshHarvest(ctx.db, harvestId);
    guard.commit();
    return true;
}

bool deleteRecord(const AppContext& ctx, HubList list, qint32 harvestId, qint32 id)
{
    const QString table = hubTable(list);
    if (list == HubList::Lose) {
        const QVariant lot = scalar(ctx.db, QStringLiteral("SELECT \"Los_Nr\" FROM \"Lose\" WHERE \"ID\" = ?"), {id});
        if (!lot.isValid())
            return false;
        QStringList withRows;
        for (const char* t : {"Stämme", "Pfähle", "Schichtholz"}) {
            const QString dependent = QString::fromUtf8(t);
            const int rows = scalar(ctx.db, QStringLiteral("SELECT count(*) FROM %1 WHERE \"Los_Nr\" = ? AND \"Kennung\" = ?").arg(quoted(dependent)),
                                    {lot, harvestId}).toInt();
            if (rows == 0)
                continue;
            const QString question = QStringLiteral("Für das Los %1 sind in der Tabelle %2 bereits%3 Datensätze eingetragen. "
                                                    "Durch das Löschen dieses Loses gehen die entsprechenden Buchungen auch "
                                                    "verloren. Soll das Los wirklich gelöscht werden?")
                                         .arg(lot.toString(), dependent, signedText(rows));
            if (!ctx.prompter.askYesNo(question))
                return false;
            withRows << dependent;
        }
        if (withRows.isEmpty() && !ctx.prompter.askYesNo(QStringLiteral("Soll der markierte Datensatz wirklich gelöscht werden?")))
            return false;
        TransactionGuard guard(ctx.db);
        for (const QString& dependent : withRows)
            execSql(ctx.db, QStringLiteral("DELETE FROM %1 WHERE \"Los_Nr\" = ? AND \"Kennung\" = ?").arg(quoted(dependent)), {lot, harvestId});
        execSql(ctx.db, QStringLiteral("DELETE FROM \"Lose\" WHERE \"ID\" = ?"), {id});
        refreshHarvest(ctx.db, harvestId);
        guard.commit();
        return true;
    }

    if (!ctx.prompter.askYesNo(QStringLiteral("Soll der markierte Datensatz wirklich gelöscht werden?")))
        return false;
    bool clearLots = false;
    QVariant invoiceNumber;
    if (list == HubList::Rechnungen) {
        invoiceNumber = scalar(ctx.db, QStringLiteral("SELECT \"ReNr\" FROM \"Rechnungen\" WHERE \"ID\" = ?"), {id});
        if (invoiceNumber.isValid() && scalar(ctx.db, QStringLiteral("SELECT 1 FROM \"Lose\" WHERE \"ReNr\" = ? LIMIT 1"), {invoiceNumber}).isValid())
            clearLots = ctx.prompter.askYesNo(QStringLiteral(
                "In den Losen ist die entsprechende Rechnungsnummer auch eingetragen. Soll die Rechnungsnummer auch in den Losen "
                "gelöscht werden? Dadurch kann das Los wieder neu in einer Rechnung aufgenommen werden?"));
    }
    TransactionGuard guard(ctx.db);
    execSql(ctx.db, QStringLiteral("DELETE FROM %1 WHERE \"ID\" = ?").arg(quoted(table)), {id});
    if (clearLots)
        execSql(ctx.db, QStringLiteral("UPDATE \"Lose\" SET \"ReNr\" = 0 WHERE \"ReNr\" = ?"), {invoiceNumber});
    refreshHarvest(ctx.db, harvestId);
    guard.commit();
    return true;
}

bool markInvoicePaid(const AppContext& ctx, qint32 harvestId, qint32 invoiceId)
{
    const QVariant number = scalar(ctx.db, QStringLiteral("SELECT \"ReNr\" FROM \"Rechnungen\" WHERE \"ID\" = ?"), {invoiceId});
    if (!number.isValid())
        return false;
    const bool settled = !scalar(ctx.db, QStringLiteral("SELECT 1 FROM \"Lose\" WHERE \"ReNr\" = ? AND coalesce(\"Abgerechnet\", '') <> 'J' LIMIT 1"),
                                 {number}).isValid();
    if (settled) {
        ctx.prompter.inform(QStringLiteral("Diese Rechnung wurde bereits komplett abgerechnet."));
        return false;
    }
    if (!ctx.prompter.askYesNo(QStringLiteral("Wurde die Rechnung wirklich komplett bezahlt?\n\n"
                                              "Zahlung von Teilbeträgen (Netto) buchen Sie direkt in den Losen. Bitte bestätigen Sie "
                                              "diese Abfrage nur dann mit [Ja], wenn die Rechnung komplett beglichen wurde.")))
        return false;
    TransactionGuard guard(ctx.db);
    execSql(ctx.db, QStringLiteral("UPDATE \"Lose\" SET \"Preis_erhalten\" = \"Preis_berechnet\", \"Abgerechnet\" = 'J' WHERE \"ReNr\" = ?"), {number});
    // The invoice's lots may belong to other harvests too; each keeps its own sale state.
    QSqlQuery harvests = execSql(ctx.db, QStringLiteral("SELECT DISTINCT \"Kennung\" FROM \"Lose\" WHERE \"ReNr\" = ?"), {number});
    QList<qint32> ids{harvestId};
    while (harvests.next())
        if (!ids.contains(harvests.value(0).toInt()))
            ids << harvests.value(0).toInt();
    harvests.finish();
    for (qint32 id : ids)
        refreshHarvest(ctx.db, id);
    guard.commit();
    return true;
}

} // namespace tarvik
