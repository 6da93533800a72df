#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "tool/text.h"

namespace zkmb {
namespace {

using ZkMobileBackup::Array;
using ZkMobileBackup::Date;
using ZkMobileBackup::Dictionary;
using ZkMobileBackup::Value;

TEST(Text, OneLineReplacesEveryControlCharacter) {
    EXPECT_EQ(oneLine("a\nb\tc\x1B[2J\x7F\xC2\x9B"
                      "d",
                      80),
              "a b c [2J  d");
}

TEST(Text, OneLineCountsCharactersNotBytes) {
    EXPECT_EQ(oneLine("äöü", 3), "äöü");
    EXPECT_EQ(oneLine("äöü😀", 3), "äöü…");
}

TEST(Text, BytesThatAreNoCharacterCountOneByOne) {
    EXPECT_EQ(displayWidth(std::string(100, '\x80')), 100U);
    EXPECT_EQ(displayWidth("\xFF\xFE"), 2U);
}

TEST(Text, EastAsianCharactersAndEmojiAreTwoColumnsWide) {
    EXPECT_EQ(displayWidth("aé"), 2U);
    EXPECT_EQ(displayWidth("読書"), 4U);
    EXPECT_EQ(displayWidth("😀"), 2U);
}

TEST(Text, DateIsIso8601InUtc) {
    EXPECT_EQ(iso8601(Date{1391521740}), "2014-02-04T13:49:00Z");
    EXPECT_EQ(iso8601(Date{-0.5}), "1969-12-31T23:59:59Z");
    EXPECT_EQ(iso8601(Date{253402300799.9}), "9999-12-31T23:59:59Z");
    EXPECT_EQ(iso8601(Date{-62167219200}), "0000-01-01T00:00:00Z");
}

TEST(Text, DateOutsideTheYears0To9999IsNothing) {
    EXPECT_EQ(iso8601(Date{253402300800}), std::nullopt);
    EXPECT_EQ(iso8601(Date{-62167219201}), std::nullopt);
    EXPECT_EQ(iso8601(Date{std::numeric_limits<double>::quiet_NaN()}), std::nullopt);
}

TEST(Text, PartsOfAValueAreSeparatedByCommas) {
    EXPECT_EQ(readable(Array{"a", 1, Dictionary{{"k", "b"}, {"l", Value()}}}), "a, 1, b, ");
    EXPECT_EQ(readable(ZkMobileBackup::Size{120, 90.5}), "120 x 90.5");
    EXPECT_EQ(readable(ZkMobileBackup::Size{303 * 0.3, 1e6}), "90.9 x 1000000");
}

}  // namespace
}  // namespace zkmb
