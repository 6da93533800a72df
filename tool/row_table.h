#pragma once

#include <string>
#include <vector>

#include "base/Value.h"

namespace zkmb {

/// The row without the key that only tells rows apart.
ZkMobileBackup::Dictionary withoutIdentity(ZkMobileBackup::Dictionary row);

/// Recovered rows as a table for people. Its columns are the keys of all rows, in the order in which they are met, but
/// for those that are empty in every row. Of a conversation it shows the number of messages and how it begins.
class RowTable {
public:
    void add(ZkMobileBackup::Dictionary row, bool deleted);
    /// Writes a heading with the number of rows, then the table, to standard output.
    void print(const std::string& heading) const;

private:
    struct Entry {
        ZkMobileBackup::Dictionary row;
        bool deleted;
    };

    std::vector<std::string> columns() const;
    bool hasContent(const std::string& column) const;

    std::vector<Entry> entries_;
};

}  // namespace zkmb
