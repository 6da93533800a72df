#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

#include "tests/support/DatabaseBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class Result : public testing::Test {
protected:
    ToolResult run(const std::string& name, const std::vector<std::uint8_t>& bytes,
                   const std::vector<std::string>& options = {"--json"}) const {
        writeBytes(folder_.path(name), bytes);
        std::vector<std::string> arguments{"result", folder_.path(name)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runTool(arguments);
    }

    /// With the sample contacts, whose file has a name of its own: what counts is its content.
    ToolResult runWithContacts(const std::string& name, const std::vector<std::uint8_t>& bytes) const {
        writeBytes(folder_.path("people"), sampleAddressBook());
        return run(name, bytes, {"--json", "--contacts", folder_.path("people")});
    }

    /// The name in the first live row of a party.
    static std::string nameOf(const json& table, const std::string& party) {
        for (const json& row : table["rowList"]) {
            if (row["phone"] == party) return row["name"];
        }
        return "";
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

TEST_F(Result, ContactsComeWithTheirMap) {
    const json result = run("AddressBook.sqlitedb", sampleAddressBook()).json();
    ASSERT_EQ(result["tables"].size(), 1U);
    const json& table = result["tables"][0];
    EXPECT_EQ(table["name"], "Contacts");
    EXPECT_EQ(table["filedList"], json({"name", "company", "mobilePhoneList", "emailList", "Note", "image"}));
    EXPECT_EQ(table["rowList"][0]["homePhoneList"], json({"555-0199"}));
    EXPECT_EQ(table["rowList"][0]["image"], "amelia.png");
    EXPECT_EQ(result["contacts"]["15550100123"], "Amelia Hartley");
    EXPECT_EQ(result["contacts"]["natalia@example.ru"], "Наталья Соколова");
}

TEST_F(Result, MapIsEmptyWhenTheTablesOfContactsAreMissing) {
    EXPECT_EQ(run("AddressBook.sqlitedb", sampleNotes()).json()["contacts"], json::object());
}

TEST_F(Result, MapIsTheContactsDatabasesAlone) {
    EXPECT_FALSE(runWithContacts("sms.db", sampleMessages()).json().contains("contacts"));
}

TEST_F(Result, ConversationsAreNamedFromTheContactsDatabase) {
    const json table = runWithContacts("sms.db", sampleMessages()).json()["tables"][0];
    EXPECT_EQ(table["name"], "Message");
    EXPECT_EQ(table["filedList"], json({"name", "phone", "email"}));
    // By number, by number without its country code, by e-mail address; a stranger, several parties.
    EXPECT_EQ(nameOf(table, "+4915550142"), "Jürgen Größmann");
    EXPECT_EQ(nameOf(table, "+819055500175"), "さくら 山本");
    EXPECT_EQ(nameOf(table, "rosa@example.es"), "Rosa 🌹 Delgado");
    EXPECT_EQ(nameOf(table, "+442079460000"), "Unknown");
    EXPECT_EQ(nameOf(table, "chat580112047"), "Unknown");
    const json& first = table["rowList"][0]["textlist"][0];
    EXPECT_EQ(first, json({{"detail_text", "नमस्ते, कल मिलते हैं। (8)"},
                           {"detail_date", "2013-03-03 18:39"},
                           {"detail_sent_flag", "0"}}));
    EXPECT_EQ(table["deletedRowList"][0]["textlist"].size(), 1U);
}

TEST_F(Result, CallsAreNamedFromTheContactsDatabase) {
    const json table = runWithContacts("call_history.db", sampleCallHistory()).json()["tables"][0];
    EXPECT_EQ(table["name"], "Call History");
    EXPECT_EQ(nameOf(table, "+15550100123"), "Amelia Hartley");
    EXPECT_EQ(nameOf(table, "+442079460000"), "Unknown");
    std::set<std::string> kinds;
    for (const json& row : table["rowList"])
        kinds.insert(row["type"].get<std::string>() + " " + row["duration"].get<std::string>());
    EXPECT_THAT(kinds, testing::IsSupersetOf({"Incoming Missed", "Incoming 42 Seconds", "Failed 0 Second",
                                              "Outgoing 1 minute", "Outgoing 2 hours"}));
    EXPECT_EQ(table["deletedRowList"].size(), 4U);
}

TEST_F(Result, NobodyIsNamedWithoutAContactsDatabase) {
    for (const json& table : {run("sms.db", sampleMessages()).json()["tables"][0],
                              run("call_history.db", sampleCallHistory()).json()["tables"][0]}) {
        ASSERT_FALSE(table["rowList"].empty());
        for (const json& row : table["rowList"]) EXPECT_EQ(row["name"], "Unknown");
    }
}

TEST_F(Result, MessagesFindTheirConversationUpToRowid16383) {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE message (ROWID INTEGER PRIMARY KEY, text TEXT); INSERT INTO message VALUES (16383, 'last one'), "
        "(16384, 'key reads differently')");
    database.exec(
        "CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER); INSERT INTO chat_message_join VALUES "
        "(2, 16383), (2, 16384)");
    database.exec(
        "CREATE TABLE chat (ROWID INTEGER PRIMARY KEY, a TEXT, b TEXT, c TEXT, d TEXT, e TEXT, chat_identifier TEXT); "
        "INSERT INTO chat VALUES (2, '', '', '', '', '', 'ann@example.com')");
    const json rows = run("sms.db", database.bytes()).json()["tables"][0]["rowList"];
    ASSERT_EQ(rows.size(), 1U);
    ASSERT_EQ(rows[0]["textlist"].size(), 1U);
    EXPECT_EQ(rows[0]["textlist"][0]["detail_text"], "last one");
}

TEST_F(Result, PeopleSeeHowManyMessagesAConversationHasAndHowItBegins) {
    const ToolResult result = run("sms.db", sampleMessages(), {});
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_THAT(result.output,
                HasSubstr("(38 messages) 2013-03-03 13:39 sent: Привет! Как прошла поездка? (3); 2013-"));
    EXPECT_THAT(result.output, HasSubstr("(1 message) 2013-03-03 15:39 received: 晚上一起吃饭吗？"));
}

TEST_F(Result, PeopleSeeTheListsOfAContactJoined) {
    EXPECT_THAT(run("AddressBook.sqlitedb", sampleAddressBook(), {}).output, HasSubstr("+1-555-010-0123, 555-0199"));
}

TEST_F(Result, ColumnsThatAreEmptyInEveryRowAreNotShownToPeople) {
    const ToolResult result = run("sms.db", sampleMessages(), {});
    EXPECT_THAT(result.output, HasSubstr(" phone "));
    EXPECT_THAT(result.output, Not(HasSubstr(" email ")));
}

TEST_F(Result, ContactsThatCannotBeReadAreNamed) {
    EXPECT_THAT(run("notes.sqlite", sampleNotes(), {"--contacts", folder_.path("missing")}),
                FailsWithOneSentenceNaming(folder_.path("missing")));
}

TEST_F(Result, ContactsThatAreNoDatabaseGetAWarning) {
    writeText(folder_.path("text"), "no database");
    const ToolResult result = run("sms.db", sampleMessages(), {"--json", "--contacts", folder_.path("text")});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr("Warning: '" + folder_.path("text") + "'"));
    EXPECT_EQ(nameOf(result.json()["tables"][0], "+4915550142"), "Unknown");
}

}  // namespace
}  // namespace ZkMobileBackup
