// Values of real databases: what SQLite wrote, and what is read.

#include <gmock/gmock.h>

#include "tests/recovery/engine/HandMadeDatabase.h"
#include "tests/support/DatabaseBuilder.h"

namespace ZkMobileBackup {
namespace {

using namespace testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr std::int64_t operator""_n(unsigned long long number) {
    return static_cast<std::int64_t>(number);
}

/// The parsed table of a database with one table.
std::shared_ptr<RawTableObject> onlyTable(const DatabaseBuilder& builder) {
    const auto parser = DlxSQLiteParser::initWithDBData(builder.bytes());
    parser->parser();
    return parser->tableList().at(1);
}

TEST(StoredValues, RowWithoutAnIntegerKeyHasAsManyElementsAsTheRecord) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (a TEXT, b INTEGER, c TEXT)");
    builder.insert("t", {std::string("x"), nullptr, std::string("y")});
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()), ElementsAre(Texts{"x", "NULL", "y"}));
}

TEST(StoredValues, NullThatEndsTheFileIsTheEmptyText) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (a TEXT, b INTEGER, c TEXT)");
    builder.insert("t", {std::string("x"), 5_n, nullptr});  // the first row ends the last page
    builder.insert("t", {std::string("x"), 5_n, nullptr});
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()), ElementsAre(Texts{"x", "5", ""}, Texts{"x", "5", "NULL"}));
}

TEST(StoredValues, RowidReplacesTheCellOfAnIntegerKey) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (id INTEGER PRIMARY KEY, b INTEGER, c TEXT)");
    builder.insert("t", {300_n, 5_n, std::string("x")});
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()), ElementsAre(Texts{"300", "5", "x"}));
}

TEST(StoredValues, RowIsAsLongAsItsRecordAlsoWhereColumnsWereAddedLater) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (a TEXT, b INTEGER)");
    builder.insert("t", {std::string("x"), 5_n});
    builder.exec("ALTER TABLE t ADD COLUMN c TEXT DEFAULT 'y'");
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()), ElementsAre(Texts{"x", "5"}));
}

TEST(StoredValues, NumbersReadInTheEnginesOwnWay) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (a TEXT, b)");
    for (const std::int64_t number : {-128_n, -1_n, 0_n, 1_n, 127_n, 128_n, 32767_n, -129_n, 65536_n, 16777215_n / 2,
                                      -2_n - 0x7FFFFF_n, 0x7FFFFFFF_n, 0x0102030405_n, 0x0100000000000000_n}) {
        builder.insert("t", {std::string("x"), number});
    }
    Texts numbers;
    for (const Texts& row : rowsOf(onlyTable(builder)->rowList())) numbers.push_back(row.at(1));
    EXPECT_THAT(numbers, ElementsAre("-128", "-1", "0", "1", "127",  //
                                     "128", "32767",                 //
                                     "65407",                        // -129 in two bytes, unsigned
                                     "4096",                         // 01 00 00: 0x0100 times 16
                                     "524271",                       // 7F FF FF: 0x7FFF times 16, less 1
                                     "-8388609", "2147483647",       // four bytes
                                     "1056820",                      // 00 01 02 03 04 05: 0x00010203 << 4, plus 4
                                     "0"));
}

TEST(StoredValues, RealsAreTheirFirstByte) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (a TEXT, b REAL)");
    builder.insert("t", {std::string("x"), 2.5});   // 40 04 ...
    builder.insert("t", {std::string("x"), -2.5});  // C0 04 ...
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()),
                ElementsAre(Texts{"x", "1073741824.000000"}, Texts{"x", "3221225472.000000"}));
}

TEST(StoredValues, RecordsOfOneColumnAreNotRead) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (a TEXT)");
    builder.insert("t", {std::string("alone")});
    const auto table = onlyTable(builder);
    EXPECT_THAT(table->filedList(), SizeIs(1));
    EXPECT_TRUE(table->rowList().empty());
}

TEST(StoredValues, RowWithRowidZeroIsNotRead) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT)");
    builder.insert("t", {0_n, std::string("zero")});
    builder.insert("t", {1_n, std::string("one")});
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()), ElementsAre(Texts{"1", "one"}));
}

TEST(StoredValues, NegativeRowidsTakeTooManyBytesToBeRead) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT)");
    builder.insert("t", {-5_n, std::string("minus")});
    EXPECT_TRUE(onlyTable(builder)->rowList().empty());
}

TEST(StoredValues, RowidFromThreeBytesOnReadsInTheEnginesOwnWay) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT)");
    builder.insert("t", {16383_n, std::string("two bytes")});
    builder.insert("t", {16513_n, std::string("three bytes")});  // 81 81 01
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()),
                ElementsAre(Texts{"16383", "two bytes"}, Texts{"2113537", "three bytes"}));
}

TEST(StoredValues, PayloadOfThreeLengthBytesIsNotRead) {
    DatabaseBuilder builder({.pageSize = 32768});
    builder.exec("CREATE TABLE t (a TEXT, b TEXT, c TEXT)");
    const std::string half(8100, 'y');
    builder.insert("t", {std::string("x"), half, half});
    builder.insert("t", {std::string(400, 'x'), half, half});
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()), ElementsAre(Texts{"x", half, half}));
}

TEST(StoredValues, TextWhoseTypeTakesThreeBytesIsNotRead) {
    DatabaseBuilder builder({.pageSize = 32768});
    builder.exec("CREATE TABLE t (a TEXT, b TEXT)");
    builder.insert("t", {std::string("x"), std::string(8185, 'y')});
    builder.insert("t", {std::string("x"), std::string(8186, 'y')});
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()), ElementsAre(Texts{"x", std::string(8185, 'y')}));
}

TEST(StoredValues, PagesOf65536BytesGiveNothing) {
    DatabaseBuilder builder({.pageSize = 65536});
    builder.exec("CREATE TABLE t (a TEXT, b TEXT)");
    builder.insert("t", {std::string("x"), std::string("y")});
    const auto parser = DlxSQLiteParser::initWithDBData(builder.bytes());
    EXPECT_TRUE(parser->parser());
    EXPECT_EQ(parser->sqliteDBHeader()->pageSize(), 1);
    EXPECT_THAT(parser->tableList(), SizeIs(1));
}

TEST(StoredValues, DeletedRowsStartWithMinusOne) {
    DatabaseBuilder builder;
    builder.exec("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT, b TEXT)");
    for (std::int64_t i = 1; i <= 5; ++i) {
        builder.insert("t", {i, "name " + std::to_string(i), std::string("some longer text")});
    }
    builder.exec("DELETE FROM t WHERE id = 5");  // the one nearest to the free space
    const auto rows = rowsOf(onlyTable(builder)->deletedRowList());
    ASSERT_THAT(rows, Not(IsEmpty()));
    for (const Texts& row : rows) EXPECT_EQ(row.at(0), "-1");
}

TEST(StoredValues, LastRecordOfAPageIsReadAcrossItsOverflowPages) {
    DatabaseBuilder builder({.pageSize = 512});
    builder.exec("CREATE TABLE t (a TEXT, b TEXT)");
    std::string text;
    while (text.size() < 3000) text += "word " + std::to_string(text.size()) + " ";
    builder.insert("t", {std::string("x"), text});
    EXPECT_THAT(rowsOf(onlyTable(builder)->rowList()), ElementsAre(Texts{"x", text}));
}

}  // namespace
}  // namespace ZkMobileBackup
