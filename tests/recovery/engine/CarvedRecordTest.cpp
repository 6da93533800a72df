// Headers of deleted records: decodePayloadWithMode:andForcedLen:cellCount:.

#include <gmock/gmock.h>

#include "recovery/engine/payload_decoder.h"
#include "tests/recovery/engine/RecordTesting.h"

namespace ZkMobileBackup {
namespace {

using namespace testing;
using engine::kFreeblockRecord;
using engine::kUnallocatedRecord;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What is left of a record of three columns whose first serial type is lost.
const Bytes kTwoNumbers = {
    0x01, 0x01,  // two numbers of a byte
    0x05, 0x06,  // their content
};
constexpr std::int64_t kColumns = 3;

bool accepted(const Bytes& record, std::int64_t mode, std::uint16_t forcedLength, std::int64_t columns = kColumns) {
    return parserOnRecord(record)->decodePayloadWithMode(mode, forcedLength, columns) != nullptr;
}

TEST(CarvedRecord, BeginsWithItsFirstSerialType) {
    const auto payload = parserOnRecord(kTwoNumbers)->decodePayloadWithMode(kUnallocatedRecord, 4, kColumns);
    ASSERT_NE(payload, nullptr);
    EXPECT_EQ(payload->base(), kRecordPosition);
    EXPECT_EQ(payload->headerSize(), 2U);
    EXPECT_EQ(payload->prefixLen(), 0U);
    EXPECT_EQ(payload->cellCount(), 2);
    EXPECT_EQ(payload->cellList()[0].offset(), 2);
    EXPECT_EQ(payload->cellList()[1].offset(), 3);
}

TEST(CarvedRecord, HasRowidOne) {
    EXPECT_EQ(parserOnRecord(kTwoNumbers)->decodePayloadWithMode(kUnallocatedRecord, 4, kColumns)->rowid(), 1U);
}

TEST(CarvedRecord, InUnallocatedSpaceHasTheForcedLength) {
    EXPECT_EQ(parserOnRecord(kTwoNumbers)->decodePayloadWithMode(kUnallocatedRecord, 9, kColumns)->length(), 9U);
}

TEST(CarvedRecord, InAFreeblockIsShorterByTheFreeblocksHeader) {
    EXPECT_EQ(parserOnRecord(kTwoNumbers)->decodePayloadWithMode(kFreeblockRecord, 9, kColumns)->length(), 5U);
}

TEST(CarvedRecord, FreeblockShorterThanItsHeaderIsRejected) {
    const Bytes nulls = {0x00, 0x00};
    EXPECT_TRUE(accepted(nulls, kFreeblockRecord, 6));
    for (std::uint16_t length = 0; length < 6; ++length) EXPECT_FALSE(accepted(nulls, kFreeblockRecord, length));
}

TEST(CarvedRecord, OtherModesAreRejected) {
    EXPECT_TRUE(accepted(kTwoNumbers, 1, 20));
    EXPECT_TRUE(accepted(kTwoNumbers, 2, 20));
    for (const std::int64_t mode : {-1, 0, 3}) EXPECT_FALSE(accepted(kTwoNumbers, mode, 20)) << mode;
}

TEST(CarvedRecord, LengthIsHeldToTheImageAndBothLimits) {
    const auto parser = parserOnRecord(kTwoNumbers);
    const auto decodes = [&parser] {
        return parser->decodePayloadWithMode(kUnallocatedRecord, 9, kColumns) != nullptr;
    };
    DlxSQLiteDBHeader& header = *parser->sqliteDBHeader();
    parser->sqliteReader()->setDbSize(9);
    header.setMinPaylaodLen(9);
    header.setMaxPaylaodLen(9);
    EXPECT_TRUE(decodes());
    parser->sqliteReader()->setDbSize(8);
    EXPECT_FALSE(decodes());
    parser->sqliteReader()->setDbSize(100);
    header.setMaxPaylaodLen(8);
    EXPECT_FALSE(decodes());
    header.setMaxPaylaodLen(100);
    header.setMinPaylaodLen(10);
    EXPECT_FALSE(decodes());
}

TEST(CarvedRecord, HasOneSerialTypeLessThanTheTableHasColumns) {
    const Bytes nulls(20, 0x00);
    for (std::int64_t columns = 3; columns < 10; ++columns) {
        const auto payload = parserOnRecord(nulls)->decodePayloadWithMode(kUnallocatedRecord, 20, columns);
        ASSERT_NE(payload, nullptr);
        EXPECT_EQ(payload->cellCount(), columns - 1);
        EXPECT_EQ(payload->headerSize(), static_cast<std::uint64_t>(columns - 1));
    }
}

TEST(CarvedRecord, HeaderIsAsLongAsTheSkippedNumbers) {
    const auto payload = parserOnRecord({
                                            0x81, 0x0D,        // text of 64 bytes
                                            0x80, 0x80, 0x08,  // the number 0, at length
                                        })
                             ->decodePayloadWithMode(kUnallocatedRecord, 100, kColumns);
    ASSERT_NE(payload, nullptr);
    EXPECT_EQ(payload->headerSize(), 5U);
    EXPECT_EQ(payload->cellList()[0].offset(), 5);
    EXPECT_EQ(payload->cellList()[1].offset(), 69);
}

TEST(CarvedRecord, NumberCutByTheEndOfTheImageIsSkippedWithOneByteMore) {
    HandMadeDatabase database = databaseWithRecord({0x00, 0x81, 0x81, 0x01});
    database.image.resize(kRecordPosition + 4);  // the last byte, 0x01, is never part of a number
    const auto payload = parserAt(database, 2, kRecordOffset)->decodePayloadWithMode(kUnallocatedRecord, 400, kColumns);
    ASSERT_NE(payload, nullptr);
    EXPECT_EQ(payload->headerSize(), 1U + 2U + 1U);
}

TEST(CarvedRecord, HeaderBelowTwoBytesIsRejected) {
    const Bytes nulls(20, 0x00);
    EXPECT_TRUE(accepted(nulls, kUnallocatedRecord, 20, 3));
    for (const std::int64_t columns : {-1, 0, 1, 2}) {
        const auto parser = parserOnRecord(nulls);
        parser->sqliteDBHeader()->setMinCellCount(0);
        EXPECT_EQ(parser->decodePayloadWithMode(kUnallocatedRecord, 20, columns), nullptr) << columns;
    }
}

TEST(CarvedRecord, HeaderLargerThanThePageIsRejected) {
    const auto parser = parserOnRecord(Bytes(20, 0x00));
    parser->sqliteDBHeader()->setPageSize(5);
    EXPECT_NE(parser->decodePayloadWithMode(kUnallocatedRecord, 4, 6), nullptr);
    EXPECT_EQ(parser->decodePayloadWithMode(kUnallocatedRecord, 4, 7), nullptr);
}

TEST(CarvedRecord, WithFewerThanTwoCellsIsRejected) {
    // The first cell passes the length, so decoding ends there.
    EXPECT_FALSE(accepted({0x06, 0x00}, kUnallocatedRecord, 7));
    // One serial type of two bytes.
    EXPECT_FALSE(accepted({0x80, 0x00}, kUnallocatedRecord, 20, 2));
}

TEST(CarvedRecord, ItsBodyMustNotPassItsLength) {
    const Bytes eightBytes = {0x04, 0x04};
    EXPECT_TRUE(accepted(eightBytes, kUnallocatedRecord, 8));
    EXPECT_FALSE(accepted(eightBytes, kUnallocatedRecord, 7));
}

TEST(CarvedRecord, ItsBodyMayBeShorterThanItsLength) {
    EXPECT_TRUE(accepted(kTwoNumbers, kUnallocatedRecord, 2));  // header not counted
    EXPECT_TRUE(accepted(kTwoNumbers, kUnallocatedRecord, 400));
}

TEST(CarvedRecord, InvalidSerialTypeLeavesABodyOfNothingAndTheCellsBeforeIt) {
    const auto payload = parserOnRecord({0x01, 0x01, 0x0A, 0x01})->decodePayloadWithMode(kUnallocatedRecord, 9, 5);
    ASSERT_NE(payload, nullptr);
    EXPECT_EQ(payload->cellCount(), 2);
    EXPECT_EQ(payload->cellList().size(), 3U);
}

TEST(CarvedRecord, FollowsTheOverflowChainWhenItsLengthPassesThePage) {
    HandMadeDatabase database(kRecordPageSize, 4);
    database.putInPage(2, 300, kTwoNumbers);
    database.put32(database.end(2) - 4, 3);
    const auto parser = parserAt(database, 2, 300);
    const auto fits = parser->decodePayloadWithMode(kUnallocatedRecord, 212, kColumns);
    const auto spills = parser->decodePayloadWithMode(kUnallocatedRecord, 213, kColumns);
    ASSERT_NE(fits, nullptr);
    ASSERT_NE(spills, nullptr);
    EXPECT_THAT(fits->overFlowPageList(), IsEmpty());
    EXPECT_THAT(spills->overFlowPageList(), ElementsAre(3));
}

TEST(CarvedRecord, LeavesTheCursorWhereItIs) {
    const auto parser = parserOnRecord(kTwoNumbers);
    ASSERT_NE(parser->decodePayloadWithMode(kUnallocatedRecord, 20, kColumns), nullptr);
    EXPECT_EQ(parser->sqliteReader()->dbCurOffset(), kRecordPosition);
}

TEST(CarvedRecord, IsMissingWithoutAReader) {
    EXPECT_EQ(parserWithoutReader()->decodePayloadWithMode(kUnallocatedRecord, 20, kColumns), nullptr);
}

}  // namespace
}  // namespace ZkMobileBackup
