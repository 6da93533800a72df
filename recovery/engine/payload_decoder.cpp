#include "recovery/engine/payload_decoder.h"

#include <algorithm>
#include <span>
#include <vector>

#include "recovery/engine/overflow_chain.h"
#include "recovery/engine/serial_types.h"

namespace ZkMobileBackup::engine {

namespace {

constexpr std::uint64_t kSmallestHeader = 2;
// The header of a freeblock stands where the record's first bytes were.
constexpr std::uint64_t kFreeblockHeaderSize = 4;
constexpr std::uint64_t kCarvedRowid = 1;

/// The cells of a header, as they are read into a payload.
class HeaderCells {
public:
    HeaderCells(PayloadObject& payload, std::int32_t contentStart, std::int32_t mostCells)
        : payload_(payload),
          cells_(payload.cellList()),
          contentStart_(contentStart),
          longest_(payload.length()),
          mostCells_(mostCells),
          count_(payload.cellCount()) {}

    /// Number of cells that may still come; the first one may come in any case.
    std::int64_t room() const { return std::int64_t{mostCells_} + 1 - count_; }
    /// Whether no more cells are read: too many, too long, or one of no valid type.
    bool ended() const { return invalid_ || static_cast<std::uint64_t>(body_) > longest_ || count_ > mostCells_; }

    void append(CellShape shape) {
        if (!shape.valid) {
            cells_.emplace_back(shape.cellType, -1, 0);  // kept, so that rendering gives the row up
            body_ = 0;
            invalid_ = true;
            return;
        }
        cells_.emplace_back(shape.cellType, wrappedSum32(contentStart_, body_), shape.size);
        body_ = wrappedSum32(body_, shape.size);
        ++count_;
    }
    /// Appends the cells of the valid serial types of one byte that `bytes` begins with; returns their number. Works on
    /// locals, since it is the inner loop of all decoding.
    std::size_t appendSingles(std::span<const std::uint8_t> bytes) {
        const std::int32_t contentStart = contentStart_;
        const std::uint64_t longest = longest_;
        std::int32_t body = body_;
        std::size_t at = 0;
        while (at < bytes.size() && static_cast<std::uint64_t>(body) <= longest) {
            const SingleByteShape shape = kSingleByteShapes[bytes[at]];
            if (!shape.valid()) break;
            cells_.emplace_back(shape.cellType, wrappedSum32(contentStart, body), shape.size);
            body = wrappedSum32(body, shape.size);
            ++at;
        }
        body_ = body;
        count_ += static_cast<std::int32_t>(at);
        return at;
    }
    /// The length of all cells' content.
    std::int32_t finish() {
        payload_.setCellCount(count_);
        return body_;
    }

private:
    PayloadObject& payload_;
    std::vector<PayloadCell>& cells_;
    std::int32_t contentStart_;
    std::uint64_t longest_;
    std::int32_t mostCells_;
    std::int32_t count_;
    std::int32_t body_ = 0;
    bool invalid_ = false;
};

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
    HeaderCells cells(payload, signed32(low32(static_cast<std::uint64_t>(end - *payload.base()))),
                      state_.header->maxCellCount());
    std::int64_t position = start;
    do {
        // Nearly all serial types take one byte.
        const auto bytes = image.bytes(position, std::min({end, limit, position + cells.room()}) - position);
        const std::size_t singles = cells.appendSingles(bytes);
        position += static_cast<std::int64_t>(singles);
        if (singles > 0 && (cells.ended() || position >= end)) break;

        const Varint stored = image.shortVarint(position, limit);
        if (stored.tooLong()) break;
        position += stored.advance;
        cells.append(cellShapeOf(signed32(low32(stored.value))));
    } while (!cells.ended() && position < end);
    return cells.finish();
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
