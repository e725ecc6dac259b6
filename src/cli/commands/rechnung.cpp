// rechnung: a stored invoice's text on stdout or as a file, to check or archive it; "rechnung neu"
// stores a new invoice through the same core call as the invoice window.
#include "cli/commands/all.h"
#include "common/sqldate.h"
#include "invoices/einvoicefile.h"
#include "invoices/invoice.h"
#include "store/startup.h"

namespace tarvik::cli {
namespace {

const QCommandLineOption FileOption(QStringLiteral("datei"), QStringLiteral("als Textdatei schreiben"), QStringLiteral("PFAD"));
const QCommandLineOption XRechnungOption(QStringLiteral("xrechnung"), QStringLiteral("als E-Rechnung (XRechnung 3.0, CII) schreiben"),
                                         QStringLiteral("DATEI.xml"));
const QCommandLineOption En16931Option(QStringLiteral("en16931"), QStringLiteral("als E-Rechnung nach EN 16931 (CII) schreiben"),
                                       QStringLiteral("DATEI.xml"));
const QCommandLineOption BuyerOption(QStringLiteral("abnehmer"), QStringLiteral("Kurzname des Abnehmers (neu)"), QStringLiteral("KURZNAME"));
const QCommandLineOption NameOption(QStringLiteral("name"), QStringLiteral("Name des Empfängers (neu)"), QStringLiteral("T"));
const QCommandLineOption StreetOption(QStringLiteral("strasse"), QStringLiteral("Straße des Empfängers (neu)"), QStringLiteral("T"));
const QCommandLineOption TownOption(QStringLiteral("ort"), QStringLiteral("Wohnort des Empfängers (neu)"), QStringLiteral("T"));
const QCommandLineOption CustomerOption(QStringLiteral("kunde"), QStringLiteral("Kunden-Nr. (neu)"), QStringLiteral("T"));
const QCommandLineOption NumberOption(QStringLiteral("renr"), QStringLiteral("Rechnungsnummer statt der vorgeschlagenen (neu)"), QStringLiteral("N"));
const QCommandLineOption DateOption(QStringLiteral("datum"), QStringLiteral("Rechnungsdatum statt heute (neu)"), QStringLiteral("TT.MM.JJJJ"));
const QCommandLineOption LevyOption(QStringLiteral("abgabe"), QStringLiteral("CMA-Abgabe in % (neu)"), QStringLiteral("P"));
const QCommandLineOption VatOption(QStringLiteral("mwst"), QStringLiteral("Umsatzsteuer in % (neu)"), QStringLiteral("P"));
const QCommandLineOption DiscountOption(QStringLiteral("skonto"), QStringLiteral("Skonto in % (neu)"), QStringLiteral("P"));
const QCommandLineOption DiscountDaysOption(QStringLiteral("skonto-tage"), QStringLiteral("Tage, die das Skonto gilt (neu)"), QStringLiteral("N"));
const QCommandLineOption DeliveryOption(QStringLiteral("leistungsdatum"), QStringLiteral("Leistungsdatum statt des Rechnungsdatums (neu)"),
                                        QStringLiteral("TT.MM.JJJJ"));

bool isNew(const QStringList& positional) { return positional.value(0) == u"neu"; }

// "3,4,7" as lot numbers; nothing when one of them is not a whole number.
std::optional<QList<qint32>> lotNumbers(const QString& text)
{
    QList<qint32> numbers;
    for (const QString& part : text.split(u',')) {
        const auto n = wholeNumber(part.trimmed());
        if (!n)
            return std::nullopt;
        if (!numbers.contains(*n))
            numbers << *n;
    }
    return numbers;
}

class RechnungCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("rechnung"); }
    QString synopsis() const override
    {
        return QStringLiteral("RENR [--datei PFAD] [--xrechnung DATEI.xml] [--en16931 DATEI.xml] | neu HIEB_NR LOS_NR[,LOS_NR...] --abnehmer KURZNAME [--name T] [--strasse T] "
                              "[--ort T] [--kunde T] [--renr N] [--datum TT.MM.JJJJ] [--leistungsdatum TT.MM.JJJJ] [--abgabe P] [--mwst P] [--skonto P] "
                              "[--skonto-tage N]");
    }
    QString summary() const override
    {
        return QStringLiteral("den Text einer gespeicherten Rechnung ausgeben (mit --datei als\nTextdatei, Windows-1252 mit CR LF); "
                              "mit --xrechnung oder --en16931 als E-Rechnung schreiben; mit \"neu\" eine\nRechnung über die "
                              "genannten Lose speichern (Vorschlag und Angaben wie im Fenster)");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("RENR"), QStringLiteral("Rechnungsnummer, oder neu HIEB_NR LOS_NR[,LOS_NR...]"));
        parser.addOptions({FileOption, XRechnungOption, En16931Option, BuyerOption, NameOption, StreetOption, TownOption, CustomerOption, NumberOption, DateOption,
                           LevyOption, VatOption, DiscountOption, DiscountDaysOption, DeliveryOption});
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        const QStringList positional = parser.positionalArguments();
        if (isNew(positional)) {
            if (positional.size() != 3 || !wholeNumber(positional[1]) || !lotNumbers(positional[2]))
                return QStringLiteral("rechnung neu erwartet die Hieb-Nr und die Los-Nr (mehrere durch Komma getrennt).");
            if (parser.value(BuyerOption).trimmed().isEmpty())
                return QStringLiteral("rechnung neu erwartet den Abnehmer (--abnehmer KURZNAME).");
            for (const QCommandLineOption& o : {FileOption, XRechnungOption, En16931Option})
                if (parser.isSet(o))
                    return QStringLiteral("--%1 gilt nur für eine gespeicherte Rechnung.").arg(o.names().constFirst());
            return {};
        }
        if (positional.size() != 1 || !wholeNumber(positional[0]))
            return QStringLiteral("rechnung erwartet die Rechnungsnummer.");
        for (const QCommandLineOption& o : {BuyerOption, NameOption, StreetOption, TownOption, CustomerOption, NumberOption, DateOption,
                                            LevyOption, VatOption, DiscountOption, DiscountDaysOption, DeliveryOption})
            if (parser.isSet(o))
                return QStringLiteral("--%1 gilt nur für rechnung neu.").arg(o.names().constFirst());
        return {};
    }
    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        if (isNew(parser.positionalArguments()))
            return storeNew(parser, context);
        const qint32 number = *wholeNumber(parser.positionalArguments()[0]);
        const auto invoice = loadInvoice(context.session->database->shared(), number);
        if (!invoice) {
            context.prompter.inform(QStringLiteral("Die Rechnung mit der Nummer %1 wurde nicht gefunden.").arg(number),
                                    Prompter::Icon::Warning);
            return Refused;
        }
        const bool eInvoice = parser.isSet(XRechnungOption) || parser.isSet(En16931Option);
        if (eInvoice) {
            const SessionContext core(context);
            const AppContext& app = core.app();
            const std::pair<const QCommandLineOption&, einvoice::Profile> profiles[] = {{XRechnungOption, einvoice::Profile::XRechnung},
                                                                                         {En16931Option, einvoice::Profile::EN16931}};
            for (const auto& [option, profile] : profiles) {
                if (!parser.isSet(option))
                    continue;
                if (!writeEInvoice(app, number, parser.value(option), profile))
                    return Refused;
                context.io.print(parser.value(option));
            }
            if (!parser.isSet(FileOption))
                return Success;
        }
        return printOrWriteLines(context, invoiceLines(invoice->text), parser.value(FileOption));
    }

