#pragma once

#include <string>

namespace ZkMobileBackup {

/// A new, empty folder that is removed with all its content when the object goes.
class TemporaryFolder {
public:
    /// Throws std::runtime_error when no folder can be made.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(TemporaryFolder&& other) noexcept;
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    /// The path of an entry of the folder, which need not exist.
    std::string path(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

}  // namespace ZkMobileBackup
