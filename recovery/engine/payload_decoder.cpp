#include "recovery/engine/payload_decoder.h"

#include "recovery/engine/overflow_chain.h"
#include "recovery/engine/serial_types.h"

namespace ZkMobileBackup::engine {

namespace {

constexpr std::uint64_t kSmallestHeader = 2;
// The header of a freeblock stands where the record's first bytes were.
constexpr std::uint64_t kFreeblockHeaderSize = 4;
constexpr std::uint64_t kCarvedRowid = 1;

}  // namespace

bool PayloadDecoder::decodeLiveCell(PayloadObject& payload) {
    payload.reset();
    const ByteImage& image = state_.image();
    const std::int64_t limit = state_.reader->dbEnd();
    const std::int64_t base = state_.reader->dbCurOffset();
    payload.setBase(base);

    const Varint length = image.shortVarint(base, limit);
    payload.setLength(length.value);
    if (length.tooLong() || !lengthAccepted(length.value)) return false;

    const std::int64_t rowidPosition = base + length.advance;
    const Varint rowid = image.shortVarint(rowidPosition, limit);
    payload.setRowid(rowid.value);
    if (rowid.tooLong() || rowid.value == 0) return false;

    const std::int64_t headerPosition = rowidPosition + rowid.advance;
    payload.setPrefixLen(static_cast<std::uint64_t>(headerPosition - base));
    const Varint headerSize = image.shortVarint(headerPosition, limit);
    payload.setHeaderSize(headerSize.value);
    if (headerSize.tooLong() || !headerSizeAccepted(headerSize.value)) return false;

    if (spills(payload, base)) decodeOverflowList(payload);
    const std::int64_t headerEnd = headerPosition + static_cast<std::int64_t>(headerSize.value);
    const std::int32_t body = decodeHeader(payload, headerPosition + headerSize.advance, headerEnd);
    if (payload.cellCount() < state_.header->minCellCount()) return false;
    return headerSize.value + static_cast<std::uint64_t>(body) == length.value;
}

bool PayloadDecoder::decodeCarvedRecord(PayloadObject& payload, std::int64_t mode, std::uint16_t forcedLength,
                                        std::int64_t columnCount) {
    if (mode != kFreeblockRecord && mode != kUnallocatedRecord) return false;
    payload.reset();
    const std::int64_t base = state_.reader->dbCurOffset();
    payload.setBase(base);
    // A freeblock shorter than its own header wraps to a length that no image has.
    payload.setLength(mode == kFreeblockRecord ? forcedLength - kFreeblockHeaderSize : std::uint64_t{forcedLength});
    if (!lengthAccepted(payload.length())) return false;
    payload.setRowid(kCarvedRowid);

    // One serial type less than the table has columns: the first is taken to be lost, as the key's is. Tables without
    // such a key are read the same way; their values come out one column late, and readers rely on that.
    const std::int64_t headerEnd = skipVarints(base, columnCount - 1);
    payload.setHeaderSize(static_cast<std::uint64_t>(headerEnd - base));
    if (!headerSizeAccepted(payload.headerSize())) return false;

    if (spills(payload, base)) decodeOverflowList(payload);
    const std::int32_t body = decodeHeader(payload, base, headerEnd);
    if (payload.cellCount() < state_.header->minCellCount()) return false;
    return static_cast<std::uint64_t>(body) <= payload.length();
}

std::int32_t PayloadDecoder::decodeHeader(PayloadObject& payload, std::int64_t start, std::int64_t end) {
    if (!payload.base() || start >= end) return 0;
    const ByteImage& image = state_.image();
    const std::int64_t limit = state_.reader->dbEnd();
    const std::uint64_t longest = payload.length();
    const std::int32_t mostCells = state_.header->maxCellCount();
    const std::int32_t contentStart = signed32(low32(static_cast<std::uint64_t>(end - *payload.base())));
    std::vector<PayloadCell>& cells = payload.cellList();
    std::int32_t cellCount = payload.cellCount();
    std::int32_t body = 0;
    std::int64_t position = start;
    do {
        const Varint stored = image.shortVarint(position, limit);
        if (stored.tooLong()) break;
        position += stored.advance;

        const CellShape shape = stored.value < kFirstLongSerialType ? kShortCellShapes[stored.value]
                                                                    : cellShapeOf(signed32(low32(stored.value)));
        if (!shape.valid) {
            cells.emplace_back(shape.cellType, -1, 0);  // kept, so that rendering gives the row up
            body = 0;
            break;
        }
        cells.emplace_back(shape.cellType, wrappedSum32(contentStart, body), shape.size);
        body = wrappedSum32(body, shape.size);
        ++cellCount;
    } while (static_cast<std::uint64_t>(body) <= longest && position < end && cellCount <= mostCells);
    payload.setCellCount(cellCount);
    return body;
}

void PayloadDecoder::decodeOverflowList(PayloadObject& payload) {
    if (!followOverflowChain(state_, payload.overFlowPageList())) {
        state_.fail("No more space for overflow pages", "decodeOverFlowListOfPayload");
    }
}

bool PayloadDecoder::lengthAccepted(std::uint64_t length) const {
    return length <= state_.reader->dbSize() && length >= state_.header->minPaylaodLen() &&
           length <= state_.header->maxPaylaodLen();
}

bool PayloadDecoder::headerSizeAccepted(std::uint64_t size) const {
    return size >= kSmallestHeader && size <= state_.header->pageSize();
}

bool PayloadDecoder::spills(const PayloadObject& payload, std::int64_t base) const {
    return payload.length() + low16(base - state_.reader->dbCurPageOffset()) > state_.header->pageSize();
}

std::int64_t PayloadDecoder::skipVarints(std::int64_t position, std::int64_t count) const {
    for (std::int64_t i = 0; i < count; ++i) {
        position += state_.image().varint(position, state_.reader->dbEnd()).advance;
    }
    return position;
}

}  // namespace ZkMobileBackup::engine
