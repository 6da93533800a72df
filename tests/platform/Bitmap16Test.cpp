#include <gtest/gtest.h>
#include <limits>
#include <memory>

#include "platform/Pictures.h"
#include "tests/platform/PictureTesting.h"
#include "tests/support/ByteBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

struct Header {
    std::uint32_t width = 2;
    std::uint32_t height = static_cast<std::uint32_t>(-2);
    unsigned planes = 1;
    unsigned bits = 16;
    std::uint32_t compression = 0;
};

constexpr std::uint32_t kWrongSize = 50614;

std::vector<std::uint8_t> little(std::uint32_t number, int bytes) {
    std::vector<std::uint8_t> result;
    for (; bytes > 0; --bytes, number >>= 8U) result.push_back(static_cast<std::uint8_t>(number & 0xFFU));
    return result;
}

ByteBuilder header(const Header& fields = {}) {
    ByteBuilder bitmap;
    bitmap.text("BM").bytes(little(kWrongSize, 4)).fill(4).bytes(little(54, 4)).bytes(little(40, 4));
    bitmap.bytes(little(fields.width, 4)).bytes(little(fields.height, 4)).bytes(little(fields.planes, 2));
    bitmap.bytes(little(fields.bits, 2)).bytes(little(fields.compression, 4)).bytes(little(kWrongSize, 4)).fill(16);
    return bitmap;
}

std::shared_ptr<const Image> picture(const ByteBuilder& bitmap) {
    return pictureOfBytes(std::make_shared<const std::vector<std::uint8_t>>(bitmap.bytes()));
}

ByteBuilder fourPixels() {
    ByteBuilder bitmap = header();
    bitmap.bytes(little(0x7C00, 2)).bytes(little(0x03E0, 2)).bytes(little(0x001F, 2)).bytes(little(0xFFFF, 2));
    return bitmap;
}

TEST(Bitmap16, RowsRunFromTheTopAndColoursFromTheHighestBits) {
    const auto bitmap = picture(fourPixels());
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->size(), (Size{2, 2}));
    const auto pixels = bitmap->pixels();
    ASSERT_TRUE(pixels);
    EXPECT_EQ(rgbaAt(*pixels, 0, 0), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(rgbaAt(*pixels, 1, 0), (Rgba{0, 255, 0, 255}));
    EXPECT_EQ(rgbaAt(*pixels, 0, 1), (Rgba{0, 0, 255, 255}));
    EXPECT_EQ(rgbaAt(*pixels, 1, 1), (Rgba{255, 255, 255, 255}));
}

TEST(Bitmap16, FiveBitsAreScaledExactly) {
    ByteBuilder bitmap = header({.width = 32, .height = static_cast<std::uint32_t>(-1)});
    for (std::uint32_t value = 0; value < 32; ++value) bitmap.bytes(little(value, 2));
    const auto pixels = picture(bitmap)->pixels();
    ASSERT_TRUE(pixels);
    for (int value = 0; value < 32; ++value) {
        EXPECT_EQ(rgbaAt(*pixels, value, 0)[2], static_cast<int>(value * 255.0 / 31 + 0.5)) << value;
    }
}

TEST(Bitmap16, RowsOfAnOddWidthArePadded) {
    ByteBuilder bitmap = header({.width = 1, .height = static_cast<std::uint32_t>(-2)});
    bitmap.bytes(little(0x7C00, 2)).fill(2, 0xEE).bytes(little(0x001F, 2)).fill(2, 0xEE);
    const auto pixels = picture(bitmap)->pixels();
    ASSERT_TRUE(pixels);
    EXPECT_EQ(rgbaAt(*pixels, 0, 0), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(rgbaAt(*pixels, 0, 1), (Rgba{0, 0, 255, 255}));
}

TEST(Bitmap16, AnyShorterPrefixIsNoPicture) {
    const std::vector<std::uint8_t> whole = fourPixels().bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto bytes = std::make_shared<const std::vector<std::uint8_t>>(whole.begin(), whole.begin() + int(size));
        EXPECT_EQ(pictureOfBytes(bytes), nullptr) << size;
    }
}

TEST(Bitmap16, BytesBehindThePixelsAreIgnored) {
    EXPECT_NE(picture(fourPixels().fill(28, 0xEE)), nullptr);
}

TEST(Bitmap16, OtherBitmapsAreNoPictures) {
    EXPECT_EQ(picture(header({.planes = 2}).fill(100)), nullptr);
    EXPECT_EQ(picture(header({.bits = 24}).fill(100)), nullptr);
    EXPECT_EQ(picture(header({.compression = 3}).fill(100)), nullptr);
}

