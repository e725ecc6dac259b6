#include "masterdata/species.h"

#include "common/text.h"
#include "store/schema.h"
#include "store/sql.h"

namespace tarvik {
namespace {

const QString SpeciesTable = QStringLiteral("Baumarten");
const QString QualityTable = QStringLiteral("Güteklassen");

// A new species' row in a per-class table: its name and 0 in every class column.
void insertZeroRow(const QSqlDatabase& db, const QString& table, const QString& prefix,
                   const QVariantList& leadingValues, const QStringList& leadingColumns)
{
    QStringList columns = leadingColumns;
    QStringList marks;
    QVariantList values = leadingValues;
    for (int i = 0; i < leadingColumns.size(); ++i)
        marks << QStringLiteral("?");
    for (const QString& c : schema::columnNames(db, table)) {
        if (!c.startsWith(prefix, Qt::CaseInsensitive))
            continue;
        columns << c;
        marks << QStringLiteral("?");
        values << 0;
    }
    QStringList quotedColumns;
    for (const QString& c : columns)
        quotedColumns << quoted(c);
    execSql(db,
            QStringLiteral("INSERT INTO %1(%2) VALUES (%3)")
                .arg(quoted(table), quotedColumns.join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))),
            values);
}

} // namespace

const QStringList& speciesTables()
{
    static const QStringList tables{QStringLiteral("Rindenabzug"), QStringLiteral("Rindenabzug2"),
                                    QStringLiteral("Messbeträge"), QStringLiteral("Tagespreise"),
                                    QStringLiteral("Messzahlen"),  QStringLiteral("Stämme"),
                                    QStringLiteral("Pfähle"),      QStringLiteral("Schichtholz")};
    return tables;
}

SpeciesForm loadSpecies(const QSqlDatabase& db, qint32 id)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Baumart\", \"Laubwald\" FROM \"Baumarten\" WHERE \"ID\" = ?"), {id});
    SpeciesForm form;
    if (q.next()) {
        form.baumart = readText(q.value(0));
        form.laubwald = readText(q.value(1)) == u"J";
    }
    return form;
}

bool storeSpecies(const AppContext& context, EditMode mode, std::optional<qint32> id, const SpeciesForm& form)
{
    const QSqlDatabase& db = context.db;
    const QString name = form.baumart.trimmed();
    if (name.isEmpty()) {
        context.prompter.inform(QStringLiteral("Die Baumart muß eingegeben werden."));
        return false;
    }
    if (name.size() > 22) {
        context.prompter.inform(QStringLiteral("Die Baumart darf höchstens 22 Zeichen lang sein."));
        return false;
    }
    const bool editing = mode == EditMode::Aendern && id;
    if (valueUsed(db, SpeciesTable, QStringLiteral("Baumart"), name, editing ? id : std::nullopt)) {
        context.prompter.inform(QStringLiteral("Die Baumart existiert bereits."));
        return false;
    }
    const QString flag = form.laubwald ? QStringLiteral("J") : QStringLiteral("N");

    TransactionGuard guard(db);
    QString message;
    if (editing) {
        const QString old = readText(scalar(db, QStringLiteral("SELECT \"Baumart\" FROM \"Baumarten\" WHERE \"ID\" = ?"), {*id}));
        execSql(db, QStringLiteral("UPDATE \"Baumarten\" SET \"Baumart\" = ?, \"Laubwald\" = ? WHERE \"ID\" = ?"),
                {name, flag, *id});
        if (old != name) {
            message = QStringLiteral("Die Baumart wurde von %1 auf %2 geändert. Die Änderung wird in allen Buchungen übernommen")
                          .arg(old, name);
            // Compared as the column compares, so bookings typed in another case follow too.
            for (const QString& table : speciesTables())
                execSql(db, QStringLiteral("UPDATE %1 SET \"Baumart\" = ? WHERE \"Baumart\" = ?").arg(quoted(table)),
                        {name, old});
        }
    } else {
        execSql(db, QStringLiteral("INSERT INTO \"Baumarten\"(\"Baumart\", \"Laubwald\") VALUES (?, ?)"), {name, flag});
        message = QStringLiteral("Sie haben eine neue Baumart eingegeben. Diese wird jetzt in die Stammdaten für Rindenabzug, "
                                 "Tagespreise, Messbeträge und Messzahlen eingetragen. Bitte tragen Sie dort die "
                                 "Rindenabzugswerte, Preise, Messbeträge und Messzahlen noch nach!");
        const QStringList baumart{QStringLiteral("Baumart")};
        insertZeroRow(db, QStringLiteral("Rindenabzug"), QStringLiteral("SK_"), {name}, baumart);
        // Quality "B": the row that also prices logs without a quality class.
        insertZeroRow(db, QStringLiteral("Tagespreise"), QStringLiteral("SK_"), {name, QStringLiteral("B")},
                      {QStringLiteral("Baumart"), QStringLiteral("Güte")});
        insertZeroRow(db, QStringLiteral("Messbeträge"), QStringLiteral("SK_"), {name}, baumart);
        insertZeroRow(db, QStringLiteral("Messzahlen"), QStringLiteral("GK_"), {name}, baumart);
    }
    guard.commit();
    masterDataChanged();
    if (!message.isEmpty())
        context.prompter.inform(message);
    return true;
}

