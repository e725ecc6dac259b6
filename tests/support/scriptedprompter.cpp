#include "support/scriptedprompter.h"

#include <QTest>

namespace tarvik::test {

ScriptedPrompter::~ScriptedPrompter()
{
    if (!m_answers.isEmpty())
        QTest::qFail("ScriptedPrompter: queued answers were never asked for", __FILE__, __LINE__);
}

QVariant ScriptedPrompter::nextAnswer(const QString& question)
{
    m_questions << question;
    if (m_answers.isEmpty()) {
        QTest::qFail(qPrintable(QStringLiteral("Unexpected question: ") + question), __FILE__, __LINE__);
        return false;
    }
    return m_answers.dequeue();
}

void ScriptedPrompter::inform(const QString& text, Icon) { m_messages << text; }

bool ScriptedPrompter::askYesNo(const QString& text) { return nextAnswer(text).toBool(); }

bool ScriptedPrompter::askOkCancel(const QString& text) { return nextAnswer(text).toBool(); }

std::optional<QString> ScriptedPrompter::askText(const QString& prompt, const QString&)
{
    const QVariant answer = nextAnswer(prompt);
    if (answer.isNull())
        return std::nullopt;
    return answer.toString();
}

QString ScriptedPrompter::chooseOpenFile(const QString& caption, const QString&, const QString&)
{
    return nextAnswer(caption).toString();
}

QString ScriptedPrompter::chooseSaveFile(const QString& caption, const QString&, const QString&)
{
    return nextAnswer(caption).toString();
}

QString ScriptedPrompter::chooseFolder(const QString& caption, const QString&)
{
    return nextAnswer(caption).toString();
}

} // namespace tarvik::test
