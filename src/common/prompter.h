#pragma once
// How core code talks to the user: message boxes in the desktop program, stderr and the
// --ja/--nein option in the command-line tool, a scripted list of answers in tests.
#include <QString>
#include <optional>

namespace tarvik {

// Lines of one message, joined the way every message of the program joins them.
inline QString joinLines(std::initializer_list<QString> lines)
{
    QString out;
    for (const QString& line : lines) {
        if (!out.isEmpty())
            out += u'\n';
        out += line;
    }
    return out;
}

class Prompter {
public:
    enum class Icon { Information, Warning, Critical, Question };

    virtual ~Prompter() = default;
    virtual void inform(const QString& text, Icon icon = Icon::Information) = 0;
    virtual bool askYesNo(const QString& text) = 0;
    virtual bool askOkCancel(const QString& text) = 0;
    virtual std::optional<QString> askText(const QString& prompt, const QString& proposal) = 0;
    // A confirmation given by typing a word such as "JA": true only when exactly that word was typed.
    virtual bool askTypedWord(const QString& prompt, const QString& word)
    {
        const std::optional<QString> typed = askText(prompt, QString());
        return typed && *typed == word;
    }
    // Empty result: the user cancelled.
    virtual QString chooseOpenFile(const QString& caption, const QString& folder,
                                   const QString& filter) = 0;
    virtual QString chooseSaveFile(const QString& caption, const QString& proposal,
                                   const QString& filter) = 0;
    virtual QString chooseFolder(const QString& caption, const QString& folder) = 0;
};

} // namespace tarvik
