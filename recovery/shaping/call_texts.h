#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ZkMobileBackup::shaping {

/// What kind of call it was, from its flags and its duration in seconds.
std::string callType(std::int64_t flags, std::int64_t duration);

/// A duration in seconds in its largest whole unit, or what became of a call of no duration.
std::string callDuration(std::int64_t duration, const std::optional<std::string>& type);

}  // namespace ZkMobileBackup::shaping
