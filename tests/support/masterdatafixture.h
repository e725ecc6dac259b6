#pragma once
// What every master data test needs: its own data folder and database with harvest 7 and its
// lot 1, default settings, a fixed day, a scripted prompter and the context built from them;
// a fingerprint of the master data to prove a refusal changed nothing.
#include "store/context.h"
#include "store/schema.h"
#include "store/sql.h"
#include "support/records.h"
#include "support/scriptedprompter.h"
#include "support/tempdatafolder.h"

namespace tarvik::test {

class MasterDataFixture {
protected:
    TempDataFolder m_folder;
    std::unique_ptr<Database> m_db;
    Einstellungen m_settings = EinstellungenLaden(QString());
    FixedClock m_clock{QDate(2026, 11, 23)};
    ScriptedPrompter m_prompter;
    qint32 m_harvest = 0;

    AppContext context() { return {m_db->shared(), m_settings, m_folder.path(), m_prompter, m_clock}; }
    QSqlDatabase db() const { return m_db->shared(); }
    int count(const QString& sql, const QVariantList& values = {}) const { return scalar(db(), sql, values).toInt(); }
    QString value(const QString& sql, const QVariantList& values = {}) const { return scalar(db(), sql, values).toString(); }
    qint32 idOf(const QString& table, const QString& column, const QString& value) const
    {
        return scalar(db(), QStringLiteral("SELECT ID FROM %1 WHERE %2 = ?").arg(quoted(table), quoted(column)), {value}).toInt();
    }
    QString snapshot() const
    {
        QStringList parts;
        for (const char* t : {"Stärkeklassen_Stämme", "Stärkeklassen_Stämme_Heilbronn", "Stärkeklassen_Pfähle",
                              "Stärkeklassen_Schichtholz", "Baumarten", "Güteklassen", "Rindenabzug", "Rindenabzug2",
                              "Messbeträge", "Messzahlen", "Tagespreise", "Stämme", "Pfähle", "Schichtholz"}) {
            const QString table = QString::fromUtf8(t);
            parts << table + u':' + schema::columnNames(db(), table).join(u',') + u':'
                         + QString::number(count(QStringLiteral("SELECT COUNT(*) FROM %1").arg(quoted(table))));
        }
        parts << value(QStringLiteral("SELECT group_concat(Baumart || Stärkeklasse) FROM Pfähle"));
        return parts.join(u'|');
    }
    // A new database as a first start leaves it, with harvest 7 and its lot 1.
    void resetDatabase()
    {
        m_db.reset();
        QFile::remove(m_folder.databasePath());
        m_db = m_folder.openDatabase();
        m_harvest = addHarvest(db(), 7);
        addLot(db(), m_harvest, 1);
        m_prompter.clear();
    }
};

} // namespace tarvik::test
