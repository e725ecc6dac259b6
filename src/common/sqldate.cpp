#include "common/sqldate.h"

#include <QStringList>

namespace tarvik {

QDate parseGermanDate(const QString& text)
{
    const QStringList parts = text.trimmed().split(u'.');
    if (parts.size() != 3 || parts[2].size() != 4)
        return {};
    bool okDay = false, okMonth = false, okYear = false;
    const int day = parts[0].toInt(&okDay);
    const int month = parts[1].toInt(&okMonth);
    const int year = parts[2].toInt(&okYear);
    if (!okDay || !okMonth || !okYear)
        return {};
    return QDate(year, month, day);
}

QString formatGermanDate(const QDate& date)
{
    return date.isValid() ? date.toString(QLatin1String(GermanDateFormat)) : QString();
}

QVariant sqlDateValue(const QString& germanDate)
{
    const QDate d = parseGermanDate(germanDate);
    return d.isValid() ? QVariant(d.toString(Qt::ISODate)) : QVariant(QMetaType(QMetaType::QString));
}

QString sqlDateLiteral(const QString& germanDate)
{
    const QDate d = parseGermanDate(germanDate);
    return d.isValid() ? u'\'' + d.toString(Qt::ISODate) + u'\'' : QStringLiteral("NULL");
}

QString germanDateFromSql(const QVariant& stored)
{
    if (stored.isNull())
        return {};
    const QString text = stored.toString().trimmed();
    QDate d = QDate::fromString(text.left(10), Qt::ISODate);
    if (!d.isValid())
        d = parseGermanDate(text);
    return formatGermanDate(d);
}

} // namespace tarvik
