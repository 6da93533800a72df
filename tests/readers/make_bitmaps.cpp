// make_bitmaps FOLDER: writes the bitmap of a thumbnail of each kind of store, and the pixels (red, green, blue,
// opacity) that the library sees in it.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ZkMobileBackup/domains/thumbnail_store.h"
#include "platform/Pictures.h"
#include "tests/support/Files.h"

using namespace ZkMobileBackup;

namespace {

/// Pixels of all kinds.
std::vector<std::uint8_t> pixelBytes(ThumbnailExtent extent) {
    std::vector<std::uint8_t> bytes;
    for (std::uint32_t pixel = 0; pixel < static_cast<std::uint32_t>(extent.width * extent.height); ++pixel) {
        const std::uint32_t mixed = pixel * 2'654'435'761U;
        bytes.push_back(static_cast<std::uint8_t>(mixed >> 24U));
        bytes.push_back(static_cast<std::uint8_t>(mixed >> 16U & 0xFFU));
    }
    return bytes;
}

void writeBitmap(const std::string& path, const std::string& storeName) {
    const ThumbnailExtent extent = thumbnailExtent(storeName);
    BitmapHeader header;
    header.setExtent(extent);
    const std::vector<std::uint8_t> pixels = pixelBytes(extent);
    const std::vector<std::uint8_t> bitmap = bitmapFile(header, pixels, pixels.size());
    writeBytes(path + ".bmp", bitmap);
    writeBytes(path + ".rgba",
               pictureOfBytes(std::make_shared<const std::vector<std::uint8_t>>(bitmap))->pixels().value().rgba);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    try {
        for (const std::string number : {"3303", "3309", "3319", "4031"}) {
            writeBitmap(std::string(argv[1]) + "/" + number, number + ".ithmb");
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_bitmaps: %s\n", error.what());
        return 1;
    }
}
