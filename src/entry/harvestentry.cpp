#include "entry/harvestentry.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/text.h"
#include "common/textfile.h"
#include "store/records.h"
#include "store/rows.h"
#include "store/sql.h"
#include "store/textwidth.h"

#include <QDir>
#include <QSqlQuery>
#include <QSqlRecord>

namespace tarvik {
namespace {

const QString Refusal = QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n");

const char* const TotalColumns[] = {"Anzahl_Lose", "Stämme_Anzahl", "Stämme_Efm", "Stämme_Efm_je_Stück",
                                    "Pfähle_Anzahl", "Schichtholz_Efm", "Schichtholz_m3"};
constexpr int TotalDecimals[] = {0, 0, 3, 3, 0, 3, 3};

QString shown(const QVariant& value, int decimals)
{
    return value.isNull() ? QString() : formatDecimal(readNumber(value), decimals);
}

// The defaults file's nine lines in their order, mapped to the form.
std::array<QString*, 9> defaultFields(HarvestForm& f)
{
    return {&f.waldname, &f.waldort, &f.hiebgrund, &f.hiebart, &f.besitzerName,
            &f.besitzerStrasse, &f.besitzerWohnort, &f.besitzerTelefon, &f.besitzerSonstiges};
}

QString defaultsPath(const QString& dataFolder) { return QDir(dataFolder).filePath(QLatin1String(HarvestDefaultsFile)); }

bool numberTaken(const QSqlDatabase& db, qint32 number, std::optional<qint32> editedId)
{
    if (editedId)
        return scalar(db, QStringLiteral("SELECT 1 FROM \"Hiebe\" WHERE \"Hieb_Nr\" = ? AND \"ID\" <> ? LIMIT 1"), {number, *editedId}).isValid();
    return scalar(db, QStringLiteral("SELECT 1 FROM \"Hiebe\" WHERE \"Hieb_Nr\" = ? LIMIT 1"), {number}).isValid();
}

} // namespace

HarvestForm proposeNewHarvest(const QSqlDatabase& db, const Clock& clock, const QString& dataFolder)
{
    HarvestForm f;
    const QVariant max = scalar(db, QStringLiteral("SELECT max(\"Hieb_Nr\") FROM \"Hiebe\""));
    const qint32 highest = toLong(readNumber(max));
    f.hiebNr = QString::number(max.isNull() || highest == 999999 ? 1 : highest + 1);
    f.jahr = QString::number(clock.today().year());
    f.hiebflaeche = QStringLiteral("0,0000");
    f.teilverkauft = QStringLiteral("N");
    f.verkauft = QStringLiteral("N");
    const TextFileResult defaults = readTextFile(defaultsPath(dataFolder));
    if (defaults.ok) {
        const auto fields = defaultFields(f);
        for (size_t i = 0; i < fields.size() && i < size_t(defaults.lines.size()); ++i)
            *fields[i] = defaults.lines[qsizetype(i)];
    }
    return f;
}

HarvestForm loadHarvest(const QSqlDatabase& db, qint32 id)
{
    HarvestForm f;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT * FROM \"Hiebe\" WHERE \"ID\" = ?"), {id});
    if (!q.next())
        return f;
    const QSqlRecord r = q.record();
    auto text = [&r](const char* column) { return readText(r.value(QString::fromUtf8(column))); };
    f.hiebNr = text("Hieb_Nr");
    f.jahr = text("Jahr");
    f.waldname = text("Waldname");
    f.waldort = text("Waldort");
    f.hiebflaeche = formatDecimal(readNumber(r.value(QStringLiteral("Hiebfläche"))), 4);
    f.hiebgrund = text("Hiebgrund");
    f.hiebart = text("Hiebart");
    f.datumVon = germanDateFromSql(r.value(QStringLiteral("Hiebdatum_von")));
    f.datumBis = germanDateFromSql(r.value(QStringLiteral("Hiebdatum_bis")));
    f.bemerkung = text("Bemerkung");
    f.besitzerName = text("Waldbesitzer_Name");
    f.besitzerStrasse = text("Waldbesitzer_Straße");
    f.besitzerWohnort = text("Waldbesitzer_Wohnort");
    f.besitzerTelefon = text("Waldbesitzer_Tel");
    f.besitzerSonstiges = text("Waldbesitzer_Sonst");
    f.harvester = r.value(QStringLiteral("Harvester")).toString();
    for (size_t i = 0; i < f.totals.size(); ++i)
        f.totals[i] = shown(r.value(QString::fromUtf8(TotalColumns[i])), TotalDecimals[i]);
    f.teilverkauft = text("Teilverkauft");
    f.verkauft = text("Verkauft");
    return f;
}

