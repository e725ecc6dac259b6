#include "masterdata/masterlists.h"

#include "common/numbers.h"
#include "common/text.h"
#include "reports/columns.h"
#include "store/schema.h"
#include "store/sql.h"

#include <QSqlRecord>
#include <limits>

namespace tarvik {
namespace {

struct ListInfo {
    const char* caption;
    const char* table;
};

constexpr ListInfo Lists[MasterListCount] = {
    {"Baumarten", "Baumarten"},
    {"Stärkeklasse Stämme", "Stärkeklassen_Stämme"},
    {"Stärkeklasse Heilbronner Sort.", "Stärkeklassen_Stämme_Heilbronn"},
    {"Stärkeklasse Pfähle", "Stärkeklassen_Pfähle"},
    {"Stärkeklassen Schichtholz", "Stärkeklassen_Schichtholz"},
    {"Güte- klassen", "Güteklassen"},
    {"Rindenabzug Standard", "Rindenabzug"},
    {"Mess- beträge", "Messbeträge"},
    {"Mess- zahlen", "Messzahlen"},
    {"Rindenabzug frei definiert", "Rindenabzug2"},
    {"Tagespreise", "Tagespreise"},
};

const QString InUse = QStringLiteral("Der Datensatz kann nicht gelöscht werden, weil diese Stammdaten bereits in Buchungen "
                                     "verwendung findet!");

QString classPrefix(MasterList list) { return list == MasterList::Messzahlen ? QStringLiteral("GK_") : QStringLiteral("SK_"); }

bool isPerClassList(MasterList list)
{
    return list == MasterList::Rindenabzug || list == MasterList::Messbetraege || list == MasterList::Messzahlen
        || list == MasterList::Tagespreise;
}

QStringList classColumnsOf(const QSqlDatabase& db, MasterList list)
{
    QStringList out;
    for (const QString& c : schema::columnNames(db, masterListTable(list)))
        if (c.startsWith(classPrefix(list), Qt::CaseInsensitive) && isSafeIdentifier(c))
            out << c;
    return out;
}

// Bark deductions and index numbers are whole numbers; base amounts and day prices money.
QVariant storedValue(MasterList list, double value)
{
    if (list == MasterList::Rindenabzug || list == MasterList::Messzahlen)
        return toShort(value);
    return currencyValue(value);
}

// The use tests: table and column of the bookings that name the row's key.
QList<std::pair<QString, QString>> useTests(MasterList list)
{
    switch (list) {
    case MasterList::Baumarten:
        return {{QStringLiteral("Stämme"), QStringLiteral("Baumart")},
                {QStringLiteral("Pfähle"), QStringLiteral("Baumart")},
                {QStringLiteral("Schichtholz"), QStringLiteral("Baumart")}};
    case MasterList::Staemme: return {{QStringLiteral("Stämme"), QStringLiteral("Stärkeklasse")}};
    case MasterList::Heilbronn: return {{QStringLiteral("Stämme"), QStringLiteral("Klasse_Heilbronn")}};
    case MasterList::Pfaehle: return {{QStringLiteral("Pfähle"), QStringLiteral("Stärkeklasse")}};
    case MasterList::Schichtholz: return {{QStringLiteral("Schichtholz"), QStringLiteral("Stärkeklasse")}};
    case MasterList::Gueteklassen: return {{QStringLiteral("Stämme"), QStringLiteral("Güteklasse")}};
    default: return {};
    }
}

QString keyColumn(MasterList list)
{
    switch (list) {
    case MasterList::Staemme:
    case MasterList::Heilbronn:
    case MasterList::Pfaehle:
    case MasterList::Schichtholz: return QStringLiteral("Klasse");
    case MasterList::Gueteklassen: return QStringLiteral("Güteklasse");
    default: return QStringLiteral("Baumart");
    }
}

void dropColumnIfPresent(const QSqlDatabase& db, const QString& table, const QString& column)
{
    if (isSafeIdentifier(column) && schema::hasColumn(db, table, column))
        execSql(db, QStringLiteral("ALTER TABLE %1 DROP COLUMN %2").arg(quoted(table), quoted(column)));
}

} // namespace

QString masterListCaption(MasterList list) { return QString::fromUtf8(Lists[int(list)].caption); }

QString masterListTable(MasterList list) { return QString::fromUtf8(Lists[int(list)].table); }

std::optional<ClassTable> classTableOf(MasterList list)
{
    switch (list) {
    case MasterList::Staemme: return ClassTable::Staemme;
    case MasterList::Heilbronn: return ClassTable::Heilbronn;
    case MasterList::Pfaehle: return ClassTable::Pfaehle;
    case MasterList::Schichtholz: return ClassTable::Schichtholz;
    default: return std::nullopt;
    }
}

QString masterListSql(const QSqlDatabase& db, MasterList list)
{
    const QString table = masterListTable(list);
    if (!isPerClassList(list))
        return QStringLiteral("SELECT * FROM %1 ORDER BY \"ID\"").arg(quoted(table));
    QStringList columns{quoted(QStringLiteral("Baumart"))};
    if (list == MasterList::Tagespreise)
        columns << quoted(QStringLiteral("Güte"));
    for (const QString& c : classColumnsOf(db, list))
        columns << quoted(c);
    columns << quoted(QStringLiteral("ID"));
    return QStringLiteral("SELECT %1 FROM %2 ORDER BY \"ID\"").arg(columns.join(QStringLiteral(", ")), quoted(table));
}

bool isMoneyColumn(MasterList list, const QString& column)
{
    if (column.startsWith(u"Schätzpreis"))
        return true;
    return (list == MasterList::Messbetraege || list == MasterList::Tagespreise) && column.startsWith(QLatin1String("SK_"), Qt::CaseInsensitive);
}

QString shownValue(MasterList list, const QString& column, const QVariant& value)
{
    if (value.isNull())
        return QString();
    if (isMoneyColumn(list, column))
        return formatDecimal(readNumber(value), 2);
    if (value.typeId() == QMetaType::Double)
        return numberText(value.toDouble());
    return readText(value);
}

bool isCellEditable(MasterList list, const QString& column)
{
    // A copied day-price row becomes the price of another quality by its `Güte` cell.
    if (list == MasterList::Tagespreise && column == u"Güte")
        return true;
    return isPerClassList(list) && column.startsWith(classPrefix(list), Qt::CaseInsensitive);
}

std::optional<QString> dayPriceQualityRefusal(const QSqlDatabase& db, qint32 id, const QString& quality)
{
    QStringList reasons;
    if (const auto tooLong = widthReasons(QStringLiteral("Tagespreise"), {{QStringLiteral("Güte"), quality, QStringLiteral("die Güte")}});
        !tooLong.isEmpty()) {
        reasons << tooLong;
    } else if (!quality.isEmpty() && !valueUsed(db, QStringLiteral("Güteklassen"), QStringLiteral("Güteklasse"), quality)) {
        reasons << QStringLiteral("...die Güte %1 keine Güteklasse der Stammdaten ist.").arg(quality);
    } else {
        const QString species = readText(scalar(db, QStringLiteral("SELECT \"Baumart\" FROM \"Tagespreise\" WHERE \"ID\" = ?"), {id}));
        // One price per species and quality: a second row would never be read.
        if (scalar(db, QStringLiteral("SELECT 1 FROM \"Tagespreise\" WHERE \"Baumart\" = ? AND coalesce(\"Güte\", '') = ? "
                                      "AND \"ID\" <> ? LIMIT 1"),
                   {species, quality, id})
                .isValid())
            reasons << (quality.isEmpty() ? QStringLiteral("...die Baumart %1 bereits Tagespreise ohne Güte hat.").arg(species)
                                          : QStringLiteral("...die Baumart %1 bereits Tagespreise für die Güte %2 hat.").arg(species, quality));
    }
    if (reasons.isEmpty())
        return std::nullopt;
    return gatheredRefusal(reasons);
}

bool editMasterCell(const AppContext& context, MasterList list, qint32 id, const QString& column, const QString& typed)
{
    if (!isCellEditable(list, column) || !isSafeIdentifier(column))
        return false;
    const QSqlDatabase& db = context.db;
    const QString table = masterListTable(list);
    if (list == MasterList::Tagespreise && column == u"Güte") {
        const QString quality = typed.trimmed();
        if (const auto refusal = dayPriceQualityRefusal(db, id, quality)) {
            context.prompter.inform(*refusal);
            return false;
        }
        TransactionGuard guard(db);
        execSql(db, QStringLiteral("UPDATE \"Tagespreise\" SET \"Güte\" = ? WHERE \"ID\" = ?"), {quality, id});
        guard.commit();
        masterDataChanged();
        return true;
    }
    const QVariant value = storedValue(list, readNumber(typed));
    const bool wholeRow =
        context.prompter.askYesNo(QStringLiteral("Soll die Änderung auf alle Zellen des aktuellen Datensatzes kopiert werden?"));
    const QStringList columns = wholeRow ? classColumnsOf(db, list) : QStringList{column};
    QStringList assignments;
    QVariantList values;
    for (const QString& c : columns) {
        assignments << quoted(c) + QStringLiteral(" = ?");
        values << value;
    }
    TransactionGuard guard(db);
    execSql(db, QStringLiteral("UPDATE %1 SET %2 WHERE \"ID\" = ?").arg(quoted(table), assignments.join(QStringLiteral(", "))),
            values + QVariantList{id});
    guard.commit();
    masterDataChanged();
    return true;
}

qint32 copyDayPriceRow(const AppContext& context, qint32 id)
{
    QStringList columns;
    for (const QString& c : schema::columnNames(context.db, QStringLiteral("Tagespreise")))
        if (c.compare(QLatin1String("ID"), Qt::CaseInsensitive) != 0)
            columns << quoted(c);
    const QString list = columns.join(QStringLiteral(", "));
    TransactionGuard guard(context.db);
    QSqlQuery q = execSql(context.db,
                          QStringLiteral("INSERT INTO \"Tagespreise\"(%1) SELECT %1 FROM \"Tagespreise\" WHERE \"ID\" = ?").arg(list),
                          {id});
    const qint32 newId = q.lastInsertId().toInt();
    guard.commit();
    masterDataChanged();
    return newId;
}

bool deleteMasterRow(const AppContext& context, MasterList list, qint32 id)
{
    const QSqlDatabase& db = context.db;
    // A species' one row of bark deductions, base amounts or index numbers goes with the species;
    // without it its logs would be priced or barked at 0. A row left by a deleted species may go.
    if (list == MasterList::Rindenabzug || list == MasterList::Messbetraege || list == MasterList::Messzahlen) {
        const QString species = readText(
            scalar(db, QStringLiteral("SELECT \"Baumart\" FROM %1 WHERE \"ID\" = ?").arg(quoted(masterListTable(list))), {id}));
        if (valueUsed(db, QStringLiteral("Baumarten"), QStringLiteral("Baumart"), species)) {
            context.prompter.inform(QStringLiteral("Der Datensatz kann nicht gelöscht werden, weil er zur Baumart %1 gehört. "
                                                   "Er wird mit der Baumart (Liste \"Baumarten\") gelöscht.").arg(species));
            return false;
        }
    }
    if (!context.prompter.askYesNo(QStringLiteral("Soll der markierte Datensatz wirklich gelöscht werden?")))
        return false;
    const QString table = masterListTable(list);
    const QString key = readText(scalar(db, QStringLiteral("SELECT %1 FROM %2 WHERE \"ID\" = ?").arg(quoted(keyColumn(list)), quoted(table)), {id}));
    for (const auto& [bookings, column] : useTests(list)) {
        if (valueUsed(db, bookings, column, key)) {
            context.prompter.inform(InUse);
            return false;
        }
    }
    if (list == MasterList::Tagespreise
        && scalar(db, QStringLiteral("SELECT COUNT(*) FROM \"Tagespreise\" WHERE \"Baumart\" = ?"), {key}).toInt() < 2) {
        context.prompter.inform(QStringLiteral("Die ausgewählte Baumart existiert nur noch einmal und kann nicht gelöscht werden!"));
        return false;
    }

    TransactionGuard guard(db);
    execSql(db, QStringLiteral("DELETE FROM %1 WHERE \"ID\" = ?").arg(quoted(table)), {id});
    if (list == MasterList::Baumarten) {
        for (const char* t : {"Rindenabzug", "Messbeträge", "Messzahlen", "Tagespreise"})
            execSql(db, QStringLiteral("DELETE FROM %1 WHERE \"Baumart\" = ?").arg(quoted(QString::fromUtf8(t))), {key});
    } else if (list == MasterList::Staemme) {
        for (const char* t : {"Rindenabzug", "Messbeträge", "Tagespreise"})
            dropColumnIfPresent(db, QString::fromUtf8(t), QStringLiteral("SK_") + key);
    } else if (list == MasterList::Gueteklassen) {
        dropColumnIfPresent(db, QStringLiteral("Messzahlen"), QStringLiteral("GK_") + key);
    }
    guard.commit();
    masterDataChanged();
    return true;
}

QStringList masterListReport(const QSqlDatabase& db, const Einstellungen& settings, MasterList list, QDate today)
{
    const int rowsPerPage = settings.zahl[50] == 1 ? std::numeric_limits<int>::max() / 2 : 55;
    const QString separator = settings.text[10].isEmpty() ? QStringLiteral(" ") : settings.text[10];
    constexpr int MaxWidth = 24;
    QSqlQuery q = execSql(db, masterListSql(db, list));
    const QSqlRecord record = q.record();
    QStringList headers;
    QList<int> widths;
    for (int c = 0; c < record.count(); ++c) {
        headers << record.fieldName(c);
        widths << int(record.fieldName(c).size());
    }
    QList<QStringList> rows;
    while (q.next()) {
        QStringList row;
        for (int c = 0; c < record.count(); ++c) {
            row << shownValue(list, headers[c], q.value(c));
            widths[c] = std::min(MaxWidth, std::max(widths[c], int(row.last().size())));
        }
        rows << row;
    }
    auto line = [&](const QStringList& cells) {
        QStringList out;
        for (int c = 0; c < cells.size(); ++c) {
            // Names left, numbers right, as a reader scans them.
            bool number = false;
            cells[c].toDouble(&number);
            out << (number || cells[c].contains(u',') ? columns::right(cells[c], widths[c]) : columns::left(cells[c], widths[c]));
        }
        return out.join(separator);
    };
    QString title = QStringLiteral("Stammdaten: ") + masterListCaption(list).remove(QLatin1String("- "));
    if (settings.zahl[1] == 1)
        title += QStringLiteral("   Datum: ") + today.toString(QStringLiteral("dd.MM.yyyy"));
    QStringList head{settings.text[1].trimmed(), title, QString(), line(headers), QString(line(headers).size(), u'-')};
    const int pages = std::max<int>(1, int((rows.size() + rowsPerPage - 1) / rowsPerPage));
    QStringList out;
    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            out << QStringLiteral("#");
        out << head;
        for (int r = page * rowsPerPage; r < std::min<int>(int(rows.size()), (page + 1) * rowsPerPage); ++r)
            out << line(rows[r]);
        out << QString();
        if (page == pages - 1)
            out << QStringLiteral("Anzahl Datensätze: ") + QString::number(rows.size());
        out << QStringLiteral("Seite %1 von %2").arg(page + 1).arg(pages);
    }
    return out;
}

} // namespace tarvik
