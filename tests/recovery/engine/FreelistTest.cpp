#include <algorithm>
#include <gtest/gtest.h>

#include "recovery/TableKeys.h"
#include "tests/recovery/engine/HandMadeDatabase.h"
#include "tests/support/DatabaseBuilder.h"
#include "tests/support/RecordingDelegate.h"

namespace ZkMobileBackup {
namespace {

using testing::Bytes;
using testing::cell;
using testing::HandMadeDatabase;
using testing::null;
using testing::text;
using testing::Texts;

constexpr std::uint16_t kPageSize = 512;
const std::string kTwoColumns = "CREATE TABLE t (a REAL, b REAL)";

/// A database of one two-column table without pages, and a freelist of trunk 3 that names the pages of `leaves`. Its
/// last byte lets every page type pass.
HandMadeDatabase databaseOf(const std::vector<std::uint32_t>& leaves, std::uint32_t pages = 8) {
    HandMadeDatabase database(kPageSize, pages);
    database.schema({{"t", 0, kTwoColumns}});
    database.freelist(3, static_cast<std::uint32_t>(leaves.size() + 1));
    database.trunk(3, 0, leaves);
    database.put8(database.image.size() - 1, 255);
    return database;
}

/// A cell of two columns.
Bytes pair(std::uint64_t rowid, const std::string& value) {
    return cell(rowid, {null(), text(value)});
}

std::vector<Texts> deletedOf(const HandMadeDatabase& database) {
    return testing::deletedRows(*database.parsed(), 1);
}

TEST(Freelist, GivesTheRowsOfAFreedLeafPageWithTheirRowids) {
    HandMadeDatabase database = databaseOf({4});
    database.leaf(4, {pair(17, "a"), pair(300, "b")});
    EXPECT_EQ(deletedOf(database), (std::vector<Texts>{{"17", "a"}, {"300", "b"}}));
}

TEST(Freelist, ShowsTheFirstCellWhereTheRowidIsNotPositiveIn32Bits) {
    // The first of four bytes is shifted by 42 bits in all, the last but one of five by 28: rowids whose low 32 bits
    // are zero, and negative.
    const Bytes rowids[] = {{0x88, 0x80, 0x80, 0x00}, {0x80, 0x80, 0x80, 0x88, 0x00}};
    for (const Bytes& rowid : rowids) {
        HandMadeDatabase database = databaseOf({4});
        const Bytes record = testing::record({text("x"), text("y")});
        database.leaf(4, {testing::joined({testing::varint(record.size()), rowid, record})});
        EXPECT_EQ(deletedOf(database), (std::vector<Texts>{{"x", "y"}}));
    }
}

TEST(Freelist, WalksTheTrunksInTheirOrder) {
    HandMadeDatabase database = databaseOf({4});
    database.trunk(3, 5, {4});
    database.trunk(5, 0, {6, 7});
    database.leaf(4, {pair(1, "four")});
    database.leaf(6, {pair(2, "six")});
    database.leaf(7, {pair(3, "seven")});
    EXPECT_EQ(deletedOf(database), (std::vector<Texts>{{"1", "four"}, {"2", "six"}, {"3", "seven"}}));
}

TEST(Freelist, GivesNothingForAPageOfAnotherType) {
    HandMadeDatabase database = databaseOf({4, 5, 0, 0xFFFFFFFF});
    database.leaf(4, {pair(1, "a")});
    database.put8(database.start(4), 10);
    EXPECT_TRUE(deletedOf(database).empty());
}

TEST(Freelist, WalksTheChildrenThatAFreedInteriorPageNames) {
    HandMadeDatabase database = databaseOf({4});
    database.interior(4, {5}, 6);
    database.leaf(5, {pair(1, "five")});
    database.leaf(6, {pair(2, "six")});
    EXPECT_EQ(deletedOf(database), (std::vector<Texts>{{"1", "five"}, {"2", "six"}}));
}

TEST(Freelist, WalksALivePageThatAFreedInteriorPageStillNames) {
    HandMadeDatabase database = databaseOf({4});
    database.schema({{"t", 5, kTwoColumns}});
    database.interior(4, {}, 5);
    database.leaf(5, {pair(9, "live")});
    const auto parser = database.parsed();
    EXPECT_EQ(testing::liveRows(*parser, 1), (std::vector<Texts>{{"NULL", "live"}}));
    EXPECT_EQ(testing::deletedRows(*parser, 1), (std::vector<Texts>{{"9", "live"}}));
}

TEST(Freelist, ComparesAPagesFirstByteWithTheFilesLastOne) {
    HandMadeDatabase database = databaseOf({4, 5});
    database.leaf(4, {pair(1, "leaf")});
    database.interior(5, {}, 4);
    const auto rowsWithLastByte = [&database](unsigned last) {
        database.put8(database.image.size() - 1, last);
        return deletedOf(database).size();
    };
    EXPECT_EQ(rowsWithLastByte(0), 0U);
    EXPECT_EQ(rowsWithLastByte(5), 0U);
    EXPECT_EQ(rowsWithLastByte(6), 1U);  // the interior page alone
    EXPECT_EQ(rowsWithLastByte(13), 1U);
    EXPECT_EQ(rowsWithLastByte(14), 2U);
    EXPECT_EQ(rowsWithLastByte(128), 2U);  // the bytes have no sign
    EXPECT_EQ(rowsWithLastByte(255), 2U);
}

TEST(Freelist, GivesRowsToTheLaterOfTwoTablesWithTheirNumberOfColumns) {
    HandMadeDatabase database = databaseOf({4});
    database.schema({{"t", 0, kTwoColumns},
                     {"u", 0, "CREATE TABLE u (x TEXT, y TEXT)"},
                     {"v", 0, "CREATE TABLE v (x TEXT, y TEXT, z TEXT)"}});
    database.leaf(4, {pair(1, "a")});
    const auto parser = database.parsed();
    EXPECT_TRUE(testing::deletedRows(*parser, 1).empty());
    EXPECT_EQ(testing::deletedRows(*parser, 2), (std::vector<Texts>{{"1", "a"}}));
    EXPECT_TRUE(testing::deletedRows(*parser, 3).empty());
}

TEST(Freelist, CountsTheFieldsOfAPagesFirstRowForAllOfThem) {
    HandMadeDatabase database = databaseOf({4});
    database.leaf(4, {pair(1, "a"), cell(2, {null(), text("b"), text("c")})});
    EXPECT_EQ(deletedOf(database), (std::vector<Texts>{{"1", "a"}, {"2", "b", "c"}}));
}

TEST(Freelist, DropsRowsThatNoTableHasTheNumberOfFieldsFor) {
    HandMadeDatabase database = databaseOf({4});
    // Five fields, as many as the schema table's columns: that table never takes any.
    database.leaf(4, {cell(1, {null(), null(), null(), null(), text("x")})});
    const auto parser = database.parsed();
    EXPECT_TRUE(testing::deletedRows(*parser, 0).empty());
    EXPECT_TRUE(testing::deletedRows(*parser, 1).empty());
    EXPECT_EQ(parser->tableList().size(), 2U);
}

TEST(Freelist, CarvesNothingInAFreedPage) {
    HandMadeDatabase database = databaseOf({4});
    database.schema({{"t", 0, "CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT, b TEXT)"}});
    database.leaf(4, {cell(1, {null(), text("a"), text("b")})});
    EXPECT_EQ(deletedOf(database), (std::vector<Texts>{{"1", "a", "b"}}));  // but thousands of zeros
}

TEST(Freelist, ReadsSpilledRecordsUnderTheLimitOfThePageWalkedLast) {
    // The table's root, page 2, is walked last; its last bytes name the chain, not those of the freed page 4.
    HandMadeDatabase database = databaseOf({4});
    database.schema({{"t", 2, kTwoColumns}});
    database.leaf(2, {pair(1, "live")});
    database.put32(database.end(2) - 4, 6);
    database.put32(database.end(4) - 4, 7);
    database.putInPage(6, 4, Bytes(508, 's'));
    const Bytes record = testing::record({null(), text(std::string(500, 'x'))});
    const Bytes lead = testing::joined({testing::varint(record.size()), {1}});
    database.putInPage(4, 100, testing::joined({lead, Bytes(record.begin(), record.begin() + 300)}));
    database.put8(database.start(4), 13);
    database.put16(database.start(4) + 3, 1);
    database.put16(database.start(4) + 8, 100);
    const auto parser = database.parsed();
    // The splice covers page 3, all but its last eight bytes, and leaves the record as it stands.
    const auto rows = testing::deletedRows(*parser, 1);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0][0], "1");
    EXPECT_EQ(rows[0][1].substr(0, 10), "xxxxxxxxxx");
    EXPECT_EQ(parser->sqliteReader()->dbCurPageLimit(), static_cast<std::int64_t>(database.end(2)));
    EXPECT_EQ(parser->sqliteReader()->dbCurPageOffset(), static_cast<std::int64_t>(database.start(4)));
    EXPECT_EQ(parser->dumpText(static_cast<std::int64_t>(database.start(3)), 8, 4095), "ssssssss");
}

