#include "tool/text.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include "base/Image.h"

namespace zkmb {
namespace {

using ZkMobileBackup::Date;
using ZkMobileBackup::Value;

constexpr std::size_t kLongestCharacter = 4;  // bytes
constexpr double kYear0 = -62167219200.0;
constexpr double kYear10000 = 253402300800.0;

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

bool beginsLongCharacter(char c) {
    return static_cast<unsigned char>(c) >= 0xC0;
}

bool isControl(unsigned char c) {
    return c < 0x20 || c == 0x7F;
}

// U+0080 to U+009F, the second set of control characters, is C2 80 to C2 9F.
bool isSecondControlSet(std::string_view rest) {
    return rest.size() > 1 && rest[0] == '\xC2' && static_cast<unsigned char>(rest[1]) < 0xA0;
}

std::size_t characterLength(std::string_view rest) {
    std::size_t length = 1;
    if (!beginsLongCharacter(rest[0])) return length;
    while (length < std::min(rest.size(), kLongestCharacter) && continuesCharacter(rest[length])) ++length;
    return length;
}

char32_t codePoint(std::string_view character) {
    // The first byte holds what its length leaves it: 7, 5, 4 or 3 bits.
    const unsigned char first = static_cast<unsigned char>(character[0]);
    char32_t point = character.size() == 1 ? first : first & (0x7FU >> character.size());
    for (const char c : character.substr(1)) point = (point << 6) | (static_cast<unsigned char>(c) & 0x3FU);
    return point;
}

struct Range {
    char32_t first;
    char32_t last;
};

// What terminals draw two columns wide.
constexpr Range kWideRanges[] = {{0x1100, 0x115F},   {0x2E80, 0xA4CF},   {0xAC00, 0xD7A3},  {0xF900, 0xFAFF},
                                 {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F},
                                 {0x1F680, 0x1F6FF}, {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD}};

bool isWide(char32_t point) {
    return std::ranges::any_of(kWideRanges,
                               [&](const Range& range) { return range.first <= point && point <= range.last; });
}

/// What scaling leaves behind the tenth digit is of no use to people.
std::string readableExtent(const ZkMobileBackup::Size& size) {
    return fmt::format("{:.10g} x {:.10g}", size.width, size.height);
}

void appendPart(std::string& text, const Value& part) {
    if (!text.empty()) text += ", ";
    text += readable(part);
}

std::string readableParts(const ZkMobileBackup::Array& array) {
    std::string text;
    for (const Value& entry : array) appendPart(text, entry);
    return text;
}

std::string readableParts(const ZkMobileBackup::Dictionary& dictionary) {
    std::string text;
    for (std::size_t i = 0; i < dictionary.size(); ++i) appendPart(text, dictionary.valueAt(i));
    return text;
}

}  // namespace

std::string oneLine(std::string_view text, std::size_t maxCharacters) {
    std::string line;
    for (std::size_t position = 0, count = 0; position < text.size(); ++count) {
        if (count == maxCharacters) return line + "…";
        const std::string_view rest = text.substr(position);
        const std::size_t length = characterLength(rest);
        const bool control = isControl(static_cast<unsigned char>(rest[0])) || isSecondControlSet(rest);
        line.append(control ? " " : rest.substr(0, length));
        position += length;
    }
    return line;
}

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t length = characterLength(text.substr(position));
        width += isWide(codePoint(text.substr(position, length))) ? 2 : 1;
        position += length;
    }
    return width;
}

std::optional<std::string> iso8601(Date date) {
    const double seconds = std::floor(date.secondsSince1970);
    if (!(seconds >= kYear0 && seconds < kYear10000)) return std::nullopt;
    return fmt::format("{:%FT%TZ}", fmt::gmtime(static_cast<std::time_t>(seconds)));
}

std::string readable(const Value& value) {
    if (const std::string* text = value.text()) return *text;
    if (const std::int64_t* integer = value.integer()) return std::to_string(*integer);
    if (const double* floating = value.floating()) return fmt::format("{}", *floating);
    if (const Date* date = value.date()) return iso8601(*date).value_or("");
    if (const ZkMobileBackup::Size* size = value.size()) return readableExtent(*size);
    if (const auto* image = value.image(); image != nullptr && *image != nullptr) {
        return fmt::format("{} x {}", (*image)->width(), (*image)->height());
    }
    if (const ZkMobileBackup::Array* array = value.array()) return readableParts(*array);
    if (const ZkMobileBackup::Dictionary* dictionary = value.dictionary()) return readableParts(*dictionary);
    return "";
}

}  // namespace zkmb
