#include "support/entryfixture.h"

#include "store/sql.h"
#include "support/records.h"

#include <QFile>

namespace tarvik::test {

QString EntryFixture::value(const QString& sql) const { return scalar(db(), sql, {m_harvest}).toString(); }

qint32 EntryFixture::idOf(const QString& sql) const { return scalar(db(), sql, {m_harvest}).toInt(); }

void EntryFixture::resetDatabase(std::optional<qint32> hiebNr, const QStringList& removedFiles)
{
    m_db.reset();
    QFile::remove(m_folder.databasePath());
    for (const QString& name : removedFiles)
        QFile::remove(m_folder.filePath(name));
    m_db = m_folder.openDatabase();
    m_harvest = hiebNr ? addHarvest(db(), *hiebNr) : 0;
    m_settings = EinstellungenLaden(QString());
    m_prompter.clear();
}

} // namespace tarvik::test
