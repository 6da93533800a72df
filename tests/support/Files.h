#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZkMobileBackup {

/// The whole of a file; throws std::runtime_error when it cannot be read.
std::vector<std::uint8_t> readBytes(const std::string& path);

/// Writes a file, with the folders above it; throws std::runtime_error when it cannot be written.
void writeBytes(const std::string& path, std::span<const std::uint8_t> bytes);
void writeText(const std::string& path, std::string_view text);

std::span<const std::uint8_t> bytesOf(std::string_view text);

/// Every file below a folder by its relative path, with its content.
std::map<std::string, std::vector<std::uint8_t>> folderContent(const std::string& folder);

}  // namespace ZkMobileBackup