QString loadQuality(const QSqlDatabase& db, qint32 id)
{
    return readText(scalar(db, QStringLiteral("SELECT \"Güteklasse\" FROM \"Güteklassen\" WHERE \"ID\" = ?"), {id}));
}

bool storeQuality(const AppContext& context, EditMode mode, std::optional<qint32> id, const QString& gueteklasse)
{
    const QSqlDatabase& db = context.db;
    const QString name = gueteklasse.trimmed();
    const bool editing = mode == EditMode::Aendern && id;
    const QString subject = QStringLiteral("die Güteklasse");
    QStringList reasons;
    if (name.isEmpty())
        reasons << QStringLiteral("...die Güteklasse angegeben werden muß.");
    if (auto r = widthReason(name, 5, subject))
        reasons << *r;
    if (auto r = columnNameReason(name, subject))
        reasons << *r;
    if (!name.isEmpty() && valueUsed(db, QualityTable, QStringLiteral("Güteklasse"), name, editing ? id : std::nullopt))
        reasons << QStringLiteral("...die Güteklasse bereits existiert.");
    if (!reasons.isEmpty()) {
        context.prompter.inform(gatheredRefusal(reasons));
        return false;
    }
    if (editing) {
        const QString old = loadQuality(db, *id);
        if (old != name) {
            context.prompter.inform(QStringLiteral("Sie haben die Güteklasse von %1 auf %2 geändert. Änderungen der Güteklasse "
                                                   "sind nicht erlaubt. Ggf. müssen Sie die Güteklasse löschen und nochmals "
                                                   "neu eingeben.")
                                        .arg(old, name));
            return false;
        }
        return true; // the name is the only field: nothing else to store
    }

    const QString column = QStringLiteral("GK_") + name;
    TransactionGuard guard(db);
    execSql(db, QStringLiteral("INSERT INTO \"Güteklassen\"(\"Güteklasse\") VALUES (?)"), {name});
    if (!schema::hasColumn(db, QStringLiteral("Messzahlen"), column))
        execSql(db, QStringLiteral("ALTER TABLE \"Messzahlen\" ADD COLUMN %1 SHORT INTEGER").arg(quoted(column)));
    execSql(db, QStringLiteral("UPDATE \"Messzahlen\" SET %1 = 100").arg(quoted(column)));
    guard.commit();
    masterDataChanged();
    context.prompter.inform(QStringLiteral("Sie haben eine neue Güteklasse eingegeben. Diese wird jetzt in die Stammdaten für "
                                           "Messzahlen eingetragen. Bitte tragen Sie dort die Messzahlen noch nach!"));
    return true;
}

} // namespace tarvik
