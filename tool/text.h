#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/Value.h"

namespace zkmb {

/// At most `maxCharacters` characters of a text that is safe on a terminal: control characters become spaces, so that
/// what a backup holds can neither break a line nor move the cursor. A cut is marked by "…".
std::string oneLine(std::string_view text, std::size_t maxCharacters);

/// Number of columns that a text takes on a terminal: two for an East Asian character or an emoji, one for any other.
std::size_t displayWidth(std::string_view text);

/// "2014-02-04T13:49:00Z", fractions of a second cut; nothing for an instant outside the years 0 to 9999.
std::optional<std::string> iso8601(ZkMobileBackup::Date date);

/// A value as people read it: arrays and dictionaries as their parts, separated by commas.
std::string readable(const ZkMobileBackup::Value& value);

}  // namespace zkmb
