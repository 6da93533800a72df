#pragma once

#include <optional>
#include <string_view>

#include "base/Value.h"

namespace ZkMobileBackup::shaping {

/// Shown for a person whom nothing names.
inline constexpr std::string_view kUnknownPerson = "Unknown";

/// The name of the other party of a call or a conversation, whose identifier is a phone number or an address, nothing
/// where it was lost; null for no contacts map. The text belongs to the map.
std::string_view partyName(std::optional<std::string_view> identifier, const Dictionary* contactsMap);

}  // namespace ZkMobileBackup::shaping
