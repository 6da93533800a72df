#include <gtest/gtest.h>
#include <string>

#include "export/row_height.h"

namespace ZkMobileBackup {
namespace {

std::size_t linesOf(std::string_view text) {
    constexpr std::size_t kWidth = 10;
    constexpr std::size_t kLimit = 20;
    return wrappedLineCount(text, kWidth, kLimit);
}

TEST(WrappedLineCount, ShortTextsTakeOneLine) {
    EXPECT_EQ(linesOf(""), 1U);
    EXPECT_EQ(linesOf("0123456789"), 1U);
}

TEST(WrappedLineCount, EveryLineBreakBeginsALine) {
    EXPECT_EQ(linesOf("\n"), 2U);
    EXPECT_EQ(linesOf("a\r\nb\n\nc"), 4U);
    EXPECT_EQ(linesOf("  \r\n12  \r\n34"), 3U);
}

TEST(WrappedLineCount, WordsThatDoNotFitGoToTheNextLine) {
    EXPECT_EQ(linesOf("one two three"), 2U);
    EXPECT_EQ(linesOf("abcdefg abcdefg abcdefg"), 3U);
    EXPECT_EQ(linesOf("a b c d e f g h"), 2U);
}

TEST(WrappedLineCount, LongWordsTakeSeveralLines) {
    EXPECT_EQ(linesOf("01234567890"), 2U);
    EXPECT_EQ(linesOf(std::string(95, 'x')), 10U);
    EXPECT_EQ(linesOf(std::string(25, 'x') + " " + std::string(25, 'x')), 6U);
}

TEST(WrappedLineCount, IdeographsAreTwiceAsBroad) {
    EXPECT_EQ(linesOf("\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD"), 1U);
    EXPECT_EQ(linesOf("\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD"), 2U);
    EXPECT_EQ(linesOf("\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"), 1U);
}

TEST(WrappedLineCount, IsNeverAboveItsLimit) {
    EXPECT_EQ(linesOf(std::string(1000, '\n')), 20U);
    EXPECT_EQ(linesOf(std::string(100'000, 'x')), 20U);
}

}  // namespace
}  // namespace ZkMobileBackup
