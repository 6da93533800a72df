#pragma once

#include <cstdint>

namespace ZkMobileBackup::engine {

/// A variable-length number as it was read.
struct Varint {
    std::uint64_t value = 0;
    std::int64_t consumed = 0;  ///< bytes looked at
    std::int64_t advance = 0;   ///< from the start to the next position

    /// Longer numbers are taken for damage.
    static constexpr std::int64_t kMostBytes = 8;
    bool tooLong() const { return consumed > kMostBytes; }
};

/// Reads a number of at most `available` bytes, each given by byteAt(index). See varintDecode for the reading.
template <typename ByteAt>
Varint readVarint(ByteAt byteAt, std::int64_t available) {
    if (available <= 0) return {0, 0, 1};
    std::uint64_t value = 0;
    std::uint64_t shift = 0;
    for (std::int64_t i = 0; i < available; ++i, shift += 7) {
        const std::uint8_t byte = byteAt(i);
        // The whole accumulator is shifted, by 7 more at each byte: longer numbers than two bytes come out otherwise
        // than they were written, and what every table of this library shows depends on it.
        value = (shift < 64 ? value << shift : 0) | (byte & 0x7FU);
        if (byte < 0x80) return {value, i + 1, i + 1};
    }
    return {value, available, available + 1};
}

}  // namespace ZkMobileBackup::engine
