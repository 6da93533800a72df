#include <gmock/gmock.h>
#include <unistd.h>

#include "recovery/DlxSQLiteDBHeader.h"
#include "recovery/DlxSQLiteReader.h"
#include "recovery/engine/byte_image.h"
#include "tests/recovery/engine/HandMadeDatabase.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using testing::Bytes;
using testing::HandMadeDatabase;

constexpr std::uint64_t kUnlimited = ~std::uint64_t{0};

TEST(Reader, StandsAtTheStartWithAPageOfNoLength) {
    const auto reader = DlxSQLiteReader::initWithDBData(Bytes(1000));
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->dbSize(), 1000U);
    EXPECT_EQ(reader->dbOrigin(), 0);
    EXPECT_EQ(reader->dbCurOffset(), 0);
    EXPECT_EQ(reader->dbCurPageOffset(), 0);
    EXPECT_EQ(reader->dbCurPageLimit(), 0);
    EXPECT_EQ(reader->lastError(), std::nullopt);
}

TEST(Reader, EndIsTheLastByteAndNotOnePastIt) {
    EXPECT_EQ(DlxSQLiteReader::initWithDBData(Bytes(1000))->dbEnd(), 999);
    EXPECT_EQ(DlxSQLiteReader::initWithDBData(Bytes(1))->dbEnd(), 0);
}

TEST(Reader, EmptyImageIsNotRefusedAndEndsBeforeItsOrigin) {
    const auto reader = DlxSQLiteReader::initWithDBData(Bytes());
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->dbSize(), 0U);
    EXPECT_EQ(reader->dbEnd(), -1);
}

TEST(Reader, EmptyFileIsNotRefused) {
    const TemporaryFolder folder;
    writeBytes(folder.path("empty"), Bytes());
    const auto reader = DlxSQLiteReader::initWithDBPath(folder.path("empty"));
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->dbSize(), 0U);
    EXPECT_EQ(reader->dbEnd(), -1);
}

TEST(Reader, OfAPathHasTheFilesBytes) {
    const TemporaryFolder folder;
    writeBytes(folder.path("file"), Bytes{7, 8, 9});
    const auto reader = DlxSQLiteReader::initWithDBPath(folder.path("file"));
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->dbSize(), 3U);
    EXPECT_EQ(reader->image().byte(2), 9);
}

TEST(Reader, IsMissingWhereNoFileIs) {
    EXPECT_EQ(DlxSQLiteReader::initWithDBPath("/no/such/file"), nullptr);
    EXPECT_EQ(DlxSQLiteReader::initWithDBPath(""), nullptr);
}

TEST(Reader, IsMissingForAFileThatCannotBeRead) {
    const TemporaryFolder folder;
    EXPECT_EQ(DlxSQLiteReader::initWithDBPath(folder.path()), nullptr);
}

TEST(Reader, KeepsACopyOfTheGivenBytes) {
    Bytes bytes = {7, 8, 9};
    const auto reader = DlxSQLiteReader::initWithDBData(bytes);
    bytes.assign(3, 0);
    EXPECT_EQ(reader->image().byte(0), 7);
}

TEST(Reader, PositionsAreSetWithoutAnyCheck) {
    const auto reader = DlxSQLiteReader::initWithDBData(Bytes(10));
    reader->setDbCurOffset(-5);
    reader->setDbCurPageOffset(5000000000);
    reader->setDbCurPageLimit(5000000512);
    reader->setDbOrigin(3);
    reader->setDbEnd(-1);
    reader->setDbSize(kUnlimited);
    EXPECT_EQ(reader->dbCurOffset(), -5);
    EXPECT_EQ(reader->dbCurPageOffset(), 5000000000);
    EXPECT_EQ(reader->dbCurPageLimit(), 5000000512);
    EXPECT_EQ(reader->dbOrigin(), 3);
    EXPECT_EQ(reader->dbEnd(), -1);
    EXPECT_EQ(reader->dbSize(), kUnlimited);
}

TEST(Reader, KeepsItsLastErrorUntilItIsReplacedOrCleared) {
    const auto reader = DlxSQLiteReader::initWithDBData(Bytes(10));
    reader->setLastError("first");
    reader->setLastError("second");
    EXPECT_EQ(reader->lastError(), "second");
    reader->clearLastError();
    EXPECT_EQ(reader->lastError(), std::nullopt);
}

std::shared_ptr<DlxSQLiteDBHeader> headerOf(const Bytes& bytes) {
    return DlxSQLiteDBHeader::initWithSQLiteReader(DlxSQLiteReader::initWithDBData(bytes));
}

TEST(DBHeader, ReadsFourFieldsBigEndian) {
    Bytes bytes(100);
    bytes[16] = 0x10;  // page size 0x1004
    bytes[17] = 0x04;
    bytes[30] = 0x12;  // page count 0x1234
    bytes[31] = 0x34;
    bytes[32] = 0x81;  // first trunk page 0x81020304
    bytes[33] = 0x02;
    bytes[34] = 0x03;
    bytes[35] = 0x04;
    bytes[36] = 0x95;  // number of free pages 0x95060708
    bytes[37] = 0x06;
    bytes[38] = 0x07;
    bytes[39] = 0x08;
    const auto header = headerOf(bytes);
    EXPECT_EQ(header->pageSize(), 0x1004);
    EXPECT_EQ(header->pageCount(), 0x1234);
    EXPECT_EQ(header->freePageFirstPageNum(), 0x81020304U);
    EXPECT_EQ(header->freePagePageCount(), 0x95060708U);
}

