#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/PackagedDocument.h"
#include "tests/tool/SmallBackup.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using testing::HasSubstr;

// What tells the profiles apart in a workbook.
constexpr const char* kLegacyMark = "baseColWith=";
constexpr const char* kStandardMark = "baseColWidth=";

class ProfileOf : public testing::Test {
protected:
    ProfileOf() { writeText(folder_.path("rows.json"), R"([{"a": "b"}])"); }

    std::vector<std::string> command(const std::vector<std::string>& options = {}) const {
        std::vector<std::string> all{"document", folder_.path("rows.json"), "--output", folder_.path("rows"), "--type",
                                     "xlsx"};
        all.insert(all.end(), options.begin(), options.end());
        return all;
    }

    void expectMark(const char* mark) const { EXPECT_TRUE(anyPartHolds(folder_.path("rows.xlsx"), mark)) << mark; }

    TemporaryFolder folder_;
};

TEST_F(ProfileOf, DocumentsIsStandard) {
    ASSERT_THAT(runTool(command()), SucceedsSilently());
    expectMark(kStandardMark);
}

TEST_F(ProfileOf, DocumentsIsChosenByOption) {
    ASSERT_THAT(runTool(command({"--profile", "legacy"})), SucceedsSilently());
    expectMark(kLegacyMark);
}

TEST_F(ProfileOf, DocumentsIsChosenByVariable) {
    ASSERT_THAT(runToolWith({{"ZKMB_PROFILE", "legacy"}}, command()), SucceedsSilently());
    expectMark(kLegacyMark);
}

TEST_F(ProfileOf, DocumentsIsThatOfTheOptionWhateverTheVariableSays) {
    ASSERT_THAT(runToolWith({{"ZKMB_PROFILE", "loud"}}, command({"--profile", "legacy"})), SucceedsSilently());
    expectMark(kLegacyMark);
}

TEST_F(ProfileOf, DocumentsMayStandBeforeTheCommand) {
    std::vector<std::string> arguments = command();
    arguments.insert(arguments.begin(), {"--profile", "legacy"});
    ASSERT_THAT(runTool(arguments), SucceedsSilently());
    expectMark(kLegacyMark);
}

TEST_F(ProfileOf, ExportsReachesEveryDomain) {
    SmallBackup backup;
    backup.add("Library/Notes/notes.sqlite", sampleNotes());
    const std::vector<std::string> arguments{"export", backup.path(), "--output", folder_.path("out"),
                                             "--type", "xlsx"};
    ASSERT_THAT(runToolWith({{"ZKMB_PROFILE", "legacy"}}, arguments), SucceedsSilently());
    EXPECT_TRUE(anyPartHolds(folder_.path("out/Velmora Retrievo/Note.xlsx"), kLegacyMark));
    ASSERT_THAT(runTool(arguments), SucceedsSilently());
    EXPECT_TRUE(anyPartHolds(folder_.path("out/Velmora Retrievo/Note(0).xlsx"), kStandardMark));
}

TEST_F(ProfileOf, HtmlMakesNoDifference) {
    for (const std::string profile : {"legacy", "standard"}) {
        ASSERT_THAT(runTool({"document", folder_.path("rows.json"), "--output", folder_.path(profile + "/rows"),
                             "--type", "html", "--profile", profile}),
                    SucceedsSilently());
    }
    EXPECT_EQ(readBytes(folder_.path("legacy/rows.html")), readBytes(folder_.path("standard/rows.html")));
}

class WrongProfile : public ProfileOf, public testing::WithParamInterface<const char*> {
protected:
    void expectComplaint(const ToolResult& result) const {
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1);
        EXPECT_THAT(result.errors,
                    HasSubstr("--profile: '" + std::string(GetParam()) + "' is neither legacy nor standard"));
        EXPECT_EQ(folderContent(folder_.path()).size(), 1U);
    }
};

TEST_P(WrongProfile, IsWrongUsageAsAnOption) {
    expectComplaint(runTool(command({"--profile", GetParam()})));
}

TEST_P(WrongProfile, IsWrongUsageAsAVariable) {
    expectComplaint(runToolWith({{"ZKMB_PROFILE", GetParam()}}, command()));
}

INSTANTIATE_TEST_SUITE_P(Profile, WrongProfile, testing::Values("loud", "Legacy", "0", "1", "standard "));

TEST(Profile, IsUnderstoodByEveryCommand) {
    const std::vector<std::vector<std::string>> runs = {
        {"list", "--root", "/missing"}, {"manifest", "/missing"}, {"tables", "/missing"},
        {"result", "/missing"},         {"scan", "/missing"},     {"records", "/missing", "--domain", "Note"},
    };
    for (std::vector<std::string> arguments : runs) {
        arguments.insert(arguments.end(), {"--profile", "legacy"});
        EXPECT_THAT(runTool(arguments), FailsWithOneSentenceNaming("/missing"));
    }
}

}  // namespace
}  // namespace ZkMobileBackup
