#include "store/upgrade.h"

#include "common/text.h"
#include "store/defaults.h"
#include "store/schema.h"
#include "store/sql.h"

#include <QSqlQuery>

namespace tarvik {
namespace {

using schema::Column;
using schema::ColumnType;

// A column added to existing rows, and the value those rows receive.
struct AddedColumn {
    const char* table;
    const char* column;
    const char* initialValue; // SQL expression
};

// The lot columns of the previous major version, in the order the upgrade adds them.
constexpr AddedColumn LotColumnsOfVersion3[] = {
    {"Lose", "Preis_Art", "0"},           {"Lose", "Erschwerniszuschlag", "0"},
    {"Lose", "Los_Bezeichnung", "''"},    {"Lose", "Anfahrt", "''"},
    {"Lose", "GPS_L", "''"},              {"Lose", "GPS_B", "''"},
    {"Lose", "Käferholzabschlag", "0"},   {"Lose", "Kosten_Einschlag", "0"},
    {"Lose", "Kosten_Rücken", "0"},       {"Lose", "Pauschalpreis_efm", "0"},
    {"Lose", "Pauschalpreis_G", "0"},     {"Lose", "Vermessungsart", "''"},
    {"Lose", "Fixlänge", "0"},            {"Lose", "Überlänge", "0"},
    {"Lose", "Qualität", "''"},           {"Lose", "Holzpreis", "\"Preis_berechnet\""},
    {"Stämme", "Holzpreis", "\"Preis_berechnet\""},
    {"Stämme", "Käferholz", "0"},
};

// Adds the column with the type the current layout gives it; false when it was there.
bool addColumnIfMissing(const QSqlDatabase& db, const AddedColumn& added)
{
    const QString table = QString::fromUtf8(added.table);
    const QString column = QString::fromUtf8(added.column);
    if (schema::hasColumn(db, table, column))
        return false;
    schema::addColumn(db, table, *schema::table(table).column(column));
    execSql(db, QStringLiteral("UPDATE %1 SET %2 = %3")
                    .arg(quoted(table), quoted(column), QString::fromUtf8(added.initialValue)));
    return true;
}

bool addColumnStep(const QSqlDatabase& db, const AddedColumn& added, UpgradeReport& report)
{
    TransactionGuard guard(db);
    if (!addColumnIfMissing(db, added))
        return false;
    guard.commit();
    report.changes << QStringLiteral("Spalte %1.%2 ergänzt").arg(QString::fromUtf8(added.table),
                                                               QString::fromUtf8(added.column));
    return true;
}

bool createTableStep(const QSqlDatabase& db, const QString& table, UpgradeReport& report)
{
    TransactionGuard guard(db);
    if (schema::hasTable(db, table))
        return false;
    schema::createTableWithIndexes(db, schema::table(table));
    guard.commit();
    report.changes << QStringLiteral("Tabelle %1 angelegt").arg(table);
    return true;
}

// A file without day prices comes from the previous major version: the day-price table is
// built with one column per log class the file has, and the lot and log columns are added.
void importVersion2(const QSqlDatabase& db, UpgradeReport& report)
{
    TransactionGuard guard(db);
    if (schema::hasTable(db, QStringLiteral("Tagespreise")))
        return;

    QStringList classes;
    QSqlQuery classQuery = execSql(db, QStringLiteral("SELECT \"Klasse\" FROM \"Stärkeklassen_Stämme\" ORDER BY \"Klasse\""));
    while (classQuery.next()) {
        const QString c = readText(classQuery.value(0));
        if (isSafeIdentifier(c) && !classes.contains(c, Qt::CaseInsensitive))
            classes << c; // a class name that could not be a column name never reaches SQL
    }

    schema::Table dayPrices{QStringLiteral("Tagespreise"),
                            {{QStringLiteral("Baumart"), ColumnType::Text, 22},
                             {QStringLiteral("Güte"), ColumnType::Text, 5}},
                            schema::table(QStringLiteral("Tagespreise")).indexes};
    for (const QString& c : classes)
        dayPrices.columns.append({QStringLiteral("SK_") + c, ColumnType::Currency, 0});
    dayPrices.columns.append({QStringLiteral("ID"), ColumnType::Counter, 0});
    schema::createTableWithIndexes(db, dayPrices);

    execSql(db, QStringLiteral("INSERT INTO \"Tagespreise\"(\"Baumart\") "
                               "SELECT \"Baumart\" FROM \"Baumarten\" ORDER BY \"Baumart\""));
    for (const QString& c : classes)
        execSql(db, QStringLiteral("UPDATE \"Tagespreise\" SET %1 = 0").arg(quoted(QStringLiteral("SK_") + c)));
    execSql(db, QStringLiteral("UPDATE \"Tagespreise\" SET \"Güte\" = 'B'"));

    for (const AddedColumn& added : LotColumnsOfVersion3)
        addColumnIfMissing(db, added);
    guard.commit();

    report.importedFromVersion2 = true;
    report.changes << QStringLiteral("Datenbank aus TARVIK 2.0 übernommen (Tagespreise, Los- und Stammspalten)");
}

// Default bark ranges for every species of the five groups that has none.
void addDefaultBarkRanges(const QSqlDatabase& db, UpgradeReport& report)
{
    TransactionGuard guard(db);
    QSqlQuery species = execSql(db, QStringLiteral("SELECT \"Baumart\" FROM \"Baumarten\" ORDER BY \"Baumart\""));
    QSqlQuery exists = prepareSql(db, QStringLiteral("SELECT 1 FROM \"Rindenabzug2\" WHERE \"Baumart\" = ? LIMIT 1"));
    QSqlQuery insert = prepareSql(db, QStringLiteral("INSERT INTO \"Rindenabzug2\"(\"Baumart\", \"Stärke_von\", "
                                                     "\"Stärke_bis\", \"Abzug_cm\") VALUES (?, ?, ?, ?)"));
    int added = 0;
    QStringList speciesAdded;
    while (species.next()) {
        const QString name = readText(species.value(0));
        const QList<BarkRange> ranges = defaultBarkRanges(name);
        if (ranges.isEmpty())
            continue;
        execPrepared(exists, {name});
        const bool hasRows = exists.next();
        exists.finish();
        if (hasRows)
            continue;
        for (const BarkRange& r : ranges) {
            execPrepared(insert, {name, r.from, r.to, r.deductionCm});
            ++added;
        }
        speciesAdded << name;
    }
    guard.commit();
    if (added > 0) {
        report.barkRangesAdded = added;
        report.changes << QStringLiteral("%1 Rindenabzüge für %2 Baumarten ergänzt").arg(added).arg(speciesAdded.size());
    }
}

// Files brought up by the steps above lack indexes on columns they gained; add them.
void ensureIndexes(const QSqlDatabase& db, UpgradeReport& report)
{
    TransactionGuard guard(db);
    int created = 0;
    for (const schema::Table& t : schema::tables()) {
        for (const schema::Index& index : t.indexes) {
            const QString name = schema::indexName(t.name, index.name);
            if (scalar(db, QStringLiteral("SELECT 1 FROM sqlite_master WHERE type = 'index' AND name = ?"), {name}).isValid())
                continue;
            if (!schema::hasColumn(db, t.name, index.column))
                continue;
            execSql(db, schema::createIndexSql(t.name, index));
            ++created;
        }
    }
    for (const schema::OwnIndex& index : schema::ownIndexes()) {
        if (scalar(db, QStringLiteral("SELECT 1 FROM sqlite_master WHERE type = 'index' AND name = ?"), {index.name}).isValid())
            continue;
        bool columnsThere = true;
        for (const QString& c : index.columns)
            columnsThere = columnsThere && schema::hasColumn(db, index.table, c);
        if (!columnsThere)
            continue;
        execSql(db, schema::createOwnIndexSql(index));
        ++created;
    }
    guard.commit();
    if (created > 0)
        report.changes << QStringLiteral("%1 Indizes ergänzt").arg(created);
}

} // namespace

bool ensureHarvesterColumn(const QSqlDatabase& db)
{
    UpgradeReport ignored;
    return addColumnStep(db, {"Hiebe", "Harvester", "''"}, ignored);
}

UpgradeReport upgradeDatabase(const QSqlDatabase& db, Prompter& prompter)
{
    UpgradeReport report;
    createTableStep(db, QStringLiteral("Rindenabzug2"), report);

    importVersion2(db, report);
    if (report.importedFromVersion2)
        prompter.inform(joinLines({QStringLiteral("Zur Information:"),
                                   QStringLiteral("Die Datenbank stammte aus TARVIK 2.0 und wurde soeben nun nach TARVIK 3.0 importiert.")}));

    addColumnStep(db, {"Tagespreise", "Güte", "'B'"}, report);
    addColumnStep(db, {"Lose", "ReNr", "0"}, report);
    createTableStep(db, QStringLiteral("Rechnungen"), report);
    addColumnStep(db, {"Rechnungen", "Kundeninfo", "''"}, report);
    addDefaultBarkRanges(db, report);
    ensureIndexes(db, report);
    return report;
}

} // namespace tarvik
