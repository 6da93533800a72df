#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "base/Value.h"
#include "recovery/engine/parser_state.h"

namespace ZkMobileBackup::engine {

/// Recovers the rows that pages on the freelist still hold. Runs after all tables have been walked, so that every
/// table's number of columns is known. The state must be complete.
class Freelist {
public:
    using Report = std::function<void(const Dictionary& progress)>;

    Freelist(ParserState& state, Report report) : state_(state), report_(std::move(report)) {}

    /// Walks the chain of trunk pages; false when there is no freelist.
    bool walk();

    /// The table that takes the rows of one free page until they are handed on.
    static std::shared_ptr<RawTableObject> tableOfPage(const ParserState& state, std::uint32_t page);
    /// The last table whose number of columns is `fieldCount`, null for none: nothing else is compared, so of two
    /// such tables the later one gets the rows.
    static std::shared_ptr<RawTableObject> tableWithFieldCount(const ParserState& state, std::int64_t fieldCount);

private:
    void walkTrunk(std::int64_t trunk);
    void walkLeaf(std::uint32_t page);
    bool worthProcessing() const;
    void reportTrunk(std::int64_t trunksDone) const;

    ParserState& state_;
    Report report_;
};

}  // namespace ZkMobileBackup::engine
