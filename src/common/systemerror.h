#pragma once
// What the operating system and the libraries report comes in English ("No such file or
// directory", "database is locked", "Error creating output xlsx file"); a user of this program
// reads a German sentence instead. Texts that are already German pass unchanged.
#include <QString>

class QFileDevice;

namespace tarvik {

// The sentence for an errno value, e.g. ENOSPC: "Der Datenträger ist voll."
QString germanSystemError(int errnoValue);

// Why a file could not be opened, read or written, as a German sentence.
QString germanFileError(const QFileDevice& file);

// An error text of the system, Qt, SQLite, the network or the spreadsheet library as a German
// sentence; a text that is not known becomes a general German sentence.
QString germanErrorText(const QString& text);

// While it lives, what a library writes to the standard error stream goes nowhere: the
// spreadsheet library prints its faults there besides returning them.
class QuietStandardError {
public:
    QuietStandardError();
    ~QuietStandardError();
    QuietStandardError(const QuietStandardError&) = delete;
    QuietStandardError& operator=(const QuietStandardError&) = delete;

private:
    int m_saved = -1;
};

} // namespace tarvik
