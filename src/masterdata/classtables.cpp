#include "masterdata/classtables.h"

#include "common/numbers.h"
#include "common/text.h"
#include "store/schema.h"
#include "store/sql.h"

namespace tarvik {
namespace {

struct RangeCheck {
    int from; // index into ClassForm::values
    int to;
    const char* reason;
};

struct Definition {
    QString table;
    QStringList columns; // after Klasse
    QStringList captions;
    QList<RangeCheck> ranges;
    QString bookingTable;  // where a renamed class is carried; empty: renaming is refused
    QString bookingColumn;
};

const char* const DiameterReason = "...der 'Durchmesser von' nicht größen sein darf als der 'Durchmesser bis'.";

const Definition& definition(ClassTable t)
{
    static const Definition defs[] = {
        {QStringLiteral("Stärkeklassen_Stämme"),
         {QStringLiteral("Durchm_oR_von"), QStringLiteral("Durchm_oR_bis")},
         {QStringLiteral("Durchmesser von (cm)"), QStringLiteral("Durchmesser bis (cm)")},
         {{0, 1, DiameterReason}},
         {},
         {}},
        {QStringLiteral("Stärkeklassen_Stämme_Heilbronn"),
         {QStringLiteral("Zopfdurchmesser_cm"), QStringLiteral("Länge_m")},
         {QStringLiteral("Zopfdurchmesser (cm)"), QStringLiteral("Länge (m)")},
         {},
         QStringLiteral("Stämme"),
         QStringLiteral("Klasse_Heilbronn")},
        {QStringLiteral("Stärkeklassen_Pfähle"),
         {QStringLiteral("Durchm_oR_von"), QStringLiteral("Durchm_oR_bis"), QStringLiteral("Mindestlänge_von_m"),
          QStringLiteral("Mindestlänge_bis_m"), QStringLiteral("Schätzpreis_je_St")},
         {QStringLiteral("Durchmesser von (cm)"), QStringLiteral("Durchmesser bis (cm)"),
          QStringLiteral("Mindestlänge von (m)"), QStringLiteral("Mindestlänge bis (m)"),
          QStringLiteral("Schätzpreis je Stück")},
         {{0, 1, DiameterReason},
          {2, 3, "...die 'Mindestlänge von' nicht größer sein darf als die 'Mindestlänge bis'."}},
         QStringLiteral("Pfähle"),
         QStringLiteral("Stärkeklasse")},
        {QStringLiteral("Stärkeklassen_Schichtholz"),
         {QStringLiteral("Durchm_von"), QStringLiteral("Durchm_bis"), QStringLiteral("Schätzpreis_je_m3")},
         {QStringLiteral("Durchmesser von (cm)"), QStringLiteral("Durchmesser bis (cm)"),
          QStringLiteral("Schätzpreis je m³")},
         {{0, 1, DiameterReason}},
         QStringLiteral("Schichtholz"),
         QStringLiteral("Stärkeklasse")},
    };
    return defs[int(t)];
}

// Whole centimetres and metres go into SHORT columns, estimated prices into CURRENCY ones.
QVariant columnValue(const QString& column, const QString& typed)
{
    const double v = readNumber(typed);
    if (column.startsWith(u"Schätzpreis"))
        return currencyValue(v);
    return toShort(v);
}

// The class columns of the per-class tables, added in this order, each set to 0 at once.
const std::pair<const char*, const char*> LogClassColumns[] = {
    {"Rindenabzug", "SHORT INTEGER"}, {"Tagespreise", "CURRENCY REAL"}, {"Messbeträge", "CURRENCY REAL"}};

void addLogClassColumns(const QSqlDatabase& db, const QString& klasse)
{
    const QString column = QStringLiteral("SK_") + klasse;
    for (const auto& [table, type] : LogClassColumns) {
        const QString t = QString::fromUtf8(table);
        if (!schema::hasColumn(db, t, column))
            execSql(db, QStringLiteral("ALTER TABLE %1 ADD COLUMN %2 %3").arg(quoted(t), quoted(column), QLatin1String(type)));
        execSql(db, QStringLiteral("UPDATE %1 SET %2 = 0").arg(quoted(t), quoted(column)));
    }
}

} // namespace

QString classTableName(ClassTable table) { return definition(table).table; }

QStringList classColumns(ClassTable table) { return QStringList{QStringLiteral("Klasse")} + definition(table).columns; }

QStringList classCaptions(ClassTable table) { return QStringList{QStringLiteral("Klasse")} + definition(table).captions; }

ClassForm loadClass(const QSqlDatabase& db, ClassTable table, qint32 id)
{
    const Definition& d = definition(table);
    QStringList quotedColumns;
    for (const QString& c : classColumns(table))
        quotedColumns << quoted(c);
    QSqlQuery q = execSql(db, QStringLiteral("SELECT %1 FROM %2 WHERE \"ID\" = ?").arg(quotedColumns.join(u','), quoted(d.table)), {id});
    ClassForm form;
    if (!q.next())
        return form;
    form.klasse = readText(q.value(0));
    for (int i = 0; i < d.columns.size(); ++i) {
        const QVariant v = q.value(i + 1);
        form.values << (d.columns[i].startsWith(u"Schätzpreis") ? formatDecimal(readNumber(v), 2)
                                                                                : numberText(readNumber(v)));
    }
    return form;
}

bool storeClass(const AppContext& context, ClassTable table, EditMode mode, std::optional<qint32> id, const ClassForm& form)
{
    const QSqlDatabase& db = context.db;
    const Definition& d = definition(table);
    const QString klasse = form.klasse.trimmed();
    const bool editing = mode == EditMode::Aendern && id;
    const QString subject = QStringLiteral("die Klasse");

    QStringList reasons;
    if (klasse.isEmpty())
        reasons << QStringLiteral("...die Klasse angegeben werden muß.");
    // A Heilbronn class is stored in the logs' five-character column as well.
    if (auto r = widthReason(klasse, table == ClassTable::Heilbronn ? 5 : 6, subject))
        reasons << *r;
    if (auto r = table == ClassTable::Staemme ? columnNameReason(klasse, subject) : valueNameReason(klasse, subject))
        reasons << *r;
    for (const RangeCheck& range : d.ranges)
        if (readNumber(form.values.value(range.from)) > readNumber(form.values.value(range.to)))
            reasons << QString::fromUtf8(range.reason);
    if (!klasse.isEmpty() && valueUsed(db, d.table, QStringLiteral("Klasse"), klasse, editing ? id : std::nullopt))
        reasons << QStringLiteral("...die Klasse bereits existiert.");
    if (!reasons.isEmpty()) {
        context.prompter.inform(gatheredRefusal(reasons));
        return false;
    }

    QString old;
    if (editing) {
        old = loadClass(db, table, *id).klasse;
        if (old != klasse && d.bookingTable.isEmpty()) {
            context.prompter.inform(QStringLiteral("Sie haben die Klasse von %1 auf %2 geändert. Änderungen der Klasse sind nicht "
                                                   "erlaubt. Ggf. müssen Sie die Klasse löschen und nochmals neu eingeben.")
                                        .arg(old, klasse));
            return false;
        }
    }

    QStringList columns = classColumns(table);
    QVariantList values{klasse};
    for (int i = 0; i < d.columns.size(); ++i)
        values << columnValue(d.columns[i], form.values.value(i));
    QStringList quotedColumns;
    for (const QString& c : columns)
        quotedColumns << quoted(c);

    TransactionGuard guard(db);
    QString message;
    if (editing) {
        QStringList assignments;
        for (const QString& c : quotedColumns)
            assignments << c + QStringLiteral(" = ?");
        execSql(db, QStringLiteral("UPDATE %1 SET %2 WHERE \"ID\" = ?").arg(quoted(d.table), assignments.join(QStringLiteral(", "))),
                values + QVariantList{*id});
        if (old != klasse) {
            message = QStringLiteral("Die Klasse wurde von %1 auf %2 geändert. Die Änderung wird in allen Buchungen übernommen")
                          .arg(old, klasse);
            execSql(db, QStringLiteral("UPDATE %1 SET %2 = ? WHERE %2 = ?").arg(quoted(d.bookingTable), quoted(d.bookingColumn)),
                    {klasse, old});
        }
    } else {
        QStringList marks;
        for (int i = 0; i < columns.size(); ++i)
            marks << QStringLiteral("?");
        execSql(db, QStringLiteral("INSERT INTO %1(%2) VALUES (%3)")
                        .arg(quoted(d.table), quotedColumns.join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))),
                values);
        if (table == ClassTable::Staemme) {
            message = QStringLiteral("Sie haben eine neue Klasse eingegeben. Diese wird jetzt in die Stammdaten für Rindenabzug, "
                                     "Tagespreise und Messbeträge eingetragen. Bitte tragen Sie dort die Rindenabzugswerte, "
                                     "Preise und Messbeträge noch nach!");
            addLogClassColumns(db, klasse);
        }
    }
    guard.commit();
    masterDataChanged();
    if (!message.isEmpty())
        context.prompter.inform(message);
    return true;
}

} // namespace tarvik
