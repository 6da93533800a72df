#pragma once

#include <cstdint>

#include "recovery/engine/parser_state.h"
#include "recovery/model/Payload.h"

namespace ZkMobileBackup::engine {

/// How the record at the cursor came there.
enum RecordMode : std::int64_t {
    kLiveCell = 0,
    kFreeblockRecord = 1,
    kUnallocatedRecord = 2,
};

/// Decodes record headers at the reader's cursor, which stays where it is. The state must be complete.
class PayloadDecoder {
public:
    explicit PayloadDecoder(ParserState& state) : state_(state) {}

    /// Reads a live cell into `payload`; false for one that is rejected.
    bool decodeLiveCell(PayloadObject& payload);
    /// Reads a record whose leading numbers its deletion destroyed; false for one that is rejected.
    bool decodeCarvedRecord(PayloadObject& payload, std::int64_t mode, std::uint16_t forcedLength,
                            std::int64_t columnCount);
    /// Reads the serial types from `start` to `end` and returns the body length in bytes.
    std::int32_t decodeHeader(PayloadObject& payload, std::int64_t start, std::int64_t end);
    /// Follows the overflow chain that begins at the end of the current page.
    void decodeOverflowList(PayloadObject& payload);

private:
    bool lengthAccepted(std::uint64_t length) const;
    bool headerSizeAccepted(std::uint64_t size) const;
    bool spills(const PayloadObject& payload, std::int64_t base) const;
    std::int64_t skipVarints(std::int64_t position, std::int64_t count) const;

    ParserState& state_;
};

}  // namespace ZkMobileBackup::engine