TEST(Bitmap16, ImpossibleExtentsAreNoPictures) {
    constexpr std::uint32_t kLowest = 0x8000'0000;
    for (const std::uint32_t width : {0U, 0xFFFF'FFFFU, kLowest, 0x7FFF'FFFFU}) {
        EXPECT_EQ(picture(header({.width = width}).fill(100)), nullptr) << width;
    }
    for (const std::uint32_t height : {0U, 2U, kLowest, kLowest + 1}) {
        EXPECT_EQ(picture(header({.height = height}).fill(100)), nullptr) << height;
    }
}

TEST(Bitmap16, PixelLimitHolds) {
    Image::setMostPixels(3);
    EXPECT_EQ(picture(fourPixels()), nullptr);
    Image::setMostPixels(4);
    EXPECT_NE(picture(fourPixels()), nullptr);
    Image::setMostPixels(Image::kMostPixels);
}

// --- Bitmaps whose pixels stand in a file ----------------------------------------------------------------------------

class Bitmap16InAFile : public testing::Test {
protected:
    Bitmap16InAFile() { writeBytes(path, fourPixels().bytes()); }
    ~Bitmap16InAFile() override { Image::setMostPixels(Image::kMostPixels); }

    std::shared_ptr<const Image> pictureAt(std::int64_t position, const ByteBuilder& head = header()) const {
        return pictureOfBitmap16(head.bytes(), path, position);
    }

    const TemporaryFolder folder;
    const std::string path = folder.path("pixels");
};

TEST_F(Bitmap16InAFile, IsReadAtItsPlace) {
    const auto bitmap = pictureAt(54);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->size(), (Size{2, 2}));
    const auto pixels = bitmap->pixels();
    ASSERT_TRUE(pixels);
    EXPECT_EQ(pixels->rgba, picture(fourPixels())->pixels()->rgba);
    ASSERT_TRUE(scaledPicture(bitmap, 0.5)->pixels());
}

TEST_F(Bitmap16InAFile, LooksReadTheFileAgain) {
    const auto bitmap = pictureAt(54);
    writeBytes(path, header().fill(8, 0).bytes());
    ASSERT_TRUE(bitmap->pixels());
    EXPECT_EQ(rgbaAt(*bitmap->pixels(), 0, 0), (Rgba{0, 0, 0, 255}));
}

TEST_F(Bitmap16InAFile, WithoutAllItsPixelsHasNone) {
    EXPECT_FALSE(pictureAt(55)->pixels());
    EXPECT_FALSE(pictureAt(-1)->pixels());
    EXPECT_FALSE(pictureAt(std::numeric_limits<std::int64_t>::max())->pixels());
    EXPECT_FALSE(pictureOfBitmap16(header().bytes(), folder.path("missing"), 0)->pixels());
    EXPECT_FALSE(pictureOfBitmap16(header().bytes(), folder.path(), 0)->pixels());
}

TEST_F(Bitmap16InAFile, AnnouncesNoMoreThanTheMostPixels) {
    Image::setMostPixels(3);
    EXPECT_EQ(pictureAt(54), nullptr);
    Image::setMostPixels(4);
    EXPECT_NE(pictureAt(54), nullptr);
}

TEST_F(Bitmap16InAFile, OtherHeadersAreNoPictures) {
    EXPECT_EQ(pictureAt(54, header({.bits = 24})), nullptr);
    EXPECT_EQ(pictureAt(54, header({.width = 0})), nullptr);
    EXPECT_EQ(pictureAt(54, header({.height = 2})), nullptr);
    EXPECT_EQ(pictureOfBitmap16({}, path, 0), nullptr);
}

TEST(Bitmap16, IsScaled) {
    ByteBuilder bitmap = header({.width = 40, .height = static_cast<std::uint32_t>(-20)});
    for (int count = 0; count < 40 * 20; ++count) bitmap.bytes(little(0x7C00, 2));
    const auto scaled = scaledPicture(picture(bitmap), 0.3);
    ASSERT_NE(scaled, nullptr);
    const auto pixels = scaled->pixels();
    ASSERT_TRUE(pixels);
    EXPECT_EQ(pixels->width, 12);
    EXPECT_EQ(pixels->height, 6);
    EXPECT_EQ(rgbaAt(*pixels, 5, 3), (Rgba{255, 0, 0, 255}));
}

}  // namespace
}  // namespace ZkMobileBackup
