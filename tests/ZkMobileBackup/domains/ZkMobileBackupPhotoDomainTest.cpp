#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "bench/Measure.h"
#include "tests/ZkMobileBackup/domains/PhotoTesting.h"

namespace ZkMobileBackup {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Bytes = std::vector<std::uint8_t>;
using PhotoDomain = ZkMobileBackupPhotoDomain;

constexpr std::size_t kTailSize = 28;
constexpr ParseEvent kEnd{3, 1.0};

double secondsNow() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

Bytes slotOf(std::size_t pixelBytes, std::uint8_t low, std::uint8_t high, std::uint8_t tail) {
    Bytes slot;
    for (std::size_t i = 0; i < pixelBytes; ++i) slot.push_back(i % 2 == 0 ? low : high);
    slot.insert(slot.end(), kTailSize, tail);
    return slot;
}

Bytes operator+(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// --- Live photos -----------------------------------------------------------------------------------------------------

TEST(PhotoDomain, LivePhotosBecomeRecordsInTheirOrder) {
    PhotoFiles files;
    files.addPhoto("IMG_2", smallJpeg()).addPhoto("IMG_1", pngFile(quadrants(20, 20))).addPhoto("IMG_3", smallJpeg());
    const auto domain = files.domain();
    parse(*domain);
    EXPECT_THAT(titlesOf(*domain), ElementsAre("IMG_2", "IMG_1", "IMG_3"));
    for (const auto& record : domain->records()) EXPECT_FALSE(record->isDeleted());
}

TEST(PhotoDomain, LivePhotosClimbToHalfOfTheProgress) {
    PhotoFiles files;
    for (const char* name : {"a", "b", "c", "d"}) files.addPhoto(name, smallJpeg());
    EXPECT_THAT(parse(*files.domain()),
                ElementsAre(ParseEvent{1, 0.125}, ParseEvent{1, 0.25}, ParseEvent{1, 0.375}, ParseEvent{1, 0.5}, kEnd));
}

TEST(PhotoDomain, PhotoThatGivesNoRecordCountsForTheProgress) {
    PhotoFiles files;
    files.addPhoto("noise", {1, 2, 3}).addPhotoAt("missing", files.path("nothing")).addPhoto("good", smallJpeg());
    std::filesystem::create_directory(files.path("folder"));
    files.addPhotoAt("folder", files.path("folder"));
    const auto domain = files.domain();
    EXPECT_THAT(parse(*domain),
                ElementsAre(ParseEvent{1, 0.125}, ParseEvent{1, 0.25}, ParseEvent{1, 0.375}, ParseEvent{1, 0.5}, kEnd));
    EXPECT_THAT(titlesOf(*domain), ElementsAre("good"));
}

TEST(PhotoDomain, ThumbnailsReportNoProgress) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg()).addStore("3303.ithmb", storeOf(24, 22, 3));
    EXPECT_THAT(parse(*files.domain()), ElementsAre(ParseEvent{1, 0.5}, kEnd));
}

TEST(PhotoDomain, CallbacksComeFromTheMainQueue) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg()).addPhoto("b", smallJpeg());
    const auto domain = files.domain();
    std::vector<std::thread::id> threads;
    domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>*, double) {
        threads.push_back(std::this_thread::get_id());
        if (state == kFinishedState) MainQueue::stop();
    });
    MainQueue::run();
    EXPECT_EQ(threads.size(), 3u);
    EXPECT_THAT(threads, Each(std::this_thread::get_id()));
}

TEST(PhotoDomain, DomainWithoutPicturesReportsOnlyTheEnd) {
    const auto domain = PhotoDomain::init();
    EXPECT_THAT(parse(*domain), ElementsAre(kEnd));
    EXPECT_THAT(domain->records(), IsEmpty());
    EXPECT_THAT(domain->photos(), IsEmpty());
    EXPECT_THAT(domain->ithmbs(), IsEmpty());
    EXPECT_EQ(domain->exportName(), "Photo");
}

