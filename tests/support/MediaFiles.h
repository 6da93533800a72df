#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "tests/support/Painting.h"

namespace ZkMobileBackup {

// Content of real files, by encoders of others; writeBytes puts it on the disk. Every function throws
// std::runtime_error when the encoder fails, and gives the same bytes at every call.

struct JpegOptions {
    int orientation = 1;  ///< EXIF orientation, 1 to 8; the file has a tag unless it is 1
    bool progressive = false;
    int quality = 90;
};

/// A JPEG file whose picture is `upright` once its orientation tag is applied.
std::vector<std::uint8_t> jpegFile(const Canvas& upright, const JpegOptions& options = {});

enum class PngKind {
    Rgb,
    Rgba,  ///< yellow is fully transparent, all else opaque
    Rgb16  ///< 16 bits a channel; colours other than full and none are not kept exactly
};

std::vector<std::uint8_t> pngFile(const Canvas& picture, PngKind kind = PngKind::Rgb);

/// A slot of a thumbnail store: a picture, or nothing for one that is all zeros.
using ThumbnailSlot = std::optional<Canvas>;

/// A thumbnail store (".ithmb"): slots of 16-bit pixels, 5 bits a channel, each with a tail of 28 bytes that are no
/// pixels and not zero. All pictures must have the extent given.
std::vector<std::uint8_t> thumbnailStore(int width, int height, std::span<const ThumbnailSlot> slots);

struct MovieOptions {
    int width = 160;  ///< of the upright picture; even, as is the height
    int height = 120;
    int frames = 15;         ///< 30 a second
    int timeScale = 600;     ///< units of the movie header in a second
    int rotation = 0;        ///< degrees, clockwise, by which the display matrix turns what is stored: 0, 90, 180, 270
    bool picture = true;     ///< an H.264 track
    bool sound = false;      ///< an AAC track; its last packet may make the movie longer than its frames
    bool mp4 = false;        ///< MP4 instead of QuickTime
    bool longTimes = false;  ///< a movie header of version 1, which has 64-bit numbers
};

/// A movie of some frames: numberedQuadrants with a 1 first, with a 2 in all that follow. Its header's duration is
/// frames * timeScale / 30. Runs the program ffmpeg.
std::vector<std::uint8_t> movieFile(const MovieOptions& options = {});

}  // namespace ZkMobileBackup
