#include "common/replacefile.h"

#include <filesystem>
#include <system_error>

namespace tarvik {

bool replaceFile(const QString& from, const QString& to, QString* error)
{
    std::error_code ec;
    std::filesystem::rename(std::filesystem::path(from.toStdU16String()), std::filesystem::path(to.toStdU16String()), ec);
    if (ec && error)
        *error = QString::fromStdString(ec.message());
    return !ec;
}

} // namespace tarvik