TEST(PhotoDomain, SecondParseAppendsAllRecordsAgain) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg()).addStore("3303.ithmb", storeOf(24, 22, 2));
    const auto domain = files.domain();
    parse(*domain);
    EXPECT_THAT(parse(*domain), ElementsAre(ParseEvent{1, 0.5}, kEnd));
    EXPECT_THAT(titlesOf(*domain), ElementsAre("a", "_1", "_2", "a", "_1", "_2"));
}

TEST(PhotoDomain, TwoParsesAtOnceAppendTheRecordsTwice) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg()).addStore("3303.ithmb", storeOf(24, 22, 2));
    const auto domain = files.domain();
    int ends = 0;
    const auto note = [&ends](std::int64_t state, std::atomic<bool>*, double) {
        if (state == kFinishedState && ++ends == 2) MainQueue::stop();
    };
    domain->parserWithCallbackBlock(note);
    domain->parserWithCallbackBlock(note);
    MainQueue::run();
    EXPECT_THAT(titlesOf(*domain), ElementsAre("a", "_1", "_2", "a", "_1", "_2"));
}

/// What a parse reports that is stopped in its `last` call.
ParseEvents eventsUntilStoppedAt(std::size_t last, const std::shared_ptr<ZkMobileBackupPhotoDomain>& domain) {
    const ImmediateMainQueue immediate;
    ParseEvents events;
    runUntilStopped(*domain, [&] {
        domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>* stop, double progress) {
            events.push_back({state, progress});
            *stop = events.size() >= last;
        });
    });
    waitUntilIdle(domain);
    return events;
}

TEST(PhotoDomain, StopEndsTheParseWithoutAFurtherCall) {
    PhotoFiles files;
    for (const char* name : {"a", "b", "c", "d"}) files.addPhoto(name, smallJpeg());
    files.addStore("3303.ithmb", storeOf(24, 22, 2));
    const auto domain = files.domain();
    EXPECT_THAT(eventsUntilStoppedAt(2, domain), ElementsAre(ParseEvent{1, 0.125}, ParseEvent{1, 0.25}));
    EXPECT_THAT(titlesOf(*domain), ElementsAre("a", "b"));
}

TEST(PhotoDomain, StopAfterTheLastPhotoLeavesTheThumbnailsAndTheEndOut) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg()).addStore("3303.ithmb", storeOf(24, 22, 2));
    const auto domain = files.domain();
    EXPECT_THAT(eventsUntilStoppedAt(1, domain), ElementsAre(ParseEvent{1, 0.5}));
    EXPECT_THAT(titlesOf(*domain), ElementsAre("a"));
}

/// Parses a domain to its end, and leaves the stop flag set.
void parseAndSetStop(PhotoDomain& domain) {
    domain.parserWithCallbackBlock([](std::int64_t state, std::atomic<bool>* stop, double) {
        if (state != kFinishedState) return;
        *stop = true;
        MainQueue::stop();
    });
    MainQueue::run();
}

TEST(PhotoDomain, StopFlagThatIsStillSetEndsTheNextParseAfterOnePhoto) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg()).addPhoto("b", smallJpeg());
    const auto domain = files.domain();
    parseAndSetStop(*domain);
    const ImmediateMainQueue immediate;
    ParseEvents events;
    runUntilStopped(*domain, [&] {
        domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>*, double progress) {
            events.push_back({state, progress});
        });
    });
    waitUntilIdle(domain);
    EXPECT_THAT(events, ElementsAre(ParseEvent{1, 0.25}));
    EXPECT_THAT(titlesOf(*domain), ElementsAre("a", "b", "a"));
}

TEST(PhotoDomain, StopFlagIsNotLookedAtForThumbnails) {
    PhotoFiles files;
    files.addStore("3303.ithmb", storeOf(24, 22, 2));
    const auto domain = files.domain();
    parseAndSetStop(*domain);
    EXPECT_THAT(parse(*domain), ElementsAre(kEnd));
    EXPECT_THAT(titlesOf(*domain), ElementsAre("_1", "_2", "_1", "_2"));
}

