#pragma once

#include <cstdint>

#include "recovery/engine/byte_image.h"

namespace ZkMobileBackup::engine {

/// Fields counted from a start within an assumed extent: what does not end within the extent reads as 0. The extent is
/// often a page's size while the start lies inside the page, so a field may reach into the next page.
class CheckedFields {
public:
    CheckedFields(const ByteImage& image, std::int64_t start, std::int64_t length)
        : image_(image), start_(start), length_(length) {}

    std::uint16_t big16(std::int64_t offset) const { return fits(offset, 2) ? image_.big16(start_ + offset) : 0; }
    std::uint32_t big32(std::int64_t offset) const { return fits(offset, 4) ? image_.big32(start_ + offset) : 0; }

private:
    bool fits(std::int64_t offset, std::int64_t width) const { return offset <= length_ - width; }

    const ByteImage& image_;
    std::int64_t start_;
    std::int64_t length_;
};

}  // namespace ZkMobileBackup::engine
