#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/Value.h"
#include "tests/support/DictionaryKeys.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;

/// Enough keys that look-up goes through an index.
Dictionary manyKeys(std::size_t count) {
    Dictionary dictionary;
    for (std::size_t i = 0; i < count; ++i) dictionary.set("key" + std::to_string(i), i);
    return dictionary;
}

TEST(Dictionary, KeysAreEnumeratedInTheOrderOfFirstSetting) {
    Dictionary dictionary;
    for (const char* key : {"z", "a", "m", "a", "z"}) dictionary.set(key, key);
    EXPECT_THAT(keysOf(dictionary), ElementsAre("z", "a", "m"));
}

TEST(Dictionary, SettingAnExistingKeyReplacesTheValueAndKeepsThePlace) {
    Dictionary dictionary{{"a", 1}, {"b", 2}};
    dictionary.set("a", 3);
    EXPECT_EQ(dictionary, (Dictionary{{"a", 3}, {"b", 2}}));
    EXPECT_EQ(dictionary.valueAt(0), Value(3));
}

TEST(Dictionary, MissingKeyIsNotFoundButANullValueIs) {
    Dictionary dictionary;
    dictionary.set("a", Value());
    EXPECT_TRUE(dictionary.contains("a"));
    EXPECT_TRUE(dictionary.find("a")->isNull());
    EXPECT_FALSE(dictionary.contains("b"));
    EXPECT_EQ(dictionary.find("b"), nullptr);
}

TEST(Dictionary, TextIsNullForAValueThatIsNone) {
    const Dictionary dictionary{{"a", "x"}, {"b", 1}};
    EXPECT_EQ(*dictionary.text("a"), "x");
    EXPECT_EQ(dictionary.text("b"), nullptr);
    EXPECT_EQ(dictionary.text("c"), nullptr);
}

TEST(Dictionary, CopyIsIndependent) {
    const Dictionary original{{"a", 1}, {"b", 2}};
    Dictionary copy = original;
    copy.set("a", 3);
    copy.set("c", 4);
    copy.setValueAt(1, 5);
    EXPECT_EQ(original, (Dictionary{{"a", 1}, {"b", 2}}));
    EXPECT_EQ(copy, (Dictionary{{"a", 3}, {"b", 5}, {"c", 4}}));
}

TEST(Dictionary, CopiesThatGetDifferentKeysDoNotSeeEachOthers) {
    const Dictionary original{{"a", 1}};
    Dictionary first = original;
    Dictionary second = original;
    first.set("first", 1);
    second.set("second", 2);
    EXPECT_THAT(keysOf(first), ElementsAre("a", "first"));
    EXPECT_THAT(keysOf(second), ElementsAre("a", "second"));
}

TEST(Dictionary, EveryKeyIsFoundWhateverTheSize) {
    for (const std::size_t count : {1U, 23U, 24U, 25U, 26U, 1000U}) {
        const Dictionary dictionary = manyKeys(count);
        for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(*dictionary.find("key" + std::to_string(i)), Value(i));
        EXPECT_FALSE(dictionary.contains("key" + std::to_string(count)));
    }
}

TEST(Dictionary, RemovedKeyIsGoneAndTheOthersKeepTheirOrder) {
    Dictionary dictionary{{"a", 1}, {"b", 2}, {"c", 3}};
    dictionary.remove("b");
    EXPECT_EQ(dictionary, (Dictionary{{"a", 1}, {"c", 3}}));
    dictionary.set("b", 4);
    EXPECT_THAT(keysOf(dictionary), ElementsAre("a", "c", "b"));
}

TEST(Dictionary, RemovingAMissingKeyDoesNothing) {
    Dictionary dictionary{{"a", 1}};
    dictionary.remove("b");
    EXPECT_EQ(dictionary, (Dictionary{{"a", 1}}));
}

TEST(Dictionary, KeysAreFoundAfterARemovalFromALargeOne) {
    Dictionary dictionary = manyKeys(30);
    dictionary.remove("key3");
    EXPECT_FALSE(dictionary.contains("key3"));
    EXPECT_EQ(*dictionary.find("key29"), Value(29));
    for (std::size_t i = 10; i < 20; ++i) dictionary.remove("key" + std::to_string(i));
    EXPECT_EQ(*dictionary.find("key29"), Value(29));
    EXPECT_EQ(dictionary.size(), 19U);
}

TEST(Dictionary, MergeKeepsThePlaceOfExistingKeysAndAppendsNewOnes) {
    Dictionary dictionary{{"a", 1}, {"b", 2}};
    dictionary.merge({{"c", 3}, {"a", 4}});
    EXPECT_EQ(dictionary, (Dictionary{{"a", 4}, {"b", 2}, {"c", 3}}));
}

TEST(Dictionary, MergeWithItselfChangesNothing) {
    Dictionary dictionary{{"a", 1}, {"b", 2}};
    dictionary.merge(dictionary);
    EXPECT_EQ(dictionary, (Dictionary{{"a", 1}, {"b", 2}}));
}

TEST(Dictionary, CopiesShareTheirKeysAsLongAsValuesAloneChange) {
    const Dictionary original{{"a", 1}, {"b", 2}};
    Dictionary copy = original;
    copy.set("a", 3);
    copy.setValueAt(1, 4);
    EXPECT_EQ(&copy.keyAt(0), &original.keyAt(0));
    copy.set("c", 5);
    EXPECT_NE(&copy.keyAt(0), &original.keyAt(0));
}

TEST(Dictionary, RoomMadeAheadChangesNothingThatCanBeSeen) {
    for (const std::size_t room : {0U, 1U, 24U, 25U, 1000U}) {
        Dictionary dictionary{{"first", 1}};
        const Dictionary copy = dictionary;
        dictionary.reserve(room);
        EXPECT_EQ(dictionary, copy);
        for (int i = 0; i < 60; ++i) dictionary.set("key" + std::to_string(i), i);
        dictionary.set("first", 2);
        dictionary.remove("key30");
        EXPECT_EQ(copy.size(), 1U);
        ASSERT_EQ(dictionary.size(), 60U);
        EXPECT_EQ(*dictionary.find("first")->integer(), 2);
        EXPECT_EQ(dictionary.find("key30"), nullptr);
        EXPECT_EQ(*dictionary.find("key59")->integer(), 59);
        EXPECT_EQ(dictionary.keyAt(1), "key0");
    }
}

TEST(Dictionary, OrderCountsInAComparison) {
    EXPECT_FALSE((Dictionary{{"a", 1}, {"b", 2}}) == (Dictionary{{"b", 2}, {"a", 1}}));
    EXPECT_FALSE((Dictionary{{"a", 1}}) == (Dictionary{{"a", 1}, {"b", 2}}));
    EXPECT_FALSE((Dictionary{{"a", 1}}) == (Dictionary{{"a", 2}}));
}

TEST(Dictionary, EmptyOneHasNothing) {
    const Dictionary dictionary;
    EXPECT_TRUE(dictionary.empty());
    EXPECT_FALSE(dictionary.contains(""));
    EXPECT_EQ(dictionary, Dictionary());
}

TEST(Dictionary, KeyMayBeEmpty) {
    Dictionary dictionary;
    dictionary.set("", 1);
    EXPECT_EQ(*dictionary.find(""), Value(1));
}

}  // namespace
}  // namespace ZkMobileBackup
