#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ZkMobileBackup {

// The property-list library recurses once a level, looks keys up one by one, and makes as many copies of a binary
// object as there are references to it. What it is given is therefore held to limits that no backup's own file meets.

inline constexpr std::size_t kLargestPropertyList = std::size_t{16} << 20;  // bytes
inline constexpr std::size_t kMostPropertyListNodes = std::size_t{1} << 16;
inline constexpr int kDeepestPropertyList = 128;

/// Whether a binary property list stays within the limits with every reference in it followed.
bool isModestBinaryPropertyList(std::string_view bytes);

/// An XML property list without comments, processing instructions and document type, so that its elements are just what
/// they seem; in UTF-8. Nothing when it is no XML or exceeds the limits.
std::optional<std::string> plainXmlPropertyList(std::string_view bytes);

}  // namespace ZkMobileBackup
