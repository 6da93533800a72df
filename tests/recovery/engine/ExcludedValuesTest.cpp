#include <gtest/gtest.h>

#include "tests/recovery/engine/HandMadeDatabase.h"
#include "tests/support/DatabaseBuilder.h"

// What becomes of values in real databases that the engine shows otherwise than they were stored. Every expected text
// is worked out by hand from the bytes that SQLite writes.

namespace ZkMobileBackup {
namespace {

using testing::Texts;

constexpr std::size_t kTable = 1;

std::vector<Texts> rowsOf(const DatabaseBuilder& builder, std::size_t table = kTable) {
    return testing::liveRows(*testing::parsedCopy(builder.bytes()), table);
}

DatabaseBuilder twoColumns(int pageSize = 4096) {
    DatabaseBuilder builder({.pageSize = pageSize});
    builder.exec("CREATE TABLE t (a, b TEXT)");
    return builder;
}

/// The text that a value of the first column is shown as.
std::string shown(const Cell& value) {
    DatabaseBuilder builder = twoColumns();
    builder.insert("t", {value, "tail"});
    const auto rows = rowsOf(builder);
    return rows.size() == 1 ? rows[0][0] : "no row";
}

TEST(ExcludedValues, RowidsFrom16384OnShiftTheirBytesFurther) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (id INTEGER PRIMARY KEY, b TEXT)");
    for (const std::int64_t id : {16383, 16384, 16385}) builder.insert("t", {id, "tail"});
    // 16384 is 81 80 00: 1, shifted by 7 and then by 14.
    EXPECT_EQ(rowsOf(builder), (std::vector<Texts>{{"16383", "tail"}, {"2097152", "tail"}, {"2097153", "tail"}}));
}

TEST(ExcludedValues, PayloadsFrom16384BytesOnAreRejected) {
    // Three texts of two type bytes each, seven bytes of header with the key's type.
    const auto rowOf = [](std::size_t payload) {
        DatabaseBuilder builder({.pageSize = 32768});
        builder.exec("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT, b TEXT, c TEXT)");
        const std::size_t rest = payload - 8 - 10000;
        builder.insert("t", {std::int64_t{1}, std::string(5000, 'a'), std::string(5000, 'b'), std::string(rest, 'c')});
        return rowsOf(builder).size();
    };
    EXPECT_EQ(rowOf(16383), 1U);
    EXPECT_EQ(rowOf(16384), 0U);
}

TEST(ExcludedValues, TextsFrom8186BytesOnAreRejected) {
    // The serial type 16385 is read as 2097153, a text far longer than the record.
    DatabaseBuilder builder = twoColumns(32768);
    builder.insert("t", {std::int64_t{1}, std::string(8185, 'x')});
    builder.insert("t", {std::int64_t{2}, std::string(8186, 'x')});
    EXPECT_EQ(rowsOf(builder), (std::vector<Texts>{{"1", std::string(8185, 'x')}}));
}

TEST(ExcludedValues, IntegersOfTwoBytesHaveNoSign) {
    EXPECT_EQ(shown(std::int64_t{-128}), "-128");
    EXPECT_EQ(shown(std::int64_t{-129}), "65407");
    EXPECT_EQ(shown(std::int64_t{-32768}), "32768");
    EXPECT_EQ(shown(std::int64_t{32767}), "32767");
}

TEST(ExcludedValues, IntegersOfThreeBytesAreFolded) {
    EXPECT_EQ(shown(std::int64_t{32768}), "2048");      // 00 80 00: 0x0080 * 16
    EXPECT_EQ(shown(std::int64_t{100000}), "6144");     // 01 86 A0: 0x0186 * 16 - 96
    EXPECT_EQ(shown(std::int64_t{-32769}), "1046511");  // FF 7F FF: 0xFF7F * 16 - 1
}

TEST(ExcludedValues, IntegersOfFourBytesAreKept) {
    EXPECT_EQ(shown(std::int64_t{8388608}), "8388608");
    EXPECT_EQ(shown(std::int64_t{-2147483648}), "-2147483648");
}

TEST(ExcludedValues, IntegersOfSixAndEightBytesAreFolded) {
    EXPECT_EQ(shown(std::int64_t{2147483648}), "524288");          // 00 00 80 00 00 00: 0x8000 << 4
    EXPECT_EQ(shown(std::int64_t{140737488355328}), "8388608");    // 00 00 80 00 ...: 0x8000 << 8
    EXPECT_EQ(shown(std::int64_t{-140737488355329}), "-8323329");  // FF FF 7F FF FF FF ..: (0xFFFF7FFF << 8) + 0xFFFF
}

TEST(ExcludedValues, RealsShowTheirFirstByteAlone) {
    EXPECT_EQ(shown(2.5), "1073741824.000000");   // 40 04 ...
    EXPECT_EQ(shown(-1.5), "3204448256.000000");  // BF F8 ...
}

TEST(ExcludedValues, RecordsOfOneCellAreRejected) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (a TEXT)");
    builder.insert("t", {"alone"});
    EXPECT_TRUE(rowsOf(builder).empty());
}

