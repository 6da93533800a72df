#include "base/TextCleaning.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ZkMobileBackup {

namespace {

constexpr char kReplacement = ' ';
constexpr char kBackspace = '\b';

constexpr bool isVisibleUnit(char16_t unit) {
    return unit >= 256 || (unit >= 32 && unit <= 126);
}

// What a byte of UTF-8 says about its character. Only units below 256 can be invisible: one byte below 0x80, or two
// bytes led by 0xC2 or 0xC3.
enum class ByteKind : std::uint8_t { kVisible, kInvisible, kLeadOfInvisible };

constexpr std::array<ByteKind, 256> kByteKinds = [] {
    std::array<ByteKind, 256> kinds{};
    for (char16_t byte = 0; byte < 0x80; ++byte) {
        kinds[byte] = isVisibleUnit(byte) ? ByteKind::kVisible : ByteKind::kInvisible;
    }
    kinds[0xC2] = kinds[0xC3] = ByteKind::kLeadOfInvisible;
    return kinds;
}();

bool isTrailByte(std::string_view text, std::size_t position) {
    return position < text.size() && (static_cast<std::uint8_t>(text[position]) & 0xC0) == 0x80;
}

/// Where the first invisible character at or after `from` begins, or the end of the text.
std::size_t findInvisible(std::string_view text, std::size_t from) {
    for (std::size_t i = from; i < text.size(); ++i) {
        const ByteKind kind = kByteKinds[static_cast<std::uint8_t>(text[i])];
        if (kind == ByteKind::kVisible) continue;
        if (kind == ByteKind::kInvisible || isTrailByte(text, i + 1)) return i;
    }
    return text.size();
}

std::size_t lengthOfInvisible(std::string_view text, std::size_t position) {
    return kByteKinds[static_cast<std::uint8_t>(text[position])] == ByteKind::kLeadOfInvisible ? 2 : 1;
}

}  // namespace

bool isvisiable(char16_t unit) {
    return isVisibleUnit(unit);
}

std::string withSpacesForInvisible(std::string_view text) {
    std::string cleaned;
    cleaned.reserve(text.size());
    std::size_t done = 0;
    for (std::size_t found = findInvisible(text, 0); found < text.size(); found = findInvisible(text, done)) {
        cleaned.append(text, done, found - done).push_back(kReplacement);
        done = found + lengthOfInvisible(text, found);
    }
    cleaned.append(text, done);
    // Finds none, each is a space by now; kept so that none ever passes, whatever counts as visible.
    std::erase(cleaned, kBackspace);
    return cleaned;
}

std::string_view visiblePrefix(std::string_view text) {
    return text.substr(0, findInvisible(text, 0));
}

std::optional<std::string> replaceUnvalidChar(const Value& object) {
    const std::string* text = object.text();
    if (text == nullptr) return std::nullopt;
    return withSpacesForInvisible(*text);
}

Value replaceUnvalidCharArr(const Value& object) {
    const Array* array = object.array();
    if (array == nullptr) return "";
    Array cleaned;
    cleaned.reserve(array->size());
    for (const Value& element : *array) {
        std::optional<std::string> text = replaceUnvalidChar(element);
        cleaned.push_back(text ? Value(*std::move(text)) : Value());
    }
    return cleaned;
}

}  // namespace ZkMobileBackup
