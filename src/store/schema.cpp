#include "store/schema.h"

#include "store/sql.h"

#include <QSqlQuery>
#include <stdexcept>

namespace tarvik::schema {
namespace {

using T = ColumnType;

Column text(const char* name, int width) { return {QString::fromUtf8(name), T::Text, width}; }
Column col(const char* name, ColumnType type) { return {QString::fromUtf8(name), type, 0}; }
Column id() { return col("ID", T::Counter); }

QList<Index> indexes(std::initializer_list<std::pair<const char*, const char*>> list)
{
    QList<Index> out;
    for (const auto& [name, column] : list)
        out.append({QString::fromUtf8(name), QString::fromUtf8(column)});
    return out;
}

QList<Column> classColumns(const QStringList& classes, const QString& prefix, ColumnType type)
{
    QList<Column> out;
    for (const QString& c : classes)
        out.append({prefix + c, type, 0});
    return out;
}

Table species(const char* name, const QList<Column>& perClass)
{
    Table t{QString::fromUtf8(name), {text("Baumart", 22)}, indexes({{"baumart", "Baumart"}})};
    t.columns.append(perClass);
    t.columns.append(id());
    return t;
}

QList<Table> buildTables()
{
    const QList<Column> skShort = classColumns(defaultLogClasses(), QStringLiteral("SK_"), T::Short);
    const QList<Column> skMoney = classColumns(defaultLogClasses(), QStringLiteral("SK_"), T::Currency);
    const QList<Column> gkShort = classColumns(defaultQualityClasses(), QStringLiteral("GK_"), T::Short);

    Table tagespreise = species("Tagespreise", skMoney);
    tagespreise.columns.insert(1, text("Güte", 5));

    return {
        {QStringLiteral("Stärkeklassen_Stämme"),
         {text("Klasse", 6), col("Durchm_oR_von", T::Short), col("Durchm_oR_bis", T::Short), id()},
         indexes({{"klasse", "Klasse"}, {"durchm_or_von", "Durchm_oR_von"}, {"durchm_or_bis", "Durchm_oR_bis"}})},
        {QStringLiteral("Stärkeklassen_Stämme_Heilbronn"),
         {text("Klasse", 6), col("Zopfdurchmesser_cm", T::Short), col("Länge_m", T::Short), id()},
         indexes({{"klasse", "Klasse"}, {"zopfdurchmesser", "Zopfdurchmesser_cm"}, {"länge", "Länge_m"}})},
        {QStringLiteral("Stärkeklassen_Pfähle"),
         {text("Klasse", 6), col("Durchm_oR_von", T::Short), col("Durchm_oR_bis", T::Short),
          col("Mindestlänge_von_m", T::Short), col("Mindestlänge_bis_m", T::Short),
          col("Schätzpreis_je_St", T::Currency), id()},
         indexes({{"klasse", "Klasse"}, {"durchm_or_von", "Durchm_oR_von"}, {"durchm_or_bis", "Durchm_oR_bis"},
                  {"mindestlängevon", "Mindestlänge_von_m"}, {"mindestlängebis", "Mindestlänge_bis_m"}})},
        {QStringLiteral("Stärkeklassen_Schichtholz"),
         {text("Klasse", 6), col("Durchm_von", T::Short), col("Durchm_bis", T::Short),
          col("Schätzpreis_je_m3", T::Currency), id()},
         indexes({{"klasse", "Klasse"}, {"durchm_von", "Durchm_von"}, {"durchm_bis", "Durchm_bis"}})},
        {QStringLiteral("Baumarten"),
         {text("Baumart", 22), text("Laubwald", 1), id()},
         indexes({{"baumart", "Baumart"}, {"laubwald", "Laubwald"}})},
        species("Rindenabzug", skShort),
        {QStringLiteral("Rindenabzug2"),
         {text("Baumart", 22), col("Stärke_von", T::Short), col("Stärke_bis", T::Short), col("Abzug_cm", T::Short), id()},
         indexes({{"baumart", "Baumart"}, {"staerkevon", "Stärke_von"}, {"staerkebis", "Stärke_bis"}})},
        {QStringLiteral("Güteklassen"), {text("Güteklasse", 5), id()}, {}},
        species("Messbeträge", skMoney),
        tagespreise,
        species("Messzahlen", gkShort),
        {QStringLiteral("Hiebe"),
         {col("Hieb_Nr", T::Long), text("Jahr", 4), text("Selektiert", 1), text("Waldname", 30),
          text("Waldort", 50), col("Hiebfläche", T::Single), text("Hiebgrund", 20), text("Hiebart", 20),
          col("Hiebdatum_von", T::DateTime), col("Hiebdatum_bis", T::DateTime), col("Anzahl_Lose", T::Long),
          col("Stämme_Anzahl", T::Long), col("Stämme_Efm", T::Single), col("Stämme_Efm_je_Stück", T::Single),
          col("Pfähle_Anzahl", T::Long), col("Schichtholz_m3", T::Single), col("Schichtholz_Efm", T::Single),
          text("Teilverkauft", 1), text("Verkauft", 1), text("Waldbesitzer_Name", 30),
          text("Waldbesitzer_Straße", 30), text("Waldbesitzer_Wohnort", 30), text("Waldbesitzer_Tel", 15),
          text("Waldbesitzer_Sonst", 30), text("Bemerkung", 255), col("Harvester", T::Memo), id()},
         indexes({{"Jahr", "Jahr"}, {"Selektiert", "Selektiert"}, {"id", "ID"}})},
        {QStringLiteral("Lose"),
         {col("Los_Nr", T::Long), text("Sortierung", 11), col("Anzahl_Stämme", T::Long), col("Efm_oR", T::Single),
          col("Efm_je_Stamm", T::Single), col("Anzahl_Pfähle", T::Long), col("Efm_Schichtholz", T::Single),
          col("m3_Schichtholz", T::Single), text("Los_Bezeichnung", 15), text("Lagerort", 50),
          text("Anfahrt", 255), text("GPS_L", 10), text("GPS_B", 10), text("Vermessungsart", 20),
          text("Qualität", 30), col("Fixlänge", T::Single), col("Überlänge", T::Single),
          col("Preis_Art", T::Short), col("Holzpreis", T::Currency), col("Käferholzabschlag", T::Short),
          col("Erschwerniszuschlag", T::Short), col("Kosten_Einschlag", T::Currency),
          col("Kosten_Rücken", T::Currency), col("Pauschalpreis_efm", T::Currency),
          col("Pauschalpreis_G", T::Currency), col("Preis_berechnet", T::Currency),
          col("Preis_erhalten", T::Currency), text("Abgerechnet", 1), col("ReNr", T::Long),
          text("Abnehmer", 50), text("Bemerkung", 30), col("Kennung", T::Long), id()},
         indexes({{"losnr", "Los_Nr"}, {"kennung", "Kennung"}})},
        {QStringLiteral("Stämme"),
         {col("Los_Nr", T::Long), col("Laufende_Nr", T::Long), text("Baumart", 22),
          col("Stärke_gemessen", T::Short), text("Rindenabzugsart", 1), col("Rindenabzug", T::Short),
          col("Stärke_oR", T::Short), col("Länge_m", T::Single), col("Efm_oR", T::Single),
          text("Stärkeklasse", 6), text("Güteklasse", 5), col("Zopfdurchm_cm", T::Short),
          text("Klasse_Heilbronn", 5), col("Käferholz", T::Short), col("Holzpreis", T::Currency),
          col("Preis_berechnet", T::Currency), text("Bemerkung", 30), col("Kennung", T::Long), id()},
         indexes({{"losnr", "Los_Nr"}, {"baumart", "Baumart"}, {"stärkeklasse", "Stärkeklasse"},
                  {"güteklasse", "Güteklasse"}, {"särkeor", "Stärke_oR"}, {"länge", "Länge_m"},
                  {"efmor", "Efm_oR"}, {"käferholz", "Käferholz"}, {"kennung", "Kennung"}})},
        {QStringLiteral("Waldbesitzer"),
         {text("Besitzer", 30), text("Straße", 30), text("Wohnort", 30), text("Telefon", 15), text("Sonstiges", 30)},
         indexes({{"besitzer", "Besitzer"}})},
        {QStringLiteral("Pfähle"),
         {col("Los_Nr", T::Long), text("Baumart", 22), col("Stärke_mR", T::Short), col("Länge_m", T::Single),
          text("Stärkeklasse", 6), col("Anzahl", T::Long), col("Preis_je_Stück", T::Currency),
          col("Preis_berechnet", T::Currency), text("Bemerkung", 30), col("Kennung", T::Long), id()},
         indexes({{"losnr", "Los_Nr"}, {"baumart", "Baumart"}, {"stärkeklasse", "Stärkeklasse"},
                  {"anzahl", "Anzahl"}, {"stärkeor", "Stärke_mR"}, {"länge", "Länge_m"}, {"kennung", "Kennung"}})},
        {QStringLiteral("Schichtholz"),
         {col("Los_Nr", T::Long), text("Baumart", 22), col("Sektions_Nr", T::Long), col("Stärke", T::Short),
          col("Sektionslänge_m", T::Single), col("Sektionstiefe_m", T::Single), col("Sektionshöhe_m", T::Single),
          text("Stärkeklasse", 6), col("m3", T::Single), col("Efm", T::Single), col("Preis_je_Ster", T::Currency),
          col("Preis_berechnet", T::Currency), text("Bemerkung", 30), col("Kennung", T::Long), id()},
         indexes({{"losnr", "Los_Nr"}, {"baumart", "Baumart"}, {"stärkeklasse", "Stärkeklasse"},
                  {"stärke", "Stärke"}, {"m3", "m3"}, {"efm", "Efm"}, {"kennung", "Kennung"}})},
        {QStringLiteral("Rechnungen"),
         {text("Abnehmer", 50), text("Vor_Nachname", 30), text("Strasse", 30), text("Wohnort", 30),
          col("Datum", T::DateTime), col("ReNr", T::Long), col("Inhalt", T::Memo),
          col("CMA_Abgabe_Proz", T::Single), text("Kundeninfo", 30), col("MwSt_Proz", T::Single),
          col("Skonto_Proz", T::Single), col("Betrag", T::Currency), id()},
         indexes({{"abnehnmer", "Abnehmer"}, {"renr", "ReNr"}, {"datum", "Datum"}})},
        {QStringLiteral("Liste_Waldnamen"),
         {text("Waldname", 30), text("Waldort", 50), col("Fläche", T::Single)},
         indexes({{"waldname", "Waldname"}, {"waldort", "Waldort"}})},
        {QStringLiteral("Liste_Bemerkungen"), {text("Inhalt", 30)}, {}},
        {QStringLiteral("Liste_Abnehmer"), {text("Inhalt", 50)}, {}},
        {QStringLiteral("Liste_Lagerort"), {text("Inhalt", 50)}, {}},
        {QStringLiteral("Liste_Hiebgrund"), {text("Inhalt", 20)}, {}},
        {QStringLiteral("Liste_Hiebart"), {text("Inhalt", 20)}, {}},
        // The owner's own data for invoices and e-invoices: one row.
        {QStringLiteral("Eigene_Angaben"),
         {text("Name", 60), text("Strasse", 60), text("PLZ", 10), text("Ort", 40), text("Land", 2), text("Kontakt", 60),
          text("Telefon", 30), text("EMail", 80), text("Steuernummer", 20), text("UStIdNr", 20), text("Lieferantennummer", 40),
          text("IBAN", 34), text("BIC", 11), text("Bank", 60), text("Besteuerung", 10), id()},
         {}},
        // Buyers with their structured address, by the short name invoices and lots carry.
        {QStringLiteral("Abnehmerdaten"),
         {text("Kurzname", 50), text("Name", 60), text("Strasse", 60), text("PLZ", 10), text("Ort", 40), text("Land", 2),
          text("UStIdNr", 20), text("Referenz", 60), text("EMail", 80), id()},
         indexes({{"kurzname", "Kurzname"}})},
        // What an invoice carries beyond its row: the date of supply and the days of the cash discount.
        {QStringLiteral("Rechnungsangaben"),
         {col("ReNr", T::Long), col("Leistungsdatum", T::DateTime), col("Skonto_Tage", T::Short), id()},
         indexes({{"renr", "ReNr"}})},
    };
}

} // namespace

const Column* Table::column(const QString& columnName) const
{
    for (const Column& c : columns)
        if (c.name == columnName)
            return &c;
    return nullptr;
}

const QStringList& defaultLogClasses()
{
    static const QStringList classes{QStringLiteral("L0"), QStringLiteral("L1a"), QStringLiteral("L1b"),
                                     QStringLiteral("L2a"), QStringLiteral("L2b"), QStringLiteral("L3a"),
                                     QStringLiteral("L3b"), QStringLiteral("L4"), QStringLiteral("L5"),
                                     QStringLiteral("L6")};
    return classes;
}

const QStringList& defaultQualityClasses()
{
    static const QStringList classes{QStringLiteral("A"), QStringLiteral("A_B"), QStringLiteral("B"),
                                     QStringLiteral("B_C"), QStringLiteral("C"), QStringLiteral("C_D"),
                                     QStringLiteral("D")};
    return classes;
}

const QList<Table>& tables()
{
    static const QList<Table> all = buildTables();
    return all;
}

const Table& table(const QString& name)
{
    for (const Table& t : tables())
        if (t.name == name)
            return t;
    throw std::out_of_range("unknown table");
}

QString typeWord(ColumnType type)
{
    switch (type) {
    case T::Text: return QStringLiteral("TEXT");
    case T::Memo: return QStringLiteral("MEMO");
    case T::Short: return QStringLiteral("SHORT");
    case T::Long: return QStringLiteral("LONG");
    case T::Single: return QStringLiteral("SINGLE");
    case T::Currency: return QStringLiteral("CURRENCY");
    case T::DateTime: return QStringLiteral("DATETIME");
    case T::Counter: return QStringLiteral("COUNTER");
    }
    return {};
}

QString columnDefinition(const Column& c)
{
    const QString name = quoted(c.name);
    switch (c.type) {
    case T::Text:
        // The width is enforced here as a safety net; entry fields keep within it first.
        return QStringLiteral("%1 TEXT (%2) COLLATE NOCASE CONSTRAINT %3 CHECK (length(%1) <= %2)")
            .arg(name)
            .arg(c.width)
            .arg(quoted(c.name + QStringLiteral("_höchstens_%1_Zeichen").arg(c.width)));
    case T::Memo: return name + QStringLiteral(" MEMO TEXT COLLATE NOCASE");
    case T::Short: return name + QStringLiteral(" SHORT INTEGER");
    case T::Long: return name + QStringLiteral(" LONG INTEGER");
    case T::Single: return name + QStringLiteral(" SINGLE REAL");
    case T::Currency: return name + QStringLiteral(" CURRENCY REAL");
    case T::DateTime: return name + QStringLiteral(" DATETIME TEXT");
    case T::Counter: return name + QStringLiteral(" INTEGER PRIMARY KEY AUTOINCREMENT");
    }
    return name;
}

QString createTableSql(const Table& t)
{
    QStringList defs;
    for (const Column& c : t.columns)
        defs << columnDefinition(c);
    return QStringLiteral("CREATE TABLE %1 (%2)").arg(quoted(t.name), defs.join(QStringLiteral(", ")));
}

QString indexName(const QString& table, const QString& index) { return table + u'_' + index; }

QString createIndexSql(const QString& table, const Index& index)
{
    return QStringLiteral("CREATE INDEX IF NOT EXISTS %1 ON %2(%3)")
        .arg(quoted(indexName(table, index.name)), quoted(table), quoted(index.column));
}

const QList<OwnIndex>& ownIndexes()
{
    static const QList<OwnIndex> indexes{
        // Covers the per-lot sums of every store, so they never read the table's rows.
        {QStringLiteral("tarvik_stämme_los_summen"), QStringLiteral("Stämme"),
         {QStringLiteral("Kennung"), QStringLiteral("Los_Nr"), QStringLiteral("Efm_oR"), QStringLiteral("Holzpreis"),
          QStringLiteral("Preis_berechnet")},
         QStringLiteral("tarvik_stämme_hieb_los")},
        {QStringLiteral("tarvik_stämme_hieb_nr"), QStringLiteral("Stämme"), {QStringLiteral("Kennung"), QStringLiteral("Laufende_Nr")}, {}},
    };
    return indexes;
}

QString createOwnIndexSql(const OwnIndex& index)
{
    QStringList columns;
    for (const QString& c : index.columns)
        columns << quoted(c);
    return QStringLiteral("CREATE INDEX IF NOT EXISTS %1 ON %2(%3)")
        .arg(quoted(index.name), quoted(index.table), columns.join(QStringLiteral(", ")));
}

bool hasTable(const QSqlDatabase& db, const QString& table)
{
    return scalar(db, QStringLiteral("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ? COLLATE NOCASE"),
                  {table}).isValid();
}

namespace {

// One column of a PRAGMA's rows about a table or an index, in order.
QStringList pragmaColumn(const QSqlDatabase& db, const char* pragma, const QString& name, int column)
{
    QStringList values;
    QSqlQuery q = execSql(db, QStringLiteral("PRAGMA %1(%2)").arg(QLatin1String(pragma), quoted(name)));
    while (q.next())
        values << q.value(column).toString();
    return values;
}

} // namespace

QStringList columnNames(const QSqlDatabase& db, const QString& table) { return pragmaColumn(db, "table_info", table, 1); }

bool hasColumn(const QSqlDatabase& db, const QString& table, const QString& column)
{
    return columnNames(db, table).contains(column, Qt::CaseInsensitive);
}

QStringList indexColumns(const QSqlDatabase& db, const QString& index) { return pragmaColumn(db, "index_info", index, 2); }

void createTableWithIndexes(const QSqlDatabase& db, const Table& t)
{
    execSql(db, createTableSql(t));
    for (const Index& index : t.indexes)
        execSql(db, createIndexSql(t.name, index));
}

void addColumn(const QSqlDatabase& db, const QString& table, const Column& column)
{
    execSql(db, QStringLiteral("ALTER TABLE %1 ADD COLUMN %2").arg(quoted(table), columnDefinition(column)));
}

} // namespace tarvik::schema
