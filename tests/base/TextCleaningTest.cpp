#include <clocale>
#include <gtest/gtest.h>

#include "base/Text.h"
#include "base/TextCleaning.h"

namespace ZkMobileBackup {
namespace {

std::string cleaned(const std::string& text) {
    return replaceUnvalidChar(text).value();
}

TEST(Isvisiable, Below128OnlyThePrintableOnesOfTheFixedTable) {
    for (char16_t unit = 0; unit < 128; ++unit) EXPECT_EQ(isvisiable(unit), unit >= 32 && unit <= 126) << int{unit};
}

TEST(Isvisiable, From128To255NoneIs) {
    for (char16_t unit = 128; unit < 256; ++unit) EXPECT_FALSE(isvisiable(unit)) << int{unit};
}

TEST(Isvisiable, From256OnAllAreSurrogateHalvesToo) {
    for (const int unit : {0x100, 0x4E00, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFFFE, 0xFFFF}) {
        EXPECT_TRUE(isvisiable(static_cast<char16_t>(unit)));
    }
}

TEST(Isvisiable, LocaleHasNoSay) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "C.UTF-8");
    EXPECT_FALSE(isvisiable(0xE9));
    std::setlocale(LC_ALL, before.c_str());
}

TEST(ReplaceUnvalidChar, PutsASpaceForEachInvisibleUnit) {
    EXPECT_EQ(cleaned("a\r\nb\tc\x7F"), "a  b c ");
    EXPECT_EQ(cleaned("caf\u00E9\u00FF!"), "caf  !");
    EXPECT_EQ(cleaned(std::string("a\0b", 3)), "a b");
}

TEST(ReplaceUnvalidChar, KeepsTheLengthInUnits) {
    const std::string text = "\u0001\u00E9日\U0001F600\u0080x";
    EXPECT_EQ(toUtf16(cleaned(text)).size(), toUtf16(text).size());
    EXPECT_EQ(cleaned(text), "  日\U0001F600 x");
}

TEST(ReplaceUnvalidChar, BackspaceIsASpaceLikeTheOthers) {
    EXPECT_EQ(cleaned("a\bb"), "a b");
}

TEST(ReplaceUnvalidChar, VisibleAndEmptyTextsStay) {
    EXPECT_EQ(cleaned("plain ~ text"), "plain ~ text");
    EXPECT_EQ(cleaned(""), "");
}

TEST(ReplaceUnvalidChar, OfWhatIsNoTextIsNothing) {
    EXPECT_EQ(replaceUnvalidChar(Value()), std::nullopt);
    EXPECT_EQ(replaceUnvalidChar(7), std::nullopt);
    EXPECT_EQ(replaceUnvalidChar(Array{"a"}), std::nullopt);
    EXPECT_EQ(replaceUnvalidChar(Dictionary()), std::nullopt);
}

TEST(ReplaceUnvalidCharArr, CleansEachElementInOrder) {
    EXPECT_EQ(replaceUnvalidCharArr(Array{"a\nb", "", "c"}), Value(Array{"a b", "", "c"}));
    EXPECT_EQ(replaceUnvalidCharArr(Array{}), Value(Array{}));
    EXPECT_EQ(replaceUnvalidCharArr(Array{7, "a"}), Value(Array{Value(), "a"}));
}

TEST(ReplaceUnvalidCharArr, OfWhatIsNoArrayIsTheEmptyText) {
    EXPECT_EQ(replaceUnvalidCharArr("text"), Value(""));
    EXPECT_EQ(replaceUnvalidCharArr(Value()), Value(""));
}

/// The rules unit by unit.
std::string cleanedUnitByUnit(const std::string& text) {
    std::u16string units = toUtf16(text);
    for (char16_t& unit : units) {
        if (!isvisiable(unit)) unit = u' ';
    }
    return toUtf8(units);
}

std::string prefixUnitByUnit(const std::string& text) {
    std::u16string units = toUtf16(text);
    std::size_t length = 0;
    while (length < units.size() && isvisiable(units[length])) ++length;
    return toUtf8(std::u16string_view(units).substr(0, length));
}

TEST(TextCleaning, EveryCharacterIsTreatedByItsUnits) {
    for (char32_t character = 0; character <= 0x10FFFF; character += character < 0x3000 ? 1 : 251) {
        if (character >= 0xD800 && character <= 0xDFFF) continue;
        std::u16string units = u"a";
        if (character < 0x10000) {
            units += static_cast<char16_t>(character);
        } else {
            units += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
            units += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
        }
        const std::string text = toUtf8(units + u"b");
        ASSERT_EQ(cleaned(text), cleanedUnitByUnit(text)) << static_cast<std::uint32_t>(character);
        ASSERT_EQ(visiblePrefix(text), prefixUnitByUnit(text)) << static_cast<std::uint32_t>(character);
    }
}

TEST(TextCleaning, BytesThatAreNoCharacterCountAsVisible) {
    EXPECT_EQ(cleaned("a\xC3"), "a\xC3");
    EXPECT_EQ(cleaned("a\xC2z"), "a\xC2z");
    EXPECT_EQ(visiblePrefix("\xFF\xC3"), "\xFF\xC3");
}

}  // namespace
}  // namespace ZkMobileBackup
