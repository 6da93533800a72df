#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "recovery/engine/column_signature.h"
#include "recovery/engine/parser_state.h"
#include "recovery/engine/payload_decoder.h"
#include "recovery/engine/payload_renderer.h"

namespace ZkMobileBackup::engine {

/// Offsets within a page, as 16-bit numbers.
using PageOffsets = std::vector<std::uint16_t>;

/// A list of offsets on the way through a page. Offsets are compared in 16 bits, wherever the way leads.
class OffsetsAhead {
public:
    /// Starts over with a list; a null one counts as empty.
    void assign(const PageOffsets* offsets);
    /// The first distance from `distance` on that may be in the list. Asked with rising distances.
    std::int64_t nextFrom(std::int64_t distance) {
        if (distance > next_) skipTo(distance);
        return next_;
    }
    bool contains(std::int64_t distance) { return nextFrom(distance) == distance; }

private:
    void skipTo(std::int64_t distance);

    PageOffsets offsets_;  // sorted
    std::int64_t next_ = 0;
};

/// Finds deleted records in what a leaf page's live cells leave free. The state must be complete.
class Carver {
public:
    explicit Carver(ParserState& state) : state_(state), decoder_(state), renderer_(state) {}

    /// Tries every byte from the cursor up to the page's `end` but its last two, jumping over live cells and
    /// freeblocks, and appends what is found to the table's deleted rows. The cursor ends behind the last byte tried.
    void scan(RawTableObject& table, const ColumnSignature& signature, std::int64_t end, const PageOffsets* liveCells,
              const PageOffsets* freeblocks);

    /// Decodes each freeblock of the current page's chain as one record; returns the offsets of those that gave a row.
    PageOffsets scanFreeblocks(RawTableObject& table, std::uint16_t firstFreeblock);

private:
    std::int64_t liveCellJump(std::int64_t cell) const;
    std::int64_t appendMatch(RawTableObject& table, const ColumnSignature& signature,
                             const ColumnSignature::Match& match, std::int64_t bound);
    std::int64_t alikeNullRecords(const RawTableObject& table, const ColumnSignature& signature, std::uint16_t length,
                                  std::int64_t bound) const;
    std::optional<Row> appendRecord(RawTableObject& table, RecordMode mode, std::uint16_t length);

    ParserState& state_;
    PayloadDecoder decoder_;
    PayloadRenderer renderer_;
    PayloadObject payload_;
    OffsetsAhead liveCells_;
    OffsetsAhead freeblocks_;
    std::optional<Row> nullRow_;  // of the scan in hand
};

}  // namespace ZkMobileBackup::engine
