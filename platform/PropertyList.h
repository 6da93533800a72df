#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Value.h"

namespace ZkMobileBackup {

/// Reads a property-list file, XML or binary, whose root is a dictionary; nothing for anything else, and for a list
/// that is larger or deeper than any a backup comes with (see property_list_limits.h). Numbers, texts, dates, data,
/// arrays and dictionaries become values; true and false become 1 and 0. Any thread.
std::optional<Dictionary> readPropertyList(const std::string& path);
/// The same from memory.
std::optional<Dictionary> parsePropertyList(std::string_view bytes);

}  // namespace ZkMobileBackup
