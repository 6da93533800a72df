#include <gtest/gtest.h>

#include "recovery/shaping/party_name.h"

namespace ZkMobileBackup::shaping {
namespace {

std::string_view named(std::optional<std::string_view> identifier, const Dictionary& contactsMap) {
    return partyName(identifier, &contactsMap);
}

TEST(PartyName, WithoutContactsMapIsUnknown) {
    EXPECT_EQ(partyName("491701234567", nullptr), "Unknown");
    EXPECT_EQ(partyName("+491701234567", nullptr), "Unknown");
}

TEST(PartyName, IsLookedUpUnderTheIdentifierAsItStands) {
    EXPECT_EQ(named("ada@example.com", {{"ada@example.com", "Ada"}}), "Ada");
    EXPECT_EQ(named("0170-123", {{"0170123", "Ada"}}), "Unknown");
    EXPECT_EQ(named(" 0170", {{"0170", "Ada"}}), "Unknown");
}

TEST(PartyName, WithoutPlusSignNothingIsCutOff) {
    EXPECT_EQ(named("491701234567", {{"91701234567", "Ada"}, {"701234567", "Bob"}}), "Unknown");
}

TEST(PartyName, WithPlusSignIsLookedUpWithoutIt) {
    EXPECT_EQ(named("+491701234567", {{"491701234567", "Ada"}}), "Ada");
}

TEST(PartyName, WithPlusSignIsNeverLookedUpAsItStands) {
    EXPECT_EQ(named("+491701234567", {{"+491701234567", "Ada"}}), "Unknown");
}

TEST(PartyName, WithPlusSignIsThenLookedUpWithoutCountryCode) {
    EXPECT_EQ(named("+491701234567", {{"1701234567", "Bob"}}), "Bob");
    EXPECT_EQ(named("+491701234567", {{"1701234567", "Bob"}, {"491701234567", "Ada"}}), "Ada");
    EXPECT_EQ(named("+491701234567", {{"91701234567", "nobody"}, {"01701234567", "nobody"}}), "Unknown");
}

TEST(PartyName, OfThreeUnitsIsThenLookedUpUnderTheEmptyText) {
    EXPECT_EQ(named("+49", {{"", "Ada"}}), "Ada");
}

TEST(PartyName, OfFewerThanThreeUnitsHasNoSecondLookUp) {
    EXPECT_EQ(named("+4", {{"", "Ada"}}), "Unknown");
    EXPECT_EQ(named("+4", {{"4", "Ada"}}), "Ada");
}

TEST(PartyName, PlusSignAloneIsLookedUpUnderTheEmptyText) {
    EXPECT_EQ(named("+", {{"", "Ada"}}), "Ada");
    EXPECT_EQ(named("+", {}), "Unknown");
}

TEST(PartyName, EmptyIdentifierIsLookedUpAsItStands) {
    EXPECT_EQ(named("", {{"", "Ada"}}), "Ada");
    EXPECT_EQ(named("", {}), "Unknown");
}

TEST(PartyName, LostIdentifierIsUnknown) {
    EXPECT_EQ(named(std::nullopt, {{"", "Ada"}}), "Unknown");
}

TEST(PartyName, CountryCodeIsCountedInSixteenBitUnits) {
    EXPECT_EQ(named("+äö1", {{"1", "two bytes a unit"}}), "two bytes a unit");
    EXPECT_EQ(named("+\U0001F6001", {{"1", "two units a character"}}), "two units a character");
}

TEST(PartyName, CharacterIsNeverCutInTwo) {
    const Dictionary map{{"\uFFFD1", "half"}, {"1", "dropped"}, {"\U0001F6001", "whole"}};
    EXPECT_EQ(named("+4\U0001F6001", map), "Unknown");
}

TEST(PartyName, MayBeTheEmptyText) {
    EXPECT_EQ(named("123", {{"123", ""}}), "");
    EXPECT_EQ(named("+49123", {{"49123", ""}, {"123", "Ada"}}), "");
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
