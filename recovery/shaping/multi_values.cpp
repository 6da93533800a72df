#include "recovery/shaping/multi_values.h"

#include <algorithm>
#include <string>
#include <unordered_map>

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

struct NamedList {
    std::string_view name;
    Array values;
};
using Lists = std::vector<NamedList>;  // four at most

Array& valuesOf(Lists& lists, std::string_view name) {
    const auto found = std::ranges::find(lists, name, &NamedList::name);
    return found != lists.end() ? found->values : lists.emplace_back(NamedList{name, {}}).values;
}

/// Makes dictionaries of lists. Those with the same lists share their keys.
class ListsFactory {
public:
    Dictionary dictionaryOf(Lists lists) {
        std::string names;
        for (const NamedList& list : lists) names.append(list.name).append(" ");
        Dictionary& empty = emptyByNames_[names];
        if (empty.empty()) {
            for (const NamedList& list : lists) empty.set(list.name, Value());
        }
        Dictionary dictionary = empty;
        for (std::size_t i = 0; i < lists.size(); ++i) dictionary.setValueAt(i, std::move(lists[i].values));
        return dictionary;
    }

private:
    std::unordered_map<std::string, Dictionary> emptyByNames_;  // few: there are four lists
};

/// Owners in the order in which they were met.
class ListsByOwner {
public:
    struct Owner {
        std::string_view key;
        Lists lists;
    };

    void append(std::string_view owner, std::string_view list, std::string value) {
        const auto [position, isNew] = positions_.try_emplace(owner, owners_.size());
        if (isNew) owners_.push_back({owner, {}});
        valuesOf(owners_[position->second].lists, list).emplace_back(std::move(value));
    }
    std::vector<Owner>& owners() { return owners_; }

private:
    std::vector<Owner> owners_;
    std::unordered_map<std::string_view, std::size_t, KeyedHash> positions_;
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
        ListsByOwner& owners = countedRows_++ < liveRows_ ? live_ : carved_;
        const auto cell = cellOf(raw, value_);
        if (cell) append(owners, raw.cell(kOwnerCell), withSpacesForInvisible(*cell), integerCell(raw, label_));
    }

    ListsByOwner& live() { return live_; }
    ListsByOwner& carved() { return carved_; }

private:
    static void append(ListsByOwner& owners, std::string_view owner, std::string value, std::int64_t kind) {
        const std::string_view list = listOf(kind, value);
        if (!list.empty() && value != kNullCell) owners.append(owner, list, std::move(value));
    }

    std::size_t liveRows_;
    std::size_t countedRows_ = 0;
    std::size_t value_;
    std::size_t label_;
    ListsByOwner live_;
    ListsByOwner carved_;
};

}  // namespace

MultiValues::MultiValues(const TableShaper& shaper, const RawTableObject& table) {
    Grouping grouping(table);
    shaper.visit(table, [&](const Row& raw, Origin, std::size_t) { grouping.add(raw); });
    ListsFactory factory;
    for (ListsByOwner* group : {&grouping.live(), &grouping.carved()}) {
        for (auto& owner : group->owners()) {
            owners_.push_back({integerValue(owner.key), factory.dictionaryOf(std::move(owner.lists))});
        }
    }
    std::ranges::stable_sort(owners_, {}, &Owner::personKey);
}

std::optional<std::size_t> MultiValues::find(std::int64_t personKey) const {
    const auto found = std::ranges::lower_bound(owners_, personKey, {}, &Owner::personKey);
    if (found == owners_.end() || found->personKey != personKey) return std::nullopt;
    return static_cast<std::size_t>(found - owners_.begin());
}

}  // namespace ZkMobileBackup::shaping
