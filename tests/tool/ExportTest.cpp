#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/SampleBackup.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/SmallBackup.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

class Export : public testing::Test {
protected:
    Export() {
        backup_.add("Library/Notes/notes.sqlite", sampleNotes());
        backup_.add("Library/Calendar/Calendar.sqlitedb", sampleCalendar());
        backup_.add("Library/Voicemail/voicemail.db", sampleVoicemail());
    }

    std::vector<std::string> arguments(const std::vector<std::string>& options) const {
        std::vector<std::string> all{"export", backup_.path(), "--output", output()};
        all.insert(all.end(), options.begin(), options.end());
        return all;
    }

    ToolResult run(const std::vector<std::string>& options) const { return runTool(arguments(options)); }
    std::string output() const { return folder_.path("out"); }
    std::string document(const std::string& name) const { return output() + "/Velmora Retrievo/" + name; }

    std::string text(const std::string& path) const {
        const std::vector<std::uint8_t> bytes = readBytes(path);
        return {bytes.begin(), bytes.end()};
    }

    SmallBackup backup_;
    TemporaryFolder folder_;
};

TEST_F(Export, WritesADocumentForEveryDomainWithRecords) {
    const ToolResult result = run({"--type", "html"});
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_THAT(result.output, AllOf(HasSubstr(document("Note.html") + "\n"), HasSubstr(document("Calendar.html")),
                                     HasSubstr("\n3 files written\n")));
    EXPECT_EQ(folderContent(output()).size(), 3U);
    EXPECT_THAT(text(document("Note.html")), HasSubstr("<table"));
}

TEST_F(Export, WholeBackupGoesFromFolderToDocuments) {
    const std::string backup = folder_.path("backup");
    writeSampleBackup(backup);
    const auto before = folderContent(backup);
    const ToolResult result = runTool({"export", backup, "--output", output(), "--type", "html", "--json"});
    ASSERT_THAT(result, SucceedsSilently());
    const json summary = result.json();
    std::vector<std::string> names;
    for (const json& domain : summary["domains"]) {
        if (domain["files"].empty()) continue;
        names.push_back(domain["name"]);
        EXPECT_GT(domain["live"], 0) << domain;
        EXPECT_EQ(domain["deleted"] > 0, domain["name"] != "Movie") << domain;
    }
    EXPECT_THAT(names, testing::ElementsAre("Contacts", "Message", "Calendar", "Reminder", "Note", "SafariBookmarks",
                                            "Callhistory", "Photo", "Movie"));
    EXPECT_THAT(text(document("Contacts.html")), HasSubstr("Amelia Hartley"));
    EXPECT_THAT(text(document("Message.html")), HasSubstr("See you at the station"));
    EXPECT_THAT(text(document("Callhistory.html")), HasSubstr("10 minutes"));
    EXPECT_EQ(folderContent(backup), before);
}

TEST_F(Export, SummaryAsJsonCountsRecordsAndNamesFiles) {
    const json summary = run({"--type", "html", "--domain", "Note", "--json"}).json();
    ASSERT_EQ(summary["domains"].size(), 1U);
    EXPECT_GT(summary["domains"][0]["live"], 0);
    EXPECT_GT(summary["domains"][0]["deleted"], 0);
    EXPECT_EQ(summary["domains"][0]["files"], json({document("Note.html")}));
}

TEST_F(Export, OnlyLimitsTheRecords) {
    const json all = run({"--type", "html", "--domain", "Note", "--json"}).json()["domains"][0];
    const json live = run({"--type", "html", "--domain", "Note", "--only", "live", "--json"}).json()["domains"][0];
    EXPECT_EQ(live["live"], all["live"]);
    EXPECT_EQ(live["deleted"], 0);
    const json gone = run({"--type", "html", "--domain", "Note", "--only", "deleted", "--json"}).json()["domains"][0];
    EXPECT_EQ(gone["live"], 0);
    EXPECT_EQ(gone["deleted"], all["deleted"]);
    const std::string page = text(gone["files"][0]);
    EXPECT_EQ(static_cast<int>(std::ranges::count(page, '\n')) > 0, true);
    EXPECT_LT(page.size(), text(all["files"][0]).size());
}

