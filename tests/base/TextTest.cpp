#include <clocale>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "base/Text.h"

namespace ZkMobileBackup {
namespace {

using namespace std::string_literals;

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();

TEST(IsValidUtf8, WellFormedTextsAre) {
    for (const std::string& text :
         {""s, "a"s, "\0"s, "\x7F"s, "é"s, "日本"s, "\U0001F600"s, "\U0010FFFF"s, "\uFFFF"s}) {
        EXPECT_TRUE(isValidUtf8(text)) << text;
    }
}

TEST(IsValidUtf8, OverlongFormsAreNot) {
    for (const std::string& text : {"\xC0\x80"s, "\xC1\xBF"s, "\xE0\x9F\xBF"s, "\xF0\x8F\xBF\xBF"s}) {
        EXPECT_FALSE(isValidUtf8(text));
    }
}

TEST(IsValidUtf8, SurrogatesAreNot) {
    EXPECT_FALSE(isValidUtf8("\xED\xA0\x80"));
    EXPECT_FALSE(isValidUtf8("\xED\xBF\xBF"));
    EXPECT_TRUE(isValidUtf8("\xED\x9F\xBF"));
    EXPECT_TRUE(isValidUtf8("\xEE\x80\x80"));
}

TEST(IsValidUtf8, NothingAbove10FFFFIs) {
    EXPECT_FALSE(isValidUtf8("\xF4\x90\x80\x80"));
    EXPECT_FALSE(isValidUtf8("\xF8\x88\x80\x80\x80"));
    EXPECT_FALSE(isValidUtf8("\xFF"));
}

TEST(IsValidUtf8, CutAndLoneBytesAreNotWhereverTheyStand) {
    for (const std::size_t position : {0U, 1U, 7U, 8U, 9U, 30U}) {
        const std::string before(position, 'a');
        EXPECT_FALSE(isValidUtf8(before + "\xE6\x97")) << position;
        EXPECT_FALSE(isValidUtf8(before + "\xE6\x97" + "aaaaaaaa")) << position;
        EXPECT_FALSE(isValidUtf8(before + "\x80" + "aaaaaaaaaaaa")) << position;
        EXPECT_TRUE(isValidUtf8(before + "日" + "aaaaaaaaaaaa")) << position;
    }
}

TEST(WithoutCutCharacter, WholeCharactersStay) {
    for (const char* text : {"", "a", "aé", "日", "a\U0001F600"}) EXPECT_EQ(withoutCutCharacter(text), text);
}

TEST(WithoutCutCharacter, CharacterCutAnywhereIsDropped) {
    for (const std::string& character : {"é"s, "日"s, "\U0001F600"s}) {
        for (std::size_t length = 1; length < character.size(); ++length) {
            EXPECT_EQ(withoutCutCharacter("ab" + character.substr(0, length)), "ab") << character << length;
        }
    }
}

TEST(LowerCased, AllOfUnicodeIsCovered) {
    EXPECT_EQ(lowerCased("ABCxyz-09"), "abcxyz-09");
    EXPECT_EQ(lowerCased("ÄÖÜ ΑΒΓ ЖЩ"), "äöü αβγ жщ");
    EXPECT_EQ(lowerCased("\u0130"), "i\u0307");
    EXPECT_EQ(lowerCased(""), "");
}

TEST(LowerCased, LocaleHasNoSay) {
    const std::string old = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "tr_TR.UTF-8");  // where it is not installed nothing changes, and nothing may
    EXPECT_EQ(lowerCased("TITLE İ"), "title i\u0307");
    std::setlocale(LC_ALL, old.c_str());
}

TEST(Utf16, CharactersOutsideTheBasicPlaneTakeTwoUnits) {
    EXPECT_EQ(toUtf16("aé日\U0001F600"), u"aé日\U0001F600");
    EXPECT_EQ(toUtf16("\U0001F600").size(), 2U);
    EXPECT_EQ(toUtf8(u"aé日\U0001F600"), "aé日\U0001F600");
}

TEST(Utf16, LoneSurrogateBecomesTheReplacementCharacter) {
    EXPECT_EQ(toUtf8(u"a\xD83D"), "a\uFFFD");
    EXPECT_EQ(toUtf8(u"\xDE00z"), "\uFFFDz");
    EXPECT_EQ(toUtf8(u"\xDE00\xD83D"), "\uFFFD\uFFFD");
}

TEST(Utf16, BytesThatAreNoUtf8BecomeTheReplacementCharacter) {
    EXPECT_EQ(toUtf16("a\xFFz"), u"a\uFFFDz");
}

TEST(IntegerValue, NumberAtTheHeadOfTheText) {
    EXPECT_EQ(integerValue("42"), 42);
    EXPECT_EQ(integerValue("-42"), -42);
    EXPECT_EQ(integerValue("+42"), 42);
    EXPECT_EQ(integerValue("007"), 7);
    EXPECT_EQ(integerValue("12abc34"), 12);
    EXPECT_EQ(integerValue("1.9"), 1);
    EXPECT_EQ(integerValue("1 2"), 1);
}

TEST(IntegerValue, BlanksOfSixKindsMayLead) {
    EXPECT_EQ(integerValue(" \t\n\v\f\r5"), 5);
    EXPECT_EQ(integerValue(" \t-5"), -5);
    EXPECT_EQ(integerValue("\u00A05"), 0);
    EXPECT_EQ(integerValue("- 5"), 0);
}

TEST(IntegerValue, Is0WithoutDigits) {
    for (const char* text : {"", " ", "-", "+", "abc", "--5", "-+5", "+-5", "'5'", "x5", ".5"}) {
        EXPECT_EQ(integerValue(text), 0) << text;
    }
}

TEST(IntegerValue, OnlyAsciiDigitsCount) {
    EXPECT_EQ(integerValue("٥"), 0);
    EXPECT_EQ(integerValue("0x10"), 0);
}

TEST(IntegerValue, SaturatesAtTheEndsOfTheRange) {
    EXPECT_EQ(integerValue("9223372036854775807"), kHighest);
    EXPECT_EQ(integerValue("9223372036854775808"), kHighest);
    EXPECT_EQ(integerValue("-9223372036854775807"), kLowest + 1);
    EXPECT_EQ(integerValue("-9223372036854775808"), kLowest);
    EXPECT_EQ(integerValue("-9223372036854775809"), kLowest);
    EXPECT_EQ(integerValue(std::string(100, '9')), kHighest);
    EXPECT_EQ(integerValue("-" + std::string(100, '9')), kLowest);
}

TEST(FloatValue, NumberAtTheHeadOfTheText) {
    EXPECT_EQ(floatValue("1.5"), 1.5);
    EXPECT_EQ(floatValue("-1.5"), -1.5);
    EXPECT_EQ(floatValue("+1.5"), 1.5);
    EXPECT_EQ(floatValue(".5"), 0.5);
    EXPECT_EQ(floatValue("-.5"), -0.5);
    EXPECT_EQ(floatValue("5."), 5.0);
    EXPECT_EQ(floatValue("1e3"), 1000.0);
    EXPECT_EQ(floatValue("1.5E-1x"), 0.15);
    EXPECT_EQ(floatValue("12abc"), 12.0);
    EXPECT_EQ(floatValue(" \t\n\v\f\r2.5"), 2.5);
}

TEST(FloatValue, ExponentWithoutDigitsIsNone) {
    EXPECT_EQ(floatValue("2e"), 2.0);
    EXPECT_EQ(floatValue("2e+"), 2.0);
    EXPECT_EQ(floatValue("2ex"), 2.0);
}

TEST(FloatValue, CommaIsNoPoint) {
    EXPECT_EQ(floatValue("1,5"), 1.0);
}

TEST(FloatValue, NeitherHexadecimalNorInfinityNorNaN) {
    for (const char* text : {"0x10", "inf", "-inf", "infinity", "nan", "-nan(1)", "", ".", "-", "--1", "e5"}) {
        EXPECT_EQ(floatValue(text), 0.0) << text;
    }
}

TEST(FloatValue, TooLargeIsInfinityAndTooSmallIs0) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(floatValue("1e999"), kInfinity);
    EXPECT_EQ(floatValue("-1e999"), -kInfinity);
    EXPECT_EQ(floatValue("0.1e999"), kInfinity);
    EXPECT_EQ(floatValue(std::string(400, '9')), kInfinity);
    EXPECT_EQ(floatValue(std::string(400, '9') + "e-10"), kInfinity);
    EXPECT_EQ(floatValue("1e-999"), 0.0);
    EXPECT_EQ(floatValue("-1e-999"), 0.0);
    EXPECT_EQ(floatValue("0." + std::string(400, '0') + "1"), 0.0);
}

