#include "masterdata/editmode.h"

#include "rules/masterdatalookup.h"
#include "store/sql.h"

namespace tarvik {
namespace {

bool isAsciiNameChar(QChar c)
{
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'_';
}

} // namespace

QString gatheredRefusal(const QStringList& reasons)
{
    return QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n") + reasons.join(u'\n');
}

std::optional<QString> columnNameReason(const QString& name, const QString& subject)
{
    for (const QChar c : name)
        if (!isAsciiNameChar(c))
            return QStringLiteral("...%1 nur aus Buchstaben (ohne Umlaute), Ziffern und '_' bestehen darf "
                                  "(keine Leerzeichen, Anführungszeichen, Punkte oder Semikolons).")
                .arg(subject);
    return std::nullopt;
}

std::optional<QString> valueNameReason(const QString& name, const QString& subject)
{
    for (const QChar c : name)
        if (!isAsciiNameChar(c) && c != u'.')
            return QStringLiteral("...%1 nur aus Buchstaben (ohne Umlaute), Ziffern, '_' und '.' bestehen darf "
                                  "(keine Leerzeichen, Anführungszeichen oder Semikolons).")
                .arg(subject);
    return std::nullopt;
}

void masterDataChanged() { MasterDataLookup::masterDataChanged(); }

bool valueUsed(const QSqlDatabase& db, const QString& table, const QString& column, const QString& value,
               std::optional<qint32> exceptId)
{
    QString sql = QStringLiteral("SELECT 1 FROM %1 WHERE %2 = ?").arg(quoted(table), quoted(column));
    QVariantList values{value};
    if (exceptId) {
        sql += QStringLiteral(" AND \"ID\" <> ?");
        values << *exceptId;
    }
    return scalar(db, sql + QStringLiteral(" LIMIT 1"), values).isValid();
}

} // namespace tarvik
