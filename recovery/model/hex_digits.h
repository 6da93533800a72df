#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <span>

namespace ZkMobileBackup {

/// Writes two upper-case hexadecimal digits a byte to `target`.
template <typename Character>
void writeHexDigits(std::span<const std::uint8_t> bytes, Character* target) {
    static_assert(sizeof(Character) == 1);
    using Pair = std::array<char, 2>;
    static constexpr auto kPairs = [] {
        constexpr char kDigits[] = "0123456789ABCDEF";
        std::array<Pair, 256> pairs{};
        for (std::size_t byte = 0; byte < pairs.size(); ++byte) pairs[byte] = {kDigits[byte / 16], kDigits[byte % 16]};
        return pairs;
    }();
    for (const std::uint8_t byte : bytes) {
        std::memcpy(target, kPairs[byte].data(), sizeof(Pair));
        target += sizeof(Pair);
    }
}

}  // namespace ZkMobileBackup
