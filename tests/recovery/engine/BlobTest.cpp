// Blobs: in rows, and in files of their own.

#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "recovery/engine/payload_decoder.h"
#include "tests/recovery/engine/RecordTesting.h"
#include "tests/support/DatabaseBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using namespace testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Works in a new folder, so that blob files go there.
class Blobs : public ::testing::Test {
protected:
    Blobs() { std::filesystem::current_path(folder_.path()); }
    ~Blobs() override { std::filesystem::current_path(before_); }

    /// The row of a live cell: the number 5, a blob, the number 6.
    Texts rowWith(const Bytes& content) {
        parser_->sqliteReader()->setDbCurOffset(kRecordPosition);
        const auto payload = parser_->decodeNormalHeaderOfPayload();
        if (payload == nullptr) return {"rejected"};
        EXPECT_EQ(payload->cellList()[1].size(), static_cast<std::int32_t>(content.size()));
        return parser_->dumpBodyOfPayload(payload.get(), engine::kLiveCell)->texts();
    }
    void useRecordWith(const Bytes& content) {
        parser_ = parserOnRecord(cell(1, {number8(5), blob(content), number8(6)}));
    }
    DlxSQLiteDBHeader& header() { return *parser_->sqliteDBHeader(); }
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            names.push_back(entry.path().filename());
        return names;
    }

    const Bytes content_ = {0xDE, 0xAD, 0x0B};
    std::shared_ptr<DlxSQLiteParser> parser_;

private:
    std::filesystem::path before_ = std::filesystem::current_path();
    TemporaryFolder folder_;
};

TEST_F(Blobs, AreUpperCaseDigitsWithoutSeparators) {
    useRecordWith(content_);
    EXPECT_THAT(rowWith(content_), ElementsAre("5", "DEAD0B", "6"));
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Blobs, AreCounted) {
    useRecordWith(content_);
    EXPECT_EQ(header().blobCount(), 0);
    rowWith(content_);
    EXPECT_EQ(header().blobCount(), 1);
    rowWith(content_);
    EXPECT_EQ(header().blobCount(), 2);
}

TEST_F(Blobs, LeaveNoElementWhenTheyAreNotReported) {
    useRecordWith(content_);
    header().setReportBlobs(0);
    EXPECT_THAT(rowWith(content_), ElementsAre("5", "6"));
    EXPECT_EQ(header().blobCount(), 1);  // counted all the same
}

TEST_F(Blobs, AreReportedForAnyFlagButZero) {
    useRecordWith(content_);
    header().setReportBlobs(-3);
    EXPECT_THAT(rowWith(content_), ElementsAre("5", "DEAD0B", "6"));
}

TEST_F(Blobs, AtTheSizeLimitGoToAFileAndLeaveNoElement) {
    useRecordWith(content_);
    header().setBlobSizeLimit(4);
    EXPECT_THAT(rowWith(content_), ElementsAre("5", "DEAD0B", "6"));
    EXPECT_THAT(files(), IsEmpty());
    header().setBlobSizeLimit(3);
    EXPECT_THAT(rowWith(content_), ElementsAre("5", "6"));
    EXPECT_THAT(files(), ElementsAre("1.blob"));  // the second blob that was met
    EXPECT_EQ(readBytes("1.blob"), content_);
    EXPECT_EQ(header().blobCount(), 2);
}

TEST_F(Blobs, GoToNoFileWhenTheyAreNotReported) {
    useRecordWith(content_);
    header().setReportBlobs(0);
    header().setBlobSizeLimit(0);
    EXPECT_THAT(rowWith(content_), ElementsAre("5", "6"));
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Blobs, OfNoBytesReachALimitOfZero) {
    useRecordWith({});
    header().setBlobSizeLimit(0);
    EXPECT_THAT(rowWith({}), ElementsAre("5", "6"));
    EXPECT_THAT(readBytes("0.blob"), IsEmpty());
}

