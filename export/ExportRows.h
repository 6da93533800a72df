#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "base/CopyOnWrite.h"
#include "base/Value.h"

namespace ZkMobileBackup {

/// One table for a document: an ordered list of dictionaries from column title to cell value. A cell value is a text,
/// or an array of texts and of dictionaries of texts; any other value makes an empty cell. Copies share their rows.
class Rows {
public:
    Rows() = default;
    explicit Rows(std::nullptr_t) {}
    explicit Rows(std::vector<Dictionary> rows) : rows_(std::move(rows)) {}

    std::size_t size() const { return rows_->size(); }
    bool empty() const { return rows_->empty(); }
    const Dictionary& operator[](std::size_t position) const { return (*rows_)[position]; }
    auto begin() const { return rows_->begin(); }
    auto end() const { return rows_->end(); }

    void append(Dictionary row) { rows_.edit().push_back(std::move(row)); }

private:
    CopyOnWrite<std::vector<Dictionary>> rows_;
};

/// Several tables by name, in the order in which the names were first set.
class Tables {
public:
    struct Table {
        std::string name;
        Rows rows;
    };

    Tables() = default;
    explicit Tables(std::nullptr_t) {}
    /// A name that comes again replaces the rows of the first one and keeps its place.
    explicit Tables(std::vector<Table> tables) {
        for (Table& table : tables) set(std::move(table.name), std::move(table.rows));
    }

    std::size_t size() const { return content_->tables.size(); }
    bool empty() const { return content_->tables.empty(); }
    const Table& operator[](std::size_t position) const { return content_->tables[position]; }
    auto begin() const { return content_->tables.begin(); }
    auto end() const { return content_->tables.end(); }

    void set(std::string name, Rows rows) {
        Content& content = content_.edit();
        if (const Value* position = content.positions.find(name)) {
            content.tables[static_cast<std::size_t>(*position->integer())].rows = std::move(rows);
        } else {
            content.positions.set(name, content.tables.size());
            content.tables.push_back({std::move(name), std::move(rows)});
        }
    }

private:
    struct Content {
        std::vector<Table> tables;
        Dictionary positions;  // from a name to its place in tables
    };
    CopyOnWrite<Content> content_;
};

}  // namespace ZkMobileBackup