TEST(Freelist, OfNoPagesSetsAnErrorTextAndTheRunSucceeds) {
    HandMadeDatabase database = databaseOf({});
    for (const auto& [first, count] : {std::pair{0U, 5U}, {1U, 5U}, {3U, 0U}}) {
        database.freelist(first, count);
        const auto parser = database.parser();
        EXPECT_TRUE(parser->parser());
        EXPECT_EQ(parser->lastError(), "No Free Page:DlxSQLiteParser::parserFreePageList");
        EXPECT_FALSE(parser->parserFreePageList());
    }
}

TEST(Freelist, FailsWithoutAReader) {
    const auto parser = DlxSQLiteParser::initWithDBPath("/no/such/file");
    EXPECT_FALSE(parser->parserFreePageList());
    EXPECT_EQ(parser->lastError(), "Invaid parameter:DlxSQLiteParser::parserFreePageList");
}

TEST(Freelist, EndsAtATrunkOutsideTheImage) {
    HandMadeDatabase database = databaseOf({4});
    database.trunk(3, 100, {4});
    database.leaf(4, {pair(1, "a")});
    EXPECT_EQ(deletedOf(database).size(), 1U);
    database.freelist(0xFFFFFFFF, 1);
    EXPECT_TRUE(deletedOf(database).empty());
}

