#pragma once
// libzip's error texts are English; a user reads what went wrong in German.
#include <QString>

typedef struct zip zip_t;
typedef struct zip_file zip_file_t;

namespace tarvik {

// The German text for a libzip error code (ZIP_ER_*), with the system's reason for file errors.
QString germanZipError(int zipCode, int systemCode = 0);
QString germanZipError(zip_t* archive);
QString germanZipError(zip_file_t* entry);

} // namespace tarvik
