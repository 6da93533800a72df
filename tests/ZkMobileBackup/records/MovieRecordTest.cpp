#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "ZkMobileBackup/records/InfoKeys.h"
#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/ZkMobileBackupMovieRecord.h"
#include "base/Image.h"
#include "base/Movie.h"
#include "tests/support/DictionaryKeys.h"
#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/PaddedMovie.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;

class MovieRecord : public testing::Test {
protected:
    std::string path() const { return folder.path("movie"); }

    std::shared_ptr<ZkMobileBackupMovieRecord> recordOf(const std::vector<std::uint8_t>& file) const {
        writeBytes(path(), file);
        return recordOfPath();
    }
    std::shared_ptr<ZkMobileBackupMovieRecord> recordOfPath() const {
        return ZkMobileBackupMovieRecord::initWithMovieInfo({{kRawDBNameKey, "IMG_0001"}, {kRawDBdataKey, path()}});
    }

    const TemporaryFolder folder;
};

TEST_F(MovieRecord, ValueHasTitleDurationSizeAndThumbnailInThisOrder) {
    const auto record = recordOf(movieFile());
    ASSERT_NE(record, nullptr);
    EXPECT_THAT(keysOf(*record->value()), ElementsAre("title", "duration", "size", "thumbnail"));
    EXPECT_EQ(*record->recordValueForKey(kMovieRecordTitle), Value("IMG_0001"));
    EXPECT_EQ(record->moviePath(), path());
    EXPECT_FALSE(record->isDeleted());
    EXPECT_FALSE(record->shouldRecovery());
}

TEST_F(MovieRecord, DurationIsInUnitsOfTheMovie) {
    const auto record = recordOf(movieFile({.frames = 15, .timeScale = 600}));
    EXPECT_EQ(*record->recordValueForKey(kMovieRecordDuration), Value(300));
    const auto fine = recordOf(movieFile({.frames = 15, .timeScale = 90'000}));
    EXPECT_EQ(*fine->recordValueForKey(kMovieRecordDuration), Value(45'000));
}

TEST_F(MovieRecord, SizeIsThatOfTheFileInBytes) {
    const auto record = recordOf(padded(movieFile(), 123'457));
    EXPECT_EQ(*record->recordValueForKey(kMovieRecordSize), Value(123'457));
}

TEST_F(MovieRecord, SizeIsNotLimitedTo32Bits) {
    constexpr std::uint64_t kSize = (std::uint64_t{5} << 30) + 1;
    writeSparseMovie(path(), kSize);
    const auto record = recordOfPath();
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(*record->recordValueForKey(kMovieRecordSize), Value(kSize));
}

TEST_F(MovieRecord, ThumbnailIsThePictureShownFirstUpright) {
    const auto record = recordOf(movieFile({.width = 120, .height = 160, .rotation = 90}));
    const Value* thumbnail = record->recordValueForKey(kMovieRecordThumbnail);
    ASSERT_NE(thumbnail, nullptr);
    ASSERT_NE(thumbnail->image(), nullptr);
    const Image& image = **thumbnail->image();
    EXPECT_EQ(image.size(), (Size{120, 160}));
    const auto pixels = image.pixels();
    ASSERT_TRUE(pixels.has_value());
    EXPECT_GT(pixels->rgba[0], 200);  // red is top left
    EXPECT_LT(pixels->rgba[1], 60);
    EXPECT_LT(pixels->rgba[2], 60);
}

TEST_F(MovieRecord, MovieWithoutPicturesHasNoThumbnail) {
    const auto record = recordOf(movieFile({.picture = false, .sound = true}));
    ASSERT_NE(record, nullptr);
    EXPECT_THAT(keysOf(*record->value()), ElementsAre("title", "duration", "size"));
}

TEST_F(MovieRecord, InfoWithoutNameGivesNoTitle) {
    writeBytes(path(), movieFile());
    const auto record = ZkMobileBackupMovieRecord::initWithMovieInfo({{kRawDBdataKey, path()}});
    ASSERT_NE(record, nullptr);
    EXPECT_THAT(keysOf(*record->value()), ElementsAre("duration", "size", "thumbnail"));
}

TEST_F(MovieRecord, MovieIsKeptForTheLifeOfTheRecord) {
    const auto record = recordOf(movieFile());
    ASSERT_NE(record->movie(), nullptr);
    EXPECT_EQ(Value(record->movie()->duration()), *record->recordValueForKey(kMovieRecordDuration));
    EXPECT_EQ(record->movie()->timeScale(), 600);
}

TEST_F(MovieRecord, FileThatIsNoMovieGivesNone) {
    EXPECT_EQ(recordOf({}), nullptr);
    EXPECT_EQ(recordOf(std::vector<std::uint8_t>(5'000, 0x5A)), nullptr);
    std::filesystem::remove(path());
    EXPECT_EQ(recordOfPath(), nullptr);
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(recordOfPath(), nullptr);
    std::filesystem::remove(path());
    std::filesystem::create_directory(path());
    EXPECT_EQ(recordOfPath(), nullptr);
}

TEST_F(MovieRecord, InfoWithoutPathGivesNone) {
    EXPECT_EQ(ZkMobileBackupMovieRecord::initWithMovieInfo({{kRawDBNameKey, "IMG_0001"}}), nullptr);
    EXPECT_EQ(ZkMobileBackupMovieRecord::initWithMovieInfo({{kRawDBdataKey, 5}}), nullptr);
}

TEST_F(MovieRecord, ResolutionIsAKeyThatNoValueHas) {
    const RecordKeys* keys = ZkMobileBackupMovieRecord::recordKeys();
    EXPECT_THAT(*keys, ElementsAre("title", "duration", "resolution", "size"));
    EXPECT_EQ(ZkMobileBackupMovieRecord::recordKeys(), keys);
    const auto record = recordOf(movieFile());
    EXPECT_EQ(record->keysOfClass(), keys);
    EXPECT_EQ(record->recordValueForKey(kMovieRecordResolution), nullptr);
}

TEST_F(MovieRecord, ExportValuePassesAllButTheTitleUnchanged) {
    writeBytes(path(), movieFile());
    const auto record =
        ZkMobileBackupMovieRecord::initWithMovieInfo({{kRawDBNameKey, "first\nsecond"}, {kRawDBdataKey, path()}});
    const auto exported = record->exportValue();
    EXPECT_EQ(*exported->text(kMovieRecordTitle), "first");
    for (const char* key : {kMovieRecordDuration, kMovieRecordSize, kMovieRecordThumbnail}) {
        EXPECT_EQ(*exported->find(key), *record->recordValueForKey(key)) << key;
    }
}

}  // namespace
}  // namespace ZkMobileBackup
