#include <gtest/gtest.h>
#include <vector>

#include "ZkMobileBackup/backup/manifest_fields.h"
#include "tests/support/ByteBuilder.h"

namespace ZkMobileBackup {
namespace {

struct Number {
    std::int32_t value;
    std::size_t position;
    bool operator==(const Number&) const = default;
};

struct Text {
    std::string value;
    std::size_t position;
    bool operator==(const Text&) const = default;
};

Number numberAt(std::size_t position, int width, const ByteBuilder& bytes) {
    const std::int32_t value = getint(bytes.bytes(), position, width);
    return {value, position};
}

Text textAt(std::size_t position, const ByteBuilder& bytes) {
    std::string value = getstring(bytes.bytes(), position);
    return {std::move(value), position};
}

TEST(Getint, NumbersAreBigEndian) {
    EXPECT_EQ(numberAt(0, 2, ByteBuilder().bytes({0x12, 0x34})), (Number{0x1234, 2}));
}

TEST(Getint, MovesPastTheNumber) {
    EXPECT_EQ(numberAt(1, 1, ByteBuilder().bytes({1, 2, 3})), (Number{2, 2}));
}

TEST(Getint, WidthZeroGives0AndStays) {
    EXPECT_EQ(numberAt(1, 0, ByteBuilder().bytes({1, 2, 3})), (Number{0, 1}));
}

TEST(Getint, NarrowNumbersAreNotNegative) {
    EXPECT_EQ(numberAt(0, 2, ByteBuilder().u16(0xFFFF)).value, 65535);
    EXPECT_EQ(numberAt(0, 1, ByteBuilder().u8(0xFF)).value, 255);
}

TEST(Getint, FourBytesCarryASign) {
    EXPECT_EQ(numberAt(0, 4, ByteBuilder().u32(0x80000000)).value, INT32_MIN);
    EXPECT_EQ(numberAt(0, 4, ByteBuilder().u32(0xFFFFFFFF)).value, -1);
}

TEST(Getint, EightBytesLoseTheirUpperHalf) {
    EXPECT_EQ(numberAt(0, 8, ByteBuilder().u64(0x0000000100000005)), (Number{5, 8}));
    EXPECT_EQ(numberAt(0, 8, ByteBuilder().u64(0x00000000FFFFFFFF)), (Number{-1, 8}));
}

TEST(Getint, BytesPastTheEndReadAsZero) {
    EXPECT_EQ(numberAt(0, 4, ByteBuilder().bytes({1, 2})), (Number{0x01020000, 4}));
    EXPECT_EQ(numberAt(7, 4, ByteBuilder().bytes({1, 2})), (Number{0, 11}));
}

TEST(Getstring, TextFollowsItsLength) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(3).text("abcd")), (Text{"abc", 5}));
}

TEST(Getstring, LengthFFFFIsTheEmptyTextOfTwoBytes) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(0xFFFF).text("abc")), (Text{"", 2}));
}

TEST(Getstring, LengthZeroIsTheEmptyTextOfTwoBytes) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(0).text("abc")), (Text{"", 2}));
}

TEST(Getstring, LongestTextIsReadWhole) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(65534).fill(65534, 'x')), (Text{std::string(65534, 'x'), 65536}));
}

TEST(Getstring, ZeroByteEndsTheTextAndTheRestIsSkipped) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(5).text("ab").u8(0).text("cd")), (Text{"ab", 7}));
}

TEST(Getstring, InvalidUtf8BecomesNullInAngleBrackets) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(3).bytes({'a', 0xFF, 'b'})), (Text{"<null>", 5}));
}

TEST(Getstring, OnlyBytesBeforeTheFirstZeroAreJudged) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(3).bytes({'a', 0, 0xFF})), (Text{"a", 5}));
}

TEST(Getstring, TextOutsideAsciiIsKept) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(5).text("日é")), (Text{"日é", 7}));
}

TEST(Getstring, TextCutByTheEndKeepsWhatIsThereAndItsWholeLengthIsSkipped) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(100).text("abc")), (Text{"abc", 102}));
}

TEST(Getstring, CharacterCutByTheEndMakesTheTextInvalid) {
    EXPECT_EQ(textAt(0, ByteBuilder().u16(100).bytes({'a', 0xE6, 0x97})), (Text{"<null>", 102}));
}

TEST(Getstring, LengthCutByTheEndReadsItsMissingByteAsZero) {
    EXPECT_EQ(textAt(0, ByteBuilder().u8(0xFF)), (Text{"", 2 + 0xFF00}));
}

TEST(Getstring, PastTheEndIsTheEmptyText) {
    EXPECT_EQ(textAt(9, ByteBuilder().text("abc")), (Text{"", 11}));
}

TEST(Hexadecimal, HighDigitComesFirst) {
    EXPECT_EQ(hexadecimal(ByteBuilder().bytes({0x0A, 0xF1}).bytes(), "0123456789abcdef"), "0af1");
}

}  // namespace
}  // namespace ZkMobileBackup
