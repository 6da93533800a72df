#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class WrongUsage : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(WrongUsage, HasStatus2AndSaysWhy) {
    const ToolResult result = runTool(GetParam());
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_THAT(result.errors, StartsWith("zkmb: "));
    EXPECT_THAT(result.errors, EndsWith(" (see --help).\n"));
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1);
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, WrongUsage,
    testing::Values(std::vector<std::string>{}, std::vector<std::string>{"unknown"},
                    std::vector<std::string>{"--unknown"}, std::vector<std::string>{"tables"},
                    std::vector<std::string>{"tables", "a", "b"}, std::vector<std::string>{"tables", "a", "--unknown"},
                    std::vector<std::string>{"records", "backup"}, std::vector<std::string>{"export", "backup"},
                    std::vector<std::string>{"export", "backup", "--output", "out", "--type", "pdf"},
                    std::vector<std::string>{"export", "backup", "--output", "out", "--type", "0"},
                    std::vector<std::string>{"export", "backup", "--output", "out", "--type", "7"},
                    std::vector<std::string>{"document", "rows.json", "--output", "out", "--type", "7"},
                    std::vector<std::string>{"export", "backup", "--output", "out", "--type", "html", "--only", "all"},
                    std::vector<std::string>{"export", "backup", "--output", "", "--type", "html"},
                    std::vector<std::string>{"document", "rows.json", "--output", "", "--type", "html"},
                    std::vector<std::string>{"document", "rows.json", "--output=", "--type", "html"},
                    std::vector<std::string>{"document", "rows.json", "--output", "out"}));

TEST(CommandLine, VersionIsThatOfTheLibrary) {
    const ToolResult result = runTool({"--version"});
    EXPECT_THAT(result, SucceedsSilently());
    EXPECT_EQ(result.output, "zkmb 1.0.0\n");
}

TEST(CommandLine, HelpNamesEveryCommand) {
    const ToolResult result = runTool({"--help"});
    EXPECT_THAT(result, SucceedsSilently());
    for (const char* command : {"list", "manifest", "tables", "result", "scan", "records", "export", "document"}) {
        EXPECT_THAT(result.output, HasSubstr(command));
    }
}

class HelpOfCommand : public testing::TestWithParam<const char*> {};

TEST_P(HelpOfCommand, IsPrinted) {
    const ToolResult result = runTool({GetParam(), "--help"});
    EXPECT_THAT(result, SucceedsSilently());
    EXPECT_THAT(result.output, HasSubstr(std::string("zkmb ") + GetParam()));
    for (const char* option : {"--json", "--profile", "ZKMB_PROFILE", "--verbose", "--quiet"}) {
        EXPECT_THAT(result.output, HasSubstr(option));
    }
}

INSTANTIATE_TEST_SUITE_P(CommandLine, HelpOfCommand,
                         testing::Values("list", "manifest", "tables", "result", "scan", "records", "export",
                                         "document"));

TEST(CommandLine, LogIsSilentUnlessAskedFor) {
    const TemporaryFolder backup;
    EXPECT_THAT(runTool({"manifest", backup.path()}).errors, Not(HasSubstr("No MBDB file found")));
    EXPECT_THAT(runTool({"--verbose", "manifest", backup.path()}).errors, HasSubstr("No MBDB file found"));
    EXPECT_THAT(runTool({"manifest", backup.path(), "--verbose"}).errors, HasSubstr("No MBDB file found"));
}

TEST(CommandLine, LogLineIsCutTo200Characters) {
    const TemporaryFolder folder;
    const std::string backup = folder.path(std::string(120, 'a') + "/" + std::string(120, 'b'));
    writeText(backup + "/some file", "");
    const std::string errors = runTool({"manifest", backup, "--verbose"}).errors;
    const std::string line = errors.substr(0, errors.find('\n'));
    EXPECT_THAT(line, HasSubstr("No MBDB file found"));
    EXPECT_EQ(line.size(), std::string("zkmb: ").size() + 200 + std::string("…").size());
}

TEST(CommandLine, SentenceStaysOnOneLineWhateverThePathHolds) {
    EXPECT_THAT(runTool({"tables", "/missing\nfile\x1B[2J"}), FailsWithOneSentenceNaming("/missing file [2J"));
}

TEST(CommandLine, OutputThatCannotBeWrittenIsAFailure) {
    const TemporaryFolder folder;
    writeText(folder.path("empty"), "");
    const ToolResult result = runToolWithOutput("/dev/full", {"tables", folder.path("empty"), "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write to standard output: No space left on device."));
}

}  // namespace
}  // namespace ZkMobileBackup
