#include <gtest/gtest.h>

#include "export/ExportRows.h"

namespace ZkMobileBackup {
namespace {

TEST(Rows, NullIsEmpty) {
    EXPECT_TRUE(Rows(nullptr).empty());
    EXPECT_TRUE(Rows().empty());
}

TEST(Rows, KeepTheirOrder) {
    Rows rows({Dictionary{{"A", "1"}}, Dictionary{{"A", "2"}}});
    rows.append(Dictionary{{"A", "3"}});
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(*rows[0].text("A"), "1");
    EXPECT_EQ(*rows[2].text("A"), "3");
}

TEST(Rows, CopyIsNotChangedByTheOriginal) {
    Rows rows;
    const Rows before = rows;
    rows.append(Dictionary{{"A", "1"}});
    EXPECT_TRUE(before.empty());
}

TEST(Tables, NullIsEmpty) {
    EXPECT_TRUE(Tables(nullptr).empty());
    EXPECT_TRUE(Tables().empty());
}

TEST(Tables, EnumerateInTheOrderOfSetting) {
    Tables tables({{"z", Rows()}, {"a", Rows()}});
    tables.set("m", Rows());
    ASSERT_EQ(tables.size(), 3U);
    EXPECT_EQ(tables[0].name, "z");
    EXPECT_EQ(tables[1].name, "a");
    EXPECT_EQ(tables[2].name, "m");
}

TEST(Tables, NameThatComesAgainKeepsItsPlaceAndGetsTheNewRows) {
    const Tables tables({{"a", Rows()}, {"b", Rows()}, {"a", Rows({Dictionary{{"A", "1"}}})}});
    ASSERT_EQ(tables.size(), 2U);
    EXPECT_EQ(tables[0].name, "a");
    EXPECT_EQ(tables[0].rows.size(), 1U);
}

}  // namespace
}  // namespace ZkMobileBackup
