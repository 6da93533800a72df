#include "ZkMobileBackup/backup/ZkDeviceBackupSnapshot.h"

#include <utility>

#include "ZkMobileBackup/backup/ApplicationDatabases.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkDeviceBackupSnapshot> ZkDeviceBackupSnapshot::initWithUDID(
    std::optional<std::string> UDID, std::optional<std::string> serialNumber, std::optional<std::string> deviceClass,
    std::int64_t size, std::optional<Date> lastUpdate, std::string path) {
    return std::shared_ptr<ZkDeviceBackupSnapshot>(new ZkDeviceBackupSnapshot(
        std::move(UDID), std::move(serialNumber), std::move(deviceClass), size, lastUpdate, std::move(path)));
}

ZkDeviceBackupSnapshot::ZkDeviceBackupSnapshot(std::optional<std::string> UDID, std::optional<std::string> serialNumber,
                                               std::optional<std::string> deviceClass, std::int64_t size,
                                               std::optional<Date> lastUpdate, std::string path)
    : UDID_(std::move(UDID)),
      serialNumber_(std::move(serialNumber)),
      deviceClass_(std::move(deviceClass)),
      size_(size),
      lastUpdate_(lastUpdate),
      path_(std::move(path)) {}

ZkDeviceBackupSnapshot::~ZkDeviceBackupSnapshot() = default;

const std::vector<std::string>& ZkDeviceBackupSnapshot::userTextDataDB() const {
    static const auto& names =
        *new std::vector<std::string>(kApplicationDatabases.begin(), kApplicationDatabases.end());
    return names;
}

}  // namespace ZkMobileBackup
