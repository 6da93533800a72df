#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/ZkMobileBackupPhotoRecord.h"
#include "base/Image.h"
#include "tests/support/ByteBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;

using Bytes = std::vector<std::uint8_t>;
using PhotoRecord = ZkMobileBackupPhotoRecord;

constexpr Date kTaken{1'300'000'000.0};

SharedBytes sharedBytes(Bytes bytes) {
    return std::make_shared<const Bytes>(std::move(bytes));
}

std::shared_ptr<const Image> imageOf(const PhotoRecord& record) {
    return *record.recordValueForKey(kPhotoRecordThumbnail)->image();
}

Size resolutionOf(const PhotoRecord& record) {
    return *record.recordValueForKey(kPhotoRecordResolution)->size();
}

/// Bytes of the decoded image, 0 when it cannot be decoded.
std::size_t pixelBytesOf(const PhotoRecord& record) {
    const auto pixels = imageOf(record)->pixels();
    return pixels ? pixels->rgba.size() : 0;
}

std::vector<std::string> keysOf(const PhotoRecord& record) {
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < record.value()->size(); ++i) keys.push_back(record.value()->keyAt(i));
    return keys;
}

/// Ends a JPEG file's picture after so many bytes.
Bytes cut(Bytes bytes, std::size_t length) {
    bytes.resize(length);
    return bytes;
}

/// A PNG file that announces an extent and holds no pixels.
Bytes hugePng(std::uint32_t width, std::uint32_t height) {
    Bytes png = pngFile(quadrants(8, 8));
    constexpr std::size_t kExtent = 16;
    const Bytes extent = ByteBuilder().u32(width).u32(height).bytes();
    std::copy(extent.begin(), extent.end(), png.begin() + kExtent);
    constexpr std::size_t kHeaderStart = 12;
    constexpr std::size_t kHeaderLength = 17;
    std::uint32_t check = 0xFFFFFFFF;
    for (std::size_t i = kHeaderStart; i < kHeaderStart + kHeaderLength; ++i) {
        check ^= png[i];
        for (int bit = 0; bit < 8; ++bit) check = check >> 1 ^ ((check & 1) != 0 ? 0xEDB88320 : 0);
    }
    const Bytes sum = ByteBuilder().u32(~check).bytes();
    std::copy(sum.begin(), sum.end(), png.begin() + kHeaderStart + kHeaderLength);
    return png;
}

class LivePhoto : public testing::Test {
protected:
    Dictionary info(const Bytes& bytes) const {
        writeBytes(path, bytes);
        return {{kRawDBNameKey, "IMG_0001"}, {kRawDBdataKey, path}, {kRawDBdateKey, kTaken}};
    }
    std::shared_ptr<PhotoRecord> record(const Bytes& bytes) const {
        return PhotoRecord::initWithPhotoInfo(info(bytes));
    }

    const TemporaryFolder folder;
    const std::string path = folder.path("photo");
};

// --- Live photos -----------------------------------------------------------------------------------------------------

TEST_F(LivePhoto, KeepsTitleDateImageAndSizeInThisOrder) {
    const auto photo = record(jpegFile(quadrants(200, 100)));
    ASSERT_NE(photo, nullptr);
    EXPECT_THAT(keysOf(*photo), ElementsAre("title", "create date", "thumbnail", "resolution"));
    EXPECT_EQ(*photo->recordValueForKey("title")->text(), "IMG_0001");
    EXPECT_EQ(*photo->recordValueForKey("create date")->date(), kTaken);
    EXPECT_EQ(imageOf(*photo)->size(), (Size{200, 100}));
    EXPECT_EQ(resolutionOf(*photo), (Size{200, 100}));
    EXPECT_EQ(photo->photoPath(), path);
    EXPECT_FALSE(photo->isDeleted());
    EXPECT_FALSE(photo->shouldRecovery());
}

TEST_F(LivePhoto, WiderThanThreeHundredIsReduced) {
    const auto photo = record(jpegFile(quadrants(400, 300)));
    EXPECT_EQ(resolutionOf(*photo), (Size{400 * 0.3, 300 * 0.3}));
    EXPECT_EQ(imageOf(*photo)->width(), 120);
    EXPECT_EQ(imageOf(*photo)->height(), 90);
    const auto pixels = imageOf(*photo)->pixels();
    ASSERT_TRUE(pixels);
    EXPECT_EQ(pixels->width, 120);
    EXPECT_EQ(pixels->height, 90);
    EXPECT_EQ(pixels->rgba.size(), 120u * 90u * 4u);
}

