#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ZkMobileBackup/backup/HashValue.h"
#include "ZkMobileBackup/backup/ZkDeviceBackupSnapshot.h"
#include "base/Text.h"
#include "tests/support/Files.h"
#include "tests/support/ManifestBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {

/// A snapshot that names databases of the test's choice.
class SnapshotWithDatabases : public ZkDeviceBackupSnapshot {
public:
    SnapshotWithDatabases(const std::string& path, std::vector<std::string> databases)
        : ZkDeviceBackupSnapshot({}, {}, {}, 0, {}, path), databases_(std::move(databases)) {}
    const std::vector<std::string>& userTextDataDB() const override { return databases_; }

private:
    const std::vector<std::string> databases_;
};

inline std::shared_ptr<ZkDeviceBackupSnapshot> snapshotOf(const std::string& folder) {
    return ZkDeviceBackupSnapshot::initWithUDID({}, {}, {}, 0, {}, folder);
}

/// A backup without an index, put together file by file.
class BackupOnDisk {
public:
    /// Adds a file to the manifest and stores its content.
    BackupOnDisk& add(const std::string& path, const std::vector<std::uint8_t>& content = {1}) {
        addToManifest(path);
        writeBytes(storedPath(path), content);
        return *this;
    }

    /// Adds a file to the manifest alone: there is nothing to read behind its name.
    BackupOnDisk& addToManifest(const std::string& path, std::uint32_t changed = 0) {
        manifest_.add({.domain = kDomain, .path = path, .changed = changed});
        writeManifest(manifest_.bytes());
        return *this;
    }

    void writeManifest(const std::vector<std::uint8_t>& bytes) { writeBytes(manifestPath(), bytes); }

    /// Where the content of a file lies; stored names are lower-case, as phones write them.
    std::string storedPath(const std::string& path) const { return folder_.path(lowerCased(hashedName(path))); }
    static std::string hashedName(const std::string& path) {
        return HashValue::getHashValue(std::string(kDomain) + "-" + path).value();
    }

    const std::string& path() const { return folder_.path(); }
    std::string manifestPath() const { return folder_.path("Manifest.mbdb"); }
    const std::vector<std::uint8_t>& manifestBytes() const { return manifest_.bytes(); }
    std::shared_ptr<ZkDeviceBackupSnapshot> snapshot() const { return snapshotOf(path()); }

private:
    static constexpr const char* kDomain = "HomeDomain";

    TemporaryFolder folder_;
    ManifestBuilder manifest_;
};

}  // namespace ZkMobileBackup