std::optional<QString> checkHarvest(const QSqlDatabase& db, const HarvestForm& f, std::optional<qint32> editedId)
{
    QStringList reasons;
    const double number = readNumber(f.hiebNr);
    if (number < 1 || number > 999999)
        reasons << QStringLiteral("...die Hiebnummer zwischen 1 und 999999 eingestellt sein muß.");
    else if (numberTaken(db, toLong(number), editedId))
        reasons << QStringLiteral("...die Hiebnummer bereits existiert.");
    if (f.waldname.trimmed().isEmpty())
        reasons << QStringLiteral("...der Waldname angegeben werden muß.");
    const QDate from = parseGermanDate(f.datumVon);
    const QDate to = parseGermanDate(f.datumBis);
    // A date that cannot be read would silently store nothing; say so instead.
    if (!f.datumVon.trimmed().isEmpty() && !from.isValid())
        reasons << QStringLiteral("...das Hiebdatum von kein gültiges Datum (TT.MM.JJJJ) ist.");
    if (!f.datumBis.trimmed().isEmpty() && !to.isValid())
        reasons << QStringLiteral("...das Hiebdatum bis kein gültiges Datum (TT.MM.JJJJ) ist.");
    if (from.isValid() && to.isValid() && from > to)
        reasons << QStringLiteral("...das Hiebdatum von nicht später als das Hiebdatum bis sein darf.");
    // The texts as saveHarvest stores them; the woodland and owner lists have the same widths.
    reasons << widthReasons(QStringLiteral("Hiebe"),
                            {{QStringLiteral("Jahr"), f.jahr.trimmed(), QStringLiteral("das Jahr")},
                             {QStringLiteral("Waldname"), f.waldname.trimmed(), QStringLiteral("der Waldname")},
                             {QStringLiteral("Waldort"), f.waldort.trimmed(), QStringLiteral("der Waldort")},
                             {QStringLiteral("Hiebgrund"), f.hiebgrund.trimmed(), QStringLiteral("der Hiebgrund")},
                             {QStringLiteral("Hiebart"), f.hiebart.trimmed(), QStringLiteral("die Hiebart")},
                             {QStringLiteral("Bemerkung"), f.bemerkung.trimmed(), QStringLiteral("die Bemerkung")},
                             {QStringLiteral("Waldbesitzer_Name"), f.besitzerName.trimmed(), QStringLiteral("der Name des Waldbesitzers")},
                             {QStringLiteral("Waldbesitzer_Straße"), f.besitzerStrasse.trimmed(), QStringLiteral("die Straße des Waldbesitzers")},
                             {QStringLiteral("Waldbesitzer_Wohnort"), f.besitzerWohnort.trimmed(), QStringLiteral("der Wohnort des Waldbesitzers")},
                             {QStringLiteral("Waldbesitzer_Tel"), f.besitzerTelefon.trimmed(), QStringLiteral("die Telefonnummer des Waldbesitzers")},
                             {QStringLiteral("Waldbesitzer_Sonst"), f.besitzerSonstiges.trimmed(), QStringLiteral("die sonstige Angabe zum Waldbesitzer")}});
    if (reasons.isEmpty())
        return std::nullopt;
    return Refusal + reasons.join(u'\n');
}

