#include "harvests/filter.h"

#include "common/sqldate.h"
#include "store/sql.h"

#include <QSqlQuery>

namespace tarvik {

QString HarvestFilter::whereClause() const
{
    return condition.isEmpty() ? QString() : QStringLiteral(" where ") + condition;
}

QString HarvestFilter::andClause() const
{
    return condition.isEmpty() ? QString() : QStringLiteral(" and (") + condition + u')';
}

HarvestFilter harvestFilter(int kind, std::optional<qint32> currentHarvest, const Einstellungen& settings)
{
    HarvestFilter f;
    switch (static_cast<HarvestScope>(kind)) {
    case HarvestScope::Selektiert:
        f.condition = QStringLiteral("Selektiert = 'X'");
        break;
    case HarvestScope::Aktuell:
        f.condition = QStringLiteral("Hiebe.ID = ?");
        f.values << (currentHarvest ? QVariant(*currentHarvest) : QVariant(QMetaType(QMetaType::Int)));
        break;
    case HarvestScope::Unverkauft:
        f.condition = QStringLiteral("Teilverkauft = 'N' and Verkauft = 'N'");
        break;
    case HarvestScope::Teilverkauft:
        f.condition = QStringLiteral("Teilverkauft = 'J' and Verkauft = 'N'");
        break;
    case HarvestScope::Verkauft:
        f.condition = QStringLiteral("Verkauft = 'J'");
        break;
    case HarvestScope::Alle:
        break;
    }
    const int mode = settings.zahl[RangeModeSlot];
    if (mode == 0)
        return f;
    QString range;
    if (mode == 1) {
        range = QStringLiteral("Jahr >= ? and Jahr <= ?");
        f.values << settings.text[YearFromSlot] << settings.text[YearToSlot];
    } else if (mode == 2) {
        // As the range has always been read: without outer parentheses, "and" before "or".
        range = QStringLiteral("(Hiebdatum_von <= ? and Hiebdatum_von >= ?) or (Hiebdatum_bis >= ? and Hiebdatum_bis <= ?)");
        const QVariant from = sqlDateValue(settings.text[DateFromSlot]);
        const QVariant to = sqlDateValue(settings.text[DateToSlot]);
        f.values << from << to << from << to;
    } else {
        return f;
    }
    f.condition = f.condition.isEmpty() ? range : f.condition + QStringLiteral(" and ") + range;
    return f;
}

std::optional<QString> rangeRefusal(const Einstellungen& settings)
{
    const int mode = settings.zahl[RangeModeSlot];
    if (mode == 1) {
        const QString from = settings.text[YearFromSlot];
        const QString to = settings.text[YearToSlot];
        if (from.size() != 4 || to.size() != 4)
            return QStringLiteral("die Jahre von... bis... 4-stellig sein müssen.");
        if (from > to)
            return QStringLiteral("das Jahr von... nicht größer sein darf als das Jahr bis...");
    } else if (mode == 2) {
        const QDate from = parseGermanDate(settings.text[DateFromSlot]);
        const QDate to = parseGermanDate(settings.text[DateToSlot]);
        if (!from.isValid() || !to.isValid())
            return QStringLiteral("das Datum von... und/oder das Datum bis... nicht korrekt ist.");
        if (from > to)
            return QStringLiteral("das Datum von... nicht neuer sein muß als das Datum bis...");
    }
    return std::nullopt;
}

bool checkRange(const Einstellungen& settings, Prompter& prompter)
{
    if (const auto reason = rangeRefusal(settings)) {
        prompter.inform(QStringLiteral("Die Liste kann nicht erstellt werden, weil ") + *reason);
        return false;
    }
    return true;
}

std::optional<QString> rangeNote(const Einstellungen& settings)
{
    const int mode = settings.zahl[RangeModeSlot];
    if ((mode != 1 && mode != 2) || rangeRefusal(settings))
        return std::nullopt;
    const int from = mode == 1 ? YearFromSlot : DateFromSlot;
    const int to = mode == 1 ? YearToSlot : DateToSlot;
    const QString first = settings.text[from].trimmed();
    const QString last = settings.text[to].trimmed();
    return first == last ? QStringLiteral("Nur Hiebe %1").arg(first) : QStringLiteral("Nur Hiebe %1–%2").arg(first, last);
}

void clearRange(Einstellungen& settings) { settings.zahl[RangeModeSlot] = 0; }

void selectOnly(const QSqlDatabase& db, const QList<qint32>& harvestIds)
{
    TransactionGuard guard(db);
    execSql(db, QStringLiteral("UPDATE Hiebe SET Selektiert = ''"));
    QSqlQuery mark = prepareSql(db, QStringLiteral("UPDATE Hiebe SET Selektiert = 'X' WHERE ID = ?"));
    for (qint32 id : harvestIds)
        execPrepared(mark, {id});
    guard.commit();
}

void selectAll(const QSqlDatabase& db, bool selected)
{
    execSql(db, QStringLiteral("UPDATE Hiebe SET Selektiert = ?"), {selected ? QStringLiteral("X") : QStringLiteral("")});
}

QList<qint32> selectedHarvests(const QSqlDatabase& db)
{
    QList<qint32> ids;
    QSqlQuery q = execSql(db, QStringLiteral("SELECT ID FROM Hiebe WHERE Selektiert = 'X' ORDER BY Hieb_Nr, ID"));
    while (q.next())
        ids << q.value(0).toInt();
    return ids;
}

QString markSelectedQuestion(int count)
{
    return QStringLiteral("Es sind %1 Hiebe selektiert. Sollen diese auch gleich markiert werden?").arg(count);
}

} // namespace tarvik
