#include "platform/FileLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace ZkMobileBackup {

FileLock::FileLock(const std::string& path) {
    constexpr mode_t kOwnerOnly = 0600;
    file_ = FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
    if (!file_.isOpen()) return;
    while (::flock(file_.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
}

}  // namespace ZkMobileBackup
