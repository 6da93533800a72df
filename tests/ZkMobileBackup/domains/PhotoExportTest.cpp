#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/Pictures.h"
#include "tests/ZkMobileBackup/domains/PhotoTesting.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using testing::UnorderedElementsAre;

constexpr ExportEvent kEnd{1, 1, 1.0};

class PhotoExport : public testing::Test {
protected:
    /// The domain of the files, parsed, all its records marked.
    std::shared_ptr<ZkMobileBackupPhotoDomain> parsed() const {
        auto domain = files.domain();
        parse(*domain);
        markAll(*domain);
        return domain;
    }
    void addPhotos(int count) {
        for (int i = 0; i < count; ++i) files.addPhoto("p" + std::to_string(i), smallJpeg());
    }
    std::string outputPath(const std::string& name) const { return output.path("Velmora Retrievo/Photo/" + name); }
    std::vector<std::string> writtenNames() const {
        std::vector<std::string> names;
        for (const auto& [name, bytes] : folderContent(output.path())) names.push_back(name);
        return names;
    }

    PhotoFiles files;
    TemporaryFolder output;
};

TEST_F(PhotoExport, LivePhotosAreCopiedByteForByte) {
    const auto jpeg = jpegFile(detailedQuadrants(640, 480));
    files.addPhoto("IMG_0001", jpeg);
    const auto domain = parsed();
    EXPECT_THAT(extract(*domain, output.path()), ElementsAre(kEnd));
    EXPECT_THAT(folderContent(output.path()), ElementsAre(Pair("Velmora Retrievo/Photo/IMG_0001.JPG", jpeg)));
    EXPECT_THAT(domain->writtenPaths(), ElementsAre(outputPath("IMG_0001.JPG")));
    EXPECT_EQ(domain->firstFailure(), "");
}

TEST_F(PhotoExport, PngKeepsItsBytesUnderTheOneExtension) {
    const auto png = pngFile(quadrants(20, 20));
    files.addPhoto("IMG_0001", png);
    extract(*parsed(), output.path());
    EXPECT_THAT(folderContent(output.path()), ElementsAre(Pair("Velmora Retrievo/Photo/IMG_0001.JPG", png)));
}

TEST_F(PhotoExport, ThumbnailsBecomeJpegFilesThatLookTheSame) {
    files.addStore("3319.ithmb", storeOf(160, 157, 2));
    const auto domain = parsed();
    extract(*domain, output.path());
    EXPECT_THAT(domain->writtenPaths(), ElementsAre(outputPath("_1.JPG"), outputPath("_2.JPG")));
    const auto picture = pictureOfFile(outputPath("_1.JPG"));
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->size(), (Size{160, 157}));
    EXPECT_EQ(quarterColours(*picture), kQuadrantColours);
}

TEST_F(PhotoExport, JpegFilesHaveQualityNinety) {
    files.addStore("3303.ithmb", storeOf(24, 22, 1));
    const auto domain = parsed();
    ASSERT_THAT(domain->records(), SizeIs(1));
    extract(*domain, output.path());
    EXPECT_EQ(readBytes(outputPath("_1.JPG")), jpegOfPicture(*imageOf(*domain->records().front()), 90));
}

TEST_F(PhotoExport, OnlyMarkedRecordsAreWritten) {
    addPhotos(3);
    const auto domain = parsed();
    ASSERT_THAT(domain->records(), SizeIs(3));
    domain->records()[1]->setShouldRecovery(false);
    extract(*domain, output.path());
    EXPECT_THAT(domain->writtenPaths(), ElementsAre(outputPath("p0.JPG"), outputPath("p2.JPG")));
}

TEST_F(PhotoExport, WithoutMarkedRecordsOnlyTheEndIsReportedAndNothingWritten) {
    addPhotos(2);
    const auto domain = files.domain();
    parse(*domain);
    EXPECT_THAT(extract(*domain, output.path()), ElementsAre(kEnd));
    EXPECT_FALSE(std::filesystem::exists(output.path("Velmora Retrievo")));
}

TEST_F(PhotoExport, EveryFifthRecordReportsProgress) {
    addPhotos(12);
    EXPECT_THAT(extract(*parsed(), output.path()),
                ElementsAre(ExportEvent{0, 0, 5 / 12.0}, ExportEvent{0, 0, 10 / 12.0}, kEnd));
}

