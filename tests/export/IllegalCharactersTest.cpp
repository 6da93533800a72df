#include <gtest/gtest.h>
#include <string>

#include "export/IllegalCharacters.h"

namespace ZkMobileBackup {
namespace {

bool isLegal(char16_t unit) {
    return !isContainInlegalCharacter(std::u16string(1, unit));
}

TEST(IllegalCharacters, EmptyTextHasNone) {
    EXPECT_FALSE(isContainInlegalCharacter(u""));
}

TEST(IllegalCharacters, EveryUnitBelow128IsLegal) {
    for (char16_t unit = 0; unit < 0x80; ++unit) EXPECT_TRUE(isLegal(unit)) << int{unit};
}

TEST(IllegalCharacters, LatinLettersAbove127AreIllegal) {
    for (char16_t unit = 0x80; unit < 0x100; ++unit) EXPECT_FALSE(isLegal(unit)) << int{unit};
    EXPECT_TRUE(isContainInlegalCharacter(u"caf\u00E9"));
}

TEST(IllegalCharacters, TwoByteCharactersAreJudgedByTheirLowByte) {
    for (char16_t unit = 0x100; unit < 0x800; ++unit) EXPECT_EQ(isLegal(unit), (unit & 0xFF) < 0x80) << int{unit};
}

TEST(IllegalCharacters, EveryThreeByteCharacterIsLegal) {
    for (char16_t unit = 0x800; unit < 0xD800; ++unit) EXPECT_TRUE(isLegal(unit)) << int{unit};
    for (std::uint32_t unit = 0xE000; unit <= 0xFFFF; ++unit) EXPECT_TRUE(isLegal(static_cast<char16_t>(unit)));
}

TEST(IllegalCharacters, SurrogatesAreJudgedByTheirLowByte) {
    EXPECT_TRUE(isLegal(0xD83D));
    EXPECT_FALSE(isLegal(0xD880));
    EXPECT_FALSE(isContainInlegalCharacter(u"\U0001F600"));  // D83D DE00
    EXPECT_TRUE(isContainInlegalCharacter(u"\U0001F49A"));   // D83D DC9A
}

TEST(IllegalCharacters, OneIllegalUnitIsEnough) {
    EXPECT_TRUE(isContainInlegalCharacter(u"\u4E2Dabc\u00FFabc"));
    EXPECT_FALSE(isContainInlegalCharacter(u"\u4E2Dabc\u0001\n"));
}

}  // namespace
}  // namespace ZkMobileBackup
