#include "eldat/codes.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>

namespace tarvik::eldat {
namespace {

// Lower case, "ß" as "ss", single blanks: "Roßkastanie" and "Rosskastanie" are one name.
QString nameKey(const QString& text)
{
    QString key = text.simplified().toLower();
    key.replace(QStringLiteral("ß"), QStringLiteral("ss"));
    return key;
}

struct Pair {
    const char* from;
    const char* to;
};

QHash<QString, QString> table(std::initializer_list<Pair> pairs, bool names)
{
    QHash<QString, QString> h;
    for (const Pair& p : pairs) {
        const QString from = QString::fromUtf8(p.from);
        h.insert(names ? nameKey(from) : from, QString::fromLatin1(p.to));
    }
    return h;
}

// The codes of the species list a new database starts with.
const QHash<QString, QString>& programCodes()
{
    static const QHash<QString, QString> h = table(
        {{"EI", "ei"},  {"BU", "bu"},  {"HB", "hbu"}, {"ES", "es"},  {"AH", "ah"},  {"UL", "ul"},  {"LI", "li"},
         {"NB", "nus"}, {"EK", "eka"}, {"KR", "kir"}, {"WO", "wob"}, {"RE", "rei"}, {"BI", "bi"},  {"ER", "erl"},
         {"AK", "akz"}, {"WE", "wei"}, {"EB", "vb"},  {"RK", "rka"}, {"PA", "pap"}, {"AL", "lbh"}, {"KI", "ki"},
         {"LA", "ela"}, {"WK", "wki"}, {"FI", "fi"},  {"DO", "dgl"}, {"TA", "ta"},  {"AN", "ndh"}},
        false);
    return h;
}

// Names of single species, as the standard titles them, and the common names of the same trees.
const QHash<QString, QString>& speciesNames()
{
    static const QHash<QString, QString> h = table(
        {{"Gemeine Fichte", "gfi"}, {"Omorikafichte", "ofi"}, {"Sitkafichte", "sfi"}, {"Schwarzfichte", "swfi"},
         {"Engelmannsfichte", "efi"}, {"Blaufichte", "bfi"}, {"Stechfichte", "bfi"}, {"Weißfichte", "wfi"},
         {"Gemeine Kiefer", "ki"}, {"Waldkiefer", "ki"}, {"Bergkiefer", "bki"}, {"Schwarzkiefer", "ski"},
         {"Rumelische Kiefer", "rki"}, {"Zirbelkiefer", "zki"}, {"Zirbe", "zki"}, {"Weymouthskiefer", "wki"},
         {"Murraykiefer", "mki"}, {"Gelbkiefer", "gki"}, {"Weißtanne", "wta"}, {"Amerikanische Edeltanne", "ata"},
         {"Coloradotanne", "cta"}, {"Küstentanne", "kta"}, {"Nikkotanne", "nita"}, {"Nordmannstanne", "nota"},
         {"Veitchtanne", "vta"}, {"Douglasie", "dgl"}, {"Europäische Lärche", "ela"}, {"Japanische Lärche", "jla"},
         {"Lebensbaum", "lb"}, {"Hemlockstanne", "ht"}, {"Mammutbaum", "mam"}, {"Eibe", "eib"},
         {"Lawsonszypresse", "sz"}, {"Buche", "bu"}, {"Rotbuche", "bu"}, {"Stieleiche", "sei"},
         {"Traubeneiche", "tei"}, {"Roteiche", "rei"}, {"Zerreiche", "zei"}, {"Sumpfeiche", "suei"},
         {"Gemeine Esche", "ges"}, {"Weißesche", "wes"}, {"Hainbuche", "hbu"}, {"Weißbuche", "hbu"},
         {"Bergahorn", "bah"}, {"Spitzahorn", "sah"}, {"Feldahorn", "fah"}, {"Eschenblättriger Ahorn", "eah"},
         {"Silberahorn", "siah"}, {"Winterlinde", "wli"}, {"Sommerlinde", "sli"}, {"Robinie", "rob"},
         {"Akazie", "akz"}, {"Bergulme", "bul"}, {"Feldulme", "ful"}, {"Flatterulme", "flu"},
         {"Rosskastanie", "rka"}, {"Edelkastanie", "eka"}, {"Weißer Maulbeerbaum", "mau"}, {"Walnuss", "wnu"},
         {"Schwarznuss", "snu"}, {"Stechpalme", "ste"}, {"Platane", "pla"}, {"Ahornblättrige Platane", "apl"},
         {"Gemeine Birke", "gbi"}, {"Sandbirke", "gbi"}, {"Moorbirke", "mbi"}, {"Schwarzerle", "ser"},
         {"Roterle", "ser"}, {"Weißerle", "wer"}, {"Grauerle", "wer"}, {"Grünerle", "ger"}, {"Aspe", "zpa"},
         {"Zitterpappel", "zpa"}, {"Europäische Schwarzpappel", "spa"}, {"Graupappel", "gpa"},
         {"Silberpappel", "wpa"}, {"Weißpappel", "wpa"}, {"Balsampappel", "bpa"}, {"Vogelbeere", "vb"},
         {"Eberesche", "vb"}, {"Elsbeere", "els"}, {"Speierling", "spe"}, {"Echte Mehlbeere", "meb"},
         {"Mehlbeere", "meb"}, {"Salweide", "swei"}, {"Gewöhnliche Traubenkirsche", "gtk"},
         {"Traubenkirsche", "gtk"}, {"Vogelkirsche", "vk"}, {"Wildkirsche", "vk"},
         {"Spätblühende Traubenkirsche", "stk"}, {"Zwetschge", "zwe"}, {"Hickory", "hic"},
         {"Faulbaum", "fau"}, {"Holzapfel", "wap"}, {"Wildapfel", "wap"}, {"Holzbirne", "wbi"},
         {"Wildbirne", "wbi"}, {"Baumhasel", "has"}, {"Götterbaum", "got"}},
        true);
    return h;
}

// Names of a genus or a group: they decide only when the code is not the program's own.
const QHash<QString, QString>& groupNames()
{
    static const QHash<QString, QString> h = table(
        {{"Nadelholz", "ndh"}, {"Anderes Nadelholz", "ndh"}, {"Sonstiges Nadelholz", "ndh"},
         {"Sonstige Nadelbäume", "sonb"}, {"Fichte", "fi"}, {"Kiefer", "kie"}, {"Tanne", "ta"}, {"Lärche", "la"},
         {"Eiche", "ei"}, {"Esche", "es"}, {"Ahorn", "ah"}, {"Linde", "li"}, {"Ulme", "ul"}, {"Kastanie", "ka"},
         {"Nussbaum", "nus"}, {"Birke", "bi"}, {"Erle", "erl"}, {"Pappel", "pap"}, {"Weide", "wei"},
         {"Kirsche", "kir"}, {"Wildobst", "wob"}, {"Laubholz", "lbh"}, {"Anderes Laubholz", "lbh"},
         {"Sonstiges Laubholz", "lbh"}, {"Sonstiges Hartlaubholz", "slbh"}, {"Hartlaubholz", "slbh"},
         {"Sonstiges Weichlaubholz", "slbw"}, {"Weichlaubholz", "slbw"}, {"Fichte/Tanne", "fita"}},
        true);
    return h;
}

} // namespace

std::optional<QString> speciesCode(const QString& species)
{
    const QString text = species.trimmed();
    const qsizetype open = text.indexOf(u'(');
    const QString code = (open < 0 ? text : text.left(open)).trimmed().toUpper();
    QString name = open < 0 ? text : text.mid(open + 1);
    if (name.endsWith(u')'))
        name.chop(1);
    const QString key = nameKey(name);

    if (const auto it = speciesNames().find(key); it != speciesNames().end())
        return *it;
    if (const auto it = programCodes().find(code); it != programCodes().end())
        return *it;
    if (const auto it = groupNames().find(key); it != groupNames().end())
        return *it;
    return std::nullopt;
}

std::optional<QString> qualityCode(const QString& qualityClass)
{
    // "A_B", "AB" and "A/B" are one class; the standard titles "ch_ab" plainly "Qualität AB".
    QString key = qualityClass.trimmed().toUpper();
    key.remove(QRegularExpression(QStringLiteral("[\\s_/-]")));
    static const QHash<QString, QString> codes = table(
        {{"A", "a"}, {"AB", "ch_ab"}, {"B", "b"}, {"BC", "bc"}, {"C", "c"}, {"CD", "cd"}, {"D", "d"}}, false);
    if (const auto it = codes.find(key); it != codes.end())
        return *it;
    return std::nullopt;
}

std::optional<QString> diameterClassCode(const QString& diameterClass)
{
    static const QSet<QString> known{"d0",  "d1",  "d1a", "d1b", "d2",  "d2a", "d2b", "d3",  "d3a", "d3b", "d4",
                                     "d4a", "d4b", "d5",  "d5a", "d5b", "d6",  "d6a", "d6b", "d7",  "d8"};
    static const QRegularExpression pattern(QStringLiteral("^L([0-9][ab]?)$"), QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = pattern.match(diameterClass.trimmed());
    if (!m.hasMatch())
        return std::nullopt;
    const QString code = u'd' + m.captured(1).toLower();
    if (!known.contains(code))
        return std::nullopt;
    return code;
}

std::optional<AssortmentCodes> assortmentCodes(const QString& sorting, bool fixedLength)
{
    if (sorting == u"Stämme") // saw logs, measured in solid cubic metres under bark
        return AssortmentCodes{fixedLength ? QStringLiteral("fl") : QStringLiteral("st"), QStringLiteral("sg"),
                               QStringLiteral("fmo")};
    if (sorting == u"Pfähle") // counted by the piece; the standard has no grade for poles
        return AssortmentCodes{QStringLiteral("xy"), QStringLiteral("p"), QStringLiteral("stk")};
    if (sorting == u"Schichtholz") // short wood in stacked metres
        return AssortmentCodes{QStringLiteral("is"), QStringLiteral("ih"), QStringLiteral("rmm")};
    return std::nullopt;
}

} // namespace tarvik::eldat
