// liste: an evaluation list of harvests, lots, logs, poles, stacked wood or invoices, built by
// the same core as the dialogs, as text, spreadsheet or page.
#include "cli/commands/all.h"
#include "common/clock.h"
#include "harvests/filter.h"
#include "reports/lists/writers.h"
#include "store/sql.h"
#include "store/startup.h"

#include <QDir>

namespace tarvik::cli {
namespace {

using namespace lists;

const QCommandLineOption HarvestsOption(QStringLiteral("hiebe"),
                                        QStringLiteral("alle, selektiert, aktuell:NR, unverkauft, teilverkauft oder verkauft"),
                                        QStringLiteral("AUSWAHL"), QStringLiteral("alle"));
const QCommandLineOption GroupOption(QStringLiteral("gruppe"), QStringLiteral("Gruppierung Nr. (1 = erste Option des Dialogs)"),
                                     QStringLiteral("N"));
const QCommandLineOption SortOption(QStringLiteral("sortierung"), QStringLiteral("nach dieser Spalte sortieren"),
                                    QStringLiteral("SPALTE"));
const QCommandLineOption DescendingOption(QStringLiteral("absteigend"), QStringLiteral("absteigend sortieren"));
const QCommandLineOption FilterOption(QStringLiteral("filter"), QStringLiteral("nur Zeilen mit SPALTE = WERT (mehrfach möglich)"),
                                      QStringLiteral("SPALTE=WERT"));
const QCommandLineOption FormatOption(QStringLiteral("format"), QStringLiteral("text, xlsx oder html"), QStringLiteral("FORMAT"),
                                      QStringLiteral("text"));
const QCommandLineOption FileOption(QStringLiteral("datei"), QStringLiteral("in diese Datei schreiben"), QStringLiteral("PFAD"));

const QStringList ScopeWords{QStringLiteral("alle"), QStringLiteral("selektiert"), QStringLiteral("aktuell"),
                             QStringLiteral("unverkauft"), QStringLiteral("teilverkauft"), QStringLiteral("verkauft")};

class ListeCommand final : public Command {
public:
    QString name() const override { return QStringLiteral("liste"); }
    QString synopsis() const override
    {
        return QStringLiteral("hiebe|lose|staemme|pfaehle|schichtholz|rechnungen [--hiebe AUSWAHL] [--gruppe N] "
                              "[--sortierung SPALTE [--absteigend]] [--filter SPALTE=WERT] [--format text|xlsx|html] [--datei PFAD]");
    }
    QString summary() const override
    {
        return QStringLiteral("eine Auswertungsliste erstellen (Text auf die Standardausgabe oder in --datei;\n"
                              "xlsx und html ohne --datei als Daten.xlsx bzw. report-N.htm im Datenordner)");
    }
    void declare(QCommandLineParser& parser) const override
    {
        parser.addPositionalArgument(QStringLiteral("LISTE"), QStringLiteral("hiebe, lose, staemme, pfaehle, schichtholz oder rechnungen"));
        parser.addOptions({HarvestsOption, GroupOption, SortOption, DescendingOption, FilterOption, FormatOption, FileOption});
    }
    QString usageProblem(const QCommandLineParser& parser) const override
    {
        const QStringList positional = parser.positionalArguments();
        if (positional.size() != 1 || !memberByKey(positional[0]))
            return QStringLiteral("liste erwartet hiebe, lose, staemme, pfaehle, schichtholz oder rechnungen.");
        const MemberDef& def = *memberByKey(positional[0]);
        const QString scope = parser.value(HarvestsOption);
        const bool current = scope.startsWith(QLatin1String("aktuell:")) && wholeNumber(scope.mid(8));
        if (!current && (!ScopeWords.contains(scope) || scope == u"aktuell"))
            return QStringLiteral("--hiebe erwartet alle, selektiert, aktuell:NR, unverkauft, teilverkauft oder verkauft.");
        if (parser.isSet(GroupOption)) {
            const auto n = wholeNumber(parser.value(GroupOption));
            if (!n || *n < 1 || *n > def.groupings.size())
                return QStringLiteral("--gruppe erwartet eine Zahl von 1 bis %1.").arg(def.groupings.size());
        }
        if (parser.isSet(SortOption) && !def.columns.contains(parser.value(SortOption)))
            return QStringLiteral("--sortierung erwartet eine Spalte der Liste: %1").arg(def.columns.join(QStringLiteral(", ")));
        for (const QString& f : parser.values(FilterOption)) {
            const QString column = f.section(u'=', 0, 0);
            if (!f.contains(u'=') ||
                std::none_of(def.filters.begin(), def.filters.end(), [&](const Filter& known) { return known.column == column; })) {
                QStringList names;
                for (const Filter& known : def.filters)
                    names << known.column;
                return QStringLiteral("--filter erwartet SPALTE=WERT mit einer dieser Spalten: %1")
                    .arg(names.isEmpty() ? QStringLiteral("(keine)") : names.join(QStringLiteral(", ")));
            }
        }
        if (!QStringList{QStringLiteral("text"), QStringLiteral("xlsx"), QStringLiteral("html")}.contains(parser.value(FormatOption)))
            return QStringLiteral("--format erwartet text, xlsx oder html.");
        return {};
    }

