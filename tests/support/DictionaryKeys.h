#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/Value.h"

namespace ZkMobileBackup {

/// The keys of a dictionary in their order.
inline std::vector<std::string> keysOf(const Dictionary& dictionary) {
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < dictionary.size(); ++i) keys.push_back(dictionary.keyAt(i));
    return keys;
}

}  // namespace ZkMobileBackup
