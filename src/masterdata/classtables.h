#pragma once
// The four class tables that classify measured wood. A log class also names the columns
// "SK_" + class of the bark deduction, day price and base amount tables.
#include "masterdata/editmode.h"

namespace tarvik {

enum class ClassTable { Staemme, Heilbronn, Pfaehle, Schichtholz };

struct ClassForm {
    QString klasse;
    QStringList values; // the fields after `Klasse`, in window order, as typed
};

QString classTableName(ClassTable table);
// Every edited column, `Klasse` first.
QStringList classColumns(ClassTable table);
// The captions of the fields, in the same order.
QStringList classCaptions(ClassTable table);

ClassForm loadClass(const QSqlDatabase& db, ClassTable table, qint32 id);

// Checks, stores and keeps the columns in step, in one transaction; false when refused (the
// gathered reasons or the rename refusal shown), nothing stored.
bool storeClass(const AppContext& context, ClassTable table, EditMode mode, std::optional<qint32> id, const ClassForm& form);

} // namespace tarvik
