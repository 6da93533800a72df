#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ZkMobileBackup/backup/ZkDeviceBackupSnapshot.h"

namespace ZkMobileBackup {

/// A backup that a phone left on this computer.
class ZKMB_API ZkiTunesBackupSnapshot : public ZkDeviceBackupSnapshot {
public:
    // initWithUDID:serialNumber:deviceClass:size:lastUpdate:path:
    static std::shared_ptr<ZkiTunesBackupSnapshot> initWithUDID(std::optional<std::string> UDID,
                                                                std::optional<std::string> serialNumber,
                                                                std::optional<std::string> deviceClass,
                                                                std::int64_t size, std::optional<Date> lastUpdate,
                                                                std::string path);

    // iTunesBackupSnapshots
    /// The backups in the current user's backups folder, as they were at the first call in this process: the same list
    /// every time. Empty when the folder cannot be listed. Any thread.
    static const std::vector<std::shared_ptr<ZkiTunesBackupSnapshot>>& iTunesBackupSnapshots();

    // --- Additions of ours -------------------------------------------------------------------------------------------

    /// The backups in any folder of backups, as they are now, in the byte order of their folders' names: one for each
    /// entry with a readable "Info.plist". Empty when the folder cannot be listed. `size` is always 0, `deviceClass`
    /// the name that the device's user gave it. Any thread.
    static std::vector<std::shared_ptr<ZkiTunesBackupSnapshot>> snapshotsInFolder(const std::string& path);

protected:
    using ZkDeviceBackupSnapshot::ZkDeviceBackupSnapshot;
};

}  // namespace ZkMobileBackup