TEST_F(LivePhoto, ThreeHundredWideIsNotReduced) {
    EXPECT_EQ(resolutionOf(*record(jpegFile(quadrants(300, 200)))), (Size{300, 200}));
    EXPECT_EQ(resolutionOf(*record(pngFile(quadrants(300, 10)))), (Size{300, 10}));
}

TEST_F(LivePhoto, OnePixelWiderIsReducedToTheExactProduct) {
    const auto photo = record(jpegFile(quadrants(301, 201)));
    EXPECT_EQ(resolutionOf(*photo), (Size{301 * 0.3, 201 * 0.3}));
    EXPECT_EQ(imageOf(*photo)->width(), 90);
    EXPECT_EQ(imageOf(*photo)->height(), 60);
}

TEST_F(LivePhoto, HeightDoesNotDecide) {
    EXPECT_EQ(resolutionOf(*record(jpegFile(quadrants(300, 800)))), (Size{300, 800}));
}

TEST_F(LivePhoto, WidthIsThatOfTheUprightPicture) {
    for (const int turned : {5, 6, 7, 8}) {
        EXPECT_EQ(resolutionOf(*record(jpegFile(quadrants(200, 400), {.orientation = turned}))), (Size{200, 400}));
        EXPECT_EQ(resolutionOf(*record(jpegFile(quadrants(400, 200), {.orientation = turned}))),
                  (Size{400 * 0.3, 200 * 0.3}));
    }
}

TEST_F(LivePhoto, ImageIsUpright) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const auto photo = record(jpegFile(quadrants(400, 320), {.orientation = orientation}));
        const auto pixels = imageOf(*photo)->pixels();
        ASSERT_TRUE(pixels);
        ASSERT_EQ(pixels->width, 120);
        const auto red = [&](std::size_t x, std::size_t y) { return pixels->rgba[(y * 120 + x) * 4]; };
        const auto green = [&](std::size_t x, std::size_t y) { return pixels->rgba[(y * 120 + x) * 4 + 1]; };
        EXPECT_TRUE(red(30, 24) > 200 && green(30, 24) < 50) << "top left, orientation " << orientation;
        EXPECT_TRUE(red(90, 24) < 50 && green(90, 24) > 200) << "top right, orientation " << orientation;
        EXPECT_TRUE(red(30, 72) < 50 && green(30, 72) < 50) << "bottom left, orientation " << orientation;
        EXPECT_TRUE(red(90, 72) > 200 && green(90, 72) > 200) << "bottom right, orientation " << orientation;
    }
}

TEST_F(LivePhoto, WithoutANameHasNoTitle) {
    Dictionary photo = info(jpegFile(quadrants(20, 20)));
    photo.remove(kRawDBNameKey);
    EXPECT_THAT(keysOf(*PhotoRecord::initWithPhotoInfo(photo)), ElementsAre("create date", "thumbnail", "resolution"));
}

TEST_F(LivePhoto, WithoutADateHasNoCreateDate) {
    Dictionary photo = info(jpegFile(quadrants(20, 20)));
    photo.remove(kRawDBdateKey);
    photo.set(kThumbnailDateKey, kTaken);  // that of a thumbnail
    EXPECT_THAT(keysOf(*PhotoRecord::initWithPhotoInfo(photo)), ElementsAre("title", "thumbnail", "resolution"));
}

TEST_F(LivePhoto, FileThatIsNoPictureGivesNoRecord) {
    for (const Bytes& bytes : {Bytes{}, Bytes{0xFF, 0xD8}, Bytes(5000, 0x41), cut(jpegFile(quadrants(40, 40)), 20),
                               cut(pngFile(quadrants(40, 40)), 12)}) {
        EXPECT_EQ(record(bytes), nullptr) << bytes.size() << " bytes";
    }
}

TEST_F(LivePhoto, FileThatIsNotRegularGivesNoRecord) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    for (const std::string& name :
         {folder.path("missing"), folder.path(), folder.path("pipe"), std::string("/dev/zero"), std::string()}) {
        EXPECT_EQ(PhotoRecord::initWithPhotoInfo({{kRawDBdataKey, name}}), nullptr) << name;
    }
}

TEST_F(LivePhoto, InfoWithoutAPathGivesNoRecord) {
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo({}), nullptr);
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo({{kRawDBdataKey, 5}}), nullptr);
    const SharedBytes bytes = sharedBytes(jpegFile(quadrants(20, 20)));
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo({{kRawDBNameKey, "live"}, {kRawDBdataKey, bytes}}), nullptr);
}

