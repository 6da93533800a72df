#include "platform/bitmap16.h"

namespace ZkMobileBackup {

namespace {

constexpr std::size_t kBytesOfPixel = 2;

std::uint16_t little16(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

std::uint32_t little32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return little16(bytes, offset) | std::uint32_t{little16(bytes, offset + 2)} << 16;
}

bool hasHeader(std::span<const std::uint8_t> bitmap) {
    constexpr std::uint32_t kInformationHeaderSize = 40;
    return bitmap.size() >= kBitmap16HeaderSize && bitmap[0] == 'B' && bitmap[1] == 'M' &&
           little32(bitmap, 10) == kBitmap16HeaderSize && little32(bitmap, 14) == kInformationHeaderSize &&
           little16(bitmap, 26) == 1 && little16(bitmap, 28) == 8 * kBytesOfPixel && little32(bitmap, 30) == 0;
}

/// The extent that the header announces; a negative height stands for rows from the top.
Raster announcedExtent(std::span<const std::uint8_t> bitmap) {
    const auto width = static_cast<std::int32_t>(little32(bitmap, 18));
    const auto height = static_cast<std::int32_t>(0U - little32(bitmap, 22));
    return {width, height};
}

/// Rows begin at multiples of four bytes.
std::size_t bytesOfRow(Raster extent) {
    return (std::size_t(extent.width) * kBytesOfPixel + 3) / 4 * 4;
}

/// Five bits as eight.
std::uint8_t widened(int value) {
    return static_cast<std::uint8_t>(((value & 31) * 255 + 15) / 31);
}

void expandRow(std::span<const std::uint8_t> row, std::uint8_t* to) {
    for (std::size_t offset = 0; offset + kBytesOfPixel <= row.size(); offset += kBytesOfPixel) {
        const int pixel = little16(row, offset);
        *to++ = widened(pixel >> 10);
        *to++ = widened(pixel >> 5);
        *to++ = widened(pixel);
        *to++ = 255;
    }
}

}  // namespace

std::optional<Raster> bitmap16Announced(std::span<const std::uint8_t> header) {
    if (!hasHeader(header)) return std::nullopt;
    const Raster extent = announcedExtent(header);
    return extent.width > 0 && extent.height > 0 ? std::optional(extent) : std::nullopt;
}

std::size_t bitmap16Size(Raster extent) {
    return kBitmap16HeaderSize + bytesOfRow(extent) * std::size_t(extent.height);
}

std::optional<Raster> bitmap16Extent(std::span<const std::uint8_t> bitmap) {
    const std::optional<Raster> extent = bitmap16Announced(bitmap);
    return extent && bitmap.size() >= bitmap16Size(*extent) ? extent : std::nullopt;
}

Pixels bitmap16Pixels(std::span<const std::uint8_t> bitmap) {
    const Raster extent = announcedExtent(bitmap);
    const std::size_t bytesOfPixels = std::size_t(extent.width) * kBytesOfPixel;
    Pixels pixels{.width = extent.width, .height = extent.height, .rgba = {}};
    pixels.rgba.resize(std::size_t(extent.width) * std::size_t(extent.height) * 4);
    for (std::size_t y = 0; y < std::size_t(extent.height); ++y) {
        const std::size_t start = kBitmap16HeaderSize + y * bytesOfRow(extent);
        expandRow(bitmap.subspan(start, bytesOfPixels), pixels.rgba.data() + y * std::size_t(extent.width) * 4);
    }
    return pixels;
}

}  // namespace ZkMobileBackup
