#pragma once
// The one failure the core throws at a window: a German message about stored data, and what
// kind of trouble it was.
#include <QString>
#include <stdexcept>

namespace tarvik {

// What kind of trouble the engine reported: the message and the advice differ for each, and a
// file that is only locked must never be taken for a damaged one.
enum class StoreProblem {
    Other,
    Locked,     // another program holds the file; waiting helps
    ReadOnly,   // the file or its folder cannot be written
    DiskFull,
    Damaged,    // the file's content is broken
    CannotOpen, // missing, no access, or a folder that is gone
    Rejected,   // a value the file's rules refuse (too long, wrong type)
};

class StoreError : public std::runtime_error {
public:
    explicit StoreError(const QString& message, StoreProblem problem = StoreProblem::Other, const QString& detail = {})
        : std::runtime_error(message.toStdString()), m_message(message), m_problem(problem), m_detail(detail) {}
    // German, for the user.
    const QString& message() const { return m_message; }
    StoreProblem problem() const { return m_problem; }
    // The engine's own text and the statement, for a developer; never shown to a user.
    const QString& detail() const { return m_detail; }

private:
    QString m_message;
    StoreProblem m_problem;
    QString m_detail;
};

} // namespace tarvik
