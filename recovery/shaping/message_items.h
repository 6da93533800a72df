#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Value.h"
#include "recovery/model/TableObject.h"

namespace ZkMobileBackup::shaping {

/// Makes the item that stands for a message in the list of its conversation. Items share one list of keys: an item
/// costs little more than its texts.
class MessageItemFactory {
public:
    explicit MessageItemFactory(const RawTableObject& messages);

    /// What the row lacks keeps its default.
    Dictionary itemOf(const Row& message) const;

private:
    enum Field : std::size_t { kText, kDate, kSentFlag, kFieldCount };
    struct Column {
        std::size_t index;
        Field field;
    };
    using Cells = std::array<std::optional<std::string_view>, kFieldCount>;

    Cells cellsOf(const Row& message) const;

    std::array<Column, kFieldCount> columns_;  // by ascending index
    Dictionary defaultItem_;
};

/// Items in the order of their messages: first they are collected, then every row that shows them shares them.
class MessageItemList {
public:
    void append(Dictionary item) { collected_.push_back(std::move(item)); }

    /// All items as one value, null for none. Nothing may be appended any more.
    const Value& shared();

private:
    std::vector<Dictionary> collected_;  // as small as pointers, unlike the values that the rows need
    Value shared_;
};

}  // namespace ZkMobileBackup::shaping
