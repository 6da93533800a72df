#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "recovery/shaping/key_index.h"

namespace ZkMobileBackup {
namespace {

RowList rowsWithKeys(const std::vector<std::string>& keys) {
    RowList rows;
    for (std::size_t i = 0; i < keys.size(); ++i) rows.append({std::to_string(i), keys[i]});
    return rows;
}

std::string numbersOf(std::span<const shaping::KeyIndex::Entry> entries) {
    std::string numbers;
    for (const auto& entry : entries) numbers.append(entry.row.cell(0)).append(" ");
    return numbers;
}

TEST(KeyIndex, FindsTheRowsOfAKeyInTheirOrderWhateverIsAskedForFirst) {
    const RowList rows = rowsWithKeys({"7", "3", "7", "NULL", "-2", "07", "3"});
    shaping::KeyIndex index(rows, 1, 0);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(numbersOf(index.find(7)), "0 2 5 ");
        EXPECT_EQ(numbersOf(index.find(-2)), "4 ");
        EXPECT_EQ(numbersOf(index.find(0)), "3 ");
        EXPECT_EQ(numbersOf(index.find(3)), "1 6 ");
        EXPECT_EQ(numbersOf(index.find(8)), "");
        EXPECT_EQ(index.findFirst(3)->cell(0), "1");
        EXPECT_EQ(index.findFirst(4), nullptr);
    }
}

/// The same, by looking at every row.
std::string numbersOfRowsWith(const RowList& rows, std::int64_t key) {
    std::string numbers;
    for (const Row& row : rows) {
        if (row.cell(1) == std::to_string(key)) numbers.append(row.cell(0)).append(" ");
    }
    return numbers;
}

class KeysOfAnyKind : public ::testing::TestWithParam<int> {};

TEST_P(KeysOfAnyKind, AreFoundInAnyOrderOfAsking) {
    constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
    std::mt19937 random(static_cast<unsigned>(GetParam()));
    // Without gaps, with gaps, with many rows a key, and far apart.
    const int spread = std::vector<int>{1, 3, 0, 1}[static_cast<std::size_t>(GetParam() % 4)];
    std::vector<std::int64_t> keys;
    for (std::int64_t key = -5; keys.size() < 200; key += spread == 0 ? random() % 20 == 0 : 1 + random() % spread) {
        keys.push_back(key);
    }
    if (GetParam() % 4 == 3) keys.insert(keys.end(), {kLowest, kHighest, kHighest, 0});
    if (GetParam() % 3 == 0) std::shuffle(keys.begin(), keys.end(), random);
    std::vector<std::string> texts;
    for (const std::int64_t key : keys) texts.push_back(std::to_string(key));
    const RowList rows = rowsWithKeys(texts);
    shaping::KeyIndex index(rows, 1, 0);
    for (int i = 0; i < 400; ++i) {
        const std::int64_t key =
            i % 7 == 0 ? keys[random() % keys.size()] : static_cast<std::int64_t>(random() % 700) - 9;
        ASSERT_EQ(numbersOf(index.find(key)), numbersOfRowsWith(rows, key)) << key;
    }
    for (const std::int64_t key : {kHighest, kLowest, kHighest, std::int64_t{0}}) {
        ASSERT_EQ(numbersOf(index.find(key)), numbersOfRowsWith(rows, key)) << key;
    }
}

INSTANTIATE_TEST_SUITE_P(KeyIndex, KeysOfAnyKind, ::testing::Range(0, 24));

TEST(KeyIndex, DoesNotFindRowsWithoutTheCell) {
    RowList rows;
    rows.append(std::vector<std::string>{"alone"});
    shaping::KeyIndex index(rows, 1, 0);
    EXPECT_TRUE(index.find(0).empty());
}

TEST(KeyIndex, GivesOutPairsUpToItsLimitAndFirstRowsWithoutEnd) {
    constexpr std::size_t kRows = 3000;
    const RowList rows = rowsWithKeys(std::vector<std::string>(kRows, "1"));
    shaping::KeyIndex index(rows, 1, kRows);
    EXPECT_EQ(index.mostPairs(), 1'048'576 + 256 * 2 * kRows);
    std::size_t pairs = 0;
    for (std::size_t i = 0; i < kRows; ++i) pairs += index.find(1).size();
    EXPECT_EQ(pairs, index.mostPairs());
    EXPECT_NE(index.findFirst(1), nullptr);
}

}  // namespace
}  // namespace ZkMobileBackup
