#include "rules/masterdatalookup.h"

#include "common/numbers.h"
#include "common/text.h"
#include "store/schema.h"
#include "store/sql.h"

#include <QAtomicInt>

namespace tarvik {
namespace {
QAtomicInt masterDataGeneration;
}

MasterDataLookup::MasterDataLookup(QSqlDatabase db) : m_db(std::move(db)), m_generation(masterDataGeneration.loadAcquire()) {}

void MasterDataLookup::masterDataChanged() { masterDataGeneration.fetchAndAddRelease(1); }

void MasterDataLookup::forgetIfChanged()
{
    const int now = masterDataGeneration.loadAcquire();
    if (now == m_generation)
        return;
    m_statements.clear();
    m_columns.clear();
    m_generation = now;
}

QSqlQuery& MasterDataLookup::prepared(const QString& sql)
{
    forgetIfChanged();
    auto it = m_statements.find(sql);
    if (it == m_statements.end()) {
        QSqlQuery q = prepareSql(m_db, sql);
        q.setForwardOnly(true);
        it = m_statements.insert(sql, q);
    }
    return *it;
}

std::optional<QVariant> MasterDataLookup::firstValue(const QString& sql, const QVariantList& values)
{
    QSqlQuery& q = prepared(sql);
    execPrepared(q, values);
    std::optional<QVariant> result;
    if (q.next())
        result = q.value(0);
    q.finish();
    return result;
}

QString MasterDataLookup::firstText(const QString& sql, const QVariantList& values)
{
    const std::optional<QVariant> v = firstValue(sql, values);
    return v ? readText(*v) : QString();
}

bool MasterDataLookup::hasColumn(const QString& table, const QString& column)
{
    if (!isSafeIdentifier(column))
        return false;
    forgetIfChanged();
    auto it = m_columns.find(table);
    if (it == m_columns.end())
        it = m_columns.insert(table, schema::columnNames(m_db, table));
    return it->contains(column, Qt::CaseInsensitive);
}

std::optional<double> MasterDataLookup::speciesValue(const QString& table, const QString& species, const QString& column)
{
    if (!hasColumn(table, column))
        return std::nullopt;
    const std::optional<QVariant> v = firstValue(
        QStringLiteral("SELECT %1 FROM %2 WHERE \"Baumart\" = ? ORDER BY \"ID\" LIMIT 1").arg(quoted(column), quoted(table)),
        {species});
    if (!v)
        return std::nullopt;
    return readNumber(*v);
}

std::optional<double> MasterDataLookup::dayPrice(const QString& species, const QString& quality, const QString& column)
{
    const QString table = QStringLiteral("Tagespreise");
    if (!hasColumn(table, column))
        return std::nullopt;
    const QString select = QStringLiteral("SELECT %1 FROM \"Tagespreise\" WHERE \"Baumart\" = ? ").arg(quoted(column));
    const std::optional<QVariant> v =
        quality.isEmpty()
            ? firstValue(select + QStringLiteral("AND (\"Güte\" = '' OR \"Güte\" = 'B') ORDER BY \"ID\" LIMIT 1"), {species})
            : firstValue(select + QStringLiteral("AND \"Güte\" = ? ORDER BY \"ID\" LIMIT 1"), {species, quality});
    if (!v)
        return std::nullopt;
    return readNumber(*v);
}

std::optional<double> MasterDataLookup::barkRangeDeduction(const QString& species, double diameter)
{
    const std::optional<QVariant> v = firstValue(
        QStringLiteral("SELECT \"Abzug_cm\" FROM \"Rindenabzug2\" WHERE \"Baumart\" = ? AND \"Stärke_von\" <= ? "
                       "AND \"Stärke_bis\" >= ? ORDER BY \"ID\" LIMIT 1"),
        {species, diameter, diameter});
    if (!v)
        return std::nullopt;
    return readNumber(*v);
}

QString MasterDataLookup::logClass(double diameter)
{
    return firstText(QStringLiteral("SELECT \"Klasse\" FROM \"Stärkeklassen_Stämme\" WHERE \"Durchm_oR_von\" <= ? "
                                    "AND \"Durchm_oR_bis\" >= ? ORDER BY \"Klasse\" DESC LIMIT 1"),
                     {diameter, diameter});
}

QString MasterDataLookup::heilbronnClass(int wholeMetres, double topDiameter)
{
    return firstText(QStringLiteral("SELECT \"Klasse\" FROM \"Stärkeklassen_Stämme_Heilbronn\" WHERE "
                                    "\"Zopfdurchmesser_cm\" >= ? AND \"Länge_m\" >= ? ORDER BY \"Klasse\" LIMIT 1"),
                     {topDiameter, wholeMetres});
}

QString MasterDataLookup::poleClass(double diameter, double length)
{
    return firstText(QStringLiteral("SELECT \"Klasse\" FROM \"Stärkeklassen_Pfähle\" WHERE \"Durchm_oR_von\" <= ? "
                                    "AND \"Durchm_oR_bis\" >= ? AND \"Mindestlänge_von_m\" <= ? "
                                    "AND \"Mindestlänge_bis_m\" >= ? ORDER BY \"Klasse\" DESC LIMIT 1"),
                     {diameter, diameter, length, length});
}

QString MasterDataLookup::stackedClass(double diameter)
{
    return firstText(QStringLiteral("SELECT \"Klasse\" FROM \"Stärkeklassen_Schichtholz\" WHERE \"Durchm_von\" <= ? "
                                    "AND \"Durchm_bis\" >= ? ORDER BY \"Klasse\" DESC LIMIT 1"),
                     {diameter, diameter});
}

std::optional<double> MasterDataLookup::poleEstimatedPrice(const QString& poleClass)
{
    const auto v = firstValue(QStringLiteral("SELECT \"Schätzpreis_je_St\" FROM \"Stärkeklassen_Pfähle\" WHERE \"Klasse\" = ? "
                                             "ORDER BY \"ID\" LIMIT 1"),
                              {poleClass});
    return v ? std::optional<double>(readNumber(*v)) : std::nullopt;
}

std::optional<double> MasterDataLookup::stackedEstimatedPrice(const QString& stackedClass)
{
    const auto v = firstValue(QStringLiteral("SELECT \"Schätzpreis_je_m3\" FROM \"Stärkeklassen_Schichtholz\" WHERE \"Klasse\" = ? "
                                             "ORDER BY \"ID\" LIMIT 1"),
                              {stackedClass});
    return v ? std::optional<double>(readNumber(*v)) : std::nullopt;
}

} // namespace tarvik
