#pragma once
// The master data the rules read: class tables, bark tables and price tables. Statements are
// prepared once per lookup; class names only reach SQL as checked column names.
#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <optional>

namespace tarvik {

class MasterDataLookup {
public:
    explicit MasterDataLookup(QSqlDatabase db);

    // Value of the column of the species' first row in a per-species table (`Rindenabzug`,
    // `Messbeträge`, `Messzahlen`); nullopt when the species has no row or the table no such
    // column. A null value reads as 0.
    std::optional<double> speciesValue(const QString& table, const QString& species, const QString& column);
    // The day price of species and quality for the class column; an empty quality takes the
    // rows with no quality or quality "B".
    std::optional<double> dayPrice(const QString& species, const QString& quality, const QString& column);
    // `Abzug_cm` of the first `Rindenabzug2` range holding the measured diameter.
    std::optional<double> barkRangeDeduction(const QString& species, double diameter);

    // Class lookups; "" when none matches. Bounds are inclusive; where two ranges share a bound
    // the class whose name sorts last wins (the Heilbronn table takes the first in name order).
    QString logClass(double diameter);
    QString heilbronnClass(int wholeMetres, double topDiameter);
    QString poleClass(double diameter, double length);
    QString stackedClass(double diameter);
    std::optional<double> poleEstimatedPrice(const QString& poleClass);
    std::optional<double> stackedEstimatedPrice(const QString& stackedClass);

    // Whether the table has the column (names compared as the engine compares them).
    bool hasColumn(const QString& table, const QString& column);

    // The master data editors call this after every change: each lookup, open ones included,
    // then forgets its columns and statements, so a new or dropped class column counts at once.
    static void masterDataChanged();

private:
    void forgetIfChanged();
    QSqlQuery& prepared(const QString& sql);
    std::optional<QVariant> firstValue(const QString& sql, const QVariantList& values);
    QString firstText(const QString& sql, const QVariantList& values);

    QSqlDatabase m_db;
    QHash<QString, QSqlQuery> m_statements;
    QHash<QString, QStringList> m_columns;
    int m_generation = 0;
};

} // namespace tarvik
