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
    position_ = 0;
    next_ = std::numeric_limits<std::int64_t>::min();
}

void OffsetsAhead::skipTo(std::int64_t distance) {
    constexpr std::int64_t kLargestOffset = std::numeric_limits<std::uint16_t>::max();
    if (distance < 0 || distance > kLargestOffset) {
        const bool listed = std::binary_search(offsets_.begin(), offsets_.end(), low16(distance));
        next_ = listed ? distance : distance + 1;
        return;
    }
    while (position_ < offsets_.size() && offsets_[position_] < distance) ++position_;
    next_ = position_ < offsets_.size() ? offsets_[position_] : kLargestOffset + 1;
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
        if (match.accepted) appendMatch(table, match);
        // Also behind a record just found: what still fits from a later byte is reported again, in part.
        ++cursor;
        const std::int64_t distance = cursor - page;
        const std::int64_t nextJump = page + std::min(liveCells_.nextFrom(distance), freeblocks_.nextFrom(distance));
        cursor = signature.nextPossibleMatch(state_.image(), cursor, std::min(nextJump, scanEnd), reader.dbEnd());
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

/// A column list that takes NULL everywhere matches at nearly every zero byte. Away from the page's end, where no chain
/// is followed, and inside the image, all these records make one row.
void Carver::appendMatch(RawTableObject& table, const ColumnSignature::Match& match) {
    const std::int64_t cursor = state_.reader->dbCurOffset();
    const std::int64_t distance = cursor - state_.reader->dbCurPageOffset();
    const auto columns = static_cast<std::int64_t>(table.filedList().size());
    const bool plainNulls = match.allNull && match.length + low16(distance) <= state_.header->pageSize() &&
                            !state_.isBeyondEnd(cursor + columns);
    if (plainNulls && nullRow_) {
        table.deletedRowList().append(*nullRow_, state_.rows);
        return;
    }
    const std::optional<Row> row = appendRecord(table, kUnallocatedRecord, match.length);
    if (plainNulls) nullRow_ = row;
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
