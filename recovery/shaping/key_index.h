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

    KeyIndex(const RowList& rows, std::size_t column);

    /// The entries of a key, in the order of their rows. Keys that are asked for in ascending order, as those of a
    /// table mostly are, take constant time each, others that of a binary search.
    std::span<const Entry> find(std::int64_t key);

private:
    std::vector<Entry> entries_;     // by ascending key
    std::size_t nearLastFound_ = 0;  // where the next search starts
};

}  // namespace ZkMobileBackup::shaping
