#include "recovery/engine/carver.h"

#include <algorithm>
#include <bitset>
#include <limits>

#include "recovery/engine/column_signature.h"

namespace ZkMobileBackup::engine {

namespace {

// A freeblock leads with the offset of the next one and its own size.
constexpr std::int64_t kFreeblockSizeField = 2;
constexpr std::int64_t kFreeblockHeaderSize = 4;

// The last bytes of a page are too few for a record.
constexpr std::int64_t kUntriedTail = 2;

}  // namespace

void OffsetsAhead::assign(const PageOffsets* offsets) {
    offsets_.clear();
    if (offsets != nullptr) offsets_ = *offsets;
    std::sort(offsets_.begin(), offsets_.end());
    next_ = std::numeric_limits<std::int64_t>::min();
}

void OffsetsAhead::skipTo(std::int64_t distance) {
    constexpr std::int64_t kLap = 65536;  // offsets count from anew after so many bytes
    if (offsets_.empty()) {
        next_ = std::numeric_limits<std::int64_t>::max() / 2;
        return;
    }
    const std::uint16_t offset = low16(distance);
    const std::int64_t lap = distance - offset;
    const auto found = std::lower_bound(offsets_.begin(), offsets_.end(), offset);
    next_ = found != offsets_.end() ? lap + *found : lap + kLap + offsets_.front();
}

void Carver::scan(RawTableObject& table, const ColumnSignature& signature, std::int64_t end,
                  const PageOffsets* liveCells, const PageOffsets* freeblocks) {
    DlxSQLiteReader& reader = *state_.reader;
    liveCells_.assign(liveCells);
    freeblocks_.assign(freeblocks);
    nullRow_.reset();
    const std::int64_t page = reader.dbCurPageOffset();
    const std::int64_t scanEnd = end - kUntriedTail;
    std::int64_t cursor = reader.dbCurOffset();
    do {
        const std::int64_t start = cursor;
        if (liveCells_.contains(start - page)) cursor += liveCellJump(start);
        if (freeblocks_.contains(start - page)) cursor += state_.image().big16(start + kFreeblockSizeField);
        const auto match = signature.matchAt(state_.image(), cursor, reader.dbEnd());
        reader.setDbCurOffset(cursor);
        // Also behind a record just found: what still fits from a later byte is reported again, in part.
        ++cursor;
        const std::int64_t distance = cursor - page;
        const std::int64_t nextJump = page + std::min(liveCells_.nextFrom(distance), freeblocks_.nextFrom(distance));
        const std::int64_t bound = std::min(nextJump, scanEnd);
        if (match.accepted) cursor += appendMatch(table, signature, match, bound);
        cursor = signature.nextMatch(state_.image(), cursor, bound, reader.dbEnd());
    } while (cursor < scanEnd);
    reader.setDbCurOffset(cursor);
}

/// How far the scan jumps over a live cell: its payload length alone, counted from the cell's first byte. That ends a
/// few bytes early, inside the cell, so that its tail is tried again: partial copies of live rows are part of every
/// result.
std::int64_t Carver::liveCellJump(std::int64_t cell) const {
    const Varint length = state_.image().varint(cell, state_.reader->dbEnd());
    // A splice may have changed the length since the cell was read: never backwards, and past the image is far enough.
    return std::clamp(static_cast<std::int64_t>(length.value), std::int64_t{0}, state_.image().size());
}

/// A column list that takes NULL everywhere matches at nearly every zero byte, and all these records make one row: it
/// is appended at once for the following positions before `bound` that show it, too. Returns their number.
std::int64_t Carver::appendMatch(RawTableObject& table, const ColumnSignature& signature,
                                 const ColumnSignature::Match& match, std::int64_t bound) {
    const std::int64_t alike = match.allNull ? alikeNullRecords(table, signature, match.length, bound) : 0;
    if (alike == 0) {
        appendRecord(table, kUnallocatedRecord, match.length);
        return 0;
    }
    std::int64_t missing = alike;
    if (!nullRow_) {
        nullRow_ = appendRecord(table, kUnallocatedRecord, match.length);
        --missing;
    }
    if (nullRow_) table.deletedRowList().appendRepeatedly(*nullRow_, state_.rows, static_cast<std::size_t>(missing));
    return alike - 1;
}

/// Number of records of NULLs, all alike, at the cursor and the positions after it before `bound`: away from the page's
/// end, where no chain is followed, inside the image, and reading no byte but those that matched.
std::int64_t Carver::alikeNullRecords(const RawTableObject& table, const ColumnSignature& signature,
                                      std::uint16_t length, std::int64_t bound) const {
    const std::int64_t cursor = state_.reader->dbCurOffset();
    const auto columns = static_cast<std::int64_t>(table.filedList().size());
    const auto tests = static_cast<std::int64_t>(signature.testCount());
    if (columns - 1 > tests) return 0;
    const std::int64_t untilSpill =
        state_.header->pageSize() - length - low16(cursor - state_.reader->dbCurPageOffset());
    const std::int64_t untilEnd = state_.reader->dbEnd() - std::max(columns, tests) - cursor;
    const std::int64_t most = std::min({std::max(bound - cursor - 1, std::int64_t{0}), untilSpill, untilEnd});
    if (most < 0) return 0;
    const std::span<const std::uint8_t> bytes = state_.image().bytes(cursor, most + tests);
    const auto zerosEnd = std::find_if(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte != 0; });
    return std::max(zerosEnd - bytes.begin() - tests + 1, std::int64_t{0});
}

std::optional<Row> Carver::appendRecord(RawTableObject& table, RecordMode mode, std::uint16_t length) {
    const auto columns = static_cast<std::int64_t>(table.filedList().size());
    if (!decoder_.decodeCarvedRecord(payload_, mode, length, columns)) return std::nullopt;
    payload_.setIgnoreFirstFiled(table.hasIntergerPK());
    const std::optional<Row> row = renderer_.render(payload_, mode);
    if (row) table.deletedRowList().append(*row, state_.rows);
    return row;
}

PageOffsets Carver::scanFreeblocks(RawTableObject& table, std::uint16_t firstFreeblock) {
    PageOffsets found;
    std::bitset<65536> visited;
    const std::int64_t page = state_.reader->dbCurPageOffset();
    for (std::uint16_t offset = firstFreeblock; offset != 0 && !visited.test(offset);) {
        visited.set(offset);
        const std::uint16_t size = state_.image().big16(page + offset + kFreeblockSizeField);
        state_.reader->setDbCurOffset(page + offset + kFreeblockHeaderSize);
        if (size != 0 && appendRecord(table, kFreeblockRecord, size)) found.push_back(offset);
        offset = state_.image().big16(page + offset);
    }
    return found;
}

}  // namespace ZkMobileBackup::engine
