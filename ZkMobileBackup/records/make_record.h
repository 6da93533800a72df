#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "base/Value.h"

namespace ZkMobileBackup {

/// Makes a record in one piece of memory with its owners' count, past the protected constructor. `fields` are what that
/// constructor takes besides.
template <typename Record, typename... Fields>
std::shared_ptr<Record> makeRecord(std::optional<Dictionary> row, bool deleted, Fields&&... fields) {
    struct Made final : Record {
        Made(std::optional<Dictionary> r, bool d, Fields&&... f)
            : Record(std::move(r), d, std::forward<Fields>(f)...) {}
    };
    return std::make_shared<Made>(std::move(row), deleted, std::forward<Fields>(fields)...);
}

}  // namespace ZkMobileBackup
