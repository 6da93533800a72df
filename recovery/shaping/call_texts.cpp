#include "recovery/shaping/call_texts.h"

#include <fmt/format.h>
#include <string_view>

namespace ZkMobileBackup::shaping {

namespace {

constexpr std::string_view kIncoming = "Incoming";
constexpr std::string_view kOutgoing = "Outgoing";
constexpr std::string_view kFailed = "Failed";

/// Whole units in singular or plural. Seconds are capitalised, minutes and hours are not: exported lists have always
/// read so.
struct Unit {
    std::int64_t seconds;
    std::string_view one;
    std::string_view many;
};
constexpr Unit kUnits[] = {{3600, "hour", "hours"}, {60, "minute", "minutes"}, {1, "Second", "Seconds"}};

/// What became of a call of no duration.
std::string_view outcome(std::string_view type) {
    if (type == kOutgoing) return "Cancelled";
    if (type == kIncoming) return "Missed";
    if (type == kFailed) return "0 Second";
    return "";
}

}  // namespace

std::string callType(std::int64_t flags, std::int64_t duration) {
    if (flags == 0) return std::string(kIncoming);
    return std::string(duration > 0 ? kOutgoing : kFailed);
}

std::string callDuration(std::int64_t duration, const std::optional<std::string>& type) {
    if (duration == 0) return std::string(outcome(type.value_or("")));
    for (const Unit& unit : kUnits) {
        const std::int64_t count = duration / unit.seconds;
        if (count > 0) return fmt::format("{} {}", count, count == 1 ? unit.one : unit.many);
    }
    return {};
}

}  // namespace ZkMobileBackup::shaping
