#pragma once

#include <cstddef>
#include <string_view>

namespace ZkMobileBackup {

/// Lines that a text takes in a cell of `width` characters of middling breadth, wrapped between words: at least 1, at
/// most `limit`. An estimate, on the generous side; only the reader knows its fonts.
std::size_t wrappedLineCount(std::string_view text, std::size_t width, std::size_t limit);

}  // namespace ZkMobileBackup
