#pragma once

#include <cstdint>
#include <limits>
#include <string_view>
#include <sys/types.h>

namespace ZkMobileBackup {

/// The permissions of new files: what the process masks is taken from them.
inline constexpr mode_t kReadableByAll = 0666;

/// An open file or folder of the operating system, closed with the object. Belongs to one thread at a time.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = kNone) : descriptor_(descriptor) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }

    /// Bytes in the file; 0 when unknown.
    std::uint64_t size() const;
    /// Writes all of the bytes. Returns false on failure, with its reason in errno.
    bool write(std::string_view bytes);
    /// Writes what another file holds from `position` on, no more than `most` bytes of it, and moves `position` behind
    /// what was written. Returns false on failure, with its reason in errno.
    bool writeContentOf(const FileDescriptor& file, std::uint64_t& position,
                        std::uint64_t most = std::numeric_limits<std::uint64_t>::max());
    /// Hands the file over: from here on somebody else closes it.
    int release();
    /// False when bytes written before could not be stored after all, with the reason in errno.
    bool close();

private:
    static constexpr int kNone = -1;

    int descriptor_;
};

}  // namespace ZkMobileBackup
