#include "platform/ByteSources.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

/// One read of a file; what is left to read may be tried again.
ssize_t readOnce(int file, std::int64_t position, std::span<std::uint8_t> bytes) {
    for (;;) {
        const ssize_t count = ::pread(file, bytes.data(), bytes.size(), position);
        if (count >= 0 || errno != EINTR) return count;
    }
}

}  // namespace

FileBytes::FileBytes(const std::string& path) : file_(openRegularFile(path)) {
    struct stat status;
    if (file_.isOpen() && ::fstat(file_.get(), &status) == 0) size_ = status.st_size;
}

std::size_t FileBytes::read(std::int64_t position, std::span<std::uint8_t> bytes) const {
    if (!file_.isOpen() || position < 0) return 0;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = readOnce(file_.get(), position + static_cast<std::int64_t>(done), bytes.subspan(done));
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

std::int64_t HeldBytes::size() const {
    return bytes_ == nullptr ? 0 : static_cast<std::int64_t>(bytes_->size());
}

std::size_t HeldBytes::read(std::int64_t position, std::span<std::uint8_t> bytes) const {
    if (position < 0 || position >= size()) return 0;
    const std::size_t count = std::min(bytes.size(), static_cast<std::size_t>(size() - position));
    std::copy_n(bytes_->begin() + position, count, bytes.begin());
    return count;
}

}  // namespace ZkMobileBackup
