#pragma once

#include <string_view>

#include "base/Api.h"

namespace ZkMobileBackup {

// isContainInlegalCharacter
/// Whether a text holds a character that multi-valued cells do not show ("inlegal" stands for illegal). A 16-bit unit
/// is legal when it is U+0800 or above and no surrogate, or when its low byte is below 0x80. False for an empty text.
/// Any thread.
ZKMB_API bool isContainInlegalCharacter(std::u16string_view text);

}  // namespace ZkMobileBackup
