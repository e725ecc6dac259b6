#include "common/consoleprompter.h"

namespace tarvik {

void ConsolePrompter::print(const QString& text)
{
    std::fputs(text.toUtf8().constData(), m_out);
    std::fputc('\n', m_out);
    std::fflush(m_out);
}

void ConsolePrompter::inform(const QString& text, Icon) { print(text); }

bool ConsolePrompter::askYesNo(const QString& text)
{
    print(text + (m_answerYes ? QStringLiteral(" -> Ja") : QStringLiteral(" -> Nein")));
    return m_answerYes;
}

bool ConsolePrompter::askOkCancel(const QString& text)
{
    print(text + (m_answerYes ? QStringLiteral(" -> OK") : QStringLiteral(" -> Abbrechen")));
    return m_answerYes;
}

std::optional<QString> ConsolePrompter::askText(const QString& prompt, const QString& proposal)
{
    if (!m_answerYes) {
        print(prompt + QStringLiteral(" -> Abbrechen"));
        return std::nullopt;
    }
    print(prompt + QStringLiteral(" -> ") + proposal);
    return proposal;
}

bool ConsolePrompter::askTypedWord(const QString& prompt, const QString& word)
{
    print(prompt + QStringLiteral(" -> ") + (m_answerYes ? word : QStringLiteral("Abbrechen")));
    return m_answerYes;
}

// A file or folder cannot be chosen without a person; commands take paths as arguments.
QString ConsolePrompter::chooseOpenFile(const QString& caption, const QString&, const QString&)
{
    print(caption + QStringLiteral(" -> keine Auswahl"));
    return {};
}

QString ConsolePrompter::chooseSaveFile(const QString& caption, const QString&, const QString&)
{
    print(caption + QStringLiteral(" -> keine Auswahl"));
    return {};
}

QString ConsolePrompter::chooseFolder(const QString& caption, const QString&)
{
    print(caption + QStringLiteral(" -> keine Auswahl"));
    return {};
}

} // namespace tarvik
