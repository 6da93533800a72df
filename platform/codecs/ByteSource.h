#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace ZkMobileBackup {

/// What a codec reads from. Reading has no position of its own, so several readers may share a source. Never throws;
/// any thread.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    virtual std::int64_t size() const = 0;
    /// Reads what stands at a position. Returns the number of bytes that were read: fewer than asked for only at the
    /// end, and 0 there or when reading fails.
    virtual std::size_t read(std::int64_t position, std::span<std::uint8_t> bytes) const = 0;

protected:
    ByteSource() = default;
};

}  // namespace ZkMobileBackup