int nicenessOfThisThread() {
    return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
}

TEST(PhotoDomain, ParseRunsAtBackgroundPriority) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg());
    const auto domain = files.domain();
    const ImmediateMainQueue immediate;  // so that the callback runs on the parse's thread
    std::promise<int> niceness;
    domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>*, double) {
        if (state == kFinishedState) niceness.set_value(nicenessOfThisThread());
    });
    EXPECT_GT(niceness.get_future().get(), nicenessOfThisThread());
    waitUntilIdle(domain);
}

TEST(PhotoDomain, HostMayLetGoOfTheDomainWhileItIsParsed) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg()).addStore("3303.ithmb", storeOf(24, 22, 2));
    auto domain = files.domain();
    ParseEvents events;
    domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>*, double progress) {
        events.push_back({state, progress});
    });
    const std::weak_ptr<PhotoDomain> weak = domain;
    domain.reset();
    runUntilGone(weak);
    EXPECT_THAT(events, ElementsAre(ParseEvent{1, 0.5}, kEnd));
}

TEST(PhotoDomain, WorksWithoutCallback) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg());
    const auto domain = files.domain();
    domain->parserWithCallbackBlock(nullptr);
    waitUntilIdle(domain);
    EXPECT_THAT(titlesOf(*domain), ElementsAre("a"));
}

// --- Thumbnails ------------------------------------------------------------------------------------------------------

struct Geometry {
    const char* name;
    int width;
    int height;
};
constexpr std::array<Geometry, 4> kGeometries{
    {{"3303.ithmb", 24, 22}, {"3309.ithmb", 64, 64}, {"3319.ithmb", 160, 157}, {"4031.ithmb", 120, 120}}};

TEST(Thumbnails, EveryKnownStoreGivesItsPicturesUprightInTheirColours) {
    for (const Geometry& geometry : kGeometries) {
        PhotoFiles files;
        files.addStore(geometry.name, storeOf(geometry.width, geometry.height, 2));
        const auto domain = files.domain();
        parse(*domain);
        ASSERT_THAT(titlesOf(*domain), ElementsAre("_1", "_2")) << geometry.name;
        for (const auto& record : domain->records()) {
            EXPECT_EQ(resolutionOf(*record), (Size{double(geometry.width), double(geometry.height)}));
            EXPECT_EQ(quarterColours(*imageOf(*record)), kQuadrantColours) << geometry.name;
        }
    }
}

TEST(Thumbnails, StoreOfExactlyOneSlotGivesOneDeletedRecord) {
    PhotoFiles files;
    Bytes slot(50268);
    slot[1000] = 1;
    files.addStore("3319.ithmb", slot);
    const auto domain = files.domain();
    parse(*domain);
    ASSERT_THAT(titlesOf(*domain), ElementsAre("_1"));
    const auto& record = dynamic_cast<const ZkMobileBackupPhotoRecord&>(*domain->records().front());
    EXPECT_TRUE(record.isDeleted());
    EXPECT_EQ(record.photoPath(), std::nullopt);
    EXPECT_EQ(resolutionOf(record), (Size{160, 157}));
}

/// What becomes of a store of the smallest thumbnails, each slot made of a low byte, a high byte and one of its tail.
std::vector<std::string> titlesOfSlots(const std::vector<std::array<std::uint8_t, 3>>& slots) {
    Bytes store;
    for (const auto& [low, high, tail] : slots) store = store + slotOf(24 * 22 * 2, low, high, tail);
    PhotoFiles files;
    files.addStore("3303.ithmb", store);
    const auto domain = files.domain();
    parse(*domain);
    return titlesOf(*domain);
}

