#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zkmb {

/// A table for people: columns under their titles, every row on one line.
class TextTable {
public:
    explicit TextTable(const std::vector<std::string>& titles);

    /// Adds a row with one cell a column. Long cells are cut, control characters become spaces.
    void addRow(const std::vector<std::string>& cells);
    bool empty() const { return rows_.size() == 1; }
    /// Writes the table to standard output.
    void print() const;

private:
    std::string lineOf(const std::vector<std::string>& cells) const;

    std::vector<std::vector<std::string>> rows_;  // the titles first
    std::vector<std::size_t> widths_;             // in columns of a terminal
};

}  // namespace zkmb
