#include "store/collation.h"

#include "store/sql.h"

#include <cstring>
#include <sqlite3.h>
#include <unicode/ucol.h>

namespace tarvik {
namespace {

// A collator of its own for every handle and thread: ICU collators are not shared across threads.
// Primary strength: neither case nor the dots of an umlaut count, ß counts as ss.
UCollator* openCollator()
{
    UErrorCode status = U_ZERO_ERROR;
    UCollator* collator = ucol_open("de_DE", &status);
    if (U_FAILURE(status)) {
        ucol_close(collator);
        return nullptr;
    }
    ucol_setStrength(collator, UCOL_PRIMARY);
    return collator;
}

int compareUtf8(void* context, int lengthA, const void* a, int lengthB, const void* b)
{
    // Lists repeat few names many times: most comparisons meet the same bytes.
    if (lengthA == lengthB && std::memcmp(a, b, size_t(lengthA)) == 0)
        return 0;
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult r = ucol_strcollUTF8(static_cast<UCollator*>(context), static_cast<const char*>(a), lengthA,
                                                static_cast<const char*>(b), lengthB, &status);
    if (U_FAILURE(status)) {
        const int common = std::min(lengthA, lengthB);
        const int bytes = std::memcmp(a, b, size_t(common));
        return bytes != 0 ? bytes : lengthA - lengthB;
    }
    return r == UCOL_LESS ? -1 : r == UCOL_GREATER ? 1 : 0;
}

void closeCollator(void* context) { ucol_close(static_cast<UCollator*>(context)); }

} // namespace

bool registerGermanCollation(sqlite3* handle)
{
    if (!handle)
        return false;
    UCollator* collator = openCollator();
    if (!collator)
        return false;
    // Once registered the engine closes the collator with the handle; a refusal leaves it to us.
    if (sqlite3_create_collation_v2(handle, GermanCollation, SQLITE_UTF8, collator, &compareUtf8, &closeCollator) != SQLITE_OK) {
        ucol_close(collator);
        return false;
    }
    return true;
}

bool registerGermanCollation(const QSqlDatabase& db) { return registerGermanCollation(sqliteHandle(db)); }

QString inGermanOrder(const QString& expression)
{
    return expression + QStringLiteral(" COLLATE ") + QLatin1String(GermanCollation);
}

int compareGerman(QStringView a, QStringView b)
{
    struct Owned {
        UCollator* collator = openCollator();
        ~Owned() { ucol_close(collator); }
    };
    thread_local Owned own;
    if (!own.collator)
        return a.compare(b, Qt::CaseInsensitive);
    const UCollationResult r = ucol_strcoll(own.collator, reinterpret_cast<const UChar*>(a.utf16()), int32_t(a.size()),
                                            reinterpret_cast<const UChar*>(b.utf16()), int32_t(b.size()));
    return r == UCOL_LESS ? -1 : r == UCOL_GREATER ? 1 : 0;
}

} // namespace tarvik
