#include "recovery/shaping/key_index.h"

#include <algorithm>
#include <iterator>

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

/// The same for one that stands before `end`, and is found at once when it stands near there.
template <typename Iterator, typename IsPassed>
Iterator lastNotPassed(Iterator begin, Iterator end, IsPassed isPassed) {
    const auto reversed = [&isPassed](const auto& entry) { return !isPassed(entry); };
    return firstNotPassed(std::make_reverse_iterator(end), std::make_reverse_iterator(begin), reversed).base();
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
    const auto isBeforeKey = [key](const Entry& entry) { return entry.key < key; };
    const auto isOfKey = [key](const Entry& entry) { return entry.key == key; };
    if (nearLastFound_ > 0 && !isBeforeKey(entries_[nearLastFound_ - 1])) nearLastFound_ = 0;
    const auto start = entries_.cbegin() + static_cast<std::ptrdiff_t>(nearLastFound_);
    const auto guess = entries_.cbegin() + static_cast<std::ptrdiff_t>(guessedPlace(key));
    const auto first = guess > start && !isBeforeKey(guess[-1])
                           ? lastNotPassed(start, guess, isBeforeKey)
                           : firstNotPassed(std::max(start, guess), entries_.cend(), isBeforeKey);
    const auto last = firstNotPassed(first, entries_.cend(), isOfKey);
    nearLastFound_ = static_cast<std::size_t>(first - entries_.cbegin());
    return {first, last};
}

/// Where a key stands when all keys follow one another without gaps, as those of rows mostly do.
std::size_t KeyIndex::guessedPlace(std::int64_t key) const {
    if (entries_.empty() || key <= entries_.front().key) return 0;
    const auto distance = static_cast<std::uint64_t>(key) - static_cast<std::uint64_t>(entries_.front().key);
    return std::min<std::uint64_t>(distance, entries_.size());
}

}  // namespace ZkMobileBackup::shaping
