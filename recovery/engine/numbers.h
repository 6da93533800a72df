#pragma once

#include <cstdint>

// Changes of width that are part of the engine's results, each under one name. All are defined for every input.

namespace ZkMobileBackup::engine {

/// In-page offsets are compared in 16 bits.
inline std::uint16_t low16(std::uint64_t value) {
    return static_cast<std::uint16_t>(value);
}
inline std::uint16_t low16(std::int64_t value) {
    return low16(static_cast<std::uint64_t>(value));
}
inline std::uint32_t low32(std::uint64_t value) {
    return static_cast<std::uint32_t>(value);
}
/// 32-bit content is printed, and serial types are kept, as signed numbers.
inline std::int32_t signed32(std::uint32_t value) {
    return static_cast<std::int32_t>(value);
}
/// Sizes and offsets of cells wrap at 32 bits.
inline std::int32_t wrappedSum32(std::int32_t a, std::int32_t b) {
    return signed32(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

}  // namespace ZkMobileBackup::engine
