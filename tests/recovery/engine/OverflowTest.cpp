// Overflow chains, and splicing them into the image.

#include <cstring>
#include <gmock/gmock.h>

#include "recovery/engine/byte_image.h"
#include "tests/recovery/engine/RecordTesting.h"

namespace ZkMobileBackup {
namespace {

using namespace testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using PageList = std::vector<std::uint32_t>;

/// A database of pages of 64 bytes whose second page ends with the number of an overflow page.
HandMadeDatabase databaseWithChain(std::uint32_t pages, const PageList& chain) {
    HandMadeDatabase database(64, pages);
    database.put32(database.end(2) - 4, chain.front());
    for (std::size_t i = 0; i + 1 < chain.size(); ++i) database.put32(database.start(chain[i]), chain[i + 1]);
    return database;
}

/// The chain of a record on the second page.
PageList chainIn(const HandMadeDatabase& database) {
    PayloadObject payload;
    parserAt(database, 2, 0)->decodeOverFlowListOfPayload(&payload);
    return payload.overFlowPageList();
}

TEST(OverflowChain, IsListedInItsOrder) {
    EXPECT_THAT(chainIn(databaseWithChain(8, {5, 3, 8, 4, 0})), ElementsAre(5, 3, 8, 4));
}

TEST(OverflowChain, BeginsWithTheLastFourBytesOfThePageWhereverTheRecordIs) {
    HandMadeDatabase database = databaseWithChain(8, {5, 0});
    database.put32(database.start(2) + 20, 7);  // where a local part of 20 bytes would end
    EXPECT_THAT(chainIn(database), ElementsAre(5));
}

TEST(OverflowChain, BeginsAtTheLimitInForceAndNotAtThePagesOwn) {
    HandMadeDatabase database = databaseWithChain(8, {5, 0});
    database.put32(database.end(6) - 4, 7);
    const auto parser = parserAt(database, 2, 0);
    parser->sqliteReader()->setDbCurPageLimit(static_cast<std::int64_t>(database.end(6)));
    PayloadObject payload;
    parser->decodeOverFlowListOfPayload(&payload);
    EXPECT_THAT(payload.overFlowPageList(), ElementsAre(7));
}

TEST(OverflowChain, PagesZeroAndOneEndIt) {
    EXPECT_THAT(chainIn(databaseWithChain(8, {0})), IsEmpty());
    EXPECT_THAT(chainIn(databaseWithChain(8, {1})), IsEmpty());
    EXPECT_THAT(chainIn(databaseWithChain(8, {2, 1})), ElementsAre(2));
    EXPECT_THAT(chainIn(databaseWithChain(8, {5, 0})), ElementsAre(5));
}

TEST(OverflowChain, NumberAboveThePageCountEndsItWithoutAnError) {
    EXPECT_THAT(chainIn(databaseWithChain(8, {8, 0})), ElementsAre(8));
    EXPECT_THAT(chainIn(databaseWithChain(8, {9})), IsEmpty());
    const auto parser = parserAt(databaseWithChain(8, {5, 9}), 2, 0);
    PayloadObject payload;
    parser->decodeOverFlowListOfPayload(&payload);
    EXPECT_THAT(payload.overFlowPageList(), ElementsAre(5));
    EXPECT_EQ(parser->lastError(), std::nullopt);
}

TEST(OverflowChain, PageCountIsTheTruncatedOneAlsoWhereTheFileHasMorePages) {
    HandMadeDatabase database = databaseWithChain(8, {5, 7, 0});
    EXPECT_THAT(chainIn(database), ElementsAre(5, 7));
    database.put32(28, 0x10006);  // 65542 pages, 6 of them in sixteen bits
    EXPECT_THAT(chainIn(database), ElementsAre(5));
}

TEST(OverflowChain, PageThatBeginsTooCloseToTheEndOfTheImageIsTheLastOne) {
    HandMadeDatabase database = databaseWithChain(8, {8, 5, 0});
    // The number of page 8 must end before the last byte.
    database.image.resize(database.start(8) + 5);
    EXPECT_THAT(chainIn(database), ElementsAre(8, 5));
    database.image.resize(database.start(8) + 4);
    EXPECT_THAT(chainIn(database), ElementsAre(8));
}

TEST(OverflowChain, PageOutsideTheImageIsTheLastOne) {
    HandMadeDatabase database = databaseWithChain(4, {900});
    database.put32(28, 1000);
    EXPECT_THAT(chainIn(database), ElementsAre(900));
}

/// What is made of a chain of `length` pages, and the error that it leaves.
PageList longChain(std::uint32_t length, std::optional<std::string>& error) {
    constexpr std::uint32_t kFirst = 20;
    HandMadeDatabase database(8, kFirst + length);
    for (std::uint32_t page = kFirst; page < kFirst + length - 1; ++page) {
        database.put32(database.start(page), page + 1);
    }
    database.put32(database.end(kFirst - 1) - 4, kFirst);
    const auto parser = parserAt(database, kFirst - 1, 0);
    PayloadObject payload;
    parser->decodeOverFlowListOfPayload(&payload);
    error = parser->lastError();
    return payload.overFlowPageList();
}

constexpr const char* kNoMoreSpace = "No more space for overflow pages:DlxSQLiteParser::decodeOverFlowListOfPayload";

TEST(OverflowChain, OfTenThousandPagesIsFollowed) {
    std::optional<std::string> error;
    EXPECT_THAT(longChain(10000, error), SizeIs(10000));
    EXPECT_EQ(error, std::nullopt);
}

TEST(OverflowChain, WithoutAnEndInTenThousandLinksIsGivenUpWithAnError) {
    std::optional<std::string> error;
    EXPECT_THAT(longChain(10001, error), IsEmpty());
    EXPECT_EQ(error, kNoMoreSpace);
}

TEST(OverflowChain, ThatLeadsInACircleHasNoEnd) {
    const std::vector<PageList> circles = {{5, 5}, {5, 6, 5}, {3, 4, 5, 6, 7, 5}, {3, 4, 5, 6, 7, 8, 3}};
    for (const PageList& circle : circles) {
        const auto parser = parserAt(databaseWithChain(8, circle), 2, 0);
        PayloadObject payload;
        parser->decodeOverFlowListOfPayload(&payload);
        EXPECT_THAT(payload.overFlowPageList(), IsEmpty());
        EXPECT_EQ(parser->lastError(), kNoMoreSpace);
    }
}

TEST(OverflowChain, NeedsAPayloadAndAReader) {
    PayloadObject payload;
    parserWithoutReader()->decodeOverFlowListOfPayload(&payload);
    EXPECT_THAT(payload.overFlowPageList(), IsEmpty());
    parserAt(databaseWithChain(8, {5, 0}), 2, 0)->decodeOverFlowListOfPayload(nullptr);
}

/// Pages of 64 bytes, each byte telling its page and its offset.
HandMadeDatabase tellingDatabase(std::uint32_t pages) {
    HandMadeDatabase database(64, pages);
    for (std::uint32_t page = 2; page <= pages; ++page) {
        for (std::size_t i = 0; i < 64; ++i) {
            database.put8(database.start(page) + i, static_cast<unsigned>((page * 37 + i) & 0xFFU));
        }
    }
    return database;
}

Bytes imageOf(DlxSQLiteParser& parser) {
    const engine::ByteImage& image = parser.sqliteReader()->image();
    const auto bytes = image.bytes(0, image.size());
    return {bytes.begin(), bytes.end()};
}

/// Splices the pages for a record at the start of page 2 and returns the parser.
std::shared_ptr<DlxSQLiteParser> spliced(const HandMadeDatabase& database, const PageList& pages,
                                         PayloadObject& payload) {
    const auto parser = parserAt(database, 2, 10);
    payload.overFlowPageList() = pages;
    parser->dumpBodyOfPayload(&payload, 0);
    return parser;
}

TEST(Splicing, ContentReadsOnFromPageToPage) {
    PayloadObject payload;
    const HandMadeDatabase database = tellingDatabase(8);
    const auto parser = spliced(database, {6}, payload);
    const Bytes after = imageOf(*parser);
    const auto local = static_cast<std::ptrdiff_t>(database.end(2) - 4);
    const auto source = static_cast<std::ptrdiff_t>(database.start(6) + 4);
    // The whole content of page 6 stands where the number of the page stood, and over what follows.
    EXPECT_TRUE(std::equal(after.begin() + local, after.begin() + local + 60, database.image.begin() + source));
}

TEST(Splicing, TellsWhereTheContentBeginsAndEnds) {
    PayloadObject payload;
    spliced(tellingDatabase(8), {6, 7}, payload);
    EXPECT_EQ(payload.mappedData(), 64 + 10);
    EXPECT_EQ(payload.mappedDataEndpoint(), 128 - 4 + 2 * 60);
}

TEST(Splicing, WithoutOverflowPagesTheContentEndsWithThePageAndNothingChanges) {
    PayloadObject payload;
    const HandMadeDatabase database = tellingDatabase(8);
    const auto parser = spliced(database, {}, payload);
    EXPECT_EQ(payload.mappedData(), 64 + 10);
    EXPECT_EQ(payload.mappedDataEndpoint(), 128);
    EXPECT_EQ(imageOf(*parser), database.image);
}

TEST(Splicing, LeavesTheCursorWhereItIs) {
    PayloadObject payload;
    const auto parser = spliced(tellingDatabase(8), {6, 7}, payload);
    EXPECT_EQ(parser->sqliteReader()->dbCurOffset(), 64 + 10);
    EXPECT_EQ(parser->sqliteReader()->dbCurPageOffset(), 64);
    EXPECT_EQ(parser->sqliteReader()->dbCurPageLimit(), 128);
}

class SplicedPages : public ::testing::TestWithParam<PageList> {};

/// A plain copy of one page's content after the other.
TEST_P(SplicedPages, ChangeTheImageOnePageAfterTheOther) {
    const HandMadeDatabase database = tellingDatabase(8);
    Bytes expected = database.image;
    expected.resize(expected.size() + 1000);  // room for what is cut off
    std::size_t destination = database.end(2) - 4;
    for (const std::uint32_t page : GetParam()) {
        std::memmove(expected.data() + destination, expected.data() + database.start(page) + 4, 60);
        std::fill(expected.begin() + static_cast<std::ptrdiff_t>(database.image.size()), expected.end(), 0);
        destination += 60;
    }
    expected.resize(database.image.size());
    PayloadObject payload;
    EXPECT_EQ(imageOf(*spliced(database, GetParam(), payload)), expected);
}

INSTANTIATE_TEST_SUITE_P(Each, SplicedPages,
                         ::testing::Values(PageList{3},           // the very next page: both ranges overlap
                                           PageList{6, 7},        //
                                           PageList{6, 3},        // page 3 has been overwritten when it is read
                                           PageList{3, 4, 5, 6},  //
                                           PageList{2},           // the record's own page
                                           PageList{5, 2, 6, 3, 4, 8, 7, 5, 6},  // past the end of the image
                                           PageList{12},                         // outside the image: zeros
                                           PageList{6, 12, 7}));

TEST(Splicing, ReadsZerosWhereTheLastPageIsCut) {
    HandMadeDatabase database = tellingDatabase(8);
    database.image.resize(database.start(8) + 14);
    PayloadObject payload;
    const Bytes after = imageOf(*spliced(database, {8}, payload));
    const std::size_t local = database.end(2) - 4;
    EXPECT_EQ(after[local + 9], database.image[database.start(8) + 13]);
    for (std::size_t i = 10; i < 60; ++i) EXPECT_EQ(after[local + i], 0) << i;
    EXPECT_EQ(after[local + 60], database.image[local + 60]);
}

TEST(Splicing, IsSeenByWhateverIsReadLater) {
    HandMadeDatabase database(512, 6);
    const std::string longText = std::string(300, 'a') + std::string(508, 'b');
    const Bytes spilling = cell(1, {null(), text(longText)});
    // 300 bytes of the text fit; the others are the content of page 5.
    const std::size_t offset = 512 - 4 - (spilling.size() - 508);
    database.putInPage(2, offset, Bytes(spilling.begin(), spilling.end() - 508));
    database.put32(database.end(2) - 4, 5);
    database.putInPage(5, 4, Bytes(508, 'b'));
    const Bytes other = cell(9, {number8(1), number8(2)});
    database.putInPage(3, 50, other);  // a live cell that the splice writes over

    const auto parser = parserAt(database, 2, static_cast<std::int64_t>(offset));
    const auto payload = parser->decodeNormalHeaderOfPayload();
    ASSERT_NE(payload, nullptr);
    const auto row = parser->dumpBodyOfPayload(payload.get(), 0);
    ASSERT_TRUE(row.has_value());
    EXPECT_THAT(row->texts(), ElementsAre("NULL", longText));

    parser->sqliteReader()->setDbCurOffset(1024 + 50);
    parser->sqliteReader()->setDbCurPageOffset(1024);
    parser->sqliteReader()->setDbCurPageLimit(1536);
    EXPECT_EQ(parser->decodeNormalHeaderOfPayload(), nullptr);
    EXPECT_EQ(parser->dumpText(1024 + 50, 3, parser->sqliteReader()->dbEnd()), "bbb");
}

}  // namespace
}  // namespace ZkMobileBackup
