#pragma once

#include <cstdint>
#include <optional>

#include "recovery/engine/carver.h"
#include "recovery/engine/column_signature.h"
#include "recovery/engine/parser_state.h"

namespace ZkMobileBackup::engine {

/// Walks the B-tree pages of one table: live cells become rows, the rest of each leaf page goes to the carver. Nothing
/// is read ahead: a record that spills changes bytes that are walked later. The state must be complete.
class BtreeWalker {
public:
    BtreeWalker(ParserState& state, RawTableObject& table)
        : state_(state), table_(table), decoder_(state), renderer_(state), carver_(state) {}

    /// Enters the table's root page and walks from there.
    void walkTable();
    /// Walks the interior page at the cursor and everything below it, on a stack of its own.
    void walkInterior();
    /// Walks the leaf page at the cursor.
    void walkLeaf();
    /// Reads the live cell at an offset of the current page; false when it is rejected.
    bool readCell(std::uint16_t pointer);

private:
    struct InteriorPage {
        std::int64_t start;
        std::int64_t header;
        std::uint32_t cellCount;
        std::uint32_t nextChild = 0;
    };

    bool isSchema() const { return table_.tableType() == RawTableObject::kSchemaTable; }
    InteriorPage interiorPageAtCursor() const;
    std::uint32_t childNumber(const InteriorPage& page, std::uint32_t child) const;
    void fetchNextChild(const InteriorPage& page) const;
    bool rowidLeads() const;
    void appendRow(Row row);

    ParserState& state_;
    RawTableObject& table_;
    PayloadDecoder decoder_;
    PayloadRenderer renderer_;
    Carver carver_;
    PayloadObject payload_;
    PageOffsets liveCells_;
    std::optional<ColumnSignature> signature_;
};

}  // namespace ZkMobileBackup::engine
