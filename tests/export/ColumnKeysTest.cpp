#include <fmt/format.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "export/column_keys.h"

namespace ZkMobileBackup {
namespace {

using Texts = std::vector<std::string>;

TEST(UnionOfKeys, NoRowsHaveNoKeys) {
    EXPECT_EQ(unionOfKeys(Rows()), Texts());
}

TEST(UnionOfKeys, EveryKeyStandsWhereItIsFirstSeen) {
    const Rows rows({Dictionary{{"B", "1"}, {"A", "2"}}, Dictionary{{"C", "3"}, {"A", "4"}},
                     Dictionary{{"D", Value()}, {"B", "5"}}});
    EXPECT_EQ(unionOfKeys(rows), (Texts{"B", "A", "C", "D"}));
}

TEST(UnionOfKeys, KeysThatDifferInCaseOnlyAreDifferent) {
    EXPECT_EQ(unionOfKeys(Rows({Dictionary{{"a", "1"}}, Dictionary{{"A", "2"}}})), (Texts{"a", "A"}));
}

TEST(UnionOfKeys, RowsWithoutCommonKeysGiveAllOfThem) {
    constexpr std::size_t kRows = 20000;
    std::vector<Dictionary> rows;
    for (std::size_t r = 0; r < kRows; ++r) rows.push_back(Dictionary{{fmt::format("K{}", r), "x"}});
    const Texts keys = unionOfKeys(Rows(std::move(rows)));
    ASSERT_EQ(keys.size(), kRows);
    EXPECT_EQ(keys[12345], "K12345");
}

TEST(WithNamesFirst, FirstAndLastNameLead) {
    EXPECT_EQ(withNamesFirst({"A", "Last Name", "B", "First Name", "C"}),
              (Texts{"First Name", "A", "Last Name", "B", "C"}));
    EXPECT_EQ(withNamesFirst({"A", "First Name", "Last Name", "B"}), (Texts{"First Name", "Last Name", "A", "B"}));
}

TEST(WithNamesFirst, LastNameLeadsAsLongAsThereIsNoOtherKeyAndIsSecondOtherwise) {
    EXPECT_EQ(withNamesFirst({"Last Name", "A"}), (Texts{"Last Name", "A"}));
    EXPECT_EQ(withNamesFirst({"A", "B", "Last Name"}), (Texts{"A", "Last Name", "B"}));
}

TEST(WithNamesFirst, OtherKeysKeepTheirOrder) {
    EXPECT_EQ(withNamesFirst({"C", "first name", "A"}), (Texts{"C", "first name", "A"}));
    EXPECT_EQ(withNamesFirst({}), Texts());
}

}  // namespace
}  // namespace ZkMobileBackup
