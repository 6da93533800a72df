#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "recovery/model/Row.h"

namespace ZkMobileBackup::shaping {

/// Finds rows by the integer value of one of their cells, so that a join looks at each table once. Rows without the
/// cell are never found.
///
/// Sorted rather than hashed: the keys come from a file that may be hostile, and no choice of keys slows this down.
class KeyIndex {
public:
    struct Entry {
        std::int64_t key;
        Row row;
    };

    /// `lookUps` is the number of rows that are joined with these.
    KeyIndex(const RowList& rows, std::size_t column, std::size_t lookUps);

    /// The first row of a key, null for none.
    const Row* findFirst(std::int64_t key);
    /// The entries of a key, in the order of their rows. Keys that are asked for in ascending order, and those of rows
    /// numbered without gaps, take constant time each, others that of a binary search.
    ///
    /// A hostile file may hold so many rows of one key on both sides that all pairs of them fill any memory: no more
    /// than mostPairs() are given out, which is far beyond what tables of their sizes hold.
    std::span<const Entry> find(std::int64_t key);
    std::size_t mostPairs() const { return mostPairs_; }

private:
    std::span<const Entry> entriesOf(std::int64_t key);
    std::size_t guessedPlace(std::int64_t key) const;

    std::vector<Entry> entries_;  // by ascending key
    std::size_t mostPairs_;
    std::size_t pairsLeft_;
    std::size_t nearLastFound_ = 0;  // where the next search starts
};

}  // namespace ZkMobileBackup::shaping
