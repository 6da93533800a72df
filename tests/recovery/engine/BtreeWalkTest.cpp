#include <algorithm>
#include <gtest/gtest.h>

#include "base/Log.h"
#include "tests/recovery/engine/HandMadeDatabase.h"

namespace ZkMobileBackup {
namespace {

using testing::Bytes;
using testing::cell;
using testing::HandMadeDatabase;
using testing::number8;
using testing::text;
using testing::Texts;

constexpr std::uint16_t kPageSize = 512;

Bytes twoTexts(std::uint64_t rowid, const std::string& first, const std::string& second) {
    return cell(rowid, {text(first), text(second)});
}

/// Page 1 names the table t (a REAL, b REAL), which nothing is carved for, with its root at page 2.
HandMadeDatabase databaseOf(std::uint32_t pages, std::uint16_t pageSize = kPageSize) {
    HandMadeDatabase database(pageSize, pages);
    database.schema({{"t", 2, "CREATE TABLE t (a REAL, b REAL)"}});
    return database;
}

std::vector<Texts> rowsOf(const HandMadeDatabase& database) {
    return testing::liveRows(*database.parsed(), 1);
}

// ---- Leaf pages ----

TEST(LeafPage, GivesItsCellsInTheOrderOfTheirPointers) {
    HandMadeDatabase database = databaseOf(2);
    database.leaf(2, {twoTexts(1, "a", "b"), twoTexts(2, "c", "d")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}, {"c", "d"}}));
    std::swap_ranges(&database.image[512 + 8], &database.image[512 + 10], &database.image[512 + 10]);
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"c", "d"}, {"a", "b"}}));
}

TEST(LeafPage, EndsAtAPointerOfZero) {
    HandMadeDatabase database = databaseOf(2);
    database.leaf(2, {twoTexts(1, "a", "b"), twoTexts(2, "c", "d"), twoTexts(3, "e", "f")});
    database.put16(512 + 8 + 2, 0);
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}}));
}

TEST(LeafPage, PassesOverCellsThatAreRejected) {
    HandMadeDatabase database = databaseOf(2);
    const auto last = database.leaf(2, {twoTexts(1, "a", "b"), twoTexts(2, "c", "d")});
    database.put16(512 + 8, last + 1);  // into the middle of the second cell
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"c", "d"}}));
}

TEST(LeafPage, GivesACellThatTwoPointersNameTwice) {
    HandMadeDatabase database = databaseOf(2);
    const auto only = database.leaf(2, {twoTexts(1, "a", "b")});
    database.put16(512 + 3, 2);
    database.put16(512 + 10, only);
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}, {"a", "b"}}));
}

TEST(LeafPage, ReadsPointersPastThePageSizeAsZero) {
    constexpr unsigned kOnNextPage = 512 + 8;
    HandMadeDatabase database = databaseOf(3);
    database.leaf(2, {});
    database.put16(512 + 3, 0xFFFF);
    for (std::size_t at = 512 + 8; at <= 1024; at += 2) database.put16(at, kOnNextPage);
    database.putInPage(3, 8, twoTexts(1, "a", "b"));
    EXPECT_EQ(rowsOf(database).size(), (512U - 8U) / 2);
}

TEST(LeafPage, FollowsAPointerPastThePagesEnd) {
    HandMadeDatabase database = databaseOf(3);
    database.leaf(2, {twoTexts(1, "a", "b")});
    database.putInPage(3, 8, twoTexts(2, "next", "page"));
    database.put16(512 + 8, 512 + 8);
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"next", "page"}}));
}

TEST(LeafPage, WithoutCellsGivesNoRows) {
    HandMadeDatabase database = databaseOf(2);
    database.leaf(2, {});
    EXPECT_TRUE(rowsOf(database).empty());
}

TEST(LeafPage, OfAKeyTableShowsTheRowidForTheFirstCell) {
    HandMadeDatabase database(kPageSize, 2);
    database.schema({{"t", 2, "CREATE TABLE t (id REAL PRIMARY KEY, b REAL)"}});
    database.leaf(2, {twoTexts(77, "not shown", "b")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"77", "b"}}));
}

