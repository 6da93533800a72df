// Serial types of a record: decodeHeaderOfPayload:fromPos:toPos:, and the classes of serial types.

#include <gmock/gmock.h>

#include "tests/recovery/engine/RecordTesting.h"

namespace ZkMobileBackup {
namespace {

using namespace testing;
using ::testing::IsEmpty;

constexpr std::uint64_t kAnyLength = ~std::uint64_t{0};

/// A decoded header and its payload.
struct Header {
    std::int32_t body = 0;
    std::shared_ptr<PayloadObject> payload = std::make_shared<PayloadObject>();

    const std::vector<PayloadCell>& cells() const { return payload->cellList(); }
};

/// Decodes `types` as the header of a record that begins with it.
Header headerOf(const Bytes& types, std::uint64_t length = kAnyLength) {
    Header header;
    header.payload->setBase(kRecordPosition);
    header.payload->setLength(length);
    const auto end = kRecordPosition + static_cast<std::int64_t>(types.size());
    header.body = parserOnRecord(types)->decodeHeaderOfPayload(header.payload.get(), kRecordPosition, end);
    return header;
}

struct StoredType {
    std::uint8_t stored;
    std::int32_t type;
    std::int32_t size;
};

class SerialTypeTable : public ::testing::TestWithParam<StoredType> {};

TEST_P(SerialTypeTable, GivesTypeAndSizeOfTheCell) {
    const auto [stored, type, size] = GetParam();
    const Header header = headerOf({stored});
    EXPECT_EQ(header.body, size);
    EXPECT_EQ(header.payload->cellCount(), 1);
    ASSERT_EQ(header.cells().size(), 1U);
    EXPECT_EQ(header.cells()[0].type(), type);
    EXPECT_EQ(header.cells()[0].size(), size);
    EXPECT_EQ(header.cells()[0].offset(), 1);
}

INSTANTIATE_TEST_SUITE_P(Each, SerialTypeTable,
                         ::testing::Values(StoredType{0, 0, 0}, StoredType{1, 1, 1}, StoredType{2, 2, 2},
                                           StoredType{3, 3, 3}, StoredType{4, 4, 4}, StoredType{5, 5, 6},
                                           StoredType{6, 6, 8}, StoredType{7, 7, 8}, StoredType{8, 8, 0},
                                           StoredType{9, 9, 0}, StoredType{12, 12, 0}, StoredType{13, 13, 0},
                                           StoredType{14, 12, 1}, StoredType{15, 13, 1}, StoredType{126, 12, 57},
                                           StoredType{127, 13, 57}),
                         [](const auto& info) { return "Stored" + std::to_string(info.param.stored); });

TEST(RecordHeader, TypesTenAndElevenStopItWithABodyOfNothing) {
    for (const std::uint8_t invalid : Bytes{10, 11}) {
        const Header header = headerOf({0x01, invalid, 0x01});
        EXPECT_EQ(header.body, 0);
        EXPECT_EQ(header.payload->cellCount(), 1);
        // The cell stays, uncounted, so that the record cannot be rendered.
        ASSERT_EQ(header.cells().size(), 2U);
        EXPECT_EQ(header.cells()[1].type(), invalid);
    }
}

TEST(RecordHeader, NumberOfMoreThanEightBytesEndsItWithTheSumSoFar) {
    const Header eight = headerOf(joined({{0x04}, paddedVarint(1, 8), {0x01}}));
    EXPECT_EQ(eight.body, 4 + 1 + 1);
    const Header nine = headerOf(joined({{0x04}, paddedVarint(1, 9), {0x01}}));
    EXPECT_EQ(nine.body, 4);
    EXPECT_EQ(nine.payload->cellCount(), 1);
    EXPECT_EQ(nine.cells().size(), 1U);
}

TEST(RecordHeader, TypeIsCutToItsLowThirtyTwoBits) {
    // The third byte reaches bit 49 and is lost.
    const Header header = headerOf({0x80, 0x80, 0x81, 0x80, 0x02});
    ASSERT_EQ(header.cells().size(), 1U);
    EXPECT_EQ(header.cells()[0].type(), 2);
    EXPECT_EQ(header.body, 2);
}

TEST(RecordHeader, TypeThatIsNegativeAfterTheCutCountsAsInvalid) {
    const Header header = headerOf({0x01, 0x80, 0x80, 0x80, 0x88, 0x0F, 0x01});
    EXPECT_EQ(header.body, 0);
    EXPECT_EQ(header.payload->cellCount(), 1);
    ASSERT_EQ(header.cells().size(), 2U);
    EXPECT_LT(header.cells()[1].type(), 0);
}

TEST(RecordHeader, OffsetsAndSumWrapAtThirtyTwoBits) {
    const Bytes hugeBlob = {0x80, 0x80, 0x80, 0x87, 0x0E};  // serial type 0x7000000E
    constexpr std::int64_t kBlobSize = (0x7000000E - 12) / 2;
    const Header header = headerOf(joined({hugeBlob, hugeBlob, hugeBlob, {0x01}}));
    ASSERT_EQ(header.cells().size(), 4U);
    EXPECT_EQ(header.cells()[2].offset(), 16 + 2 * kBlobSize);
    EXPECT_EQ(header.cells()[3].offset(), static_cast<std::int32_t>(static_cast<std::uint32_t>(16 + 3 * kBlobSize)));
    EXPECT_EQ(header.body, static_cast<std::int32_t>(static_cast<std::uint32_t>(3 * kBlobSize + 1)));
}

TEST(RecordHeader, OffsetsCountFromTheBaseAndNotFromTheHeader) {
    PayloadObject payload;
    payload.setBase(kRecordPosition - 20);
    payload.setLength(kAnyLength);
    parserOnRecord({0x01, 0x02})->decodeHeaderOfPayload(&payload, kRecordPosition, kRecordPosition + 2);
    ASSERT_EQ(payload.cellList().size(), 2U);
    EXPECT_EQ(payload.cellList()[0].offset(), 22);
    EXPECT_EQ(payload.cellList()[1].offset(), 23);
}

TEST(RecordHeader, EndsOnceTheBodyPassesThePayloadLength) {
    const Bytes types = {0x04, 0x04, 0x08, 0x08};
    EXPECT_EQ(headerOf(types, 8).payload->cellCount(), 4);
    EXPECT_EQ(headerOf(types, 7).payload->cellCount(), 2);
    EXPECT_EQ(headerOf(types, 7).body, 8);
}

TEST(RecordHeader, NumberThatBeginsBeforeTheEndIsReadWhole) {
    PayloadObject payload;
    payload.setBase(kRecordPosition);
    payload.setLength(kAnyLength);
    // The header ends between the two bytes of its second type.
    const auto parser = parserOnRecord({0x01, 0x81, 0x0D, 0x01});
    EXPECT_EQ(parser->decodeHeaderOfPayload(&payload, kRecordPosition, kRecordPosition + 2), 1 + 64);
    EXPECT_EQ(payload.cellCount(), 2);
}

TEST(RecordHeader, EndsOnceItHasMoreCellsThanTheLimit) {
    const Header header = headerOf(Bytes(1100, 0x08));
    EXPECT_EQ(header.payload->cellCount(), 1001);
    EXPECT_EQ(headerOf(Bytes(1001, 0x08)).payload->cellCount(), 1001);
}

TEST(RecordHeader, IsNothingWithoutAPayloadAnAddressOrARange) {
    const auto parser = parserOnRecord({0x01, 0x01});
    PayloadObject payload;
    payload.setBase(kRecordPosition);
    payload.setLength(kAnyLength);
    EXPECT_EQ(parser->decodeHeaderOfPayload(nullptr, kRecordPosition, kRecordPosition + 2), 0);
    EXPECT_EQ(parser->decodeHeaderOfPayload(&payload, std::nullopt, kRecordPosition + 2), 0);
    EXPECT_EQ(parser->decodeHeaderOfPayload(&payload, kRecordPosition, std::nullopt), 0);
    EXPECT_EQ(parser->decodeHeaderOfPayload(&payload, kRecordPosition, kRecordPosition), 0);
    EXPECT_EQ(parser->decodeHeaderOfPayload(&payload, kRecordPosition + 2, kRecordPosition), 0);
    EXPECT_EQ(parserWithoutReader()->decodeHeaderOfPayload(&payload, kRecordPosition, kRecordPosition + 2), 0);
    EXPECT_THAT(payload.cellList(), IsEmpty());
    EXPECT_EQ(payload.cellCount(), 0);
}

TEST(RecordHeader, PastTheEndOfTheImageItIsFullOfNulls) {
    PayloadObject payload;
    payload.setBase(5000);
    payload.setLength(kAnyLength);
    EXPECT_EQ(parserOnRecord({})->decodeHeaderOfPayload(&payload, 5000, 5003), 0);
    EXPECT_EQ(payload.cellCount(), 3);
}

TEST(SerialTypeClasses, IntegersAreOneToEleven) {
    for (std::int32_t type = 1; type <= 11; ++type) EXPECT_TRUE(DlxSQLiteParser::isIntergerType(type)) << type;
    for (const std::int32_t type : {-1, 0, 12, 13, 14, 1000})
        EXPECT_FALSE(DlxSQLiteParser::isIntergerType(type)) << type;
}

TEST(SerialTypeClasses, FloatIsSevenAlone) {
    for (std::int32_t type = -1; type <= 20; ++type) EXPECT_EQ(DlxSQLiteParser::isFloatType(type), type == 7) << type;
}

TEST(SerialTypeClasses, TextsAreNullAndOddTypesFromThirteenOn) {
    for (const std::int32_t type : {0, 13, 15, 4001}) EXPECT_TRUE(DlxSQLiteParser::isVarCharType(type)) << type;
    for (const std::int32_t type : {-13, -1, 1, 9, 11, 12, 14})
        EXPECT_FALSE(DlxSQLiteParser::isVarCharType(type)) << type;
}

TEST(SerialTypeClasses, BlobsAreNullAndEvenTypesFromTwelveOn) {
    for (const std::int32_t type : {0, 12, 14, 4000}) EXPECT_TRUE(DlxSQLiteParser::isBlobType(type)) << type;
    for (const std::int32_t type : {-12, -2, 2, 8, 10, 11, 13}) EXPECT_FALSE(DlxSQLiteParser::isBlobType(type)) << type;
}

TEST(PayloadDefaults, AreThoseOfANewObject) {
    const PayloadObject payload;
    EXPECT_EQ(payload.prefixLen(), 0U);
    EXPECT_EQ(payload.length(), 0U);
    EXPECT_EQ(payload.rowid(), ~std::uint64_t{0});
    EXPECT_EQ(payload.headerSize(), 0U);
    EXPECT_EQ(payload.cellCount(), 0);
    EXPECT_EQ(payload.cellPageOffset(), -1);
    EXPECT_EQ(payload.cellPage(), -1);
    EXPECT_THAT(payload.cellList(), IsEmpty());
    EXPECT_THAT(payload.overFlowPageList(), IsEmpty());
    EXPECT_EQ(payload.base(), std::nullopt);
    EXPECT_EQ(payload.mappedData(), std::nullopt);
    EXPECT_EQ(payload.mappedDataEndpoint(), std::nullopt);
    EXPECT_FALSE(payload.ignoreFirstFiled());
    const PayloadCell cell;
    EXPECT_EQ(cell.type(), -1);
    EXPECT_EQ(cell.offset(), -1);
    EXPECT_EQ(cell.size(), 0);
}

TEST(PayloadReset, BringsBackEveryDefault) {
    PayloadObject payload;
    payload.setPrefixLen(1);
    payload.setLength(2);
    payload.setRowid(3);
    payload.setHeaderSize(4);
    payload.setCellCount(5);
    payload.setCellPageOffset(6);
    payload.setCellPage(7);
    payload.cellList().emplace_back();
    payload.overFlowPageList().push_back(8);
    payload.setBase(9);
    payload.setMappedData(10);
    payload.setMappedDataEndpoint(11);
    payload.setIgnoreFirstFiled(true);
    payload.reset();
    EXPECT_EQ(payload.prefixLen(), 0U);
    EXPECT_EQ(payload.length(), 0U);
    EXPECT_EQ(payload.rowid(), ~std::uint64_t{0});
    EXPECT_EQ(payload.headerSize(), 0U);
    EXPECT_EQ(payload.cellCount(), 0);
    EXPECT_EQ(payload.cellPageOffset(), -1);
    EXPECT_EQ(payload.cellPage(), -1);
    EXPECT_THAT(payload.cellList(), IsEmpty());
    EXPECT_THAT(payload.overFlowPageList(), IsEmpty());
    EXPECT_EQ(payload.base(), std::nullopt);
    EXPECT_EQ(payload.mappedData(), std::nullopt);
    EXPECT_EQ(payload.mappedDataEndpoint(), std::nullopt);
    EXPECT_FALSE(payload.ignoreFirstFiled());
}

}  // namespace
}  // namespace ZkMobileBackup
