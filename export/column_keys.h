#pragma once

#include <string>
#include <vector>

#include "export/ExportRows.h"

namespace ZkMobileBackup {

/// Every key of every row, in the order in which they are first seen.
std::vector<std::string> unionOfKeys(const Rows& rows);

/// The keys with "First Name" put at the front and "Last Name" second; "Last Name" is the first one as long as there is
/// no other key.
std::vector<std::string> withNamesFirst(const std::vector<std::string>& keys);

}  // namespace ZkMobileBackup