TEST(Freelist, StopsTheNumbersOfATrunkAtTheImagesEnd) {
    HandMadeDatabase database = databaseOf({});
    database.freelist(8, 1);
    database.trunk(8, 0, std::vector<std::uint32_t>(126, 4));
    database.put32(database.start(8) + 4, 0xFFFFFFFF);
    database.leaf(4, {pair(1, "a")});
    // Number j is read while 4 j + 12 is at most 511, the place of the last byte: up to 124.
    database.put8(database.image.size() - 1, 255);
    EXPECT_EQ(deletedOf(database).size(), 125U);
}

TEST(Freelist, EndsAtATrunkThatNamesItself) {
    HandMadeDatabase database = databaseOf({4});
    database.trunk(3, 3, {4});
    database.leaf(4, {pair(1, "a")});
    EXPECT_EQ(deletedOf(database).size(), 1U);
    database.trunk(3, 5, {4});
    database.trunk(5, 3, {4});
    EXPECT_EQ(deletedOf(database).size(), 2U);
    database.trunk(5, 0x00800003, {4});  // the same page under another number
    EXPECT_EQ(deletedOf(database).size(), 2U);
}

TEST(Freelist, EndsInAFreedPageThatIsItsOwnChild) {
    HandMadeDatabase database = databaseOf({4});
    database.interior(4, {4, 5}, 4);
    database.leaf(5, {pair(1, "five")});
    EXPECT_EQ(deletedOf(database), (std::vector<Texts>{{"1", "five"}}));
}

TEST(Freelist, SharesTheLimitOfVisitsWithTheWalk) {
    HandMadeDatabase database = databaseOf({4, 4, 4, 4});
    database.leaf(4, {pair(1, "a")});
    const auto parser = database.parser();
    parser->sqliteDBHeader()->setMaxPageVisits(3);  // page 1, then two of the four
    EXPECT_TRUE(parser->parser());
    EXPECT_EQ(testing::deletedRows(*parser, 1).size(), 2U);
}

TEST(Freelist, ReportsEachTrunkInItsShareOfALargerRun) {
    HandMadeDatabase database = databaseOf({4});
    database.schema({{"t", 0, kTwoColumns}, {"u", 0, kTwoColumns}, {"i", 0, "", "index"}});
    database.freelist(3, 7);
    database.trunk(3, 5, {4});
    database.trunk(5, 0, {});
    const auto parser = database.parser();
    RecordingDelegate delegate;
    parser->setSqliteParserDelegate(&delegate);
    parser->setDbIndex(4);
    EXPECT_TRUE(parser->parser());
    ASSERT_EQ(delegate.reports.size(), 3U + 2U);
    for (std::size_t trunk = 1; trunk <= 2; ++trunk) {
        const Dictionary& report = delegate.reports[2 + trunk];
        EXPECT_EQ(report.size(), 1U);
        // Three schema rows and seven free pages; the counter begins at the schema rows.
        const double share = (3.0 + static_cast<double>(trunk)) / 10.0 / 18.0;
        EXPECT_DOUBLE_EQ(report.find(kBackupProcessKey)->numberOr0(), share + (4.0 / 9.0 + 1.0 / 3.0));
    }
}

