#pragma once
#include "common/prompter.h"

#include <cstdio>

namespace tarvik {

// Prompter of the command-line tool: messages on stderr, questions answered by an option.
class ConsolePrompter final : public Prompter {
public:
    explicit ConsolePrompter(bool answerYes, std::FILE* out = stderr)
        : m_answerYes(answerYes), m_out(out) {}

    void inform(const QString& text, Icon icon) override;
    bool askYesNo(const QString& text) override;
    bool askOkCancel(const QString& text) override;
    std::optional<QString> askText(const QString& prompt, const QString& proposal) override;
    bool askTypedWord(const QString& prompt, const QString& word) override; // --ja types the word
    QString chooseOpenFile(const QString& caption, const QString& folder, const QString& filter) override;
    QString chooseSaveFile(const QString& caption, const QString& proposal, const QString& filter) override;
    QString chooseFolder(const QString& caption, const QString& folder) override;

private:
    void print(const QString& text);
    bool m_answerYes;
    std::FILE* m_out;
};

} // namespace tarvik
