#include "devices/speciesmapping.h"

#include "common/text.h"
#include "common/textfile.h"
#include "store/sql.h"

#include <QDir>

namespace tarvik {
namespace {

const QString SpeciesLine = QStringLiteral("Baumart");
const QString ProductLine = QStringLiteral("Produkt");

// Lower case without accents, so "BJØRK", "Björk" and "bjork" meet one entry.
QString folded(const QString& name)
{
    QString out;
    out.reserve(name.size());
    for (QChar c : name.trimmed().toLower()) {
        switch (c.unicode()) {
        case u'ä': case u'å': case u'à': case u'á': case u'â': out += u'a'; break;
        case u'æ': out += QStringLiteral("ae"); break;
        case u'ö': case u'ø': case u'ó': case u'ô': out += u'o'; break;
        case u'ü': case u'ú': out += u'u'; break;
        case u'é': case u'è': out += u'e'; break;
        case u'ß': out += QStringLiteral("ss"); break;
        case u'-': case u'_': out += u' '; break;
        default: out += c;
        }
    }
    return out.simplified();
}

const QHash<QString, QString>& builtInTable()
{
    static const QHash<QString, QString> table = [] {
        const std::initializer_list<std::pair<const char*, const char*>> names{
            // German
            {"fichte", "FI"}, {"kiefer", "KI"}, {"föhre", "KI"}, {"tanne", "TA"}, {"weisstanne", "TA"}, {"lärche", "LA"},
            {"douglasie", "DO"}, {"buche", "BU"}, {"rotbuche", "BU"}, {"eiche", "EI"}, {"birke", "BI"}, {"erle", "ER"},
            {"esche", "ES"}, {"ahorn", "AH"}, {"pappel", "PA"}, {"aspe", "PA"}, {"weymouthskiefer", "WK"}, {"hainbuche", "HB"},
            {"linde", "LI"}, {"roteiche", "RE"}, {"laubholz", "AL"}, {"nadelholz", "AN"},
            // Swedish, Norwegian, Danish, Finnish
            {"gran", "FI"}, {"rødgran", "FI"}, {"torrgran", "FI"}, {"tørrgran", "FI"}, {"kuusi", "FI"},
            {"furu", "KI"}, {"tall", "KI"}, {"fyr", "KI"}, {"mänty", "KI"},
            {"björk", "BI"}, {"bjørk", "BI"}, {"birk", "BI"}, {"koivu", "BI"},
            {"ek", "EI"}, {"eik", "EI"}, {"eg", "EI"}, {"bok", "BU"}, {"bøk", "BU"}, {"bøg", "BU"},
            {"lärk", "LA"}, {"lerk", "LA"}, {"lærk", "LA"}, {"asp", "PA"}, {"osp", "PA"}, {"haapa", "PA"},
            {"al", "ER"}, {"or", "ER"}, {"older", "ER"}, {"ask", "ES"}, {"lönn", "AH"}, {"lønn", "AH"}, {"ær", "AH"},
            {"douglasgran", "DO"}, {"ädelgran", "TA"}, {"ædelgran", "TA"},
            {"löv", "AL"}, {"lauv", "AL"}, {"løv", "AL"}, {"lövträd", "AL"}, {"lauvtre", "AL"},
            // English
            {"spruce", "FI"}, {"norway spruce", "FI"}, {"pine", "KI"}, {"scots pine", "KI"}, {"fir", "TA"}, {"silver fir", "TA"},
            {"larch", "LA"}, {"douglas fir", "DO"}, {"beech", "BU"}, {"oak", "EI"}, {"birch", "BI"}, {"alder", "ER"},
            {"ash", "ES"}, {"maple", "AH"}, {"sycamore", "AH"}, {"aspen", "PA"}, {"poplar", "PA"}, {"hornbeam", "HB"},
            {"lime", "LI"}, {"broadleaf", "AL"}, {"hardwood", "AL"}, {"conifer", "AN"}, {"softwood", "AN"},
        };
        QHash<QString, QString> t;
        for (const auto& [name, code] : names)
            t.insert(folded(QString::fromUtf8(name)), QString::fromLatin1(code));
        return t;
    }();
    return table;
}

} // namespace

QString builtInSpeciesCode(const QString& name) { return builtInTable().value(folded(name)); }

QString masterSpeciesOf(const QSqlDatabase& db, const QString& codeOrText)
{
    const QString t = codeOrText.trimmed();
    if (t.isEmpty())
        return {};
    // Species are stored as "FI (Fichte)"; a code alone finds the row it opens.
    return readText(scalar(db, QStringLiteral("SELECT \"Baumart\" FROM \"Baumarten\" WHERE \"Baumart\" = ? OR upper(\"Baumart\") LIKE ? "
                                              "ORDER BY \"Baumart\" = ? DESC, \"Baumart\" LIMIT 1"),
                           {t, t.toUpper() + QStringLiteral(" (%"), t}));
}

HarvesterMapping rememberedHarvesterMapping(const QString& dataFolder)
{
    HarvesterMapping m;
    const TextFileResult file = readTextFile(QDir(dataFolder).filePath(QLatin1String(HarvesterMappingFile)));
    if (!file.ok)
        return m;
    for (const QString& line : file.lines) {
        const QStringList f = line.split(u'\t');
        if (f.size() >= 3 && f[0] == SpeciesLine && !f[1].isEmpty()) {
            m.species.insert(f[1], f[2]);
        } else if (f.size() >= 4 && f[0] == ProductLine && !f[1].isEmpty()) {
            if (f[2] == u"N")
                m.excludedProducts.insert(f[1]);
            if (!f[3].isEmpty())
                m.productQuality.insert(f[1], f[3]);
        }
    }
    return m;
}

QString rememberHarvesterMapping(const QString& dataFolder, const HarvesterMapping& mapping)
{
    HarvesterMapping all = rememberedHarvesterMapping(dataFolder);
    for (auto it = mapping.species.cbegin(); it != mapping.species.cend(); ++it)
        all.species.insert(it.key(), it.value());
    // A product of this import that is neither excluded nor classed loses its earlier entry.
    for (const QString& name : mapping.products) {
        all.excludedProducts.remove(name);
        all.productQuality.remove(name);
    }
    all.excludedProducts.unite(mapping.excludedProducts);
    for (auto it = mapping.productQuality.cbegin(); it != mapping.productQuality.cend(); ++it)
        all.productQuality.insert(it.key(), it.value());

    QStringList speciesNames = all.species.keys();
    speciesNames.sort();
    QStringList lines;
    for (const QString& name : speciesNames)
        lines << SpeciesLine + u'\t' + name + u'\t' + all.species.value(name);
    QSet<QString> productSet(all.excludedProducts);
    for (auto it = all.productQuality.cbegin(); it != all.productQuality.cend(); ++it)
        productSet.insert(it.key());
    QStringList productNames(productSet.cbegin(), productSet.cend());
    productNames.sort();
    for (const QString& name : productNames)
        lines << ProductLine + u'\t' + name + u'\t' + (all.excludedProducts.contains(name) ? u'N' : u'J') + u'\t'
                     + all.productQuality.value(name);
    const TextFileResult written = writeTextFile(QDir(dataFolder).filePath(QLatin1String(HarvesterMappingFile)), lines);
    return written.ok ? QString() : written.error;
}

HarvesterMapping proposedHarvesterMapping(const QSqlDatabase& db, const QString& dataFolder, const QStringList& speciesNames,
                                          const QStringList& productNames)
{
    const HarvesterMapping remembered = rememberedHarvesterMapping(dataFolder);
    HarvesterMapping m;
    m.products = productNames;
    for (const QString& name : speciesNames) {
        QString species;
        if (remembered.species.contains(name))
            species = masterSpeciesOf(db, remembered.species.value(name));
        else
            species = masterSpeciesOf(db, builtInSpeciesCode(name));
        m.species.insert(name, species);
    }
    for (const QString& name : productNames) {
        if (remembered.excludedProducts.contains(name))
            m.excludedProducts.insert(name);
        if (remembered.productQuality.contains(name))
            m.productQuality.insert(name, remembered.productQuality.value(name));
    }
    return m;
}

} // namespace tarvik