TEST(DBHeader, PageCountKeepsItsLowSixteenBits) {
    HandMadeDatabase database(4096, 1);
    database.put32(28, 70000);
    const auto header = headerOf(database.image);
    EXPECT_EQ(header->pageSize(), 4096);
    EXPECT_EQ(header->pageCount(), 4464);
}

TEST(DBHeader, FieldsPastTheEndOfAShortFileAreZero) {
    Bytes bytes(20, 0x11);
    const auto header = headerOf(bytes);
    EXPECT_EQ(header->pageSize(), 0x1111);
    EXPECT_EQ(header->pageCount(), 0);
    EXPECT_EQ(header->freePageFirstPageNum(), 0U);
    EXPECT_EQ(header->freePagePageCount(), 0U);
}

TEST(DBHeader, FieldThatTheFileCutsShortIsZeroAndNotItsFirstBytes) {
    EXPECT_EQ(headerOf(Bytes(17, 0x11))->pageSize(), 0);
    EXPECT_EQ(headerOf(Bytes(31, 0x11))->pageCount(), 0);
    EXPECT_EQ(headerOf(Bytes(32, 0x11))->pageCount(), 0x1111);
    EXPECT_EQ(headerOf(Bytes(39, 0x11))->freePagePageCount(), 0U);
    EXPECT_EQ(headerOf(Bytes(40, 0x11))->freePagePageCount(), 0x11111111U);
    EXPECT_EQ(headerOf(Bytes())->pageSize(), 0);
}

TEST(DBHeader, PageSizeOneIsTheNumberOne) {
    HandMadeDatabase database(512, 1);
    database.put16(16, 1);
    EXPECT_EQ(headerOf(database.image)->pageSize(), 1);
}

TEST(DBHeader, ChecksNeitherMagicNorFormatNorEncoding) {
    Bytes bytes = HandMadeDatabase(512, 1).image;
    std::fill_n(bytes.begin(), 16, std::uint8_t{0xFF});      // no magic text
    std::fill_n(bytes.begin() + 18, 2, std::uint8_t{0xFF});  // no known format
    std::fill_n(bytes.begin() + 56, 4, std::uint8_t{0xFF});  // no known encoding
    const auto header = headerOf(bytes);
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->pageSize(), 512);
    EXPECT_EQ(header->characterCodingType(), 0U);
}

TEST(DBHeader, StartsWithTheDefaultLimits) {
    const auto header = headerOf(HandMadeDatabase(512, 1).image);
    EXPECT_EQ(header->minCellCount(), 2);
    EXPECT_EQ(header->maxCellCount(), 1000);
    EXPECT_EQ(header->minPaylaodLen(), 2U);
    EXPECT_EQ(header->maxPaylaodLen(), kUnlimited);
    EXPECT_EQ(header->reportBlobs(), 1);
    EXPECT_EQ(header->blobCount(), 0);
    EXPECT_EQ(header->blobSizeLimit(), kUnlimited);
    EXPECT_EQ(header->lastError(), std::nullopt);
}

TEST(DBHeader, VisitsManyTimesThePagesOfTheImageAtMost) {
    EXPECT_EQ(headerOf(HandMadeDatabase(512, 3).image)->maxPageVisits(), 64U * 3 + 65536);
    HandMadeDatabase cut(512, 3);
    cut.image.resize(1025);
    EXPECT_EQ(headerOf(cut.image)->maxPageVisits(), 64U * 3 + 65536);
    EXPECT_EQ(headerOf(Bytes())->maxPageVisits(), 65536U);
}

TEST(DBHeader, IsMissingWithoutAReader) {
    EXPECT_EQ(DlxSQLiteDBHeader::initWithSQLiteReader(nullptr), nullptr);
}

TEST(DBHeader, IsReadOnceWhenItIsMade) {
    const auto reader = DlxSQLiteReader::initWithDBData(HandMadeDatabase(512, 1).image);
    const auto header = DlxSQLiteDBHeader::initWithSQLiteReader(reader);
    reader->image().splice(16, 200, 2);
    EXPECT_EQ(header->pageSize(), 512);
}

TEST(DBHeader, EveryLimitMayBeSet) {
    const auto header = headerOf(HandMadeDatabase(512, 1).image);
    header->setPageSize(1);
    header->setPageCount(2);
    header->setFreePageFirstPageNum(3);
    header->setFreePagePageCount(4);
    header->setCharacterCodingType(5);
    header->setMinCellCount(-6);
    header->setMaxCellCount(7);
    header->setMinPaylaodLen(8);
    header->setMaxPaylaodLen(9);
    header->setReportBlobs(0);
    header->setBlobCount(11);
    header->setBlobSizeLimit(12);
    header->setLastError("text");
    EXPECT_EQ(header->pageSize(), 1);
    EXPECT_EQ(header->pageCount(), 2);
    EXPECT_EQ(header->freePageFirstPageNum(), 3U);
    EXPECT_EQ(header->freePagePageCount(), 4U);
    EXPECT_EQ(header->characterCodingType(), 5U);
    EXPECT_EQ(header->minCellCount(), -6);
    EXPECT_EQ(header->maxCellCount(), 7);
    EXPECT_EQ(header->minPaylaodLen(), 8U);
    EXPECT_EQ(header->maxPaylaodLen(), 9U);
    EXPECT_EQ(header->reportBlobs(), 0);
    EXPECT_EQ(header->blobCount(), 11);
    EXPECT_EQ(header->blobSizeLimit(), 12U);
    EXPECT_EQ(header->lastError(), "text");
    header->clearLastError();
    EXPECT_EQ(header->lastError(), std::nullopt);
}

}  // namespace
}  // namespace ZkMobileBackup