TEST(LeafPage, ReportsAPageOfAnotherTypeToTheLog) {
    Texts lines;
    setLogSink([&lines](std::string_view line) { lines.emplace_back(line); });
    const auto parser = databaseOf(2).parser();
    parser->sqliteReader()->setDbCurOffset(512);
    EXPECT_TRUE(parser->parserLeafNodeOfTable(parser->createSQLiteMasterTable().get()));
    setLogSink({});
    EXPECT_EQ(lines, (Texts{"parser error"}));
}

TEST(LeafPage, LeavesTheCursorWhereTheScanEnds) {
    HandMadeDatabase database = databaseOf(2);
    database.leaf(2, {});
    const auto parser = database.parser();
    const auto table = parser->createTableOfFreePage(2);
    parser->sqliteReader()->setDbCurPageOffset(512);
    parser->sqliteReader()->setDbCurPageLimit(1024);
    parser->sqliteReader()->setDbCurOffset(512);
    EXPECT_TRUE(parser->parserLeafNodeOfTable(table.get()));
    EXPECT_EQ(parser->sqliteReader()->dbCurOffset(), 1024 - 2);
}

TEST(LeafCell, OfAnInvalidTypeGivesNoRowButIsLive) {
    HandMadeDatabase database = databaseOf(3);
    // The type 10 ends the header with a body of 0 bytes, so that the header alone is the payload.
    const auto offset = database.leaf(2, {{4, 1, 4, 0, 0, 10}});
    const auto parser = database.parser();
    parser->sqliteReader()->setDbCurPageOffset(512);
    parser->sqliteReader()->setDbCurPageLimit(1024);
    const auto table = parser->createSQLiteMasterTable();
    EXPECT_TRUE(parser->parserPayloadOfAtLeafNodeOfTable(table.get(), offset));
    EXPECT_TRUE(table->rowList().empty());
}

TEST(LeafCell, FailsWithoutAReader) {
    const auto parser = DlxSQLiteParser::initWithDBPath("/no/such/file");
    RawTableObject table;
    EXPECT_FALSE(parser->parserPayloadOfAtLeafNodeOfTable(&table, 8));
    EXPECT_EQ(parser->lastError(), "Invaid parameter:DlxSQLiteParser::parserPayloadOfAtLeafNodeOfTable");
    EXPECT_FALSE(parser->parserInteriorNodeOfTable(&table));
    EXPECT_EQ(parser->lastError(), "Invaid parameter:DlxSQLiteParser::parserInteriorNodeOfTable");
    EXPECT_FALSE(parser->parserNodeOfTable(&table));
    EXPECT_EQ(parser->lastError(), "Invaid parameter:DlxSQLiteParser::parserNodeOfTable");
}

// ---- Interior pages ----

TEST(InteriorPage, WalksItsChildrenAndTheRightmostOneLast) {
    HandMadeDatabase database = databaseOf(5);
    database.interior(2, {4, 3}, 5);
    database.leaf(3, {twoTexts(1, "three", "x")});
    database.leaf(4, {twoTexts(2, "four", "x")});
    database.leaf(5, {twoTexts(3, "five", "x")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"four", "x"}, {"three", "x"}, {"five", "x"}}));
}

TEST(InteriorPage, WithoutCellsHasTheRightmostChildAlone) {
    HandMadeDatabase database = databaseOf(3);
    database.interior(2, {}, 3);
    database.leaf(3, {twoTexts(1, "a", "b")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}}));
}

TEST(InteriorPage, PassesOverChildrenOfOtherTypesAndOutsideTheImage) {
    HandMadeDatabase database = databaseOf(4);
    database.interior(2, {3, 0, 0xFFFFFFFF, 9, 1}, 4);
    database.put8(database.start(3), 2);  // an index page
    database.leaf(4, {twoTexts(1, "a", "b")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}}));
}

TEST(InteriorPage, WrapsTheStartOfAPageAt32Bits) {
    HandMadeDatabase database = databaseOf(3);
    database.interior(2, {}, 0x00800000 + 3);  // 512 times 2^23 is 2^32
    database.leaf(3, {twoTexts(1, "a", "b")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}}));
}

TEST(InteriorPage, WrapsARootNumberAt32Bits) {
    HandMadeDatabase database(kPageSize, 2);
    // A rootpage of four bytes, type 4: 0x00800002.
    database.leaf(1, {cell(1, {text("table"),
                               text("t"),
                               text("t"),
                               {4, {0x00, 0x80, 0x00, 0x02}},
                               text("CREATE TABLE t (a REAL, b REAL)")})});
    database.leaf(2, {twoTexts(1, "a", "b")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}}));
}

