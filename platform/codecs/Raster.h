#pragma once

#include <cstdint>

namespace ZkMobileBackup {

/// Whole numbers of pixels.
struct Raster {
    int width = 0;
    int height = 0;

    /// Whether there are pixels, and at most so many.
    bool holdsAtMost(std::int64_t mostPixels) const {
        return width > 0 && height > 0 && std::int64_t{width} * height <= mostPixels;
    }
    bool operator==(const Raster&) const = default;
};

}  // namespace ZkMobileBackup