TEST_F(LivePhoto, CutAnywhereIsHarmless) {
    const Bytes whole = jpegFile(detailedQuadrants(320, 200));
    std::size_t records = 0;
    for (std::size_t length = 0; length < whole.size(); length += whole.size() / 40) {
        const auto photo = record(cut(whole, length));
        if (photo == nullptr) continue;
        ++records;
        EXPECT_EQ(resolutionOf(*photo), (Size{320 * 0.3, 200 * 0.3})) << length;
        EXPECT_THAT(pixelBytesOf(*photo), testing::AnyOf(0u, 96u * 60u * 4u)) << length;
    }
    EXPECT_GT(records, 20u);  // the head is a small part of the file
}

TEST_F(LivePhoto, PictureThatAnnouncesTooManyPixelsGivesNoRecord) {
    EXPECT_NE(record(hugePng(9'000, 9'000)), nullptr);
    EXPECT_NE(record(hugePng(10'000, 10'000)), nullptr);
    EXPECT_EQ(record(hugePng(10'000, 10'001)), nullptr);
    EXPECT_EQ(record(hugePng(30'000, 30'000)), nullptr);
    EXPECT_EQ(record(hugePng(0x7FFFFFFF, 0x7FFFFFFF)), nullptr);
}

TEST_F(LivePhoto, PictureWithoutTheAnnouncedPixelsIsHarmless) {
    const auto photo = record(hugePng(3'000, 3'000));
    ASSERT_NE(photo, nullptr);
    EXPECT_EQ(resolutionOf(*photo), (Size{3'000 * 0.3, 3'000 * 0.3}));
    EXPECT_THAT(pixelBytesOf(*photo), testing::AnyOf(0u, 900u * 900u * 4u));
}

TEST_F(LivePhoto, FileThatVanishesLeavesARecordWithoutPixels) {
    const auto photo = record(jpegFile(quadrants(40, 40)));
    std::filesystem::remove(path);
    EXPECT_EQ(imageOf(*photo)->size(), (Size{40, 40}));
    EXPECT_EQ(imageOf(*photo)->pixels(), std::nullopt);
}

TEST_F(LivePhoto, ExportValueHasItsImageDateAndSizeUnchanged) {
    Dictionary photo = info(jpegFile(quadrants(20, 20)));
    photo.set(kRawDBNameKey, "first\nsecond");
    const auto made = PhotoRecord::initWithPhotoInfo(photo);
    const auto exported = made->exportValue();
    ASSERT_TRUE(exported);
    EXPECT_EQ(*exported->text("title"), "first");
    for (const char* key : {"create date", "thumbnail", "resolution"}) {
        EXPECT_EQ(*exported->find(key), *made->recordValueForKey(key)) << key;
    }
}

// --- Thumbnails ------------------------------------------------------------------------------------------------------

Dictionary thumbnailInfo(Bytes bytes) {
    return {{kRawDBNameKey, "_1"},
            {kRawDBdataKey, sharedBytes(std::move(bytes))},
            {kThumbnailDateKey, kTaken},
            {kThumbnailDeletedKey, "yes"}};
}

TEST(ThumbnailRecord, IsDeletedAndHasNoPath) {
    const auto thumbnail = PhotoRecord::initWithPhotoInfo(thumbnailInfo(pngFile(quadrants(64, 48))));
    ASSERT_NE(thumbnail, nullptr);
    EXPECT_TRUE(thumbnail->isDeleted());
    EXPECT_EQ(thumbnail->photoPath(), std::nullopt);
    EXPECT_THAT(keysOf(*thumbnail), ElementsAre("title", "create date", "thumbnail", "resolution"));
    EXPECT_EQ(*thumbnail->recordValueForKey("title")->text(), "_1");
    EXPECT_EQ(*thumbnail->recordValueForKey("create date")->date(), kTaken);
    EXPECT_EQ(resolutionOf(*thumbnail), (Size{64, 48}));
}

TEST(ThumbnailRecord, IsNeverReduced) {
    EXPECT_EQ(resolutionOf(*PhotoRecord::initWithPhotoInfo(thumbnailInfo(jpegFile(quadrants(400, 300))))),
              (Size{400, 300}));
}

TEST(ThumbnailRecord, AnyDeletedEntryMakesOne) {
    for (const Value& entry : {Value("no"), Value(""), Value(0)}) {
        Dictionary info = thumbnailInfo(pngFile(quadrants(20, 20)));
        info.set(kThumbnailDeletedKey, entry);
        EXPECT_TRUE(PhotoRecord::initWithPhotoInfo(info)->isDeleted());
    }
}

