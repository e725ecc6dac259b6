#pragma once
// A prompter for tests: replays queued answers, records every text shown, and fails the
// running test on a question nobody queued an answer for.
#include "common/prompter.h"

#include <QQueue>
#include <QStringList>
#include <QVariant>

namespace tarvik::test {

class ScriptedPrompter final : public Prompter {
public:
    ~ScriptedPrompter() override;

    // Answers in the order the questions will come.
    ScriptedPrompter& answerYes() { m_answers.enqueue(true); return *this; }
    ScriptedPrompter& answerNo() { m_answers.enqueue(false); return *this; }
    ScriptedPrompter& answerText(const QString& text) { m_answers.enqueue(text); return *this; }
    ScriptedPrompter& answerCancel() { m_answers.enqueue(QVariant()); return *this; }

    void inform(const QString& text, Icon icon) override;
    bool askYesNo(const QString& text) override;
    bool askOkCancel(const QString& text) override;
    std::optional<QString> askText(const QString& prompt, const QString& proposal) override;
    QString chooseOpenFile(const QString& caption, const QString& folder, const QString& filter) override;
    QString chooseSaveFile(const QString& caption, const QString& proposal, const QString& filter) override;
    QString chooseFolder(const QString& caption, const QString& folder) override;

    const QStringList& messages() const { return m_messages; }   // inform() texts
    const QStringList& questions() const { return m_questions; } // every question asked
    int pendingAnswers() const { return int(m_answers.size()); }
    void clear() { m_messages.clear(); m_questions.clear(); }

private:
    QVariant nextAnswer(const QString& question);
    QQueue<QVariant> m_answers;
    QStringList m_messages;
    QStringList m_questions;
};

} // namespace tarvik::test
