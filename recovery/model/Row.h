#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/Api.h"
#include "base/Value.h"

namespace ZkMobileBackup {

class RowStore;

/// A row of a table: a handle, as small as a pointer, to content that the table's row store owns. It stays valid as
/// long as a row list over that store.
///
/// A raw row is an ordered list of cell texts; a row of a result table is a dictionary and has no cells.
class ZKMB_API Row {
public:
    class Iterator;

    Row() = default;

    /// Number of cells; 0 for a dictionary row.
    std::size_t count() const;
    /// The text of cell `index`, counted from 0; empty where the row is shorter. Takes time in proportion to `index`.
    std::string_view cell(std::size_t index) const;
    /// The cells from the first to the last.
    Iterator begin() const;
    Iterator end() const;
    /// The cells as texts of their own.
    std::vector<std::string> texts() const;

    /// The dictionary of a result row, null for a raw row.
    const Dictionary* dictionary() const;
    Dictionary* dictionary();

private:
    friend class RowStore;
    static constexpr std::uintptr_t kDictionaryMark = 1;
    explicit Row(std::uintptr_t content) : content_(content) {}
    /// Address of a raw row's content, null for any other row.
    const std::uint8_t* content() const;

    // Address of a raw row's content, or of the dictionary plus kDictionaryMark; both are even.
    std::uintptr_t content_ = 0;
};

/// Walks the cells of a raw row.
class ZKMB_API Row::Iterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = std::string_view;
    using difference_type = std::ptrdiff_t;
    using pointer = const std::string_view*;
    using reference = std::string_view;

    Iterator() = default;
    std::string_view operator*() const;
    Iterator& operator++();
    void operator++(int) { ++*this; }
    bool operator==(const Iterator& other) const { return remaining_ == other.remaining_; }

private:
    friend class Row;
    Iterator(const std::uint8_t* position, std::size_t remaining) : position_(position), remaining_(remaining) {}
    const std::uint8_t* position_ = nullptr;
    std::size_t remaining_ = 0;
};

/// An ordered list of rows. Lists that share a store move rows between each other without copying them.
class ZKMB_API RowList {
public:
    RowList();
    explicit RowList(std::shared_ptr<RowStore> store);

    std::size_t size() const { return rows_.size(); }
    bool empty() const { return rows_.empty(); }
    const Row& operator[](std::size_t position) const { return rows_[position]; }
    Row& operator[](std::size_t position) { return rows_[position]; }
    auto begin() const { return rows_.begin(); }
    auto end() const { return rows_.end(); }

    /// Appends a raw row with these cell texts.
    void append(const std::vector<std::string>& cells);
    /// Appends a result row.
    void append(Dictionary dictionary);
    /// Appends every row of `other`: handles where both share a store, copies otherwise.
    void append(const RowList& other);
    void clear() { rows_.clear(); }

    /// Appends one row that `owner` holds: the handle where this list shares that store, a copy otherwise.
    void append(Row row, const std::shared_ptr<RowStore>& owner);
    /// The same, so many times.
    void appendRepeatedly(Row row, const std::shared_ptr<RowStore>& owner, std::size_t times);

private:
    void appendCopy(const Row& row);

    std::shared_ptr<RowStore> store_;
    std::vector<Row> rows_;
};

}  // namespace ZkMobileBackup
