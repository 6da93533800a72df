#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <zlib.h>

#include "platform/Pictures.h"
#include "platform/codecs/PictureCodec.h"
#include "platform/codecs/modules.h"
#include "tests/platform/PictureTesting.h"
#include "tests/support/ByteBuilder.h"
#include "tests/support/CommandRun.h"
#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using Bytes = std::vector<std::uint8_t>;

SharedBytes shared(Bytes bytes) {
    return std::make_shared<const Bytes>(std::move(bytes));
}

std::shared_ptr<const Image> pictureOf(Bytes bytes) {
    return pictureOfBytes(shared(std::move(bytes)));
}

/// The picture of a PNG file, converted by the program vips: `operation` names its operation and arguments, with IN and
/// OUT for the files.
Bytes convertedByVips(const Canvas& canvas, std::string operation, const std::string& suffix) {
    const TemporaryFolder folder;
    writeBytes(folder.path("in.png"), pngFile(canvas));
    operation.replace(operation.find("IN"), 2, folder.path("in.png"));
    operation.replace(operation.find("OUT"), 3, folder.path("out" + suffix));
    const CommandRun run = runCommand("vips " + operation + " 2>&1");
    if (run.status != 0) throw std::runtime_error(run.output);
    return readBytes(folder.path("out" + suffix));
}

class Pictures : public testing::Test {
protected:
    ~Pictures() override { Image::setMostPixels(Image::kMostPixels); }

    std::string file(const Bytes& bytes) const {
        writeBytes(folder_.path("picture"), bytes);
        return folder_.path("picture");
    }

    const TemporaryFolder folder_;
};

TEST_F(Pictures, FilesAndBytesOfKnownFormatsAreDecoded) {
    const Canvas canvas = quadrants(160, 120);
    for (const Bytes& bytes : {jpegFile(canvas), jpegFile(canvas, {.progressive = true}), pngFile(canvas),
                               pngFile(canvas, PngKind::Rgb16), convertedByVips(canvas, "copy IN OUT", ".gif"),
                               convertedByVips(canvas, "webpsave IN OUT --lossless", ".webp"),
                               convertedByVips(canvas, "copy IN OUT", ".tif")}) {
        for (const auto& picture : {pictureOfFile(file(bytes)), pictureOf(bytes)}) {
            ASSERT_NE(picture, nullptr);
            EXPECT_EQ(picture->size(), (Size{160, 120}));
            const auto pixels = picture->pixels();
            ASSERT_TRUE(pixels);
            EXPECT_LT(difference(*pixels, canvas), kAlike);
        }
    }
}

TEST_F(Pictures, OrientationTagIsApplied) {
    const Canvas upright = quadrants(160, 100);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const auto picture = pictureOf(jpegFile(upright, {.orientation = orientation}));
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(picture->size(), (Size{160, 100})) << orientation;
        const auto pixels = picture->pixels();
        ASSERT_TRUE(pixels);
        EXPECT_LT(difference(*pixels, upright), kAlike) << orientation;
        const auto scaled = scaledPicture(picture, 0.5)->pixels();
        ASSERT_TRUE(scaled);
        EXPECT_LT(difference(*scaled, quadrants(80, 50)), kAlike) << orientation;
    }
}

TEST_F(Pictures, ColoursAreThoseThatTheProfileMeans) {
    const Canvas canvas = quadrants(160, 120);
    const auto wide = pictureOf(convertedByVips(canvas, "icc_transform IN OUT p3 --input-profile srgb", ".png"));
    ASSERT_NE(wide, nullptr);
    EXPECT_LT(difference(*wide->pixels(), canvas), kAlike);
    EXPECT_LT(difference(*scaledPicture(wide, 0.5)->pixels(), quadrants(80, 60)), kAlike);
}

