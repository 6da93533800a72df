#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZkMobileBackup {

// A thumbnail store (".ithmb") is a sequence of equal slots without a header: the pixels of one thumbnail, rows from
// the top, two bytes a pixel, then kSlotTail bytes that are no pixels. All thumbnails of a store have the extent that
// the store's name tells.

struct ThumbnailExtent {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// The extent of the thumbnails in the store of that name; empty for a name that is not known.
ThumbnailExtent thumbnailExtent(std::string_view storeName);

inline constexpr std::size_t kSlotTail = 28;

struct StoreSlot {
    std::span<const std::uint8_t> bytes;
    std::int64_t position;  // in the file
};

/// Calls `take` for each whole slot of a store whose thumbnails have so many bytes of pixels, in order, with one buffer
/// for all of them. A store that cannot be opened has none; neither has what is not a regular file. Any other failure
/// to read it ends the process with a line on standard error: the store would otherwise seem to hold fewer pictures
/// than it does.
void readThumbnailStore(const std::string& path, std::size_t pixelBytes,
                        const std::function<void(const StoreSlot& slot)>& take);

/// A little-endian number as it stands in a file.
template <std::size_t Width>
struct LittleEndian {
    constexpr explicit LittleEndian(std::int64_t value) {
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(value & 0xFF);
            value >>= 8;
        }
    }
    std::array<std::uint8_t, Width> bytes{};
};

// Neither fits any thumbnail. They stay: readers go by the other fields, and every bitmap that was ever made of a
// thumbnail has these two.
inline constexpr std::int64_t kFixedBitmapFileSize = 50614;
inline constexpr std::int64_t kFixedBitmapImageSize = 50560;

/// The head of the bitmap file that is made of a thumbnail. Of a height below 0 the rows run from the top.
struct BitmapHeader {
    std::array<std::uint8_t, 2> type{'B', 'M'};
    LittleEndian<4> fileSize{kFixedBitmapFileSize};
    LittleEndian<4> reserved{0};
    LittleEndian<4> pixelOffset{54};
    LittleEndian<4> informationHeaderSize{40};
    LittleEndian<4> width{120};
    LittleEndian<4> height{-136};
    LittleEndian<2> planes{1};
    LittleEndian<2> bitsPerPixel{16};
    LittleEndian<4> compression{0};
    LittleEndian<4> imageSize{kFixedBitmapImageSize};
    std::array<std::uint8_t, 16> resolutionsAndColours{};

    void setExtent(ThumbnailExtent extent);
    std::span<const std::uint8_t> bytes() const;
};

/// The bitmap file of a slot's thumbnail, which has so many bytes of pixels; of a slot that is shorter, what it has.
std::vector<std::uint8_t> bitmapFile(const BitmapHeader& header, std::span<const std::uint8_t> slot,
                                     std::size_t pixelBytes);

}  // namespace ZkMobileBackup