qint32 saveHarvest(const QSqlDatabase& db, const HarvestForm& f, std::optional<qint32> editedId)
{
    TransactionGuard guard(db);
    QVariantList values{toLong(readNumber(f.hiebNr)), f.jahr.trimmed(), f.waldname.trimmed(), f.waldort.trimmed(),
                        readNumber(formatDecimalText(f.hiebflaeche, 4)), f.hiebgrund.trimmed(), f.hiebart.trimmed(),
                        sqlDateValue(f.datumVon), sqlDateValue(f.datumBis), f.bemerkung.trimmed(),
                        f.besitzerName.trimmed(), f.besitzerStrasse.trimmed(), f.besitzerWohnort.trimmed(),
                        f.besitzerTelefon.trimmed(), f.besitzerSonstiges.trimmed(), f.harvester};
    for (size_t i = 0; i < f.totals.size(); ++i)
        values << readNumber(f.totals[i]);
    values << f.teilverkauft << f.verkauft;

    QStringList columns{"Hieb_Nr", "Jahr", "Waldname", "Waldort", "Hiebfläche", "Hiebgrund", "Hiebart", "Hiebdatum_von",
                        "Hiebdatum_bis", "Bemerkung", "Waldbesitzer_Name", "Waldbesitzer_Straße", "Waldbesitzer_Wohnort",
                        "Waldbesitzer_Tel", "Waldbesitzer_Sonst", "Harvester"};
    for (const char* c : TotalColumns)
        columns << QString::fromUtf8(c);
    columns << QStringLiteral("Teilverkauft") << QStringLiteral("Verkauft");

    if (!editedId) {
        // A new harvest starts unmarked.
        columns << QStringLiteral("Selektiert");
        values << QStringLiteral(""); // empty, not NULL
    }
    const qint32 id = writeRow(db, QStringLiteral("Hiebe"), columns, values, editedId);

    if (!f.waldname.trimmed().isEmpty() && !woodland(db, f.waldname.trimmed()))
        execSql(db, QStringLiteral("INSERT INTO \"Liste_Waldnamen\"(\"Waldname\", \"Waldort\", \"Fläche\") VALUES (?, ?, ?)"),
                {f.waldname.trimmed(), f.waldort.trimmed(), readNumber(formatDecimalText(f.hiebflaeche, 4))});
    if (!f.besitzerName.trimmed().isEmpty() && !owner(db, f.besitzerName.trimmed()))
        execSql(db, QStringLiteral("INSERT INTO \"Waldbesitzer\"(\"Besitzer\", \"Straße\", \"Wohnort\", \"Telefon\", \"Sonstiges\") "
                                   "VALUES (?, ?, ?, ?, ?)"),
                {f.besitzerName.trimmed(), f.besitzerStrasse.trimmed(), f.besitzerWohnort.trimmed(),
                 f.besitzerTelefon.trimmed(), f.besitzerSonstiges.trimmed()});
    insertIntoLookupList(db, QStringLiteral("Liste_Hiebgrund"), f.hiebgrund.trimmed());
    insertIntoLookupList(db, QStringLiteral("Liste_Hiebart"), f.hiebart.trimmed());
    guard.commit();
    return id;
}

std::optional<qint32> storeHarvest(const AppContext& ctx, const HarvestForm& form, std::optional<qint32> editedId)
{
    if (const auto refusal = checkHarvest(ctx.db, form, editedId)) {
        ctx.prompter.inform(*refusal);
        return std::nullopt;
    }
    return saveHarvest(ctx.db, form, editedId);
}

DefaultsResult saveHarvestDefaults(const QString& dataFolder, const HarvestForm& form)
{
    HarvestForm copy = form;
    QStringList lines;
    for (const QString* field : defaultFields(copy))
        lines << *field;
    const TextFileResult written = writeTextFile(defaultsPath(dataFolder), lines);
    if (!written.ok)
        return {false, written.error};
    return {true, QStringLiteral("Die Standardwerte (Waldname, Hiebgrund, Hiebart und Waldbesitzer) wurden als Standard gesichert und werden ab sofort bei jeder Hieb-Neueingabe als Standardwerte vorgegeben.")};
}

std::optional<WoodlandEntry> woodland(const QSqlDatabase& db, const QString& name)
{
    // Names are compared as users see them: "Eichwald" and "EICHWALD" are one woodland.
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Waldname\", \"Waldort\", \"Fläche\" FROM \"Liste_Waldnamen\""));
    while (q.next())
        if (readText(q.value(0)).compare(name.trimmed(), Qt::CaseInsensitive) == 0)
            return WoodlandEntry{readText(q.value(1)), formatDecimal(readNumber(q.value(2)), 4)};
    return std::nullopt;
}

std::optional<OwnerEntry> owner(const QSqlDatabase& db, const QString& name)
{
    QSqlQuery q = execSql(db, QStringLiteral("SELECT \"Besitzer\", \"Straße\", \"Wohnort\", \"Telefon\", \"Sonstiges\" FROM \"Waldbesitzer\""));
    while (q.next())
        if (readText(q.value(0)).compare(name.trimmed(), Qt::CaseInsensitive) == 0)
            return OwnerEntry{readText(q.value(1)), readText(q.value(2)), readText(q.value(3)), readText(q.value(4))};
    return std::nullopt;
}

} // namespace tarvik
