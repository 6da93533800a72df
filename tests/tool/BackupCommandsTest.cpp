#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/SmallBackup.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kInfo = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>Unique Identifier</key><string>ABCDEF</string>
<key>Display Name</key><string>Zoë's phone</string>
<key>Last Backup Date</key><date>2014-02-04T13:49:00Z</date>
</dict></plist>)";

TEST(List, JsonHoldsTheBackupsOfTheRoot) {
    const TemporaryFolder root;
    writeText(root.path("one/Info.plist"), kInfo);
    writeText(root.path("two/no info"), "");
    const ToolResult result = runTool({"list", "--root", root.path(), "--json"});
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_EQ(result.json(), json::array({{{"udid", "ABCDEF"},
                                           {"serialNumber", nullptr},
                                           {"deviceClass", "Zoë's phone"},
                                           {"size", 0},
                                           {"lastUpdate", "2014-02-04T13:49:00Z"},
                                           {"path", root.path("one")}}}));
}

TEST(List, TakesTheUsersOwnFolderWithoutARoot) {
    const TemporaryFolder home;
    const Environment atHome{{"HOME", home.path()}};
    EXPECT_EQ(runToolWith(atHome, {"list", "--json"}).json(), json::array());
    writeText(home.path("Library/Application Support/MobileSync/Backup/one/Info.plist"), kInfo);
    EXPECT_EQ(runToolWith(atHome, {"list", "--json"}).json()[0]["udid"], "ABCDEF");
}

TEST(List, PeopleGetALineABackup) {
    const TemporaryFolder root;
    writeText(root.path("one/Info.plist"), kInfo);
    EXPECT_THAT(runTool({"list", "--root", root.path()}).output, HasSubstr("\nZoë's phone "));
}

TEST(List, RootThatCannotBeListedIsNamed) {
    const TemporaryFolder root;
    EXPECT_THAT(runTool({"list", "--root", root.path("missing")}), FailsWithOneSentenceNaming(root.path("missing")));
}

TEST(ManifestCommand, JsonHoldsTheRecordsInTheOrderOfTheFile) {
    SmallBackup backup;
    backup.add("Library/Notes/notes.sqlite", {1, 2, 3}).add("other", {});
    const ToolResult result = runTool({"manifest", backup.path(), "--json"});
    ASSERT_THAT(result, SucceedsSilently());
    const auto records = nlohmann::ordered_json::parse(result.output);
    ASSERT_EQ(records.size(), 2U);
    std::vector<std::string> keys;
    for (const auto& [key, value] : records[0].items()) keys.push_back(key);
    EXPECT_THAT(keys, ElementsAre("start_offset", "domain", "filename", "linktarget", "datahash", "unknown1", "mode",
                                  "unknown2", "unknown3", "userid", "groupid", "mtime", "atime", "ctime", "filelen",
                                  "flag", "numprops", "properties", "fileID"));
    EXPECT_EQ(records[0]["start_offset"], 6);
    EXPECT_EQ(records[0]["filename"], "Library/Notes/notes.sqlite");
    EXPECT_TRUE(records[0]["properties"].is_object());
    EXPECT_EQ(records[1]["fileID"], "0000000000000000000000000000000000000002");
}

