#pragma once

#include <cstddef>
#include <string_view>

namespace ZkMobileBackup {

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

    /// Writes all of the bytes. Returns false on failure, with its reason in errno.
    bool write(std::string_view bytes);
    /// Writes what is in another file from a position on. Returns false on failure, with its reason in errno.
    bool writeContentOf(const FileDescriptor& file, std::size_t position);
    /// False when bytes written before could not be stored after all, with the reason in errno.
    bool close();

private:
    static constexpr int kNone = -1;

    int descriptor_;
};

}  // namespace ZkMobileBackup
