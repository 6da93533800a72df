#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace ZkMobileBackup {

/// The most characters of a number of 64 bits, its sign among them.
inline constexpr std::size_t kMostDecimalDigits = 20;

/// Number of decimal digits.
inline std::size_t decimalDigitCount(std::uint64_t number) {
    static constexpr auto kPowersOfTen = [] {
        std::array<std::uint64_t, kMostDecimalDigits> powers{1};
        for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
        return powers;
    }();
    // 1233 / 4096 is log10(2): what comes out is the count or one less.
    const auto atLeast = static_cast<std::size_t>(std::bit_width(number)) * 1233U / 4096U;
    return number >= kPowersOfTen[atLeast] ? atLeast + 1 : atLeast;
}

/// Writes a number in decimal and returns the position behind it.
template <typename Integer, typename Character>
Character* writeDecimalDigits(Integer number, Character* target) {
    static_assert(sizeof(Character) == 1);
    using Pair = std::array<char, 2>;
    static constexpr auto kPairs = [] {
        constexpr char kDigits[] = "0123456789";
        std::array<Pair, 100> pairs{};
        for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {kDigits[i / 10], kDigits[i % 10]};
        return pairs;
    }();
    auto rest = static_cast<std::make_unsigned_t<Integer>>(number);
    if (number < 0) {
        *target++ = '-';
        rest = 0 - rest;
    }
    Character* const end = target + decimalDigitCount(rest);
    Character* at = end;
    for (; rest >= 100; rest /= 100) {
        at -= sizeof(Pair);
        std::memcpy(at, kPairs[rest % 100].data(), sizeof(Pair));
    }
    if (rest >= 10) {
        std::memcpy(target, kPairs[rest].data(), sizeof(Pair));
    } else {
        *target = static_cast<Character>(kPairs[rest].back());
    }
    return end;
}

}  // namespace ZkMobileBackup
