// eigene-angaben and abnehmer: the seller's own data and a buyer's structured address, shown or
// set field by field (FELD=WERT; an empty value clears the field), for scripts and e-invoices.
#include "cli/commands/all.h"
#include "parties/parties.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

using namespace parties;

// The FELD=WERT pairs; nothing when one of them has no "=".
std::optional<QList<std::pair<QString, QString>>> assignments(const QStringList& words)
{
    QList<std::pair<QString, QString>> pairs;
    for (const QString& word : words) {
        const qsizetype eq = word.indexOf(u'=');
        if (eq <= 0)
            return std::nullopt;
        pairs.append({word.left(eq).trimmed().toLower(), word.mid(eq + 1)});
    }
    return pairs;
}

QString keyList(const QList<Field>& fields, bool withRegime)
{
    QStringList keys;
    for (const Field& f : fields)
        keys << QString::fromUtf8(f.key);
    if (withRegime)
        keys << QStringLiteral("besteuerung");
    return keys.join(u' ');
}

template <typename Data>
int showOrSet(const CommandContext& context, Data data, const QList<Field>& fields, bool withRegime,
              const QList<std::pair<QString, QString>>& pairs, bool (*store)(const AppContext&, const Data&))
{
    if (pairs.isEmpty()) {
        for (const Field& f : fields)
            context.io.print(QStringLiteral("%1\t%2").arg(QString::fromUtf8(f.key), fieldValue(data, QString::fromUtf8(f.key))));
        if (withRegime)
            context.io.print(QStringLiteral("besteuerung\t%1").arg(fieldValue(data, QStringLiteral("besteuerung"))));
        return Success;
    }
    for (const auto& [key, value] : pairs) {
        QString why;
        if (!setField(data, key, value, &why)) {
            context.prompter.inform(why + QStringLiteral("\nFelder: ") + keyList(fields, withRegime));
            return Refused;
        }
    }
    const SessionContext core(context);
    const AppContext& app = core.app();
    if (!store(app, data))
        return Refused;
    context.io.print(QStringLiteral("Gespeichert."));
    return Success;
}

class EigeneAngabenCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("eigene-angaben"); }
    QString synopsis() const override { return QStringLiteral("[FELD=WERT ...]"); }
    QString summary() const override
    {
        return QStringLiteral("die eigenen Angaben für Rechnungen zeigen oder ändern; Felder:\n") + keyList(ownDataFields(), true) +
               QStringLiteral("\n(besteuerung: regel, pauschal24 oder klein19; ein leerer Wert löscht das Feld)");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("FELD=WERT"), QStringLiteral("zu ändernde Felder"));
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        return assignments(parser.positionalArguments()) ? QString() : QStringLiteral("eigene-angaben erwartet Angaben der Form FELD=WERT.");
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        return showOrSet<OwnData>(context, loadOwnData(context.session->database->shared()), ownDataFields(), true,
                                  *assignments(parser.positionalArguments()), &storeOwnData);
    }
};

class AbnehmerCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("abnehmer"); }
    QString synopsis() const override { return QStringLiteral("KURZNAME [FELD=WERT ...]"); }
    QString summary() const override
    {
        return QStringLiteral("die Anschrift eines Abnehmers zeigen oder ändern (ein neuer wird\nangelegt); Felder: ") +
               keyList(buyerFields(), false);
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("KURZNAME"), QStringLiteral("Kurzname des Abnehmers"));
        parser.addPositionalArgument(QStringLiteral("FELD=WERT"), QStringLiteral("zu ändernde Felder"));
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        const QStringList p = parser.positionalArguments();
        if (p.isEmpty() || p[0].trimmed().isEmpty() || p[0].contains(u'='))
            return QStringLiteral("abnehmer erwartet den Kurznamen des Abnehmers.");
        return assignments(p.mid(1)) ? QString() : QStringLiteral("abnehmer erwartet nach dem Kurznamen Angaben der Form FELD=WERT.");
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const QStringList p = parser.positionalArguments();
        const QString shortName = p[0].trimmed();
        const auto pairs = *assignments(p.mid(1));
        auto known = loadBuyer(context.session->database->shared(), shortName);
        if (!known && pairs.isEmpty()) {
            context.prompter.inform(QStringLiteral("Den Abnehmer \"%1\" gibt es noch nicht.").arg(shortName));
            return Refused;
        }
        BuyerData data = known.value_or(BuyerData{});
        data.shortName = shortName;
        return showOrSet<BuyerData>(context, data, buyerFields(), false, pairs, &storeBuyer);
    }
};

} // namespace

std::unique_ptr<Command> makeEigeneAngabenCommand() { return std::make_unique<EigeneAngabenCommand>(); }
std::unique_ptr<Command> makeAbnehmerCommand() { return std::make_unique<AbnehmerCommand>(); }

} // namespace tarvik::cli
