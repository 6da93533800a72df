#pragma once

#include <cstdint>
#include <optional>

#include "base/Image.h"
#include "platform/codecs/ByteSource.h"
#include "platform/codecs/Raster.h"

namespace ZkMobileBackup {

/// What a movie's file says of it.
struct MovieFacts {
    std::int64_t duration = 0;    ///< the container's length in its own units; 0 when unknown
    std::int64_t timeScale = 0;   ///< those units in a second
    std::optional<Raster> shown;  ///< extent in which its pictures are shown, upright; nothing without pictures
};

/// What the library wants of a movie library. An implementation stands in a module of its own, which is loaded when the
/// first movie is looked at. Any thread; memory that runs out is thrown as std::bad_alloc, nothing else is thrown.
class MovieCodec {
public:
    virtual ~MovieCodec() = default;
    MovieCodec(const MovieCodec&) = delete;
    MovieCodec& operator=(const MovieCodec&) = delete;

    /// Nothing when the bytes are no movie that can be played. A movie of more than `mostPixels`, or of
    /// more than 33 megapixels, has no pictures.
    virtual std::optional<MovieFacts> facts(const ByteSource& bytes, std::int64_t mostPixels) const = 0;
    /// The picture that is shown first, upright, scaled to a raster; nothing when it cannot be decoded.
    virtual std::optional<Pixels> poster(const ByteSource& bytes, Raster raster, std::int64_t mostPixels) const = 0;

protected:
    MovieCodec() = default;
};

}  // namespace ZkMobileBackup
