#include "base/Text.h"

#include <charconv>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>
#include <unicode/locid.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace ZkMobileBackup {

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

/// Number of leading bytes below 0x80, or a few less where another byte follows.
std::size_t asciiPrefix(std::string_view bytes) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    std::size_t length = 0;
    for (std::uint64_t word = 0; bytes.size() - length >= sizeof word; length += sizeof word) {
        std::memcpy(&word, bytes.data() + length, sizeof word);
        if ((word & kHighBits) != 0) return length;
    }
    std::uint64_t rest = 0;
    if (length < bytes.size()) std::memcpy(&rest, bytes.data() + length, bytes.size() - length);
    return (rest & kHighBits) != 0 ? length : bytes.size();
}

// The library's macro narrows an int within itself.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
/// The character at `position`, which moves past it; negative where the bytes are no character.
UChar32 nextCharacter(std::string_view text, std::size_t& position) {
    UChar32 character = 0;
    U8_NEXT(text.data(), position, text.size(), character);
    return character;
}
#pragma GCC diagnostic pop

std::string_view withoutLeadingBlanks(std::string_view text) {
    if (!text.empty() && text.front() > ' ') return text;  // most texts: every blank sorts up to the space
    const std::size_t start = text.find_first_not_of(kBlanks);
    return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

/// What becomes of a number that no double can hold: infinity or 0. Only the C library says which.
double valueOutOfRange(std::string_view number) {
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(std::string(number).c_str(), nullptr, cLocale);
}

std::string_view withoutTrailingSlash(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    return path;
}

}  // namespace

bool isValidUtf8(std::string_view bytes) {
    for (std::size_t position = asciiPrefix(bytes); position < bytes.size();) {
        if (nextCharacter(bytes, position) < 0) return false;
    }
    return true;
}

std::string_view withoutCutCharacter(std::string_view bytes) {
    std::size_t lead = bytes.size();
    while (lead > 0 && bytes.size() - lead < 3 && U8_IS_TRAIL(bytes[lead - 1])) --lead;
    if (lead == 0 || !U8_IS_LEAD(bytes[lead - 1])) return bytes;
    const auto wanted = static_cast<std::size_t>(U8_COUNT_TRAIL_BYTES(static_cast<std::uint8_t>(bytes[lead - 1])));
    return bytes.size() - lead < wanted ? bytes.substr(0, lead - 1) : bytes;
}

std::string lowerCased(std::string_view text) {
    if (asciiPrefix(text) == text.size()) {
        std::string lowered(text);
        for (char& c : lowered) {
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        }
        return lowered;
    }
    std::string lowered;
    icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())))
        .toLower(icu::Locale::getRoot())
        .toUTF8String(lowered);
    return lowered;
}

std::u16string toUtf16(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    constexpr UChar32 kReplacement = 0xFFFD;
    for (std::size_t position = 0; position < text.size();) {
        UChar32 character = nextCharacter(text, position);
        if (character < 0) character = kReplacement;
        if (U_IS_BMP(character)) {
            units.push_back(static_cast<char16_t>(character));
        } else {
            units.push_back(U16_LEAD(character));
            units.push_back(U16_TRAIL(character));
        }
    }
    return units;
}

std::string toUtf8(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    for (std::size_t i = 0; i < units.size();) {
        UChar32 character = 0;
        U16_NEXT_OR_FFFD(units.data(), i, units.size(), character);
        char bytes[U8_MAX_LENGTH];
        std::size_t length = 0;
        U8_APPEND_UNSAFE(bytes, length, character);
        text.append(bytes, length);
    }
    return text;
}

std::int64_t integerValue(std::string_view text) {
    text = withoutLeadingBlanks(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    // Read as unsigned, so that a second sign counts as no digits and the lowest value fits.
    std::uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    if (error == std::errc::invalid_argument) return 0;
    constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const bool tooLarge = error == std::errc::result_out_of_range || magnitude > kLargest;
    if (negative) {
        return tooLarge ? std::numeric_limits<std::int64_t>::min() : -static_cast<std::int64_t>(magnitude);
    }
    return tooLarge ? std::numeric_limits<std::int64_t>::max() : static_cast<std::int64_t>(magnitude);
}

double floatValue(std::string_view text) {
    text = withoutLeadingBlanks(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    // A digit, or a point before a digit, must lead: that keeps out a second sign, "inf" and "nan".
    const std::size_t first = text.starts_with('.') ? 1 : 0;
    if (first >= text.size() || text[first] < '0' || text[first] > '9') return 0;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        value = valueOutOfRange({text.data(), end});
    }
    return negative ? -value : value;
}

std::string_view lastPathComponent(std::string_view path) {
    path = withoutTrailingSlash(path);
    if (path == "/") return path;
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view pathWithoutLastComponent(std::string_view path) {
    path = withoutTrailingSlash(path);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return {};
    return path.substr(0, slash == 0 ? 1 : slash);
}

std::string_view pathExtension(std::string_view path) {
    const std::string_view name = lastPathComponent(path);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size()) return {};
    return name.substr(dot + 1);
}

std::string_view pathWithoutExtension(std::string_view path) {
    const std::string_view extension = pathExtension(path);
    path = withoutTrailingSlash(path);
    return extension.empty() ? path : path.substr(0, path.size() - extension.size() - 1);
}

std::string joinedPath(std::string_view folder, std::string_view name) {
    while (name.starts_with('/')) name.remove_prefix(1);
    if (folder.empty()) return std::string(name);
    std::string path(folder);
    if (path.back() != '/') path += '/';
    return path.append(name);
}

}  // namespace ZkMobileBackup