TEST(Thumbnails, EmptySlotGivesNoRecordAndTakesNoNumber) {
    EXPECT_THAT(titlesOfSlots({{0, 0, 0}, {7, 0, 0}, {0, 0, 0}, {0, 0, 0}, {9, 1, 1}}), ElementsAre("_1", "_2"));
}

TEST(Thumbnails, SlotWithHighBytesAloneIsDark) {
    EXPECT_THAT(titlesOfSlots({{0, 0xFF, 0}}), IsEmpty());
}

TEST(Thumbnails, TailOfASlotIsNotLookedAt) {
    EXPECT_THAT(titlesOfSlots({{0, 0, 0xFF}}), IsEmpty());
}

TEST(Thumbnails, TrailingPartOfASlotIsIgnored) {
    const Bytes whole = storeOf(24, 22, 2);
    const std::size_t slot = whole.size() / 2;
    for (const std::size_t length : {std::size_t{1}, slot - 1, slot, slot + 1, 2 * slot - 1}) {
        PhotoFiles files;
        files.addStore("3303.ithmb", Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        const auto domain = files.domain();
        parse(*domain);
        EXPECT_EQ(domain->records().size(), length / slot) << length;
    }
}

double dateOf(const ZkMobileBackupAppDomainRecord& record) {
    return record.recordValueForKey(kPhotoRecordCreateDate)->date()->secondsSince1970;
}

TEST(Thumbnails, AllThoseOfAParseHaveItsDate) {
    PhotoFiles files;
    files.addStore("3303.ithmb", storeOf(24, 22, 3));
    const auto domain = files.domain();
    const double before = secondsNow();
    parse(*domain);
    ASSERT_THAT(domain->records(), SizeIs(3));
    const double date = dateOf(*domain->records().front());
    EXPECT_GE(date, before);
    for (const auto& record : domain->records()) EXPECT_EQ(dateOf(*record), date);
}

TEST(Thumbnails, DateIsTheTimeTheParseWasAskedFor) {
    PhotoFiles files;
    files.addPhoto("a", smallJpeg()).addStore("3303.ithmb", storeOf(24, 22, 1));
    const auto domain = files.domain();
    const ImmediateMainQueue immediate;
    std::promise<void> atThePhoto;
    std::promise<void> goOn;
    domain->parserWithCallbackBlock([&](std::int64_t, std::atomic<bool>*, double) {
        atThePhoto.set_value();
        goOn.get_future().wait();
    });
    atThePhoto.get_future().wait();
    domain->parserWithCallbackBlock(nullptr);  // waits for the first one
    const double asked = secondsNow();
    while (secondsNow() <= asked) continue;
    goOn.set_value();
    waitUntilIdle(domain);
    ASSERT_THAT(titlesOf(*domain), ElementsAre("a", "_1", "a", "_1"));
    EXPECT_LE(dateOf(*domain->records()[1]), asked);
    EXPECT_LE(dateOf(*domain->records()[3]), asked);
    EXPECT_LT(dateOf(*domain->records()[1]), dateOf(*domain->records()[3]));
}

TEST(Thumbnails, FiveThousandTakeLittleMemory) {
    constexpr std::size_t kThumbnails = 5000;
    constexpr std::size_t kMostBytesOfThumbnail = 4000;  // its pixels would be 28,800
    PhotoFiles files;
    files.addStore("4031.ithmb", slotOf(120 * 120 * 2, 7, 7, 0));
    const std::string store = *files.stores.front().text(kThumbnailStorePathKey);
    const Bytes slot = readBytes(store);
    std::ofstream file(store, std::ios::binary);
    for (std::size_t i = 0; i < kThumbnails; ++i) {
        file.write(reinterpret_cast<const char*>(slot.data()), static_cast<std::streamsize>(slot.size()));
    }
    file.close();
    const auto domain = files.domain();
    const std::size_t before = heapBytes();
    parse(*domain);
    EXPECT_LT(heapBytes(), before + kThumbnails * kMostBytesOfThumbnail);
    EXPECT_THAT(domain->records(), SizeIs(kThumbnails));
}

/// The image of the second thumbnail, the domain being gone.
std::shared_ptr<const Image> secondThumbnail(const PhotoFiles& files) {
    const auto domain = files.domain();
    parse(*domain);
    waitUntilIdle(domain);
    return domain->records().size() == 2 ? imageOf(*domain->records()[1]) : nullptr;
}

TEST(Thumbnails, PixelsOutliveTheDomainAndItsHeader) {
    PhotoFiles files;
    Canvas blue(64, 64);
    blue.fill(0, 0, 64, 64, colours::kBlue);
    const std::array<ThumbnailSlot, 2> slots{blue, quadrants(64, 64)};
    files.addStore("3309.ithmb", thumbnailStore(64, 64, slots));
    const auto image = secondThumbnail(files);
    ASSERT_NE(image, nullptr);
    PhotoDomain::init()->_reset_head(storeInfo("3303.ithmb"));
    EXPECT_EQ(image->size(), (Size{64, 64}));
    EXPECT_EQ(quarterColours(*image), kQuadrantColours);
}

TEST(Thumbnails, StoreThatIsGoneOrCutLeavesNoPixels) {
    PhotoFiles files;
    files.addStore("3309.ithmb", storeOf(64, 64, 2));
    const std::string store = *files.stores.front().text(kThumbnailStorePathKey);
    const auto image = secondThumbnail(files);
    ASSERT_NE(image, nullptr);
    const std::uintmax_t endOfPixels = 2 * 8220 - kTailSize;
    std::filesystem::resize_file(store, endOfPixels);
    EXPECT_TRUE(image->pixels());
    std::filesystem::resize_file(store, endOfPixels - 1);
    EXPECT_FALSE(image->pixels());
    std::filesystem::remove(store);
    EXPECT_FALSE(image->pixels());
    EXPECT_EQ(image->size(), (Size{64, 64}));
    ASSERT_EQ(::mkfifo(store.c_str(), 0600), 0);
    EXPECT_FALSE(image->pixels());
}

TEST(Thumbnails, OnlyTheWidestStoreIsRead) {
    PhotoFiles files;
    files.addStore("3303.ithmb", storeOf(24, 22, 3)).addStore("4031.ithmb", storeOf(120, 120, 1));
    const auto domain = files.domain();
    parse(*domain);
    ASSERT_EQ(domain->records().size(), 1u);
    EXPECT_EQ(resolutionOf(*domain->records().front()), (Size{120, 120}));
}

TEST(Thumbnails, OtherStoresAreNotReadWhenTheChosenOneCannotBe) {
    PhotoFiles files;
    files.addStore("3303.ithmb", storeOf(24, 22, 3));
    files.stores.push_back(storeInfo("3319.ithmb", files.path("missing")));
    const auto domain = files.domain();
    EXPECT_THAT(parse(*domain), ElementsAre(kEnd));
    EXPECT_THAT(domain->records(), IsEmpty());
}

TEST(Thumbnails, StoreThatCannotBeOpenedGivesNone) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    writeBytes(folder.path("empty"), {});
    for (const std::string& path : {folder.path(), folder.path("pipe"), folder.path("empty"), folder.path("missing"),
                                    std::string("/dev/zero"), std::string()}) {
        const auto domain = PhotoDomain::initWithPhotos({}, {storeInfo("3319.ithmb", path)});
        EXPECT_THAT(parse(*domain), ElementsAre(kEnd)) << path;
        EXPECT_THAT(domain->records(), IsEmpty()) << path;
    }
}

