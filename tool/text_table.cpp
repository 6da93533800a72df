#include "tool/text_table.h"

#include <algorithm>

#include "tool/output.h"
#include "tool/text.h"

namespace zkmb {
namespace {

constexpr std::size_t kMaxCellCharacters = 80;
constexpr std::size_t kGap = 2;

}  // namespace

TextTable::TextTable(const std::vector<std::string>& titles) : widths_(titles.size()) {
    addRow(titles);
}

void TextTable::addRow(const std::vector<std::string>& cells) {
    std::vector<std::string>& row = rows_.emplace_back();
    for (std::size_t i = 0; i < widths_.size(); ++i) {
        row.push_back(oneLine(cells[i], kMaxCellCharacters));
        widths_[i] = std::max(widths_[i], displayWidth(row.back()));
    }
}

void TextTable::print() const {
    std::string text;
    for (const std::vector<std::string>& row : rows_) text += lineOf(row);
    writeOutput(text);
}

std::string TextTable::lineOf(const std::vector<std::string>& cells) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        line += cells[i];
        line.append(widths_[i] - displayWidth(cells[i]) + kGap, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

}  // namespace zkmb
