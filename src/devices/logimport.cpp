#include "devices/logimport.h"

#include "common/numbers.h"
#include "common/text.h"
#include "entry/logentry.h"
#include "rules/lotrecompute.h"
#include "rules/masterdatalookup.h"
#include "store/records.h"
#include "store/sql.h"
#include "store/totals.h"

#include <QSet>

namespace tarvik {
namespace {

constexpr int RemarkLength = 30; // `Stämme.Bemerkung` is TEXT (30)
const QString BracketPrefix = QStringLiteral("Klammerstamm zu ");

QString speciesRow(const QSqlDatabase& db, const QString& code)
{
    // Species are stored as "FI (Fichte)": the code, a blank, the name.
    return readText(scalar(db, QStringLiteral("SELECT \"Baumart\" FROM \"Baumarten\" WHERE \"Baumart\" = ? OR \"Baumart\" LIKE ? "
                                              "ORDER BY \"Baumart\" LIMIT 1"),
                           {code, code + QStringLiteral(" (%")}));
}

bool lotExists(const QSqlDatabase& db, qint32 harvestId, qint32 lot)
{
    return scalar(db, QStringLiteral("SELECT 1 FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ? LIMIT 1"), {lot, harvestId}).isValid();
}

QString lotSorting(const QSqlDatabase& db, qint32 harvestId, qint32 lot)
{
    return readText(scalar(db, QStringLiteral("SELECT \"Sortierung\" FROM \"Lose\" WHERE \"Los_Nr\" = ? AND \"Kennung\" = ? LIMIT 1"),
                           {lot, harvestId}));
}

// The device checks numbers across the harvest, the service and the app within the lot.
// Bracket logs share their main log's number and are told apart by their remark.
bool alreadyStored(const QSqlDatabase& db, ImportSource source, qint32 harvestId, qint32 lot, qint32 number, bool bracket)
{
    QString sql = QStringLiteral("SELECT 1 FROM \"Stämme\" WHERE \"Kennung\" = ? AND \"Laufende_Nr\" = ?");
    QVariantList values{harvestId, number};
    if (source != ImportSource::Fmr1 || bracket) {
        sql += QStringLiteral(" AND \"Los_Nr\" = ?");
        values << lot;
    }
    sql += bracket ? QStringLiteral(" AND \"Bemerkung\" LIKE ?") : QStringLiteral(" AND coalesce(\"Bemerkung\", '') NOT LIKE ?");
    values << BracketPrefix + u'%';
    return scalar(db, sql + QStringLiteral(" LIMIT 1"), values).isValid();
}

QString missingLotMessage(ImportSource source, qint32 lot)
{
    if (source == ImportSource::Fmr1)
        return QStringLiteral("Der FMR1 hat Sämme aus einem Los gespeichert, welches im aktuellen Hieb noch nicht angelegt ist. "
                              "Das Los %1 wird deshalb jetzt angelegt.").arg(lot);
    return QStringLiteral("Das Los %1 ist im aktuellen Hieb noch nicht angelegt ist. Das Los %1 wird deshalb jetzt angelegt.").arg(lot);
}

const QString LotMissingMessage = QStringLiteral("Der Datenimport ist nur möglich, wenn die LOS-Nummer angegeben wird!");

// Decides log by log whether it can be stored, as the import and its preview both need it.
// Lots that do not exist yet count as lots of logs: the import creates them so.
class LogJudge {
public:
    LogJudge(const AppContext& ctx, qint32 harvestId, std::optional<qint32> formLot, ImportSource source, const ImportBark& bark,
             bool brackets)
        : m_ctx(ctx), m_harvestId(harvestId), m_formLot(formLot), m_source(source), m_bark(bark), m_brackets(brackets),
          m_masterData(ctx.db)
    {
    }

    qint32 lotOf(const ImportedLog& l) const { return l.lot > 0 ? l.lot : m_formLot.value_or(0); }
    bool isBracket(const ImportedLog& l) const { return m_brackets && l.number > BracketOffset; }
    qint32 numberOf(const ImportedLog& l) const { return isBracket(l) ? l.number - BracketOffset : l.number; }

