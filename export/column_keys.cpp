#include "export/column_keys.h"

#include <string_view>

namespace ZkMobileBackup {

std::vector<std::string> unionOfKeys(const Rows& rows) {
    Dictionary seen;
    std::vector<std::string> keys;
    for (const Dictionary& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (seen.contains(row.keyAt(i))) continue;
            seen.set(row.keyAt(i), Value());
            keys.push_back(row.keyAt(i));
        }
    }
    return keys;
}

std::vector<std::string> withNamesFirst(const std::vector<std::string>& keys) {
    std::vector<std::string> ordered;
    for (const std::string& key : keys) {
        if (key == "First Name") {
            ordered.insert(ordered.begin(), key);
        } else if (key == "Last Name") {
            ordered.insert(ordered.begin() + (ordered.empty() ? 0 : 1), key);
        } else {
            ordered.push_back(key);
        }
    }
    return ordered;
}

}  // namespace ZkMobileBackup
