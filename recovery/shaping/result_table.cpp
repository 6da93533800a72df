#include "recovery/shaping/result_table.h"

#include "base/Text.h"
#include "recovery/shaping/row_factory.h"

namespace ZkMobileBackup::shaping {

std::int64_t indexOfColumn(const std::vector<std::string>& names, std::string_view name) {
    const std::string wanted = lowerCased(name);
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (lowerCased(names[i]) == wanted) return static_cast<std::int64_t>(i);
    }
    return -1;
}

Dictionary newResultRow(const std::vector<std::string>& names) {
    return RowFactory(names).newRow();
}

}  // namespace ZkMobileBackup::shaping
