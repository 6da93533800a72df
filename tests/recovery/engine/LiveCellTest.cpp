// Headers of live cells: decodeNormalHeaderOfPayload.

#include <gmock/gmock.h>

#include "tests/recovery/engine/RecordTesting.h"

namespace ZkMobileBackup {
namespace {

using namespace testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A record of two whole numbers, 5 and 6, in pieces that a test may widen or change.
struct CellBytes {
    Bytes length = {0x05};      // payload: 3 bytes of header, 2 of content
    Bytes rowid = {0x07};       //
    Bytes headerSize = {0x03};  // itself and two serial types
    Bytes types = {0x01, 0x01};
    Bytes content = {0x05, 0x06};

    Bytes all() const { return joined({length, rowid, headerSize, types, content}); }
};

bool accepted(const Bytes& cell) {
    return parserOnRecord(cell)->decodeNormalHeaderOfPayload() != nullptr;
}

TEST(LiveCell, GivesEveryFieldOfItsRecord) {
    const auto payload = parserOnRecord({
                                            0x09,        // payload length
                                            0x81, 0x02,  // rowid 130
                                            0x04,        // header size
                                            0x02,        // 2 bytes
                                            0x0F,        // text of 1 byte
                                            0x10,        // blob of 2 bytes
                                            0x12, 0x34,  // content
                                            'x',         //
                                            0xAB, 0xCD,  //
                                        })
                             ->decodeNormalHeaderOfPayload();
    ASSERT_NE(payload, nullptr);
    EXPECT_EQ(payload->base(), kRecordPosition);
    EXPECT_EQ(payload->length(), 9U);
    EXPECT_EQ(payload->rowid(), 130U);
    EXPECT_EQ(payload->prefixLen(), 3U);
    EXPECT_EQ(payload->headerSize(), 4U);
    EXPECT_EQ(payload->cellCount(), 3);
    EXPECT_FALSE(payload->ignoreFirstFiled());
    EXPECT_THAT(payload->overFlowPageList(), IsEmpty());
    // Never set by the engine.
    EXPECT_EQ(payload->cellPage(), -1);
    EXPECT_EQ(payload->cellPageOffset(), -1);
}

TEST(LiveCell, CellsAreCountedFromTheFirstByteOfTheRecord) {
    const auto payload = parserOnRecord({
                                            0x08,
                                            0x01,
                                            0x04,  // length, rowid, header size
                                            0x02,
                                            0x0F,
                                            0x0E,  // 2 bytes, text of 1, blob of 1
                                            0x12,
                                            0x34,
                                            'x',
                                            0xAB,
                                        })
                             ->decodeNormalHeaderOfPayload();
    ASSERT_NE(payload, nullptr);
    const auto& cells = payload->cellList();
    ASSERT_EQ(cells.size(), 3U);
    EXPECT_EQ(cells[0].offset(), 6);
    EXPECT_EQ(cells[1].offset(), 8);
    EXPECT_EQ(cells[2].offset(), 9);
    EXPECT_EQ(cells[0].type(), 2);
    EXPECT_EQ(cells[1].type(), 13);
    EXPECT_EQ(cells[2].type(), 12);
}

TEST(LiveCell, LeavesTheCursorWhereItIs) {
    const auto parser = parserOnRecord(CellBytes().all());
    ASSERT_NE(parser->decodeNormalHeaderOfPayload(), nullptr);
    EXPECT_EQ(parser->sqliteReader()->dbCurOffset(), kRecordPosition);
    EXPECT_EQ(parser->sqliteReader()->dbCurPageOffset(), 512);
    EXPECT_EQ(parser->sqliteReader()->dbCurPageLimit(), 1024);
}

TEST(LiveCell, IsMissingWithoutAReader) {
    EXPECT_EQ(parserWithoutReader()->decodeNormalHeaderOfPayload(), nullptr);
}

TEST(LiveCell, RowidZeroIsRejected) {
    EXPECT_TRUE(accepted(CellBytes{.rowid = {0x01}}.all()));
    EXPECT_FALSE(accepted(CellBytes{.rowid = {0x00}}.all()));
}

TEST(LiveCell, RowidOfThreeBytesReadsInTheEnginesOwnWay) {
    const auto payload = parserOnRecord(CellBytes{.rowid = {0x81, 0x81, 0x01}}.all())->decodeNormalHeaderOfPayload();
    ASSERT_NE(payload, nullptr);
    EXPECT_EQ(payload->rowid(), 2113537U);
    EXPECT_EQ(payload->prefixLen(), 4U);
}

TEST(LiveCell, HeaderSizeBelowTwoIsRejected) {
    // Both add up: the header's end lies at or before its first serial type, or right behind it.
    EXPECT_FALSE(accepted({0x02, 0x01, 0x01, 0x08, 0x09}));
    EXPECT_FALSE(accepted({0x02, 0x01, 0x00, 0x08, 0x09}));
}

TEST(LiveCell, HeaderSizeTwoIsRejectedForItsOneCellOnly) {
    const Bytes cell = {0x02, 0x01, 0x02, 0x08};  // payload 2, rowid 1, header size 2, the number 0
    EXPECT_FALSE(accepted(cell));
    const auto parser = parserOnRecord(cell);
    parser->sqliteDBHeader()->setMinCellCount(1);
    EXPECT_NE(parser->decodeNormalHeaderOfPayload(), nullptr);
}

TEST(LiveCell, RecordOfOneColumnIsAlwaysRejected) {
    EXPECT_FALSE(accepted(cell(1, {text("alone")})));
    EXPECT_TRUE(accepted(cell(1, {text("two"), null()})));
}

TEST(LiveCell, HeaderLargerThanThePageIsRejected) {
    const auto parser = parserOnRecord(CellBytes().all());
    parser->sqliteDBHeader()->setPageSize(3);
    EXPECT_NE(parser->decodeNormalHeaderOfPayload(), nullptr);
    parser->sqliteDBHeader()->setPageSize(2);
    EXPECT_EQ(parser->decodeNormalHeaderOfPayload(), nullptr);
}

TEST(LiveCell, StoredPageSizeOneRejectsEveryCell) {
    HandMadeDatabase database = databaseWithRecord(CellBytes().all());
    database.put16(16, 1);  // 65536 elsewhere
    EXPECT_EQ(parserAt(database, 2, kRecordOffset)->decodeNormalHeaderOfPayload(), nullptr);
}

TEST(LiveCell, SizesThatDoNotAddUpToThePayloadLengthAreRejected) {
    EXPECT_TRUE(accepted(CellBytes().all()));
    EXPECT_FALSE(accepted(CellBytes{.length = {0x04}}.all()));
    EXPECT_FALSE(accepted(CellBytes{.length = {0x06}}.all()));
    EXPECT_FALSE(accepted(CellBytes{.types = {0x01, 0x02}}.all()));
    EXPECT_FALSE(accepted(CellBytes{.types = {0x01, 0x08}}.all()));
}

TEST(LiveCell, InvalidSerialTypeLeavesABodyOfNothing) {
    EXPECT_FALSE(accepted({0x05, 0x01, 0x04, 0x01, 0x08, 0x0A, 0x55}));
    // Body 0 is what the sizes add up to here.
    EXPECT_TRUE(accepted({0x04, 0x01, 0x04, 0x08, 0x09, 0x0B}));
}

TEST(LiveCell, PayloadLongerThanTheImageIsRejected) {
    const auto parser = parserOnRecord(CellBytes().all());
    parser->sqliteReader()->setDbSize(5);
    EXPECT_NE(parser->decodeNormalHeaderOfPayload(), nullptr);
    parser->sqliteReader()->setDbSize(4);
    EXPECT_EQ(parser->decodeNormalHeaderOfPayload(), nullptr);
}

TEST(LiveCell, PayloadLengthIsHeldToBothLimits) {
    const auto parser = parserOnRecord(CellBytes().all());  // 5 bytes
    DlxSQLiteDBHeader& header = *parser->sqliteDBHeader();
    header.setMinPaylaodLen(5);
    header.setMaxPaylaodLen(5);
    EXPECT_NE(parser->decodeNormalHeaderOfPayload(), nullptr);
    header.setMinPaylaodLen(6);
    header.setMaxPaylaodLen(6);
    EXPECT_EQ(parser->decodeNormalHeaderOfPayload(), nullptr);
    header.setMinPaylaodLen(4);
    header.setMaxPaylaodLen(4);
    EXPECT_EQ(parser->decodeNormalHeaderOfPayload(), nullptr);
}

TEST(LiveCell, PayloadLengthOfMoreThanEightBytesIsRejected) {
    EXPECT_TRUE(accepted(CellBytes{.length = paddedVarint(5, 8)}.all()));
    EXPECT_FALSE(accepted(CellBytes{.length = paddedVarint(5, 9)}.all()));
}

TEST(LiveCell, RowidOfMoreThanEightBytesIsRejected) {
    EXPECT_TRUE(accepted(CellBytes{.rowid = paddedVarint(7, 8)}.all()));
    EXPECT_FALSE(accepted(CellBytes{.rowid = paddedVarint(7, 9)}.all()));
}

TEST(LiveCell, HeaderSizeOfMoreThanEightBytesIsRejected) {
    // The header ends where its size says, counted from the size's own first byte.
    EXPECT_TRUE(accepted(CellBytes{.length = {12}, .headerSize = paddedVarint(10, 8)}.all()));
    EXPECT_FALSE(accepted(CellBytes{.length = {13}, .headerSize = paddedVarint(11, 9)}.all()));
}

TEST(LiveCell, LastByteOfTheImageIsNeverPartOfANumber) {
    HandMadeDatabase database = databaseWithRecord({
        0x03,        // payload length
        0x01,        // rowid
        0x03,        // header size
        0x09, 0x09,  // the number 1, twice; the second type is the image's last byte
    });
    database.image.resize(kRecordPosition + 5);
    const auto payload = parserAt(database, 2, kRecordOffset)->decodeNormalHeaderOfPayload();
    ASSERT_NE(payload, nullptr);
    EXPECT_EQ(payload->cellList()[0].type(), 9);
    EXPECT_EQ(payload->cellList()[1].type(), 0);
}

TEST(LiveCell, CutOffByTheEndOfTheImageIsRejectedUnlessZerosDo) {
    const Bytes whole = databaseWithRecord(CellBytes().all()).image;
    for (std::int64_t kept = 0; kept < 5; ++kept) {
        HandMadeDatabase database = databaseWithRecord(CellBytes().all());
        database.image.resize(static_cast<std::size_t>(kRecordPosition + kept));
        EXPECT_EQ(parserAt(database, 2, kRecordOffset)->decodeNormalHeaderOfPayload(), nullptr) << kept;
    }
}

/// A record of 204 bytes of payload whose text spells 3 as the number of an overflow page at the end of page 2.
std::shared_ptr<DlxSQLiteParser> parserOnRecordAtPageEnd(std::int64_t offset) {
    HandMadeDatabase database(kRecordPageSize, 4);
    database.putInPage(2, static_cast<std::size_t>(offset), cell(1, {null(), text(std::string(200, 'x'))}));
    database.put32(database.end(2) - 4, 3);
    return parserAt(database, 2, offset);
}

TEST(LiveCell, SpillsWhenItsPayloadLengthFromItsFirstByteOnPassesThePage) {
    constexpr std::int64_t kLength = 204;  // 4 bytes of header, 200 of text
    const auto fits = parserOnRecordAtPageEnd(kRecordPageSize - kLength)->decodeNormalHeaderOfPayload();
    ASSERT_NE(fits, nullptr);
    ASSERT_EQ(fits->length(), 204U);
    EXPECT_THAT(fits->overFlowPageList(), IsEmpty());
    const auto spills = parserOnRecordAtPageEnd(kRecordPageSize - kLength + 1)->decodeNormalHeaderOfPayload();
    ASSERT_NE(spills, nullptr);
    EXPECT_THAT(spills->overFlowPageList(), ElementsAre(3));
}

TEST(LiveCell, DistanceFromThePageStartCountsInSixteenBits) {
    const auto parser = parserOnRecordAtPageEnd(400);
    DlxSQLiteReader& reader = *parser->sqliteReader();
    reader.setDbCurPageOffset(reader.dbCurOffset() - 0x10000);
    const auto payload = parser->decodeNormalHeaderOfPayload();
    ASSERT_NE(payload, nullptr);
    EXPECT_THAT(payload->overFlowPageList(), IsEmpty());
}

}  // namespace
}  // namespace ZkMobileBackup
