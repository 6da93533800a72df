#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace ZkMobileBackup {

TemporaryFolder::TemporaryFolder() : path_((std::filesystem::temp_directory_path() / "zkmb_XXXXXX").string()) {
    if (!mkdtemp(path_.data())) throw std::runtime_error("cannot make the folder " + path_);
}

TemporaryFolder::TemporaryFolder(TemporaryFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}

TemporaryFolder::~TemporaryFolder() {
    if (path_.empty()) return;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace ZkMobileBackup
