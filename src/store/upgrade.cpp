#include "store/upgrade.h"

#include "common/text.h"
#include "common/textfile.h"
#include "store/defaults.h"
#include "store/schema.h"
#include "store/sql.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <functional>

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

// Columns older files lack whose existing rows get a value of their own.
constexpr AddedColumn OtherAddedColumns[] = {
    {"Hiebe", "Harvester", "''"},
    {"Tagespreise", "Güte", "'B'"},
    {"Lose", "ReNr", "0"},
    {"Rechnungen", "Kundeninfo", "''"},
};

// The value existing rows receive in an added column: the given one, else empty or 0.
QString initialValue(const QString& table, const schema::Column& column)
{
    auto find = [&](const auto& list) -> const char* {
        for (const AddedColumn& a : list)
            if (table == QString::fromUtf8(a.table) && column.name == QString::fromUtf8(a.column))
                return a.initialValue;
        return nullptr;
    };
    if (const char* v = find(LotColumnsOfVersion3))
        return QString::fromUtf8(v);
    if (const char* v = find(OtherAddedColumns))
        return QString::fromUtf8(v);
    switch (column.type) {
    case ColumnType::Text:
    case ColumnType::Memo:
        return QStringLiteral("''");
    case ColumnType::DateTime:
    case ColumnType::Counter:
        return {};
    default:
        return QStringLiteral("0");
    }
}

// The per-class columns follow the file's own class tables; they are not checked here.
bool isClassColumn(const QString& table, const QString& column)
{
    static const QStringList classTables{QStringLiteral("Rindenabzug"), QStringLiteral("Messbeträge"),
                                         QStringLiteral("Tagespreise"), QStringLiteral("Messzahlen")};
    return classTables.contains(table) &&
           (column.startsWith(QLatin1String("SK_")) || column.startsWith(QLatin1String("GK_")));
}

QString columnTitle(const QString& table, const QString& column) { return table + u'.' + column; }

// Adds the column with the type the current layout gives it; false when it was there.
bool addColumnIfMissing(const QSqlDatabase& db, const QString& table, const schema::Column& column)
{
    if (schema::hasColumn(db, table, column.name))
        return false;
    if (column.type == ColumnType::Counter)
        throw StoreError(QStringLiteral("Die Zählerspalte %1 fehlt; sie kann nicht nachträglich angelegt werden.")
                             .arg(columnTitle(table, column.name)));
    schema::addColumn(db, table, column);
    const QString value = initialValue(table, column);
    if (!value.isEmpty())
        execSql(db, QStringLiteral("UPDATE %1 SET %2 = %3").arg(quoted(table), quoted(column.name), value));
    return true;
}

bool addColumnIfMissing(const QSqlDatabase& db, const AddedColumn& added)
{
    const QString table = QString::fromUtf8(added.table);
    return addColumnIfMissing(db, table, *schema::table(table).column(QString::fromUtf8(added.column)));
}

// One step of the upgrade in its own transaction. A step that fails is rolled back and
// reported in German with what it was about; the steps after it still run.
void runStep(const QSqlDatabase& db, UpgradeReport& report, const QString& title,
             const std::function<QString(const QSqlDatabase&)>& step)
{
    try {
        TransactionGuard guard(db);
        const QString change = step(db);
        guard.commit();
        if (!change.isEmpty())
            report.changes << change;
    } catch (const StoreError& e) {
        report.failures << QStringLiteral("Der Schritt \"%1\" ist nicht gelungen: %2").arg(title, e.message());
    }
}

void addColumnStep(const QSqlDatabase& db, const QString& table, const schema::Column& column, UpgradeReport& report)
{
    runStep(db, report, QStringLiteral("Spalte %1 ergänzen").arg(columnTitle(table, column.name)),
            [&](const QSqlDatabase& d) {
                return addColumnIfMissing(d, table, column)
                           ? QStringLiteral("Spalte %1 ergänzt").arg(columnTitle(table, column.name))
                           : QString();
            });
}

void addColumnStep(const QSqlDatabase& db, const AddedColumn& added, UpgradeReport& report)
{
    const QString table = QString::fromUtf8(added.table);
    addColumnStep(db, table, *schema::table(table).column(QString::fromUtf8(added.column)), report);
}

void createTableStep(const QSqlDatabase& db, const QString& table, UpgradeReport& report)
{
    runStep(db, report, QStringLiteral("Tabelle %1 anlegen").arg(table), [&](const QSqlDatabase& d) {
        if (schema::hasTable(d, table))
            return QString();
        schema::createTableWithIndexes(d, schema::table(table));
        if (insertDefaultRows(d, table))
            return QStringLiteral("Tabelle %1 mit den Standardwerten angelegt").arg(table);
        return QStringLiteral("Tabelle %1 angelegt").arg(table);
    });
}

