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

} // namespace

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
        ctx.prompter.inform(QStringLiteral("Der Datenimport ist nur möglich, wenn die LOS-Nummer angegeben wird!"));
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
                                        ImportSource source, const QList<ImportedLog>& logs, const ImportBark& bark)
{
    if (logs.isEmpty()) {
        ctx.prompter.inform(nothingFoundMessage(source));
        return std::nullopt;
    }
    ImportOutcome outcome;
    outcome.found = int(logs.size());
    if (!ctx.prompter.askYesNo(QStringLiteral("Es wurden%1 Stämme gefunden. Sollen diese jetzt übertragen werden?").arg(signedText(outcome.found))))
        return std::nullopt;

    bool brackets = false;
    if (source != ImportSource::Fmr1
        && std::any_of(logs.begin(), logs.end(), [](const ImportedLog& l) { return l.number > BracketOffset; }))
        brackets = ctx.prompter.askYesNo(QStringLiteral(
            "Es wurden Stämme mit einer Stammnummer über 10000 gefunden. Hier könnte es sich auch um Klammerstämme handeln, die zu den "
            "Stämmen 'Aktuelle Stammnummer - 10.000' gehören. Sollen die Stämme mit einer Stammnummer > 10.000 als Klammerstämme "
            "gespeichert werden?"));

    auto lotOf = [&](const ImportedLog& l) { return l.lot > 0 ? l.lot : formLot.value_or(0); };
    // Lots are announced before anything is written; the writes then run without a question.
    QList<qint32> missing;
    for (const ImportedLog& l : logs) {
        const qint32 lot = lotOf(l);
        if (lot > 0 && !missing.contains(lot) && !lotExists(ctx.db, harvestId, lot) && !deviceSpeciesCode(l.species).isEmpty())
            missing << lot;
    }
    for (qint32 lot : missing)
        ctx.prompter.inform(missingLotMessage(source, lot));

    try {
        TransactionGuard guard(ctx.db);
        for (qint32 lot : missing)
            createLot(ctx.db, harvestId, lot, QStringLiteral("Stämme"));
        MasterDataLookup masterData(ctx.db);
        LogInserter inserter(ctx.db);
        QHash<qint32, PriceSettings> lotPrices;
        QHash<QString, QString> speciesRows;
        for (const ImportedLog& l : logs) {
            const qint32 lot = lotOf(l);
            const QString code = deviceSpeciesCode(l.species);
            if (!speciesRows.contains(code))
                speciesRows.insert(code, code.isEmpty() ? QString() : speciesRow(ctx.db, code));
            const QString species = speciesRows.value(code);
            const bool bracket = brackets && l.number > BracketOffset;
            const qint32 number = bracket ? l.number - BracketOffset : l.number;
            const bool usable = lot > 0 && !species.isEmpty() && number > 0 && number <= 999999
                                && lotSorting(ctx.db, harvestId, lot) == QStringLiteral("Stämme")
                                && !alreadyStored(ctx.db, source, harvestId, lot, number, bracket);
            if (!usable) {
                ++outcome.skipped;
                continue;
            }
            if (!lotPrices.contains(lot))
                lotPrices.insert(lot, loadLotPriceSettings(ctx.db, harvestId, lot).value_or(PriceSettings{}));

            LogForm f;
            f.losNr = QString::number(lot);
            f.laufendeNr = QString::number(number);
            f.species = species;
            f.quality = l.quality.trimmed();
            f.measuredDiameter = l.diameter;
            f.length = l.length;
            f.topDiameter = l.top;
            f.mode = bark.mode;
            f.deduction = bark.mode == BarkMode::Fest ? bark.fixedDeduction : QString();
            f.kaeferholz = l.beetle;
            f.prices = lotPrices.value(lot);
            recomputeLog(f, masterData);
            const double top = readNumber(f.topDiameter);
            if (readNumber(f.underBark) <= 0 || readNumber(f.length) <= 0 || f.diameterClass.isEmpty()
                || (top > 0 && top >= readNumber(f.measuredDiameter))) {
                ++outcome.skipped; // what the log window would refuse is not imported either
                continue;
            }
            QString remark = l.remark.trimmed();
            if (bracket)
                remark = (bracketRemark(number) + u' ' + remark).trimmed();
            inserter.insert(harvestId, f, number, remark.left(RemarkLength));
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
    ctx.prompter.inform(QStringLiteral("Der Import wurde erforgreich abgeschlossen!"));
    ctx.prompter.inform(joinLines({QStringLiteral("ACHTUNG!!!"), QString(),
                                   QStringLiteral("Da Sie die Stämme automatisch eingelesen haben, müssen Sie dieses Modul mit [Abbrechen] "
                                                  "schließen. Nur wenn Sie weitere Stämme zusätzliche Stämme eingeben, können Sie diese "
                                                  "wie gewohnt mit [OK] buchen!")}),
                        Prompter::Icon::Warning);
    return outcome;
}

} // namespace tarvik
