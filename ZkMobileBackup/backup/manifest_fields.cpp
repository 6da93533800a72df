#include "ZkMobileBackup/backup/manifest_fields.h"

#include <algorithm>

#include "base/Text.h"

namespace ZkMobileBackup {

namespace {

constexpr std::size_t kEmptyTextMark = 0xFFFF;
constexpr std::string_view kInvalidText = "<null>";

std::uint8_t byteAt(Bytes bytes, std::size_t position) {
    return position < bytes.size() ? bytes[position] : std::uint8_t{0};
}

/// What is there of the `length` bytes at `position`, up to the first zero byte.
std::string_view textAt(Bytes bytes, std::size_t position, std::size_t length) {
    if (position >= bytes.size()) return {};
    const Bytes present = bytes.subspan(position, std::min(length, bytes.size() - position));
    const std::string_view text(reinterpret_cast<const char*>(present.data()), present.size());
    return text.substr(0, text.find('\0'));
}

}  // namespace

std::int32_t getint(Bytes bytes, std::size_t& position, int width) {
    // The upper half of an eight-byte file length is shifted out: hosts know lengths as 32-bit numbers that wrap.
    std::uint32_t accumulator = 0;
    for (int i = 0; i < width; ++i) accumulator = accumulator << 8 | byteAt(bytes, position++);
    return static_cast<std::int32_t>(accumulator);
}

std::string getstring(Bytes bytes, std::size_t& position) {
    const auto length = static_cast<std::size_t>(getint(bytes, position, 2));
    if (length == kEmptyTextMark) return {};
    const std::string_view text = textAt(bytes, position, length);
    position += length;
    return std::string(isValidUtf8(text) ? text : kInvalidText);
}

std::string hexadecimal(Bytes bytes, std::string_view sixteenDigits) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    for (const std::uint8_t byte : bytes) {
        digits += sixteenDigits[byte >> 4];
        digits += sixteenDigits[byte & 0xF];
    }
    return digits;
}

}  // namespace ZkMobileBackup
