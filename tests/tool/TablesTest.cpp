#include <gtest/gtest.h>
#include <string>

#include "tests/support/DatabaseBuilder.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using nlohmann::json;
using testing::HasSubstr;

struct DatabaseWithADeletedRow : DatabaseBuilder {
    DatabaseWithADeletedRow() {
        exec("CREATE TABLE message (id INTEGER PRIMARY KEY, text TEXT DEFAULT 'none', flag INTEGER)");
        insert("message", {1, "kept: \"é\" 你好 😀\n", 5});
        insert("message", {2, "deleted text", 7});
        insert("message", {3, "kept as well", nullptr});
        exec("DELETE FROM message WHERE id = 2");
    }
};

TEST(Tables, JsonHoldsEveryTableWithItsRows) {
    const DatabaseWithADeletedRow database;
    const ToolResult result = runTool({"tables", database.path(), "--json"});
    ASSERT_THAT(result, SucceedsSilently());
    const json document = result.json();
    EXPECT_EQ(document["completed"], true);
    ASSERT_EQ(document["tables"].size(), 2U);
    EXPECT_EQ(document["tables"][0]["name"], "sqlite_master");
    const json& table = document["tables"][1];
    EXPECT_EQ(table["name"], "message");
    EXPECT_EQ(table["tableType"], 1);
    EXPECT_EQ(table["pageNum"], 2);
    EXPECT_EQ(table["hasIntergerPK"], true);
    EXPECT_EQ(table["filedCount"], 3);
    EXPECT_EQ(table["filedList"], json({"id", "text", "flag"}));
    EXPECT_EQ(table["filedTypeList"], json::array({8, json::array({2, "'none'"}), 8}));
    EXPECT_EQ(table["rowList"], json::array({{"1", "kept: \"é\" 你好 😀\n", "5"}, {"3", "kept as well", "NULL"}}));
    EXPECT_THAT(table["deletedRowList"].dump(), HasSubstr("deleted text"));
}

TEST(Tables, MembersComeInTheirFixedOrder) {
    const DatabaseWithADeletedRow database;
    const auto document = nlohmann::ordered_json::parse(runTool({"tables", database.path(), "--json"}).output);
    std::string keys;
    for (const auto& [key, value] : document.items()) keys += key + " ";
    for (const auto& [key, value] : document["tables"][0].items()) keys += key + " ";
    EXPECT_EQ(keys,
              "completed lastError tables name tableType pageNum hasIntergerPK filedCount filedList filedTypeList "
              "rowList deletedRowList ");
}

TEST(Tables, PeopleGetOneLineATableWithItsCounts) {
    const DatabaseWithADeletedRow database;
    const ToolResult result = runTool({"tables", database.path()});
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_THAT(result.output, testing::MatchesRegex("table +live +deleted\nsqlite_master +1 +[0-9]+\n"
                                                     "message +2 +[1-9][0-9]*\n"));
}

TEST(Tables, InterruptedRunPrintsWhatItHasAndFails) {
    const DatabaseWithADeletedRow database;
    const ToolResult result = runInterruptedTool({"tables", database.path(), "--json"});
    EXPECT_THAT(result, FailsWithOneSentenceNaming("Interrupted"));
    EXPECT_EQ(result.json()["completed"], false);
}

}  // namespace
}  // namespace ZkMobileBackup
