#include "export/IllegalCharacters.h"

#include <algorithm>

namespace ZkMobileBackup {

namespace {

constexpr char16_t kFirstUnitOfThreeBytes = 0x0800;

bool isSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDFFF;
}

bool isThreeBytesInUtf8(char16_t unit) {
    return unit >= kFirstUnitOfThreeBytes && !isSurrogate(unit);
}

// Only the low byte of a unit is judged, so U+0100 passes, U+00E9 does not, and a surrogate depends on its low byte.
// Control characters pass. Cells must go on showing exactly the texts they always showed.
bool hasAsciiLowByte(char16_t unit) {
    return (unit & 0xFF) < 0x80;
}

bool isIllegal(char16_t unit) {
    return !isThreeBytesInUtf8(unit) && !hasAsciiLowByte(unit);
}

}  // namespace

bool isContainInlegalCharacter(std::u16string_view text) {
    return std::any_of(text.begin(), text.end(), isIllegal);
}

}  // namespace ZkMobileBackup
