#include "recovery/engine/btree_walker.h"

#include <unordered_set>
#include <vector>

#include "base/Log.h"
#include "recovery/engine/checked_fields.h"

namespace ZkMobileBackup::engine {

namespace {

// Where a B-tree page's header keeps its fields, and where the cell pointers follow it.
constexpr std::int64_t kCellCountField = 3;
constexpr std::int64_t kRightmostChildField = 8;
constexpr std::int64_t kLeafPointers = 8;
constexpr std::int64_t kInteriorPointers = 12;
constexpr std::int64_t kPointerSize = 2;

// Page 1 leads with the file's header.
constexpr std::int64_t kFileHeaderSize = 100;

}  // namespace

void BtreeWalker::walkTable() {
    if (isSchema()) {
        state_.enterPage(state_.reader->dbOrigin());
        state_.reader->setDbCurOffset(state_.reader->dbCurOffset() + kFileHeaderSize);
    } else {
        state_.enterPage(state_.pageStart(low32(static_cast<std::uint64_t>(table_.pageNum()))));
    }
    const std::uint8_t type = state_.visitPage();
    if (type == kInteriorTablePage) walkInterior();
    if (type == kLeafTablePage) walkLeaf();
}

void BtreeWalker::walkInterior() {
    const std::uint8_t type = state_.image().byte(state_.reader->dbCurOffset());
    if (type == kLeafTablePage) walkLeaf();
    if (type != kInteriorTablePage) return;

    std::vector<InteriorPage> path{interiorPageAtCursor()};
    std::unordered_set<std::int64_t> ancestors{path.back().start};
    while (!path.empty()) {
        InteriorPage& page = path.back();
        if (page.nextChild > page.cellCount) {
            ancestors.erase(page.start);
            path.pop_back();
            continue;
        }
        if (state_.shouldStop()) return;
        const std::int64_t child = state_.pageStart(childNumber(page, page.nextChild++));
        state_.enterPage(child);
        if (!state_.isBeforeEnd(child)) continue;
        fetchNextChild(page);
        const std::uint8_t childType = state_.visitPage();
        if (childType == kLeafTablePage) walkLeaf();
        // A page that is its own ancestor would be walked for ever.
        if (childType == kInteriorTablePage && ancestors.insert(child).second) path.push_back(interiorPageAtCursor());
    }
}

/// For the schema table every interior page is read as if the file's header led it, as it does on page 1 only.
BtreeWalker::InteriorPage BtreeWalker::interiorPageAtCursor() const {
    const std::int64_t start = state_.reader->dbCurPageOffset();
    const std::int64_t header = isSchema() ? start + kFileHeaderSize : start;
    const CheckedFields fields(state_.image(), header, state_.header->pageSize());
    return {start, header, fields.big16(kCellCountField)};
}

std::uint32_t BtreeWalker::childNumber(const InteriorPage& page, std::uint32_t child) const {
    const CheckedFields fields(state_.image(), page.header, state_.header->pageSize());
    if (child == page.cellCount) return fields.big32(kRightmostChildField);
    const std::int64_t pointer = fields.big16(kInteriorPointers + kPointerSize * child);
    return fields.big32(isSchema() ? pointer - kFileHeaderSize : pointer);
}

/// While one page is worked on, the processor fetches the next. Which page that is counts only once it is entered.
void BtreeWalker::fetchNextChild(const InteriorPage& page) const {
    if (page.nextChild > page.cellCount) return;
    state_.image().fetchAhead(state_.pageStart(childNumber(page, page.nextChild)), state_.header->pageSize());
}

void BtreeWalker::walkLeaf() {
    const std::int64_t header = state_.reader->dbCurOffset();
    if (state_.image().byte(header) != kLeafTablePage) {
        writeLog("parser error");
        return;
    }
    const std::int64_t page = state_.reader->dbCurPageOffset();
    const std::int64_t pageSize = state_.header->pageSize();
    const CheckedFields fields(state_.image(), header, pageSize);
    const std::uint16_t cellCount = fields.big16(kCellCountField);
    liveCells_.clear();
    for (std::int64_t i = 0; i < cellCount && !state_.shouldStop(); ++i) {
        const std::uint16_t pointer = fields.big16(kLeafPointers + kPointerSize * i);
        if (pointer == 0) break;
        if (readCell(pointer)) liveCells_.push_back(pointer);
    }
    state_.reader->setDbCurOffset(header + kLeafPointers + kPointerSize * cellCount);
    if (!signature_) signature_.emplace(table_);
    carver_.scan(table_, *signature_, page + pageSize, &liveCells_, nullptr);
}

bool BtreeWalker::readCell(std::uint16_t pointer) {
    state_.reader->setDbCurOffset(state_.reader->dbCurPageOffset() + pointer);
    if (!decoder_.decodeLiveCell(payload_)) return false;
    payload_.setIgnoreFirstFiled(rowidLeads());
    // A record that cannot be rendered has still been a live cell.
    if (const std::optional<Row> row = renderer_.render(payload_, kLiveCell)) appendRow(*row);
    return true;
}

/// A freed page does not tell whether its table had an integer key; any rowid that is positive in 32 bits is shown.
bool BtreeWalker::rowidLeads() const {
    const bool freePage = table_.tableType() == RawTableObject::kFreePageTable;
    return table_.hasIntergerPK() || (freePage && signed32(low32(payload_.rowid())) > 0);
}

void BtreeWalker::appendRow(Row row) {
    if (table_.tableType() != RawTableObject::kFreePageTable) {
        table_.rowList().append(row, state_.rows);
        return;
    }
    table_.deletedRowList().append(row, state_.rows);
    if (table_.filedCount() == 0) table_.setFiledCount(static_cast<std::int64_t>(row.count()));
}

}  // namespace ZkMobileBackup::engine