TEST(InteriorPage, TakesAChildThatBeginsBeforeTheImagesLastByteOnly) {
    HandMadeDatabase database = databaseOf(3);
    database.interior(2, {}, 3);
    database.put8(database.start(3), 13);
    database.image.resize(database.start(3) + 1);  // the child begins at the last byte
    const auto parser = database.parsed();
    EXPECT_TRUE(testing::liveRows(*parser, 1).empty());
    EXPECT_EQ(parser->sqliteReader()->dbCurOffset(), static_cast<std::int64_t>(database.start(3)));
    database.image.resize(database.start(3) + 2);
    const auto longer = database.parsed();
    EXPECT_EQ(longer->sqliteReader()->dbCurOffset(), static_cast<std::int64_t>(database.end(3)) - 2);  // was scanned
}

TEST(InteriorPage, LeavesThePageLimitOfASkippedChild) {
    HandMadeDatabase database = databaseOf(3);
    database.interior(2, {}, 9);
    const auto parser = database.parsed();
    EXPECT_EQ(parser->sqliteReader()->dbCurPageOffset(), 8 * kPageSize);
    EXPECT_EQ(parser->sqliteReader()->dbCurPageLimit(), 9 * kPageSize);
}

TEST(InteriorPage, ReadsFieldsPastThePageSizeAsZero) {
    HandMadeDatabase database = databaseOf(4);
    database.interior(2, {3}, 4);
    database.put16(512 + 12, 510);  // the child's number would reach into the next page
    database.put32(512 + 510, 0x00000003);
    database.put8(512 * 2 + 1, 3);
    database.leaf(4, {twoTexts(1, "a", "b")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}}));
}

TEST(InteriorPage, HandsALeafPageToTheLeafWalker) {
    HandMadeDatabase database = databaseOf(2);
    database.leaf(2, {twoTexts(1, "a", "b")});
    const auto parser = database.parser();
    const auto table = parser->createTableOfFreePage(2);
    parser->sqliteReader()->setDbCurPageOffset(512);
    parser->sqliteReader()->setDbCurOffset(512);
    EXPECT_TRUE(parser->parserInteriorNodeOfTable(table.get()));
    EXPECT_EQ(testing::rowsOf(table->deletedRowList()), (std::vector<Texts>{{"1", "b"}}));
    parser->sqliteReader()->setDbCurOffset(513);
    EXPECT_TRUE(parser->parserInteriorNodeOfTable(table.get()));
}

// ---- The schema's own interior pages ----

/// An entry of the schema as a cell.
Bytes schemaCell(std::uint64_t rowid, const std::string& name) {
    return cell(rowid, {text("table"), text(name), text(name), number8(0), text("CREATE TABLE x (a REAL)")});
}

Texts tableNames(const DlxSQLiteParser& parser) {
    Texts names;
    for (const auto& table : parser.tableList()) names.push_back(table->name().value());
    return names;
}

TEST(SchemaInteriorPage, OnPage1IsReadBehindTheFilesHeader) {
    HandMadeDatabase database(kPageSize, 3);
    database.interior(1, {2}, 3);
    database.leaf(2, {schemaCell(1, "two")});
    database.leaf(3, {schemaCell(2, "three")});
    EXPECT_EQ(tableNames(*database.parsed()), (Texts{"sqlite_master", "two", "three"}));
}

TEST(SchemaInteriorPage, OnAnyPageIsReadAsIfTheFilesHeaderLedIt) {
    HandMadeDatabase database(kPageSize, 4);
    database.interior(1, {}, 2);
    database.put8(512, 5);
    // The fields stand 100 bytes behind the page's start, the type byte does not; pointers count from the page's start.
    database.put16(512 + 103, 1);
    database.put32(512 + 108, 4);
    database.put16(512 + 112, 300);
    database.put32(512 + 300, 3);
    database.leaf(3, {schemaCell(1, "three")});
    database.leaf(4, {schemaCell(2, "four")});
    EXPECT_EQ(tableNames(*database.parsed()), (Texts{"sqlite_master", "three", "four"}));
}

TEST(SchemaInteriorPage, OfTheUsualFormBelowTheRootIsMisread) {
    HandMadeDatabase database(kPageSize, 4);
    database.interior(1, {}, 2);
    database.interior(2, {3}, 4);
    database.leaf(3, {schemaCell(1, "three")});
    database.leaf(4, {schemaCell(2, "four")});
    // 100 bytes behind its start the page has zeros: no cells, and the page number 0.
    EXPECT_EQ(tableNames(*database.parsed()), (Texts{"sqlite_master"}));
}