TEST(ExcludedValues, ACharacterAcrossTwoPiecesOfATextDropsBoth) {
    DatabaseBuilder builder = twoColumns(32768);
    const std::string across = std::string(4095, 'x') + "\u00e9" + std::string(10, 'y');
    const std::string between = std::string(4094, 'x') + "\u00e9" + std::string(10, 'y');
    builder.insert("t", {across, "tail"});
    builder.insert("t", {between, "tail"});
    EXPECT_EQ(rowsOf(builder), (std::vector<Texts>{{"", "tail"}, {between, "tail"}}));
}

TEST(ExcludedValues, ATextKeyIsShownAsTheRowid) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (name TEXT PRIMARY KEY, b TEXT)");
    builder.insert("t", {"key", "tail"});
    EXPECT_EQ(rowsOf(builder), (std::vector<Texts>{{"1", "tail"}}));
}

TEST(ExcludedValues, AKeyWhoseWordIsNotTheThirdIsShownAsNull) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (id INTEGER NOT NULL PRIMARY KEY, b TEXT)");
    builder.insert("t", {std::int64_t{5}, "tail"});
    EXPECT_EQ(rowsOf(builder), (std::vector<Texts>{{"NULL", "tail"}}));
}

TEST(ExcludedValues, AZeroSizeCellThatEndsTheImageIsEmpty) {
    for (const Cell& value : {Cell(nullptr), Cell(std::int64_t{0}), Cell(std::int64_t{1})}) {
        DatabaseBuilder builder;
        builder.exec("CREATE TABLE t (a TEXT, b INTEGER)");
        builder.insert("t", {"ends the image", value});
        builder.insert("t", {"stands before", std::int64_t{0}});
        EXPECT_EQ(rowsOf(builder), (std::vector<Texts>{{"ends the image", ""}, {"stands before", "0"}}));
    }
}

TEST(ExcludedValues, ALivePageUnderSplicedBytesIsLost) {
    DatabaseBuilder builder({.pageSize = 512});
    builder.exec("CREATE TABLE spilled (a, b TEXT); CREATE TABLE under (a, b TEXT)");
    builder.insert("under", {std::int64_t{1}, "tail"});
    builder.insert("spilled", {std::int64_t{7}, std::string(1500, 'x')});
    EXPECT_EQ(rowsOf(builder, 1), (std::vector<Texts>{{"7", std::string(1500, 'x')}}));
    EXPECT_TRUE(rowsOf(builder, 2).empty());
}

TEST(ExcludedValues, ASpilledRecordThatDoesNotEndItsPageIsCut) {
    DatabaseBuilder builder = twoColumns(512);
    builder.insert("t", {std::int64_t{1}, "ends the page"});
    std::string content;
    for (int i = 0; i < 600; ++i) content += static_cast<char>('a' + i % 26);
    builder.insert("t", {std::int64_t{7}, content});
    // A payload of 605 bytes keeps 97 in the page: 39 + (605 - 39) % 508. Five of them are the header and the number;
    // behind them stands the number of the chain's first page, which begins with a NUL.
    EXPECT_EQ(rowsOf(builder), (std::vector<Texts>{{"1", "ends the page"}, {"7", content.substr(0, 92)}}));
}

TEST(ExcludedValues, APageSizeOf65536ReadsNothing) {
    DatabaseBuilder builder = twoColumns(65536);
    builder.insert("t", {std::int64_t{1}, "tail"});
    const auto parser = testing::parsedCopy(builder.bytes());
    EXPECT_EQ(parser->sqliteDBHeader()->pageSize(), 1);
    EXPECT_EQ(parser->tableList().size(), 1U);
    EXPECT_TRUE(testing::liveRows(*parser, 0).empty());
}

}  // namespace
}  // namespace ZkMobileBackup
