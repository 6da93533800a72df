#include "export/bundle_cells.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

#include "export/progress.h"

namespace ZkMobileBackup {

namespace {

constexpr const char* kNumbersDataSource = "SFTConcreteTableDataSource-0";
constexpr BundleCellLook kNumbersHeader = {"SFTCellStyle-105", "30.469574", "14"};
constexpr BundleCellLook kNumbersData = {"SFTCellStyle-100", "30.469574", "14"};
constexpr BundleCellLook kPagesHeader = {"SFTCellStyle-6", "41.347656", "24"};
constexpr BundleCellLook kPagesData = {"SFTCellStyle-2", "29.347656", "24"};

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
constexpr std::int64_t kGridWidth = 256;

std::span<const std::string> shownColumns(const BundleTable& table, std::span<const std::string> keys) {
    return keys.first(std::min(keys.size(), table.columnLimit));
}

/// `advance` is the number of positions from the cell before; none for a cell that follows directly.
void appendCell(XmlStream& dataSource, const BundleCellLook& look, std::string_view text,
                std::optional<std::int64_t> advance) {
    dataSource.begin("sf:t").attribute("sf:s", look.style).attribute("sf:w", look.width).attribute("sf:h", look.height);
    if (advance) dataSource.attribute("sf:ct", std::to_string(*advance));
    dataSource.begin("sf:ct").attribute("sfa:s", text).end().end();
}

}  // namespace

// A table of one row reports its progress as if it were the whole batch and is never cut short: kept, as hosts know it.
const BundleTable kNumbersTable = {kNumbersDataSource, kNumbersHeader, kNumbersData, kNoLimit, true, true};
const BundleTable kNumbersOneRowTable = {kNumbersDataSource, kNumbersHeader, kNumbersData, kNoLimit, false, false};
const BundleTable kPagesTable = {nullptr, kPagesHeader, kPagesData, 60, false, true};

void appendHeaderCells(XmlStream& dataSource, const BundleTable& table, std::span<const std::string> keys) {
    std::optional<std::int64_t> advance = 0;
    for (const std::string& key : shownColumns(table, keys)) {
        appendCell(dataSource, table.header, key, advance);
        advance.reset();
    }
}

BundleCells::BundleCells(const BundleTable& table, FileCreator& writer, XmlStream& grid)
    : table_(table), writer_(writer), dataSource_(grid) {}

void BundleCells::writeTable(const Rows& rows, std::int32_t dicCount, const HeaderStep& header) {
    const std::size_t count = std::min(static_cast<std::size_t>(std::max(dicCount, 0)), rows.size());
    dataSource_.begin("sf:datasource");
    if (table_.dataSourceId != nullptr) dataSource_.attribute("sfa:ID", table_.dataSourceId);
    for (std::size_t r = 0; r <= count && !(table_.heedsStop && writer_.isStop()); ++r) {
        if (r == 0) {
            columns_ = shownColumns(table_, header());
        } else {
            appendRow(rows[r - 1]);
        }
        reportRow(r, count);
    }
    dataSource_.end();
}

void BundleCells::appendRow(const Dictionary& row) {
    // A row without any key takes up no line and hands the carry on as it is: the rows behind it move up. Kept, as
    // documents of earlier releases read the same.
    if (row.empty()) return;
    std::int64_t skipped = 0;
    bool first = true;
    for (const std::string& key : columns_) {
        const Value* value = row.find(key);
        if (value == nullptr) {
            ++skipped;
            continue;
        }
        std::optional<std::int64_t> advance;
        if (first) advance = skipped + carry_ + toNextRow();
        if (!first && skipped > 0) advance = skipped + 1;
        appendCell(dataSource_, table_.data, writer_.stringValueFromObject(*value), advance);
        skipped = 0;
        first = false;
    }
    carry_ = skipped;
}

/// From the last column shown to the first one of the next row; below 1 where the grid is too narrow for the columns.
std::int64_t BundleCells::toNextRow() const {
    return kGridWidth + 1 - static_cast<std::int64_t>(columns_.size());
}

void BundleCells::reportRow(std::size_t row, std::size_t count) {
    const double fraction = fractionOfRows(row, count);
    writer_.extportProcess(table_.reportsInBatch ? writer_.fractionOfBatch(fraction) : fraction);
}

}  // namespace ZkMobileBackup