TEST(SchemaLeafPage, BelowTheRootIsReadFromThePagesStart) {
    HandMadeDatabase database(kPageSize, 2);
    database.interior(1, {}, 2);
    database.leaf(2, {schemaCell(1, "two")});
    EXPECT_EQ(tableNames(*database.parsed()), (Texts{"sqlite_master", "two"}));
}

// ---- Cycles and depth ----

TEST(PageCycle, EndsAtAPageThatIsItsOwnChild) {
    HandMadeDatabase database = databaseOf(3);
    database.interior(2, {2, 3}, 2);
    database.leaf(3, {twoTexts(1, "a", "b")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}}));
}

TEST(PageCycle, EndsAtTheRepeatedPageAndGoesOnBehindIt) {
    HandMadeDatabase database = databaseOf(5);
    database.interior(2, {3}, 4);
    database.interior(3, {2, 5}, 3);
    database.leaf(4, {twoTexts(1, "four", "x")});
    database.leaf(5, {twoTexts(2, "five", "x")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"five", "x"}, {"four", "x"}}));
}

TEST(PageCycle, IsKnownByThePagesStartNotByItsNumber) {
    HandMadeDatabase database = databaseOf(3);
    database.interior(2, {0x00800002}, 3);
    database.leaf(3, {twoTexts(1, "a", "b")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}}));
}

TEST(PageCycle, IsNoneWhereTwoBranchesNameOnePage) {
    HandMadeDatabase database = databaseOf(4);
    database.interior(2, {3, 3}, 3);
    database.interior(3, {}, 4);
    database.leaf(4, {twoTexts(1, "a", "b")});
    EXPECT_EQ(rowsOf(database).size(), 3U);
}

TEST(PageCycle, OfTheSchemaEnds) {
    HandMadeDatabase database(kPageSize, 2);
    database.interior(1, {1}, 2);
    database.leaf(2, {schemaCell(1, "two")});
    // Page 1 as a child begins with the file's magic text and is of no known type.
    EXPECT_EQ(tableNames(*database.parsed()), (Texts{"sqlite_master", "two"}));
}

TEST(PageChain, IsWalkedAsDeepAsTheFileHasPages) {
    constexpr std::uint32_t kPages = 60000;
    HandMadeDatabase database = databaseOf(kPages);
    for (std::uint32_t page = 2; page < kPages; ++page) database.interior(page, {}, page + 1);
    database.leaf(kPages, {twoTexts(1, "at the", "bottom")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"at the", "bottom"}}));
}

// ---- Limits ----

TEST(PageVisits, BeyondTheLimitEveryPageIsOfNoKnownType) {
    HandMadeDatabase database = databaseOf(5);
    database.interior(2, {3, 4}, 5);
    for (std::uint32_t page = 3; page <= 5; ++page) database.leaf(page, {twoTexts(page, "a", "b")});
    for (std::uint64_t visits = 0; visits <= 5; ++visits) {
        const auto parser = database.parser();
        parser->sqliteDBHeader()->setMaxPageVisits(visits);
        EXPECT_TRUE(parser->parser());
        // Page 1, the root, then a leaf each.
        const std::size_t rows = visits < 2 ? 0 : visits - 2;
        EXPECT_EQ(parser->tableList().size(), visits == 0 ? 1U : 2U);
        for (std::size_t table = 1; table < parser->tableList().size(); ++table) {
            EXPECT_EQ(testing::liveRows(*parser, table).size(), rows) << visits;
        }
    }
}

TEST(PageVisits, AreByDefault64APageAnd65536More) {
    EXPECT_EQ(HandMadeDatabase(512, 3).parser()->sqliteDBHeader()->maxPageVisits(), 64U * 3 + 65536);
    HandMadeDatabase cut(512, 3);
    cut.image.resize(512 * 2 + 1);
    EXPECT_EQ(cut.parser()->sqliteDBHeader()->maxPageVisits(), 64U * 3 + 65536);
}

