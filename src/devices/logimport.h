#pragma once
// Storing collected logs in the current harvest: the transfer question, lots created where
// missing, duplicates and unknown species skipped and counted, bracket logs, the measurement
// and price rules of the log window, the totals, all written in one transaction.
#include "devices/importedlog.h"
#include "rules/logmeasure.h"
#include "store/context.h"

#include <QStringList>
#include <functional>
#include <optional>

namespace tarvik {

enum class ImportSource { Fmr1, Online, App };

// The bark mode selected in the log window when the import starts.
struct ImportBark {
    BarkMode mode = BarkMode::Tabelle;
    QString fixedDeduction; // cm, mode "F"
};

struct ImportOutcome {
    int found = 0;
    int stored = 0;
    int skipped = 0;
    QList<qint32> createdLots;
};

// A bracket log numbered above 10000 keeps the number of its main log (number − 10000) and
// this remark, so every list shows which log it belongs to.
QString bracketRemark(qint32 mainNumber);
inline constexpr qint32 BracketOffset = 10000;

// "Der Datenimport ist nur möglich, …" without a lot, then the device question; true on [Ja].
bool confirmFmr1Import(const AppContext& context, std::optional<qint32> formLot);
// The service's and the app's question before their logs are read; true on [Ja].
bool confirmFileImport(const AppContext& context, ImportSource source);

// The message when nothing was collected, by source.
QString nothingFoundMessage(ImportSource source);

// Why each log would not be stored, in the logs' order; "" for a log that will be. The same
// checks the import makes: lot number, species, running number, a lot of another assortment,
// the number taken (in the database or earlier in the same transfer), the log window's
// measurement checks. Numbers above 10000 are judged as bracket logs when brackets is set.
QStringList refusalReasons(const AppContext& context, qint32 harvestId, std::optional<qint32> formLot, ImportSource source,
                           const QList<ImportedLog>& logs, const ImportBark& bark, bool brackets = false);

// Puts the transfer question with the logs in view, each marked with its refusal reason;
// true on [Ja]. Without one the question goes through the prompter.
using TransferQuestion = std::function<bool(const QString& question, const QList<ImportedLog>& logs, const QStringList& reasons)>;

// The closing message when no log was stored.
inline constexpr char NothingStoredMessage[] = "Der Import wurde abgeschlossen, es wurde jedoch kein Stamm übernommen.";

// Asks the transfer question and stores. nullopt when nothing was found, the user said [Nein]
// or the database refused (then nothing is stored and the message has been shown).
// formLot is the lot for logs that bring none of their own; logs without a lot and no lot in the
// form stop the import before the question with the device import's message.
std::optional<ImportOutcome> importLogs(const AppContext& context, qint32 harvestId, std::optional<qint32> formLot,
                                        ImportSource source, const QList<ImportedLog>& logs, const ImportBark& bark,
                                        const TransferQuestion& askTransfer = {});

} // namespace tarvik