QString indexExistsSql() { return QStringLiteral("SELECT 1 FROM sqlite_master WHERE type = 'index' AND name = ?"); }

bool indexExists(const QSqlDatabase& db, const QString& name) { return scalar(db, indexExistsSql(), {name}).isValid(); }

// A file without day prices comes from the previous major version: the day-price table is
// built with one column per log class the file has, and the lot and log columns are added.
QString importVersion2(const QSqlDatabase& db, UpgradeReport& report)
{
    if (schema::hasTable(db, QStringLiteral("Tagespreise")))
        return {};

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

    report.importedFromVersion2 = true;
    return QStringLiteral("Datenbank aus TARVIK 2.0 übernommen (Tagespreise, Los- und Stammspalten)");
}

// Default bark ranges for every species of the five groups that has none.
QString addDefaultBarkRanges(const QSqlDatabase& db, UpgradeReport& report)
{
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
    if (added == 0)
        return {};
    report.barkRangesAdded = added;
    return QStringLiteral("%1 Rindenabzüge für %2 Baumarten ergänzt").arg(added).arg(speciesAdded.size());
}

// Files brought up by the steps above lack indexes on columns they gained, older files of ours
// the indexes added since; add them and name them.
QString ensureIndexes(const QSqlDatabase& db)
{
    QStringList created;
    for (const schema::Table& t : schema::tables()) {
        for (const schema::Index& index : t.indexes) {
            const QString name = schema::indexName(t.name, index.name);
            if (indexExists(db, name) || !schema::hasColumn(db, t.name, index.column))
                continue;
            execSql(db, schema::createIndexSql(t.name, index));
            created << name;
        }
    }
    for (const schema::OwnIndex& index : schema::ownIndexes()) {
        if (indexExists(db, index.name))
            continue;
        bool columnsThere = true;
        for (const QString& c : index.columns)
            columnsThere = columnsThere && schema::hasColumn(db, index.table, c);
        if (!columnsThere)
            continue;
        execSql(db, schema::createOwnIndexSql(index));
        if (!index.replaces.isEmpty())
            execSql(db, QStringLiteral("DROP INDEX IF EXISTS %1").arg(quoted(index.replaces)));
        created << index.name;
    }
    if (created.isEmpty())
        return {};
    if (created.size() == 1)
        return QStringLiteral("Index ergänzt: %1").arg(created.first());
    return QStringLiteral("%1 Indizes ergänzt: %2").arg(created.size()).arg(created.join(QStringLiteral(", ")));
}

// Keeps the file as it is now beside it, through the engine so that a write-ahead log is
// folded in and the copy is consistent.
QString keepCopy(const QSqlDatabase& db, const QDate& today)
{
    const QString target = backupPathBeforeUpgrade(db.databaseName(), today);
    execSql(db, QStringLiteral("VACUUM INTO ?"), {target});
    return target;
}

// Appends what the upgrade did to the log; a log that cannot be written costs only the notes.
QString appendToUpgradeLog(const QSqlDatabase& db, const UpgradeReport& report)
{
    const QString path = upgradeLogPath(db);
    if (path.isEmpty() || (report.changes.isEmpty() && report.failures.isEmpty()))
        return {};
    QString text = QDateTime::currentDateTime().toString(QStringLiteral("dd.MM.yyyy hh:mm:ss")) + QStringLiteral(" Aktualisierung der Datenbank\r\n");
    for (const QString& change : report.changes)
        text += QStringLiteral("  ") + change + QStringLiteral("\r\n");
    for (const QString& failure : report.failures)
        text += QStringLiteral("  Fehler: ") + failure + QStringLiteral("\r\n");
    QFile log(path);
    if (!log.open(QIODevice::Append) || log.write(encodeCp1252(text)) < 0)
        return {};
    return path;
}

} // namespace

QString upgradeLogPath(const QSqlDatabase& db)
{
    const QString file = db.databaseName();
    if (file.isEmpty() || file == u":memory:")
        return {};
    return QFileInfo(file).absoluteDir().filePath(QLatin1String(UpgradeLogName));
}

bool ensureHarvesterColumn(const QSqlDatabase& db, const QDate& today)
{
    if (schema::hasColumn(db, QStringLiteral("Hiebe"), QStringLiteral("Harvester")))
        return false;
    UpgradeReport report;
    keepCopy(db, today); // a file that old gets more from the upgrade; this copy is the one untouched
    addColumnStep(db, {"Hiebe", "Harvester", "''"}, report);
    if (!report.failures.isEmpty())
        throw StoreError(report.failures.first());
    return !report.changes.isEmpty();
}

