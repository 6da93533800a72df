#include "tool/row_table.h"

#include <algorithm>
#include <cstddef>
#include <fmt/format.h>
#include <utility>

#include "recovery/TableKeys.h"
#include "tool/output.h"
#include "tool/text.h"
#include "tool/text_table.h"

namespace zkmb {

using ZkMobileBackup::Dictionary;
using ZkMobileBackup::Value;

Dictionary withoutIdentity(Dictionary row) {
    row.remove(ZkMobileBackup::kRowIdentityKey);
    return row;
}

void RowTable::add(Dictionary row, bool deleted) {
    entries_.push_back({std::move(row), deleted});
}

void RowTable::print(const std::string& heading) const {
    const auto deleted = std::ranges::count_if(entries_, &Entry::deleted);
    writeOutput(fmt::format("{}: {} rows, {} of them deleted\n", oneLine(heading, 80), entries_.size(), deleted));
    if (entries_.empty()) return;

    const std::vector<std::string> names = columns();
    std::vector<std::string> titles = names;
    titles.insert(titles.begin(), "");
    TextTable table(titles);
    for (const Entry& entry : entries_) {
        std::vector<std::string> cells{entry.deleted ? "deleted" : "live"};
        for (const std::string& name : names) {
            const Value* value = entry.row.find(name);
            cells.push_back(value != nullptr ? readable(*value) : "");
        }
        table.addRow(cells);
    }
    table.print();
}

std::vector<std::string> RowTable::columns() const {
    Dictionary seen;
    for (const Entry& entry : entries_) seen.merge(entry.row);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < seen.size(); ++i) names.push_back(seen.keyAt(i));
    return names;
}

}  // namespace zkmb
