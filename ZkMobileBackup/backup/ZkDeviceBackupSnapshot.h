#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Api.h"
#include "base/Value.h"

namespace ZkMobileBackup {

/// One backup of one device: where it came from and where its files lie. Never changes, any thread may read it.
class ZKMB_API ZkDeviceBackupSnapshot {
public:
    // initWithUDID:serialNumber:deviceClass:size:lastUpdate:path:
    /// Nothing is looked up: what is unknown stays unknown, and `path` need not exist. `size` is in bytes.
    static std::shared_ptr<ZkDeviceBackupSnapshot> initWithUDID(std::optional<std::string> UDID,
                                                                std::optional<std::string> serialNumber,
                                                                std::optional<std::string> deviceClass,
                                                                std::int64_t size, std::optional<Date> lastUpdate,
                                                                std::string path);
    virtual ~ZkDeviceBackupSnapshot();
    ZkDeviceBackupSnapshot(const ZkDeviceBackupSnapshot&) = delete;
    ZkDeviceBackupSnapshot& operator=(const ZkDeviceBackupSnapshot&) = delete;

    // UDID
    const std::optional<std::string>& UDID() const { return UDID_; }
    // serialNumber
    const std::optional<std::string>& serialNumber() const { return serialNumber_; }
    // deviceClass
    const std::optional<std::string>& deviceClass() const { return deviceClass_; }
    // size
    std::int64_t size() const { return size_; }
    // lastUpdate
    const std::optional<Date>& lastUpdate() const { return lastUpdate_; }
    // path
    /// The backup folder: manifest and data files are looked up in it.
    const std::string& path() const { return path_; }

    // userTextDataDB ("databases of the user's texts and data")
    /// Names of the files that a scan takes for application databases. A subclass may name others.
    virtual const std::vector<std::string>& userTextDataDB() const;

protected:
    ZkDeviceBackupSnapshot(std::optional<std::string> UDID, std::optional<std::string> serialNumber,
                           std::optional<std::string> deviceClass, std::int64_t size, std::optional<Date> lastUpdate,
                           std::string path);

private:
    const std::optional<std::string> UDID_;
    const std::optional<std::string> serialNumber_;
    const std::optional<std::string> deviceClass_;
    const std::int64_t size_;
    const std::optional<Date> lastUpdate_;
    const std::string path_;
};

}  // namespace ZkMobileBackup
