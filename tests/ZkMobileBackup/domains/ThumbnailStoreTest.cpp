#include <algorithm>
#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "ZkMobileBackup/domains/thumbnail_store.h"
#include "tests/ZkMobileBackup/domains/PhotoTesting.h"
#include "tests/ZkMobileBackup/domains/StoreFailures.h"
#include "tests/support/CommandRun.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;

using Bytes = std::vector<std::uint8_t>;

// --- Bitmaps ---------------------------------------------------------------------------------------------------------

Bytes headerOf(ThumbnailExtent extent) {
    BitmapHeader header;
    header.setExtent(extent);
    return bitmapFile(header, {}, 0);
}

std::int64_t little32(const Bytes& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) value = value << 8 | bytes[offset + i];
    return static_cast<std::int32_t>(value);
}

TEST(BitmapHeader, IsWrittenByteForByte) {
    EXPECT_THAT(headerOf({160, 157}), ElementsAre('B', 'M',                              //
                                                  0xB6, 0xC5, 0, 0,                      // 50614
                                                  0, 0, 0, 0, 54, 0, 0, 0, 40, 0, 0, 0,  //
                                                  160, 0, 0, 0, 0x63, 0xFF, 0xFF, 0xFF,  // 160, -157
                                                  1, 0, 16, 0, 0, 0, 0, 0,               //
                                                  0x80, 0xC5, 0, 0,                      // 50560
                                                  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(BitmapHeader, StartsWithAnExtentOfNoStore) {
    const Bytes header = bitmapFile({}, {}, 0);
    EXPECT_EQ(little32(header, 18), 120);
    EXPECT_EQ(little32(header, 22), -136);
}

TEST(BitmapHeader, SizeFieldsNeverFollowTheThumbnail) {
    for (const char* name : {"3303.ithmb", "3309.ithmb", "3319.ithmb", "4031.ithmb"}) {
        const ThumbnailExtent extent = thumbnailExtent(name);
        const Bytes header = headerOf(extent);
        EXPECT_EQ(little32(header, 2), 50614);
        EXPECT_EQ(little32(header, 34), 50560);
        EXPECT_EQ(little32(header, 18), extent.width);
        EXPECT_EQ(little32(header, 22), -extent.height);
    }
}

TEST(BitmapFile, OfAWholeSlotHasNothingOfItsTail) {
    const Bytes slot = storeOf(160, 157, 1);
    ASSERT_EQ(slot.size(), 50268u);
    BitmapHeader header;
    header.setExtent(thumbnailExtent("3319.ithmb"));
    const Bytes bitmap = bitmapFile(header, slot, 50240);
    ASSERT_EQ(bitmap.size(), 50294u);
    EXPECT_TRUE(std::equal(bitmap.begin() + 54, bitmap.end(), slot.begin()));
}

TEST(BitmapFile, OfASlotThatIsTooShortHasWhatThereIs) {
    EXPECT_EQ(bitmapFile({}, Bytes{1, 2, 3}, 4).size(), 57u);
}

TEST(BitmapFile, OpensInAnotherDecoder) {
    for (const char* name : {"3303.ithmb", "3309.ithmb", "3319.ithmb", "4031.ithmb"}) {
        const auto [width, height] = thumbnailExtent(name);
        const Bytes store = storeOf(width, height, 1);
        BitmapHeader header;
        header.setExtent({width, height});
        const TemporaryFolder folder;
        writeBytes(folder.path("t.bmp"), bitmapFile(header, store, store.size() - kSlotTail));
        const CommandRun run = runCommand("ffmpeg -nostdin -loglevel fatal -i " + folder.path("t.bmp") +
                                          " -f rawvideo -pix_fmt rgb24 " + folder.path("t.rgb"));
        ASSERT_EQ(run.status, 0) << run.output;
        EXPECT_EQ(readBytes(folder.path("t.rgb")), quadrants(width, height).rgb) << name;
    }
}

TEST(ThumbnailExtent, IsThatOfTheStoresName) {
    const auto extentOf = [](const char* name) {
        const ThumbnailExtent extent = thumbnailExtent(name);
        return std::pair(extent.width, extent.height);
    };
    EXPECT_EQ(extentOf("3303.ithmb"), std::pair(24, 22));
    EXPECT_EQ(extentOf("3309.ithmb"), std::pair(64, 64));
    EXPECT_EQ(extentOf("3319.ithmb"), std::pair(160, 157));
    EXPECT_EQ(extentOf("4031.ithmb"), std::pair(120, 120));
    EXPECT_EQ(extentOf("4032.ithmb"), std::pair(0, 0));
    EXPECT_EQ(extentOf(""), std::pair(0, 0));
}

// --- Reading ---------------------------------------------------------------------------------------------------------

class ThumbnailStore : public testing::Test {
protected:
    ThumbnailStore() { writeBytes(path, Bytes(100, 7)); }

    const TemporaryFolder folder;
    const std::string path = folder.path("store");
};

using Slots = std::vector<Bytes>;

Slots slotsOf(const std::string& path, std::size_t pixelBytes) {
    Slots slots;
    readThumbnailStore(path, pixelBytes,
                       [&](const StoreSlot& slot) { slots.emplace_back(slot.bytes.begin(), slot.bytes.end()); });
    return slots;
}

TEST_F(ThumbnailStore, IsReadSlotAfterSlot) {
    const Bytes first(30, 1);
    const Bytes second(30, 2);
    Bytes store = first;
    store.insert(store.end(), second.begin(), second.end());
    store.insert(store.end(), 29, 3);
    writeBytes(path, store);
    EXPECT_THAT(slotsOf(path, 2), ElementsAre(first, second));
    std::vector<std::int64_t> positions;
    readThumbnailStore(path, 2, [&](const StoreSlot& slot) { positions.push_back(slot.position); });
    EXPECT_THAT(positions, ElementsAre(0, 30));
}

TEST_F(ThumbnailStore, CostsOneReadForASlotAndOneBuffer) {
    std::filesystem::resize_file(path, 20 * 1000);
    const StoreCalls calls;
    EXPECT_EQ(slotsOf(path, 1000 - kSlotTail).size(), 20u);
    EXPECT_EQ(calls.to(StoreStep::kRead), 20);
    EXPECT_EQ(calls.to(StoreStep::kAllocate), 1);
}

// A sparse file may announce any number of them.
TEST_F(ThumbnailStore, SlotsWithoutPixelsAreNotRead) {
    const StoreCalls calls;
    EXPECT_THAT(slotsOf(path, 0), testing::IsEmpty());
    EXPECT_EQ(calls.to(StoreStep::kOpen), 2);
    EXPECT_EQ(calls.to(StoreStep::kAllocate), 1);
    EXPECT_EQ(calls.to(StoreStep::kRead), 0);
}

TEST_F(ThumbnailStore, WithoutADescriptorLeftItCannotBeOpened) {
    rlimit limit;
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none{0, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const Slots slots = slotsOf(path, 10);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_THAT(slots, testing::IsEmpty());
}

TEST_F(ThumbnailStore, LeavesNoFileOpen) {
    const auto openFiles = [] { return std::ranges::distance(std::filesystem::directory_iterator("/proc/self/fd")); };
    const auto before = openFiles();
    slotsOf(path, 10);
    slotsOf(folder.path(), 10);
    EXPECT_EQ(openFiles(), before);
}

// --- Failures that end the process -----------------------------------------------------------------------------------

class ThumbnailStoreDeath : public ThumbnailStore {
protected:
    ThumbnailStoreDeath() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    static void readFailingAt(const std::string& path, StoreStep step, int nth = 1) {
        const StoreFailures failures(step, nth);
        readThumbnailStore(path, 10, [](const StoreSlot&) {});
    }
};

/// The line that names the source and the condition.
std::string line(const std::string& condition) {
    return "^ZkMobileBackup/ZkMobileBackupAppDomain: assertion failed: " + condition + "\n$";
}

#define EXPECT_ASSERTION(statement, condition) EXPECT_EXIT(statement, testing::KilledBySignal(SIGABRT), line(condition))

using Step = StoreStep;

TEST_F(ThumbnailStoreDeath, FailedSeek) {
    EXPECT_ASSERTION(readFailingAt(path, Step::kSeek), "ret == 0");
}

TEST_F(ThumbnailStoreDeath, UnknownSize) {
    EXPECT_ASSERTION(readFailingAt(path, Step::kTellSize), "filesize != -1");
}

TEST_F(ThumbnailStoreDeath, FailedClose) {
    EXPECT_ASSERTION(readFailingAt(path, Step::kClose), "ret == 0");
    EXPECT_ASSERTION(readFailingAt(path, Step::kClose, 2), "ret == 0");
}

TEST_F(ThumbnailStoreDeath, NoMemoryForTheSlot) {
    EXPECT_ASSERTION(readFailingAt(path, Step::kAllocate), "bmpdata != NULL");
}

TEST_F(ThumbnailStoreDeath, FailedSecondOpen) {
    EXPECT_ASSERTION(readFailingAt(path, Step::kOpen, 2), "fp != NULL");
}

constexpr const char* kShortRead = "ret_size == 1 \\*\\(_bmpSize \\+ BMPOFFSET\\)";

TEST_F(ThumbnailStoreDeath, ShortRead) {
    EXPECT_ASSERTION(readFailingAt(path, Step::kRead), kShortRead);
    EXPECT_ASSERTION(readFailingAt(path, Step::kRead, 2), kShortRead);
}

TEST_F(ThumbnailStoreDeath, StoreThatIsCutMeanwhile) {
    const auto cut = [this](const StoreSlot&) { std::filesystem::resize_file(path, 0); };
    std::filesystem::resize_file(path, 1'000'000);  // more than any buffer holds ahead
    EXPECT_ASSERTION(readThumbnailStore(path, 10'000, cut), kShortRead);
}

TEST_F(ThumbnailStoreDeath, HappensInTheParseOfADomain) {
    std::filesystem::resize_file(path, 5000);
    const auto parseFailing = [this] {
        const StoreFailures failures(Step::kRead);
        parse(*ZkMobileBackupPhotoDomain::initWithPhotos({}, {storeInfo("3303.ithmb", path)}));
    };
    EXPECT_ASSERTION(parseFailing(), kShortRead);
}

}  // namespace
}  // namespace ZkMobileBackup
