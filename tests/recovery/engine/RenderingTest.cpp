// Cells as texts: dumpBodyOfPayload:mode:.

#include <gmock/gmock.h>

#include "recovery/engine/payload_decoder.h"
#include "tests/recovery/engine/RecordTesting.h"

namespace ZkMobileBackup {
namespace {

using namespace testing;
using ::testing::ElementsAre;

/// The row of a live cell with these fields behind a NULL.
Texts rendered(const Field& field) {
    const auto parser = parserOnRecord(cell(1, {null(), field}));
    const auto payload = parser->decodeNormalHeaderOfPayload();
    if (payload == nullptr) return {"rejected"};
    const auto row = parser->dumpBodyOfPayload(payload.get(), engine::kLiveCell);
    return row ? row->texts() : Texts{"no row"};
}

struct Rendering {
    const char* name;
    std::uint64_t type;
    Bytes content;
    const char* text;
};

std::ostream& operator<<(std::ostream& out, const Rendering& rendering) {
    return out << rendering.name;
}

class RenderedCell : public ::testing::TestWithParam<Rendering> {};

TEST_P(RenderedCell, IsThisText) {
    EXPECT_THAT(rendered({GetParam().type, GetParam().content}), ElementsAre("NULL", GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Each, RenderedCell,
    ::testing::Values(Rendering{"Null", 0, {}, "NULL"},                                                            //
                      Rendering{"OneByteIsSigned", 1, {0xFF}, "-1"},                                               //
                      Rendering{"OneByteLargest", 1, {0x7F}, "127"},                                               //
                      Rendering{"OneByteSmallest", 1, {0x80}, "-128"},                                             //
                      Rendering{"TwoBytesAreUnsigned", 2, {0xFF, 0xFF}, "65535"},                                  //
                      Rendering{"TwoBytesBigEndian", 2, {0x01, 0x02}, "258"},                                      //
                      Rendering{"ThreeBytesAreFolded", 3, {0x00, 0x01, 0x00}, "16"},                               //
                      Rendering{"ThreeBytesWithASignedLastOne", 3, {0x00, 0x01, 0xFF}, "15"},                      //
                      Rendering{"ThreeBytesWithUnsignedFirstOnes", 3, {0xFF, 0xFF, 0x80}, "1048432"},              //
                      Rendering{"FourBytesAreSigned", 4, {0xFF, 0xFF, 0xFF, 0xFE}, "-2"},                          //
                      Rendering{"FourBytesSmallest", 4, {0x80, 0x00, 0x00, 0x00}, "-2147483648"},                  //
                      Rendering{"FourBytesLargest", 4, {0x7F, 0xFF, 0xFF, 0xFF}, "2147483647"},                    //
                      Rendering{"SixBytesAreFolded", 5, {0x00, 0x00, 0x00, 0x01, 0x02, 0x99}, "18"},               //
                      Rendering{"SixBytesWithASignedFifthOne", 5, {0x00, 0x00, 0x00, 0x01, 0xFF, 0x00}, "15"},     //
                      Rendering{"SixBytesWrap", 5, {0x0F, 0xFF, 0xFF, 0xFF, 0x7F, 0x00}, "111"},                   //
                      Rendering{"SixBytesLoseTheirTop", 5, {0xF0, 0x00, 0x00, 0x00, 0x05, 0x00}, "5"},             //
                      Rendering{"SixBytesArePrintedSigned", 5, {0x08, 0, 0, 0, 0, 0}, "-2147483648"},              //
                      Rendering{"EightBytesAreFolded", 6, {0, 0, 0, 0x01, 0x00, 0x02, 0x99, 0x99}, "258"},         //
                      Rendering{"EightBytesWithAnUnsignedTail", 6, {0, 0, 0, 0, 0xFF, 0xFF, 0, 0}, "65535"},       //
                      Rendering{"EightBytesWrap", 6, {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0}, "65279"},         //
                      Rendering{"EightBytesLoseTheirTop", 6, {0xFF, 0, 0, 0, 0, 0x07, 0, 0}, "7"},                 //
                      Rendering{"EightBytesArePrintedSigned", 6, {0x00, 0x80, 0, 0, 0, 0, 0, 0}, "-2147483648"},   //
                      Rendering{"RealIsItsFirstByte", 7, {0x40, 0x59, 0, 0, 0, 0, 0, 0}, "1073741824.000000"},     //
                      Rendering{"RealsFirstByteIsUnsigned", 7, {0xFF, 0, 0, 0, 0, 0, 0, 0}, "4278190080.000000"},  //
                      Rendering{"RealWithAFirstByteOfZero", 7, {0, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}, "0.000000"},     //
                      Rendering{"TheNumberZero", 8, {}, "0"},                                                      //
                      Rendering{"TheNumberOne", 9, {}, "1"},                                                       //
                      Rendering{"TextOfNothing", 13, {}, ""},                                                      //
                      Rendering{"Text", 19, {'a', 'b', 'c'}, "abc"},                                               //
                      Rendering{"BlobOfNothing", 12, {}, ""},                                                      //
                      Rendering{"BlobInUpperCaseDigits", 18, {0x00, 0xAB, 0x0F}, "00AB0F"}),
    [](const auto& info) { return info.param.name; });

/// A payload over the record's bytes with cells made by hand.
struct HandMadePayload {
    std::shared_ptr<DlxSQLiteParser> parser = parserOnRecord({0x11, 0x22, 0x33, 0x44});
    PayloadObject payload;

    explicit HandMadePayload(std::vector<PayloadCell> cells) {
        payload.setRowid(77);
        payload.cellList() = std::move(cells);
    }
    std::optional<Texts> row(std::int64_t mode = engine::kLiveCell) {
        const auto row = parser->dumpBodyOfPayload(&payload, mode);
        return row ? std::optional(row->texts()) : std::nullopt;
    }
};

TEST(Rendering, LiveRowHasOneElementACell) {
    EXPECT_THAT(HandMadePayload({{1, 0, 1}, {1, 1, 1}, {1, 2, 1}}).row(), Texts({"17", "34", "51"}));
}

TEST(Rendering, RowidReplacesTheFirstCellOfALiveRow) {
    HandMadePayload made({{1, 0, 1}, {1, 1, 1}, {1, 2, 1}});
    made.payload.setIgnoreFirstFiled(true);
    EXPECT_EQ(made.row(), Texts({"77", "34", "51"}));
}

TEST(Rendering, RowidIsPrintedSigned) {
    HandMadePayload made({{0, 0, 0}, {1, 1, 1}});
    made.payload.setIgnoreFirstFiled(true);
    made.payload.setRowid(~std::uint64_t{0});
    EXPECT_EQ(made.row(), Texts({"-1", "34"}));
    made.payload.setRowid(std::uint64_t{1} << 63U);
    EXPECT_EQ(made.row(), Texts({"-9223372036854775808", "34"}));
}

TEST(Rendering, CarvedRowStartsWithMinusOneAndKeepsItsFirstCell) {
    for (const std::int64_t mode : {engine::kFreeblockRecord, engine::kUnallocatedRecord}) {
        HandMadePayload made({{1, 0, 1}, {1, 1, 1}});
        EXPECT_EQ(made.row(mode), Texts({"-1", "17", "34"}));
        made.payload.setIgnoreFirstFiled(true);
        EXPECT_EQ(made.row(mode), Texts({"-1", "17", "34"}));
    }
}

TEST(Rendering, CellOfAnInvalidTypeDiscardsTheWholeRow) {
    for (const std::int32_t invalid : {10, 11, 14, 1000, -1, -2147483647}) {
        EXPECT_EQ(HandMadePayload({{1, 0, 1}, {invalid, 1, 0}, {1, 1, 1}}).row(), std::nullopt) << invalid;
        EXPECT_EQ(HandMadePayload({{1, 0, 1}, {invalid, 1, 0}}).row(engine::kUnallocatedRecord), std::nullopt);
    }
}

TEST(Rendering, RowBehindADiscardedOneHasOnlyItsOwnCells) {
    HandMadePayload made({{1, 0, 1}, {10, 1, 0}});
    ASSERT_EQ(made.row(), std::nullopt);
    made.payload.cellList() = {{1, 1, 1}};
    EXPECT_EQ(made.row(), Texts({"34"}));
}

TEST(Rendering, UncountedCellOfADecodedHeaderMakesTheRowMissing) {
    const auto parser = parserOnRecord({0x04, 0x01, 0x04, 0x08, 0x09, 0x0B});  // two numbers, then type 11
    const auto payload = parser->decodeNormalHeaderOfPayload();
    ASSERT_NE(payload, nullptr);
    EXPECT_EQ(payload->cellCount(), 2);
    EXPECT_EQ(parser->dumpBodyOfPayload(payload.get(), engine::kLiveCell), std::nullopt);
}

TEST(Rendering, CellPastTheEndOfTheImageIsTheEmptyTextWhateverItsType) {
    for (const std::int32_t type : {0, 1, 7, 8, 9, 10, 12, 13, 99}) {
        EXPECT_EQ(HandMadePayload({{1, 0, 1}, {type, 100000, 4}}).row(), Texts({"17", ""})) << type;
    }
}

TEST(Rendering, PastTheEndBeginsBehindTheLastByte) {
    HandMadePayload made({{8, 0, 0}});
    made.payload.cellList()[0].setOffset(
        static_cast<std::int32_t>(made.parser->sqliteReader()->dbEnd() - kRecordPosition));
    EXPECT_EQ(made.row(), Texts({"0"}));
    made.payload.cellList()[0].setOffset(made.payload.cellList()[0].offset() + 1);
    EXPECT_EQ(made.row(), Texts({""}));
}

TEST(Rendering, CellOfNoSizeThatEndsTheImageIsTheEmptyText) {
    HandMadeDatabase database = databaseWithRecord(cell(1, {number8(5), {9, {}}}));
    database.image.resize(kRecordPosition + 6);  // up to the record's last byte
    const auto parser = parserAt(database, 2, kRecordOffset);
    const auto payload = parser->decodeNormalHeaderOfPayload();
    ASSERT_NE(payload, nullptr);
    EXPECT_THAT(parser->dumpBodyOfPayload(payload.get(), engine::kLiveCell)->texts(), ElementsAre("5", ""));
}

TEST(Rendering, NumberCutByTheEndOfTheImageTakesZeros) {
    HandMadeDatabase database = databaseWithRecord({0x01, 0x02, 0xFF});
    database.image.resize(kRecordPosition + 2);
    const auto parser = parserAt(database, 2, kRecordOffset);
    PayloadObject payload;
    payload.cellList() = {{4, 0, 4}, {2, 1, 2}, {3, 1, 3}, {6, 1, 8}};
    EXPECT_THAT(parser->dumpBodyOfPayload(&payload, engine::kLiveCell)->texts(),
                ElementsAre("16908288", "512", "8192", "0"));
}

TEST(Rendering, CellBeforeTheImageReadsAsZeros) {
    EXPECT_EQ(HandMadePayload({{1, -5000, 1}, {13, -5000, 3}}).row(), Texts({"0", ""}));
}

TEST(Rendering, OffsetsCountFromTheCursor) {
    HandMadePayload made({{1, 0, 1}});
    made.payload.setBase(0);
    made.parser->sqliteReader()->setDbCurOffset(kRecordPosition + 2);
    EXPECT_EQ(made.row(), Texts({"51"}));
    EXPECT_EQ(made.payload.mappedData(), kRecordPosition + 2);
}

TEST(Rendering, LeavesTheCursorWhereItIs) {
    HandMadePayload made({{1, 0, 1}, {13, 0, 2}});
    made.row();
    EXPECT_EQ(made.parser->sqliteReader()->dbCurOffset(), kRecordPosition);
}

TEST(Rendering, WithoutAReaderSetsAnError) {
    const auto parser = parserWithoutReader();
    PayloadObject payload;
    EXPECT_EQ(parser->dumpBodyOfPayload(&payload, engine::kLiveCell), std::nullopt);
    EXPECT_EQ(parser->lastError(), "Invaid parameter:DlxSQLiteParser::dumpBodyOfPayload");
}

}  // namespace
}  // namespace ZkMobileBackup
