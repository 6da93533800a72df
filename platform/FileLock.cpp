#include "platform/FileLock.h"

#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>

#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

/// Waits for its turn; false on failure.
bool lockWhole(int file) {
    int result = -1;
    do {
        result = ::flock(file, LOCK_EX);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

}  // namespace

FileLock::FileLock(const std::string& path) {
    constexpr mode_t kOwnerOnly = 0600;
    file_ = FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
    if (!file_.isOpen() || !lockWhole(file_.get())) {
        failure_ = fmt::format("Cannot lock '{}': {}.", path, textOfError(errno));
    }
}

}  // namespace ZkMobileBackup