TEST_F(PhotoExport, FiveRecordsReportOnceBeforeTheEnd) {
    addPhotos(5);
    EXPECT_THAT(extract(*parsed(), output.path()), ElementsAre(ExportEvent{0, 0, 1.0}, kEnd));
}

TEST_F(PhotoExport, SecondFileOfATitleGetsANumber) {
    files.addPhoto("same", smallJpeg()).addPhoto("same", pngFile(quadrants(10, 10))).addPhoto("same", smallJpeg());
    const auto domain = parsed();
    extract(*domain, output.path());
    EXPECT_THAT(domain->writtenPaths(),
                ElementsAre(outputPath("same.JPG"), outputPath("same(0).JPG"), outputPath("same(1).JPG")));
    EXPECT_EQ(readBytes(outputPath("same(0).JPG")), pngFile(quadrants(10, 10)));
}

TEST_F(PhotoExport, LivePhotoAndThumbnailOfOneTitleAreBothWritten) {
    files.addPhoto("_1", smallJpeg()).addStore("3303.ithmb", storeOf(24, 22, 1));
    const auto domain = parsed();
    extract(*domain, output.path());
    EXPECT_THAT(domain->writtenPaths(), ElementsAre(outputPath("_1.JPG"), outputPath("_1(0).JPG")));
    EXPECT_EQ(readBytes(outputPath("_1.JPG")), smallJpeg());
}

TEST_F(PhotoExport, SecondExportReplacesNothing) {
    addPhotos(1);
    const auto domain = parsed();
    extract(*domain, output.path());
    extract(*domain, output.path());
    EXPECT_THAT(writtenNames(), ElementsAre("Velmora Retrievo/Photo/p0(0).JPG", "Velmora Retrievo/Photo/p0.JPG"));
    EXPECT_THAT(domain->writtenPaths(), ElementsAre(outputPath("p0(0).JPG")));
}

TEST_F(PhotoExport, FolderThatExistsIsUsed) {
    addPhotos(1);
    writeText(outputPath("other.txt"), "stays");
    extract(*parsed(), output.path());
    EXPECT_THAT(writtenNames(), ElementsAre("Velmora Retrievo/Photo/other.txt", "Velmora Retrievo/Photo/p0.JPG"));
}

TEST_F(PhotoExport, MissingOutputFolderIsMade) {
    addPhotos(1);
    extract(*parsed(), output.path("a/b"));
    EXPECT_THAT(writtenNames(), ElementsAre("a/b/Velmora Retrievo/Photo/p0.JPG"));
}

TEST_F(PhotoExport, FolderThatCannotBeMadeIsAFailureAndTheEndIsReported) {
    addPhotos(6);
    writeText(output.path("Velmora Retrievo"), "a file");
    const auto domain = parsed();
    EXPECT_THAT(extract(*domain, output.path()), ElementsAre(ExportEvent{0, 0, 5 / 6.0}, kEnd));
    EXPECT_THAT(domain->firstFailure(), HasSubstr(output.path("Velmora Retrievo/Photo")));
    EXPECT_THAT(domain->writtenPaths(), IsEmpty());
}

TEST_F(PhotoExport, PhotoThatHasVanishedIsAFailureAndTheRestIsWritten) {
    addPhotos(3);
    const auto domain = parsed();
    std::filesystem::remove(files.path("photo1"));
    EXPECT_THAT(extract(*domain, output.path()), ElementsAre(kEnd));
    EXPECT_THAT(writtenNames(), ElementsAre("Velmora Retrievo/Photo/p0.JPG", "Velmora Retrievo/Photo/p2.JPG"));
    EXPECT_THAT(domain->firstFailure(), HasSubstr(files.path("photo1")));
}

TEST_F(PhotoExport, PhotoThatBecameAPipeOrFolderIsAFailure) {
    addPhotos(2);
    const auto domain = parsed();
    std::filesystem::remove(files.path("photo0"));
    std::filesystem::remove(files.path("photo1"));
    ASSERT_EQ(::mkfifo(files.path("photo0").c_str(), 0600), 0);
    std::filesystem::create_directory(files.path("photo1"));
    EXPECT_THAT(extract(*domain, output.path()), ElementsAre(kEnd));
    EXPECT_THAT(writtenNames(), IsEmpty());
    EXPECT_THAT(domain->firstFailure(), HasSubstr(files.path("photo0")));
}

