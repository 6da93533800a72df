#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Image.h"
#include "base/Value.h"

namespace ZkMobileBackup {

// Nothing here throws; every function may be called from any thread.

/// The picture in a regular file, opened for reading only; null when the file cannot be read, holds no picture of a
/// known format, or announces more than Image::mostPixels. Reads no more than the picture's header.
std::shared_ptr<const Image> pictureOfFile(const std::string& path);

/// The picture in the bytes of a file, likewise; the handle shares the bytes.
std::shared_ptr<const Image> pictureOfBytes(SharedBytes bytes);

/// The picture of a 16-bit bitmap (see bitmap16.h) whose header is given and whose pixels stand in a regular file, from
/// `position` on; null for another header, and for one that announces more than Image::mostPixels. Does not open the
/// file: whoever looks does so, and gets no pixels when they do not all stand there.
std::shared_ptr<const Image> pictureOfBitmap16(std::span<const std::uint8_t> header, const std::string& path,
                                               std::int64_t position);

/// A picture of `factor` times the size; its raster is that size rounded, at least 1. Null for a null picture and for
/// a factor that leaves nothing or gives more than Image::mostPixels. A picture of a file is scaled while it is
/// loaded.
std::shared_ptr<const Image> scaledPicture(std::shared_ptr<const Image> picture, double factor);

/// The picture as a JPEG file, where it is transparent on white. `quality` from 1 to 100. Nothing when its pixels
/// cannot be decoded.
std::optional<std::vector<std::uint8_t>> jpegOfPicture(const Image& picture, int quality);

}  // namespace ZkMobileBackup
