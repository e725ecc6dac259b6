#pragma once
// Drives for the backup tests: temporary folders standing in for sticks, with made-up volume
// names; the data folder lies on the drive of the system's temporary folder.
#include "backup/drives.h"

#include <QDir>
#include <QTemporaryDir>
#include <memory>
#include <vector>

namespace tarvik::test {

class FakeDrives final : public DriveSource {
public:
    FakeDrives()
    {
        Drive disk;
        disk.rootPath = QDir::tempPath() + u'/';
        disk.volumeName = QStringLiteral("Festplatte");
        disk.device = "/dev/festplatte";
        disk.bytesAvailable = qint64(1) << 40;
        m_drives.append(disk);
    }

    // A stick with that volume name; its folder is the drive's root.
    Drive& addStick(const QString& volumeName)
    {
        m_folders.push_back(std::make_unique<QTemporaryDir>());
        Drive stick;
        stick.rootPath = m_folders.back()->path() + u'/';
        stick.volumeName = volumeName;
        stick.device = "/dev/stick" + QByteArray::number(int(m_folders.size()));
        stick.removable = true;
        m_drives.append(stick);
        sortRemovableFirst(m_drives);
        return stickNamed(volumeName);
    }

    Drive& stickNamed(const QString& volumeName)
    {
        for (Drive& d : m_drives)
            if (d.volumeName == volumeName)
                return d;
        qFatal("no stick %s", qPrintable(volumeName));
    }

    // Pulls the stick out: its folder is gone.
    void pull(const QString& volumeName) { QDir(stickNamed(volumeName).rootPath).removeRecursively(); }

    QList<Drive> drives() const override { return m_drives; }

private:
    QList<Drive> m_drives;
    std::vector<std::unique_ptr<QTemporaryDir>> m_folders;
};

} // namespace tarvik::test