TEST(PageVisits, EndAWalkThatWouldTakeForEver) {
    // Twenty pages that name the next one a hundred times each: 100^20 ways down.
    constexpr std::uint32_t kPages = 22;
    HandMadeDatabase database = databaseOf(kPages, 1024);
    for (std::uint32_t page = 2; page < kPages; ++page) {
        database.interior(page, std::vector<std::uint32_t>(100, page + 1), page + 1);
    }
    const auto parser = database.parser();
    EXPECT_TRUE(parser->parser());
    EXPECT_EQ(parser->tableList().size(), 2U);
}

TEST(PageSize, Of0Or1ReadsNothingAndEnds) {
    for (const unsigned pageSize : {0U, 1U}) {
        HandMadeDatabase database = databaseOf(3);
        database.leaf(2, {twoTexts(1, "a", "b")});
        database.freelist(2, 1);
        database.put16(16, pageSize);
        const auto parser = database.parser();
        EXPECT_TRUE(parser->parser());
        EXPECT_EQ(parser->tableList().size(), 1U);
        EXPECT_TRUE(testing::liveRows(*parser, 0).empty());
    }
}

TEST(PageSize, ThatIsOddIsUsedAsItStands) {
    HandMadeDatabase database(511, 3);
    database.schema({{"t", 3, "CREATE TABLE t (a REAL, b REAL)"}});
    database.leaf(3, {twoTexts(1, "a", "b")});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"a", "b"}}));
}

// ---- Spilled records ----

/// The payload of a record of one byte and a text, of the header {3, 1, two bytes}.
Bytes spillingPayload(const std::string& content) {
    return testing::record({number8(7), text(content)});
}

/// Puts a spilled record at the end of page `page`: its local part, the number of its first overflow page, and the rest
/// in a chain of pages.
std::uint16_t putSpilledCell(HandMadeDatabase& database, std::uint32_t page, std::size_t local, const Bytes& payload,
                             const std::vector<std::uint32_t>& chain) {
    const Bytes lead = testing::joined({testing::varint(payload.size()), testing::varint(1)});
    const auto offset = static_cast<std::uint16_t>(kPageSize - 4 - local - lead.size());
    const auto part = [&payload](std::size_t from, std::size_t length) {
        const std::size_t to = std::min(from + length, payload.size());
        return Bytes(payload.begin() + static_cast<std::ptrdiff_t>(std::min(from, to)),
                     payload.begin() + static_cast<std::ptrdiff_t>(to));
    };
    database.putInPage(page, offset, testing::joined({lead, part(0, local)}));
    database.put32(database.end(page) - 4, chain.front());
    for (std::size_t i = 0; i < chain.size(); ++i) {
        database.put32(database.start(chain[i]), i + 1 < chain.size() ? chain[i + 1] : 0);
        database.putInPage(chain[i], 4, part(local + i * (kPageSize - 4), kPageSize - 4));
    }
    database.put8(database.start(page), 13);
    database.put16(database.start(page) + 3, 1);
    database.put16(database.start(page) + 8, offset);
    return offset;
}

std::string longText(std::size_t length) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += static_cast<char>('a' + i % 23);
    return text;
}

TEST(SpilledRecord, IsReadThroughItsChainInAnyOrderOfPagesBehindIt) {
    const std::string content = longText(1200);
    HandMadeDatabase database = databaseOf(6);
    putSpilledCell(database, 2, 100, spillingPayload(content), {3, 5, 6});
    EXPECT_EQ(rowsOf(database), (std::vector<Texts>{{"7", content}}));
}

TEST(SpilledRecord, ChangesThePagesBehindItsOwnForThoseWhoReadThemLater) {
    const std::string content = longText(600);
    HandMadeDatabase database(kPageSize, 5);
    database.schema(
        {{"spilled", 2, "CREATE TABLE spilled (a REAL, b REAL)"}, {"under", 3, "CREATE TABLE under (a REAL, b REAL)"}});
    putSpilledCell(database, 2, 100, spillingPayload(content), {4});
    database.leaf(3, {twoTexts(1, "a", "b")});
    const auto parser = database.parsed();
    EXPECT_EQ(testing::liveRows(*parser, 1), (std::vector<Texts>{{"7", content}}));
    EXPECT_TRUE(testing::liveRows(*parser, 2).empty());
}