TEST(Thumbnails, StoreOfAnUnknownNameGivesNone) {
    PhotoFiles files;
    files.addStore("9999.ithmb", Bytes(5000, 0xFF));
    const auto domain = files.domain();
    EXPECT_THAT(parse(*domain), ElementsAre(kEnd));
    EXPECT_THAT(domain->records(), IsEmpty());
}

TEST(Thumbnails, LargestSparseStoreOfAnUnknownNameIsDoneAtOnce) {
    PhotoFiles files;
    files.addStore("9999.ithmb", {});
    constexpr std::uintmax_t kTebibyte = std::uintmax_t{1} << 40;
    std::filesystem::resize_file(*files.stores.front().text(kThumbnailStorePathKey), kTebibyte);
    EXPECT_THAT(parse(*files.domain()), ElementsAre(kEnd));
}

TEST(Thumbnails, StoreInfoWithoutPathOrNameGivesNone) {
    const auto domain = PhotoDomain::initWithPhotos({}, {Dictionary()});
    EXPECT_THAT(parse(*domain), ElementsAre(kEnd));
    EXPECT_THAT(domain->records(), IsEmpty());
}

// Every domain of a process goes by one header.
TEST(Thumbnails, TwoDomainsParseAtOnceAndKeepTheirExtents) {
    PhotoFiles large;
    large.addStore("4031.ithmb", storeOf(120, 120, 40));
    PhotoFiles small;
    small.addStore("3303.ithmb", storeOf(24, 22, 400));
    const std::array domains{large.domain(), small.domain(), large.domain(), small.domain()};
    std::size_t running = domains.size();
    for (const auto& domain : domains) {
        domain->parserWithCallbackBlock([&running](std::int64_t state, std::atomic<bool>*, double) {
            if (state == kFinishedState && --running == 0) MainQueue::stop();
        });
    }
    MainQueue::run();
    for (std::size_t i = 0; i < domains.size(); ++i) {
        const bool isLarge = i % 2 == 0;
        EXPECT_EQ(domains[i]->records().size(), isLarge ? 40u : 400u);
        for (const auto& record : domains[i]->records()) {
            EXPECT_EQ(resolutionOf(*record), (isLarge ? Size{120, 120} : Size{24, 22}));
        }
    }
}