    int run(const QCommandLineParser& parser, CommandContext& context) const override
    {
        const MemberDef& def = *memberByKey(parser.positionalArguments()[0]);
        ListRequest request(def.member);
        const QString scope = parser.value(HarvestsOption);
        if (scope.startsWith(QLatin1String("aktuell:"))) {
            request.scope = int(HarvestScope::Aktuell);
            request.currentHarvest = harvestByNumber(context, *wholeNumber(scope.mid(8)));
            if (!request.currentHarvest)
                return Refused;
        } else {
            request.scope = int(ScopeWords.indexOf(scope));
            request.harvestsMarked = true; // the stored selection stands for the marked rows here
        }
        if (parser.isSet(GroupOption))
            request.grouping = *wholeNumber(parser.value(GroupOption)) - 1;
        request.sortColumn = parser.value(SortOption);
        request.descending = parser.isSet(DescendingOption);
        for (const QString& f : parser.values(FilterOption))
            request.filters[f.section(u'=', 0, 0)] = f.section(u'=', 1);

        Session& session = *context.session;
        const QSqlDatabase db = session.database->shared();
        try {
            const auto query = prepareList(request, session.settings, context.prompter);
            if (!query)
                return Refused;
            const qint64 rows = countRows(db, *query);
            if (rows == 0) {
                context.prompter.inform(def.noRowsMessage());
                return Refused;
            }
            const QString title = request.grouping >= 0 ? def.title + QStringLiteral(" – ") + def.groupings[request.grouping].caption : def.title;
            const TextOptions options = TextOptions::from(session.settings, title, SystemClock().today());
            const auto formats = columnFormats(db, def, *query);
            QSqlQuery result = execSql(db, query->sql, query->values);
            const QString format = parser.value(FormatOption);
            if (format == u"text" && !parser.isSet(FileOption)) {
                for (const QString& line : textLines(result, formats, options, rows))
                    context.io.print(line);
                return Success;
            }
            WriteResult written;
            if (format == u"xlsx")
                written = writeSpreadsheet(parser.isSet(FileOption) ? parser.value(FileOption) : spreadsheetPath(session.dataFolder), result,
                                           formats, def.title, rows);
            else if (format == u"html")
                written = writeHtml(parser.isSet(FileOption) ? parser.value(FileOption) : nextReportPagePath(session.dataFolder), result,
                                    formats, options);
            else
                written = writeText(parser.value(FileOption), result, formats, options, rows);
            if (!written.ok) {
                context.prompter.inform(written.error, Prompter::Icon::Critical);
                return Refused;
            }
            context.io.print(QStringLiteral("%1 Datensätze in %2").arg(rows).arg(QDir::toNativeSeparators(written.path)));
            return Success;
        } catch (const StoreError& error) {
            context.prompter.inform(error.message(), Prompter::Icon::Critical);
            return Refused;
        }
    }
};

} // namespace

std::unique_ptr<Command> makeListeCommand() { return std::make_unique<ListeCommand>(); }

} // namespace tarvik::cli
