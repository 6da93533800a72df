#include "recovery/shaping/multi_values.h"

#include <algorithm>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>

#include "base/KeyedHash.h"
#include "base/Text.h"
#include "base/TextCleaning.h"

namespace ZkMobileBackup::shaping {

namespace {

constexpr std::size_t kOwnerCell = 1;

/// The list for a value, by the kind that its label names; empty for a kind that is not shown.
std::string_view listOf(std::int64_t kind, std::string_view value) {
    switch (kind) {
        case 1:
        case 2:
            return kMobilePhoneList;
        case 3:
        case 4:
            return integerValue(value) > 0 ? kHomePhoneList : kAddressList;
        case 7:
            return kAddressList;
        case 8:
        case 9:
            return kEmailList;
        default:
            return {};
    }
}

struct ListedValue {
    std::size_t owner;
    std::string_view list;
    std::string value;
};

/// The values of one owner after the other, in the order in which the owners were met.
class ValuesByOwner {
public:
    void append(std::string_view owner, std::string_view list, std::string value) {
        values_.push_back({numberOf(owner), list, std::move(value)});
        ++owners_[values_.back().owner].count;
    }

    /// Calls `take(key, values)` for each owner; the values may be moved from.
    template <typename Take>
    void takeOwners(Take take) {
        std::vector<ListedValue*> grouped = groupedValues();
        ListedValue** begin = grouped.data();
        for (const Owner& owner : owners_) {
            take(owner.key, std::span(begin, owner.count));
            begin += owner.count;
        }
    }

private:
    struct Owner {
        std::string_view key;
        std::size_t count;
    };

    /// The values of a person mostly stand together: the owner of the last one is looked at first.
    std::size_t numberOf(std::string_view key) {
        if (!values_.empty() && owners_[values_.back().owner].key == key) return values_.back().owner;
        const auto [position, isNew] = numbers_.try_emplace(key, owners_.size());
        if (isNew) owners_.push_back({key, 0});
        return position->second;
    }

    std::vector<ListedValue*> groupedValues() {
        std::vector<std::size_t> next;
        std::size_t begin = 0;
        for (const Owner& owner : owners_) next.push_back(std::exchange(begin, begin + owner.count));
        std::vector<ListedValue*> grouped(values_.size());
        for (ListedValue& value : values_) grouped[next[value.owner]++] = &value;
        return grouped;
    }

    std::vector<Owner> owners_;
    std::unordered_map<std::string_view, std::size_t, KeyedHash> numbers_;  // of the owners
    std::vector<ListedValue> values_;
};

/// Makes dictionaries of lists. Those with the same lists share their keys.
class ListsFactory {
public:
    Dictionary listsOf(std::span<ListedValue* const> values) {
        lists_.clear();
        for (ListedValue* value : values) ++listNamed(value->list).count;
        Dictionary lists = emptyLists();
        for (std::size_t i = 0; i < lists_.size(); ++i) lists.setValueAt(i, takeList(values, lists_[i]));
        return lists;
    }

private:
    struct List {
        std::string_view name;
        std::size_t count;
    };

    List& listNamed(std::string_view name) {
        const auto found = std::ranges::find(lists_, name, &List::name);
        return found != lists_.end() ? *found : lists_.emplace_back(List{name, 0});
    }

    const Dictionary& emptyLists() {
        std::string names;
        for (const List& list : lists_) names.append(list.name).append(" ");
        Dictionary& empty = emptyByNames_[names];
        if (empty.empty()) {
            for (const List& list : lists_) empty.set(list.name, Value());
        }
        return empty;
    }

    static Array takeList(std::span<ListedValue* const> values, const List& list) {
        Array taken;
        taken.reserve(list.count);
        for (ListedValue* value : values) {
            if (value->list == list.name) taken.emplace_back(std::move(value->value));
        }
        return taken;
    }

    std::vector<List> lists_;  // of the owner in hand, in the order in which they were begun; four at most
    std::unordered_map<std::string, Dictionary> emptyByNames_;  // few: there are four lists
};

/// Sorts the values of a table into live and carved owners.
class Grouping {
public:
    explicit Grouping(const RawTableObject& table)
        : liveRows_(table.rowList().size()), value_(columnIndex(table, "value")), label_(columnIndex(table, "label")) {}

    void add(const Row& raw) {
        // A row that is too short is passed over without being counted, so every one of them makes one more carved row
        // pass for a live one. What has been shown as live stays so.
        if (raw.count() < value_) return;
        ValuesByOwner& owners = countedRows_++ < liveRows_ ? live_ : carved_;
        const auto cell = cellOf(raw, value_);
        if (cell) append(owners, raw.cell(kOwnerCell), withSpacesForInvisible(*cell), integerCell(raw, label_));
    }

    ValuesByOwner& live() { return live_; }
    ValuesByOwner& carved() { return carved_; }

private:
    static void append(ValuesByOwner& owners, std::string_view owner, std::string value, std::int64_t kind) {
        const std::string_view list = listOf(kind, value);
        if (!list.empty() && value != kNullCell) owners.append(owner, list, std::move(value));
    }

    std::size_t liveRows_;
    std::size_t countedRows_ = 0;
    std::size_t value_;
    std::size_t label_;
    ValuesByOwner live_;
    ValuesByOwner carved_;
};

}  // namespace

MultiValues::MultiValues(const TableShaper& shaper, const RawTableObject& table) {
    Grouping grouping(table);
    shaper.visit(table, [&](const Row& raw, Origin, std::size_t) { grouping.add(raw); });
    ListsFactory factory;
    for (ValuesByOwner* group : {&grouping.live(), &grouping.carved()}) {
        group->takeOwners([&](std::string_view key, std::span<ListedValue* const> values) {
            owners_.push_back({integerValue(key), factory.listsOf(values)});
            valueCount_ += values.size();
        });
    }
    std::ranges::stable_sort(owners_, {}, &Owner::personKey);
}

std::optional<std::size_t> MultiValues::find(std::int64_t personKey) const {
    const auto found = std::ranges::lower_bound(owners_, personKey, {}, &Owner::personKey);
    if (found == owners_.end() || found->personKey != personKey) return std::nullopt;
    return static_cast<std::size_t>(found - owners_.begin());
}

}  // namespace ZkMobileBackup::shaping