// --- Steps -----------------------------------------------------------------------------------------------------------

class PhotoStep : public testing::Test {
protected:
    /// The place of the chosen store in the list, nothing without a choice.
    std::optional<std::ptrdiff_t> chosen(const std::vector<const char*>& names) const {
        std::vector<Dictionary> stores;
        for (const char* name : names) stores.push_back(storeInfo(name));
        const Dictionary* best = domain->_bestThumbnail(stores);
        return best != nullptr ? std::optional(best - stores.data()) : std::nullopt;
    }

    const std::shared_ptr<PhotoDomain> domain = PhotoDomain::init();
};

TEST_F(PhotoStep, WidestStoreIsChosenWhereverItStands) {
    EXPECT_EQ(chosen({"3303.ithmb", "3309.ithmb", "3319.ithmb", "4031.ithmb"}), 2);
    EXPECT_EQ(chosen({"3319.ithmb", "4031.ithmb"}), 0);
    EXPECT_EQ(chosen({"4031.ithmb", "3319.ithmb"}), 1);
    EXPECT_EQ(chosen({"3309.ithmb", "4031.ithmb", "3303.ithmb"}), 1);
    EXPECT_EQ(chosen({"3303.ithmb", "3309.ithmb"}), 1);
}

TEST_F(PhotoStep, FirstOfEqualStoresIsChosen) {
    EXPECT_EQ(chosen({"3303.ithmb", "4031.ithmb", "4031.ithmb"}), 1);
    EXPECT_EQ(chosen({"8000.ithmb", "8001.ithmb"}), 0);
}

TEST_F(PhotoStep, UnknownStoreCountsAsWidthZero) {
    EXPECT_EQ(chosen({"8000.ithmb", "3303.ithmb"}), 1);
    EXPECT_EQ(chosen({"3303.ithmb", "8000.ithmb"}), 0);
    EXPECT_EQ(chosen({"8000.ithmb"}), 0);
    EXPECT_EQ(chosen({"3319.ITHMB", "3303.ithmb"}), 1);
}