TEST_F(Export, DomainMayBeRepeated) {
    ASSERT_THAT(run({"--type", "html", "--domain", "Note", "--domain", "Reminder"}), SucceedsSilently());
    EXPECT_EQ(folderContent(output()).size(), 2U);
    EXPECT_TRUE(std::filesystem::exists(document("Reminder.html")));
}

TEST_F(Export, EarlierDocumentsAreKept) {
    ASSERT_THAT(run({"--type", "html", "--domain", "Note"}), SucceedsSilently());
    ASSERT_THAT(run({"--type", "html", "--domain", "Note"}), SucceedsSilently());
    EXPECT_TRUE(std::filesystem::exists(document("Note(0).html")));
}

TEST_F(Export, DomainsWithoutRecordsWriteNothing) {
    const ToolResult result =
        run({"--type", "html", "--domain", "Voicemail", "--domain", "Photo", "--domain", "Movie"});
    EXPECT_THAT(result, SucceedsSilently());
    EXPECT_THAT(result.output, HasSubstr("\n0 files written\n"));
    EXPECT_TRUE(folderContent(output()).empty());
}

TEST_F(Export, UnknownDomainIsRefused) {
    EXPECT_THAT(run({"--type", "html", "--domain", "Note", "--domain", "Letters"}),
                FailsWithOneSentenceNaming("'Letters'"));
    EXPECT_FALSE(std::filesystem::exists(output()));
}

TEST_F(Export, WritesEveryTypeOfDocument) {
    for (const std::string type : {"html", "docx", "xlsx", "numbers", "pages"}) {
        ASSERT_THAT(run({"--type", type}), SucceedsSilently());
        for (const char* name : {"Note.", "Calendar.", "Reminder."}) {
            EXPECT_TRUE(std::filesystem::exists(document(name + type))) << name << type;
        }
    }
    EXPECT_EQ(folderContent(output()).size(), 15U);
}

TEST_F(Export, OutputFolderInTheBackupIsRefused) {
    const auto before = folderContent(backup_.path());
    std::filesystem::create_directory_symlink(backup_.path(), folder_.path("link"));
    for (const std::string& path : {backup_.path(), backup_.path() + "/", backup_.path() + "/new/folder",
                                    backup_.path() + "/x/../y", folder_.path("link/new")}) {
        EXPECT_THAT(runTool({"export", backup_.path(), "--output", path, "--type", "html"}),
                    FailsWithOneSentenceNaming("'" + path + "'"));
    }
    EXPECT_EQ(folderContent(backup_.path()), before);
    EXPECT_FALSE(std::filesystem::exists(backup_.path() + "/new"));
}

TEST_F(Export, OutputFolderBesideTheBackupIsTaken) {
    const std::string beside = backup_.path() + "_recovered";
    EXPECT_THAT(runTool({"export", backup_.path(), "--output", beside, "--type", "html"}), SucceedsSilently());
    std::filesystem::remove_all(beside);
}

TEST_F(Export, OutputFolderThatCannotBeMadeIsNamed) {
    writeText(output(), "a file");
    EXPECT_THAT(run({"--type", "html"}), FailsWithOneSentenceNaming(output()));
    EXPECT_THAT(runTool({"export", backup_.path(), "--output", output() + "/below", "--type", "html"}),
                FailsWithOneSentenceNaming(output() + "/below"));
}

TEST_F(Export, FileThatCannotBeWrittenIsAFailure) {
    writeText(output() + "/Velmora Retrievo", "a file where a folder is needed");
    EXPECT_THAT(run({"--type", "html"}), FailsWithOneSentenceNaming("Velmora Retrievo"));
}

TEST_F(Export, InterruptedRunSaysWhatWasWritten) {
    const ToolResult result = runInterruptedTool(arguments({"--type", "html"}));
    EXPECT_THAT(result, FailsWithOneSentenceNaming("Interrupted"));
    EXPECT_THAT(result.output, HasSubstr("0 files written\n"));
}

}  // namespace
}  // namespace ZkMobileBackup
