#include <gmock/gmock.h>

#include "tests/recovery/shaping/ShapingTesting.h"

namespace ZkMobileBackup::shaping {
namespace {

using ::testing::ElementsAre;
using ::ZkMobileBackup::testing::columnOf;
using ::ZkMobileBackup::testing::Database;
using ::ZkMobileBackup::testing::Entries;
using ::ZkMobileBackup::testing::entriesOf;

TEST(Bookmarks, ReadTitleAndUrl) {
    Database database;
    database.add("bookmarks", {"id", "type", "url", "title"}, {{"1", "0", "https://a.example", "A"}},
                 {{"-1", "0", "https://b.example", "B"}});
    const auto table = database.shaped(shapeBookmarks);
    EXPECT_EQ(entriesOf(table->rowList(), 0), (Entries{{"title", "A"}, {"url", "https://a.example"}}));
    EXPECT_EQ(entriesOf(table->deletedRowList(), 0), (Entries{{"title", "B"}, {"url", "https://b.example"}}));
}

TEST(Bookmarks, FoldersAreListedToo) {
    Database database;
    database.add("bookmarks", {"id", "type", "title", "url"}, {{"1", "1", "Folder", "NULL"}, {"2", "0", "A", "u"}});
    EXPECT_THAT(columnOf(database.shaped(shapeBookmarks)->rowList(), "title"), ElementsAre("Folder", "A"));
}

TEST(Bookmarks, NullReadsEmpty) {
    Database database;
    database.add("bookmarks", {"title", "url"}, {{"A", "NULL"}, {"NULL", "u"}, {"null", "NULL "}});
    const auto table = database.shaped(shapeBookmarks);
    EXPECT_THAT(columnOf(table->rowList(), "title"), ElementsAre("A", "", "null"));
    EXPECT_THAT(columnOf(table->rowList(), "url"), ElementsAre("", "u", "NULL "));
}

TEST(Bookmarks, MissingColumnIsEmptyInEveryRow) {
    Database database;
    database.add("bookmarks", {"id", "title"}, {{"1", "A", "https://a.example"}, {"2", "B"}});
    const auto table = database.shaped(shapeBookmarks);
    EXPECT_THAT(columnOf(table->rowList(), "title"), ElementsAre("A", "B"));
    EXPECT_THAT(columnOf(table->rowList(), "url"), ElementsAre("", ""));
}

TEST(Bookmarks, ShortRowLeavesItsColumnsEmpty) {
    Database database;
    database.add("bookmarks", {"id", "title", "url"}, {{"1", "A"}, {}}, {{"-1"}});
    const auto table = database.shaped(shapeBookmarks);
    EXPECT_THAT(columnOf(table->rowList(), "title"), ElementsAre("A", ""));
    EXPECT_THAT(columnOf(table->rowList(), "url"), ElementsAre("", ""));
    EXPECT_THAT(columnOf(table->deletedRowList(), "title"), ElementsAre(""));
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
