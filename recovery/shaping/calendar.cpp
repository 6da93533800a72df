#include "base/Text.h"
#include "recovery/Converter.h"
#include "recovery/epochs.h"
#include "recovery/shaping/calendar_item.h"
#include "recovery/shaping/key_index.h"
#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

constexpr ProgressShare kShare{0, 36.0};

constexpr std::size_t kItemLocationCell = 2;
constexpr std::size_t kLocationKeyCell = 0;
constexpr std::size_t kLocationTitleCell = 2;

struct EventColumns {
    std::size_t entityType;
    std::size_t startDate;
    std::size_t endDate;
};

/// Events count from the reference date itself, not from the second before it as the dates of the other tables do.
Date eventDate(std::string_view seconds) {
    return {kReferenceDate + static_cast<double>(integerValue(seconds))};
}

void setDate(Dictionary& row, std::string_view column, const Row& item, std::size_t index) {
    if (const auto seconds = cellOf(item, index))
        row.set(column, Converter::formatedStringFromDate(eventDate(*seconds)));
}

/// The title of the first live location with the item's key; that one decides even when it has no title.
std::string_view locationOf(const Row& item, KeyIndex& locations) {
    const auto key = cellOf(item, kItemLocationCell);
    if (!key) return {};
    const Row* location = locations.findFirst(integerValue(*key));
    return location != nullptr ? location->cell(kLocationTitleCell) : std::string_view();
}

Dictionary eventRow(Dictionary row, const Row& item, const EventColumns& columns, KeyIndex& locations) {
    row.set("title", item.cell(kItemTitleCell));
    setDate(row, "startdate", item, columns.startDate);
    setDate(row, "endDate", item, columns.endDate);
    row.set("location", locationOf(item, locations));
    return row;
}

}  // namespace

std::shared_ptr<CustomTableObject> shapeCalendar(const Source& source) {
    TableShaper shaper(source, "Calendar", {"title", "startdate", "endDate", "location"});
    const RawTableObject* items = shaper.rawTable(kCalendarItemTable);
    const RawTableObject* locations = shaper.rawTable("Location");
    if (items == nullptr || locations == nullptr) return shaper.result();
    const EventColumns columns{columnIndex(*items, kEntityTypeColumn), columnIndex(*items, "start_date"),
                               columnIndex(*items, "end_date")};
    if (columns.entityType == kMissingColumn) return shaper.result();
    KeyIndex locationsByKey(locations->rowList(), kLocationKeyCell, rowCount(*items));
    shaper.walk(*items, kShare, [&](const Row& item, Origin origin) {
        if (!isEvent(item, columns.entityType)) return;
        shaper.add(eventRow(shaper.newRow(), item, columns, locationsByKey), origin);
    });
    return shaper.result();
}

}  // namespace ZkMobileBackup::shaping
