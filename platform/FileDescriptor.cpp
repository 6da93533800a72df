#include "platform/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/sendfile.h>
#include <unistd.h>
#include <utility>

namespace ZkMobileBackup {

namespace {

/// Copies some bytes through memory. Returns as sendSome does.
ssize_t passSome(int target, int source, off_t& offset, std::size_t count) {
    std::array<char, std::size_t{64} << 10> buffer;
    const ssize_t got = ::pread(source, buffer.data(), std::min(count, buffer.size()), offset);
    if (got <= 0) return got;
    const ssize_t written = ::write(target, buffer.data(), static_cast<std::size_t>(got));
    if (written > 0) offset += written;
    return written;
}

/// Copies some bytes, inside the kernel where it can, and moves `offset` behind them. Returns their number: 0 at the
/// end of the source, negative on failure.
ssize_t sendSome(int target, int source, off_t& offset, std::size_t count) {
    const ssize_t sent = ::sendfile(target, source, &offset, count);
    if (sent >= 0 || (errno != EINVAL && errno != ENOSYS)) return sent;
    return passSome(target, source, offset, count);  // not every file system takes part in that
}

}  // namespace

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, kNone)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
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
    constexpr std::uint64_t kPiece = std::uint64_t{64} << 20;
    auto offset = static_cast<off_t>(position);
    for (ssize_t sent = 0; most > 0; most -= static_cast<std::uint64_t>(std::max<ssize_t>(sent, 0))) {
        sent = sendSome(descriptor_, file.get(), offset, std::min(most, kPiece));
        position = static_cast<std::uint64_t>(offset);
        if (sent == 0) return true;
        if (sent < 0 && errno != EINTR) return false;
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