TEST_F(Blobs, FileBelongsToItsOwnerAlone) {
    useRecordWith(content_);
    parser_->dumpBlobToFile(kRecordPosition, 3, 42);
    struct stat status {};
    ASSERT_EQ(stat("42.blob", &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(Blobs, FileThatIsThereIsReplaced) {
    useRecordWith(content_);
    writeText(std::filesystem::absolute("7.blob"), "something much longer");
    parser_->dumpBlobToFile(kRecordPosition, 2, 7);
    EXPECT_EQ(readBytes("7.blob").size(), 2U);
}

TEST_F(Blobs, FileThatCannotBeOpenedIsPassedOver) {
    useRecordWith(content_);
    std::filesystem::create_directory("0.blob");
    header().setBlobSizeLimit(1);
    EXPECT_THAT(rowWith(content_), ElementsAre("5", "6"));
    EXPECT_EQ(header().blobCount(), 1);
    EXPECT_EQ(parser_->lastError(), std::nullopt);
}

TEST_F(Blobs, FileIsCutAtTheEndOfTheImage) {
    useRecordWith(content_);
    parser_->dumpBlobToFile(parser_->sqliteReader()->dbEnd() - 1, 100, 3);
    EXPECT_EQ(readBytes("3.blob").size(), 2U);
}

TEST_F(Blobs, DigitsAreCutAtTheEndOfTheImage) {
    useRecordWith(content_);
    const std::int64_t end = parser_->sqliteReader()->dbEnd();
    EXPECT_EQ(parser_->dumpBlob(end - 1, 100), "0000");
    EXPECT_EQ(parser_->dumpBlob(end + 1, 100), "");
    EXPECT_EQ(parser_->dumpBlob(end, 0), "");
}

TEST_F(Blobs, ShowTheirLengthCutToSixteenBits) {
    HandMadeDatabase database(32768, 4);
    database.put(32768, {0xAA, 0xBB});
    const auto parser = parserAt(database, 2, 0);
    const auto shown = [&parser](std::int32_t size) {
        PayloadObject payload;
        payload.cellList() = {{PayloadCell::kBlob, 0, size}};
        return parser->dumpBodyOfPayload(&payload, engine::kLiveCell)->texts();
    };
    EXPECT_THAT(shown(65536), ElementsAre(""));
    EXPECT_THAT(shown(65538), ElementsAre("AABB"));
    EXPECT_EQ(shown(65535).at(0).size(), 2U * 65535);
}

TEST_F(Blobs, SizeLimitIsComparedWithTheWholeLength) {
    HandMadeDatabase database(32768, 4);
    const auto parser = parserAt(database, 2, 0);
    parser->sqliteDBHeader()->setBlobSizeLimit(65536);
    PayloadObject payload;
    payload.cellList() = {{PayloadCell::kBlob, 0, 65536}};
    EXPECT_THAT(parser->dumpBodyOfPayload(&payload, engine::kLiveCell)->texts(), IsEmpty());
    EXPECT_EQ(readBytes("0.blob").size(), 65536U);
}

TEST_F(Blobs, PastTheEndOfTheImageAreTheEmptyTextAndNotCounted) {
    useRecordWith(content_);
    header().setBlobSizeLimit(0);
    PayloadObject payload;
    payload.cellList() = {{PayloadCell::kBlob, 100000, 10}};
    EXPECT_THAT(parser_->dumpBodyOfPayload(&payload, engine::kLiveCell)->texts(), ElementsAre(""));
    EXPECT_EQ(header().blobCount(), 0);
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Blobs, DroppedFromRealRowsShiftTheValuesBehindThem) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE files (name TEXT, data BLOB, size INTEGER)");
    builder.insert("files", {std::string("a"), content_, std::int64_t{3}});
    const auto parser = DlxSQLiteParser::initWithDBData(builder.bytes());
    parser->sqliteDBHeader()->setReportBlobs(0);
    ASSERT_TRUE(parser->parser());
    const RawTableObject& table = *parser->tableList().at(1);
    ASSERT_EQ(table.filedList().size(), 3U);
    EXPECT_THAT(table.rowList()[0].texts(), ElementsAre("a", "3"));
}

TEST_F(Blobs, OfRealRowsGoToFilesNumberedInTheOrderTheyAreMet) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE files (name TEXT, data BLOB)");
    for (const std::uint8_t byte : Bytes{1, 2, 3}) {
        builder.insert("files", {std::string("a"), Bytes(byte, byte)});
    }
    const auto parser = DlxSQLiteParser::initWithDBData(builder.bytes());
    parser->sqliteDBHeader()->setBlobSizeLimit(2);
    ASSERT_TRUE(parser->parser());
    EXPECT_THAT(rowsOf(parser->tableList().at(1)->rowList()), ElementsAre(Texts{"a", "01"}, Texts{"a"}, Texts{"a"}));
    EXPECT_EQ(readBytes("1.blob"), Bytes(2, 2));
    EXPECT_EQ(readBytes("2.blob"), Bytes(3, 3));
}

}  // namespace
}  // namespace ZkMobileBackup
