#pragma once

#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

// The table "CalendarItem" holds events and reminders side by side.

inline constexpr std::string_view kCalendarItemTable = "CalendarItem";
inline constexpr std::string_view kEntityTypeColumn = "entity_type";
inline constexpr std::size_t kItemTitleCell = 1;

/// Whether an item is an event; every other one counts as a reminder, a carved one whose type was lost included.
inline bool isEvent(const Row& item, std::size_t entityTypeColumn) {
    constexpr std::int64_t kEventType = 2;
    return integerCell(item, entityTypeColumn) == kEventType;
}

}  // namespace ZkMobileBackup::shaping
