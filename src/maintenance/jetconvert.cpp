#include "maintenance/jetconvert.h"

#include "common/replacefile.h"
#include "store/privateconnection.h"
#include "store/schema.h"
#include "store/sql.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <vector>

extern "C" {
#include <mdbtools.h>
}

namespace tarvik {

namespace {

constexpr int JetTextBytesPerChar4 = 2;
constexpr size_t BindSize = 1 << 20; // memo texts beyond the library's default of 16 KiB

QString nativeName(const QString& path) { return QDir::toNativeSeparators(path); }

struct MdbFile {
    MdbHandle* handle = nullptr;
    ~MdbFile()
    {
        if (handle)
            mdb_close(handle);
    }
};

// The column type of this program that keeps the Jet column's values.
QString columnSql(const MdbColumn& col, bool jet3)
{
    const QString name = QString::fromUtf8(col.name);
    switch (col.col_type) {
    case MDB_TEXT:
        return schema::columnDefinition({name, schema::ColumnType::Text, jet3 ? col.col_size : col.col_size / JetTextBytesPerChar4});
    case MDB_MEMO: return schema::columnDefinition({name, schema::ColumnType::Memo, 0});
    case MDB_BOOL:
    case MDB_BYTE:
    case MDB_INT: return schema::columnDefinition({name, schema::ColumnType::Short, 0});
    case MDB_LONGINT:
        return schema::columnDefinition({name, col.is_long_auto ? schema::ColumnType::Counter : schema::ColumnType::Long, 0});
    case MDB_MONEY: return schema::columnDefinition({name, schema::ColumnType::Currency, 0});
    case MDB_FLOAT: return schema::columnDefinition({name, schema::ColumnType::Single, 0});
    case MDB_DATETIME: return schema::columnDefinition({name, schema::ColumnType::DateTime, 0});
    case MDB_DOUBLE:
    case MDB_NUMERIC: return quoted(name) + QStringLiteral(" DOUBLE REAL");
    case MDB_REPID: return quoted(name) + QStringLiteral(" GUID TEXT");
    default: return quoted(name) + QStringLiteral(" BINARY BLOB");
    }
}

double jetNumber(const QByteArray& text)
{
    // The library formats with the C library's locale, which may write a decimal comma.
    QByteArray t = text.trimmed();
    t.replace(',', '.');
    return t.toDouble();
}

QVariant jetValue(const MdbColumn& col, const char* bound, int length)
{
    if (col.col_type == MDB_BOOL)
        return length > 0 && bound[0] != '0' ? 1 : 0;
    if (length <= 0)
        return QVariant(); // the library reports NULL as no bytes
    const QByteArray bytes(bound, length);
    switch (col.col_type) {
    case MDB_TEXT:
    case MDB_MEMO:
    case MDB_REPID: return QString::fromUtf8(bytes);
    case MDB_BYTE:
    case MDB_INT:
    case MDB_LONGINT: return bytes.trimmed().toLongLong();
    case MDB_MONEY:
    case MDB_FLOAT:
    case MDB_DOUBLE:
    case MDB_NUMERIC: return jetNumber(bytes);
    case MDB_DATETIME: {
        const QDateTime when = QDateTime::fromString(QString::fromLatin1(bytes), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        if (!when.isValid())
            return QVariant();
        if (when.time() == QTime(0, 0))
            return when.date().toString(Qt::ISODate);
        return when.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    }
    default: return bytes; // binary
    }
}

struct Converter {
    MdbHandle* mdb;
    QSqlDatabase db;
    bool jet3;
    QList<JetTableReport> tables;

    void table(MdbCatalogEntry* entry)
    {
        MdbTableDef* def = mdb_read_table(entry);
        if (!def)
            throw StoreError(QStringLiteral("Die Tabelle %1 kann nicht gelesen werden.").arg(QString::fromUtf8(entry->object_name)));
        struct Free {
            MdbTableDef* d;
            ~Free() { mdb_free_tabledef(d); }
        } free{def};
        mdb_read_columns(def);
        mdb_rewind_table(def);

        const QString name = QString::fromUtf8(def->name);
        QStringList defs, names, marks;
        std::vector<std::vector<char>> buffers(def->num_cols, std::vector<char>(BindSize + 1));
        std::vector<int> lengths(def->num_cols, 0);
        for (unsigned int i = 0; i < def->num_cols; ++i) {
            auto* col = static_cast<MdbColumn*>(g_ptr_array_index(def->columns, i));
            defs << columnSql(*col, jet3);
            names << quoted(QString::fromUtf8(col->name));
            marks << QStringLiteral("?");
            if (col->col_type != MDB_OLE)
                mdb_bind_column(def, int(i) + 1, buffers[i].data(), &lengths[i]);
        }
        execSql(db, QStringLiteral("CREATE TABLE %1 (%2)").arg(quoted(name), defs.join(QStringLiteral(", "))));
        QSqlQuery insert = prepareSql(db, QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                                              .arg(quoted(name), names.join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))));
        qint64 rows = 0;
        while (mdb_fetch_row(def)) {
            QVariantList values;
            for (unsigned int i = 0; i < def->num_cols; ++i) {
                auto* col = static_cast<MdbColumn*>(g_ptr_array_index(def->columns, i));
                values << (col->col_type == MDB_OLE ? QVariant() : jetValue(*col, buffers[i].data(), lengths[i]));
            }
            execPrepared(insert, values);
            ++rows;
        }
        tables.append({name, rows});
    }
};

} // namespace

