#pragma once
// What every entry-window test needs: its own data folder and database, default settings, a
// fixed day, a scripted prompter and the context built from them, and a harvest to work in.
#include "store/context.h"
#include "store/startup.h"
#include "support/scriptedprompter.h"
#include "support/tempdatafolder.h"

#include <QStringList>
#include <memory>
#include <optional>

namespace tarvik::test {

class EntryFixture {
protected:
    TempDataFolder m_folder;
    std::unique_ptr<Database> m_db;
    Einstellungen m_settings = EinstellungenLaden(QString());
    FixedClock m_clock{QDate(2026, 11, 21)};
    ScriptedPrompter m_prompter;
    qint32 m_harvest = 0;

    AppContext context() { return {m_db->shared(), m_settings, m_folder.path(), m_prompter, m_clock}; }
    QSqlDatabase db() const { return m_db->shared(); }
    // The first value of a statement whose only parameter is the harvest's ID.
    QString value(const QString& sql) const;
    qint32 idOf(const QString& sql) const;

    // A new database as a first start leaves it, default settings, no messages, the named files
    // of the data folder removed; with a number, a harvest of that number to work in.
    void resetDatabase(std::optional<qint32> hiebNr, const QStringList& removedFiles = {});
};

} // namespace tarvik::test
