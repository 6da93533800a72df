#include "base/Text.h"
#include "recovery/Converter.h"
#include "recovery/shaping/calendar_item.h"
#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

// Follows the calendar's share: both come from one database.
constexpr ProgressShare kShare{kOneThirtySixth, 36.0};

void setCompletion(Dictionary& row, std::string_view completionDate) {
    row.set("status", completionDate == kNullCell ? "Uncompleted" : "Completed");
    // An uncompleted reminder reads 0 here and shows the epoch: its date column is never empty.
    const auto seconds = static_cast<double>(integerValue(completionDate));
    row.set("date", Converter::formatedStringFromDate(Converter::dateWithSqliteTimeStamp(seconds)));
}

Dictionary reminderRow(Dictionary row, const Row& item, std::size_t completionColumn) {
    row.set("title", item.cell(kItemTitleCell));
    row.set("list", "Reminders");
    if (const auto completionDate = cellOf(item, completionColumn)) setCompletion(row, *completionDate);
    return row;
}

}  // namespace

std::shared_ptr<CustomTableObject> shapeReminders(const Source& source) {
    TableShaper shaper(source, "Reminders", {"title", "list", "status", "date"});
    const RawTableObject* items = shaper.rawTable(kCalendarItemTable);
    if (items == nullptr) return shaper.result();
    const std::size_t entityType = columnIndex(*items, kEntityTypeColumn);
    const std::size_t completion = columnIndex(*items, "completion_date");
    if (entityType == kMissingColumn) return shaper.result();
    shaper.walk(*items, kShare, [&](const Row& item, Origin origin) {
        if (!isEvent(item, entityType)) shaper.add(reminderRow(shaper.newRow(), item, completion), origin);
    });
    return shaper.result();
}

}  // namespace ZkMobileBackup::shaping
