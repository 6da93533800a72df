#pragma once

#include <cstdint>
#include <vector>

#include "recovery/engine/parser_state.h"

namespace ZkMobileBackup::engine {

/// Appends the overflow pages of a record that ends the current page, in chain order. False, with an empty list, when
/// the chain does not end within 10000 links.
bool followOverflowChain(const ParserState& state, std::vector<std::uint32_t>& pages);

/// Copies the content of `pages` over the bytes from `destination` on, in chain order, and returns the end of the copy.
/// The image changes for every later reader of these bytes.
std::int64_t spliceOverflowPages(ParserState& state, const std::vector<std::uint32_t>& pages, std::int64_t destination);

/// Each overflow page, and the local part of a spilled record, gives four bytes to the number of the next page.
inline constexpr std::int64_t kPageNumberSize = 4;

}  // namespace ZkMobileBackup::engine