    // "" and the filled form when the log can be stored, else the reason.
    QString judge(const ImportedLog& l, LogForm& f)
    {
        const qint32 lot = lotOf(l);
        if (lot <= 0)
            return QStringLiteral("keine Los-Nummer");
        const QString code = deviceSpeciesCode(l.species);
        if (!m_speciesRows.contains(code))
            m_speciesRows.insert(code, code.isEmpty() ? QString() : speciesRow(m_ctx.db, code));
        const QString species = m_speciesRows.value(code);
        if (species.isEmpty())
            return l.species.trimmed().isEmpty() ? QStringLiteral("keine Baumart")
                                                 : QStringLiteral("Baumart %1 unbekannt").arg(l.species.trimmed());
        const bool bracket = isBracket(l);
        const qint32 number = numberOf(l);
        if (number <= 0 || number > 999999)
            return QStringLiteral("Stammnummer %1 ungültig").arg(l.number);
        if (!m_sortings.contains(lot))
            m_sortings.insert(lot, lotExists(m_ctx.db, m_harvestId, lot) ? lotSorting(m_ctx.db, m_harvestId, lot) : QStringLiteral("Stämme"));
        if (const QString sorting = m_sortings.value(lot); sorting != QStringLiteral("Stämme"))
            return QStringLiteral("Los %1 ist ein Los der Sortierung %2").arg(lot).arg(sorting.isEmpty() ? QStringLiteral("(leer)") : sorting);
        // The device checks numbers across the harvest, the service and the app within the lot.
        const bool byHarvest = m_source == ImportSource::Fmr1 && !bracket;
        const QString key = QStringLiteral("%1/%2/%3").arg(byHarvest ? 0 : lot).arg(number).arg(bracket ? u'K' : u'S');
        if (m_taken.contains(key) || alreadyStored(m_ctx.db, m_source, m_harvestId, lot, number, bracket))
            return byHarvest ? QStringLiteral("Stammnummer %1 im Hieb bereits vergeben").arg(number)
                             : QStringLiteral("Stammnummer %1 im Los %2 bereits vergeben").arg(number).arg(lot);

        if (!m_lotPrices.contains(lot))
            m_lotPrices.insert(lot, loadLotPriceSettings(m_ctx.db, m_harvestId, lot).value_or(PriceSettings{}));
        f = LogForm{};
        f.losNr = QString::number(lot);
        f.laufendeNr = QString::number(number);
        f.species = species;
        f.quality = l.quality.trimmed();
        f.measuredDiameter = l.diameter;
        f.length = l.length;
        f.topDiameter = l.top;
        f.mode = m_bark.mode;
        f.deduction = m_bark.mode == BarkMode::Fest ? m_bark.fixedDeduction : QString();
        f.kaeferholz = l.beetle;
        f.prices = m_lotPrices.value(lot);
        recomputeLog(f, m_masterData);
        // What the log window would refuse is not imported either.
        if (readNumber(f.underBark) <= 0 || readNumber(f.length) <= 0)
            return QStringLiteral("Stärke oder Länge fehlt");
        if (f.diameterClass.isEmpty())
            return QStringLiteral("keine Stärkeklasse für %1 cm").arg(f.underBark);
        const double top = readNumber(f.topDiameter);
        if (top > 0 && top >= readNumber(f.measuredDiameter))
            return QStringLiteral("Zopf nicht schwächer als die Stärke");
        m_taken.insert(key);
        return {};
    }

private:
    const AppContext& m_ctx;
    qint32 m_harvestId;
    std::optional<qint32> m_formLot;
    ImportSource m_source;
    ImportBark m_bark;
    bool m_brackets;
    MasterDataLookup m_masterData;
    QHash<QString, QString> m_speciesRows;
    QHash<qint32, QString> m_sortings;
    QHash<qint32, PriceSettings> m_lotPrices;
    QSet<QString> m_taken;
};

} // namespace

QStringList refusalReasons(const AppContext& ctx, qint32 harvestId, std::optional<qint32> formLot, ImportSource source,
                           const QList<ImportedLog>& logs, const ImportBark& bark, bool brackets)
{
    LogJudge judge(ctx, harvestId, formLot, source, bark, brackets);
    QStringList reasons;
    LogForm form;
    for (const ImportedLog& l : logs)
        reasons << judge.judge(l, form);
    return reasons;
}

QString bracketRemark(qint32 mainNumber) { return BracketPrefix + QString::number(mainNumber); }

QString nothingFoundMessage(ImportSource source)
{
    return source == ImportSource::Fmr1
               ? QStringLiteral("Es wurden keine Daten gefunden. Bitte prüfen Sie ggf. nochmals die COM-Schnittstelle.")
               : QStringLiteral("Es wurden keine Stämme gefunden.");
}

bool confirmFmr1Import(const AppContext& ctx, std::optional<qint32> formLot)
{
    if (!formLot || *formLot <= 0) {
        ctx.prompter.inform(LotMissingMessage);
        return false;
    }
    return ctx.prompter.askYesNo(joinLines({
        QStringLiteral("Möchten Sie wirklich die Daten vom Festmeterrechner FMR 1 importieren. Beachten Sie dabei folgends:"),
        QString(),
        QStringLiteral("> Die Daten werden in das aktuelle Los und Hieb eingelesen. Wenn im FMR1 eine Losnummer hinterlegt ist, "
                       "wird der Stamm in die entsprechende LOS-Nummer gebucht"),
        QStringLiteral(">Ist eine Stammnummer im aktuellen Hieb bereits vorhanden, wird der Datensatz nicht eingelesen."),
        QStringLiteral(">Der Rindenabzug erfolgt nach der aktuellen Einstellung (unabhängig vom FMR1)."),
        QStringLiteral(">Die Baumarten des FMR1 müssen im Tarvik enthalten sein. Dabei gilt: Fi=FI, Ta=TA, Bu=BU, Kie=KI, Ei=EI, "
                       "Lä=LA, Dgl=DO, Es=ES und Aho=AH."),
        QString(),
        QStringLiteral("Soll der Import jetzt ausgeführt werden, dann klicken Sie auf [Ja] und folgen den weiteren Anweisungen."),
    }));
}

bool confirmFileImport(const AppContext& ctx, ImportSource source)
{
    const QString from = source == ImportSource::App ? QStringLiteral("der App Holzliste") : QStringLiteral("von Online-TARVIK");
    return ctx.prompter.askYesNo(joinLines({
        QStringLiteral("Möchten Sie wirklich die Daten %1 importieren. Beachten Sie dabei folgends:").arg(from),
        QString(),
        QStringLiteral("Ist eine Stammnummer im aktuellen Los bereits vorhanden, wird der Datensatz nicht eingelesen."),
        QString(),
        QStringLiteral("Soll der Import jetzt ausgeführt werden?"),
    }));
}

std::optional<ImportOutcome> importLogs(const AppContext& ctx, qint32 harvestId, std::optional<qint32> formLot,
                                        ImportSource source, const QList<ImportedLog>& logs, const ImportBark& bark,
                                        const TransferQuestion& askTransfer)
{
    if (logs.isEmpty()) {
        ctx.prompter.inform(nothingFoundMessage(source));
        return std::nullopt;
    }
    if ((!formLot || *formLot <= 0) && std::any_of(logs.begin(), logs.end(), [](const ImportedLog& l) { return l.lot <= 0; })) {
        ctx.prompter.inform(LotMissingMessage);
        return std::nullopt;
    }
    ImportOutcome outcome;
    outcome.found = int(logs.size());
    const QString question = QStringLiteral("Es wurden%1 Stämme gefunden. Sollen diese jetzt übertragen werden?").arg(signedText(outcome.found));
    const bool transfer = askTransfer ? askTransfer(question, logs, refusalReasons(ctx, harvestId, formLot, source, logs, bark))
                                      : ctx.prompter.askYesNo(question);
    if (!transfer)
        return std::nullopt;

    bool brackets = false;
    if (source != ImportSource::Fmr1
        && std::any_of(logs.begin(), logs.end(), [](const ImportedLog& l) { return l.number > BracketOffset; }))
        brackets = ctx.prompter.askYesNo(QStringLiteral(
            "Es wurden Stämme mit einer Stammnummer über 10000 gefunden. Hier könnte es sich auch um Klammerstämme handeln, die zu den "
            "Stämmen 'Aktuelle Stammnummer - 10.000' gehören. Sollen die Stämme mit einer Stammnummer > 10.000 als Klammerstämme "
            "gespeichert werden?"));

    // Lots are announced before anything is written, and only those that will receive a log;
    // the writes then run without a question.
    const QStringList reasons = refusalReasons(ctx, harvestId, formLot, source, logs, bark, brackets);
    QList<qint32> missing;
    for (int i = 0; i < logs.size(); ++i) {
        const qint32 lot = logs[i].lot > 0 ? logs[i].lot : formLot.value_or(0);
        if (reasons[i].isEmpty() && !missing.contains(lot) && !lotExists(ctx.db, harvestId, lot))
            missing << lot;
    }
    for (qint32 lot : missing)
        ctx.prompter.inform(missingLotMessage(source, lot));

    try {
        TransactionGuard guard(ctx.db);
        for (qint32 lot : missing)
            createLot(ctx.db, harvestId, lot, QStringLiteral("Stämme"));
        LogJudge judge(ctx, harvestId, formLot, source, bark, brackets);
        LogInserter inserter(ctx.db);
        LogForm f;
        for (const ImportedLog& l : logs) {
            if (!judge.judge(l, f).isEmpty()) {
                ++outcome.skipped;
                continue;
            }
            QString remark = l.remark.trimmed();
            if (judge.isBracket(l))
                remark = (bracketRemark(judge.numberOf(l)) + u' ' + remark).trimmed();
            inserter.insert(harvestId, f, judge.numberOf(l), remark.left(RemarkLength));
            ++outcome.stored;
        }
        recomputeTotals(ctx.db, harvestId);
        recomputeSaleState(ctx.db, harvestId);
        guard.commit();
    } catch (const StoreError& e) {
        ctx.prompter.inform(QStringLiteral("Der Import konnte nicht gespeichert werden, es wurde nichts übernommen:\n\n") + e.message(),
                            Prompter::Icon::Critical);
        return std::nullopt;
    }
    outcome.createdLots = missing;

    if (outcome.skipped > 0)
        ctx.prompter.inform(QStringLiteral("Von den%1 Stämmen wurden%2 nicht importiert. Das kann damit zusammenhängen, dass z.B. die "
                                           "Baumart in Tarvik nicht auffindbar ist oder die laufende Nummer im aktuellen Hieb bereits "
                                           "vergeben ist.").arg(signedText(outcome.found), signedText(outcome.skipped)));
    if (outcome.stored == 0) {
        ctx.prompter.inform(QString::fromUtf8(NothingStoredMessage), Prompter::Icon::Warning);
        return outcome;
    }
    ctx.prompter.inform(QStringLiteral("Der Import wurde erforgreich abgeschlossen!"));
    ctx.prompter.inform(joinLines({QStringLiteral("ACHTUNG!!!"), QString(),
                                   QStringLiteral("Da Sie die Stämme automatisch eingelesen haben, müssen Sie dieses Modul mit [Abbrechen] "
                                                  "schließen. Nur wenn Sie weitere Stämme zusätzliche Stämme eingeben, können Sie diese "
                                                  "wie gewohnt mit [OK] buchen!")}),
                        Prompter::Icon::Warning);
    return outcome;
}

} // namespace tarvik
