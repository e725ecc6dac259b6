#pragma once
// The entry hub's work on the records of one harvest: what each list shows, copying, deleting
// and paying; the totals follow every change.
#include "store/context.h"

#include <QSqlQuery>
#include <QStringList>
#include <optional>

namespace tarvik {

enum class HubList { Lose = 0, Staemme = 1, Pfaehle = 2, Schichtholz = 3, Rechnungen = 4 };

QString hubHeader(const QSqlDatabase& db, qint32 harvestId);
// The statement of a list; its only parameter is the harvest's ID. Its last column is `ID`.
QString hubListSql(HubList list, bool openInvoicesOnly);
// The list of the harvest, run and ready for the grid.
QSqlQuery hubListQuery(const QSqlDatabase& db, HubList list, bool openInvoicesOnly, qint32 harvestId);

// The harvests to step through: ID and "Hieb_Nr / Waldname", in number order.
struct HarvestChoice {
    qint32 id;
    QString caption;
};
QList<HarvestChoice> harvestChoices(const QSqlDatabase& db);
// The table whose rows a list shows.
QString hubTable(HubList list);

// Copies the log, pole or stacked-wood row with the next free number; false when refused.
bool copyRecord(const AppContext& context, HubList list, qint32 harvestId, qint32 id);
// Deletes the row after its questions; false when nothing was deleted.
bool deleteRecord(const AppContext& context, HubList list, qint32 harvestId, qint32 id);
// Marks every lot of the invoice as settled and paid in full; false when refused.
bool markInvoicePaid(const AppContext& context, qint32 harvestId, qint32 invoiceId);

} // namespace tarvik
