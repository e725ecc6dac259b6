#include "backup/drives.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>
#include <algorithm>

namespace tarvik {
namespace {

QString withSlash(QString path)
{
    path = QDir::fromNativeSeparators(path);
    if (!path.endsWith(u'/'))
        path += u'/';
    return path;
}

Drive fromStorage(const QStorageInfo& storage)
{
    Drive drive;
    drive.rootPath = withSlash(storage.rootPath());
    drive.volumeName = storage.name();
    drive.device = storage.device();
    drive.ready = storage.isReady();
    if (storage.isReady())
        drive.bytesAvailable = storage.bytesAvailable();
    // Where desktops mount sticks and external disks.
    for (const char* place : {"/media/", "/run/media/", "/Volumes/", "/mnt/"})
        if (drive.rootPath.startsWith(QLatin1String(place)))
            drive.removable = true;
#ifdef Q_OS_WIN
    drive.removable = !drive.rootPath.startsWith(QDir::fromNativeSeparators(QDir::rootPath()), Qt::CaseInsensitive);
#endif
    return drive;
}

} // namespace

QString Drive::displayText() const
{
    const QString root = QDir::toNativeSeparators(rootPath);
    return volumeName.isEmpty() ? root : QStringLiteral("%1   [%2]").arg(root, volumeName);
}

std::optional<Drive> DriveSource::driveOf(const QString& path) const
{
    const QString target = withSlash(QFileInfo(path).absoluteFilePath());
    std::optional<Drive> best;
    for (const Drive& d : drives())
        if (target.startsWith(d.rootPath) && (!best || d.rootPath.size() > best->rootPath.size()))
            best = d;
    return best;
}

QList<Drive> SystemDrives::drives() const
{
    static const QList<QByteArray> pseudo = {"tmpfs", "devtmpfs", "proc", "sysfs", "overlay", "squashfs", "ramfs",
                                             "cgroup", "cgroup2", "devpts", "mqueue", "debugfs", "tracefs", "securityfs",
                                             "pstore", "bpf", "autofs", "fusectl", "configfs", "hugetlbfs", "efivarfs"};
    QList<Drive> list;
    for (const QStorageInfo& storage : QStorageInfo::mountedVolumes()) {
        if (!storage.isValid() || pseudo.contains(storage.fileSystemType()))
            continue;
        if (storage.rootPath().startsWith(QLatin1String("/boot")) || storage.rootPath().startsWith(QLatin1String("/snap/")))
            continue;
        list.append(fromStorage(storage));
    }
    sortRemovableFirst(list);
    return list;
}

std::optional<Drive> SystemDrives::driveOf(const QString& path) const
{
    const QStorageInfo storage(path);
    if (!storage.isValid())
        return std::nullopt;
    return fromStorage(storage);
}

bool isReachable(const Drive& drive)
{
    const QFileInfo root(drive.rootPath);
    return drive.ready && root.isDir() && root.isReadable();
}

bool sameDevice(const Drive& a, const Drive& b)
{
    if (!a.device.isEmpty() || !b.device.isEmpty())
        return a.device == b.device;
    return a.rootPath == b.rootPath;
}

void sortRemovableFirst(QList<Drive>& drives)
{
    std::stable_sort(drives.begin(), drives.end(), [](const Drive& a, const Drive& b) { return a.removable && !b.removable; });
}

} // namespace tarvik
