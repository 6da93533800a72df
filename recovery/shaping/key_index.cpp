#include "recovery/shaping/key_index.h"

#include <algorithm>

#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

struct ByKey {
    bool operator()(const KeyIndex::Entry& a, const KeyIndex::Entry& b) const { return a.key < b.key; }
    bool operator()(const KeyIndex::Entry& a, std::int64_t key) const { return a.key < key; }
    bool operator()(std::int64_t key, const KeyIndex::Entry& b) const { return key < b.key; }
};

}  // namespace

KeyIndex::KeyIndex(const RowList& rows, std::size_t column) {
    entries_.reserve(rows.size());
    for (const Row& row : rows) {
        if (row.count() > column) entries_.push_back({integerCell(row, column), row});
    }
    std::stable_sort(entries_.begin(), entries_.end(), ByKey());
}

std::span<const KeyIndex::Entry> KeyIndex::find(std::int64_t key) const {
    const auto [first, last] = std::equal_range(entries_.begin(), entries_.end(), key, ByKey());
    return {first, last};
}

}  // namespace ZkMobileBackup::shaping
