#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/Api.h"
#include "base/Value.h"

namespace ZkMobileBackup {

/// Decoded pixels in sRGB: rows from the top, without gaps between them, four bytes a pixel: red, green, blue and
/// opacity (255 is opaque; colours are not multiplied by it).
struct Pixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba;
};

/// A picture that was read from a backup: a small handle that knows the picture's size and where its bytes are. Its
/// pixels are decoded whenever somebody looks at them and are not kept. All methods may be called from any thread.
class ZKMB_API Image {
public:
    virtual ~Image();
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    /// Extent of the upright picture in pixels; that of a picture that was scaled may have fractions.
    virtual Size size() const = 0;
    /// Width and height of the decoded picture: the extent rounded to whole pixels, at least 1.
    int width() const;
    int height() const;

    /// Decodes the picture, with its orientation tag applied; nothing when it cannot be decoded (any more). What a
    /// damaged file lacks of its pixels stays grey or black.
    virtual std::optional<Pixels> pixels() const = 0;

    // Ours.
    /// Pictures that announce more pixels than this are neither opened nor decoded, so that a small hostile file cannot
    /// ask for any amount of memory: a picture that is looked at takes up to 16 bytes for each of its pixels. Nor are
    /// files of more than 8 bytes for each of these pixels. At first kMostPixels.
    static std::int64_t mostPixels();
    static void setMostPixels(std::int64_t pixels);
    static constexpr std::int64_t kMostPixels = 100'000'000;

protected:
    Image() = default;
};

}  // namespace ZkMobileBackup
