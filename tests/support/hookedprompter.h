#pragma once
// The scripted prompter, with something done when a message is shown or a question put.
#include "support/entryfixture.h"
#include "support/scriptedprompter.h"

#include <functional>

namespace tarvik::test {

class HookedPrompter final : public Prompter {
public:
    explicit HookedPrompter(ScriptedPrompter& inner) : m_inner(inner) {}
    std::function<void(const QString&)> onInform;
    void inform(const QString& text, Icon icon) override
    {
        m_inner.inform(text, icon);
        if (onInform)
            onInform(text);
    }
    std::function<void(const QString&)> onQuestion;
    bool askYesNo(const QString& t) override
    {
        if (onQuestion)
            onQuestion(t);
        return m_inner.askYesNo(t);
    }
    bool askOkCancel(const QString& t) override { return m_inner.askOkCancel(t); }
    std::optional<QString> askText(const QString& p, const QString& d) override { return m_inner.askText(p, d); }
    QString chooseOpenFile(const QString& c, const QString& f, const QString& x) override { return m_inner.chooseOpenFile(c, f, x); }
    QString chooseSaveFile(const QString& c, const QString& p, const QString& x) override { return m_inner.chooseSaveFile(c, p, x); }
    QString chooseFolder(const QString& c, const QString& f) override { return m_inner.chooseFolder(c, f); }

private:
    ScriptedPrompter& m_inner;
};

// The entry fixture for tests that act when a message shows or a question is put (a device
// answering, a window closing): its context answers through the hooked prompter.
class HookedEntryFixture : public EntryFixture {
protected:
    HookedPrompter m_hooked{m_prompter};
    AppContext context() { return {m_db->shared(), m_settings, m_folder.path(), m_hooked, m_clock}; }
    // resetDatabase, with the hooks cleared as well.
    void resetHooked(std::optional<qint32> hiebNr)
    {
        resetDatabase(hiebNr);
        m_hooked.onInform = nullptr;
        m_hooked.onQuestion = nullptr;
    }
};

} // namespace tarvik::test