TEST_F(Pictures, PrintColoursBecomeDisplayColours) {
    const auto printed =
        pictureOf(convertedByVips(quadrants(160, 120), "icc_transform IN OUT cmyk --input-profile srgb", ".jpg"));
    ASSERT_NE(printed, nullptr);
    const auto pixels = printed->pixels();
    ASSERT_TRUE(pixels);
    const Rgba red = rgbaAt(*pixels, 40, 30);  // as red as ink on paper gets
    EXPECT_GT(red[0], 180);
    EXPECT_LT(red[1], 80);
    EXPECT_LT(red[2], 80);
    EXPECT_EQ(red[3], 255);
}

TEST_F(Pictures, GreyBecomesThreeEqualColours) {
    const auto picture = pictureOf(convertedByVips(quadrants(160, 120), "colourspace IN OUT b-w", ".jpg"));
    ASSERT_NE(picture, nullptr);
    for (const auto& pixels : {picture->pixels(), scaledPicture(picture, 0.5)->pixels()}) {
        ASSERT_TRUE(pixels);
        const Rgba grey = rgbaAt(*pixels, 5, 5);
        EXPECT_NEAR(grey[0], 127, 4);  // what red weighs
        EXPECT_EQ(grey, (Rgba{grey[0], grey[0], grey[0], 255}));
    }
}

TEST_F(Pictures, OpacityIsKeptAndWhiteInAJpegFile) {
    const auto picture = pictureOf(pngFile(quadrants(160, 120), PngKind::Rgba));
    ASSERT_NE(picture, nullptr);
    for (const auto& shown : {picture, scaledPicture(picture, 0.5)}) {
        const auto pixels = shown->pixels();
        ASSERT_TRUE(pixels);
        EXPECT_EQ(rgbaAt(*pixels, 5, 5), (Rgba{255, 0, 0, 255}));
        EXPECT_EQ(rgbaAt(*pixels, pixels->width - 5, pixels->height - 5)[3], 0);
        const auto jpeg = jpegOfPicture(*shown, 90);
        ASSERT_TRUE(jpeg);
        const Rgba corner = rgbaAt(*pictureOf(*jpeg)->pixels(), pixels->width - 5, pixels->height - 5);
        for (const int part : corner) EXPECT_GE(part, 253);
    }
}

TEST_F(Pictures, JpegFileShowsThePicture) {
    const Canvas canvas = detailedQuadrants(161, 119);
    const auto picture = pictureOf(pngFile(canvas));
    const auto good = jpegOfPicture(*picture, 90);
    const auto poor = jpegOfPicture(*picture, 30);
    ASSERT_TRUE(good && poor);
    EXPECT_LT(poor->size(), good->size());
    EXPECT_LT(difference(*pictureOf(*good)->pixels(), canvas), kAlike);
}

TEST_F(Pictures, ScaledSizeIsTheExactProductAndItsRasterRounded) {
    const auto even = scaledPicture(pictureOf(jpegFile(quadrants(400, 300))), 0.3);
    EXPECT_EQ(even->size(), (Size{120, 90}));
    const auto odd = scaledPicture(pictureOf(jpegFile(quadrants(401, 300))), 0.3);
    EXPECT_DOUBLE_EQ(odd->size().width, 120.3);
    EXPECT_EQ(odd->size().height, 90);
    for (const auto& scaled : {even, odd}) {
        EXPECT_EQ(scaled->width(), 120);
        EXPECT_EQ(scaled->height(), 90);
        EXPECT_LT(difference(*scaled->pixels(), quadrants(120, 90)), kAlike);
    }
}

TEST_F(Pictures, ScaledPictureIsScaledAgain) {
    const auto once = scaledPicture(pictureOf(jpegFile(quadrants(401, 300))), 0.3);
    const auto twice = scaledPicture(once, 0.5);
    EXPECT_DOUBLE_EQ(twice->size().width, 60.15);
    EXPECT_LT(difference(*twice->pixels(), quadrants(60, 45)), kAlike);
    const auto back = scaledPicture(once, 2);
    EXPECT_LT(difference(*back->pixels(), quadrants(241, 180)), kAlike);
}

TEST_F(Pictures, AnythingLeavesAtLeastOnePixel) {
    const auto tiny = scaledPicture(pictureOf(pngFile(quadrants(100, 2))), 0.01);
    ASSERT_NE(tiny, nullptr);
    EXPECT_EQ(tiny->width(), 1);
    EXPECT_EQ(tiny->height(), 1);
    EXPECT_EQ(tiny->pixels()->rgba.size(), 4U);
}

