#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/Image.h"
#include "platform/codecs/ByteSource.h"
#include "platform/codecs/Raster.h"

namespace ZkMobileBackup {

/// What the library wants of a picture library. An implementation stands in a module of its own, which is loaded when
/// the first picture is looked at. Any thread; memory that runs out is thrown as std::bad_alloc, nothing else is
/// thrown.
class PictureCodec {
public:
    virtual ~PictureCodec() = default;
    PictureCodec(const PictureCodec&) = delete;
    PictureCodec& operator=(const PictureCodec&) = delete;

    /// Extent of the upright picture, from its header alone; nothing when the bytes are no picture of a known format,
    /// one of more than `mostPixels`, or one whose pixels have more than colours and an opacity.
    virtual std::optional<Raster> extent(const ByteSource& bytes, std::int64_t mostPixels) const = 0;
    /// The upright picture in sRGB, scaled to a raster; nothing as above, or when it cannot be decoded.
    virtual std::optional<Pixels> decode(const ByteSource& bytes, Raster raster, std::int64_t mostPixels) const = 0;
    /// The picture scaled to a raster.
    virtual std::optional<Pixels> scale(const Pixels& pixels, Raster raster) const = 0;
    /// The picture as a JPEG file, on white.
    virtual std::optional<std::vector<std::uint8_t>> jpeg(const Pixels& pixels, int quality) const = 0;

protected:
    PictureCodec() = default;
};

}  // namespace ZkMobileBackup
