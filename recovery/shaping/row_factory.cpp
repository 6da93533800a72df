#include "recovery/shaping/row_factory.h"

#include <atomic>
#include <cstdint>
#include <fmt/format.h>

#include "recovery/TableKeys.h"

namespace ZkMobileBackup::shaping {

namespace {

constexpr std::size_t kIdentityPosition = 0;

/// Looks like an address, but is a number of its own: rows are moved and copied, and an address may be taken again.
std::string nextIdentity() {
    static std::atomic<std::uint64_t> count{0};
    return fmt::format("{:#x}", count.fetch_add(1, std::memory_order_relaxed) + 1);
}

}  // namespace

RowFactory::RowFactory(const std::vector<std::string>& columns) {
    emptyRow_.set(kRowIdentityKey, "");
    for (const std::string& column : columns) emptyRow_.set(column, "");
}

Dictionary RowFactory::newRow() const {
    Dictionary row = emptyRow_;
    row.setValueAt(kIdentityPosition, nextIdentity());
    return row;
}

}  // namespace ZkMobileBackup::shaping
