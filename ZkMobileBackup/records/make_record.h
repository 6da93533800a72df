#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "base/Value.h"

namespace ZkMobileBackup {

/// Makes a record in one piece of memory with its owners' count, past the protected constructor.
template <typename Record>
std::shared_ptr<Record> makeRecord(std::optional<Dictionary> row, bool deleted) {
    struct Made final : Record {
        Made(std::optional<Dictionary> r, bool d) : Record(std::move(r), d) {}
    };
    return std::make_shared<Made>(std::move(row), deleted);
}

}  // namespace ZkMobileBackup