TEST_F(Pictures, FactorsThatLeaveNoPictureGiveNone) {
    const auto picture = pictureOf(pngFile(quadrants(100, 80)));
    constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
    constexpr double kEndless = std::numeric_limits<double>::infinity();
    for (const double factor : {0.0, -1.0, kNothing, kEndless, 1e6, 1e300}) {
        EXPECT_EQ(scaledPicture(picture, factor), nullptr) << factor;
    }
    EXPECT_EQ(scaledPicture(nullptr, 0.5), nullptr);
}

TEST_F(Pictures, WhatIsNoPictureGivesNone) {
    EXPECT_EQ(pictureOfFile(folder_.path("missing")), nullptr);
    EXPECT_EQ(pictureOfFile(folder_.path()), nullptr);
    EXPECT_EQ(pictureOfFile(file({})), nullptr);
    EXPECT_EQ(pictureOfFile(file(Bytes(5000, 0xA5))), nullptr);
    ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(pictureOfFile(folder_.path("pipe")), nullptr);
    EXPECT_EQ(pictureOfBytes(nullptr), nullptr);
    EXPECT_EQ(pictureOf({}), nullptr);
}

TEST_F(Pictures, FormatsOfOtherProgramsAreNoPictures) {
    const std::string drawing = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"></svg>";
    for (const std::string& text : {drawing, std::string("P3 1 1 255 0 0 0\n"), std::string("%PDF-1.4\n")}) {
        EXPECT_EQ(pictureOf(Bytes(text.begin(), text.end())), nullptr) << text;
    }
}

TEST_F(Pictures, HeadersCutAnywhereCrashNothing) {
    const Bytes whole = jpegFile(quadrants(160, 120), {.orientation = 6});
    for (std::size_t size = 0; size < 700; size += 7) {
        if (const auto picture = pictureOf(Bytes(whole.begin(), whole.begin() + int(size)))) picture->pixels();
    }
}

TEST_F(Pictures, TruncatedJpegKeepsWhatCanBeDecodedAndIsGreyBelow) {
    Bytes bytes = jpegFile(detailedQuadrants(320, 240));
    bytes.resize(bytes.size() / 2);
    testing::internal::CaptureStderr();
    const auto picture = pictureOf(bytes);
    ASSERT_NE(picture, nullptr);
    const auto pixels = picture->pixels();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_TRUE(pixels);
    const Rgba top = rgbaAt(*pixels, 20, 20);
    EXPECT_GT(top[0], top[1] + 60);
    const Rgba below = rgbaAt(*pixels, 160, 235);
    EXPECT_NEAR(below[0], 128, 3);
    EXPECT_EQ(below, (Rgba{below[0], below[0], below[0], 255}));
}

TEST_F(Pictures, TruncatedPngIsDecodedOrNot) {
    Bytes bytes = pngFile(detailedQuadrants(320, 240));
    bytes.resize(bytes.size() / 2);
    testing::internal::CaptureStderr();
    const auto picture = pictureOf(bytes);
    if (picture != nullptr) picture->pixels();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Pictures, PicturesOfMoreThanTheMostPixelsAreNotOpened) {
    const Bytes bytes = pngFile(quadrants(30, 20));
    Image::setMostPixels(30 * 20 - 1);
    EXPECT_EQ(pictureOf(bytes), nullptr);
    Image::setMostPixels(30 * 20);
    EXPECT_NE(pictureOf(bytes), nullptr);
}

TEST_F(Pictures, EnlargedToMoreThanTheMostPixelsIsNone) {
    const auto picture = pictureOf(pngFile(quadrants(30, 20)));
    Image::setMostPixels(60 * 40 - 1);
    EXPECT_EQ(scaledPicture(picture, 2), nullptr);
    Image::setMostPixels(60 * 40);
    EXPECT_NE(scaledPicture(picture, 2), nullptr);
}

