#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ZkMobileBackup {

/// A hash of texts that come from files: SipHash-1-3 under a key that each process draws for itself, so that no file
/// can be made whose texts all collide.
std::uint64_t keyedHash(std::string_view text);

/// The same as a function object.
struct KeyedHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return keyedHash(text); }
};

}  // namespace ZkMobileBackup
