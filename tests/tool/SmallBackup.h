#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/ManifestBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {

/// A backup folder that is put together file by file.
class SmallBackup {
public:
    SmallBackup();

    /// Adds a file of the phone with its bytes.
    SmallBackup& add(const std::string& path, const std::vector<std::uint8_t>& bytes);
    /// Adds files of the phone that are all stored in one file of the backup, and returns the path of this.
    std::string addAlike(const std::vector<std::string>& paths, const std::vector<std::uint8_t>& bytes);

    const std::string& path() const { return folder_.path(); }

private:
    TemporaryFolder folder_;
    ManifestBuilder manifest_;
    int files_ = 0;
};

}  // namespace ZkMobileBackup
