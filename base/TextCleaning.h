#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Api.h"
#include "base/Value.h"

namespace ZkMobileBackup {

// Cleaning of recovered texts. All functions may be called from any thread; the locale has no say.

// isvisiable ("visible")
/// Whether a 16-bit unit is printable: 32 to 126, and all from 256 on, halves of surrogate pairs included.
ZKMB_API bool isvisiable(char16_t unit);

// replaceUnvalidChar ("replace invalid characters")
/// A copy of a text with one space in place of every unit that is not visible; nothing when the object is no text.
ZKMB_API std::optional<std::string> replaceUnvalidChar(const Value& object);

// replaceUnvalidCharArr
/// An array of what replaceUnvalidChar makes of each element, a null value where an element is no text. The empty text,
/// not an empty array, when the object is no array.
ZKMB_API Value replaceUnvalidCharArr(const Value& object);

/// A copy of a text with one space in place of every unit that is not visible.
std::string withSpacesForInvisible(std::string_view text);

/// The part of a text before its first unit that is not visible. Never ends within a character.
std::string_view visiblePrefix(std::string_view text);

}  // namespace ZkMobileBackup
