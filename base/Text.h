#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/Api.h"

namespace ZkMobileBackup {

// Texts are UTF-8. Rules that speak of 16-bit units are applied to the UTF-16 form of a text.

/// Whether the bytes are well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isValidUtf8(std::string_view bytes);

/// The part of `bytes` before an incomplete character at its end.
std::string_view withoutCutCharacter(std::string_view bytes);

/// Lower-cased in full Unicode, whatever the locale.
std::string lowerCased(std::string_view text);

std::u16string toUtf16(std::string_view text);
/// A lone surrogate becomes U+FFFD.
std::string toUtf8(std::u16string_view units);

/// The whole number at the head of a text: optional blanks, an optional sign, ASCII digits, the rest ignored. 0 without
/// digits; saturates at the ends of the range.
std::int64_t integerValue(std::string_view text);

/// The number at the head of a text, fraction and exponent included; 0 without one. No hexadecimal, infinity or NaN.
double floatValue(std::string_view text);

/// Last component of a path; a trailing "/" is dropped first.
std::string_view lastPathComponent(std::string_view path);
/// What stands before the last component, "" for none.
std::string_view pathWithoutLastComponent(std::string_view path);
/// What follows the last "." of the last component; empty without one, or when the only "." leads or ends the name.
std::string_view pathExtension(std::string_view path);
/// The path without its extension and the "." before it.
std::string_view pathWithoutExtension(std::string_view path);
/// Both parts with exactly one "/" between them.
std::string joinedPath(std::string_view folder, std::string_view name);

}  // namespace ZkMobileBackup
