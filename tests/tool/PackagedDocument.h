#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ZkMobileBackup {

/// The extensions of the documents that are packages of parts.
inline constexpr const char* kPackagedTypes[] = {"docx", "xlsx", "numbers", "pages"};

/// The parts of a document by their names; none when it cannot be unpacked.
std::map<std::string, std::vector<std::uint8_t>> partsOf(const std::string& document);

/// Whether a part of a document holds a text.
bool anyPartHolds(const std::string& document, const std::string& text);

}  // namespace ZkMobileBackup
