#include <gtest/gtest.h>
#include <string>

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
