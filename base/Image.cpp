#include "base/Image.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>

namespace ZkMobileBackup {

namespace {

std::atomic<std::int64_t> chosenMostPixels{Image::kMostPixels};

int wholePixels(double extent) {
    return static_cast<int>(std::clamp(std::round(extent), 1.0, double{std::numeric_limits<int>::max()}));
}

}  // namespace

Image::~Image() = default;

int Image::width() const {
    return wholePixels(size().width);
}

int Image::height() const {
    return wholePixels(size().height);
}

std::int64_t Image::mostPixels() {
    return chosenMostPixels.load(std::memory_order_relaxed);
}

void Image::setMostPixels(std::int64_t pixels) {
    chosenMostPixels.store(pixels, std::memory_order_relaxed);
}

}  // namespace ZkMobileBackup