TEST_F(PhotoStep, NoStoreIsChosenFromAnEmptyList) {
    EXPECT_EQ(chosen({}), std::nullopt);
}

TEST_F(PhotoStep, LowBytesAloneDecideWhetherAnImageIsDark) {
    EXPECT_TRUE(domain->_isDarkImage(Bytes{0, 255, 0, 255}, 4));
    EXPECT_FALSE(domain->_isDarkImage(Bytes{0, 255, 1, 255}, 4));
    EXPECT_FALSE(domain->_isDarkImage(Bytes{128, 0, 0, 0}, 4));
    EXPECT_TRUE(domain->_isDarkImage(Bytes{0, 0, 0, 0}, 4));
}

TEST_F(PhotoStep, DarkTestEndsAtTheSize) {
    EXPECT_TRUE(domain->_isDarkImage(Bytes{0, 0, 1, 0}, 2));
    EXPECT_FALSE(domain->_isDarkImage(Bytes{0, 0, 1, 0}, 3));
    EXPECT_TRUE(domain->_isDarkImage(Bytes{0, 0}, 4));
}

TEST_F(PhotoStep, ImageOfNoSizeIsDark) {
    EXPECT_TRUE(domain->_isDarkImage(Bytes{1, 1}, 0));
    EXPECT_TRUE(domain->_isDarkImage(Bytes{1, 1}, -1));
    EXPECT_FALSE(domain->_isDarkImage(Bytes{1, 1}, 1));
}

TEST_F(PhotoStep, DeletedMeansSixteenZeros) {
    std::array<std::uint8_t, 16> bytes{};
    EXPECT_TRUE(domain->_isDeleted(bytes));
    for (std::uint8_t& byte : bytes) {
        byte = 1;
        EXPECT_FALSE(domain->_isDeleted(bytes));
        byte = 0;
    }
}

TEST_F(PhotoStep, ThumbnailsCanBeReadStepByStep) {
    PhotoFiles files;
    files.addStore("3309.ithmb", storeOf(64, 64, 1));
    domain->_reset_head(files.stores.front());
    domain->_read_ithmb_file(files.stores.front().text(kThumbnailStorePathKey)->c_str());
    ASSERT_THAT(titlesOf(*domain), ElementsAre("_1"));
    EXPECT_EQ(resolutionOf(*domain->records().front()), (Size{64, 64}));
}

TEST_F(PhotoStep, NoPathIsNoStore) {
    domain->_reset_head(storeInfo("3309.ithmb"));
    domain->_read_ithmb_file(nullptr);
    EXPECT_THAT(domain->records(), IsEmpty());
}

TEST_F(PhotoStep, HeaderIsOneForAllThreadsAndDomains) {
    domain->_reset_head(storeInfo("4031.ithmb"));
    std::thread([] { PhotoDomain::init()->_reset_head(storeInfo("3309.ithmb")); }).join();
    domain->_write_one_bmp(storeOf(120, 120, 1));
    ASSERT_THAT(domain->records(), SizeIs(1));
    EXPECT_EQ(resolutionOf(*domain->records().front()), (Size{64, 64}));
}

TEST_F(PhotoStep, SlotOfAHostGivesARecordThatNeedsNoStore) {
    domain->_reset_head(storeInfo("3309.ithmb"));
    domain->_write_one_bmp(storeOf(64, 64, 1));
    ASSERT_THAT(titlesOf(*domain), ElementsAre("_0"));
    EXPECT_TRUE(domain->records().front()->isDeleted());
    EXPECT_EQ(quarterColours(*imageOf(*domain->records().front())), kQuadrantColours);
}

TEST_F(PhotoStep, SlotThatIsTooShortGivesNoRecord) {
    domain->_reset_head(storeInfo("3309.ithmb"));
    domain->_write_one_bmp({});
    EXPECT_THAT(domain->records(), IsEmpty());
}

}  // namespace
}  // namespace ZkMobileBackup
