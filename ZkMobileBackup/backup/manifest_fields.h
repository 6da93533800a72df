#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace ZkMobileBackup {

// Fields of the files that describe a backup. A position may lie past the end: bytes that are not there read as 0.

using Bytes = std::span<const std::uint8_t>;

// getint
/// Reads a big-endian number of `width` bytes in 32 bits and moves past it. Of wider numbers only the low 32 bits stay;
/// the result carries their sign.
std::int32_t getint(Bytes bytes, std::size_t& position, int width);

// getstring
/// Reads a text that follows its two-byte length and moves past it. The text ends at its first zero byte; a length of
/// FF FF stands for no bytes at all. "<null>" when the bytes are no UTF-8.
std::string getstring(Bytes bytes, std::size_t& position);

/// Two digits a byte, the high one first.
std::string hexadecimal(Bytes bytes, std::string_view sixteenDigits);

}  // namespace ZkMobileBackup
