#pragma once
// The drives a backup can go to: the platform's mounted volumes in the program, folders with
// made-up volume names in tests.
#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace tarvik {

struct Drive {
    QString rootPath;   // ends in "/"
    QString volumeName; // the label the stick rotation compares
    QByteArray device;  // two roots on one device are one drive
    bool removable = false;
    bool ready = true;
    std::optional<qint64> bytesAvailable;

    QString displayText() const;
};

class DriveSource {
public:
    virtual ~DriveSource() = default;
    // Removable drives first.
    virtual QList<Drive> drives() const = 0;
    // The drive holding the path; by default the listed drive with the longest matching root.
    virtual std::optional<Drive> driveOf(const QString& path) const;
};

// The mounted volumes of this machine.
class SystemDrives final : public DriveSource {
public:
    QList<Drive> drives() const override;
    std::optional<Drive> driveOf(const QString& path) const override;
};

// Whether a drive can be listed and written to right now.
bool isReachable(const Drive& drive);
bool sameDevice(const Drive& a, const Drive& b);
void sortRemovableFirst(QList<Drive>& drives);

} // namespace tarvik
