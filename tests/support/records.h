#pragma once
// Rows as a user would have typed them, for tests that need a harvest with lots and logs.
#include <QSqlDatabase>
#include <QString>

namespace tarvik::test {

qint32 addHarvest(const QSqlDatabase& db, qint32 hiebNr);
void addLot(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, const QString& sorting = QStringLiteral("Stämme"),
            const QString& settled = QStringLiteral("N"));
// A measured log with only what is typed; derived columns stay empty.
void addTypedLog(const QSqlDatabase& db, qint32 harvestId, qint32 lotNr, qint32 runningNr, const QString& species,
                 int diameter, double length, const QString& barkMode, int deduction = 0, int top = 0,
                 const QString& quality = QStringLiteral("B"), int beetle = 0);

} // namespace tarvik::test
