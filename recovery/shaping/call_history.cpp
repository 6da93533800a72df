#include "base/Text.h"
#include "recovery/Converter.h"
#include "recovery/shaping/call_texts.h"
#include "recovery/shaping/party_name.h"
#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

constexpr double kShareDivisor = 18.0;

// The columns of "call" are known by their places alone.
constexpr std::size_t kNumberCell = 1;
constexpr std::size_t kTimeCell = 2;
constexpr std::size_t kDurationCell = 3;
constexpr std::size_t kFlagsCell = 4;

/// Calls count from 1970, unlike the dates of the other tables.
Date callDate(std::string_view seconds) {
    return {static_cast<double>(integerValue(seconds))};
}

/// A call that was carved shows no text for a duration of 0: what became of it is not known for sure.
bool showsDuration(Origin origin, std::int64_t duration) {
    return origin == Origin::kLive || duration != 0;
}

void setTypeAndDuration(Dictionary& row, const Row& call, Origin origin) {
    const std::int64_t duration = integerCell(call, kDurationCell);
    std::optional<std::string> type;
    if (const auto flags = cellOf(call, kFlagsCell)) type = callType(integerValue(*flags), duration);
    if (type) row.set("type", *type);
    if (showsDuration(origin, duration)) row.set("duration", callDuration(duration, type));
}

Dictionary callRow(Dictionary row, const Row& call, Origin origin, const Dictionary* contactsMap) {
    const auto number = cellOf(call, kNumberCell);
    row.set("name", partyName(number, contactsMap));
    if (number) row.set("phone", *number);
    if (const auto time = cellOf(call, kTimeCell)) row.set("date", Converter::formatedStringFromDate(callDate(*time)));
    setTypeAndDuration(row, call, origin);
    return row;
}

/// How much of the calls is done after the row at `position`. Every deleted call counts as a whole walk: progress runs
/// far ahead once there are any, which is left to its reader.
double doneAfter(std::size_t position, const RawTableObject& calls, std::size_t deleted) {
    const auto live = static_cast<double>(calls.rowList().size());
    const double walked = live > 0 ? static_cast<double>(position + 1) / live : 0;
    return walked + static_cast<double>(deleted);
}

}  // namespace

std::shared_ptr<CustomTableObject> shapeCallHistory(const Source& source, const Dictionary* contactsMap) {
    TableShaper shaper(source, "Call History", {"name", "phone", "date", "type", "duration"});
    const RawTableObject* calls = shaper.rawTable("call");
    if (calls == nullptr) return shaper.result();
    const RowList& deleted = shaper.result()->deletedRowList();
    shaper.visit(*calls, [&](const Row& call, Origin origin, std::size_t position) {
        shaper.add(callRow(shaper.newRow(), call, origin, contactsMap), origin);
        const double done = doneAfter(position, *calls, deleted.size());
        shaper.reportValue(source.tableCount == 0 ? 0 : shaper.shapingStart() + done / kShareDivisor);
    });
    return shaper.result();
}

}  // namespace ZkMobileBackup::shaping