TEST_F(PhotoExport, DamagedPhotoIsCopiedAsItIs) {
    auto cut = jpegFile(detailedQuadrants(200, 200));
    cut.resize(cut.size() / 2);
    files.addPhoto("cut", cut);
    extract(*parsed(), output.path());
    EXPECT_THAT(folderContent(output.path()), ElementsAre(Pair("Velmora Retrievo/Photo/cut.JPG", cut)));
}

TEST_F(PhotoExport, TitleThatLeadsOutOfTheFolderIsAFailure) {
    files.addPhoto("../escaped", smallJpeg()).addPhoto("/tmp/escaped", smallJpeg()).addPhoto("..", smallJpeg());
    files.addPhoto(std::string("a\0b", 3), smallJpeg());
    const auto domain = parsed();
    EXPECT_THAT(extract(*domain, output.path()), ElementsAre(kEnd));
    EXPECT_THAT(writtenNames(), ElementsAre("Velmora Retrievo/Photo/...JPG"));
    EXPECT_NE(domain->firstFailure(), "");
}

TEST_F(PhotoExport, RecordWithoutATitleIsAFailure) {
    addPhotos(1);
    files.photos.front().remove(kRawDBNameKey);
    const auto domain = parsed();
    EXPECT_THAT(extract(*domain, output.path()), ElementsAre(kEnd));
    EXPECT_THAT(writtenNames(), IsEmpty());
    EXPECT_NE(domain->firstFailure(), "");
}

TEST_F(PhotoExport, RecordsGoByTheirDeletedFlag) {
    files.addPhoto("live", pngFile(quadrants(20, 20))).addStore("3303.ithmb", storeOf(24, 22, 1));
    const auto domain = parsed();
    ASSERT_THAT(domain->records(), SizeIs(2));
    domain->records()[0]->setIsDeleted(true);
    domain->records()[1]->setIsDeleted(false);
    extract(*domain, output.path());
    EXPECT_THAT(domain->writtenPaths(), ElementsAre(outputPath("live.JPG")));
    EXPECT_EQ(readBytes(outputPath("live.JPG")), jpegOfPicture(*imageOf(*domain->records()[0]), 90));
    EXPECT_THAT(domain->firstFailure(), HasSubstr("_1.JPG"));
}

TEST_F(PhotoExport, StopEndsTheExportWithoutALastCall) {
    addPhotos(12);
    const auto domain = parsed();
    const ImmediateMainQueue immediate;
    ExportEvents events;
    runUntilStopped(*domain, [&] {
        domain->extractWithOutputPath(
            output.path(), DlxExportType::kHtml,
            [&](std::int64_t first, std::int64_t second, std::atomic<bool>* stop, double progress) {
                events.push_back({first, second, progress});
                *stop = true;
            });
    });
    waitUntilIdle(domain);
    EXPECT_THAT(events, ElementsAre(ExportEvent{0, 0, 5 / 12.0}));
    EXPECT_EQ(domain->writtenPaths().size(), 5u);
    EXPECT_EQ(writtenNames().size(), 5u);
}

/// A picture that does something whenever it is looked at.
class WatchedImage : public Image {
public:
    explicit WatchedImage(std::function<void()> look) : look_(std::move(look)) {}
    Size size() const override { return {1, 1}; }
    std::optional<Pixels> pixels() const override {
        look_();
        return Pixels{.width = 1, .height = 1, .rgba = std::vector<std::uint8_t>(4)};
    }

private:
    std::function<void()> look_;
};