TEST(LastPathComponent, StandsBehindTheLastSlash) {
    EXPECT_EQ(lastPathComponent("a/b/c.txt"), "c.txt");
    EXPECT_EQ(lastPathComponent("c.txt"), "c.txt");
    EXPECT_EQ(lastPathComponent("/c"), "c");
    EXPECT_EQ(lastPathComponent(""), "");
}

TEST(LastPathComponent, TrailingSlashIsDroppedFirst) {
    EXPECT_EQ(lastPathComponent("a/b/"), "b");
    EXPECT_EQ(lastPathComponent("/"), "/");
}

TEST(PathWithoutLastComponent, IsWhatStandsBefore) {
    EXPECT_EQ(pathWithoutLastComponent("a/b/c"), "a/b");
    EXPECT_EQ(pathWithoutLastComponent("a/b/"), "a");
    EXPECT_EQ(pathWithoutLastComponent("/c"), "/");
    EXPECT_EQ(pathWithoutLastComponent("c"), "");
    EXPECT_EQ(pathWithoutLastComponent(""), "");
}

TEST(PathExtension, FollowsTheLastDotOfTheLastComponent) {
    EXPECT_EQ(pathExtension("a.b.txt"), "txt");
    EXPECT_EQ(pathExtension("x.y/a"), "");
    EXPECT_EQ(pathExtension("x/a.JPG/"), "JPG");
    EXPECT_EQ(pathExtension(".hidden.txt"), "txt");
}

TEST(PathExtension, OnlyDotThatLeadsOrEndsTheNameMakesNone) {
    EXPECT_EQ(pathExtension(".hidden"), "");
    EXPECT_EQ(pathExtension("name."), "");
    EXPECT_EQ(pathExtension("."), "");
}

TEST(PathWithoutExtension, DropsItWithItsDot) {
    EXPECT_EQ(pathWithoutExtension("x.y/a.b.txt"), "x.y/a.b");
    EXPECT_EQ(pathWithoutExtension("x.y/a"), "x.y/a");
    EXPECT_EQ(pathWithoutExtension(".hidden"), ".hidden");
    EXPECT_EQ(pathWithoutExtension("name."), "name.");
}

TEST(JoinedPath, ExactlyOneSlashStandsBetween) {
    for (const char* folder : {"a", "a/"}) {
        for (const char* name : {"b", "/b"}) EXPECT_EQ(joinedPath(folder, name), "a/b");
    }
    EXPECT_EQ(joinedPath("/", "b"), "/b");
    EXPECT_EQ(joinedPath("", "b"), "b");
}

}  // namespace
}  // namespace ZkMobileBackup