bool layoutIsCurrent(const QSqlDatabase& db)
{
    for (const schema::Table& t : schema::tables()) {
        if (!schema::hasTable(db, t.name))
            return false;
        const QStringList present = schema::columnNames(db, t.name);
        for (const schema::Column& c : t.columns)
            if (!isClassColumn(t.name, c.name) && !present.contains(c.name, Qt::CaseInsensitive))
                return false;
        for (const schema::Index& index : t.indexes)
            if (!indexExists(db, schema::indexName(t.name, index.name)))
                return false;
    }
    for (const schema::OwnIndex& index : schema::ownIndexes())
        if (!indexExists(db, index.name))
            return false;
    return true;
}

QString backupPathBeforeUpgrade(const QString& databasePath, const QDate& today)
{
    const QFileInfo file(databasePath);
    const QString stem = QStringLiteral("%1.vor-Aktualisierung-%2").arg(file.completeBaseName(), today.toString(QStringLiteral("yyyy-MM-dd")));
    const QDir folder = file.absoluteDir();
    QString candidate = folder.filePath(stem + QStringLiteral(".db"));
    for (int n = 2; QFileInfo::exists(candidate); ++n)
        candidate = folder.filePath(QStringLiteral("%1-%2.db").arg(stem).arg(n));
    return candidate;
}

UpgradeReport upgradeDatabase(const QSqlDatabase& db, Prompter& prompter, const QDate& today)
{
    UpgradeReport report;
    // The user learns that something is missing and where the details are; the names of tables,
    // columns and indexes stay in the log.
    auto warnFailures = [&] {
        report.logPath = appendToUpgradeLog(db, report);
        if (report.failures.isEmpty())
            return;
        QString text = QStringLiteral("Die Datenbank konnte nicht vollständig auf den aktuellen Stand gebracht werden. "
                                      "Sie können weiterarbeiten; was fehlt, ergänzt das Programm beim nächsten Start.");
        if (!report.logPath.isEmpty())
            text += QStringLiteral("\nDie Einzelheiten stehen in der Datei \"%1\".").arg(QDir::toNativeSeparators(report.logPath));
        prompter.inform(text, Prompter::Icon::Warning);
    };

    if (!layoutIsCurrent(db)) {
        try {
            report.backupPath = keepCopy(db, today);
        } catch (const StoreError& e) {
            report.failures << QStringLiteral("Vor der Aktualisierung konnte keine Kopie der Datenbank angelegt werden: %1 "
                                              "Die Datenbank bleibt deshalb unverändert.")
                                   .arg(e.message());
            report.logPath = appendToUpgradeLog(db, report);
            prompter.inform(report.failures.first(), Prompter::Icon::Warning);
            return report;
        }

        createTableStep(db, QStringLiteral("Rindenabzug2"), report);
        runStep(db, report, QStringLiteral("Datenbank aus TARVIK 2.0 übernehmen"),
                [&](const QSqlDatabase& d) { return importVersion2(d, report); });
        if (report.importedFromVersion2)
            prompter.inform(joinLines({QStringLiteral("Zur Information:"),
                                       QStringLiteral("Die Datenbank stammte aus TARVIK 2.0 und wurde soeben nun nach TARVIK 3.0 importiert.")}));
        addColumnStep(db, {"Tagespreise", "Güte", "'B'"}, report);
        runStep(db, report, QStringLiteral("Spalte Lose.ReNr und Tabelle Rechnungen ergänzen"), [&](const QSqlDatabase& d) {
            if (!addColumnIfMissing(d, {"Lose", "ReNr", "0"}))
                return QString();
            // Invoices came with the lot's invoice number.
            if (!schema::hasTable(d, QStringLiteral("Rechnungen")))
                schema::createTableWithIndexes(d, schema::table(QStringLiteral("Rechnungen")));
            return QStringLiteral("Spalte Lose.ReNr und Tabelle Rechnungen ergänzt");
        });
        addColumnStep(db, {"Rechnungen", "Kundeninfo", "''"}, report);

        // Whatever else the current layout has and the file lacks.
        for (const schema::Table& t : schema::tables())
            createTableStep(db, t.name, report);
        for (const schema::Table& t : schema::tables())
            for (const schema::Column& c : t.columns)
                if (!isClassColumn(t.name, c.name))
                    addColumnStep(db, t.name, c, report);
        runStep(db, report, QStringLiteral("Indizes ergänzen"), ensureIndexes);
        report.changes << QStringLiteral("Kopie des vorherigen Stands: %1").arg(QDir::toNativeSeparators(report.backupPath));
    }

    runStep(db, report, QStringLiteral("Rindenabzüge ergänzen"),
            [&](const QSqlDatabase& d) { return addDefaultBarkRanges(d, report); });
    warnFailures();
    return report;
}

} // namespace tarvik
