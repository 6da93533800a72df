#pragma once

#include <string>
#include <utility>

#include "base/Value.h"
#include "platform/FileDescriptor.h"
#include "platform/codecs/ByteSource.h"

namespace ZkMobileBackup {

/// A regular file, opened for reading only; of size 0 when it cannot be read. What was cut off the file since it was
/// opened is not read.
class FileBytes final : public ByteSource {
public:
    explicit FileBytes(const std::string& path);

    std::int64_t size() const override { return size_; }
    std::size_t read(std::int64_t position, std::span<std::uint8_t> bytes) const override;

private:
    FileDescriptor file_;
    std::int64_t size_ = 0;
};

/// Bytes in memory.
class HeldBytes final : public ByteSource {
public:
    explicit HeldBytes(SharedBytes bytes) : bytes_(std::move(bytes)) {}

    std::int64_t size() const override;
    std::size_t read(std::int64_t position, std::span<std::uint8_t> bytes) const override;

private:
    SharedBytes bytes_;  // may be null
};

}  // namespace ZkMobileBackup
