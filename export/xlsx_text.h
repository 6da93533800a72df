#pragma once

#include <string>
#include <string_view>

namespace ZkMobileBackup {

/// A text as cells of a workbook hold it. There "_x0041_" stands for the character with that number; where a text has
/// such letters of its own, "_x005F", the mark for "_" itself, is put before them.
std::string escapedCellText(std::string_view text);

}  // namespace ZkMobileBackup