private:
    // As the window: remembered texts and the proposed number, then the buyer's last invoice,
    // then what the options say.
    static int storeNew(const QCommandLineParser& parser, CommandContext& context)
    {
        const QStringList positional = parser.positionalArguments();
        const auto harvestId = harvestByNumber(context, *wholeNumber(positional[1]));
        if (!harvestId)
            return Refused;
        const SessionContext core(context);
        const AppContext& app = core.app();

        const LotChoice lots = lotsForInvoice(app.db, *harvestId, *lotNumbers(positional[2]));
        if (!lots.reasons.isEmpty()) {
            context.prompter.inform(QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n") + lots.reasons.join(u'\n'));
            return Refused;
        }
        InvoiceInput input = newInvoiceInput(app);
        input.buyer = parser.value(BuyerOption).trimmed();
        applyBuyerDetails(app.db, input.buyer, input);
        const std::pair<const QCommandLineOption&, QString*> typed[] = {
            {NameOption, &input.name},   {StreetOption, &input.street}, {TownOption, &input.town}, {CustomerOption, &input.customerInfo},
            {NumberOption, &input.number}, {DateOption, &input.date},   {LevyOption, &input.levy}, {VatOption, &input.vat},
            {DiscountOption, &input.discount}, {DiscountDaysOption, &input.discountDays}, {DeliveryOption, &input.deliveryDate}};
        for (const auto& [option, field] : typed)
            if (parser.isSet(option))
                *field = parser.value(option);
        input.lotIds = lots.lotIds;

        const std::optional<qint32> number = storeInvoice(app, input);
        if (!number)
            return Refused;
        const auto stored = loadInvoice(app.db, *number);
        context.io.print(QStringLiteral("Rechnung %1 gespeichert, %2").arg(*number).arg(amountCaption(stored ? stored->amount : 0)));
        return Success;
    }
};

} // namespace

std::unique_ptr<Command> makeRechnungCommand() { return std::make_unique<RechnungCommand>(); }

} // namespace tarvik::cli
