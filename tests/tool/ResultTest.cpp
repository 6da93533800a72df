#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class Result : public testing::Test {
protected:
    ToolResult run(const std::string& name, const std::vector<std::uint8_t>& bytes,
                   const std::vector<std::string>& options = {"--json"}) const {
        writeBytes(folder_.path(name), bytes);
        std::vector<std::string> arguments{"result", folder_.path(name)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runTool(arguments);
    }

    TemporaryFolder folder_;
};

TEST_F(Result, NotesAreShaped) {
    const ToolResult result = run("notes.sqlite", sampleNotes());
    ASSERT_THAT(result, SucceedsSilently());
    const json tables = result.json()["tables"];
    ASSERT_EQ(tables.size(), 1U);
    EXPECT_EQ(tables[0]["name"], "Notes");
    EXPECT_EQ(tables[0]["filedList"], json({"title", "date"}));
    ASSERT_FALSE(tables[0]["rowList"].empty());
    EXPECT_FALSE(tables[0]["deletedRowList"].empty());
    EXPECT_TRUE(tables[0]["rowList"][0].contains("title"));
    EXPECT_FALSE(tables[0]["rowList"][0].contains("RowData_Identify_Key"));
    EXPECT_FALSE(tables[0]["deletedRowList"][0].contains("RowData_Identify_Key"));
}

TEST_F(Result, CalendarYieldsEventsThenReminders) {
    const json tables = run("Calendar.sqlitedb", sampleCalendar()).json()["tables"];
    ASSERT_EQ(tables.size(), 2U);
    EXPECT_EQ(tables[0]["name"], "Calendar");
    EXPECT_EQ(tables[1]["name"], "Reminders");
}

TEST_F(Result, BookmarksAreShaped) {
    EXPECT_EQ(run("Bookmarks.db", sampleBookmarks()).json()["tables"][0]["name"], "BookMark");
}

TEST_F(Result, ExtensionOfTheFileDoesNotMatter) {
    EXPECT_EQ(run("notes.copy", sampleNotes()).json()["tables"][0]["name"], "Notes");
}

TEST_F(Result, VoicemailHasNoTables) {
    EXPECT_EQ(run("voicemail.db", sampleVoicemail()).json(), json({{"tables", json::array()}}));
}

TEST_F(Result, PhotosHaveNoTables) {
    EXPECT_EQ(run("Photos.sqlite", sampleNotes()).json(), json({{"tables", json::array()}}));
}

TEST_F(Result, InterruptedRunPrintsNamedTablesWithoutRowsAndFails) {
    writeBytes(folder_.path("notes.sqlite"), sampleNotes());
    const ToolResult result = runInterruptedTool({"result", folder_.path("notes.sqlite"), "--json"});
    EXPECT_THAT(result, FailsWithOneSentenceNaming("Interrupted"));
    EXPECT_EQ(result.json()["tables"][0]["name"], "Notes");
    EXPECT_TRUE(result.json()["tables"][0]["rowList"].empty());
}

TEST_F(Result, PeopleGetATable) {
    const ToolResult result = run("notes.sqlite", sampleNotes(), {});
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_THAT(result.output, HasSubstr("Notes: "));
    EXPECT_THAT(result.output, HasSubstr("\ndeleted"));
}

TEST_F(Result, UnknownNameIsRefused) {
    EXPECT_THAT(run("other.db", sampleNotes()), FailsWithOneSentenceNaming(folder_.path("other.db")));
    EXPECT_THAT(run("Notes.sqlite", sampleNotes()), FailsWithOneSentenceNaming("'Notes'"));
    EXPECT_THAT(run("notes.", sampleNotes()), FailsWithOneSentenceNaming("'notes.'"));
}

TEST_F(Result, ApplicationsThatAreNotShapedYetAreNamed) {
    for (const char* name : {"AddressBook.sqlitedb", "sms.db", "call_history.db"}) {
        EXPECT_THAT(run(name, sampleMessages()), FailsWithOneSentenceNaming("not shaped yet"));
    }
}

TEST_F(Result, ContactsThatCannotBeReadAreNamed) {
    EXPECT_THAT(run("notes.sqlite", sampleNotes(), {"--contacts", folder_.path("missing")}),
                FailsWithOneSentenceNaming(folder_.path("missing")));
}

}  // namespace
}  // namespace ZkMobileBackup
