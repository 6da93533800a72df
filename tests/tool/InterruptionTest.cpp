#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/DatabaseBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/SmallBackup.h"
#include "tests/tool/WatchedRun.h"

namespace ZkMobileBackup {
namespace {

using nlohmann::json;
using testing::EndsWith;

constexpr const char* kLastWord = "zkmb: Interrupted.\n";

/// Ctrl-C meets each command where it shows its first progress bar, on a terminal that takes nothing yet.
class InterruptedCommand : public testing::TestWithParam<const char*> {
protected:
    InterruptedCommand() {
        backup_.add("notes.sqlite", sampleNotes());
        writeBytes(folder_.path("notes.sqlite"), sampleNotes());
        writeText(folder_.path("rows.json"), R"([{"a": "b"}])");
    }

    std::vector<std::string> arguments() const {
        const std::string command = GetParam();
        if (command == "scan") return {command, backup_.path(), "--json"};
        if (command == "records") return {command, backup_.path(), "--json", "--domain", "Note"};
        if (command == "export") return {command, backup_.path(), "--json", "--output", output(), "--type", "html"};
        if (command == "tables" || command == "result") return {command, folder_.path("notes.sqlite"), "--json"};
        return {command, folder_.path("rows.json"), "--json", "--output", output() + "/rows", "--type", "html"};
    }

    std::string output() const { return folder_.path("out"); }

    SmallBackup backup_;
    TemporaryFolder folder_;
};

TEST_P(InterruptedCommand, PrintsWhatItHasAndFails) {
    WatchedRun run(WatchedRun::Errors::Terminal, arguments());
    run.pressCtrlC();
    const ToolResult result = run.finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, EndsWith(kLastWord));
    EXPECT_FALSE(result.json().is_discarded()) << result.output;
}

TEST_P(InterruptedCommand, EndsAtOnceAtTheSecondCtrlC) {
    WatchedRun run(WatchedRun::Errors::Terminal, arguments());
    run.pressCtrlC();
    EXPECT_EQ(run.pressCtrlCToTheEnd(), SIGINT);
}

INSTANTIATE_TEST_SUITE_P(Interruption, InterruptedCommand,
                         testing::Values("tables", "result", "scan", "records", "export", "document"));

TEST(InterruptedDocument, NamesTheFilesThatAreThere) {
    const TemporaryFolder folder;
    writeText(folder.path("rows.json"), R"({"a": [{"x": "1"}], "b": [{"x": "2"}], "c": [{"x": "3"}]})");
    WatchedRun run(WatchedRun::Errors::Terminal,
                   {"document", folder.path("rows.json"), "--json", "--output", folder.path("out"), "--type", "html"});
    run.pressCtrlC();
    const json files = run.finish().json()["files"];
    EXPECT_EQ(files.size(), folderContent(folder.path("out")).size());
    for (const json& file : files) EXPECT_TRUE(std::filesystem::exists(file.get<std::string>()));
}

/// Contacts whose images fill the log, so that the tool waits in the middle of making their records.
std::vector<std::uint8_t> contactsWithImages() {
    DatabaseBuilder database;
    std::string columns = "ROWID INTEGER PRIMARY KEY, First TEXT, Last TEXT";
    for (int column = 3; column < 32; ++column) columns += fmt::format(", c{} INTEGER", column);
    database.exec("CREATE TABLE ABPerson (" + columns + ", Image TEXT)");
    database.exec("CREATE TABLE ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, label INTEGER, value TEXT)");
    for (int person = 1; person <= 200; ++person) {
        const std::string image = fmt::format("image of person {} {}", person, std::string(100, '.'));
        database.run("INSERT INTO ABPerson (First, Last, Image) VALUES ('Ann', 'Bo', ?)", {image});
    }
    return database.bytes();
}

/// Ctrl-C meets the tool while it reads the contacts, which lie between notes and calls.
class InterruptedInTheMiddle : public testing::Test {
protected:
    InterruptedInTheMiddle() {
        backup_.add("notes.sqlite", sampleNotes());
        backup_.add("AddressBook.sqlitedb", contactsWithImages());
        backup_.add("call_history.db", sampleCallHistory());
    }

    ToolResult run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin() + 1, {backup_.path(), "--verbose", "--json"});
        WatchedRun run(WatchedRun::Errors::Pipe, arguments);
        EXPECT_TRUE(run.readUntil("image of person 1 "));
        run.pressCtrlC();
        return run.finish();
    }

    SmallBackup backup_;
    TemporaryFolder folder_;
};

TEST_F(InterruptedInTheMiddle, ScanLeavesTheDomainsBehindUnread) {
    const ToolResult result = run({"scan"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, EndsWith(kLastWord));
    const json domains = result.json()["domains"];
    ASSERT_EQ(domains[0]["name"], "Note");
    EXPECT_GT(domains[0]["records"], 0);
    ASSERT_EQ(domains[1]["name"], "Contacts");
    EXPECT_EQ(domains[1]["records"], 200);
    ASSERT_EQ(domains[2]["name"], "Callhistory");
    EXPECT_EQ(domains[2]["records"], 0);
}

TEST_F(InterruptedInTheMiddle, RecordsPrintsWhatItHas) {
    const ToolResult result = run({"records", "--domain", "Contacts"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, EndsWith(kLastWord));
    EXPECT_EQ(result.json().size(), 200U);
}

TEST_F(InterruptedInTheMiddle, ExportNamesTheFilesThatWereWritten) {
    const ToolResult result = run({"export", "--output", folder_.path("out"), "--type", "html"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, EndsWith(kLastWord));
    const json domains = result.json()["domains"];
    ASSERT_EQ(domains.size(), 2U);
    EXPECT_EQ(domains[0]["files"], json({folder_.path("out/Velmora Retrievo/Note.html")}));
    EXPECT_EQ(domains[1]["files"], json::array());
    EXPECT_EQ(folderContent(folder_.path("out")).size(), 1U);
}

}  // namespace
}  // namespace ZkMobileBackup