TEST(SpilledRecord, LeavesThePagesThatWereWalkedBefore) {
    const std::string content = longText(600);
    HandMadeDatabase database(kPageSize, 5);
    database.schema(
        {{"under", 3, "CREATE TABLE under (a REAL, b REAL)"}, {"spilled", 2, "CREATE TABLE spilled (a REAL, b REAL)"}});
    putSpilledCell(database, 2, 100, spillingPayload(content), {4});
    database.leaf(3, {twoTexts(1, "a", "b")});
    const auto parser = database.parsed();
    EXPECT_EQ(testing::liveRows(*parser, 1), (std::vector<Texts>{{"a", "b"}}));
    EXPECT_EQ(testing::liveRows(*parser, 2), (std::vector<Texts>{{"7", content}}));
}

TEST(SpilledRecord, CopiesAPageThatTheCopyBeforeHasChanged) {
    // The first copy covers page 3 and the head of page 4, so the second one takes page 3 as it is by then.
    HandMadeDatabase database = databaseOf(5);
    putSpilledCell(database, 2, 100, spillingPayload(std::string(1000, 'x')), {4, 3});
    database.putInPage(4, 4, Bytes(508, 'f'));
    database.putInPage(3, 4, Bytes(508, 's'));
    const auto rows = rowsOf(database);
    ASSERT_EQ(rows.size(), 1U);
    // 96 bytes are local: the header takes 4 of the hundred, the number 1.
    EXPECT_EQ(rows[0][1], std::string(95, 'x') + std::string(905, 'f'));
}

TEST(SpilledRecord, IntoItsOwnPageEnds) {
    HandMadeDatabase database = databaseOf(4);
    const std::string content = longText(600);
    putSpilledCell(database, 2, 100, spillingPayload(content), {3});
    database.put32(database.end(2) - 4, 2);  // the chain begins with the record's own page
    const auto rows = rowsOf(database);      // whose first bytes are no page number of this file
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0][0], "7");
    EXPECT_EQ(rows[0][1].substr(0, 95), content.substr(0, 95));
}

TEST(SpilledRecord, WhoseChainIsACircleHasNoChainAndAnErrorText) {
    HandMadeDatabase database = databaseOf(5);
    putSpilledCell(database, 2, 100, spillingPayload(longText(600)), {4});
    database.put32(database.start(4), 4);
    const auto parser = database.parser();
    const auto table = parser->createTableOfFreePage(2);
    parser->sqliteReader()->setDbCurPageOffset(512);
    parser->sqliteReader()->setDbCurPageLimit(1024);
    const auto offset = static_cast<std::uint16_t>(database.image[512 + 8] << 8 | database.image[512 + 9]);
    EXPECT_TRUE(parser->parserPayloadOfAtLeafNodeOfTable(table.get(), offset));
    EXPECT_EQ(parser->lastError(), "No more space for overflow pages:DlxSQLiteParser::decodeOverFlowListOfPayload");
}

TEST(SpilledRecord, IsCutAtTheEndOfTheImage) {
    const std::string content = longText(600);
    HandMadeDatabase database = databaseOf(3);
    putSpilledCell(database, 3, 100, spillingPayload(content), {2});
    database.put8(512, 0);
    database.schema({{"t", 3, "CREATE TABLE t (a REAL, b REAL)"}});
    const auto rows = rowsOf(database);
    ASSERT_EQ(rows.size(), 1U);
    // The last four bytes of the image take the head of the copy, and the rest has no place.
    EXPECT_EQ(rows[0][1], content.substr(0, 95 + 4));
}

TEST(SpilledRecord, ThatDoesNotEndItsPageTakesThePagesLastBytesForItsChain) {
    // A record at the page's end keeps the last four bytes, so the one before it has no chain.
    HandMadeDatabase database = databaseOf(5);
    const std::string content = longText(600);
    const Bytes payload = spillingPayload(content);
    const Bytes tail = twoTexts(2, "tail", "end");
    const Bytes local(payload.begin(), payload.begin() + 100);
    const Bytes lead = testing::joined({testing::varint(payload.size()), testing::varint(1)});
    database.leaf(2, {tail, testing::joined({lead, local, {0, 0, 0, 4}})});
    database.putInPage(4, 4, Bytes(payload.begin() + 100, payload.end()));
    const auto rows = rowsOf(database);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0], (Texts{"tail", "end"}));
    // Its text goes on over the number of its chain, which begins with a NUL.
    EXPECT_EQ(rows[1], (Texts{"7", content.substr(0, 95)}));
}

}  // namespace
}  // namespace ZkMobileBackup
