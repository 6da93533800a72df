#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/Image.h"
#include "platform/codecs/Raster.h"

namespace ZkMobileBackup {

// Uncompressed Windows bitmaps of 16 bits a pixel (5 a colour, from the highest: unused, red, green, blue) whose rows
// run from the top. Their size fields are not looked at: the thumbnails that are made such bitmaps have wrong ones.
// Read here because libvips has no reader for bitmaps of its own, and one more library is not worth these few lines.

inline constexpr std::size_t kBitmap16HeaderSize = 54;

/// The extent that a header announces; nothing when the bytes do not begin with one of such a bitmap.
std::optional<Raster> bitmap16Announced(std::span<const std::uint8_t> header);
/// Bytes of a bitmap of that extent, header included.
std::size_t bitmap16Size(Raster extent);

/// Extent of the picture; nothing when the bytes are no such bitmap or lack some of its pixels.
std::optional<Raster> bitmap16Extent(std::span<const std::uint8_t> bitmap);
/// The picture of a bitmap that has an extent.
Pixels bitmap16Pixels(std::span<const std::uint8_t> bitmap);

}  // namespace ZkMobileBackup
