#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Api.h"

namespace ZkMobileBackup {

/// Gives files of a backup the names under which they are stored.
class ZKMB_API HashValue {
public:
    HashValue() = delete;

    // getHashValue:
    /// SHA-1 of the text's bytes as 40 upper-case hexadecimal digits; nothing when hashing fails. Any thread.
    static std::optional<std::string> getHashValue(std::string_view text);
};

}  // namespace ZkMobileBackup
