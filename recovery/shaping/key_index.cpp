#include "recovery/shaping/key_index.h"

#include <algorithm>

#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

constexpr std::size_t kPairsOfAnySize = std::size_t{1} << 20U;
constexpr std::size_t kPairsPerRow = 256;

bool isBefore(const KeyIndex::Entry& a, const KeyIndex::Entry& b) {
    return a.key < b.key;
}

/// The first entry in which `isPassed` does not hold, after those in which it does. One near `from` is found at once.
template <typename Iterator, typename IsPassed>
Iterator firstNotPassed(Iterator from, Iterator end, IsPassed isPassed) {
    std::ptrdiff_t step = 1;
    while (step < end - from && isPassed(from[step - 1])) {
        from += step;
        step *= 2;
    }
    return std::partition_point(from, from + std::min(step, end - from), isPassed);
}

}  // namespace

KeyIndex::KeyIndex(const RowList& rows, std::size_t column, std::size_t lookUps)
    : mostPairs_(kPairsOfAnySize + kPairsPerRow * (rows.size() + lookUps)), pairsLeft_(mostPairs_) {
    entries_.reserve(rows.size());
    for (const Row& row : rows) {
        if (row.count() > column) entries_.push_back({integerCell(row, column), row});
    }
    if (!std::is_sorted(entries_.begin(), entries_.end(), isBefore)) {
        std::stable_sort(entries_.begin(), entries_.end(), isBefore);
    }
}

const Row* KeyIndex::findFirst(std::int64_t key) {
    const auto entries = entriesOf(key);
    return entries.empty() ? nullptr : &entries.front().row;
}

std::span<const KeyIndex::Entry> KeyIndex::find(std::int64_t key) {
    auto entries = entriesOf(key);
    if (entries.size() > pairsLeft_) entries = entries.first(pairsLeft_);
    pairsLeft_ -= entries.size();
    return entries;
}

std::span<const KeyIndex::Entry> KeyIndex::entriesOf(std::int64_t key) {
    if (nearLastFound_ > 0 && entries_[nearLastFound_ - 1].key >= key) nearLastFound_ = 0;
    const auto start = entries_.cbegin() + static_cast<std::ptrdiff_t>(nearLastFound_);
    const auto first = firstNotPassed(start, entries_.cend(), [key](const Entry& entry) { return entry.key < key; });
    const auto last = firstNotPassed(first, entries_.cend(), [key](const Entry& entry) { return entry.key == key; });
    nearLastFound_ = static_cast<std::size_t>(first - entries_.cbegin());
    return {first, last};
}

}  // namespace ZkMobileBackup::shaping
