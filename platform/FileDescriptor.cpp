#include "platform/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ZkMobileBackup {

namespace {

/// Copies some bytes and moves `position` behind them. Returns their number: 0 at the end of the source, negative on
/// failure. Through memory, in pieces that end where a page of the file does: faster than letting the kernel pass the
/// bytes on, which it does page by page.
ssize_t copySome(int target, int source, std::uint64_t& position, std::uint64_t most) {
    std::array<char, std::size_t{128} << 10> buffer;
    const std::uint64_t piece = buffer.size() - position % buffer.size();
    const ssize_t got = ::pread(source, buffer.data(), std::min(most, piece), static_cast<off_t>(position));
    if (got <= 0) return got;
    const ssize_t written = ::write(target, buffer.data(), static_cast<std::size_t>(got));
    if (written > 0) position += static_cast<std::uint64_t>(written);
    return written;
}

}  // namespace

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, kNone)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

std::uint64_t FileDescriptor::size() const {
    struct stat status {};
    return ::fstat(descriptor_, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool FileDescriptor::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool FileDescriptor::writeContentOf(const FileDescriptor& file, std::uint64_t& position, std::uint64_t most) {
    for (ssize_t copied = 0; most > 0; most -= static_cast<std::uint64_t>(std::max<ssize_t>(copied, 0))) {
        copied = copySome(descriptor_, file.get(), position, most);
        if (copied == 0) return true;
        if (copied < 0 && errno != EINTR) return false;
    }
    return true;
}

int FileDescriptor::release() {
    return std::exchange(descriptor_, kNone);
}

bool FileDescriptor::close() {
    return !isOpen() || ::close(release()) == 0;
}

}  // namespace ZkMobileBackup