TEST(ManifestCommand, JsonIsNullWhenItCannotBeRead) {
    const TemporaryFolder backup;
    const ToolResult result = runTool({"manifest", backup.path(), "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "null\n");
}

TEST(ManifestCommand, JsonIsNullForAFolderThatIsNotThere) {
    const TemporaryFolder folder;
    const ToolResult result = runTool({"manifest", folder.path("missing"), "--json"});
    EXPECT_THAT(result, FailsWithOneSentenceNaming(folder.path("missing")));
    EXPECT_EQ(result.output, "null\n");
}

TEST(ManifestCommand, InterruptedRunFails) {
    SmallBackup backup;
    EXPECT_THAT(runInterruptedTool({"manifest", backup.path()}), FailsWithOneSentenceNaming("Interrupted"));
}

TEST(ManifestCommand, PeopleGetALineAFile) {
    SmallBackup backup;
    backup.add("Library/Notes/notes.sqlite", {});
    EXPECT_THAT(runTool({"manifest", backup.path()}).output, HasSubstr("HomeDomain  Library/Notes/notes.sqlite\n"));
}

struct NotesAndCalendar : SmallBackup {
    NotesAndCalendar() {
        add("Library/Notes/notes.sqlite", sampleNotes());
        add("Library/Calendar/Calendar.sqlitedb", sampleCalendar());
    }
};

TEST(Scan, JsonHoldsItsReportsThenTheDomains) {
    const NotesAndCalendar backup;
    const ToolResult result = runTool({"scan", backup.path(), "--json"});
    ASSERT_THAT(result, SucceedsSilently());
    const json document = result.json();
    EXPECT_EQ(document["events"], json::array({{{"state", 1}, {"domain", "Note"}, {"progress", 0.1}},
                                               {{"state", 1}, {"domain", "Calendar"}, {"progress", 0.2}},
                                               {{"state", 1}, {"domain", "Reminder"}, {"progress", 0.3}},
                                               {{"state", 1}, {"domain", "Photo"}, {"progress", 0.4}},
                                               {{"state", 1}, {"domain", nullptr}, {"progress", 0.5}},
                                               {{"state", 3}, {"domain", nullptr}, {"progress", 1.0}}}));
    ASSERT_EQ(document["domains"].size(), 5U);
    const json& notes = document["domains"][0];
    EXPECT_EQ(notes["name"], "Note");
    EXPECT_EQ(notes["class"], "ZkMobileBackupNoteDomain");
    EXPECT_GT(notes["deleted"], 0);
    EXPECT_GT(notes["records"], notes["deleted"]);
    EXPECT_EQ(document["domains"][4],
              json({{"name", nullptr}, {"class", "ZkMobileBackupMovieDomain"}, {"records", 0}, {"deleted", 0}}));
}

TEST(Scan, EveryKnownDatabaseHasItsClass) {
    SmallBackup backup;
    const std::vector<std::pair<std::string, std::string>> classes = {
        {"AddressBook.sqlitedb", "ZkMobileBackupAddressBookDomain"},
        {"sms.db", "ZkMobileBackupMessageDomain"},
        {"notes.sqlite", "ZkMobileBackupNoteDomain"},
        {"call_history.db", "ZkMobileBackupCallHistoryDomain"},
        {"Bookmarks.db", "ZkMobileBackupSafariBookmarksDomain"},
        {"voicemail.db", "ZkMobileBackupVoiceMailDomain"},
        {"Photos.sqlite", "ZkMobileBackupPhotoDomain"}};
    for (const auto& [file, name] : classes) backup.add(file, sampleVoicemail());
    const json domains = runTool({"scan", backup.path(), "--json"}).json()["domains"];
    ASSERT_EQ(domains.size(), classes.size() + 2);
    for (std::size_t i = 0; i < classes.size(); ++i) EXPECT_EQ(domains[i]["class"], classes[i].second);
}

TEST(Scan, ManifestThatCannotBeReadGivesTheLastReportOnly) {
    const TemporaryFolder backup;
    const json document = runTool({"scan", backup.path(), "--json"}).json();
    EXPECT_EQ(document, json({{"events", json::array({{{"state", 3}, {"domain", nullptr}, {"progress", 1.0}}})},
                              {"domains", json::array()}}));
}

TEST(Scan, PeopleGetALineADomain) {
    const NotesAndCalendar backup;
    EXPECT_THAT(runTool({"scan", backup.path()}).output, HasSubstr("\nMovie "));
}

TEST(RecordsCommand, LiveRecordsComeBeforeDeletedOnes) {
    const NotesAndCalendar backup;
    const ToolResult result = runTool({"records", backup.path(), "--domain", "Note", "--json"});
    ASSERT_THAT(result, SucceedsSilently());
    const json records = result.json();
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.front()["deleted"], false);
    EXPECT_EQ(records.back()["deleted"], true);
    EXPECT_TRUE(records[0]["value"]["title"].is_string());
    EXPECT_TRUE(records[0]["exportValue"]["title"].is_string());
    EXPECT_FALSE(records[0]["value"].contains("RowData_Identify_Key"));
}

struct PeopleAndMessages : SmallBackup {
    PeopleAndMessages() {
        add("Library/SMS/sms.db", sampleMessages());
        add("Library/CallHistory/call_history.db", sampleCallHistory());
        add("Library/AddressBook/AddressBook.sqlitedb", sampleAddressBook());
    }

    json records(const std::string& domain) const {
        return runTool({"records", path(), "--domain", domain, "--json"}).json();
    }
};

TEST(RecordsCommand, ConversationIsNamedAndExportsItsMessagesAsLines) {
    const json record = PeopleAndMessages().records("Message")[0];
    EXPECT_EQ(record["value"]["name"], "Amelia Hartley");
    EXPECT_EQ(record["value"]["textlist"][2], json({{"detail_text", "See you at the station at half past seven. (24)"},
                                                    {"detail_date", "2013-03-04 10:39"},
                                                    {"detail_sent_flag", "1"}}));
    EXPECT_EQ(record["exportValue"]["textlist"][2],
              "Send:2013-03-04 10:39 See you at the station at half past seven. (24)");
}

TEST(RecordsCommand, CallIsNamed) {
    const json record = PeopleAndMessages().records("Callhistory")[0];
    EXPECT_EQ(record["exportValue"], json({{"name", "Amelia Hartley"},
                                           {"phone", "+15550100123"},
                                           {"date", "2013-03-03 12:40"},
                                           {"type", "Outgoing"},
                                           {"duration", "1 minute"}}));
}

TEST(RecordsCommand, ContactExportsItsLists) {
    const json record = PeopleAndMessages().records("Contacts")[0];
    EXPECT_EQ(record["exportValue"], json({{"name", "Amelia Hartley"},
                                           {"company", "Northwind Bakery"},
                                           {"mobilePhoneList", {"+1-555-010-0123"}},
                                           {"addressList", {"12 Harbour Street, Springfield"}},
                                           {"homePhoneList", {"555-0199"}},
                                           {"emailList", {"amelia@example.com"}},
                                           {"Note", "Prefers mornings"}}));
}

TEST(RecordsCommand, NameMeansEveryDomainOfThatName) {
    SmallBackup backup;
    backup.add("Library/Notes/notes.sqlite", sampleNotes());
    const std::size_t once = runTool({"records", backup.path(), "--domain", "Note", "--json"}).json().size();
    backup.add("Library/Copy/notes.sqlite", sampleNotes());
    EXPECT_EQ(runTool({"records", backup.path(), "--domain", "Note", "--json"}).json().size(), 2 * once);
}

TEST(RecordsCommand, MovieIsTheDomainWithoutAName) {
    const ToolResult result = runTool({"records", NotesAndCalendar().path(), "--domain", "Movie", "--json"});
    EXPECT_THAT(result, SucceedsSilently());
    EXPECT_EQ(result.json(), json::array());
}

TEST(RecordsCommand, UnknownNameIsRefused) {
    EXPECT_THAT(runTool({"records", NotesAndCalendar().path(), "--domain", "note"}),
                FailsWithOneSentenceNaming("'note'"));
}

TEST(RecordsCommand, PeopleGetALineARecord) {
    const ToolResult result = runTool({"records", NotesAndCalendar().path(), "--domain", "Note"});
    EXPECT_THAT(result.output, HasSubstr("Note: "));
    EXPECT_THAT(result.output, HasSubstr("\nlive "));
}

}  // namespace
}  // namespace ZkMobileBackup
