#pragma once

#include <string>
#include <vector>

#include "base/Value.h"

namespace ZkMobileBackup::shaping {

/// Makes the rows of one table. They share one list of keys: a row costs little more than its texts.
class RowFactory {
public:
    explicit RowFactory(const std::vector<std::string>& columns);

    /// The identity, unique among live rows, then every column mapped to the empty text. Any thread.
    Dictionary newRow() const;

private:
    Dictionary emptyRow_;  // every row starts as a copy, which shares its keys
};

}  // namespace ZkMobileBackup::shaping
