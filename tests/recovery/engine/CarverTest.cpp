#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

#include "tests/recovery/engine/HandMadeDatabase.h"
#include "tests/recovery/engine/PlainReading.h"
#include "tests/support/DatabaseBuilder.h"

namespace ZkMobileBackup {
namespace {

using testing::Bytes;
using testing::bytesOfText;
using testing::cell;
using testing::HandMadeDatabase;
using testing::joined;
using testing::null;
using testing::number8;
using testing::text;
using testing::Texts;
using testing::typesAndContent;

constexpr std::uint16_t kPageSize = 512;
constexpr std::size_t kFree = 200;  // an offset amid a page's free space

const std::string kKeyAndTwoTexts = "CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT, b TEXT)";
const std::string kKeyNumberAndText = "CREATE TABLE t (id INTEGER PRIMARY KEY, a INTEGER, b TEXT)";

/// A database whose table t has its root, an empty leaf page, at page 2. Its free space is filled with a byte that is
/// no serial type of any column here: 2 is an integer's, and no text's.
HandMadeDatabase databaseOf(const std::string& sql, std::uint8_t filler = 12, std::uint32_t pages = 3) {
    HandMadeDatabase database(kPageSize, pages);
    database.schema({{"t", 2, sql}});
    database.leaf(2, {});
    std::fill(database.image.begin() + kPageSize + 8, database.image.begin() + 2 * kPageSize, filler);
    return database;
}

std::vector<Texts> deletedOf(const HandMadeDatabase& database) {
    return testing::deletedRows(*database.parsed(), 1);
}

/// The result of the signature match of `bytes` at the cursor.
struct Match {
    bool accepted;
    unsigned length;
    bool operator==(const Match&) const = default;
};
constexpr unsigned kUntouched = 4711;

Match matchOf(bool hasKey, const std::vector<ColumnType>& types, const Bytes& bytes) {
    const auto parser = DlxSQLiteParser::initWithDBData(bytes);
    RawTableObject table;
    table.setHasIntergerPK(hasKey);
    table.setFiledTypeList(types);
    std::uint16_t length = kUntouched;
    const bool accepted = parser->checkPayloadFromCurOffsetOfTable(&table, &length);
    return {accepted, length};
}

/// Whether one column accepts a serial type of one byte.
bool accepts(const ColumnType& type, std::uint8_t serialType) {
    return matchOf(false, {type}, {serialType, 0, 0}).accepted;
}

const ColumnType kInteger{kColumnInteger, std::nullopt};
const ColumnType kText{kColumnText, std::nullopt};
const ColumnType kBlob{kColumnBlob, std::nullopt};

// ---- Signature match ----

TEST(SignatureMatch, OfAnIntegerColumnTakesTheTypes1To11) {
    for (unsigned type = 0; type < 128; ++type) {
        EXPECT_EQ(accepts(kInteger, static_cast<std::uint8_t>(type)), type >= 1 && type <= 11) << type;
    }
}

TEST(SignatureMatch, OfATextColumnTakesNullAndTexts) {
    for (unsigned type = 0; type < 128; ++type) {
        EXPECT_EQ(accepts(kText, static_cast<std::uint8_t>(type)), type == 0 || (type >= 13 && type % 2 == 1)) << type;
    }
}

TEST(SignatureMatch, OfABlobColumnTakesNullAndBlobsWhateverTheDefault) {
    for (unsigned type = 0; type < 128; ++type) {
        const bool fits = type == 0 || (type >= 12 && type % 2 == 0);
        EXPECT_EQ(accepts(kBlob, static_cast<std::uint8_t>(type)), fits) << type;
        EXPECT_EQ(accepts({kColumnBlob, "13"}, static_cast<std::uint8_t>(type)), fits) << type;
    }
}

TEST(SignatureMatch, OfAFloatColumnTakesType7AndADefaultThatEqualsTheType) {
    EXPECT_TRUE(accepts({kColumnFloat, std::nullopt}, 7));
    EXPECT_FALSE(accepts({kColumnFloat, std::nullopt}, 1));
    EXPECT_TRUE(accepts({kColumnFloat, "20.0"}, 20));
    EXPECT_FALSE(accepts({kColumnFloat, "20.5"}, 20));
}

TEST(SignatureMatch, OfAColumnOfAnotherClassNeverHolds) {
    for (const std::int64_t code : {0, 3, 5, 6, 7, 9, 100, -1}) {
        for (unsigned type = 0; type < 128; ++type) {
            EXPECT_FALSE(accepts({code, "1"}, static_cast<std::uint8_t>(type))) << code << ' ' << type;
        }
    }
}

TEST(SignatureMatch, TakesAnyTypeInATextColumnWithADefault) {
    for (unsigned type = 0; type < 128; ++type)
        EXPECT_TRUE(accepts({kColumnText, "'x'"}, static_cast<std::uint8_t>(type)));
}

TEST(SignatureMatch, ComparesAnIntegersDefaultWithTheSerialTypeItself) {
    EXPECT_TRUE(accepts({kColumnInteger, "20"}, 20));
    EXPECT_FALSE(accepts({kColumnInteger, "20"}, 21));
    EXPECT_TRUE(accepts({kColumnInteger, "20"}, 1));
    EXPECT_FALSE(accepts({kColumnInteger, "20"}, 0));
}

TEST(SignatureMatch, TakesNullInAnIntegerColumnThroughADefaultOfZeroOnly) {
    EXPECT_TRUE(accepts({kColumnInteger, "0"}, 0));
    EXPECT_TRUE(accepts({kColumnInteger, "'5'"}, 0));  // quotes are part of the text, which so begins with no digit
    EXPECT_TRUE(accepts({kColumnInteger, "NULL"}, 0));
    EXPECT_FALSE(accepts({kColumnInteger, "5"}, 0));
}

TEST(SignatureMatch, CutsTheTypeTo32BitsWithItsSign) {
    // The first of four bytes is shifted by 42 bits in all and lost: this is type 13.
    const Bytes thirteen = {0x81, 0x80, 0x80, 13, 0, 0};
    EXPECT_TRUE(matchOf(false, {kText}, thirteen).accepted);
    EXPECT_TRUE(matchOf(false, {{kColumnInteger, "13"}}, thirteen).accepted);
    // The last but one of five bytes is shifted by 28 bits, which sets bit 31.
    const Bytes negativeOdd = {0x80, 0x80, 0x80, 0x88, 5, 0, 0};
    const Bytes negativeEven = {0x80, 0x80, 0x80, 0x88, 4, 0, 0};
    EXPECT_FALSE(matchOf(false, {kText}, negativeOdd).accepted);
    EXPECT_FALSE(matchOf(false, {kBlob}, negativeEven).accepted);
    EXPECT_FALSE(matchOf(false, {kInteger}, negativeOdd).accepted);
    EXPECT_TRUE(matchOf(false, {{kColumnText, ""}}, negativeOdd).accepted);
    EXPECT_TRUE(matchOf(false, {{kColumnInteger, "-2147483643"}}, negativeOdd).accepted);
    EXPECT_FALSE(matchOf(false, {{kColumnInteger, "2147483653"}}, negativeOdd).accepted);
}

TEST(SignatureMatch, JudgesALongNumberByItsLow32BitsAlone) {
    const auto longForm = [](std::uint8_t type) { return Bytes{0x81, 0x80, 0x80, type, 0, 0}; };
    EXPECT_TRUE(matchOf(false, {kInteger}, longForm(5)).accepted);
    EXPECT_FALSE(matchOf(false, {kText}, longForm(5)).accepted);
    EXPECT_FALSE(matchOf(false, {kBlob}, longForm(10)).accepted);
    EXPECT_TRUE(matchOf(false, {kBlob}, longForm(12)).accepted);
    EXPECT_TRUE(matchOf(false, {{kColumnInteger, "300"}}, {0x82, 0x2C, 0, 0}).accepted);
    EXPECT_FALSE(matchOf(false, {{kColumnInteger, "301"}}, {0x82, 0x2C, 0, 0}).accepted);
    EXPECT_TRUE(matchOf(false, {{kColumnFloat, "300"}}, {0x82, 0x2C, 0, 0}).accepted);
}

TEST(SignatureMatch, AddsTheSerialTypesThemselvesToTheirBytes) {
    EXPECT_EQ(matchOf(false, {kInteger, kText}, {1, 19, 'x', 'y', 'z'}), (Match{true, 1 + 1 + 1 + 19}));
    // A type of two bytes, 200 + 1.
    EXPECT_EQ(matchOf(false, {kText}, {0x81, 0x49, 0, 0}), (Match{true, 2 + 201}));
}

TEST(SignatureMatch, CutsItsLengthTo16Bits) {
    // Five types of 16383.
    Bytes bytes;
    for (int i = 0; i < 5; ++i) bytes = joined({bytes, {0xFF, 0x7F}});
    const std::vector<ColumnType> types(5, kText);
    EXPECT_EQ(matchOf(false, types, joined({bytes, {0, 0}})), (Match{true, (5 * (16383 + 2)) & 0xFFFF}));
}

TEST(SignatureMatch, GivesItsSumSoFarWhereItFails) {
    EXPECT_EQ(matchOf(false, {kInteger, kText}, {1, 2, 0, 0}), (Match{false, 2}));
    EXPECT_EQ(matchOf(false, {kText, kText}, {15, 2, 0, 0}), (Match{false, 16}));
}

TEST(SignatureMatch, SkipsTheKeysSerialType) {
    EXPECT_EQ(matchOf(true, {kInteger, kText}, {19, 2, 0}), (Match{true, 20}));
}

TEST(SignatureMatch, AcceptsAKeyColumnAloneWithLength0) {
    EXPECT_EQ(matchOf(true, {kInteger}, {77, 77, 77}), (Match{true, 0}));
}

TEST(SignatureMatch, LeavesTheLengthWithoutColumnTypes) {
    EXPECT_EQ(matchOf(false, {}, {1, 2, 3}), (Match{false, kUntouched}));
    EXPECT_EQ(matchOf(true, {}, {1, 2, 3}), (Match{false, kUntouched}));
}

TEST(SignatureMatch, AcceptsWhatTheLastByteCutsShort) {
    EXPECT_EQ(matchOf(false, {kInteger, kText, kText}, {1, 19, 99}), (Match{true, 2 + 20}));
    EXPECT_EQ(matchOf(false, {kInteger}, {99}), (Match{true, 0}));
}

TEST(SignatureMatch, RejectsATypeOfMoreThanEightBytes) {
    const ColumnType any{kColumnText, "x"};
    EXPECT_TRUE(matchOf(false, {any}, joined({Bytes(7, 0x80), {0x01, 0, 0}})).accepted);
    EXPECT_FALSE(matchOf(false, {any}, joined({Bytes(8, 0x80), {0x01, 0, 0}})).accepted);
    EXPECT_FALSE(matchOf(false, {any}, Bytes(100, 0xFF)).accepted);
}

TEST(SignatureMatch, FailsWithoutATableOrAReader) {
    std::uint16_t length = kUntouched;
    const auto parser = DlxSQLiteParser::initWithDBData(Bytes(10));
    EXPECT_FALSE(parser->checkPayloadFromCurOffsetOfTable(nullptr, &length));
    EXPECT_EQ(parser->lastError(), "Invaid parameter:DlxSQLiteParser::checkPayloadFromCurOffsetOfTable");
    RawTableObject table;
    const auto empty = DlxSQLiteParser::initWithDBPath("/no/such/file");
    EXPECT_FALSE(empty->checkPayloadFromCurOffsetOfTable(&table, &length));
    EXPECT_EQ(empty->lastError(), "Invaid parameter:DlxSQLiteParser::checkPayloadFromCurOffsetOfTable");
    EXPECT_EQ(length, kUntouched);
}

// ---- Scan of a page ----

TEST(PageScan, FindsARecordWhoseSerialTypesRemain) {
    HandMadeDatabase database = databaseOf(kKeyAndTwoTexts);
    database.putInPage(2, kFree, joined({{0x17, 0x13}, bytesOfText("helloabc")}));
    EXPECT_EQ(deletedOf(database).front(), (Texts{"-1", "hello", "abc"}));
}

TEST(PageScan, FindsARecordAgainInPartFromALaterByte) {
    // From the second type on: a text of 3 bytes, then the letter "a", the type 97 of a text of 42 bytes.
    HandMadeDatabase database = databaseOf(kKeyAndTwoTexts);
    database.putInPage(2, kFree, joined({{0x17, 0x13}, bytesOfText("agabcxyz")}));
    const std::string filler(512, 12);
    const auto rows = deletedOf(database);
    ASSERT_GE(rows.size(), 2U);
    EXPECT_EQ(rows[0], (Texts{"-1", "agabc", "xyz"}));
    EXPECT_EQ(rows[1], (Texts{"-1", "gab", "cxyz" + filler.substr(0, 38)}));
}

TEST(PageScan, FindsTheFirstAndTheLastByteThatIsTried) {
    const Bytes found = joined({{0x0F, 0x0F}, bytesOfText("\x02\x02")});
    HandMadeDatabase first = databaseOf(kKeyAndTwoTexts, 12);
    first.putInPage(2, 8, found);
    EXPECT_EQ(deletedOf(first), (std::vector<Texts>{{"-1", "\x02", "\x02"}}));
    // The last two bytes of a page are not tried.
    HandMadeDatabase last = databaseOf(kKeyAndTwoTexts, 12);
    last.putInPage(2, 509, {0x0D, 0x0D});
    EXPECT_EQ(deletedOf(last), (std::vector<Texts>{{"-1", "", ""}}));
    HandMadeDatabase beyond = databaseOf(kKeyAndTwoTexts, 12);
    beyond.putInPage(2, 510, {0x0D, 0x0D});
    EXPECT_TRUE(deletedOf(beyond).empty());
}

TEST(PageScan, OfATableWithoutAKeyReadsTheBodyOneTypeEarly) {
    // Three types match, two are decoded: the body is taken to begin at the third type.
    HandMadeDatabase database = databaseOf("CREATE TABLE t (a INTEGER, b TEXT, c TEXT)");
    database.putInPage(2, kFree, joined({{1, 0x17, 0x13, 42}, bytesOfText("helloabc")}));
    EXPECT_EQ(deletedOf(database), (std::vector<Texts>{{"-1", "19", "*hell"}}));
}

TEST(PageScan, OfATableOfFewerThanThreeColumnsFindsNothing) {
    for (const char* sql : {"CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT)", "CREATE TABLE t (a TEXT, b TEXT)",
                            "CREATE TABLE t (a TEXT)", "CREATE TABLE t (id INTEGER PRIMARY KEY)"}) {
        HandMadeDatabase database = databaseOf(sql, 0);
        database.putInPage(2, kFree, joined({{0x17, 0x13}, bytesOfText("helloabc")}));
        EXPECT_TRUE(deletedOf(database).empty()) << sql;
    }
}

TEST(PageScan, OfATableWithAnUnknownColumnFindsNothing) {
    HandMadeDatabase database = databaseOf("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT, b REAL, c TEXT)", 0);
    EXPECT_TRUE(deletedOf(database).empty());
}

TEST(PageScan, FindsARowOfNullsAtNearlyEveryZeroByte) {
    HandMadeDatabase database = databaseOf("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT, b TEXT, c BLOB)", 0);
    // Every byte from 8 to 509 is tried; the record may not be longer than three zeros ahead of the next page allow.
    const std::vector<Texts> rows = deletedOf(database);
    EXPECT_EQ(rows.size(), 512U - 2U - 8U);
    for (const Texts& row : rows) EXPECT_EQ(row, (Texts{"-1", "NULL", "NULL", "NULL"}));
}

TEST(PageScan, ReadsNullsPastTheImagesEndAsEmptyTexts) {
    HandMadeDatabase database = databaseOf("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT, b TEXT, c BLOB)", 0, 2);
    const std::vector<Texts> rows = deletedOf(database);
    ASSERT_EQ(rows.size(), 512U - 2U - 8U);
    // The header of three types is followed by the content at offset 511 still, from 509 on it is past the end.
    EXPECT_EQ(rows[rows.size() - 2], (Texts{"-1", "NULL", "NULL", "NULL"}));
    EXPECT_EQ(rows.back(), (Texts{"-1", "", "", ""}));
}

TEST(PageScan, MayLoseTheBodyWhereItsTypesSumToLess) {
    // A default lets type 7 (8 bytes of content) pass as a text: the sum 1 + 7 + 1 + 0 is 9, its body is 8 bytes.
    HandMadeDatabase fits = databaseOf("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT DEFAULT x, b TEXT)", 12);
    fits.putInPage(2, kFree, {7, 0x0D, 0x40});
    const auto rows = deletedOf(fits);
    EXPECT_THAT(rows, ::testing::Contains(Texts{"-1", "1073741824.000000", ""}));
}

TEST(PageScan, TakesAnyTypeInAFirstTextColumnWithADefault) {
    HandMadeDatabase database = databaseOf("CREATE TABLE t (a TEXT DEFAULT '', b INTEGER, c INTEGER)", 12);
    database.putInPage(2, kFree, {12, 1, 1, 5});
    // Types 12, 1 and 1 match, 12 and 1 are decoded, and the body is taken to begin at the third type.
    EXPECT_THAT(deletedOf(database), ::testing::Contains(Texts{"-1", "", "1"}));
}

TEST(PageScan, DropsARecordWithACellOfAnInvalidType) {
    HandMadeDatabase database =
        databaseOf("CREATE TABLE t (id INTEGER PRIMARY KEY, a INTEGER, b INTEGER, c INTEGER)", 12);
    database.putInPage(2, kFree, {1, 1, 10});
    EXPECT_TRUE(deletedOf(database).empty());
    database.putInPage(2, kFree, {1, 1, 9});
    EXPECT_EQ(deletedOf(database), (std::vector<Texts>{{"-1", "12", "12", "1"}}));
}

TEST(PageScan, JumpsOverALiveCellByItsPayloadLengthAlone) {
    // The cell is 2 + 25 bytes long, the jump 25: the match is tried on its last two bytes, but one, which are types.
    HandMadeDatabase database = databaseOf(kKeyNumberAndText, 12);
    const Bytes live = cell(1, {null(), number8(1), text(std::string(18, 'x') + "\x01\x0D")});
    const auto offset = static_cast<unsigned>(300);
    database.put16(kPageSize + 3, 1);
    database.put16(kPageSize + 8, offset);
    database.putInPage(2, offset, live);
    ASSERT_EQ(live[0] + 2U, live.size());
    const auto parser = database.parsed();
    EXPECT_EQ(testing::liveRows(*parser, 1).size(), 1U);
    // Types 1 and 13 (an empty text), content 12: the first byte behind the cell.
    EXPECT_EQ(testing::deletedRows(*parser, 1), (std::vector<Texts>{{"-1", "12", ""}}));
}

TEST(PageScan, DoesNotJumpOverARejectedCell) {
    HandMadeDatabase database = databaseOf(kKeyNumberAndText, 12);
    const Bytes rejected = cell(0, {null(), number8(1), text("abc")});
    database.put16(kPageSize + 3, 1);
    database.put16(kPageSize + 8, 300);
    database.putInPage(2, 300, rejected);
    EXPECT_THAT(deletedOf(database), ::testing::Contains(Texts{"-1", "1", "abc"}));
}

TEST(PageScan, FindsPartsOfLiveRowsWhereTheJumpEnds) {
    // Two cells side by side: the jump over the first ends two bytes before the second one, which is so not met at its
    // own offset and is read again whole, from its types on.
    HandMadeDatabase database = databaseOf(kKeyNumberAndText, 12);
    const Bytes row = cell(1, {null(), number8(1), text("abc")});
    database.leaf(2, {row, row});
    const std::vector<Texts> rows = deletedOf(database);
    EXPECT_THAT(rows, ::testing::Each(::testing::ElementsAre("-1", ::testing::_, ::testing::_)));
    const auto expected = testing::readPlainly(database.image);
    EXPECT_EQ(rows, expected[1].deleted);
}

/// Free space made of the bytes at which the tests of a column turn.
HandMadeDatabase databaseOfCriticalBytes(const std::string& sql, unsigned seed) {
    constexpr std::uint8_t kBytes[] = {0, 0, 0, 1, 5, 10, 12, 13, 0x0E, 0x80, 0x81, 0x82, 0x2C, 0x8D, 0xFF};
    HandMadeDatabase database = databaseOf(sql);
    std::minstd_rand random(seed);
    for (std::size_t i = kPageSize + 8; i < 2 * kPageSize; ++i)
        database.image[i] = kBytes[random() % std::size(kBytes)];
    return database;
}

TEST(PageScan, OfAnyBytesFindsWhatAPlainReadingFinds) {
    std::size_t found = 0;
    for (const char* columns :
         {"a TEXT, b TEXT, c BLOB", "a BLOB, b INTEGER, c TEXT, d TEXT",
          "a TEXT, b INTEGER DEFAULT 300, c TEXT DEFAULT x, d BLOB", "a INTEGER DEFAULT 0, b TIMESTAMP, c TEXT"}) {
        for (unsigned seed = 1; seed <= 25; ++seed) {
            const auto database =
                databaseOfCriticalBytes("CREATE TABLE t (id INTEGER PRIMARY KEY, " + std::string(columns) + ")", seed);
            const auto tables = testing::tablesOf(*database.parsed());
            EXPECT_EQ(tables, testing::readPlainly(database.image)) << columns << ", seed " << seed;
            found += tables.back().deleted.size();
        }
    }
    EXPECT_GT(found, 1000U);
}

TEST(PageScan, KeepsWhatItFindsTwice) {
    HandMadeDatabase database = databaseOf(kKeyAndTwoTexts);
    const Bytes found = joined({{0x17, 0x13},
                                bytesOfText("\x02\x02\x02\x02\x02"
                                            "\x02\x02\x02")});
    database.putInPage(2, kFree, found);
    database.putInPage(2, kFree + 50, found);
    const Texts row = {"-1", "\x02\x02\x02\x02\x02", "\x02\x02\x02"};
    EXPECT_EQ(deletedOf(database), (std::vector<Texts>{row, row}));
}

TEST(PageScan, SplicesTheChainOfACandidateThatIsTooLongForItsPage) {
    // The sum of the types exceeds the page's rest, so the page's last four bytes are taken for a chain.
    HandMadeDatabase database = databaseOf(kKeyAndTwoTexts, 12, 4);
    database.put32(database.end(2) - 4, 4);
    database.putInPage(4, 4, Bytes(508, 's'));
    database.putInPage(2, 480, joined({{0x81, 0x01, 0x0D}, bytesOfText("hidden")}));  // 129: a text of 58 bytes
    const auto rows = deletedOf(database);
    ASSERT_FALSE(rows.empty());
    EXPECT_EQ(rows[0], (Texts{"-1", "hidden" + std::string(512 - 4 - 489, 12) + std::string(58 - 6 - 19, 's'), ""}));
}

TEST(PageScan, RunsAtLeastOnce) {
    HandMadeDatabase database = databaseOf(kKeyAndTwoTexts);
    database.putInPage(3, 100, joined({{0x17, 0x13}, bytesOfText("helloabc")}));
    const auto parser = database.parser();
    RawTableObject table;
    DlxSQLiteParser::searchFiledsOfTable(&table, "CREATE TABLE  (id INTEGER PRIMARY KEY, a TEXT, b TEXT)");
    parser->sqliteReader()->setDbCurPageOffset(1024);
    parser->sqliteReader()->setDbCurPageLimit(1536);
    parser->sqliteReader()->setDbCurOffset(1024 + 100);
    EXPECT_TRUE(parser->findDeletedPayloadsOfTable(&table, 1024, nullptr, nullptr));
    EXPECT_EQ(testing::rowsOf(table.deletedRowList()), (std::vector<Texts>{{"-1", "hello", "abc"}}));
    EXPECT_EQ(parser->sqliteReader()->dbCurOffset(), 1024 + 101);
}

/// Scans a part of an image that is one page, which may be longer than 16-bit offsets reach.
std::vector<Texts> scanned(const Bytes& image, std::int64_t from, std::int64_t end,
                           const DlxSQLiteParser::OffsetList* live, const DlxSQLiteParser::OffsetList* freeblocks) {
    const auto parser = DlxSQLiteParser::initWithDBData(image);
    parser->sqliteDBHeader()->setPageSize(0xFFFF);
    RawTableObject table;
    table.setName("t");
    DlxSQLiteParser::searchFiledsOfTable(&table, kKeyAndTwoTexts);
    parser->sqliteReader()->setDbCurOffset(from);
    EXPECT_TRUE(parser->findDeletedPayloadsOfTable(&table, end, live, freeblocks));
    return testing::rowsOf(table.deletedRowList());
}

const Bytes kFound = {0x0F, 0x0F, 2, 2};
const Texts kFoundRow = {"-1", "\x02", "\x02"};

TEST(PageScan, JumpsOverFreeblocksOfAGivenList) {
    Bytes image(1000, 12);
    std::copy(kFound.begin(), kFound.end(), image.begin() + 110);
    std::copy(kFound.begin(), kFound.end(), image.begin() + 150);
    image[102] = 0;
    image[103] = 40;  // the block's size
    const DlxSQLiteParser::OffsetList freeblocks = {100};
    EXPECT_EQ(scanned(image, 50, 900, nullptr, nullptr).size(), 2U);
    EXPECT_EQ(scanned(image, 50, 900, nullptr, &freeblocks), (std::vector<Texts>{kFoundRow}));
}

TEST(PageScan, LooksOffsetsUpIn16Bits) {
    constexpr std::int64_t kWrapped = 65536 + 100;
    Bytes image(70000, 12);
    std::copy(kFound.begin(), kFound.end(), image.begin() + kWrapped + 5);
    image[kWrapped] = 20;  // the length of the cell that the list has at 100
    const DlxSQLiteParser::OffsetList listed = {100};
    const DlxSQLiteParser::OffsetList other = {200};
    EXPECT_TRUE(scanned(image, kWrapped, kWrapped + 60, &listed, nullptr).empty());
    EXPECT_EQ(scanned(image, kWrapped, kWrapped + 60, &other, nullptr), (std::vector<Texts>{kFoundRow}));
    EXPECT_TRUE(scanned(image, kWrapped - 3, kWrapped + 60, &listed, nullptr).empty());
}

TEST(PageScan, JumpsNowhereBeyond65535WithoutAnOffsetInItsList) {
    Bytes image(70000, 20);  // any byte taken for a length would jump over the record
    std::copy(kFound.begin(), kFound.end(), image.begin() + 65545);
    const DlxSQLiteParser::OffsetList listed = {5000};
    EXPECT_EQ(scanned(image, 65500, 65600, &listed, nullptr), (std::vector<Texts>{kFoundRow}));
    EXPECT_EQ(scanned(image, 65500, 65600, nullptr, &listed), (std::vector<Texts>{kFoundRow}));
}

TEST(PageScan, NeverJumpsBackwards) {
    // The last byte but one is shifted into the highest bit, so that the length has a sign.
    Bytes image(1000, 12);
    const Bytes length = joined({Bytes(9, 0xFF), {0x7F}});
    std::copy(length.begin(), length.end(), image.begin() + 100);
    std::copy(kFound.begin(), kFound.end(), image.begin() + 150);
    const DlxSQLiteParser::OffsetList live = {100};
    EXPECT_EQ(scanned(image, 60, 900, &live, nullptr), (std::vector<Texts>{kFoundRow}));
}

TEST(PageScan, TriesTheMatchWhereAJumpEndsAlsoPastThePagesEnd) {
    Bytes image(1000, 12);
    image[100] = 120;
    std::copy(kFound.begin(), kFound.end(), image.begin() + 220);
    const DlxSQLiteParser::OffsetList live = {100};
    EXPECT_EQ(scanned(image, 90, 150, &live, nullptr), (std::vector<Texts>{kFoundRow}));
    EXPECT_TRUE(scanned(image, 90, 150, nullptr, nullptr).empty());
}

TEST(PageScan, FailsWithoutATableAnEndOrAReader) {
    const auto parser = DlxSQLiteParser::initWithDBData(Bytes(10));
    RawTableObject table;
    const std::string failure = "Invaid parameter:DlxSQLiteParser::findDeletedPayloadsOfTable";
    EXPECT_FALSE(parser->findDeletedPayloadsOfTable(nullptr, 5, nullptr, nullptr));
    EXPECT_EQ(parser->lastError(), failure);
    parser->clearLastError();
    EXPECT_FALSE(parser->findDeletedPayloadsOfTable(&table, std::nullopt, nullptr, nullptr));
    EXPECT_EQ(parser->lastError(), failure);
    EXPECT_FALSE(
        DlxSQLiteParser::initWithDBPath("/no/such/file")->findDeletedPayloadsOfTable(&table, 5, nullptr, nullptr));
}

TEST(PageScan, OfTheSchemasFreeSpaceFindsNothing) {
    HandMadeDatabase database = databaseOf(kKeyAndTwoTexts);
    EXPECT_TRUE(testing::deletedRows(*database.parsed(), 0).empty());
}

// ---- Rows that SQLite deleted ----

/// Rows 1 to `count` of the texts "first N" and "second N", each long enough to keep its head in a freeblock.
DatabaseBuilder filled(const std::string& sql, const std::string& columns, int count) {
    DatabaseBuilder builder({.pageSize = 4096});
    builder.exec(sql);
    for (int i = 1; i <= count; ++i) {
        const std::string number = std::to_string(i);
        builder.run("INSERT INTO t (" + columns + ") VALUES (?, ?, ?)",
                    {std::int64_t{i}, "first " + number, "second " + number});
    }
    return builder;
}

TEST(DeletedRows, OfAKeyTableAreFoundWithMinusOneForTheKey) {
    DatabaseBuilder builder = filled(kKeyAndTwoTexts, "id, a, b", 60);
    builder.exec("DELETE FROM t WHERE id % 5 = 0");
    const auto parser = testing::parsedCopy(builder.bytes());
    EXPECT_EQ(testing::liveRows(*parser, 1).size(), 48U);
    const auto deleted = testing::deletedRows(*parser, 1);
    for (int i = 5; i <= 60; i += 5) {
        const std::string number = std::to_string(i);
        EXPECT_THAT(deleted, ::testing::Contains(Texts{"-1", "first " + number, "second " + number}));
    }
}

TEST(DeletedRows, AreFoundWhereTheirHeadsAreLongerThanAFreeblocks) {
    // Rowids from 128 on take two bytes.
    DatabaseBuilder builder = filled(kKeyAndTwoTexts, "id, a, b", 0);
    for (int i = 1000; i < 1010; ++i) {
        builder.insert("t", {std::int64_t{i}, "first " + std::to_string(i), "second " + std::to_string(i)});
    }
    builder.exec("DELETE FROM t WHERE id IN (1003, 1007)");
    const auto deleted = testing::deletedRows(*testing::parsedCopy(builder.bytes()), 1);
    EXPECT_THAT(deleted, ::testing::Contains(Texts{"-1", "first 1003", "second 1003"}));
    EXPECT_THAT(deleted, ::testing::Contains(Texts{"-1", "first 1007", "second 1007"}));
}

TEST(DeletedRows, OfATableWithoutAKeyAreReadOneColumnLate) {
    // Rowids of two bytes leave the first type in place: header size and rowid take the freeblock's four bytes.
    DatabaseBuilder builder({.pageSize = 4096});
    builder.exec("CREATE TABLE t (a TEXT, b TEXT, c TEXT)");
    for (int i = 1000; i < 1010; ++i) {
        builder.run("INSERT INTO t (rowid, a, b, c) VALUES (?, ?, ?, ?)",
                    {std::int64_t{i}, "first " + std::to_string(i), "second", "third"});
    }
    builder.exec("DELETE FROM t WHERE rowid = 1004");
    const auto deleted = testing::deletedRows(*testing::parsedCopy(builder.bytes()), 1);
    // The body begins at the third type, 13 + 2 * 5, and each text is cut where the next one would begin.
    EXPECT_THAT(deleted, ::testing::Contains(Texts{"-1",
                                                   "\x17"
                                                   "first 100",
                                                   "4secon"}));
}

TEST(DeletedRows, LoseTheirTypesInAFreeblocksHeadWithoutAKey) {
    DatabaseBuilder builder = filled("CREATE TABLE t (n TEXT, a TEXT, b TEXT)", "rowid, a, b", 10);
    builder.exec("DELETE FROM t WHERE rowid = 4");
    const auto deleted = testing::deletedRows(*testing::parsedCopy(builder.bytes()), 1);
    for (const Texts& row : deleted) {
        for (const std::string& cell : row) EXPECT_NE(cell, "first 4");
    }
}

TEST(DeletedRows, OfAPageOfLiveRowsAloneArePartsOfThem) {
    DatabaseBuilder builder = filled(kKeyAndTwoTexts, "id, a, b", 40);
    const auto bytes = builder.bytes();
    const auto deleted = testing::deletedRows(*testing::parsedCopy(bytes), 1);
    EXPECT_EQ(deleted, testing::readPlainly(bytes)[1].deleted);
    for (const Texts& row : deleted) EXPECT_EQ(row.front(), "-1");
}

// ---- Freeblocks, for callers that ask for them ----

TEST(FreeblockScan, DecodesEachBlockOfTheChainAsOneRecord) {
    HandMadeDatabase database = databaseOf(kKeyAndTwoTexts);
    const auto block = [](unsigned next, unsigned size, const Bytes& types) {
        return joined({{0, static_cast<std::uint8_t>(next), 0, static_cast<std::uint8_t>(size)}, types});
    };
    database.putInPage(2, 100, block(140, 4 + 10, joined({{0x17, 0x13}, bytesOfText("helloabc")})));
    database.putInPage(2, 140, block(180, 0, joined({{0x17, 0x13}, bytesOfText("nothing.")})));
    database.putInPage(2, 180, block(220, 4 + 1, joined({{0x17, 0x13}, bytesOfText("too long")})));
    database.putInPage(2, 220, block(100, 4 + 10, joined({{0x13, 0x17}, bytesOfText("abchello")})));
    const auto parser = database.parsed();
    parser->sqliteReader()->setDbCurPageOffset(kPageSize);
    parser->sqliteReader()->setDbCurPageLimit(2 * kPageSize);
    const auto table = parser->tableList().at(1);
    table->deletedRowList().clear();
    const auto found = parser->findDeletedPayloadsOfFreeBlockListOfTable(table.get(), 100);
    EXPECT_EQ(found, (DlxSQLiteParser::OffsetList{100, 220}));
    EXPECT_EQ(testing::deletedRows(*parser, 1), (std::vector<Texts>{{"-1", "hello", "abc"}, {"-1", "abc", "hello"}}));
}

TEST(FreeblockScan, FailsWithoutATable) {
    const auto parser = DlxSQLiteParser::initWithDBData(Bytes(10));
    EXPECT_FALSE(parser->findDeletedPayloadsOfFreeBlockListOfTable(nullptr, 8));
    EXPECT_EQ(parser->lastError(), "Invaid parameter:DlxSQLiteParser::findDeletedPayloadsOfFreeBlockListOfTable");
}

}  // namespace
}  // namespace ZkMobileBackup