/// A PNG file that announces an extent and has no pixels for it.
Bytes announcedPng(std::uint32_t width, std::uint32_t height) {
    ByteBuilder chunk;
    chunk.text("IHDR").u32(width).u32(height).u8(8).u8(2).u8(0).u8(0).u8(0);
    ByteBuilder file;
    file.bytes({0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}).u32(13).bytes(chunk.bytes());
    const auto checksum = crc32(0, chunk.bytes().data(), static_cast<uInt>(chunk.bytes().size()));
    file.u32(static_cast<std::uint32_t>(checksum)).u32(0).text("IDAT").u32(0x35AF'061E);
    file.u32(0).text("IEND").u32(0xAE42'6082);
    return file.bytes();
}

TEST_F(Pictures, SmallFileThatAnnouncesAHugePictureIsNotOpened) {
    EXPECT_NE(pictureOf(announcedPng(1000, 1000)), nullptr);
    EXPECT_EQ(pictureOf(announcedPng(60'000, 60'000)), nullptr);
    EXPECT_EQ(pictureOf(announcedPng(0x7FFF'FFFF, 0x7FFF'FFFF)), nullptr);
}

TEST_F(Pictures, FileThatIsReplacedByALargerPictureIsNotDecoded) {
    Image::setMostPixels(100 * 80);
    const auto picture = pictureOfFile(file(pngFile(quadrants(100, 80))));
    ASSERT_NE(picture, nullptr);
    file(pngFile(quadrants(101, 80)));
    EXPECT_FALSE(picture->pixels());
    EXPECT_FALSE(scaledPicture(picture, 0.5)->pixels());
}

TEST_F(Pictures, FileThatIsReplacedByASmallerPictureFillsTheRaster) {
    const auto picture = pictureOfFile(file(pngFile(quadrants(100, 80))));
    file(pngFile(quadrants(50, 40)));
    const auto pixels = picture->pixels();
    ASSERT_TRUE(pixels);
    EXPECT_LT(difference(*pixels, quadrants(100, 80)), kAlike);
}

TEST_F(Pictures, FileThatDisappearsHasNoPixels) {
    const auto picture = pictureOfFile(file(pngFile(quadrants(100, 80))));
    std::filesystem::remove(folder_.path("picture"));
    EXPECT_EQ(picture->size(), (Size{100, 80}));
    EXPECT_FALSE(picture->pixels());
    EXPECT_FALSE(jpegOfPicture(*picture, 90));
}

TEST_F(Pictures, FilesLargerThanAnyPictureAreNotOpened) {
    const Bytes bytes = pngFile(quadrants(100, 80));
    const std::string path = file(bytes);
    Image::setMostPixels(100 * 80);
    std::filesystem::resize_file(path, 8 * 100 * 80 + 8);
    EXPECT_EQ(pictureOfFile(path), nullptr);
    std::filesystem::resize_file(path, 8 * 100 * 80);
    EXPECT_NE(pictureOfFile(path), nullptr);
}

TEST_F(Pictures, ManyThreadsLookAtOnce) {
    const auto photo = pictureOfFile(file(jpegFile(detailedQuadrants(800, 600), {.orientation = 6})));
    const auto bytes = shared(jpegFile(quadrants(160, 120)));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < 5; ++turn) {
                EXPECT_TRUE(scaledPicture(photo, 0.3)->pixels());
                const auto picture = pictureOfBytes(bytes);
                EXPECT_LT(difference(*picture->pixels(), quadrants(160, 120)), kAlike);
                EXPECT_TRUE(jpegOfPicture(*picture, 90));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST_F(Pictures, PixelsOfMoreThanColoursAndOpacityAreNone) {
    const Canvas canvas = quadrants(16, 12);
    EXPECT_NE(pictureOf(convertedByVips(canvas, "copy IN OUT", ".tif")), nullptr);
    // Each of a thousand channels counts as a pixel in memory.
    const TemporaryFolder folder;
    const CommandRun run = runCommand("vips black '" + folder.path("many.tif") + "' 4 4 --bands 1000 2>&1");
    ASSERT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(pictureOfFile(folder.path("many.tif")), nullptr);
}

/// Bytes that remember how far they were read.
class WatchedBytes : public ByteSource {
public:
    explicit WatchedBytes(Bytes bytes) : bytes_(std::move(bytes)) {}
    std::int64_t size() const override { return static_cast<std::int64_t>(bytes_.size()); }
    std::size_t read(std::int64_t position, std::span<std::uint8_t> room) const override {
        if (position < 0 || position >= size()) return 0;
        const std::size_t count = std::min(room.size(), bytes_.size() - static_cast<std::size_t>(position));
        std::copy_n(bytes_.begin() + position, count, room.begin());
        furthest_ = std::max(furthest_.load(), position + static_cast<std::int64_t>(count));
        return count;
    }
    std::int64_t furthest() const { return furthest_; }

private:
    const Bytes bytes_;
    mutable std::atomic<std::int64_t> furthest_{0};
};

/// A grey JPEG of 8 x 8 pixels with one scan for their mean and `scans` more that refine nothing.
Bytes jpegOfManyScans(std::size_t scans) {
    ByteBuilder jpeg;
    const auto segment = [&jpeg](unsigned mark, const Bytes& content) {
        jpeg.u16(0xFF00 | mark).u16(static_cast<unsigned>(content.size() + 2)).bytes(content);
    };
    const auto codeTable = [&segment](std::uint8_t kind, std::uint8_t symbol) {  // "0" for the one symbol
        Bytes table(18);
        table[0] = kind;
        table[1] = 1;
        table[17] = symbol;
        segment(0xC4, table);
    };
    Bytes quantization(65, 1);
    quantization[0] = 0;
    jpeg.u16(0xFFD8);
    segment(0xDB, quantization);
    segment(0xC2, {8, 0, 8, 0, 8, 1, 1, 0x11, 0});
    codeTable(0x00, 0);
    codeTable(0x10, 0xE0);  // the longest run of blocks without anything
    segment(0xDA, {1, 1, 0, 0, 0, 0});
    jpeg.u8(0x7F);
    for (std::size_t i = 0; i < scans; ++i) {
        segment(0xDA, {1, 1, 0, 1, 63, 0});
        jpeg.bytes({0x7F, 0xFF, 0x00});
    }
    return jpeg.u16(0xFFD9).bytes();
}

TEST_F(Pictures, JpegOfEndlessScansIsReadUpToSomeHundred) {
    constexpr std::size_t kBuffered = 8192;
    const Bytes few = jpegOfManyScans(100);
    ASSERT_NE(pictureOf(few), nullptr);
    EXPECT_TRUE(pictureOf(few)->pixels());
    const WatchedBytes endless(jpegOfManyScans(200'000));
    EXPECT_TRUE(pictureCodec()->extent(endless, Image::kMostPixels));
    pictureCodec()->decode(endless, {8, 8}, Image::kMostPixels);
    EXPECT_LT(endless.furthest(), static_cast<std::int64_t>(3 * few.size() + kBuffered));
}

TEST_F(Pictures, HeaderIsReadUpToABound) {
    const Bytes picture = jpegFile(quadrants(64, 48));
    const auto withComments = [&picture](std::size_t count) {
        Bytes bytes(picture.begin(), picture.begin() + 2);
        const Bytes comment = ByteBuilder().u16(0xFFFE).u16(0xFFFF).bytes();
        for (std::size_t i = 0; i < count; ++i) {
            bytes.insert(bytes.end(), comment.begin(), comment.end());
            bytes.insert(bytes.end(), 0xFFFF - 2, 'x');
        }
        bytes.insert(bytes.end(), picture.begin() + 2, picture.end());
        return bytes;
    };
    const auto sixteenMegabytes = pictureOf(withComments(256));
    ASSERT_NE(sixteenMegabytes, nullptr);
    EXPECT_LT(difference(*sixteenMegabytes->pixels(), quadrants(64, 48)), kAlike);
    EXPECT_EQ(pictureOf(withComments(600)), nullptr);
}

}  // namespace
}  // namespace ZkMobileBackup
