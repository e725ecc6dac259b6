#include "devices/importedlog.h"

namespace tarvik {

QString deviceSpeciesCode(const QString& word)
{
    const QString w = word.trimmed().toUpper();
    // The devices and the service spell four species their own way.
    static const QList<std::pair<QString, QString>> Words{
        {QStringLiteral("KIE"), QStringLiteral("KI")}, {QStringLiteral("LÄ"), QStringLiteral("LA")},
        {QStringLiteral("LAE"), QStringLiteral("LA")}, {QStringLiteral("DGL"), QStringLiteral("DO")},
        {QStringLiteral("AHO"), QStringLiteral("AH")}};
    QString code = w;
    for (const auto& [from, to] : Words)
        if (w == from)
            code = to;
    static const QStringList Known{QStringLiteral("FI"), QStringLiteral("TA"), QStringLiteral("BU"),
                                   QStringLiteral("KI"), QStringLiteral("EI"), QStringLiteral("LA"),
                                   QStringLiteral("DO"), QStringLiteral("ES"), QStringLiteral("AH")};
    return Known.contains(code) ? code : QString();
}

} // namespace tarvik
