#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>

#include "base/Image.h"
#include "tests/support/Painting.h"

namespace ZkMobileBackup {

/// Red, green, blue and opacity.
using Rgba = std::array<int, 4>;

inline Rgba rgbaAt(const Pixels& pixels, int x, int y) {
    const std::size_t offset = 4 * (std::size_t(y) * std::size_t(pixels.width) + std::size_t(x));
    Rgba rgba{};
    std::copy_n(pixels.rgba.begin() + static_cast<std::ptrdiff_t>(offset), rgba.size(), rgba.begin());
    return rgba;
}

/// How far two pictures are apart in the mean of all colours, from 0 to 255; 255 for those of different extent and for
/// one that is not opaque everywhere.
inline double difference(const Pixels& pixels, const Canvas& canvas) {
    if (pixels.width != canvas.width || pixels.height != canvas.height) return 255;
    double sum = 0;
    for (int y = 0; y < canvas.height; ++y) {
        for (int x = 0; x < canvas.width; ++x) {
            const Rgba rgba = rgbaAt(pixels, x, y);
            const Canvas::Colour colour = canvas.at(x, y);
            if (rgba[3] != 255) return 255;
            for (std::size_t part = 0; part < colour.size(); ++part) sum += std::abs(rgba[part] - colour[part]);
        }
    }
    return sum / (3.0 * canvas.width * canvas.height);
}

/// Lossy encoders stay well below this, and any exchange of sides or colours is far above.
constexpr double kAlike = 6;

}  // namespace ZkMobileBackup