QString jetFileProblem(const QString& mdbPath)
{
    const QString name = nativeName(mdbPath);
    QFile file(mdbPath);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("Die Datei %1 kann nicht gelesen werden.").arg(name);
    const QByteArray head = file.read(0x20);
    if (head.size() >= 20 && head.mid(4, 15) == "Standard ACE DB")
        return QStringLiteral("Die Datei %1 ist eine Access-Datenbank ab Version 2007. TARVIK 2.0 hat seine Daten nie in "
                              "diesem Format gespeichert; bitte wählen Sie die Datei tarvik2.mdb aus dem Ordner von TARVIK 2.0.")
            .arg(name);
    if (head.size() < 0x20 || head.mid(4, 15) != "Standard Jet DB")
        return QStringLiteral("Die Datei %1 ist keine Datenbank von TARVIK 2.0 (keine Access/Jet-Datei).").arg(name);
    const int version = static_cast<unsigned char>(head[0x14]);
    const qint64 page = version == 0 ? 2048 : 4096;
    if (version > 1)
        return QStringLiteral("Die Datei %1 ist eine Access-Datenbank einer neueren Version und kann nicht übernommen werden.").arg(name);
    if (file.size() < 4 * page || file.size() % page != 0)
        return QStringLiteral("Die Datei %1 ist unvollständig (abgeschnitten) und kann nicht übernommen werden.").arg(name);
    return {};
}

JetConversion convertJetToSqlite(const QString& mdbPath, const QString& targetPath)
{
    JetConversion result;
    if (const QString problem = jetFileProblem(mdbPath); !problem.isEmpty()) {
        result.message = problem;
        return result;
    }
    MdbFile mdb;
    mdb.handle = mdb_open(QFile::encodeName(mdbPath).constData(), MDB_NOFLAGS);
    if (!mdb.handle || !mdb_read_catalog(mdb.handle, MDB_TABLE)) {
        result.message = QStringLiteral("Die Datei %1 kann nicht als Access-Datenbank gelesen werden.").arg(nativeName(mdbPath));
        return result;
    }
    mdb_set_date_fmt(mdb.handle, "%Y-%m-%d %H:%M:%S");
    mdb_set_bind_size(mdb.handle, BindSize);

    const QString temporary = targetPath + QStringLiteral(".entsteht");
    QFile::remove(temporary);
    try {
        {
            PrivateConnection connection(temporary, QStringLiteral("jet"));
            if (!connection.ok())
                throw StoreError(QStringLiteral("Die Datei %1 kann nicht angelegt werden.").arg(nativeName(temporary)));
            const QSqlDatabase db = connection.db();
            Converter converter{mdb.handle, db, mdb.handle->f->jet_version == MDB_VER_JET3, {}};
            TransactionGuard guard(db);
            for (guint i = 0; i < mdb.handle->num_catalog; ++i) {
                auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb.handle->catalog, i));
                // System tables ("MSys…") hold the engine's own bookkeeping, not data.
                if (entry->object_type != MDB_TABLE || mdb_is_system_table(entry))
                    continue;
                converter.table(entry);
            }
            guard.commit();
            result.tables = converter.tables;
        }
        if (!replaceFile(temporary, targetPath))
            throw StoreError(QStringLiteral("Die Datei %1 kann nicht angelegt werden.").arg(nativeName(targetPath)));
        result.ok = true;
    } catch (const StoreError& e) {
        QFile::remove(temporary);
        result.tables.clear();
        result.message = QStringLiteral("Die Daten aus %1 konnten nicht übernommen werden:\n%2").arg(nativeName(mdbPath), e.message());
    }
    return result;
}

} // namespace tarvik
