#include "common/ui/fileicons.h"

#include <QFileInfo>

namespace tarvik {

QIcon NameOnlyIconProvider::icon(const QFileInfo& info) const
{
    if (info.isRoot())
        return icon(Drive);
    return icon(info.isDir() ? Folder : File);
}

QString NameOnlyIconProvider::type(const QFileInfo& info) const
{
    if (info.isRoot())
        return QStringLiteral("Laufwerk");
    if (info.isDir())
        return QStringLiteral("Ordner");
    const QString suffix = info.suffix();
    return suffix.isEmpty() ? QStringLiteral("Datei") : suffix.toUpper() + QStringLiteral("-Datei");
}

} // namespace tarvik
