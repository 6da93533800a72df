#include "platform/FileDescriptor.h"

#include <cerrno>
#include <sys/sendfile.h>
#include <unistd.h>
#include <utility>

namespace ZkMobileBackup {

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

bool FileDescriptor::writeContentOf(const FileDescriptor& file, std::size_t position) {
    constexpr std::size_t kPiece = std::size_t{64} << 20;
    auto offset = static_cast<off_t>(position);
    for (;;) {
        const ssize_t sent = ::sendfile(descriptor_, file.get(), &offset, kPiece);
        if (sent == 0) return true;
        if (sent < 0 && errno != EINTR) return false;
    }
}

bool FileDescriptor::close() {
    return !isOpen() || ::close(std::exchange(descriptor_, kNone)) == 0;
}

}  // namespace ZkMobileBackup