/// A domain with a thumbnail for each of some images.
class DomainOfImages : public ZkMobileBackupPhotoDomain {
public:
    static std::shared_ptr<ZkMobileBackupPhotoDomain> init(const std::vector<std::shared_ptr<const Image>>& images) {
        return connected(std::shared_ptr<DomainOfImages>(new DomainOfImages(images)));
    }

private:
    explicit DomainOfImages(const std::vector<std::shared_ptr<const Image>>& images)
        : ZkMobileBackupPhotoDomain({}, {}) {
        for (const auto& image : images) {
            records_.push_back(ZkMobileBackupPhotoRecord::initWithPhotoInfo(
                {{kRawDBNameKey, "t"}, {kRawDBdataKey, image}, {kThumbnailDeletedKey, "yes"}}));
        }
    }
};

TEST_F(PhotoExport, StopFlagIsAskedBeforeEachRecord) {
    std::atomic<std::atomic<bool>*> stop{nullptr};
    std::vector<std::shared_ptr<const Image>> images(12, std::make_shared<const WatchedImage>([] {}));
    images[6] = std::make_shared<const WatchedImage>([&stop] { *stop.load() = true; });
    const auto domain = DomainOfImages::init(images);
    markAll(*domain);
    const ImmediateMainQueue immediate;
    runUntilStopped(*domain, [&] {
        domain->extractWithOutputPath(output.path(), DlxExportType::kHtml,
                                      [&stop](auto, auto, std::atomic<bool>* flag, auto) { stop = flag; });
    });
    waitUntilIdle(domain);
    EXPECT_THAT(domain->writtenPaths(), SizeIs(7));
    EXPECT_THAT(writtenNames(), SizeIs(7));
}

TEST_F(PhotoExport, CallbacksComeFromTheMainQueue) {
    addPhotos(5);
    const auto domain = parsed();
    std::vector<std::thread::id> threads;
    domain->extractWithOutputPath(output.path(), DlxExportType::kHtml,
                                  [&](std::int64_t, std::int64_t second, std::atomic<bool>*, double) {
                                      threads.push_back(std::this_thread::get_id());
                                      if (second == 1) MainQueue::stop();
                                  });
    MainQueue::run();
    EXPECT_THAT(threads, ElementsAre(std::this_thread::get_id(), std::this_thread::get_id()));
}

TEST_F(PhotoExport, StopFlagThatIsStillSetEndsTheNextExportAtOnce) {
    addPhotos(5);
    const auto domain = parsed();
    const ImmediateMainQueue immediate;
    const auto stopped = std::make_shared<std::promise<void>>();
    domain->extractWithOutputPath(output.path("first"), DlxExportType::kHtml,
                                  [stopped](std::int64_t, std::int64_t second, std::atomic<bool>* stop, double) {
                                      *stop = true;
                                      if (second == 1) stopped->set_value();
                                  });
    stopped->get_future().wait();
    runUntilStopped(*domain, [&] {
        domain->extractWithOutputPath(output.path("second"), DlxExportType::kHtml,
                                      [](auto, auto, auto, auto) { ADD_FAILURE(); });
    });
    waitUntilIdle(domain);
    EXPECT_EQ(writtenNames().size(), 5u);
    EXPECT_THAT(domain->writtenPaths(), IsEmpty());
}

TEST_F(PhotoExport, SaveImageWritesACompleteFileUnderAFreeName) {
    const auto domain = ZkMobileBackupPhotoDomain::init();
    const auto image = pictureOfBytes(shared(smallJpeg()));
    writeText(output.path("a.JPG"), "stays");
    EXPECT_TRUE(domain->saveImage(image, output.path("a.JPG")));
    EXPECT_EQ(readBytes(output.path("a.JPG")).size(), 5u);
    EXPECT_EQ(pictureOfFile(output.path("a(0).JPG"))->size(), (Size{40, 30}));
    EXPECT_THAT(writtenNames(), UnorderedElementsAre("a.JPG", "a(0).JPG"));
}

TEST_F(PhotoExport, SaveImageOfNothingWritesNothing) {
    const auto domain = ZkMobileBackupPhotoDomain::init();
    EXPECT_FALSE(domain->saveImage(nullptr, output.path("a.JPG")));
    EXPECT_FALSE(domain->saveImage(pictureOfBytes(shared(smallJpeg())), output.path("missing/a.JPG")));
    EXPECT_THAT(writtenNames(), IsEmpty());
    EXPECT_THAT(domain->firstFailure(), HasSubstr(output.path("a.JPG")));
}

}  // namespace
}  // namespace ZkMobileBackup