TEST(ThumbnailRecord, DateOfALivePhotoIsNotItsOwn) {
    Dictionary info = thumbnailInfo(pngFile(quadrants(20, 20)));
    info.remove(kThumbnailDateKey);
    info.set(kRawDBdateKey, kTaken);
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo(info)->recordValueForKey(kPhotoRecordCreateDate), nullptr);
}

TEST(ThumbnailRecord, BytesThatAreNoPictureGiveNone) {
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo(thumbnailInfo({})), nullptr);
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo(thumbnailInfo(Bytes(500, 1))), nullptr);
    Dictionary info = thumbnailInfo({});
    info.set(kRawDBdataKey, SharedBytes());
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo(info), nullptr);
    info.set(kRawDBdataKey, "/a/path");
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo(info), nullptr);
    info.remove(kRawDBdataKey);
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo(info), nullptr);
}

TEST(ThumbnailRecord, ImageIsTakenAsItIs) {
    const auto large = imageOf(*PhotoRecord::initWithPhotoInfo(thumbnailInfo(jpegFile(quadrants(400, 300)))));
    const auto thumbnail = PhotoRecord::initWithPhotoInfo({{kRawDBdataKey, large}, {kThumbnailDeletedKey, "yes"}});
    ASSERT_NE(thumbnail, nullptr);
    EXPECT_EQ(imageOf(*thumbnail), large);
    EXPECT_EQ(resolutionOf(*thumbnail), (Size{400, 300}));
    const Dictionary none{{kRawDBdataKey, std::shared_ptr<const Image>()}, {kThumbnailDeletedKey, "yes"}};
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo(none), nullptr);
}

TEST(LivePhotoRecord, ImageIsNoPath) {
    const auto image = imageOf(*PhotoRecord::initWithPhotoInfo(thumbnailInfo(pngFile(quadrants(20, 20)))));
    EXPECT_EQ(PhotoRecord::initWithPhotoInfo({{kRawDBdataKey, image}}), nullptr);
}

TEST(ThumbnailRecord, SharesItsBytesWithTheInfo) {
    const SharedBytes bytes = sharedBytes(pngFile(quadrants(20, 20)));
    const auto thumbnail = PhotoRecord::initWithPhotoInfo({{kRawDBdataKey, bytes}, {kThumbnailDeletedKey, "yes"}});
    EXPECT_EQ(bytes.use_count(), 2);  // this one and the image's
    EXPECT_TRUE(imageOf(*thumbnail)->pixels());
}

// --- The rest --------------------------------------------------------------------------------------------------------

TEST(PhotoRecordResize, GivesTheExactProduct) {
    const auto photo = PhotoRecord::initWithPhotoInfo(thumbnailInfo(pngFile(quadrants(50, 30))));
    const auto half = PhotoRecord::resizeImage(imageOf(*photo), 0.5);
    EXPECT_EQ(half->size(), (Size{25, 15}));
    const auto larger = PhotoRecord::resizeImage(imageOf(*photo), 1.25);
    EXPECT_EQ(larger->size(), (Size{62.5, 37.5}));
    EXPECT_EQ(larger->pixels()->width, 63);
    EXPECT_EQ(larger->pixels()->height, 38);
    EXPECT_EQ(imageOf(*photo)->size(), (Size{50, 30}));
}

TEST(PhotoRecordResize, OfNoImageIsNone) {
    EXPECT_EQ(PhotoRecord::resizeImage(nullptr, 0.3), nullptr);
}

TEST(PhotoRecordResize, ByAFactorThatLeavesNothingIsNone) {
    const auto photo = PhotoRecord::initWithPhotoInfo(thumbnailInfo(pngFile(quadrants(50, 30))));
    EXPECT_EQ(PhotoRecord::resizeImage(imageOf(*photo), 0), nullptr);
    EXPECT_EQ(PhotoRecord::resizeImage(imageOf(*photo), -1), nullptr);
}

TEST(PhotoRecordOfARow, HasNoPath) {
    const auto record = PhotoRecord::initWithDictionary(Dictionary{{kPhotoRecordTitle, "a"}}, true);
    EXPECT_EQ(record->photoPath(), std::nullopt);
    EXPECT_TRUE(record->isDeleted());
}

TEST(PhotoRecordKeys, AreTheSameListAtEveryCall) {
    EXPECT_THAT(*PhotoRecord::recordKeys(), ElementsAre("title", "resolution", "thumbnail"));
    EXPECT_EQ(PhotoRecord::recordKeys(), PhotoRecord::recordKeys());
}

}  // namespace
}  // namespace ZkMobileBackup