TEST(Freelist, ReportsZeroWhereNothingWasCounted) {
    HandMadeDatabase database = databaseOf({});
    const auto parser = database.parser();
    RecordingDelegate delegate;
    parser->setSqliteParserDelegate(&delegate);
    EXPECT_TRUE(parser->parserFreePageList());  // before any run, so that no table has been counted
    ASSERT_EQ(delegate.reports.size(), 1U);
    EXPECT_EQ(delegate.reports[0].find(kBackupProcessKey)->numberOr0(), 0);
}

TEST(Freelist, StopsBetweenTrunks) {
    HandMadeDatabase database = databaseOf({4});
    database.leaf(4, {pair(1, "a")});
    const auto parser = database.parser();
    parser->setBStop(true);
    RecordingDelegate delegate;
    parser->setSqliteParserDelegate(&delegate);
    EXPECT_TRUE(parser->parserFreePageList());
    EXPECT_TRUE(delegate.reports.empty());
}

TEST(FreePageTable, IsNamedAfterItsPage) {
    const auto parser = HandMadeDatabase(512, 1).parser();
    const auto table = parser->createTableOfFreePage(12);
    EXPECT_EQ(table->name(), "Free Page 12");
    EXPECT_EQ(table->pageNum(), 12);
    EXPECT_EQ(table->tableType(), 2);
    EXPECT_TRUE(table->filedList().empty());
    EXPECT_TRUE(table->filedTypeList().empty());
    EXPECT_EQ(table->filedCount(), 0);
    EXPECT_EQ(parser->createTableOfFreePage(0xFFFFFFFF)->pageNum(), 0xFFFFFFFF);
}

TEST(MatchedTable, IsTheLastOneOfThatCountAndNoneFor0OrLess) {
    HandMadeDatabase database = databaseOf({});
    database.schema({{"t", 0, kTwoColumns}, {"u", 0, kTwoColumns}, {"none", 0, ""}});
    const auto parser = database.parsed();
    EXPECT_EQ(parser->matchedTableForFreePageTableByFiledCount(2), parser->tableList()[2]);
    EXPECT_EQ(parser->matchedTableForFreePageTableByFiledCount(3), nullptr);
    EXPECT_EQ(parser->matchedTableForFreePageTableByFiledCount(5), nullptr);
    EXPECT_EQ(parser->matchedTableForFreePageTableByFiledCount(0), nullptr);
    EXPECT_EQ(parser->matchedTableForFreePageTableByFiledCount(-2), nullptr);
}

TEST(FreelistOfSqlite, ReturnsADroppedTablesRowsToATableOfItsColumns) {
    DatabaseBuilder builder({.pageSize = 512});
    builder.exec("CREATE TABLE kept (id INTEGER PRIMARY KEY, a TEXT, b TEXT, c TEXT, d TEXT)");
    builder.exec("CREATE TABLE gone (id INTEGER PRIMARY KEY, a TEXT, b TEXT, c TEXT, d TEXT)");
    constexpr int kRows = 200;
    for (int i = 1; i <= kRows; ++i) {
        const std::string number = std::to_string(i);
        builder.insert("gone", {std::int64_t{i}, "a" + number, "b" + number, "c" + number, "d" + number});
    }
    builder.exec("DROP TABLE gone");
    const auto parser = testing::parsedCopy(builder.bytes());
    ASSERT_GT(parser->sqliteDBHeader()->freePagePageCount(), 5U);
    const auto deleted = testing::deletedRows(*parser, 1);
    int found = 0;
    for (int i = 1; i <= kRows; ++i) {
        const std::string number = std::to_string(i);
        const Texts row = {number, "a" + number, "b" + number, "c" + number, "d" + number};
        found += std::find(deleted.begin(), deleted.end(), row) != deleted.end() ? 1 : 0;
    }
    // The trunk page has lost its head; every other page of the table gives its rows.
    EXPECT_GT(found, kRows - 40);
    EXPECT_LT(found, kRows);
}

}  // namespace
}  // namespace ZkMobileBackup
